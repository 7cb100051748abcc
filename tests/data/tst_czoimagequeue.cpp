#include "czoimagequeue.h"

#include <QtTest>

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QtEndian>

#include <atomic>
#include <vector>

namespace {

constexpr int kWidth = 4;
constexpr int kHeight = 3;
constexpr int kFrameBytes = kWidth * kHeight * 2; // 16-bit pixels

// A frame whose every pixel holds its number, so any frame read back names itself.
QByteArray frame(quint16 number)
{
    QByteArray bytes(kFrameBytes, Qt::Uninitialized);
    for (int i = 0; i < kWidth * kHeight; ++i)
        qToLittleEndian(number, bytes.data() + 2 * i);
    return bytes;
}

// The number of a frame, or -1 when its pixels disagree.
int frameNumber(const QByteArray &bytes)
{
    const quint16 first = qFromLittleEndian<quint16>(bytes.constData());
    for (int i = 1; i < bytes.size() / 2; ++i)
        if (qFromLittleEndian<quint16>(bytes.constData() + 2 * i) != first)
            return -1;
    return first;
}

QByteArray header(const QVector<quint32> &words)
{
    QByteArray bytes(CZOImageQueue::HeaderSize, '\0');
    for (int i = 0; i < words.size(); ++i)
        qToLittleEndian(words[i], bytes.data() + 4 * i);
    return bytes;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class TestImageQueue : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void headerBytes();
    void ringOrder_data();
    void ringOrder();
    void refusesOutOfTurn();
    void rejectsUnusableShapes_data();
    void rejectsUnusableShapes();
    void whichFilesTheQueueDeletes();
    void badFiles_data();
    void badFiles();
    void offsetsBeyondFourGiB();
    void addWhileAnotherQueueIsRead();

private:
    QString path(const QString &name) const { return m_pDir->filePath(name); }
    QScopedPointer<QTemporaryDir> m_pDir;
    QTemporaryDir m_root;
};

void TestImageQueue::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_root.isValid());
    qputenv("ZO_DATA_ROOT", m_root.path().toUtf8());
}

void TestImageQueue::init()
{
    m_pDir.reset(new QTemporaryDir(m_root.filePath("XXXXXX")));
    QVERIFY(m_pDir->isValid());
}

void TestImageQueue::cleanup()
{
    m_pDir.reset();
}

void TestImageQueue::headerBytes()
{
    const QString file = path("q.bin");
    CZOImageQueue queue(file, 3, kWidth, kHeight, ZOS_DT_UINT16);
    QVERIFY(queue.isImageQueueModInProcess());
    QCOMPARE(queue.frameSizeInBytes(), quint64(kFrameBytes));
    QCOMPARE(readFile(file), header({0, 3, kHeight, kWidth, 0, 80, 1, 0}));

    for (quint16 n = 1; n <= 4; ++n)
        QVERIFY(queue.addFrame(frame(n).constData()));
    queue.finalizeImageQueue(7, -2);
    QVERIFY(!queue.isImageQueueModInProcess());

    const QByteArray bytes = readFile(file);
    QCOMPARE(bytes.size(), 80 + 3 * kFrameBytes);
    QCOMPARE(bytes.left(80), header({3, 3, kHeight, kWidth, 2, 80, 7, quint32(-2)}));
    int w = 0, h = 0, a = 0, b = 0;
    queue.getFrameInfo(w, h, a, b);
    QCOMPARE(QVector<int>({w, h, a, b}), QVector<int>({kWidth, kHeight, 7, -2}));
}

void TestImageQueue::ringOrder_data()
{
    QTest::addColumn<int>("capacity");
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("ringStart");
    QTest::addColumn<QVector<int>>("frames");       // by logical index, oldest first
    QTest::addColumn<QVector<int>>("slotContents"); // frame number in slot 0, 1, ...

    QTest::newRow("no frames") << 3 << 0 << 0 << QVector<int>{} << QVector<int>{};
    QTest::newRow("partly filled") << 3 << 2 << 2 << QVector<int>{1, 2} << QVector<int>{1, 2};
    QTest::newRow("exactly full") << 3 << 3 << 3 << QVector<int>{1, 2, 3} << QVector<int>{1, 2, 3};
    QTest::newRow("five into three") << 3 << 5 << 1 << QVector<int>{3, 4, 5} << QVector<int>{4, 5, 3};
    QTest::newRow("six into three") << 3 << 6 << 3 << QVector<int>{4, 5, 6} << QVector<int>{4, 5, 6};
    QTest::newRow("seven into three") << 3 << 7 << 2 << QVector<int>{5, 6, 7} << QVector<int>{7, 5, 6};
    QTest::newRow("capacity one") << 1 << 4 << 1 << QVector<int>{4} << QVector<int>{4};
}

