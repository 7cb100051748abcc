#include "autobkglist.h"
#include "czoslog.h"

#include "testfiles.h"

#include <QtTest>

Q_DECLARE_METATYPE(SAutoBkgListInfo)

using Records = QList<SAutoBkgListInfo>;

class TestAutoBkgList : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        useDataRoot(m_dir.path());
        QVERIFY(CZOSLogEventHandler::install());
        beginLog(QStringLiteral("tst_autobkglist"));
    }
    void cleanupTestCase() { closeLog(); }

    void writeAndReadBack()
    {
        _tagAutoBkgListFileParam t;
        t.title = "Auto Bkg";
        t.header1 = "1,a,2,b,c"; // five fields: not read back
        t.header2 = "h2";
        t.header3 = "%1";
        t.column1 = QStringList{"1", "2", "3"};
        t.column2 = QStringList{" lum ", "b", "c"};
        t.column3 = QStringList{"4", "8", "30"};
        t.column4 = QStringList{"x"}; // shorter than the table: empty cells
        t.column5 = QStringList{"60 sec", "", "c5"}; // an empty fifth value is written, not read
        t.column6 = QStringList{"z", "w", "v"};
        t.rowCount = 3;
        const QString path = m_dir.filePath("written.txt");
        QVERIFY(QFile(path).open(QIODevice::WriteOnly)); // replaced, not appended to
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", path)), 0);
        QCOMPARE(readFile(path),
                 QByteArray("#Auto Bkg\n#Binning Key\n1,a,2,b,c\nh2\n%1\n\n1, lum ,4,x,60 sec,z\n2,b,8,,,w\n3,c,30,,c5,v\n"));
        Records records{SAutoBkgListInfo("kept", "", "", "")};
        QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
        QCOMPARE(records, (Records{SAutoBkgListInfo("kept", "", "", ""), SAutoBkgListInfo("1", " lum ", "4", "60 sec"),
                                   SAutoBkgListInfo("3", "c", "30", "c5")}));
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ";", path)), 0);
        QVERIFY(readFile(path).endsWith("\n3;c;30;;c5;v\n"));
        QCOMPARE(int(saveInfoToAutoBkgList(nullptr, ",", path)), int(ES_INVALID_POINTER));

        _tagAutoBkgListFileParam empty;
        QCOMPARE(int(saveInfoToAutoBkgList(&empty, ";", path)), 0);
        QCOMPARE(readBack(readFile(path)), Records());
    }

    void lineFilter_data()
    {
        QTest::addColumn<QByteArray>("bytes"); QTest::addColumn<Records>("records");
        const SAutoBkgListInfo first("1", "a", "2", "c"), second("3", "e", "4", "g");
        QTest::newRow("six fields") << QByteArray("#T\n#Binning Key\n\n1,a,2,b,c,d\n") << Records{first};
        QTest::newRow("untrimmed") << QByteArray("-1,a ,2, b , c ,") << Records{SAutoBkgListInfo("-1", "a ", "2", " c ")};
        for (const char *bad : {"1,a,x,b,c,d", "1.5,a,2,b,c,d", ",a,2,b,c,d", "1,a,2,b,,d", "1,a,2,b,c,d,e", "1,a,2,b,c"})
            QTest::newRow(bad) << QByteArray(bad) << Records();
        QTest::newRow("LF") << QByteArray("#T\n1,a,2,b,c,d\n3,e,4,f,g,h") << Records{first, second};
        QTest::newRow("CRLF") << QByteArray("#T\r\n1,a,2,b,c,d\r\n3,e,4,f,g,h\r\n") << Records{first, second};
        QTest::newRow("CR only") << QByteArray("#T\r1,a,2,b,c,d\r3,e,4,f,g,h\r") << Records{first, second};
        QTest::newRow("mixed, blank lines") << QByteArray("\r\n\r1,a,2,b,c,d\n\n\r3,e,4,f,g,h") << Records{first, second};
    }

    void lineFilter()
    {
        QFETCH(QByteArray, bytes);
        QTEST(readBack(bytes), "records");
    }

    void badPaths()
    {
        Records records;
        QCOMPARE(int(readInfoFromAutoBkgList(m_dir.filePath("missing.txt"), records)), int(ES_READ_FAILED));
        QCOMPARE(int(readInfoFromAutoBkgList(m_dir.path(), records)), int(ES_READ_FAILED)); // a directory
        QVERIFY(records.isEmpty());
        QCoreApplication::sendPostedEvents();
        QVERIFY(readFile(getLogObject()->fileName()).contains("\n Error opening Auto background configuration file."));

        // Writing where no file can be made fails silently.
        _tagAutoBkgListFileParam t;
        t.rowCount = 1;
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.path())), 0);
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.filePath("no/such/folder.txt"))), 0);
        QVERIFY(!QFile::exists(m_dir.filePath("no")));
    }

private:
    Records readBack(const QByteArray &bytes)
    {
        const QString path = m_dir.filePath("read.txt");
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
            return {SAutoBkgListInfo("not written", "", "", "")};
        f.close();
        Records records;
        return readInfoFromAutoBkgList(path, records) == ES_SUCCESS ? records : Records{SAutoBkgListInfo("failed", "", "", "")};
    }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestAutoBkgList)
#include "tst_autobkglist.moc"
