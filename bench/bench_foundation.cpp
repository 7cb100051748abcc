// Line walk and number formatting: called per pixel or per label in the plots.
#include "generalutilities.h"

#include <benchmark/benchmark.h>

static void BM_getIntermediatePoints(benchmark::State &state)
{
    const int n = int(state.range(0));
    for (auto _ : state) {
        QList<Coord2d> points = getIntermediatePoints(0, 0, n, n / 3);
        benchmark::DoNotOptimize(points);
    }
    state.SetItemsProcessed(state.iterations() * (n + 1));
}
BENCHMARK(BM_getIntermediatePoints)->Arg(1000)->Arg(100000);

static void BM_doubleToString(benchmark::State &state)
{
    double v = 0.000123;
    for (auto _ : state) {
        QString s = doubleToString(v, 2, 2);
        benchmark::DoNotOptimize(s);
        v *= 1.37;
        if (v > 1e9)
            v = 0.000123;
    }
}
BENCHMARK(BM_doubleToString);

BENCHMARK_MAIN();
