#include "czoslog.h"
#include "zopreferencehooks.h"
#include "zouserstats.h"

#include <QtTest>

// Reads the file back and makes it comparable: the time before each entry's
// tab becomes "T" and the launch line becomes "<launched NAME>", after both are
// checked against the clock.
static QString normalised(const QByteArray &bytes, const QString &name)
{
    const QString format = QLocale::system().timeFormat(QLocale::ShortFormat);
    const QString launched = name + QStringLiteral(" - Launched: [");
    QStringList lines = QString::fromUtf8(bytes).split(QStringLiteral("\r\n"));
    for (QString &line : lines) {
        const int tab = line.indexOf(QLatin1Char('\t'));
        if (tab > 0) {
            if (!QTime::fromString(line.left(tab), format).isValid())
                return QStringLiteral("bad time in: ") + line;
            line = QLatin1Char('T') + line.mid(tab);
        } else if (line.startsWith(launched) && line.endsWith(QLatin1Char(']'))) {
            const QString date = QDate::currentDate().toString(Qt::TextDate);
            const QString rest = line.mid(launched.size(), line.size() - launched.size() - 1);
            if (!rest.startsWith(date + QStringLiteral(", "))
                || !QTime::fromString(rest.mid(date.size() + 2), format).isValid())
                return QStringLiteral("bad launch line: ") + line;
            line = QStringLiteral("<launched ") + name + QLatin1Char('>');
        }
    }
    return lines.join(QStringLiteral("\r\n"));
}

static QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

static const QString kRule = QString(84, QLatin1Char('='));
static const QString kHeaderOffscreen = kRule + QStringLiteral("\r\n<launched Test>\r\nOpenGL Vendor: , Driver: , Version: \r\n");

class TestCZOSLog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void sessionWrittenByteForByte();
    void deferredPathNeedsTheHandler();
    void entryRules_data();
    void entryRules();
    void levelsAndStatusBar_data();
    void levelsAndStatusBar();
    void activityWindowSignals();
    void rotation_data();
    void rotation();
    void rotationWithStuckBackupStillStartsAfresh();
    void unopenableFileWritesNothing_data();
    void unopenableFileWritesNothing();
    void logoutLineComesFromTheHook();
    void toolkitMessages();
    void userStatistics();
    void beginLogWithoutStatisticsWritesNowhere();

private:
    QString logPath() const { return m_dir->filePath(QStringLiteral("zoactivity.log")); }
    QString backupPath() const { return m_dir->filePath(QStringLiteral("zoactivity.bak")); }
    QScopedPointer<QTemporaryDir> m_dir;
};

void TestCZOSLog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(CZOSLogEventHandler::install());
    QVERIFY(CZOSLogEventHandler::install()); // a second call is harmless
}

void TestCZOSLog::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    zoSetPreferenceHooks(ZOPreferenceHooks());
    // The repeat check remembers across logs; clear it with a unique text.
    CZOSLog reset(QStringLiteral("reset"));
    reset.beginLog(QString(), LOG_TO_FILE);
    reset.log(QUuid::createUuid().toString(), QString(), 0, QString(), 1, true);
}

void TestCZOSLog::cleanup()
{
    closeLog();
    QCoreApplication::processEvents();
    QVERIFY(!getLogObject());
}

