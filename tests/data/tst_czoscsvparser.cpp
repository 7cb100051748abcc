#include "czoscsvparser.h"
#include "czoslog.h"

#include <QtTest>

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>

#include <random>

namespace {

const QStringList kHeader{QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("value")};

// Empty lines, a row with an empty cell, a "\n" line end and a trailing comma.
const QByteArray kMixed = "id,name,value\r\n1,a,10\r\n\r\n2,,20\r\n1,c,30\n3,d,";
const QByteArray kMixedClean = "id,name,value\r\n1,a,10\r\n2,,20\r\n1,c,30\r\n3,d,\r\n";

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

// The editor's rules spelled out the slow, obvious way, to check the fast one.
struct PlainModel {
    QList<QByteArray> rows; // non-empty lines without their line ends
    bool openLast = false;  // the last row was appended without a line end

    explicit PlainModel(const QByteArray &text)
    {
        for (QByteArray line : text.split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            if (!line.isEmpty())
                rows << line;
        }
    }
    QByteArray text() const
    {
        QByteArray out;
        for (int i = 0; i < rows.size(); ++i)
            out += rows[i] + (openLast && i == rows.size() - 1 ? "" : "\r\n");
        return out;
    }
    void add(const QByteArray &row)
    {
        rows << row; // an empty row stays as an empty last line
        openLast = true;
    }
    void remove(const QByteArray &key)
    {
        openLast = false;
        for (int i = rows.size() - 1; i >= 0; --i)
            if (rows[i].split(',').first() == key)
                rows.removeAt(i);
    }
    void set(int row, int column, const QByteArray &value)
    {
        openLast = false;
        if (row < 0 || row >= rows.size())
            return;
        QList<QByteArray> fields;
        for (const QByteArray &field : rows[row].split(','))
            if (!field.isEmpty())
                fields << field;
        if (column < 0 || column >= fields.size())
            return;
        fields[column] = value;
        QByteArray joined;
        for (int i = 0; i < fields.size(); ++i)
            joined += (i ? "," : "") + fields[i];
        if (joined.isEmpty())
            rows.removeAt(row);
        else
            rows[row] = joined;
    }
};

// Rows with shared key beginnings, stray "\n" ends, empty lines, a lone "\r"
// and trailing commas, in every position of the 16-byte and 64 KiB blocks.
QByteArray messyTable(quint32 seed, int rows)
{
    std::mt19937 random(seed);
    QByteArray text = "key,a,b,c\r\n";
    const char *const ends[] = {"\r\n", "\r\n", "\r\n", "\r\n", "\n", "\r\n\r\n", "\n\n", "\r\r\n"};
    for (int i = 0; i < rows; ++i) {
        const int key = int(random() % 40);
        text += QByteArray::number(key) + (random() % 5 == 0 ? "x" : "") + ",";
        text += QByteArray(int(random() % 30), char('a' + random() % 26)) + ",";
        text += random() % 4 == 0 ? QByteArray() : QByteArray::number(int(random()));
        if (random() % 6 == 0)
            text += ",";
        text += ends[random() % 8];
    }
    return text;
}

// Every operation of a parser without a file refuses with `status` and reads nothing.
void checkRefusesEverything(CZOSCSVParser &parser, tag_estatus status)
{
    QVERIFY(!parser.getOutputStream());
    QCOMPARE(parser.addRow({"1"}), status);
    QCOMPARE(parser.removeRow("1"), status);
    QCOMPARE(parser.setCSVColumnValue(0, 0, "x"), status);
    QCOMPARE(parser.getCSVColumnValue(0, 0), QString());
    QCOMPARE(parser.getCSVRowNumber("id"), -1);
    QCOMPARE(parser.getNumRows(), 0);
}

} // namespace

class TestCSVParser : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void headerCheck_data();
    void headerCheck();
    void appendedRowsHaveNoFinalLineEnd();
    void tornAppendKeepsEarlierRows();
    void changes_data();
    void changes();
    void readsLeaveFileAndStreamAlone();
    void outputStreamTextIsKept();
    void longLines_data();
    void longLines();
    void agreesWithPlainModel_data();
    void agreesWithPlainModel();
    void fileThatCannotOpen();
    void copiesHaveNoFile();

