#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo, the tests, the checks, the
# benchmarks or the planted-fault sampler.
# Usage: ./run.sh demo|test|check|bench|build|mutants [seed] [count]
set -euo pipefail
cd "$(dirname "$0")"
ROOT=$(pwd)
JOBS=$(nproc 2>/dev/null || echo 2)
# Qt wants a private runtime folder; CI and fresh root shells have none.
export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-/tmp/runtime-$(id -u)}
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"

BASE_PACKAGES=(cmake make g++ pkg-config qtbase5-dev qtbase5-dev-tools libqt5opengl5-dev libqt5svg5-dev
  libtiff-dev libgl1-mesa-dev libglu1-mesa-dev libgl1-mesa-dri xvfb xauth
  libbenchmark-dev fonts-dejavu-core strace)
CHECK_PACKAGES=(clang libclang-rt-14-dev)

ensure_packages() {
  local missing=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "run.sh: installing ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  fi
}

# build <dir> [cmake options...]: configure once, then build incrementally
# (only the targets in $TARGETS when that is set).
build() {
  local dir=$1; shift
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$ROOT" -B "$dir" "$@" >/dev/null
  fi
  local targets=()
  [ -n "${TARGETS:-}" ] && targets=(--target $TARGETS)
  cmake --build "$dir" -j "$JOBS" "${targets[@]}" 2>&1 \
    | grep -Ev '^\[ *[0-9]+%\]|^-- |Automatic MOC|Automatic UIC|Automatic RCC' || true
  # grep swallowed the exit status; check the build for real
  cmake --build "$dir" -j "$JOBS" "${targets[@]}" >/dev/null 2>&1 || { echo "run.sh: build in $dir failed" >&2; exit 1; }
}