void TestCZOSLog::sessionWrittenByteForByte()
{
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    CZOSLog *log = getLogObject();
    QVERIFY(log);
    QCOMPARE(log->fileName(), logPath());
    QCOMPARE(log->location(), LOG_TO_FILE_AND_WINDOW);
    QVERIFY(!QFile::exists(logPath())); // opened by the first entry, not before

    log->log(QStringLiteral("Acquisition started"), QStringLiteral("a.cpp"), 1, QStringLiteral("x"), 1, true);
    log->log(QStringLiteral("Filter wheel slow"), QString(), 2, QString(), 2, true);
    log->log(QStringLiteral("Camera lost"), QString(), 3, QString(), 3, true);
    log->log(QStringLiteral("Ünïcode µ kept"), QString(), 4, QString(), 1, true);
    // Flushed after every entry: the file holds the entries before the close.
    QVERIFY(readAll(logPath()).endsWith("\tÜnïcode µ kept\r\n"));
    QCOMPARE(log->errors(), 1);
    QCOMPARE(log->warnings(), 1);
    QVERIFY(log->hasErrors() && log->hasWarnings());
    closeLog();

    const QByteArray bytes = readAll(logPath());
    QCOMPARE(bytes.count('\n'), bytes.count("\r\n"));
    QCOMPARE(normalised(bytes, QStringLiteral("Test")),
             kHeaderOffscreen
                 + QStringLiteral("T\tAcquisition started\r\n"
                                  "T\tWarning > Filter wheel slow\r\n"
                                  "T\tError   > Camera lost\r\n"
                                  "T\tÜnïcode µ kept\r\n"
                                  "\r\n"
                                  "Found 1 errors, 1  warnings\r\n")
                 + kRule + QStringLiteral("\r\n"));

    // A second session appends its own header.
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    getLogObject()->log(QStringLiteral("again"), QString(), 1, QString(), 1, true);
    closeLog();
    const QString both = normalised(readAll(logPath()), QStringLiteral("Test"));
    QCOMPARE(both.count(QStringLiteral("<launched Test>")), 2);
    QVERIFY(both.endsWith(QStringLiteral("T\tagain\r\n\r\nFound 0 errors, 0  warnings\r\n") + kRule
                          + QStringLiteral("\r\n")));
}

void TestCZOSLog::deferredPathNeedsTheHandler()
{
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    CZOSLog *log = getLogObject();
    log->log(QStringLiteral("posted"), QString(), 1, QString(), 2);
    errorLog(QStringLiteral("through errorLog"), QStringLiteral("ignored.cpp"), 9, QStringLiteral("ignored"), 3);
    QCOMPARE(log->messageCount(), 0); // nothing written until the event loop runs
    QCoreApplication::processEvents();
    QCOMPARE(log->messageCount(), 2);
    QCOMPARE(log->warnings(), 1);
    QCOMPARE(log->errors(), 1);

    CZOSLogEventHandler::uninstall();
    QVERIFY(!CZOSLogEventHandler::isInstalled());
    log->log(QStringLiteral("nobody handles this"), QString(), 1, QString(), 1);
    QCoreApplication::processEvents();
    QVERIFY(CZOSLogEventHandler::install());
    QCOMPARE(log->messageCount(), 2);
    QVERIFY(!readAll(logPath()).contains("nobody handles this"));
}

void TestCZOSLog::entryRules_data()
{
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QStringList>("written");

    QTest::newRow("repeat differing in case dropped") << QStringList{"Door open", "DOOR OPEN", "door open"}
                                                      << QStringList{"Door open"};
    QTest::newRow("repeat after another message kept") << QStringList{"a", "b", "A"} << QStringList{"a", "b", "A"};
    QTest::newRow("empty message neither written nor counted") << QStringList{"", "x", ""} << QStringList{"x"};
    QTest::newRow("trailing blank makes it different") << QStringList{"x", "x "} << QStringList{"x", "x "};
}