void TestImageQueue::ringOrder()
{
    QFETCH(int, capacity);
    QFETCH(int, added);
    QFETCH(int, ringStart);
    QFETCH(QVector<int>, frames);
    QFETCH(QVector<int>, slotContents);

    const QString file = path("ring.bin");
    CZOImageQueue queue(file, quint64(capacity), kWidth, kHeight, ZOS_DT_UINT16);
    for (int n = 1; n <= added; ++n) {
        QVERIFY(queue.addFrame(frame(quint16(n)).constData()));
        // The ring start always names the slot of the oldest frame.
        const quint64 expectedStart = quint64(n < capacity ? n : capacity - n % capacity);
        QCOMPARE(queue.ringStart(), expectedStart);
        QCOMPARE(queue.getNumberOfFrames(), quint64(qMin(n, capacity)));
    }
    // A copy taken now is what a producer that dies leaves: it reopens whole.
    const QString copy = path("live.bin");
    QVERIFY(QFile::copy(file, copy));
    CZOImageQueue live;
    QVERIFY(live.initFromFile(copy, ZOS_DT_UINT16));
    queue.finalizeImageQueue(1, 0);
    QCOMPARE(queue.getNumberOfFrames(), quint64(frames.size()));
    QCOMPARE(queue.ringStart(), quint64(ringStart));

    const QByteArray bytes = readFile(file);
    QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + 16), quint32(ringStart));
    for (int slot = 0; slot < slotContents.size(); ++slot)
        QCOMPARE(frameNumber(bytes.mid(80 + slot * kFrameBytes, kFrameBytes)), slotContents[slot]);

    // Read back by the writer itself, by a second queue reopened on the file
    // and from the copy of the unfinished file.
    CZOImageQueue reopened;
    QVERIFY(reopened.initFromFile(file, ZOS_DT_UINT16));
    QCOMPARE(reopened.getNumberOfFrames(), quint64(frames.size()));
    QCOMPARE(reopened.getWidth(), kWidth);
    QCOMPARE(reopened.getHeight(), kHeight);
    for (CZOImageQueue *q : {&queue, &reopened, &live}) {
        QByteArray buffer(kFrameBytes, '\0');
        for (int i = 0; i < frames.size(); ++i) {
            QVERIFY(q->getFrameAt(quint64(i), buffer.data()));
            QCOMPARE(frameNumber(buffer), frames[i]);
        }
        if (!frames.isEmpty()) {
            // The count itself is accepted and reads the oldest frame again.
            QVERIFY(q->getFrameAt(quint64(frames.size()), buffer.data()));
            QCOMPARE(frameNumber(buffer), frames.first());
        }
        QVERIFY(!q->getFrameAt(quint64(frames.size()) + 1, buffer.data()));
        QVERIFY(!q->getFrameAt(0, nullptr));
    }
}

void TestImageQueue::refusesOutOfTurn()
{
    QByteArray buffer(kFrameBytes, '\0');

    CZOImageQueue empty;
    QVERIFY(!empty.isImageQueueModInProcess());
    QVERIFY(!empty.addFrame(frame(1).constData()));
    QVERIFY(!empty.getFrameAt(0, buffer.data()));
    empty.finalizeImageQueue(1, 0); // nothing to finalise; must not fail
    QVERIFY(!empty.getFrameAt(0, buffer.data()));

    CZOImageQueue queue(path("q.bin"), 3, kWidth, kHeight, ZOS_DT_UINT16);
    QVERIFY(!queue.addFrame(nullptr));
    QVERIFY(queue.addFrame(frame(1).constData()));
    QVERIFY(!queue.getFrameAt(0, buffer.data()));
    queue.finalizeImageQueue(1, 0);
    QVERIFY(!queue.addFrame(frame(2).constData()));
    QCOMPARE(queue.getNumberOfFrames(), quint64(1));
    QVERIFY(queue.getFrameAt(0, buffer.data()));
    QCOMPARE(frameNumber(buffer), 1);
}

void TestImageQueue::rejectsUnusableShapes_data()
{
    QTest::addColumn<quint64>("capacity");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("type");

    QTest::newRow("capacity 0") << quint64(0) << 4 << 3 << int(ZOS_DT_UINT16);
    QTest::newRow("capacity past 32 bits") << (quint64(1) << 32) << 4 << 3 << int(ZOS_DT_UINT16);
    QTest::newRow("width 0") << quint64(3) << 0 << 3 << int(ZOS_DT_UINT16);
    QTest::newRow("negative height") << quint64(3) << 4 << -3 << int(ZOS_DT_UINT16);
    QTest::newRow("unknown type") << quint64(3) << 4 << 3 << int(ZOS_DT_UNKNOWN);
    QTest::newRow("slots past any file size") << quint64(0xFFFFFFFF) << 0x7FFFFFFF << 0x7FFFFFFF
                                              << int(ZOS_DT_DOUBLE);
}

