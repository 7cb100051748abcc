// Acquisition helpers against baselines in the same run: the read-noise
// accumulation against a loop that only streams the same bytes, the read-bias
// measurement against one minmax pass plus one sum pass, and the set-up search
// over a long candidate list. items_per_second is pixels (or candidates) per
// second.
#include "ccdcorrections.h"
#include "cilimage.h"
#include "cplclickinfo.h"
#include "setupmatching.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>

namespace {

constexpr int kSide = 2048;

void fillNoise(CILImage &image, quint16 base, quint16 spread)
{
    quint32 state = 12345;
    quint16 *p = image.getPixels();
    for (qint64 i = 0; i < image.getPixelCount(); ++i) {
        state = state * 1664525u + 1013904223u;
        p[i] = quint16(base + (state >> 16) % spread);
    }
    image.RefreshImageStats();
}

struct Frames {
    CILImage source{kSide, kSide};
    CILImage sum{kSide, kSide};
    CILImage count{kSide, kSide};
    CILImage mask{kSide, kSide};
    Frames() { fillNoise(source, 900, 200); } // about half inside 950..1050
};

void BM_CreateReadSigmaImage(benchmark::State &state)
{
    Frames f;
    for (auto _ : state) {
        createReadSigmaImage(&f.source, &f.sum, nullptr, &f.count, &f.mask, 950.0f, 1050.0f, 1);
        benchmark::DoNotOptimize(f.sum.getPixels());
    }
    state.SetItemsProcessed(state.iterations() * f.source.getPixelCount());
}
BENCHMARK(BM_CreateReadSigmaImage)->Unit(benchmark::kMicrosecond);

// Baseline: the same bytes read and written with a trivial loop.
void BM_ReadSigmaStreamBaseline(benchmark::State &state)
{
    Frames f;
    const qint64 n = f.source.getPixelCount();
    for (auto _ : state) {
        const quint16 *src = f.source.getPixels();
        quint16 *sum = f.sum.getPixels();
        quint16 *count = f.count.getPixels();
        quint16 *mask = f.mask.getPixels();
        for (qint64 i = 0; i < n; ++i) {
            sum[i] = quint16(sum[i] + src[i]);
            count[i] = quint16(count[i] + 1);
            mask[i] = 1;
        }
        benchmark::DoNotOptimize(sum);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_ReadSigmaStreamBaseline)->Unit(benchmark::kMicrosecond);

// The part of BM_CreateReadSigmaImage that is CILImage's: refreshing the
// statistics of the four images.
void BM_ReadSigmaStatisticsOnly(benchmark::State &state)
{
    Frames f;
    for (auto _ : state) {
        for (CILImage *image : {&f.source, &f.mask, &f.count, &f.sum})
            image->RefreshImageStats();
        benchmark::DoNotOptimize(f.sum.getMean());
    }
    state.SetItemsProcessed(state.iterations() * f.source.getPixelCount());
}
BENCHMARK(BM_ReadSigmaStatisticsOnly)->Unit(benchmark::kMicrosecond);

// For comparison only: the obvious per-pixel loop with a branch.
void BM_ReadSigmaBranchyReference(benchmark::State &state)
{
    Frames f;
    const qint64 n = f.source.getPixelCount();
    const float lower = 950.0f;
    const float upper = 1050.0f;
    for (auto _ : state) {
        const quint16 *src = f.source.getPixels();
        quint16 *sum = f.sum.getPixels();
        quint16 *count = f.count.getPixels();
        quint16 *mask = f.mask.getPixels();
        for (qint64 i = 0; i < n; ++i) {
            const float v = src[i];
            if (v > lower && v < upper) {
                mask[i] = 1;
                sum[i] = quint16(sum[i] + src[i]);
                count[i] = quint16(count[i] + 1);
            } else {
                mask[i] = 0;
            }
        }
        benchmark::DoNotOptimize(sum);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_ReadSigmaBranchyReference)->Unit(benchmark::kMicrosecond);

void BM_MeasureReadBias(benchmark::State &state)
{
    CILImage image(kSide, kSide);
    fillNoise(image, 900, 200);
    CPLClickInfo clickInfo;
    float bias = 0;
    for (auto _ : state) {
        measureReadBias(clickInfo, &image, &bias);
        benchmark::DoNotOptimize(bias);
    }
    state.SetItemsProcessed(state.iterations() * image.getPixelCount());
}
BENCHMARK(BM_MeasureReadBias)->Unit(benchmark::kMicrosecond);

// Baseline: one std::minmax_element plus one sum pass.
void BM_MinMaxPlusSumBaseline(benchmark::State &state)
{
    CILImage image(kSide, kSide);
    fillNoise(image, 900, 200);
    const quint16 *begin = image.getPixels();
    const quint16 *end = begin + image.getPixelCount();
    for (auto _ : state) {
        const auto mm = std::minmax_element(begin, end);
        const quint64 sum = std::accumulate(begin, end, quint64(0));
        benchmark::DoNotOptimize(mm);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * image.getPixelCount());
}
BENCHMARK(BM_MinMaxPlusSumBaseline)->Unit(benchmark::kMicrosecond);

// 100,000 candidates, none of which matches: the whole list is walked.
void BM_FindMatchingImageFromList(benchmark::State &state)
{
    const bool fluorescent = state.range(0) != 0;
    QList<SIAImage *> list;
    list.reserve(100000);
    for (int i = 0; i < 100000; ++i) {
        auto *candidate = new SIAImage;
        candidate->setup.exposureTime = 60;
        candidate->setup.demandTemperature = QStringLiteral("-90");
        candidate->setup.fov = 12.5;
        list.append(candidate);
    }
    sIASetupInfo wanted;
    wanted.exposureTime = 60;
    wanted.demandTemperature = QStringLiteral(" -80 ");
    wanted.fov = 20;
    for (auto _ : state)
        benchmark::DoNotOptimize(findMatchingImageFromList(list, &wanted, fluorescent));
    state.SetItemsProcessed(state.iterations() * list.size());
    qDeleteAll(list);
}
BENCHMARK(BM_FindMatchingImageFromList)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
