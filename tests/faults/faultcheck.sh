#!/usr/bin/env bash
# Cuts every save of the libraries short at each write-path system call it
# makes: strace kills the process there (SIGKILL), or makes the call fail
# (ENOSPC, EIO), one fault per run. After each run the files must hold their
# old or their new content whole, a save that reported success the new one
# and a save that reported failure the old one, and no staging file may be
# left: none after a failed call, none after a kill or a failed removal once
# the same file has been saved again. A queue whose producer was cut short
# must reopen with every complete frame.
#
# Usage: faultcheck.sh [--fast] DRIVER [OPERATION ...]
#   --fast  one fault per call instead of three, SIGKILL and a failing errno
#           taking turns (ENOSPC for calls that write or name files, EIO for
#           flushes and removals); the full sweep tries SIGKILL, ENOSPC and EIO
# Needs bash, coreutils, strace and the savedriver program built beside the tests.
set -uo pipefail

errnos=(ENOSPC EIO)
fast=
if [ "${1:-}" = --fast ]; then
  fast=1
  shift
fi
driver=${1:?usage: faultcheck.sh [--fast] DRIVER [OPERATION ...]}
shift
operations=("$@")
[ ${#operations[@]} -gt 0 ] ||
  operations=(csv-set csv-set-again csv-add csv-remove csv-cut probes autobkg profile clickinfo tiff queue-init queue-add)
command -v strace >/dev/null || { echo "faultcheck: strace is not installed" >&2; exit 1; }

export QT_QPA_PLATFORM=offscreen
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
calls=openat,write,pwrite64,writev,ftruncate,fallocate,fsync,fdatasync,rename,renameat,renameat2,link,linkat,unlink,unlinkat,fchmod,mkdir
tried=0
failed=0

# The folder's files, staging files left out, with a checksum of each.
state() { (cd "$1" && find . -type f ! -name '.*.zosave-*' -print0 | LC_ALL=C sort -z | xargs -0 -r md5sum); }
staging() { find "$1" -name '.*.zosave-*' | head -n 1; }
run() { "$driver" "$1" "$2" "$3" 2>/dev/null; }
fresh() { rm -rf "$work/t" && cp -a "$work/old" "$work/t"; }
# One save with one fault; the braces keep the shell's "Killed" notes quiet.
inject() { { strace -qq -o /dev/null -e trace="${1%%:*}" -e inject="$1" "$driver" "$2" run "$work/t"; } 2>/dev/null; }

# Checks the folder after a faulted run; $3 is the run's exit code, $4 the fault.
check() {
  local op=$1 point=$2 code=$3 fault=$4 now problem=""
  if [ "$op" = queue-add ]; then
    run "$op" verify "$work/t" || problem="frames lost or damaged"
  else
    now=$(state "$work/t")
    if [ "$now" != "$old" ] && [ "$now" != "$new" ]; then
      problem="neither old nor new"
    elif [ "$fault" != SIGKILL ] && [ "$op" != autobkg ]; then
      # autobkg's save is silent by design: it always reports success.
      [ "$code" -eq 0 ] && [ "$now" != "$new" ] && problem="success reported, old content"
      [ "$code" -eq 1 ] && [ "$now" != "$old" ] && problem="failure reported, new content"
      [ "$code" -gt 1 ] && problem="exit code $code"
    fi
  fi
  # After a kill, or a removal that failed, the next save of the same file cleans up.
  case $fault:${point%% *} in
    SIGKILL:* | *:unlink | *:unlinkat) [ -z "$problem" ] && run "$op" run "$work/t" ;;
  esac
  [ -z "$problem" ] && [ -n "$(staging "$work/t")" ] && problem="staging file left: $(staging "$work/t")"
  tried=$((tried + 1))
  if [ -n "$problem" ]; then
    failed=$((failed + 1))
    echo "FAIL $op, $fault at $point: $problem" >&2
  fi
}

for op in "${operations[@]}"; do
  rm -rf "$work/old" "$work/new" && mkdir -p "$work/old"
  run "$op" prepare "$work/old" || { echo "faultcheck: $op: prepare failed" >&2; exit 1; }
  cp -a "$work/old" "$work/new"
  run "$op" run "$work/new" || { echo "faultcheck: $op: the save itself failed" >&2; exit 1; }
  old=$(state "$work/old")
  new=$(state "$work/new")
  [ "$old" != "$new" ] || { echo "faultcheck: $op: the save changed nothing" >&2; exit 1; }

  # Every call of the save that touches the folder, by name and ordinal (the
  # n-th call of that name, which strace's when=n counts).
  fresh
  strace -qq -y -o "$work/trace" -e trace="$calls" "$driver" "$op" run "$work/t" 2>/dev/null
  points=$(awk -v folder="$work/t/" '/^[a-z0-9_]+\(/ {
      name = $0; sub(/\(.*/, "", name)
      seen[name]++
      if (begun && index($0, folder)) print name, seen[name]
      if (index($0, "savedriver: save")) begun = 1
    }' "$work/trace")
  [ -n "$points" ] || { echo "faultcheck: $op: no system calls seen" >&2; exit 1; }

  start=$tried
  startFailed=$failed
  k=0
  while read -r name n; do
    k=$((k + 1))
    faults=(SIGKILL "${errnos[@]}")
    if [ -n "$fast" ]; then
      # One fault per call, the kinds taking turns from call to call.
      case $name in fsync|fdatasync|unlink|unlinkat|fchmod) faults=(EIO) ;; *) faults=(ENOSPC) ;; esac
      [ $((k % 2)) -eq 1 ] && faults=(SIGKILL)
    fi
    for fault in "${faults[@]}"; do
      fresh
      if [ "$fault" = SIGKILL ]; then
        inject "$name":signal=SIGKILL:when=$n "$op"
      else
        inject "$name":error=$fault:when=$n "$op"
      fi
      check "$op" "$name #$n" $? "$fault"
    done
  done <<<"$points"
  printf 'faultcheck: %-10s %4d fault points, %d failed\n' "$op" $((tried - start)) $((failed - startFailed))
done

echo "faultcheck: $tried fault points tried, $failed failed"
[ "$failed" -eq 0 ]