private:
    QString path(const QString &name = QStringLiteral("table.csv")) const { return m_pDir->filePath(name); }
    QScopedPointer<QTemporaryDir> m_pDir;
    QTemporaryDir m_root;
};

void TestCSVParser::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_root.isValid());
    qputenv("ZO_DATA_ROOT", m_root.path().toUtf8());
}

void TestCSVParser::init()
{
    m_pDir.reset(new QTemporaryDir(m_root.filePath("XXXXXX")));
    QVERIFY(m_pDir->isValid());
}

void TestCSVParser::cleanup()
{
    m_pDir.reset();
}

void TestCSVParser::headerCheck_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("new file") << false << QByteArray() << kHeader << QByteArray("id,name,value\r\n");
    QTest::newRow("empty file") << true << QByteArray() << kHeader << QByteArray("id,name,value\r\n");
    QTest::newRow("only empty lines") << true << QByteArray("\r\n\n\r\n") << kHeader
                                      << QByteArray("id,name,value\r\n");
    QTest::newRow("only empty lines, one-name header")
        << true << QByteArray("\n\n") << QStringList{"id"} << QByteArray("id\r\n");
    QTest::newRow("wider first line kept") << true << QByteArray("w,x,y,z\n1,2\n\n") << kHeader
                                           << QByteArray("w,x,y,z\n1,2\n\n");
    QTest::newRow("same width, other names kept") << true << QByteArray("p,q,r\r\n\r\n1") << kHeader
                                                  << QByteArray("p,q,r\r\n\r\n1");
    QTest::newRow("trailing commas count") << true << QByteArray("a,,\r\n") << kHeader << QByteArray("a,,\r\n");
    QTest::newRow("narrower first line replaced")
        << true << QByteArray("id,name\r\n1,a,10\r\n\r\n2,b,20") << kHeader
        << QByteArray("id,name,value\r\n1,a,10\r\n2,b,20\r\n");
    QTest::newRow("empty first line replaced") << true << QByteArray("\r\nx,y,z\n") << kHeader
                                               << QByteArray("id,name,value\r\nx,y,z\r\n");
    QTest::newRow("no header asked") << true << QByteArray("junk\n\n") << QStringList() << QByteArray("junk\n\n");
}

void TestCSVParser::headerCheck()
{
    QFETCH(bool, exists);
    QFETCH(QByteArray, before);
    QFETCH(QStringList, header);
    QFETCH(QByteArray, after);
    if (exists)
        QVERIFY(writeFile(path(), before));
    {
        CZOSCSVParser parser(path(), header);
        QVERIFY(parser.getOutputStream());
        QCOMPARE(readFile(path()), after);
    }
    QCOMPARE(readFile(path()), after);
}

void TestCSVParser::appendedRowsHaveNoFinalLineEnd()
{
    CZOSCSVParser parser(path(), kHeader);
    const struct {
        QStringList fields;
        QByteArray after;
    } steps[] = {
        {{"1", "a", "10"}, "id,name,value\r\n1,a,10"},
        {{"2", "b", "20"}, "id,name,value\r\n1,a,10\r\n2,b,20"},
        {{}, "id,name,value\r\n1,a,10\r\n2,b,20\r\n"},
        {{"3", "", "30"}, "id,name,value\r\n1,a,10\r\n2,b,20\r\n3,,30"},
    };
    int rows = 1;
    for (const auto &step : steps) {
        QCOMPARE(parser.addRow(step.fields), ES_SUCCESS);
        QCOMPARE(readFile(path()), step.after);
        if (!step.fields.isEmpty())
            ++rows;
        QCOMPARE(parser.getNumRows(), rows);
    }
    QCOMPARE(parser.getCSVRowNumber("3"), 3);
}

