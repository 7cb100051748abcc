// The utility functions: the general helpers, the platform calls and CZOUtilityFns.
#include "czoutilityfns.h"
#include "generalutilities.h"
#include "testfiles.h"
#include "zoplatform.h"
#include "zopreferencehooks.h"

#include <QAction>
#include <QtTest>

#include <unistd.h>

static void setInstalledVersion(const QVariant &value)
{
    QSettings settings(QSettings::NativeFormat, QSettings::SystemScope, "Norbeck Instruments", "Zolvane");
    if (value.isValid())
        settings.setValue(QStringLiteral("Current_Version/InstalledVersion"), value);
    else
        settings.remove(QStringLiteral("Current_Version/InstalledVersion"));
}

class TestUtilities : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_settingsDir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, m_settingsDir.path());
    }

    void cleanup()
    {
        zoSetPreferenceHooks(ZOPreferenceHooks());
        setInstalledVersion(QVariant());
    }

    // The name titles every message box and the log; a beta or debug build says so in it.
    void appNameNamesTheBuild()
    {
        QCOMPARE(CZOUtilityFns::getAppName(), QString::fromUtf8("Zolvane\xC2\xAE 4.7.2 (64-bit)"));
        CZOUtilityFns::setBuildKind(QStringLiteral("Beta"));
        QCOMPARE(CZOUtilityFns::getAppName(), QString::fromUtf8("Zolvane\xC2\xAE 4.7.2 (64-bit) Beta"));
        CZOUtilityFns::setBuildKind(QString());
    }

    void actionRegistry()
    {
        QAction open(QStringLiteral("&Open..."), nullptr), other(QStringLiteral("open"), nullptr);
        QVERIFY(CZOUtilityFns::addAction(QStringLiteral("&Open..."), &open));
        QVERIFY(!CZOUtilityFns::addAction(QStringLiteral("open"), &other));
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("OPEN")), &open);
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("  O&pen.  ")), &open);
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("Open file")), nullptr);

        // An action destroyed (here at the end of the statement) is never handed out; its name is free again.
        QVERIFY(CZOUtilityFns::addAction(QStringLiteral("&Save"), std::make_unique<QAction>("Save").get()));
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("save")), nullptr);
        QAction save(QStringLiteral("Save"), nullptr);
        QVERIFY(CZOUtilityFns::addAction(QStringLiteral("Save..."), &save));
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("save")), &save);
    }

    void memoryLoadLimit_data()
    {
        QTest::addColumn<quint64>("total"); QTest::addColumn<int>("limit");
        QTest::newRow("exactly 2 GiB") << quint64(2147483648ULL) << 75;
        QTest::newRow("2 GiB + 1 byte truncates to 75") << quint64(2147483649ULL) << 75;
        QTest::newRow("3 GiB") << quint64(3) * 1024 * 1024 * 1024 << 83;
        QTest::newRow("64 GiB") << quint64(64) * 1024 * 1024 * 1024 << 99;
    }

    void memoryLoadLimit()
    {
        QFETCH(quint64, total); QFETCH(int, limit);
        QCOMPARE(CZOUtilityFns::memoryLoadLimitFor(total), limit);
    }

    void memoryFromTheSystem()
    {
        const int load = CZOUtilityFns::getSystemMemoryLoad();
        QVERIFY(load > 0 && load <= 100);
        QVERIFY(CZOUtilityFns::initSystemMemoryLoadLimit() >= 75);
        QCOMPARE(CZOUtilityFns::getMemoryLoadLimit(), CZOUtilityFns::initSystemMemoryLoadLimit());
        CZOUtilityFns::setMemoryLoadLimit(100);
        QVERIFY(!CZOUtilityFns::isMemoryLoadLimit());
        CZOUtilityFns::setMemoryLoadLimit(0); // a real limit, not "unset"
        QVERIFY(CZOUtilityFns::isMemoryLoadLimit());
    }

    void acquisitionMachineAndBatchMode_data()
    {
        QTest::addColumn<QVariant>("installed"); QTest::addColumn<bool>("acquisition");
        QTest::newRow("missing value") << QVariant() << false;
        QTest::newRow("Acquisition") << QVariant(QStringLiteral("Acquisition")) << true;
        QTest::newRow("case matters") << QVariant(QStringLiteral("acquisition")) << false;
        QTest::newRow("trailing blank matters") << QVariant(QStringLiteral("Acquisition ")) << false;
    }

    void acquisitionMachineAndBatchMode()
    {
        QFETCH(QVariant, installed); QFETCH(bool, acquisition);
        setInstalledVersion(installed);
        QCOMPARE(CZOUtilityFns::isAcquisitionMachine(), acquisition);

        CZOUtilityFns::setBatchModeEnabled(true);
        QCOMPARE(CZOUtilityFns::isBatchModeEnabled(), acquisition);
        // The station test is repeated on every call.
        setInstalledVersion(QVariant());
        QVERIFY(!CZOUtilityFns::isBatchModeEnabled());
        setInstalledVersion(installed);
        QCOMPARE(CZOUtilityFns::isBatchModeEnabled(), acquisition);
        CZOUtilityFns::setBatchModeEnabled(false);
        QVERIFY(!CZOUtilityFns::isBatchModeEnabled());
    }

    void sequenceName()
    {
        const auto m = QRegularExpression("^(\\d{14})_SEQ$").match(CZOUtilityFns::generateCurrentSeqName());
        QVERIFY(m.hasMatch()); // no preference store yet: no user part
        const QDateTime stamp = QDateTime::fromString(m.captured(1), QStringLiteral("yyyyMMddHHmmss"));
        QVERIFY(qAbs(stamp.secsTo(QDateTime::currentDateTime())) < 5); // local time

        static int selections = 0; // nobody is logged in until a user is chosen
        ZOPreferenceHooks hooks;
        hooks.activeUserName = [] { return selections ? QStringLiteral("jdoe") : QString(); };
        hooks.selectUser = [] { ++selections; };
        zoSetPreferenceHooks(hooks);
        const QRegularExpression named(QStringLiteral("^jdoe\\d{14}_SEQ$"));
        QVERIFY(named.match(CZOUtilityFns::generateCurrentSeqName()).hasMatch());
        QCOMPARE(selections, 1); // asked once, because nobody was logged in
        QVERIFY(named.match(CZOUtilityFns::generateCurrentSeqName()).hasMatch());
        QCOMPARE(selections, 1);
    }

    void platform()
    {
        QVERIFY(!ZOPlatform::memoryStatus(nullptr));
        ZOMemoryStatus m;
        QVERIFY(ZOPlatform::memoryStatus(&m));
        const QList<QByteArray> total = readFile("/proc/meminfo").simplified().split(' '); // "MemTotal: n kB ..."
        QCOMPARE(m.totalPhysical, total.at(1).toULongLong() * 1024);
        QVERIFY(m.availablePhysical > 0 && m.availablePhysical <= m.totalPhysical);
        QCOMPARE(m.loadPercent, int((m.totalPhysical - m.availablePhysical) * 100 / m.totalPhysical));

        QSettings(QSettings::NativeFormat, QSettings::SystemScope, "Org", "App").setValue("Group/Key", 7); // in the test's folder
        QCOMPARE(ZOPlatform::machineSetting("Org", "App", "Group", "Key").toInt(), 7);
        QVERIFY(!ZOPlatform::machineSetting("Org", "App", "Other", "Key").isValid());

        qputenv("ZO_TEST_FOLDER", "/data/x");
        QCOMPARE(ZOPlatform::environmentFolder("ZO_TEST_FOLDER"), QStringLiteral("/data/x"));
        qunsetenv("ZO_TEST_FOLDER");
        QCOMPARE(ZOPlatform::environmentFolder("ZO_TEST_FOLDER"), QDir::homePath());
        qunsetenv("ALLUSERSPROFILE");
        qunsetenv("APPDATA");
        QCOMPARE(ZOPlatform::environmentFolder("ALLUSERSPROFILE"),
                 QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
        QCOMPARE(ZOPlatform::environmentFolder("APPDATA"),
                 QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    }

    void getDateTime_data()
    {
        QTest::addColumn<QString>("text"); QTest::addColumn<QDateTime>("expected"); QTest::addColumn<bool>("valid");
        const QDateTime stamp(QDate(2024, 1, 31), QTime(23, 59, 5), Qt::LocalTime);
        QTest::newRow("plain stamp") << "20240131235905" << stamp << true;
        QTest::newRow("three-letter prefix") << "abc20240131235905" << stamp << true;
        QTest::newRow("file-name prefix") << "C:/data/BKG_20240131235905" << stamp << true;
        QTest::newRow("non-digit second reads as 0") << "202401312359x5" << stamp.addSecs(-5) << true;
        QTest::newRow("non-digit month is invalid") << "2024ab31235905" << QDateTime() << false;
        QTest::newRow("month 13") << "20241331235905" << QDateTime() << false;
        QTest::newRow("too short") << "0131235905" << QDateTime() << false;
        QTest::newRow("one character") << "7" << QDateTime() << false;
    }

    void getDateTime()
    {
        QFETCH(QString, text); QFETCH(QDateTime, expected); QFETCH(bool, valid);
        const QDateTime result = ::getDateTime(text);
        QCOMPARE(result.isValid(), valid);
        QCOMPARE(result.toString(Qt::ISODateWithMs), expected.toString(Qt::ISODateWithMs)); // empty when invalid
        QVERIFY(::getDateTime(QString()).isNull());
    }

    void isDateTimeExpired()
    {
        const QDateTime now = QDateTime::currentDateTime();
        QVERIFY(::isDateTimeExpired(now.addSecs(-7300), 2.0f));
        QVERIFY(!::isDateTimeExpired(now.addSecs(-7100), 2.0f));
        QVERIFY(!::isDateTimeExpired(now.addSecs(3600), 0.0f)); // the future is never expired
    }

    void doubleToString_data()
    {
        QTest::addColumn<double>("value"); QTest::addColumn<int>("decimals"); QTest::addColumn<int>("expDecimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero takes exponent form") << 0.0 << 2 << 2 << "0.00e+00";
        QTest::newRow("10000 is the fixed form's open bound") << 12345.0 << 2 << 2 << "1.23e+04";
        QTest::newRow("9999.5 stays fixed") << 9999.5 << 1 << 2 << "9999.5";
        QTest::newRow("threshold is inclusive") << 0.01 << 2 << 2 << "0.01";
        QTest::newRow("just below the threshold") << 0.0099 << 2 << 2 << "9.90e-03";
        QTest::newRow("negative fixed") << -3.14159 << 3 << 2 << "-3.142";
        QTest::newRow("negative small") << -0.0001 << 2 << 1 << "-1.0e-04";
        QTest::newRow("negative decimals widen the threshold") << 50.0 << -2 << 1 << "5.0e+01";
        QTest::newRow("negative decimals, fixed") << 150.0 << -2 << 1 << "150";
        QTest::newRow("99 decimals refused") << 1.0 << 99 << 2 << QString();
        QTest::newRow("99 exponent decimals refused") << 1.0 << 2 << 99 << QString();
        QTest::newRow("huge") << 1e300 << 2 << 2 << "1.00e+300";
        QTest::newRow("no exponent decimals") << 1234567.0 << 2 << 0 << "1e+06";
    }

    void doubleToString()
    {
        QFETCH(double, value); QFETCH(int, decimals); QFETCH(int, expDecimals); QFETCH(QString, expected);
        const QString result = ::doubleToString(value, decimals, expDecimals);
        QCOMPARE(result, expected);
        QCOMPARE(result.isNull(), expected.isNull());
    }

    void adjustExpValue_data()
    {
        QTest::addColumn<QString>("text"); QTest::addColumn<QString>("expected");
        QTest::newRow("three-digit exponent") << "1.50e+003" << "1.50e+03";
        QTest::newRow("two-digit exponent") << "1.50e+03" << "1.50e+03";
        QTest::newRow("one-digit exponent") << "1.50e+3" << "1.50e+03";
        QTest::newRow("no sign") << "1.50e3" << "1.50e+03";
        QTest::newRow("negative exponent") << "2.5e-007" << "2.5e-07";
        QTest::newRow("large exponent kept") << "2.0e-100" << "2.0e-100";
        QTest::newRow("upper-case E") << "4E+010" << "4E+10";
        QTest::newRow("no exponent") << "12.5" << "12.5";
        QTest::newRow("dangling e") << "12e" << "12e";
        QTest::newRow("not a number after e") << "1e+x1" << "1e+x1";
        QTest::newRow("empty") << "" << "";
    }

    void adjustExpValue()
    {
        QFETCH(QString, text); QFETCH(QString, expected);
        ::adjustExpValue(text);
        QCOMPARE(text, expected);
    }

    void smallHelpers()
    {
        QVERIFY(LERP(2.0f, 4.0f, 0.25f) == 2.5f && LERP(2.0f, 4.0f, -1.0f) == 0.0f);
        QVERIFY(qAbs(powerf(2.0f, 10.0f) - 1024.0f) < 0.01f && powerf(0.0f, 2.0f) == 0.0f);
        QVERIFY(std::isnan(powerf(-2.0f, 2.0f))); // no special case for bases <= 0
        QCOMPARE(IsLittleEndian(), Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 1 : 0);
        QCOMPARE(getMD5String("abc"), QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
        QStringList names{"beta", "Alpha", "GAMMA"};
        std::sort(names.begin(), names.end(), caseInsensitiveLessThan);
        QCOMPARE(names, QStringList({"Alpha", "beta", "GAMMA"}));
        std::sort(names.begin(), names.end(), caseInsensitiveGreaterThan);
        QCOMPARE(names, QStringList({"GAMMA", "beta", "Alpha"}));
        QVERIFY(!caseInsensitiveLessThan("ab", "AB"));
        // Local time stamps: seconds, and the date alone (which fails only across midnight).
        const QString stamp = getCurrentDateAndTimeAsString();
        QVERIFY(qAbs(QDateTime::fromString(stamp, "yyyyMMddHHmmss").secsTo(QDateTime::currentDateTime())) <= 1);
        QCOMPARE(getCurrentDateAsString(), stamp.left(8));
        QCOMPARE(getCurrentTime()->tm_year + 1900, QDate::currentDate().year());
    }

    void folderCopyAndDelete()
    {
        QTemporaryDir tmp;
        auto at = [&](const QString &name) { return tmp.filePath(name); };
        auto dir = [&](const QString &name) { return QDir(at(name)); };
        for (const char *d : {"src/sub/deeper", "dst", "ro", "outside"})
            QDir().mkpath(at(d));
        for (const char *f : {"src/a.txt", "src/b.txt", "src/sub/c.txt", "src/sub/deeper/d.txt", "outside/keep.txt"})
            writeFile(at(f), QByteArray("new ") + f);
        writeFile(at("dst/a.txt"), "old a");

        QVERIFY(::copyFolderContents(dir("src"), dir("dst"), false)); // files only
        QVERIFY(!QFileInfo::exists(at("dst/sub")));
        QVERIFY(::copyFolderContents(dir("src"), dir("dst"), true));
        QCOMPARE(readFile(at("dst/a.txt")), QByteArray("old a")); // never overwritten
        QCOMPARE(readFile(at("dst/b.txt")), QByteArray("new src/b.txt"));
        QCOMPARE(readFile(at("dst/sub/deeper/d.txt")), QByteArray("new src/sub/deeper/d.txt"));
        QVERIFY(!::copyFolderContents(dir("missing"), dir("dst"), true));
        QVERIFY(!::copyFolderContents(dir("src"), dir("missing"), true));
        // A file stands where the sub-folder must go (a failure that holds for root too).
        writeFile(at("ro/sub"), "in the way");
        QVERIFY(!::copyFolderContents(dir("src"), dir("ro"), true));

        writeFile(at("dst/sub/.hidden"), "h");
        QFile::link(at("outside"), at("dst/sub/link"));
        QVERIFY(::deleteFolderTree(dir("dst")));
        QVERIFY(!QFileInfo::exists(at("dst")));
        QVERIFY(QFileInfo::exists(at("outside/keep.txt"))); // links are not followed
        QVERIFY(!::deleteFolderTree(dir("dst")));
        QFile::setPermissions(at("src/sub/deeper"), QFile::ReadOwner | QFile::ExeOwner);
        for (const QString &open : {tmp.path(), at("src")}) // rwxr-xr-x, for nobody (still in root's group) to read
            QFile::setPermissions(open, QFile::Permissions(0x7755));
        bool deleted = true;
        QVERIFY(asNobodyIfRoot([&] { deleted = ::deleteFolderTree(dir("src")); }));
        QVERIFY(!deleted && QFileInfo::exists(at("src/sub/deeper/d.txt")));
        QFile::setPermissions(at("src/sub/deeper"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void shortenFolderNameForDisplay_data()
    {
        QTest::addColumn<QString>("path"); QTest::addColumn<QString>("expected");
        const QString fifty = QStringLiteral("/aaaaaaaaaa/bbbbbbbbbb/cccccccccc/dddddddddd/eeeee"); // 50
        QTest::newRow("50 characters untouched") << fifty << fifty;
        QTest::newRow("short path keeps backslashes") << "C:\\data\\x" << "C:\\data\\x";
        QTest::newRow("51 characters, many pieces") << "/aaaaaaaaaa/bbbbbbbbbb/cccccccccc/dddddddddd/eeeeee"
                                                    << "aaaaaaaaaa/bbbbbbbbbb/.../eeeeee";
        QTest::newRow("backslashes become slashes")
            << "C:\\Users\\imaging\\Documents\\experiments\\2026\\mouse7\\ClickInfo.txt" << "C:/Users/.../ClickInfo.txt";
        QTest::newRow("empty pieces dropped") << "//server//share///very/long/folder/name/that/goes/on/file.txt"
                                              << "server/share/.../file.txt";
        QTest::newRow("51 characters, three pieces: cut the full path")
            << "/aaaaaaaaaaaaaaaa/bbbbbbbbbbbbbbbb/cccccccccccccccc"
            << "/aaaaaaaaaaaaaaaa/bbbbbbbbbbbbbbbb/cccccccccccc...";
        QTest::newRow("long last piece: cut the full path, not the short form")
            << "C:\\a\\b\\c\\" + QString(60, 'x') << "C:/a/b/c/" + QString(38, 'x') + "...";
    }

    void shortenFolderNameForDisplay()
    {
        QFETCH(QString, path); QFETCH(QString, expected);
        ::shortenFolderNameForDisplay(path);
        QCOMPARE(path, expected);
    }

    void colourTableNames()
    {
        // A look-up table and its colour table share one name, no two alike; 15 is Jet by type only.
        QSet<QString> names;
        for (int c = 0; c < CLUT_JET; ++c) {
            names << getCTNameForCLUT(tag_ecolortable(c));
            QCOMPARE(getCTNameForColorTable(getCTTypeForCLUT(tag_ecolortable(c))), getCTNameForCLUT(tag_ecolortable(c)));
        }
        QVERIFY(names.size() == CLUT_JET && names.contains("Grays") && !names.contains(QString()));
        QVERIFY(getCTNameForCLUT(CLUT_JET).isEmpty());
        QCOMPARE(getCTNameForColorTable(getCTTypeForCLUT(CLUT_JET)), QStringLiteral("Jet"));
        for (int t : {-1, 15, 22, 27})
            QVERIFY(getCTNameForColorTable(ZOS_COLORTABLE_TYPES(t)).isEmpty());
        QCOMPARE(getCTNameForColorTable(ZOS_CT_BLUEYELLOW), QStringLiteral("BlueYellow"));
        QCOMPARE(getCTTypeForCLUT(tag_ecolortable(16)), ZOS_CT_GRAYS);
        QCOMPARE(getCTTypeForCLUT(tag_ecolortable(-3)), ZOS_CT_GRAYS);
    }

    void waveLength_data()
    {
        QTest::addColumn<double>("nm"); QTest::addColumn<uint>("rgb");
        QTest::newRow("below the band") << 379.9 << 0xFF000000u;
        QTest::newRow("above the band") << 780.1 << 0xFF000000u;
        QTest::newRow("380 edge: dim violet") << 380.0 << 0xFF610061u;
        QTest::newRow("440 pure blue") << 440.0 << 0xFF0000FFu;
        QTest::newRow("490 cyan") << 490.0 << 0xFF00FFFFu;
        QTest::newRow("510 green") << 510.0 << 0xFF00FF00u;
        QTest::newRow("580 yellow") << 580.0 << 0xFFFFFF00u;
        QTest::newRow("645 red") << 645.0 << 0xFFFF0000u;
        QTest::newRow("780 dim red") << 780.0 << 0xFF610000u;
        QTest::newRow("465 mid blue band") << 465.0 << 0xFF0092FFu;
        QTest::newRow("441 just into the blue band") << 441.0 << 0xFF000BFFu;
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN() << 0xFF000000u;
    }

    void waveLength()
    {
        QFETCH(double, nm); QFETCH(uint, rgb);
        QCOMPARE(QString::number(convertWaveLengthToRGB(nm), 16), QString::number(rgb, 16));
    }

    void intermediatePoints_data()
    {
        QTest::addColumn<QPoint>("from"); QTest::addColumn<QPoint>("to"); QTest::addColumn<QString>("expected");
        QTest::newRow("single point") << QPoint(0, 0) << QPoint(0, 0) << "0,0";
        QTest::newRow("(0,0)-(3,-1)") << QPoint(0, 0) << QPoint(3, -1) << "0,0 1,0 2,-1 3,-1";
        QTest::newRow("octant 1: shallow +x +y") << QPoint(0, 0) << QPoint(5, 2) << "0,0 1,0 2,1 3,1 4,2 5,2";
        QTest::newRow("octant 2: steep +x +y") << QPoint(0, 0) << QPoint(2, 5) << "0,0 0,1 1,2 1,3 2,4 2,5";
        QTest::newRow("octant 3: steep -x +y") << QPoint(0, 0) << QPoint(-2, 5) << "0,0 0,1 -1,2 -1,3 -2,4 -2,5";
        QTest::newRow("octant 4: shallow -x +y") << QPoint(0, 0) << QPoint(-5, 2) << "0,0 -1,0 -2,1 -3,1 -4,2 -5,2";
        QTest::newRow("octant 5: shallow -x -y") << QPoint(0, 0) << QPoint(-5, -2) << "0,0 -1,0 -2,-1 -3,-1 -4,-2 -5,-2";
        QTest::newRow("octant 6: steep -x -y") << QPoint(0, 0) << QPoint(-2, -5) << "0,0 0,-1 -1,-2 -1,-3 -2,-4 -2,-5";
        QTest::newRow("octant 7: steep +x -y") << QPoint(0, 0) << QPoint(2, -5) << "0,0 0,-1 1,-2 1,-3 2,-4 2,-5";
        QTest::newRow("octant 8: shallow +x -y") << QPoint(0, 0) << QPoint(5, -2) << "0,0 1,0 2,-1 3,-1 4,-2 5,-2";
        QTest::newRow("diagonal takes the non-steep branch") << QPoint(1, 1) << QPoint(4, 4) << "1,1 2,2 3,3 4,4";
        QTest::newRow("vertical") << QPoint(5, 3) << QPoint(5, 0) << "5,3 5,2 5,1 5,0";
        QTest::newRow("horizontal backwards") << QPoint(2, 7) << QPoint(-1, 7) << "2,7 1,7 0,7 -1,7";
    }

    void intermediatePoints()
    {
        QFETCH(QPoint, from); QFETCH(QPoint, to); QFETCH(QString, expected);
        QStringList got;
        for (const Coord2d &p : getIntermediatePoints(from.x(), from.y(), to.x(), to.y()))
            got << QStringLiteral("%1,%2").arg(p.x).arg(p.y);
        QCOMPARE(got.join(QLatin1Char(' ')), expected);
    }

    void intermediatePointsAreConnected_data()
    {
        QTest::addColumn<QPoint>("from"); QTest::addColumn<QPoint>("to");
        QTest::newRow("long shallow") << QPoint(-20000, 5) << QPoint(30000, 12345);
        QTest::newRow("long steep") << QPoint(7, 40000) << QPoint(-3000, -10000);
        QTest::newRow("huge coordinates") << QPoint(2000000000, -2000000000) << QPoint(2000050000, -1999990000);
    }

    void intermediatePointsAreConnected()
    {
        QFETCH(QPoint, from); QFETCH(QPoint, to);
        const QList<Coord2d> points = getIntermediatePoints(from.x(), from.y(), to.x(), to.y());
        QCOMPARE(points.size(), qMax(qAbs(to.x() - from.x()), qAbs(to.y() - from.y())) + 1);
        QCOMPARE(points.first(), Coord2d(from.x(), from.y()));
        QCOMPARE(points.last(), Coord2d(to.x(), to.y()));
        for (int i = 1; i < points.size(); ++i) {
            const double stepX = qAbs(points[i].x - points[i - 1].x), stepY = qAbs(points[i].y - points[i - 1].y);
            QVERIFY(stepX <= 1 && stepY <= 1 && stepX + stepY >= 1);
        }
    }

private:
    QTemporaryDir m_settingsDir;
};

QTEST_MAIN(TestUtilities)
#include "tst_utilities.moc"
