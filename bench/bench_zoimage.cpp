// Image statistics against the plain standard-library passes over the same
// buffer, and the nice-range rounding the plots call on every paint.
#include "cilimage.h"
#include "zosdisplayrange.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>

namespace {

CILImage makeFrame()
{
    CILImage image(2048, 2048);
    quint32 state = 12345;
    quint16 *p = image.getPixels();
    for (qint64 i = 0; i < image.getPixelCount(); ++i) {
        state = state * 1664525u + 1013904223u;
        p[i] = quint16(state >> 16);
    }
    return image;
}

void BM_RefreshImageStats(benchmark::State &state)
{
    CILImage image = makeFrame();
    for (auto _ : state) {
        image.RefreshImageStats();
        benchmark::DoNotOptimize(image.getMean());
    }
    state.SetBytesProcessed(state.iterations() * image.getPixelCount() * 2);
}
BENCHMARK(BM_RefreshImageStats)->Unit(benchmark::kMicrosecond);

void BM_MinMaxElementPlusSum(benchmark::State &state)
{
    CILImage image = makeFrame();
    const quint16 *begin = image.getPixels();
    const quint16 *end = begin + image.getPixelCount();
    for (auto _ : state) {
        const auto mm = std::minmax_element(begin, end);
        const quint64 sum = std::accumulate(begin, end, quint64(0));
        benchmark::DoNotOptimize(mm);
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * image.getPixelCount() * 2);
}
BENCHMARK(BM_MinMaxElementPlusSum)->Unit(benchmark::kMicrosecond);

void BM_NiceRange(benchmark::State &state)
{
    tagZOSDisplayRange range;
    double lo = -3.7;
    for (auto _ : state) {
        benchmark::DoNotOptimize(getNiceRangeForDisplay(lo, 1234.5, 20, &range));
        lo = lo < -1000 ? -3.7 : lo * 1.01;
    }
}
BENCHMARK(BM_NiceRange);

} // namespace

BENCHMARK_MAIN();