void TestImageQueue::rejectsUnusableShapes()
{
    QFETCH(quint64, capacity);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, type);
    const QString file = path("q.bin");
    {
        CZOImageQueue queue(file, capacity, width, height, ZOSDataTypes(type));
        QVERIFY(!queue.isImageQueueModInProcess());
        QVERIFY(!queue.addFrame(frame(1).constData()));
        QVERIFY(!QFile::exists(file));
    }
    QVERIFY(!QFile::exists(file));
}

void TestImageQueue::whichFilesTheQueueDeletes()
{
    const QString first = path("first.bin"), second = path("second.bin"), third = path("third.bin");
    {
        CZOImageQueue queue(first, 2, kWidth, kHeight, ZOS_DT_UINT16);
        QVERIFY(queue.addFrame(frame(1).constData()));
        queue.initImageQueue(second, 2, kWidth, kHeight, ZOS_DT_UINT16, false);
        QVERIFY(QFile::exists(first) && QFile::exists(second));
        QCOMPARE(queue.getNumberOfFrames(), quint64(0));
        queue.initImageQueue(third, 2, kWidth, kHeight, ZOS_DT_UINT16, true);
        QVERIFY(!QFile::exists(second) && QFile::exists(third));
        QVERIFY(queue.isImageQueueModInProcess());
        QVERIFY(queue.addFrame(frame(1).constData()));
        queue.finalizeImageQueue(1, 0);
        {
            CZOImageQueue reader;
            QVERIFY(reader.initFromFile(third, ZOS_DT_UINT16));
        }
        QVERIFY(!QFile::exists(third)); // the reopened queue owned it too
    }
    QVERIFY(QFile::exists(first)); // let go without deleting

    // A file refused as a queue is not the queue's to delete.
    QVERIFY(writeFile(second, "not a queue"));
    {
        CZOImageQueue reader;
        QVERIFY(!reader.initFromFile(second, ZOS_DT_UINT16));
    }
    QCOMPARE(readFile(second), QByteArray("not a queue"));
}

void TestImageQueue::badFiles_data()
{
    QTest::addColumn<QByteArray>("contents");

    const QByteArray frames = frame(1) + frame(2);
    const auto good = [&](QVector<quint32> words) { return header(words) + frames; };
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("text") << QByteArray("width,height\r\n4,3\r\n");
    QTest::newRow("header cut short") << header({2, 2, kHeight, kWidth, 2, 80, 1, 0}).left(79);
    QTest::newRow("frames cut short") << good({2, 2, kHeight, kWidth, 2, 80, 1, 0}).chopped(1);
    QTest::newRow("more frames than the file") << good({3, 3, kHeight, kWidth, 3, 80, 1, 0});
    QTest::newRow("width 0") << good({2, 2, kHeight, 0, 2, 80, 1, 0});
    QTest::newRow("negative width") << good({2, 2, kHeight, quint32(-4), 2, 80, 1, 0});
    QTest::newRow("enormous frame") << good({2, 2, 0x7FFFFFFF, 0x7FFFFFFF, 2, 80, 1, 0});
    QTest::newRow("capacity 0") << good({2, 0, kHeight, kWidth, 2, 80, 1, 0});
    QTest::newRow("count above capacity") << good({2, 1, kHeight, kWidth, 1, 80, 1, 0});
    QTest::newRow("ring start above count") << good({2, 2, kHeight, kWidth, 3, 80, 1, 0});
    QTest::newRow("ring start 0 with frames") << good({2, 2, kHeight, kWidth, 0, 80, 1, 0});
    QTest::newRow("data start not 80") << good({2, 2, kHeight, kWidth, 2, 40, 1, 0});
    QTest::newRow("count past 32-bit offsets") << good({0xFFFFFFFF, 0xFFFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 1, 80, 1, 0});
}

