#include "czoscsvparser.h"
#include "czoslog.h"

#include "testfiles.h"

#include <QtTest>

#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace {

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
    return text;
}

} // namespace

// An append cut short (by a power cut, say) leaves a prefix of its bytes, the
// line end first: the rows before it read as before, and the next append
// starts a line of its own.

class TestCSVParser : public QObject
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
        if (before != "-")
            QVERIFY(writeFile(path(), before));
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
    }

    void tornAppendKeepsEarlierRows()
    {
        const QByteArray before = "id,name,value\r\n1,a,10\r\n2,b,20";
        const QByteArray append = "\r\n3,c,30";
        for (int kept = 0; kept <= append.size(); ++kept) {
            QVERIFY(writeFile(path("torn"), before + append.left(kept)));
            CZOSCSVParser parser(path("torn"), kHeader);
            const QByteArray partial = append.left(kept).mid(2); // what reached the disk of the torn row
            const int rows = partial.isEmpty() ? 3 : 4;
            QCOMPARE(parser.getNumRows(), rows);
            QCOMPARE(parser.getCSVColumnValue(2, 2), QStringLiteral("20"));
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

private:
    QString path(const QString &name = QTest::currentDataTag()) const { return m_dir.filePath(name + ".csv"); }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestCSVParser)
#include "tst_czoscsvparser.moc"
