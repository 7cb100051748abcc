// Click-info records of 1,000 and 10,000 sections: reading must stay linear,
// so the time per section should not grow with the record.
#include "cplclickinfo.h"
#include "cplsection.h"
#include "siasetupinfo.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

CPLClickInfo makeRecord(int sections)
{
    CPLClickInfo info;
    sIASetupInfo setup;
    for (int i = 0; i < sections; ++i) {
        auto *s = new CPLSection(QStringLiteral("Section %1").arg(i), QStringLiteral("note %1").arg(i));
        s->setValue(QStringLiteral("File Name"), QStringLiteral("luminescent.TIF"));
        setup.exposureTime = i * 0.25;
        setup.writeToSection(s, IT_LUMINESCENT);
        s->setValue(QStringLiteral("Comment"), QStringLiteral("first line\nsecond line"));
        info.addSection(s);
    }
    return info;
}

void BM_loadClickInfoFile(benchmark::State &state)
{
    const int n = int(state.range(0));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("ClickInfo.txt"));
    if (makeRecord(n).saveClickInfo(path) != ES_SUCCESS) {
        state.SkipWithError("cannot write the record");
        return;
    }
    for (auto _ : state) {
        CPLClickInfo info;
        const tag_estatus status = info.loadClickInfo(path);
        benchmark::DoNotOptimize(status);
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["ns_per_section"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_loadClickInfoFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_parseClickInfoText(benchmark::State &state)
{
    const int n = int(state.range(0));
    QString text;
    makeRecord(n).saveToText(text);
    for (auto _ : state) {
        CPLClickInfo info;
        const tag_estatus status = info.loadFromText(text);
        benchmark::DoNotOptimize(status);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_parseClickInfoText)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_saveClickInfoText(benchmark::State &state)
{
    const int n = int(state.range(0));
    const CPLClickInfo info = makeRecord(n);
    for (auto _ : state) {
        QString text;
        info.saveToText(text);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_saveClickInfoText)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
