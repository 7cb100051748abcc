#include "czoimagequeue.h"

#include "testfiles.h"

#include <QtTest>

#include <atomic>

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

QByteArray header(const QVector<quint32> &words)
{
    QByteArray bytes(CZOImageQueue::HeaderSize, '\0');
    for (int i = 0; i < words.size(); ++i)
        qToLittleEndian(words[i], bytes.data() + 4 * i);
    return bytes;
}

} // namespace

class TestImageQueue : public QObject
{
    Q_OBJECT
private slots:
    void ring_data()
    {
        QTest::addColumn<int>("capacity"); QTest::addColumn<int>("added");
        QTest::addColumn<QVector<int>>("slotContents"); // frame number in slot 0, 1, ...

        QTest::newRow("no frames") << 3 << 0 << QVector<int>{};
        QTest::newRow("partly filled") << 3 << 2 << QVector<int>{1, 2};
        QTest::newRow("exactly full") << 3 << 3 << QVector<int>{1, 2, 3};
        QTest::newRow("five into three") << 3 << 5 << QVector<int>{4, 5, 3};
        QTest::newRow("seven into three") << 3 << 7 << QVector<int>{7, 5, 6};
        QTest::newRow("capacity one") << 1 << 4 << QVector<int>{4};
    }

    void ring()
    {
        QFETCH(int, capacity); QFETCH(int, added); QFETCH(QVector<int>, slotContents);
        const QString file = path("ring.bin");
        CZOImageQueue queue(file, quint64(capacity), kWidth, kHeight, ZOS_DT_UINT16);
        QVERIFY(queue.isImageQueueModInProcess());
        QCOMPARE(readFile(file), header({0, quint32(capacity), kHeight, kWidth, 0, 80, 1, 0}));
        QByteArray buffer(kFrameBytes, '\0');
        QVERIFY(!queue.addFrame(nullptr));
        quint64 ringStart = 0; // always the slot of the oldest frame
        for (int n = 1; n <= added; ++n) {
            QVERIFY(!queue.getFrameAt(0, buffer.data())); // not while adding
            QVERIFY(queue.addFrame(frame(quint16(n)).constData()));
            ringStart = quint64(n < capacity ? n : capacity - n % capacity);
            QCOMPARE(queue.ringStart(), ringStart);
            QCOMPARE(queue.getNumberOfFrames(), quint64(qMin(n, capacity)));
        }
        // A copy taken now is what a producer that dies leaves: it reopens whole.
        const QString copy = path("live.bin");
        QVERIFY(QFile::copy(file, copy));
        CZOImageQueue live;
        QVERIFY(live.initFromFile(copy, ZOS_DT_UINT16));
        queue.finalizeImageQueue(7, -2);
        QVERIFY(!queue.isImageQueueModInProcess());
        QVERIFY(!queue.addFrame(frame(1).constData()));
        const int count = slotContents.size();

        const QByteArray bytes = readFile(file);
        QCOMPARE(bytes.left(80), header({quint32(count), quint32(capacity), kHeight, kWidth, quint32(ringStart), 80, 7,
                                         quint32(-2)}));
        QCOMPARE(bytes.size(), 80 + count * kFrameBytes);
        for (int slot = 0; slot < count; ++slot)
            QCOMPARE(bytes.mid(80 + slot * kFrameBytes, kFrameBytes), frame(quint16(slotContents[slot])));

        // Read back, oldest first, by the writer itself, by a second queue reopened
        // on the file and from the copy of the unfinished file (which has no a, b yet).
        CZOImageQueue reopened;
        QVERIFY(reopened.initFromFile(file, ZOS_DT_UINT16));
        for (CZOImageQueue *q : {&queue, &reopened, &live}) {
            int w = 0, h = 0, a = 0, b = 0;
            q->getFrameInfo(w, h, a, b);
            const bool finished = q != &live;
            QCOMPARE(QVector<quint64>({quint64(w), quint64(h), quint64(a), quint64(b), quint64(q->getWidth()),
                                       quint64(q->getHeight()), q->getNumberOfFrames()}),
                     QVector<quint64>({kWidth, kHeight, finished ? 7u : 1u, finished ? quint64(-2) : 0u, kWidth, kHeight,
                                       quint64(count)}));
            for (int i = 0; i < count; ++i) {
                QVERIFY(q->getFrameAt(quint64(i), buffer.data()));
                QCOMPARE(buffer, frame(quint16(added - count + 1 + i)));
            }
            // The count itself is accepted and reads the oldest frame again.
            QCOMPARE(q->getFrameAt(quint64(count), buffer.data()), count > 0);
            QVERIFY(count == 0 || buffer == frame(quint16(added - count + 1)));
            QVERIFY(!q->getFrameAt(quint64(count) + 1, buffer.data()));
            QVERIFY(!q->getFrameAt(0, nullptr));
        }
        // A reopened queue holds one handle on its file, however often it is
        // opened, and keeps reading it once the file is gone from its folder.
        const auto handles = [] { return QDir(QStringLiteral("/proc/self/fd")).count(); }; // 0 where unknown
        const uint open = handles();
        for (int i = 0; i < 20; ++i)
            QVERIFY(reopened.initFromFile(file, ZOS_DT_UINT16));
        QCOMPARE(handles(), open);
        QVERIFY(QFile::remove(file));
        QCOMPARE(reopened.getFrameAt(0, buffer.data()), count > 0);
    }