// An append cut short (by a power cut, say) leaves a prefix of its bytes, the
// line end first: the rows before it read as before, and the next append
// starts a line of its own.
void TestCSVParser::tornAppendKeepsEarlierRows()
{
    const QByteArray before = "id,name,value\r\n1,a,10\r\n2,b,20";
    const QByteArray append = "\r\n3,c,30";
    for (int kept = 0; kept <= append.size(); ++kept) {
        const QByteArray torn = before + append.left(kept);
        QVERIFY(writeFile(path(), torn));
        CZOSCSVParser parser(path(), kHeader);
        PlainModel model(torn);
        QCOMPARE(parser.getNumRows(), model.rows.size());
        QCOMPARE(parser.getCSVColumnValue(2, 2), QStringLiteral("20"));
        QCOMPARE(parser.addRow({"4", "d", "40"}), ES_SUCCESS);
        model.add("4,d,40");
        QCOMPARE(readFile(path()), model.text());
        QCOMPARE(parser.getCSVColumnValue(2, 2), QStringLiteral("20"));
        QCOMPARE(parser.getCSVRowNumber("4"), model.rows.size() - 1);
    }
}

void TestCSVParser::changes_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("remove both rows of a key") << "remove" << QStringList{"1"}
                                               << QByteArray("id,name,value\r\n2,,20\r\n3,d,\r\n");
    QTest::newRow("remove the header by its key") << "remove" << QStringList{"id"}
                                                  << QByteArray("1,a,10\r\n2,,20\r\n1,c,30\r\n3,d,\r\n");
    QTest::newRow("remove is case-sensitive") << "remove" << QStringList{"ID"} << kMixedClean;
    QTest::newRow("remove a missing key tidies only") << "remove" << QStringList{"9"} << kMixedClean;
    QTest::newRow("remove by whole first field") << "remove" << QStringList{"1,a"} << kMixedClean;
    QTest::newRow("set a cell") << "set" << QStringList{"1", "2", "11"}
                                << QByteArray("id,name,value\r\n1,a,11\r\n2,,20\r\n1,c,30\r\n3,d,\r\n");
    QTest::newRow("set the header") << "set" << QStringList{"0", "0", "key"}
                                    << QByteArray("key,name,value\r\n1,a,10\r\n2,,20\r\n1,c,30\r\n3,d,\r\n");
    QTest::newRow("set counts non-empty cells") << "set" << QStringList{"2", "1", "x"}
                                                << QByteArray("id,name,value\r\n1,a,10\r\n2,x\r\n1,c,30\r\n3,d,\r\n");
    QTest::newRow("set drops a trailing comma") << "set" << QStringList{"4", "0", "4"}
                                                << QByteArray("id,name,value\r\n1,a,10\r\n2,,20\r\n1,c,30\r\n4,d\r\n");
    QTest::newRow("set to an empty text") << "set" << QStringList{"3", "1", ""}
                                          << QByteArray("id,name,value\r\n1,a,10\r\n2,,20\r\n1,,30\r\n3,d,\r\n");
    QTest::newRow("set beyond the cells changes nothing") << "set" << QStringList{"2", "2", "x"} << kMixedClean;
    QTest::newRow("set beyond the rows changes nothing") << "set" << QStringList{"5", "0", "x"} << kMixedClean;
    QTest::newRow("set a negative row changes nothing") << "set" << QStringList{"-1", "0", "x"} << kMixedClean;
    QTest::newRow("set a negative column changes nothing") << "set" << QStringList{"1", "-1", "x"} << kMixedClean;
    QTest::newRow("add to a file ending without line end")
        << "add" << QStringList{"4", "e", "40"} << kMixedClean + "4,e,40";
}

void TestCSVParser::changes()
{
    QFETCH(QString, operation);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, after);
    QVERIFY(writeFile(path(), kMixed));

    CZOSCSVParser parser(path(), kHeader);
    QCOMPARE(readFile(path()), kMixed); // its header fits: nothing rewritten yet
    tag_estatus status = ES_WRONG_INFORMATION;
    if (operation == "remove")
        status = parser.removeRow(arguments.at(0));
    else if (operation == "set")
        status = parser.setCSVColumnValue(arguments.at(0).toInt(), arguments.at(1).toInt(), arguments.at(2));
    else
        status = parser.addRow(arguments);
    QCOMPARE(status, ES_SUCCESS);
    QCOMPARE(readFile(path()), after);
}

