// The data stores: the CSV editor and the file-backed image ring queue.
#include "czoimagequeue.h"
#include "czoscsvparser.h"
#include "czoslog.h"
#include "testfiles.h"

#include <QtTest>

#include <random>
#include <thread>
#include <tuple>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kWidth = 4, kHeight = 3;
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

const QStringList kHeader{QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("value")};

QList<QByteArray> nonEmptyCells(const QByteArray &row)
{
    QList<QByteArray> cells = row.split(',');
    cells.removeAll(QByteArray());
    return cells;
}

// The editor's rules spelled out the slow, obvious way, to check the fast one.
struct PlainModel {
    QList<QByteArray> rows; // non-empty lines without their line ends
    bool openLast = false;  // the last row was appended without a line end

    QByteArray text() const { return rows.join("\r\n") + (rows.isEmpty() || openLast ? "" : "\r\n"); }
    int find(const QByteArray &key) const
    {
        for (int r = 0; r < rows.size(); ++r)
            if (rows[r].split(',').first() == key)
                return r;
        return -1;
    }
    void set(int row, int column, const QByteArray &value)
    {
        QList<QByteArray> cells = nonEmptyCells(rows.value(row));
        if (row < 0 || column < 0 || column >= cells.size())
            return;
        cells[column] = value;
        rows[row] = cells.join(',');
    }
};

// Rows with shared key beginnings, stray "\n" ends, empty lines, lone "\r"s,
// trailing commas and lines longer than a read block, ending anywhere in one.
QByteArray messyTable(quint32 seed, int rows, PlainModel &model)
{
    std::mt19937 random(seed);
    QByteArray text = "key,a,b,c\r\n";
    model.rows = {"key,a,b,c"};
    // Line ends, and what of them stays in the row.
    const QPair<const char *, const char *> ends[] = {{"\r\n", ""},     {"\r\n", ""}, {"\r\n", ""},     {"\n", ""},
                                                      {"\r\n\r\n", ""}, {"\n\n", ""}, {"\r\r\n", "\r"}, {"\rx\n", "\rx"}};
    for (int i = 0; i < rows; ++i) {
        const int width = random() % 400 ? int(random() % 30) : 65536 + int(random() % 70000);
        QByteArray row = QByteArray::number(int(random() % 40)) + (random() % 5 ? "," : "x,")
            + QByteArray(width, char('a' + random() % 26)) + "," + QByteArray::number(int(random() % 3000) - 1000)
            + (random() % 6 ? "" : ",");
        const auto end = ends[random() % 8];
        text += row + end.first;
        model.rows << row + end.second;
    }
    model.rows << "9"; // a row of one field
    return text + "9\r\n";
}

} // namespace

