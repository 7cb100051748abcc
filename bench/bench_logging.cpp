// The log's immediate path against the least a log file can cost: the same
// lines through a bare QTextStream, flushed after each line.
#include "czoslog.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTemporaryDir>
#include <QTime>
#include <QVector>

#include <benchmark/benchmark.h>

namespace {

// Distinct neighbours, since the log drops a message equal to the one before.
QVector<QString> messages()
{
    QVector<QString> list;
    for (int i = 0; i < 1024; ++i)
        list << QStringLiteral("Exposure set to %1 ms on filter position %2, binning %3").arg(i * 10).arg(i % 24).arg(1 << (i % 4));
    return list;
}

void logImmediate(benchmark::State &state, LOGLOCATION location)
{
    QTemporaryDir dir;
    const QVector<QString> text = messages();
    CZOSLog log(QStringLiteral("Bench"));
    log.beginLog(dir.filePath(QStringLiteral("zoactivity.log")), location);
    int i = 0;
    for (auto _ : state) {
        log.log(text[i], QStringLiteral("bench_logging.cpp"), 42, QString(), (i % 8) ? 1 : 2, true);
        i = (i + 1) & 1023;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_LogImmediateFile(benchmark::State &state)
{
    logImmediate(state, LOG_TO_FILE);
}
BENCHMARK(BM_LogImmediateFile);

void BM_LogImmediateFileAndWindow(benchmark::State &state)
{
    logImmediate(state, LOG_TO_FILE_AND_WINDOW);
}
BENCHMARK(BM_LogImmediateFileAndWindow);

void BM_BaselineTextStream(benchmark::State &state)
{
    QTemporaryDir dir;
    const QVector<QString> text = messages();
    QFile file(dir.filePath(QStringLiteral("baseline.log")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        state.SkipWithError("cannot open the baseline file");
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    const QString format = QLocale::system().timeFormat(QLocale::ShortFormat);
    const QString time = QTime::currentTime().toString(format);
    int i = 0;
    for (auto _ : state) {
        if (i % 8)
            stream << time << '\t' << text[i] << "\r\n";
        else
            stream << time << '\t' << "Warning > " << text[i] << "\r\n";
        stream.flush();
        i = (i + 1) & 1023;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BaselineTextStream);

// The whole deferred road: post from the caller, write from the event loop.
void BM_LogDeferredRoundTrip(benchmark::State &state)
{
    QTemporaryDir dir;
    qputenv("ZO_DATA_ROOT", dir.path().toLocal8Bit() + '/');
    const QVector<QString> text = messages();
    CZOSLogEventHandler::install();
    beginLog(QStringLiteral("Bench"));
    int i = 0;
    for (auto _ : state) {
        for (int n = 0; n < 256; ++n) {
            getLogObject()->log(text[i], QStringLiteral("bench_logging.cpp"), 42, QString(), 1);
            i = (i + 1) & 1023;
        }
        QCoreApplication::sendPostedEvents();
    }
    closeLog();
    state.SetItemsProcessed(state.iterations() * 256);
}
BENCHMARK(BM_LogDeferredRoundTrip);

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