void TestCSVParser::readsLeaveFileAndStreamAlone()
{
    QVERIFY(writeFile(path(), kMixed));
    CZOSCSVParser parser(path(), kHeader);
    QTextStream *stream = parser.getOutputStream();
    QVERIFY(stream);
    QVERIFY(stream->seek(7)); // a caller's own position, mid-header
    QCOMPARE(parser.getNumRows(), 5);

    const struct {
        int row, column;
        const char *value;
    } cells[] = {
        {0, 0, "id"}, {1, 2, "10"},
        {2, 0, "2"},  // empty lines are not rows
        {2, 1, "20"}, // an empty cell shifts the rest left...
        {2, 2, ""},   // ...and the shifted-out column is empty
        {3, 2, "30"}, // "\n" line end
        {4, 1, "d"},  {4, 2, ""}, // trailing comma
        {5, 0, ""},   {-1, 0, ""}, {1, -1, ""},
    };
    for (const auto &cell : cells)
        QCOMPARE(parser.getCSVColumnValue(cell.row, cell.column), QString::fromUtf8(cell.value));

    // Keys match the whole first field, case included; the last row has no line end.
    const struct {
        const char *key;
        int row;
    } keys[] = {{"id", 0}, {"1", 1}, {"2", 2}, {"3", 4}, {"ID", -1}, {"i", -1}, {"", -1}};
    for (const auto &key : keys)
        QCOMPARE(parser.getCSVRowNumber(QString::fromUtf8(key.key)), key.row);

    QCOMPARE(stream->pos(), qint64(7));
    QCOMPARE(readFile(path()), kMixed);
}

void TestCSVParser::outputStreamTextIsKept()
{
    CZOSCSVParser parser(path(), kHeader);
    *parser.getOutputStream() << QStringLiteral("1,Größe,10\r\n");
    // The change sees the caller's text, unflushed as it was.
    QCOMPARE(parser.getCSVRowNumber("1"), 1);
    QCOMPARE(parser.addRow({"2", "µ", "20"}), ES_SUCCESS);
    QCOMPARE(readFile(path()), QByteArray("id,name,value\r\n1,Größe,10\r\n2,µ,20"));
    QCOMPARE(parser.getCSVColumnValue(1, 1), QStringLiteral("Größe"));
    QCOMPARE(parser.getCSVRowNumber(QStringLiteral("2")), 2);
    QCOMPARE(parser.removeRow("1"), ES_SUCCESS);
    QCOMPARE(readFile(path()), QByteArray("id,name,value\r\n2,µ,20\r\n"));
}

void TestCSVParser::longLines_data()
{
    QTest::addColumn<int>("length");
    // Lines are read in 64 KiB blocks: put the line end on, before and after a block edge.
    const int header = int(qstrlen("id,name,value\r\n"));
    for (int offset : {-3, -2, -1, 0, 1})
        QTest::newRow(qPrintable(QStringLiteral("edge %1").arg(offset))) << 65536 - header - 4 + offset;
    QTest::newRow("several blocks") << 300000;
}

void TestCSVParser::longLines()
{
    QFETCH(int, length);
    const QByteArray wide = "k," + QByteArray(length, 'x');
    QVERIFY(writeFile(path(), "id,name,value\r\n" + wide + "\r\nlast,y,z\r\n"));
    CZOSCSVParser parser(path(), kHeader);
    QCOMPARE(parser.getNumRows(), 3);
    QCOMPARE(parser.getCSVRowNumber("last"), 2);
    QCOMPARE(parser.getCSVColumnValue(1, 1).size(), length);
    QCOMPARE(parser.getCSVColumnValue(2, 2), QStringLiteral("z"));
    QCOMPARE(parser.setCSVColumnValue(2, 1, "w"), ES_SUCCESS);
    QCOMPARE(readFile(path()), "id,name,value\r\n" + wide + "\r\nlast,w,z\r\n");
    QCOMPARE(parser.removeRow("k"), ES_SUCCESS);
    QCOMPARE(readFile(path()), QByteArray("id,name,value\r\nlast,w,z\r\n"));
}