cmd=${1:-test}
case "$cmd" in
  build)
    ensure_packages "${BASE_PACKAGES[@]}"
    build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ;;
  demo)
    ensure_packages "${BASE_PACKAGES[@]}"
    build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    shift || true
    xvfb-run -a -s "-screen 0 1600x1000x24" build/apps/zodemo/zodemo --headless "$@"
    ;;
  test)
    ensure_packages "${BASE_PACKAGES[@]}"
    build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    cd build
    xvfb-run -a -s "-screen 0 1600x1000x24" ctest --output-on-failure -j "$JOBS"
    ;;
  bench)
    ensure_packages "${BASE_PACKAGES[@]}"
    build build-bench -DCMAKE_BUILD_TYPE=Release -DZO_BUILD_TESTS=OFF
    # Every benchmark program, one table: program, benchmark, wall and CPU time, rate.
    {
      for b in build-bench/bench/bench_*; do
        [ -f "$b" ] && [ -x "$b" ] || continue
        xvfb-run -a -s "-screen 0 1600x1000x24" "$b" --benchmark_format=csv 2>/dev/null \
          | sed -n '/^name,/,$p' | tail -n +2 | sed "s|^|$(basename "$b"),|"
      done
    } | awk -F, 'BEGIN { printf "%-16s %-58s %12s %12s %14s\n", "program", "benchmark", "real", "cpu", "rate" }
      { name = $2; gsub(/"/, "", name); unit = $6;
        rate = ($7 != "") ? sprintf("%.3g B/s", $7) : (($8 != "") ? sprintf("%.3g /s", $8) : "");
        printf "%-16s %-58s %9.3f %-2s %9.3f %-2s %14s\n", $1, name, $4, unit, $5, unit, rate }'
    ;;
  check)
    ensure_packages "${BASE_PACKAGES[@]}" "${CHECK_PACKAGES[@]}"
    echo "== AddressSanitizer + UndefinedBehaviorSanitizer: test suite"
    build build-asan -DCMAKE_BUILD_TYPE=Debug -DZO_BUILD_BENCH=OFF -DZO_SANITIZE=address,undefined \
      -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
    (cd build-asan && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
      xvfb-run -a -s "-screen 0 1600x1000x24" ctest --output-on-failure -j "$JOBS")
    echo "== ThreadSanitizer: the thread tests (log, image queue)"
    tsan_opts=(-DCMAKE_BUILD_TYPE=Debug -DZO_BUILD_BENCH=OFF -DZO_SANITIZE=thread
      -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)
    [ -f build-tsan/CMakeCache.txt ] || cmake -S "$ROOT" -B build-tsan "${tsan_opts[@]}" >/dev/null
    TARGETS=$(cd build-tsan && ctest -N -L thread | sed -n 's/.*Test *#[0-9]*: *//p' | tr '\n' ' ') \
      build build-tsan "${tsan_opts[@]}"
    (cd build-tsan && xvfb-run -a ctest --output-on-failure -L thread)
    echo "== Saves cut short: every fault point of every save (SIGKILL, ENOSPC, EIO)"
    build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    bash tests/faults/faultcheck.sh build/tests/faults/savedriver
    echo "== libFuzzer targets, ${FUZZ_SECONDS:-30} s each"
    build build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZO_BUILD_TESTS=OFF -DZO_BUILD_BENCH=OFF \
      -DZO_BUILD_FUZZ=ON -DZO_SANITIZE=address,undefined -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
    for f in build-fuzz/fuzz/fuzz_*; do
      [ -f "$f" ] && [ -x "$f" ] || continue
      name=$(basename "$f")
      mkdir -p "build-fuzz/corpus/$name"
      echo "-- $name"
      QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 "$f" -max_total_time="${FUZZ_SECONDS:-30}" \
        -max_len=65536 "build-fuzz/corpus/$name" 2>&1 | grep -E '^Done|ERROR|SUMMARY' || true
      [ "${PIPESTATUS[0]}" -eq 0 ] || { echo "$name found a crash"; exit 1; }
    done
    ;;
  mutants)
    # ./run.sh mutants [seed] [count]: plants faults one at a time in the three libraries'
    # sources and reports how many the suite catches, by folder.
    seed=${2:-1}; count=${3:-80}
    sampler=${MUTANTS_PY:-$ROOT/../shared/tools/mutants.py}
    [ -f "$sampler" ] || { echo "run.sh: no mutant sampler at $sampler (set MUTANTS_PY)" >&2; exit 2; }
    ensure_packages "${BASE_PACKAGES[@]}" python3
    # Unoptimised, no debug info, shared libraries not relinked into every test: each fault
    # rebuilds one object and one library.
    mut_opts=(-DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0 -g0" -DZO_BUILD_BENCH=OFF
      -DCMAKE_LINK_DEPENDS_NO_SHARED=ON)
    command -v ccache >/dev/null && mut_opts+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    build build-mut "${mut_opts[@]}"
    report=build-mut/mutants-seed$seed.json
    # The first failing test decides a fault's fate: the rest of the suite need not run.
    python3 "$sampler" --build build-mut --sources zoutils zoparser zoimage --seed "$seed" --count "$count" \
      --test "xvfb-run -a -s '-screen 0 1600x1000x24' ctest --timeout 60 -j $JOBS --stop-on-failure" --report "$report" \
      | grep -v '^\[' || true
    python3 - "$report" <<'EOF'
import json, sys
s = json.load(open(sys.argv[1]))["summary"]
print(f"\nseed {s['seed']}: {s['killed']} of {s['valid']} faults caught (score {s['score']}), "
      f"{s['tested'] - s['valid']} did not build, {s['minutes']} min")
for folder, ratio in s["by_folder"].items():
    caught, total = map(int, ratio.split("/"))
    print(f"  {folder:28} {ratio:>7}  {caught / total:.2f}")
EOF
    echo "survivors: python3 -c \"import json; [print(m['file'], m['line'], m['from'], '->', m['to']) for m in json.load(open('$report'))['mutants'] if m['verdict'] == 'survived']\""
    ;;
  *)
    echo "usage: $0 demo|test|check|bench|build|mutants [seed] [count]" >&2
    exit 2
    ;;
esac