    void refusesUnusableShapes()
    {
        const struct {
            quint64 capacity;
            int width, height;
            ZOSDataTypes type;
        } shapes[] = {{0, 4, 3, ZOS_DT_UINT16},       {quint64(1) << 32, 4, 3, ZOS_DT_UINT16},
                      {3, 0, 3, ZOS_DT_UINT16},       {3, 4, -3, ZOS_DT_UINT16},
                      {3, 4, 3, ZOS_DT_UNKNOWN},      {0xFFFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, ZOS_DT_DOUBLE}};
        QByteArray buffer(kFrameBytes, '\0');
        for (const auto &shape : shapes) {
            CZOImageQueue queue(path("q.bin"), shape.capacity, shape.width, shape.height, shape.type);
            QVERIFY(!queue.isImageQueueModInProcess() && !queue.addFrame(frame(1).constData()));
            QVERIFY(!QFile::exists(path("q.bin")));
            queue.finalizeImageQueue(1, 0); // nothing to finalise; must not fail
            QVERIFY(!queue.getFrameAt(0, buffer.data()));
        }
        // The smallest shape works for every pixel type.
        const int pixelBytes[] = {1, 2, 4, 4, 8};
        for (int type = ZOS_DT_UINT8; type <= ZOS_DT_DOUBLE; ++type) {
            CZOImageQueue queue(path("small.bin"), 1, 1, 1, ZOSDataTypes(type));
            const QByteArray pixel = frame(7).left(pixelBytes[type - 1]);
            QVERIFY(queue.addFrame(pixel.constData()));
            queue.finalizeImageQueue(0, 0);
            QVERIFY(queue.getFrameAt(0, buffer.data()));
            QCOMPARE(buffer.left(pixel.size()), pixel);
        }
    }

    void whichFilesTheQueueDeletes()
    {
        const QString first = path("first.bin"), second = path("second.bin"), third = path("third.bin");
        {
            CZOImageQueue queue(first, 2, kWidth, kHeight, ZOS_DT_UINT16);
            queue.initImageQueue(second, 2, kWidth, kHeight, ZOS_DT_UINT16, false); // lets go of the first
            queue.initImageQueue(third, 2, kWidth, kHeight, ZOS_DT_UINT16, true);   // deletes the second
            QVERIFY(QFile::exists(first) && !QFile::exists(second) && QFile::exists(third));
            queue.finalizeImageQueue(1, 0);
            CZOImageQueue reader;
            QVERIFY(reader.initFromFile(third, ZOS_DT_UINT16));
        }
        QVERIFY(QFile::exists(first) && !QFile::exists(third)); // the reopened queue owned it too
    }