class TestData : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { useDataRoot(m_dir.path()); }

    void headerCheck_data()
    {
        QTest::addColumn<QByteArray>("before"); // "-" for no file
        QTest::addColumn<QStringList>("header"); QTest::addColumn<QByteArray>("after");

        const QByteArray fresh("id,name,value\r\n");
        QTest::newRow("new file") << QByteArray("-") << kHeader << fresh;
        QTest::newRow("only empty lines") << QByteArray("\r\n\n\r\n") << kHeader << fresh;
        QTest::newRow("wider first line kept") << QByteArray("w,x,y,z\n1,2\n\n") << kHeader
                                               << QByteArray("w,x,y,z\n1,2\n\n");
        QTest::newRow("same width kept") << QByteArray("p,,\r\n\r\n1") << kHeader << QByteArray("p,,\r\n\r\n1");
        QTest::newRow("narrower first line replaced") << QByteArray("id,name\r\n1,a,10\r\n\r\n2,b,20") << kHeader
                                                      << QByteArray("id,name,value\r\n1,a,10\r\n2,b,20\r\n");
        QTest::newRow("empty first line replaced") << QByteArray("\r\nx,y,z\n") << kHeader << fresh + "x,y,z\r\n";
        QTest::newRow("one field, empty first line kept") << QByteArray("\r\nabc\n") << QStringList{"id"}
                                                          << QByteArray("\r\nabc\n");
        QTest::newRow("no header asked") << QByteArray("junk\n\n") << QStringList() << QByteArray("junk\n\n");
    }

    void headerCheck()
    {
        QFETCH(QByteArray, before); QFETCH(QStringList, header); QFETCH(QByteArray, after);
        QVERIFY(before == "-" || writeFile(path(), before));
        CZOSCSVParser parser(path(), header);
        QCOMPARE(readFile(path()), after);
    }

    void agreesWithPlainModel_data()
    {
        QTest::addColumn<quint32>("seed"); QTest::addColumn<int>("rows");
        QTest::newRow("small") << 1u << 30;
        QTest::newRow("medium") << 2u << 400;
        QTest::newRow("several read blocks") << 3u << 3000;
    }

    void agreesWithPlainModel()
    {
        QFETCH(quint32, seed); QFETCH(int, rows);
        PlainModel model;
        const QByteArray start = messyTable(seed, rows, model);
        QVERIFY(writeFile(path(), start));
        CZOSCSVParser parser(path(), {"key", "a", "b", "c"});
        QCOMPARE(readFile(path()), start); // its header fits: nothing rewritten
        // A caller's text, unflushed, is seen by the next change.
        *parser.getOutputStream() << QStringLiteral("0x,Größe,1\r\n");
        model.rows << "0x,Größe,1";

        std::mt19937 random(seed * 7919u);
        for (int step = 0; step < 60; ++step) {
            // Keys match the whole first field, case included: "KEY", "1x" and "3,a" test that.
            const QByteArray keys[] = {QByteArray::number(int(random() % 40)), "key", "KEY", "1x", "3,a", ""};
            const QByteArray key = keys[random() % 8 < 3 ? random() % 6 : 0];
            const int row = int(random() % quint32(model.rows.size() + 2)) - 1;
            const int column = int(random() % 5) - 1;
            const QByteArray value = step % 3 ? QByteArray::number(step) : QByteArray("wide-value");
            if (step % 7 == 3) { // another program appends untidy lines; the next change tidies them
                QFile other(path());
                QVERIFY(other.open(QIODevice::Append));
                other.write("\n" + QByteArray::number(step) + ",ext\n\n");
                model.rows << QByteArray::number(step) + ",ext";
            } else if (step == 14) { // or untidies the end of this parser's own change, keeping the size
                QCOMPARE(parser.setCSVColumnValue(0, 0, "head"), ES_SUCCESS);
                model.set(0, 0, "head");
                QTest::qSleep(20); // past a tick of the file system's clock
                QFile other(path());
                QVERIFY(other.open(QIODevice::ReadWrite) && other.seek(other.size() - 2) && other.write("\n\n") == 2);
                other.close();
                QCOMPARE(parser.setCSVColumnValue(0, 0, "key"), ES_SUCCESS);
                model.set(0, 0, "key");
                QCOMPARE(readFile(path()), model.text());
            } else if (step == 30) { // or replaces the file, as a save does: the parser follows the new one
                QVERIFY(writeFile(path("new"), model.text()) && QFile::remove(path()) && QFile::rename(path("new"), path()));
            }
            model.openLast = false;
            switch (random() % 4) {
            case 0: // an empty row only ends the open last line; a row is appended without one
                QCOMPARE(parser.addRow(step % 5 ? QStringList{key, "new", ""} : QStringList()), ES_SUCCESS);
                if ((model.openLast = step % 5))
                    model.rows << key + ",new,";
                break;
            case 1:
                QCOMPARE(parser.removeRow(key), ES_SUCCESS);
                for (int r; (r = model.find(key)) >= 0;)
                    model.rows.removeAt(r);
                break;
            default:
                QCOMPARE(parser.setCSVColumnValue(row, column, value), ES_SUCCESS);
                model.set(row, column, value);
            }
            QCOMPARE(readFile(path()), model.text());
            QCOMPARE(parser.getCSVRowNumber(key), key.contains(',') ? -1 : model.find(key));
            const qint64 position = step % 3 ? parser.getOutputStream()->pos() : 7;
            QVERIFY(parser.getOutputStream()->seek(position)); // a caller's own position survives reads
            QCOMPARE(parser.getCSVColumnValue(row, column),
                     QString::fromUtf8(row < 0 || column < 0 ? QByteArray() : nonEmptyCells(model.rows.value(row)).value(column)));
            QCOMPARE(parser.getNumRows(), model.rows.size());
            QCOMPARE(parser.getOutputStream()->pos(), position);
        }
        QCOMPARE(parser.getCSVColumnValue(0, 1), QString::fromUtf8(nonEmptyCells(model.rows.value(0)).value(1))); // the first row too
    }

    // An append cut short (by a power cut, say) leaves a prefix of its bytes, the
    // line end first: the rows before it read as before, and the next append
    // starts a line of its own.
    void tornAppendKeepsEarlierRows()
    {
        const QByteArray before = "id,name,value\r\n1,a,10\r\n2,b,20";
        const QByteArray append = "\r\n3,c,30";
        for (int kept = 0; kept <= append.size(); ++kept) {
            QVERIFY(writeFile(path("torn"), before + append.left(kept)));
            CZOSCSVParser parser(path("torn"), kHeader);
            const QByteArray partial = append.left(kept).mid(2); // what reached the disk of the torn row
            const int rows = partial.isEmpty() ? 3 : 4;
            QCOMPARE((QVariantList{parser.getNumRows(), parser.getCSVColumnValue(2, 2)}), (QVariantList{rows, "20"}));
            QCOMPARE(parser.addRow({"4", "d", "40"}), ES_SUCCESS);
            QCOMPARE(readFile(path("torn")), before + (partial.isEmpty() ? "" : "\r\n" + partial) + "\r\n4,d,40");
            QCOMPARE(parser.getCSVColumnValue(2, 2), QStringLiteral("20"));
            QCOMPARE(parser.getCSVRowNumber("4"), rows);
        }
    }

    // A process without standard input hands handle 0 to the next file it opens: here the staging file.
    void stagingFileOnHandleZero()
    {
        QVERIFY(::fcntl(0, F_GETFD) != -1 || ::open("/dev/null", O_RDONLY) == 0);
        const int parked = ::dup(0); // what the runner left on handle 0 (Qt's own, maybe) comes back afterwards
        {
            CZOSCSVParser parser(path("zero"), kHeader);
            ::close(0);
            QCOMPARE(parser.addRow({"1", "a", "10"}), ES_SUCCESS);
            QCOMPARE(parser.setCSVColumnValue(1, 2, "11"), ES_SUCCESS);
            QCOMPARE(readFile(path("zero")), QByteArray("id,name,value\r\n1,a,11\r\n"));
            // The staging file stays open beside the table for the next change, as it does on any other handle.
            QCOMPARE(QDir(m_dir.path()).entryList({".zero.csv.zosave-*"}, QDir::Files | QDir::Hidden).size(), 1);
        }
        QVERIFY(::dup2(parked, 0) == 0 && ::close(parked) == 0);
    }

    // In a folder nobody may write (as root the change runs as nobody), a change that must swap
    // the file in fails, says so and leaves the file as it was.
    void changeInALockedFolder()
    {
        const QString folder = m_dir.filePath("locked"), table = folder + "/t.csv";
        const QByteArray text = "id,name,value\r\n1,a,10\r\n2,b,20\r\n";
        QVERIFY(QDir().mkpath(folder) && writeFile(table, text));
        for (const auto &[name, mode] : {std::pair(m_dir.path(), 0x7755), {folder, 0x5555}, {table, 0x6666}})
            QVERIFY(QFile::setPermissions(name, QFile::Permissions(mode)));
        tag_estatus status = ES_SUCCESS;
        QVERIFY(asNobodyIfRoot([&] { status = CZOSCSVParser(table, kHeader).setCSVColumnValue(1, 1, "a longer name"); }));
        QCOMPARE(status, ES_FILE_OPERATION_FAILED);
        QCOMPARE(readFile(table), text);
        QVERIFY(QFile::setPermissions(folder, QFile::Permissions(0x7755))); // for the folder to be cleaned up
    }

    void withoutFile()
    {
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        QVERIFY(CZOSLogEventHandler::install());
        QSignalSpy activity(getLogObject(), &CZOSLog::activityMessage);

        // A file that cannot open refuses everything with a message; a copy has no file at all.
        QVERIFY(writeFile(path("original"), "a,b\r\n1,2\r\n"));
        CZOSCSVParser original(path("original"), kHeader);
        const QString noFolder = path("missing/table");
        CZOSCSVParser inNoFolder(noFolder, kHeader), copy(original);
        for (auto c : {qMakePair(&inNoFolder, ES_FILE_OPERATION_FAILED), qMakePair(&copy, ES_INVALID_POINTER)}) {
            QVERIFY(!c.first->getOutputStream());
            const QVector<int> statuses{c.first->addRow({"1"}), c.first->removeRow("1"), c.first->setCSVColumnValue(0, 0, "x")};
            QCOMPARE(statuses, QVector<int>(3, c.second));
            QVERIFY(c.first->getCSVColumnValue(0, 0).isNull() && c.first->getCSVRowNumber("id") == -1);
            QCOMPARE(c.first->getNumRows(), 0);
        }
        QCoreApplication::processEvents();
        QCOMPARE(activity.size(), 1);
        QCOMPARE(activity.at(0).mid(1, 2), (QVariantList{"Error", noFolder + " is already opened by another application. Please close it."}));
        CZOSCSVParser other(path("other"), {"a", "b"});
        other = original; // takes the header only; each keeps its own file
        QCOMPARE(other.addRow({"x"}), ES_SUCCESS);
        QCOMPARE(readFile(path("other")) + readFile(path("original")), QByteArray("a,b\r\nxid,name,value\r\n1,2\r\n"));
        CZOSLogEventHandler::uninstall();
        closeLog();
    }

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
        const QString file = m_dir.filePath("ring.bin");
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
        const QString copy = m_dir.filePath("live.bin");
        QVERIFY(QFile::copy(file, copy));
        CZOImageQueue live;
        QVERIFY(live.initFromFile(copy, ZOS_DT_UINT16));
        queue.finalizeImageQueue(7, -2);
        QVERIFY(!queue.isImageQueueModInProcess() && !queue.addFrame(frame(1).constData()));
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
        const std::tuple<quint64, int, int, ZOSDataTypes> shapes[] = {
            {0, 4, 3, ZOS_DT_UINT16}, {quint64(1) << 32, 4, 3, ZOS_DT_UINT16}, {3, 0, 3, ZOS_DT_UINT16},
            {3, 4, -3, ZOS_DT_UINT16}, {3, 4, 3, ZOS_DT_UNKNOWN}, {0xFFFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, ZOS_DT_DOUBLE}};
        QByteArray buffer(kFrameBytes, '\0');
        for (const auto &[capacity, width, height, type] : shapes) {
            CZOImageQueue queue(m_dir.filePath("q.bin"), capacity, width, height, type);
            QVERIFY(!queue.isImageQueueModInProcess() && !queue.addFrame(frame(1).constData()));
            QVERIFY(!QFile::exists(m_dir.filePath("q.bin")));
            queue.finalizeImageQueue(1, 0); // nothing to finalise; must not fail
            QVERIFY(!queue.getFrameAt(0, buffer.data()));
        }
        // The smallest shape works for every pixel type.
        const int pixelBytes[] = {1, 2, 4, 4, 8};
        for (int type = ZOS_DT_UINT8; type <= ZOS_DT_DOUBLE; ++type) {
            CZOImageQueue queue(m_dir.filePath("small.bin"), 1, 1, 1, ZOSDataTypes(type));
            const QByteArray pixel = frame(7).left(pixelBytes[type - 1]);
            QVERIFY(queue.addFrame(pixel.constData()));
            queue.finalizeImageQueue(0, 0);
            QVERIFY(queue.getFrameAt(0, buffer.data()));
            QCOMPARE(buffer.left(pixel.size()), pixel);
        }
    }

    void whichFilesTheQueueDeletes()
    {
        const QString first = m_dir.filePath("first.bin"), second = m_dir.filePath("second.bin"), third = m_dir.filePath("third.bin");
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
        const QString file = m_dir.filePath("bad.bin"), twin = m_dir.filePath("good.bin");
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
        CZOImageQueue finished(m_dir.filePath("finished.bin"), 5, kWidth, kHeight, ZOS_DT_UINT16);
        for (quint16 n = 1; n <= 8; ++n)
            finished.addFrame(frame(n).constData());
        finished.finalizeImageQueue(1, 0);
        CZOImageQueue live(m_dir.filePath("live.bin"), 7, kWidth, kHeight, ZOS_DT_UINT16);
        std::atomic<int> errors{0};
        const auto read = [&] {
            QByteArray buffer(kFrameBytes, '\0');
            for (int i = 0; i < 1000; ++i)
                errors += !finished.getFrameAt(quint64(i % 5), buffer.data()) || buffer != frame(quint16(4 + i % 5));
        };
        // std::thread: its join is visible to the thread checker, QThread's wait is not.
        std::thread reader(read), producer([&] {
            for (int n = 1; n <= 400; ++n)
                errors += !live.addFrame(frame(quint16(n)).constData());
        });
        read();
        reader.join();
        producer.join();
        QCOMPARE(errors.load(), 0);
    }

private:
    QString path(const QString &name = QTest::currentDataTag()) const { return m_dir.filePath(name + ".csv"); }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestData)
#include "tst_data.moc"
