#include "autobkglist.h"
#include "czoslog.h"

#include <QtTest>

Q_DECLARE_METATYPE(SAutoBkgListInfo)

namespace {

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

class TestAutoBkgList : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void writtenFile();
    void roundTrip();
    void emptyTable();
    void lineFilter_data();
    void lineFilter();
    void lineEnds_data();
    void lineEnds();
    void unreadableFile();
    void unwritableFileIsSilent();

private:
    QTemporaryDir m_dir;
};

void TestAutoBkgList::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    qputenv("ZO_DATA_ROOT", m_dir.path().toLocal8Bit() + '/');
    QVERIFY(CZOSLogEventHandler::install());
    beginLog(QStringLiteral("tst_autobkglist"));
}

void TestAutoBkgList::cleanupTestCase()
{
    closeLog();
}

void TestAutoBkgList::writtenFile()
{
    _tagAutoBkgListFileParam t;
    t.title = "Auto Bkg";
    t.header1 = "h1";
    t.header2 = "h2";
    t.header3 = "%1";
    t.header4 = "";
    t.column1 = QStringList{"1", "2"};
    t.column2 = QStringList{"a", "b"};
    t.column3 = QStringList{"4", "8"};
    t.column4 = QStringList{"x"}; // shorter than the table: an empty cell
    t.column5 = QStringList{"60", "120"};
    t.column6 = QStringList{"z", "w"};
    t.rowCount = 2;
    const QString path = m_dir.filePath("written.txt");
    writeAll(path, "old content that must go away\n");
    QCOMPARE(int(saveInfoToAutoBkgList(&t, ";", path)), 0);
    QCOMPARE(readAll(path), QByteArray("#Auto Bkg\n#Binning Key\nh1\nh2\n%1\n\n1;a;4;x;60;z\n2;b;8;;120;w\n"));
    QCOMPARE(int(saveInfoToAutoBkgList(nullptr, ",", path)), int(ES_INVALID_POINTER));
}

void TestAutoBkgList::roundTrip()
{
    _tagAutoBkgListFileParam t;
    t.title = "T";
    t.header1 = "1,a,2,b,c"; // five fields: skipped
    t.column1 = QStringList{"1", "2", "3"};
    t.column2 = QStringList{" lum ", "b", "c"};
    t.column3 = QStringList{"10", "20", "30"};
    t.column4 = QStringList{"d", "e", "f"};
    t.column5 = QStringList{"60 sec", "", "c5"}; // an empty fifth value is written, not read
    t.column6 = QStringList{"x", "y", "z"};
    t.rowCount = 3;
    const QString path = m_dir.filePath("roundtrip.txt");
    QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", path)), 0);
    QList<SAutoBkgListInfo> records{SAutoBkgListInfo("kept", "", "", "")};
    QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
    QCOMPARE(records, (QList<SAutoBkgListInfo>{SAutoBkgListInfo("kept", "", "", ""),
                                               SAutoBkgListInfo("1", " lum ", "10", "60 sec"),
                                               SAutoBkgListInfo("3", "c", "30", "c5")}));
}

void TestAutoBkgList::emptyTable()
{
    _tagAutoBkgListFileParam t;
    const QString path = m_dir.filePath("empty.txt");
    QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", path)), 0);
    QList<SAutoBkgListInfo> records;
    QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
    QVERIFY(records.isEmpty());
}

void TestAutoBkgList::lineFilter_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("used");
    QTest::addColumn<SAutoBkgListInfo>("record");
    QTest::newRow("six fields") << QByteArray("1,a,2,b,c,d") << true << SAutoBkgListInfo("1", "a", "2", "c");
    QTest::newRow("untrimmed") << QByteArray("-1,a ,2, b , c ,") << true << SAutoBkgListInfo("-1", "a ", "2", " c ");
    QTest::newRow("field 3 not integer") << QByteArray("1,a,x,b,c,d") << false << SAutoBkgListInfo();
    QTest::newRow("field 1 decimal") << QByteArray("1.5,a,2,b,c,d") << false << SAutoBkgListInfo();
    QTest::newRow("field 1 empty") << QByteArray(",a,2,b,c,d") << false << SAutoBkgListInfo();
    QTest::newRow("field 5 empty") << QByteArray("1,a,2,b,,d") << false << SAutoBkgListInfo();
    QTest::newRow("seven fields") << QByteArray("1,a,2,b,c,d,e") << false << SAutoBkgListInfo();
    QTest::newRow("five fields") << QByteArray("1,a,2,b,c") << false << SAutoBkgListInfo();
    QTest::newRow("header") << QByteArray("#Binning Key") << false << SAutoBkgListInfo();
}

void TestAutoBkgList::lineFilter()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, used);
    QFETCH(SAutoBkgListInfo, record);
    const QString path = m_dir.filePath("filter.txt");
    writeAll(path, "#T\n#Binning Key\n\n" + line + "\n");
    QList<SAutoBkgListInfo> records;
    QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
    QCOMPARE(records.size(), used ? 1 : 0);
    if (used)
        QCOMPARE(records.first(), record);
}

void TestAutoBkgList::lineEnds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("LF") << QByteArray("#T\n1,a,2,b,c,d\n3,e,4,f,g,h");
    QTest::newRow("CRLF") << QByteArray("#T\r\n1,a,2,b,c,d\r\n3,e,4,f,g,h\r\n");
    QTest::newRow("CR only") << QByteArray("#T\r1,a,2,b,c,d\r3,e,4,f,g,h\r");
    QTest::newRow("mixed, blank lines") << QByteArray("\r\n\r1,a,2,b,c,d\n\n\r3,e,4,f,g,h");
}

void TestAutoBkgList::lineEnds()
{
    QFETCH(QByteArray, bytes);
    const QString path = m_dir.filePath("ends.txt");
    writeAll(path, bytes);
    QList<SAutoBkgListInfo> records;
    QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
    QCOMPARE(records, (QList<SAutoBkgListInfo>{SAutoBkgListInfo("1", "a", "2", "c"),
                                               SAutoBkgListInfo("3", "e", "4", "g")}));
}

void TestAutoBkgList::unreadableFile()
{
    QList<SAutoBkgListInfo> records;
    QCOMPARE(int(readInfoFromAutoBkgList(m_dir.filePath("missing.txt"), records)), int(ES_READ_FAILED));
    QCOMPARE(int(readInfoFromAutoBkgList(m_dir.path(), records)), int(ES_READ_FAILED)); // a directory
    QVERIFY(records.isEmpty());
    QCoreApplication::sendPostedEvents();
    QVERIFY(readAll(getLogObject()->fileName()).contains("\n Error opening Auto background configuration file."));
}

void TestAutoBkgList::unwritableFileIsSilent()
{
    _tagAutoBkgListFileParam t;
    t.rowCount = 1;
    QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.path())), 0);
    QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.filePath("no/such/folder.txt"))), 0);
    QVERIFY(!QFile::exists(m_dir.filePath("no")));
}

QTEST_GUILESS_MAIN(TestAutoBkgList)
#include "tst_autobkglist.moc"