    void badFiles_data()
    {
        QTest::addColumn<QByteArray>("contents");

        const QByteArray frames = frame(1) + frame(2);
        const auto good = [&](QVector<quint32> words) { return header(words) + frames; };
        QTest::newRow("header cut short") << header({2, 2, kHeight, kWidth, 2, 80, 1, 0}).left(79);
        QTest::newRow("frames cut short") << good({2, 2, kHeight, kWidth, 2, 80, 1, 0}).chopped(1);
        QTest::newRow("negative height") << good({2, 2, quint32(-3), kWidth, 2, 80, 1, 0});
        QTest::newRow("enormous frame") << good({2, 2, 0x7FFFFFFF, 0x7FFFFFFF, 2, 80, 1, 0});
        QTest::newRow("count above capacity") << good({2, 1, kHeight, kWidth, 1, 80, 1, 0});
        QTest::newRow("ring start above count") << good({2, 2, kHeight, kWidth, 3, 80, 1, 0});
        QTest::newRow("ring start 0 with frames") << good({2, 2, kHeight, kWidth, 0, 80, 1, 0});
        QTest::newRow("data start not 80") << good({2, 2, kHeight, kWidth, 2, 40, 1, 0});
        QTest::newRow("count past 32-bit offsets") << good({0xFFFFFFFF, 0xFFFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 1, 80, 1, 0});
    }

    void badFiles()
    {
        QFETCH(QByteArray, contents);
        const QString file = path("bad.bin"), twin = path("good.bin");
        QVERIFY(writeFile(file, contents));
        // Its good twin reads, so the refusal is about the damage, and forgets the twin.
        QVERIFY(writeFile(twin, header({2, 2, kHeight, kWidth, 2, 80, 1, 0}) + frame(1) + frame(2)));
        QByteArray buffer(kFrameBytes, '\0');
        {
            CZOImageQueue queue;
            QVERIFY(queue.initFromFile(twin, ZOS_DT_UINT16));
            QVERIFY(!queue.initFromFile(file, ZOS_DT_UINT16));
            QCOMPARE(queue.getNumberOfFrames(), quint64(0));
            QVERIFY(!queue.getFrameAt(0, buffer.data()));
            QVERIFY(!queue.initFromFile(m_dir.path(), ZOS_DT_UINT16));
        }
        QCOMPARE(readFile(file), contents); // a file refused as a queue is not the queue's to delete
    }

    void addWhileAnotherQueueIsRead()
    {
        // Two threads read one finished queue while a third fills another.
        CZOImageQueue finished(path("finished.bin"), 5, kWidth, kHeight, ZOS_DT_UINT16);
        for (quint16 n = 1; n <= 8; ++n)
            finished.addFrame(frame(n).constData());
        finished.finalizeImageQueue(1, 0);
        CZOImageQueue live(path("live.bin"), 7, kWidth, kHeight, ZOS_DT_UINT16);
        std::atomic<int> errors{0};
        const auto read = [&] {
            QByteArray buffer(kFrameBytes, '\0');
            for (int i = 0; i < 1000; ++i)
                errors += !finished.getFrameAt(quint64(i % 5), buffer.data()) || buffer != frame(quint16(4 + i % 5));
        };
        QScopedPointer<QThread> reader(QThread::create(read)), producer(QThread::create([&] {
            for (int n = 1; n <= 400; ++n)
                errors += !live.addFrame(frame(quint16(n)).constData());
        }));
        producer->start();
        reader->start();
        read();
        QVERIFY(producer->wait(60000) && reader->wait(60000));
        QCOMPARE(errors.load(), 0);
    }

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestImageQueue)
#include "tst_czoimagequeue.moc"