void TestCSVParser::agreesWithPlainModel_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("rows");
    QTest::newRow("small") << 1u << 30;
    QTest::newRow("medium") << 2u << 400;
    QTest::newRow("past one read block") << 3u << 3000;
}

void TestCSVParser::agreesWithPlainModel()
{
    QFETCH(quint32, seed);
    QFETCH(int, rows);
    const QByteArray start = messyTable(seed, rows);
    QVERIFY(writeFile(path(), start));
    CZOSCSVParser parser(path(), {"key", "a", "b", "c"});
    PlainModel model(start);
    QCOMPARE(parser.getNumRows(), model.rows.size());

    std::mt19937 random(seed * 7919u);
    for (int step = 0; step < 60; ++step) {
        const QByteArray key = QByteArray::number(int(random() % 40));
        switch (random() % 4) {
        case 0:
            QCOMPARE(parser.addRow({key, "new", ""}), ES_SUCCESS);
            model.add(key + ",new,");
            break;
        case 1:
            QCOMPARE(parser.removeRow(key), ES_SUCCESS);
            model.remove(key);
            break;
        default: {
            const int row = int(random() % quint32(model.rows.size() + 2)) - 1;
            const int column = int(random() % 5) - 1;
            const QByteArray value = random() % 3 ? QByteArray::number(step) : QByteArray("wider-value");
            QCOMPARE(parser.setCSVColumnValue(row, column, value), ES_SUCCESS);
            model.set(row, column, value);
            break;
        }
        }
        QCOMPARE(readFile(path()), model.text());
        int expectedRow = -1;
        for (int r = 0; r < model.rows.size() && expectedRow < 0; ++r)
            if (model.rows[r].split(',').first() == key)
                expectedRow = r;
        QCOMPARE(parser.getCSVRowNumber(key), expectedRow);
        const int row = int(random() % quint32(model.rows.size() + 1));
        const int column = int(random() % 4);
        QList<QByteArray> cells;
        for (const QByteArray &cell : model.rows.value(row).split(','))
            if (!cell.isEmpty())
                cells << cell;
        QCOMPARE(parser.getCSVColumnValue(row, column), QString::fromUtf8(cells.value(column)));
    }
    QCOMPARE(parser.getNumRows(), model.rows.size());
}

void TestCSVParser::fileThatCannotOpen()
{
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    QVERIFY(CZOSLogEventHandler::install());
    QSignalSpy activity(getLogObject(), &CZOSLog::activityMessage);

    const QString folder = m_pDir->path();
    const QString noFolder = path("missing/table.csv");
    for (const QString &name : {folder, noFolder}) {
        CZOSCSVParser parser(name, kHeader);
        checkRefusesEverything(parser, ES_FILE_OPERATION_FAILED);
    }
    QVERIFY(!QFile::exists(noFolder));

    QCoreApplication::processEvents();
    QStringList messages;
    for (const QList<QVariant> &entry : qAsConst(activity))
        if (entry.at(1).toString() == QLatin1String("Error"))
            messages << entry.at(2).toString();
    QCOMPARE(messages, (QStringList{folder + " is already opened by another application. Please close it.",
                                    noFolder + " is already opened by another application. Please close it."}));
    CZOSLogEventHandler::uninstall();
    closeLog();
}

void TestCSVParser::copiesHaveNoFile()
{
    QVERIFY(writeFile(path(), kMixed));
    CZOSCSVParser parser(path(), kHeader);
    CZOSCSVParser copy(parser);
    checkRefusesEverything(copy, ES_INVALID_POINTER);

    // Assignment takes the header only; each keeps its own file.
    CZOSCSVParser other(path("other.csv"), {"a", "b", "c", "d"});
    other = parser;
    QCOMPARE(other.addRow({"x"}), ES_SUCCESS);
    QCOMPARE(readFile(path("other.csv")), QByteArray("a,b,c,d\r\nx"));
    QCOMPARE(parser.getNumRows(), 5);
    QCOMPARE(readFile(path()), kMixed);
}

QTEST_GUILESS_MAIN(TestCSVParser)
#include "tst_czoscsvparser.moc"
