#include "czoutilityfns.h"
#include "zopreferencehooks.h"

#include <QtTest>
#include <QAction>

namespace {
QString s_hookUser;
int s_selections = 0;
QString hookUserName() { return s_hookUser; }
void hookSelectUser()
{
    ++s_selections;
    s_hookUser = QStringLiteral("jdoe");
}
} // namespace

static void setInstalledVersion(const QVariant &value)
{
    QSettings settings(QSettings::NativeFormat, QSettings::SystemScope, QStringLiteral("Norbeck Instruments"),
                       QStringLiteral("Zolvane"));
    if (value.isValid())
        settings.setValue(QStringLiteral("Current_Version/InstalledVersion"), value);
    else
        settings.remove(QStringLiteral("Current_Version/InstalledVersion"));
}

class TestCZOUtilityFns : public QObject
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
        QAction open(QStringLiteral("&Open..."), nullptr);
        QAction other(QStringLiteral("open"), nullptr);
        QVERIFY(CZOUtilityFns::addAction(QStringLiteral("&Open..."), &open));
        QVERIFY(!CZOUtilityFns::addAction(QStringLiteral("open"), &other));
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("OPEN")), &open);
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("  O&pen.  ")), &open);
        QCOMPARE(CZOUtilityFns::getAction(QStringLiteral("Open file")), nullptr);

        {
            QAction shortLived(QStringLiteral("Save"), nullptr);
            QVERIFY(CZOUtilityFns::addAction(QStringLiteral("&Save"), &shortLived));
        }
        // A destroyed action is never handed out, and its name is free again.
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
        const QRegularExpression bare(QStringLiteral("^(\\d{14})_SEQ$"));
        const QRegularExpressionMatch m = bare.match(CZOUtilityFns::generateCurrentSeqName());
        QVERIFY(m.hasMatch()); // no preference store yet: no user part
        const QDateTime stamp = QDateTime::fromString(m.captured(1), QStringLiteral("yyyyMMddHHmmss"));
        QVERIFY(qAbs(stamp.secsTo(QDateTime::currentDateTime())) < 5); // local time

        ZOPreferenceHooks hooks;
        hooks.activeUserName = hookUserName;
        hooks.selectUser = hookSelectUser;
        zoSetPreferenceHooks(hooks);
        s_hookUser.clear();
        const QRegularExpression named(QStringLiteral("^jdoe\\d{14}_SEQ$"));
        QVERIFY(named.match(CZOUtilityFns::generateCurrentSeqName()).hasMatch());
        QCOMPARE(s_selections, 1); // asked once, because nobody was logged in
        QVERIFY(named.match(CZOUtilityFns::generateCurrentSeqName()).hasMatch());
        QCOMPARE(s_selections, 1);
    }

private:
    QTemporaryDir m_settingsDir;
};

QTEST_MAIN(TestCZOUtilityFns)
#include "tst_czoutilityfns.moc"
