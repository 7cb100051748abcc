// The image queue against plain QFile writes and positioned reads of the same
// frames in the same folder, and the CSV rewrite against reading and writing
// the file's bytes once. Compare the pairs within one run.
#include "czoimagequeue.h"
#include "czoscsvparser.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <random>
#include <vector>

namespace {

constexpr int kSide = 2048;
constexpr qint64 kFrameBytes = qint64(kSide) * kSide * 2; // 16-bit pixels
constexpr int kSlots = 16;

QTemporaryDir &folder()
{
    static QTemporaryDir dir;
    return dir;
}

QByteArray &frameBytes()
{
    static QByteArray bytes = [] {
        QByteArray b(int(kFrameBytes), Qt::Uninitialized);
        for (int i = 0; i < b.size(); ++i)
            b[i] = char(i * 31);
        return b;
    }();
    return bytes;
}

std::vector<quint64> randomOrder(int count)
{
    std::mt19937 random(7);
    std::vector<quint64> order(4096);
    for (quint64 &index : order)
        index = random() % quint64(count);
    return order;
}

void setFrameCounters(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * kFrameBytes);
}

} // namespace

static void BM_QueueAddFrame(benchmark::State &state)
{
    CZOImageQueue queue(folder().filePath("add.bin"), kSlots, kSide, kSide, ZOS_DT_UINT16);
    const char *data = frameBytes().constData();
    for (auto _ : state)
        if (!queue.addFrame(data))
            state.SkipWithError("addFrame failed");
    setFrameCounters(state);
}
BENCHMARK(BM_QueueAddFrame)->UseRealTime();

// The same bytes through an ordinary QFile, wrapping over the same number of slots.
static void BM_PlainFileWrite(benchmark::State &state)
{
    QFile file(folder().filePath("plain.bin"));
    if (!file.open(QIODevice::WriteOnly))
        state.SkipWithError("cannot open");
    const QByteArray &data = frameBytes();
    qint64 slot = 0;
    for (auto _ : state) {
        file.seek(80 + slot * kFrameBytes);
        if (file.write(data) != kFrameBytes)
            state.SkipWithError("write failed");
        slot = (slot + 1) % kSlots;
    }
    setFrameCounters(state);
}
BENCHMARK(BM_PlainFileWrite)->UseRealTime();

static void BM_QueueGetFrameAtRandom(benchmark::State &state)
{
    const QString path = folder().filePath("read.bin");
    CZOImageQueue writer(path, kSlots, kSide, kSide, ZOS_DT_UINT16);
    for (int i = 0; i < kSlots + 5; ++i)
        writer.addFrame(frameBytes().constData());
    writer.finalizeImageQueue(1, 0);
    CZOImageQueue queue;
    if (!queue.initFromFile(path, ZOS_DT_UINT16))
        state.SkipWithError("cannot reopen");
    const std::vector<quint64> order = randomOrder(kSlots);
    QByteArray buffer(int(kFrameBytes), '\0');
    size_t next = 0;
    for (auto _ : state) {
        if (!queue.getFrameAt(order[next], buffer.data()))
            state.SkipWithError("getFrameAt failed");
        next = (next + 1) % order.size();
    }
    setFrameCounters(state);
}
BENCHMARK(BM_QueueGetFrameAtRandom)->UseRealTime();

// Seek and read of the same slots of the same kind of file through an ordinary QFile.
static void BM_PlainPositionedRead(benchmark::State &state)
{
    const QString path = folder().filePath("plainread.bin");
    {
        QFile out(path);
        out.open(QIODevice::WriteOnly);
        out.write(QByteArray(80, '\0'));
        for (int i = 0; i < kSlots; ++i)
            out.write(frameBytes());
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        state.SkipWithError("cannot open");
    const std::vector<quint64> order = randomOrder(kSlots);
    QByteArray buffer(int(kFrameBytes), '\0');
    size_t next = 0;
    for (auto _ : state) {
        file.seek(qint64(80 + order[next] * quint64(kFrameBytes)));
        if (file.read(buffer.data(), kFrameBytes) != kFrameBytes)
            state.SkipWithError("read failed");
        next = (next + 1) % order.size();
    }
    setFrameCounters(state);
}
BENCHMARK(BM_PlainPositionedRead)->UseRealTime();

namespace {

QString csvFile(int rows)
{
    const QString path = folder().filePath(QStringLiteral("table%1.csv").arg(rows));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    QByteArray text = "id,name,exposure,binning,filter,time\r\n";
    for (int i = 1; i < rows; ++i)
        text += QByteArray::number(i) + ",mouse_" + QByteArray::number(i * 7) + ",0.5,4,open,20261122083000\r\n";
    file.write(text);
    return path;
}

const QStringList kCsvHeader{"id", "name", "exposure", "binning", "filter", "time"};

} // namespace

// One change near the top: everything after it is written again, and the
// value's length alternates so the file size changes too.
static void BM_CSVSetCellFirstRow(benchmark::State &state)
{
    const int rows = int(state.range(0));
    const QString path = csvFile(rows);
    CZOSCSVParser parser(path, kCsvHeader);
    bool wide = false;
    for (auto _ : state) {
        wide = !wide;
        if (parser.setCSVColumnValue(1, 2, wide ? QStringLiteral("0.125") : QStringLiteral("0.5")) != ES_SUCCESS)
            state.SkipWithError("set failed");
    }
    state.SetBytesProcessed(state.iterations() * QFile(path).size());
}
BENCHMARK(BM_CSVSetCellFirstRow)->Arg(1000)->Arg(10000)->UseRealTime();

static void BM_CSVAddThenRemoveRow(benchmark::State &state)
{
    const int rows = int(state.range(0));
    const QString path = csvFile(rows);
    CZOSCSVParser parser(path, kCsvHeader);
    const QStringList row{"new", "mouse", "1", "1", "open", "20261122083000"};
    for (auto _ : state) {
        parser.addRow(row);
        parser.removeRow(QStringLiteral("new"));
    }
    state.SetBytesProcessed(state.iterations() * 2 * QFile(path).size());
}
BENCHMARK(BM_CSVAddThenRemoveRow)->Arg(1000)->Arg(10000)->UseRealTime();

static void BM_CSVRowNumberOfLastRow(benchmark::State &state)
{
    const int rows = int(state.range(0));
    CZOSCSVParser parser(csvFile(rows), kCsvHeader);
    const QString key = QString::number(rows - 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(parser.getCSVRowNumber(key));
}
BENCHMARK(BM_CSVRowNumberOfLastRow)->Arg(1000)->Arg(10000)->UseRealTime();

// The floor for a change: read the file's bytes and write them back once.
static void BM_CSVBaselineReadWriteBytes(benchmark::State &state)
{
    const int rows = int(state.range(0));
    const QString path = csvFile(rows);
    QFile file(path);
    file.open(QIODevice::ReadWrite);
    for (auto _ : state) {
        file.seek(0);
        const QByteArray bytes = file.readAll();
        file.seek(0);
        file.write(bytes);
        file.flush();
    }
    state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK(BM_CSVBaselineReadWriteBytes)->Arg(1000)->Arg(10000)->UseRealTime();

BENCHMARK_MAIN();