void TestCZOSLog::entryRules()
{
    QFETCH(QStringList, messages);
    QFETCH(QStringList, written);
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    CZOSLog *log = getLogObject();
    for (const QString &m : messages)
        log->log(m, QString(), 1, QString(), 1, true);
    // The deferred path applies the same rules.
    for (const QString &m : messages)
        log->log(m.isEmpty() ? m : m + QStringLiteral(" (posted)"), QString(), 1, QString(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(log->messageCount(), written.size() * 2);
    closeLog();

    QString expected = kHeaderOffscreen;
    for (const QString &m : written)
        expected += QStringLiteral("T\t") + m + QStringLiteral("\r\n");
    for (const QString &m : written)
        expected += QStringLiteral("T\t") + m + QStringLiteral(" (posted)\r\n");
    expected += QStringLiteral("\r\nFound 0 errors, 0  warnings\r\n") + kRule + QStringLiteral("\r\n");
    QCOMPARE(normalised(readAll(logPath()), QStringLiteral("Test")), expected);
}

void TestCZOSLog::levelsAndStatusBar_data()
{
    QTest::addColumn<long>("type");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("warnings");
    QTest::addColumn<int>("errors");
    QTest::addColumn<bool>("statusBar");

    QTest::newRow("information") << 1L << "T\tm" << 0 << 0 << false;
    QTest::newRow("level 0 reads as information") << 0L << "T\tm" << 0 << 0 << false;
    QTest::newRow("unknown level reads as information") << 7L << "T\tm" << 0 << 0 << false;
    QTest::newRow("high bits do not change the level") << 0x21L << "T\tm" << 0 << 0 << false;
    QTest::newRow("warning") << 2L << "T\tWarning > m" << 1 << 0 << false;
    QTest::newRow("error always on the status bar") << 3L << "T\tError   > m" << 0 << 1 << true;
    QTest::newRow("flagged information") << 0x11L << "T\tm" << 0 << 0 << true;
    QTest::newRow("flagged warning") << 0x12L << "T\tWarning > m" << 1 << 0 << true;
}

void TestCZOSLog::levelsAndStatusBar()
{
    QFETCH(long, type);
    QFETCH(QString, line);
    QFETCH(int, warnings);
    QFETCH(int, errors);
    QFETCH(bool, statusBar);

    CZOSLog log(QStringLiteral("Test"));
    log.beginLog(logPath(), LOG_TO_FILE);
    QSignalSpy status(&log, &CZOSLog::statusBarMessage);
    log.log(QStringLiteral("m"), QString(), 1, QString(), type, true);
    QCOMPARE(log.warnings(), warnings);
    QCOMPARE(log.errors(), errors);
    QCOMPARE(status.count(), statusBar ? 1 : 0);
    if (statusBar)
        QCOMPARE(status.at(0).at(0).toString(), QStringLiteral("m"));
    log.endLog();
    QVERIFY(normalised(readAll(logPath()), QStringLiteral("Test")).contains(QStringLiteral("\r\n") + line
                                                                            + QStringLiteral("\r\n\r\n")));
}

void TestCZOSLog::activityWindowSignals()
{
    CZOSLog log(QStringLiteral("Test"));
    log.beginLog(logPath(), LOG_TO_WINDOW);
    QSignalSpy activity(&log, &CZOSLog::activityMessage);
    QSignalSpy output(&log, &CZOSLog::outputMessage);
    log.log(QStringLiteral("first"), QStringLiteral("C:\\src\\zo\\acquire.cpp"), 42, QStringLiteral("x"), 2, true);
    log.log(QStringLiteral("second"), QStringLiteral("plain.cpp"), 7, QString(), 1, true);
    log.writeToOutputWindow(QStringLiteral("out"), true, false);

    QCOMPARE(activity.count(), 2);
    const QList<QVariant> first = activity.at(0);
    QCOMPARE(first.at(0).toString(), QStringLiteral("1"));
    QCOMPARE(first.at(1).toString(), QStringLiteral("Warning"));
    QCOMPARE(first.at(2).toString(), QStringLiteral("first"));
    QVERIFY(QTime::fromString(first.at(3).toString(), QLocale::system().timeFormat(QLocale::ShortFormat)).isValid());
    QCOMPARE(first.at(4).toString(), QStringLiteral("acquire.cpp"));
    QCOMPARE(first.at(5).toString(), QStringLiteral("42"));
    QCOMPARE(activity.at(1).at(0).toString(), QStringLiteral("2"));
    QCOMPARE(activity.at(1).at(1).toString(), QStringLiteral("Information"));
    QCOMPARE(activity.at(1).at(4).toString(), QStringLiteral("plain.cpp"));
    QCOMPARE(output.count(), 1);
    QCOMPARE(output.at(0), (QList<QVariant>{QStringLiteral("out"), true, false}));
    QVERIFY(!QFile::exists(logPath())); // window only
}

void TestCZOSLog::rotation_data()
{
    QTest::addColumn<int>("oldSize");
    QTest::addColumn<bool>("rotated");
    QTest::newRow("204800 bytes kept") << 204800 << false;
    QTest::newRow("204801 bytes moved to the backup") << 204801 << true;
}

void TestCZOSLog::rotation()
{
    QFETCH(int, oldSize);
    QFETCH(bool, rotated);
    const QByteArray old(oldSize, 'o');
    {
        QFile f(logPath());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(old);
        QFile b(backupPath());
        QVERIFY(b.open(QIODevice::WriteOnly));
        b.write("previous backup");
    }
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    getLogObject()->log(QStringLiteral("new session"), QString(), 1, QString(), 1, true);
    closeLog();

    const QByteArray now = readAll(logPath());
    if (rotated) {
        QCOMPARE(readAll(backupPath()), old);
        QVERIFY(now.startsWith(kRule.toLatin1() + "\r\nTest - Launched: ["));
    } else {
        QCOMPARE(readAll(backupPath()), QByteArray("previous backup"));
        QVERIFY(now.startsWith(old + kRule.toLatin1() + "\r\n"));
    }
    QVERIFY(now.contains("\tnew session\r\n"));
}

void TestCZOSLog::rotationWithStuckBackupStillStartsAfresh()
{
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("zoactivity.bak/inside")));
    {
        QFile f(logPath());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(204801, 'o'));
    }
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    getLogObject()->log(QStringLiteral("after a failed rotation"), QString(), 1, QString(), 1, true);
    closeLog();
    QVERIFY(QFileInfo(backupPath()).isDir());
    QVERIFY(readAll(logPath()).startsWith(kRule.toLatin1()));
}