void TestImageQueue::badFiles()
{
    QFETCH(QByteArray, contents);
    const QString file = path("bad.bin");
    QVERIFY(writeFile(file, contents));

    CZOImageQueue queue;
    QVERIFY(!queue.initFromFile(file, ZOS_DT_UINT16));
    QCOMPARE(queue.getNumberOfFrames(), quint64(0));
    QByteArray buffer(kFrameBytes, '\0');
    QVERIFY(!queue.getFrameAt(0, buffer.data()));
    QVERIFY(!queue.getFrameAt(1, buffer.data()));

    // The good twin of these files reads, so the refusals above are about the damage.
    const QString twin = path("good.bin");
    QVERIFY(writeFile(twin, header({2, 2, kHeight, kWidth, 2, 80, 1, 0}) + frame(1) + frame(2)));
    QVERIFY(queue.initFromFile(twin, ZOS_DT_UINT16));
    QVERIFY(queue.getFrameAt(1, buffer.data()));
    QCOMPARE(frameNumber(buffer), 2);

    QVERIFY(!queue.initFromFile(path("missing.bin"), ZOS_DT_UINT16));
    QVERIFY(!queue.initFromFile(m_pDir->path(), ZOS_DT_UINT16));
}

void TestImageQueue::offsetsBeyondFourGiB()
{
    // 2048 x 2048 16-bit frames are 8 MiB; 600 of them end past 4 GiB. The file
    // is sparse: only the header and two frames are really written.
    const int side = 2048;
    const quint64 frameSize = quint64(side) * side * 2;
    const quint32 capacity = 600;
    const quint32 ringStart = 100; // logical index i lives in slot (i + 500) mod 600
    const QString file = path("big.bin");
    {
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QVERIFY(out.write(header({capacity, capacity, side, side, ringStart, 80, 1, 0})) == 80);
        if (!out.resize(qint64(80 + capacity * frameSize)))
            QSKIP("this file system cannot hold a sparse 5 GiB file");
        QByteArray marker(int(frameSize), '\0');
        for (quint64 slot : {quint64(599), quint64(512)}) {
            marker.fill(char(slot % 251));
            QVERIFY(out.seek(qint64(80 + slot * frameSize)));
            QCOMPARE(out.write(marker), qint64(marker.size()));
        }
    }
    QVERIFY(80 + 599 * frameSize > (quint64(1) << 32));

    CZOImageQueue queue;
    QVERIFY(queue.initFromFile(file, ZOS_DT_UINT16));
    QByteArray buffer(int(frameSize), 'x');
    QVERIFY(queue.getFrameAt(99, buffer.data())); // slot 599
    QCOMPARE(buffer, QByteArray(int(frameSize), char(599 % 251)));
    QVERIFY(queue.getFrameAt(12, buffer.data())); // slot 512, the first one past 4 GiB
    QCOMPARE(buffer, QByteArray(int(frameSize), char(512 % 251)));
    QVERIFY(queue.getFrameAt(100, buffer.data())); // slot 0, never written: zeros
    QCOMPARE(buffer, QByteArray(int(frameSize), '\0'));
}

void TestImageQueue::addWhileAnotherQueueIsRead()
{
    const QString finished = path("finished.bin");
    constexpr int kHeld = 5;
    CZOImageQueue writerOfFinished(finished, kHeld, kWidth, kHeight, ZOS_DT_UINT16);
    for (quint16 n = 1; n <= 8; ++n)
        QVERIFY(writerOfFinished.addFrame(frame(n).constData()));
    writerOfFinished.finalizeImageQueue(1, 0);
    CZOImageQueue copy;
    QVERIFY(copy.initFromFile(finished, ZOS_DT_UINT16));

    constexpr int kAdded = 400;
    CZOImageQueue live(path("live.bin"), 7, kWidth, kHeight, ZOS_DT_UINT16);
    std::atomic<bool> addsOk{true};
    QScopedPointer<QThread> producer(QThread::create([&] {
        for (int n = 1; n <= kAdded; ++n)
            if (!live.addFrame(frame(quint16(n)).constData()))
                addsOk = false;
    }));
    producer->start();

    // Two readers share the finished copy while the producer writes.
    std::atomic<int> readErrors{0};
    auto readAll = [&] {
        QByteArray buffer(kFrameBytes, '\0');
        for (int round = 0; round < 200; ++round)
            for (int i = 0; i < kHeld; ++i)
                if (!copy.getFrameAt(quint64(i), buffer.data()) || frameNumber(buffer) != 4 + i)
                    ++readErrors;
    };
    QScopedPointer<QThread> reader(QThread::create(readAll));
    reader->start();
    readAll();
    QVERIFY(reader->wait(60000));
    QVERIFY(producer->wait(60000));
    QCOMPARE(readErrors.load(), 0);
    QVERIFY(addsOk.load());

    live.finalizeImageQueue(1, 0);
    QByteArray buffer(kFrameBytes, '\0');
    for (int i = 0; i < 7; ++i) {
        QVERIFY(live.getFrameAt(quint64(i), buffer.data()));
        QCOMPARE(frameNumber(buffer), kAdded - 6 + i);
    }
}

QTEST_GUILESS_MAIN(TestImageQueue)
#include "tst_czoimagequeue.moc"