void TestCZOSLog::unopenableFileWritesNothing_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::addColumn<bool>("makeFolder");
    QTest::newRow("a folder in the file's place") << "zoactivity.log" << true;
    QTest::newRow("a missing folder") << "missing/zoactivity.log" << false;
    QTest::newRow("no file name") << "" << false;
}

void TestCZOSLog::unopenableFileWritesNothing()
{
    QFETCH(QString, relativePath);
    QFETCH(bool, makeFolder);
    if (makeFolder)
        QVERIFY(QDir(m_dir->path()).mkdir(relativePath));
    CZOSLog log(QStringLiteral("Test"));
    log.beginLog(relativePath.isEmpty() ? QString() : m_dir->filePath(relativePath), LOG_TO_FILE);
    log.log(QStringLiteral("goes nowhere"), QString(), 1, QString(), 2, true);
    log.log(QStringLiteral("nor this"), QString(), 1, QString(), 3, true);
    log.endLog();
    QCOMPARE(log.warnings(), 1);
    QCOMPARE(log.errors(), 1);
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files).size(), 0);
}

static bool hookUser(QString *name, QString *session)
{
    *name = QStringLiteral("jd");
    *session = QStringLiteral("0:12:05");
    return true;
}

void TestCZOSLog::logoutLineComesFromTheHook()
{
    ZOPreferenceHooks hooks;
    hooks.activeUserSession = hookUser;
    zoSetPreferenceHooks(hooks);
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    closeLog();
    QCOMPARE(normalised(readAll(logPath()), QStringLiteral("Test")),
             kHeaderOffscreen
                 + QStringLiteral("T\t>>JD Logged OUT<< Session Lasted: 0:12:05\r\n\r\nFound 0 errors, 0  warnings\r\n")
                 + kRule + QStringLiteral("\r\n"));

    // Without a user there is no logout line, and a log that never wrote
    // anything leaves no file.
    QVERIFY(QFile::remove(logPath()));
    zoSetPreferenceHooks(ZOPreferenceHooks());
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    closeLog();
    QVERIFY(!QFile::exists(logPath()));
}

void TestCZOSLog::toolkitMessages()
{
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
    CZOSLog *log = getLogObject();
    QSignalSpy status(log, &CZOSLog::statusBarMessage);
    const QtMessageHandler previous = installZOSMessageHandler();
    qWarning("stage limit reached");
    qDebug("debug note");
    qCritical("controller gone");
    ZOSMessageHandler(QtFatalMsg, "fatal but harmless");
    qInstallMessageHandler(previous);
    QCoreApplication::processEvents();

    QCOMPARE(log->warnings(), 1);
    QCOMPARE(log->errors(), 1);
    QCOMPARE(log->messageCount(), 4);
    QCOMPARE(status.count(), 3);
    QCOMPARE(status.at(0).at(0).toString(), QStringLiteral("QT -> debug note"));
    QCOMPARE(status.at(2).at(0).toString(), QStringLiteral("QT -> fatal but harmless"));
    closeLog();
    const QString text = normalised(readAll(logPath()), QStringLiteral("Test"));
    QVERIFY2(text.contains(QStringLiteral("T\tWarning > QT -> stage limit reached\r\nT\tQT -> debug note\r\n"
                                          "T\tError   > QT -> controller gone\r\n")),
             qPrintable(text));
}

void TestCZOSLog::userStatistics()
{
    QVERIFY(beginUserStatLogging());
    updateUserStats(QStringLiteral("JD"));
    updateUserStats(QStringLiteral("JD")); // already logged in
    updateUserStats(QStringLiteral("Smith, A"));
    closeUserStatLogging();
    updateUserStats(QStringLiteral("late")); // not started: ignored

    QCOMPARE(userStatsFileName(), m_dir->filePath(QStringLiteral("zouserstats.csv")));
    const QStringList rows = QString::fromUtf8(readAll(userStatsFileName())).split(QStringLiteral("\r\n"));
    QCOMPARE(rows.size(), 6);
    QCOMPARE(rows.at(0), QStringLiteral("Event,User,Time,Session Seconds"));
    const QRegularExpression login(QStringLiteral("^login,(.+),(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d),$"));
    const QRegularExpression logout(QStringLiteral("^logout,(.+),(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d),(\\d+)$"));
    QCOMPARE(login.match(rows.at(1)).captured(1), QStringLiteral("JD"));
    QCOMPARE(logout.match(rows.at(2)).captured(1), QStringLiteral("JD"));
    QCOMPARE(login.match(rows.at(3)).captured(1), QStringLiteral("\"Smith, A\""));
    QCOMPARE(logout.match(rows.at(4)).captured(1), QStringLiteral("\"Smith, A\""));
    QVERIFY(logout.match(rows.at(4)).captured(3).toInt() < 60);
    QCOMPARE(rows.at(5), QString());

    // A later start keeps the rows and does not repeat the header.
    QVERIFY(beginUserStatLogging());
    closeUserStatLogging();
    QCOMPARE(QString::fromUtf8(readAll(userStatsFileName())).count(QStringLiteral("Event,")), 1);
}

void TestCZOSLog::beginLogWithoutStatisticsWritesNowhere()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("zouserstats.csv")));
    QCOMPARE(beginLog(QStringLiteral("Test")), 0);
    CZOSLog *log = getLogObject();
    QVERIFY(log);
    QCOMPARE(log->fileName(), QString());
    QCOMPARE(log->location(), LOG_TO_FILE);
    QCOMPARE(beginLog(QStringLiteral("Second")), 0); // one log at a time
    QCOMPARE(getLogObject(), log);
    log->log(QStringLiteral("lost"), QString(), 1, QString(), 1, true);
    closeLog();
    QVERIFY(!QFile::exists(logPath()));
}

QTEST_MAIN(TestCZOSLog)
#include "tst_czoslog.moc"
