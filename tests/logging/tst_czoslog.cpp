// The log, the status texts and the message boxes.
#include "answerer.h"
#include "czoserrorhandler.h"
#include "czoslog.h"
#include "czoutilityfns.h"
#include "zopreferencehooks.h"
#include "zouserstats.h"

#include "testfiles.h"

#include <QAbstractButton>
#include <QMainWindow>
#include <QtTest>

// Entry times become "T" and the launch line "<launched>", once checked against the clock.
static QString normalised(const QByteArray &bytes)
{
    const QString format = QLocale::system().timeFormat(QLocale::ShortFormat);
    const QString launched = QStringLiteral("Test - Launched: [") + QDate::currentDate().toString(Qt::TextDate)
                             + QStringLiteral(", ");
    QStringList lines = QString::fromUtf8(bytes).split(QStringLiteral("\r\n"));
    for (QString &line : lines) {
        const int tab = line.indexOf(QLatin1Char('\t'));
        if (tab > 0 && QTime::fromString(line.left(tab), format).isValid())
            line = QLatin1Char('T') + line.mid(tab);
        else if (line.startsWith(launched) && line.endsWith(QLatin1Char(']'))
                 && QTime::fromString(line.mid(launched.size()).chopped(1), format).isValid())
            line = QStringLiteral("<launched>");
    }
    return lines.join(QStringLiteral("\r\n"));
}

static const QString kRule = QString(84, QLatin1Char('='));
static const QString kHeader = kRule + QStringLiteral("\r\n<launched>\r\nOpenGL Vendor: , Driver: , Version: \r\n");
static QString summary(int errors, int warnings)
{
    return QStringLiteral("\r\nFound %1 errors, %2  warnings\r\n").arg(errors).arg(warnings) + kRule + "\r\n";
}

namespace {

// What a box looked like while it was open.
struct Seen {
    bool shown = false, canClose = true, stillOpenAfterEscape = false;
    QString text, title;
    QWidget *parent = nullptr;
    Qt::CursorShape cursor = Qt::BitmapCursor;
    QStringList buttons;
};

// A step that records what the box looked like while it was open, then lets `answer` close it.
Answerer::Step noting(Seen *seen, std::function<void(QMessageBox *)> answer)
{
    return [seen, answer](QWidget *w) {
        auto *box = static_cast<QMessageBox *>(w);
        seen->shown = true;
        seen->text = box->text();
        seen->title = box->windowTitle();
        seen->parent = box->parentWidget();
        seen->canClose = CZOUtilityFns::canClose();
        if (QCursor *c = QGuiApplication::overrideCursor())
            seen->cursor = c->shape();
        for (QAbstractButton *b : box->buttons())
            seen->buttons << b->text().remove(QLatin1Char('&'));
        answer(box);
    };
}

} // namespace

class TestCZOSLog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(CZOSLogEventHandler::install()); }

    void init()
    {
        m_dir.reset(new QTemporaryDir);
        useDataRoot(m_dir->path());
        zoSetPreferenceHooks(ZOPreferenceHooks());
        // The repeat check spans logs; leave a text no test uses as the last one.
        CZOSLog(QStringLiteral("reset")).log(QUuid::createUuid().toString(), QString(), 0, QString(), 1, true);
    }

    void cleanup()
    {
        closeLog();
        QVERIFY(!getLogObject() && CZOUtilityFns::canClose());
        while (QGuiApplication::overrideCursor())
            QGuiApplication::restoreOverrideCursor();
    }

    void entries_data()
    {
        QTest::addColumn<QStringList>("messages"); QTest::addColumn<QList<long>>("types");
        QTest::addColumn<QString>("written"); QTest::addColumn<int>("warnings"); QTest::addColumn<int>("errors");
        QTest::addColumn<bool>("userHook");

        const QList<long> info{1, 1, 1};
        QTest::newRow("levels and unicode") << QStringList{"Acquisition started", "Filter wheel slow", "Camera lost", "Ünïcode µ"}
                                            << QList<long>{1, 2, 3, 1}
                                            << "T\tAcquisition started\r\nT\tWarning > Filter wheel slow\r\n"
                                               "T\tError   > Camera lost\r\nT\tÜnïcode µ\r\n" << 1 << 1 << false;
        QTest::newRow("repeat differing in case dropped") << QStringList{"Door open", "DOOR OPEN", "door open"} << info
                                                          << "T\tDoor open\r\n" << 0 << 0 << false;
        QTest::newRow("repeat of an earlier message kept") << QStringList{"a", "b", "A"} << info
                                                           << "T\ta\r\nT\tb\r\nT\tA\r\n" << 0 << 0 << false;
        QTest::newRow("empty message neither written nor counted") << QStringList{"", "x", ""} << QList<long>{3, 1, 3}
                                                                   << "T\tx\r\n" << 0 << 0 << false;
        QTest::newRow("level 0 and unknown levels read as information")
            << QStringList{"a", "b", "c"} << QList<long>{0, 7, 0x21} << "T\ta\r\nT\tb\r\nT\tc\r\n" << 0 << 0 << false;
        QTest::newRow("status-bar bit keeps the level") << QStringList{"w", "i", "e"} << QList<long>{0x12, 0x11, 0x13}
                                                        << "T\tWarning > w\r\nT\ti\r\nT\tError   > e\r\n" << 1 << 1 << false;
        QTest::newRow("logout line comes from the user hook")
            << QStringList{} << QList<long>{} << "T\t>>JD Logged OUT<< Session Lasted: 0:12:05\r\n" << 0 << 0 << true;
    }

    void entries()
    {
        QFETCH(QStringList, messages); QFETCH(QList<long>, types); QFETCH(QString, written); QFETCH(int, warnings);
        QFETCH(int, errors); QFETCH(bool, userHook);
        if (userHook) {
            ZOPreferenceHooks hooks;
            hooks.activeUserSession = [](QString *name, QString *session) { return *name = "jd", *session = "0:12:05", true; };
            zoSetPreferenceHooks(hooks);
        }
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        QVERIFY(!QFile::exists(path("zoactivity.log"))); // opened by the first entry
        for (int i = 0; i < messages.size(); ++i)
            getLogObject()->log(messages[i], QString(), i, QString(), types[i], true);
        QVERIFY(userHook || normalised(readFile(path("zoactivity.log"))).endsWith(written)); // flushed per entry
        QCOMPARE(qMakePair(getLogObject()->warnings(), getLogObject()->errors()), qMakePair(warnings, errors));
        closeLog();
        QCOMPARE(normalised(readFile(path("zoactivity.log"))), kHeader + written + summary(errors, warnings));
    }

    void deferredPathNeedsTheHandler()
    {
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        CZOSLog *log = getLogObject();
        log->log(QStringLiteral("posted"), QString(), 1, QString(), 2);
        log->log(QStringLiteral("POSTED"), QString(), 1, QString(), 2); // still a repeat when it arrives
        errorLog(QStringLiteral("through errorLog"), QStringLiteral("unused.cpp"), 9, QStringLiteral("unused"), 3);
        QCOMPARE(log->messageCount(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(log->messageCount(), 2);

        CZOSLogEventHandler::uninstall();
        log->log(QStringLiteral("nobody handles this"), QString(), 1, QString(), 1);
        QCoreApplication::processEvents();
        QVERIFY(CZOSLogEventHandler::install());
        log->log(QStringLiteral("queued at the close"), QString(), 1, QString(), 1);
        closeLog();
        QCOMPARE(normalised(readFile(path("zoactivity.log"))),
                 kHeader + QStringLiteral("T\tWarning > posted\r\nT\tError   > through errorLog\r\n"
                                          "T\tqueued at the close\r\n") + summary(1, 1));
    }

    void activityWindowAndStatusBar()
    {
        CZOSLog log(QStringLiteral("Test"));
        log.beginLog(path("zoactivity.log"), LOG_TO_WINDOW);
        QSignalSpy activity(&log, &CZOSLog::activityMessage);
        QSignalSpy status(&log, &CZOSLog::statusBarMessage);
        log.log(QStringLiteral("first"), QStringLiteral("C:\\src\\zo\\acquire.cpp"), 42, QString(), 2, true);
        log.log(QStringLiteral("second"), QStringLiteral("plain.cpp"), 7, QString(), 0x11, true);
        log.log(QStringLiteral("third"), QString(), 8, QString(), 3, true);

        QCOMPARE(activity.count(), 3);
        QCOMPARE(activity.at(0).mid(0, 3), (QList<QVariant>{"1", "Warning", "first"}));
        QCOMPARE(activity.at(0).mid(4), (QList<QVariant>{"acquire.cpp", "42"}));
        QCOMPARE(activity.at(1).mid(0, 2), (QList<QVariant>{"2", "Information"}));
        QCOMPARE(status.count(), 2);
        QCOMPARE(status.at(1).at(0).toString(), QStringLiteral("third"));
        QVERIFY(!QFile::exists(path("zoactivity.log"))); // window only
        // A new file name closes the open file; the next entry goes to the new one.
        log.beginLog(path("first.log"), LOG_TO_FILE);
        log.log(QStringLiteral("to first"), QString(), 9, QString(), 1, true);
        log.beginLog(path("second.log"), LOG_TO_FILE);
        log.log(QStringLiteral("to second"), QString(), 10, QString(), 1, true);
        QVERIFY(readFile(path("first.log")).endsWith("\tto first\r\n") && readFile(path("second.log")).endsWith("\tto second\r\n"));
    }

    void rotation_data()
    {
        QTest::addColumn<int>("oldSize"); QTest::addColumn<bool>("backupIsFolder");
        QTest::newRow("204800 bytes kept") << 204800 << false;
        QTest::newRow("204801 bytes moved to the backup") << 204801 << false;
        QTest::newRow("backup cannot be removed: log restarts anyway") << 204801 << true;
    }

    void rotation()
    {
        QFETCH(int, oldSize); QFETCH(bool, backupIsFolder);
        const QByteArray old(oldSize, 'o');
        QVERIFY(writeFile(path("zoactivity.log"), old));
        if (backupIsFolder)
            QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("zoactivity.bak/inside")));
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        getLogObject()->log(QStringLiteral("new"), QString(), 1, QString(), 1, true);
        closeLog();

        const QByteArray now = readFile(path("zoactivity.log"));
        const bool rotated = oldSize > 204800;
        QCOMPARE(now.startsWith(old), !rotated);
        QCOMPARE(normalised(now.mid(rotated ? 0 : oldSize)), kHeader + QStringLiteral("T\tnew\r\n") + summary(0, 0));
        QCOMPARE(readFile(path("zoactivity.bak")), rotated && !backupIsFolder ? old : QByteArray());
        QCOMPARE(QFileInfo(path("zoactivity.bak")).isDir(), backupIsFolder);
    }

    void unopenableFileWritesNothing_data()
    {
        QTest::addColumn<QString>("relativePath"); QTest::addColumn<QString>("occupant"); // a folder, or a link's target
        QTest::newRow("a folder in the file's place") << "zoactivity.log" << "folder";
        QTest::newRow("a missing folder") << "missing/zoactivity.log" << "";
        QTest::newRow("statistics log cannot start: no file at all") << "zouserstats.csv" << "folder";
        QTest::newRow("statistics log cannot start: the disk refuses its header") << "zouserstats.csv" << "/dev/full";
    }

    void unopenableFileWritesNothing()
    {
        QFETCH(QString, relativePath); QFETCH(QString, occupant);
        if (occupant == QLatin1String("folder"))
            QVERIFY(QDir(m_dir->path()).mkdir(relativePath));
        else if (!occupant.isEmpty())
            QVERIFY(QFile::link(occupant, m_dir->filePath(relativePath)));
        const bool started = beginLog(QStringLiteral("Test"));
        CZOSLog *log = getLogObject();
        QVERIFY(log);
        QCOMPARE(started, relativePath != QLatin1String("zouserstats.csv"));
        QCOMPARE(log->location(), started ? LOG_TO_FILE_AND_WINDOW : LOG_TO_FILE);
        if (started)
            log->beginLog(m_dir->filePath(relativePath), LOG_TO_FILE);
        QCOMPARE(beginLog(QStringLiteral("Second")), 0); // one log at a time
        log->log(QStringLiteral("goes nowhere"), QString(), 1, QString(), 2, true);
        QCOMPARE(log->warnings(), 1);
        closeLog();
        const bool linked = occupant.startsWith(QLatin1Char('/'));
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), started || linked ? QStringList{"zouserstats.csv"} : QStringList());
    }

    void toolkitMessages()
    {
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        QSignalSpy status(getLogObject(), &CZOSLog::statusBarMessage);
        const QtMessageHandler previous = installZOSMessageHandler();
        qWarning("stage limit reached");
        qDebug("debug note");
        qCritical("controller gone");
        ZOSMessageHandler(QtFatalMsg, "fatal but harmless");
        qInstallMessageHandler(previous);
        QCoreApplication::processEvents();
        QCOMPARE(status.count(), 3);
        QCOMPARE(status.at(0).at(0).toString(), QStringLiteral("QT -> debug note"));
        closeLog();
        QCOMPARE(normalised(readFile(path("zoactivity.log"))),
                 kHeader
                     + QStringLiteral("T\tWarning > QT -> stage limit reached\r\nT\tQT -> debug note\r\n"
                                      "T\tError   > QT -> controller gone\r\nT\tQT -> fatal but harmless\r\n")
                     + summary(1, 1));

        // With no log open, messages go on to the handler that was there before, however often the log's came.
        static QStringList passedOn;
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { passedOn << text; });
        installZOSMessageHandler();
        installZOSMessageHandler();
        qWarning("no log open");
        qInstallMessageHandler(previous);
        QCOMPARE(passedOn, QStringList{"no log open"});
    }

    void userStatistics()
    {
        QVERIFY(beginUserStatLogging());
        updateUserStats(QStringLiteral("JD"));
        updateUserStats(QStringLiteral("JD")); // already logged in
        updateUserStats(QStringLiteral("Smith, A"));
        closeUserStatLogging();
        updateUserStats(QStringLiteral("late")); // not started: ignored
        QVERIFY(beginUserStatLogging());         // a later start keeps the rows, without a second header
        closeUserStatLogging();

        QString rows = QString::fromUtf8(readFile(userStatsFileName()));
        rows.replace(QRegularExpression(QStringLiteral(",\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d,(0|1)?")), QStringLiteral(",<time>,"));
        QCOMPARE(rows, QStringLiteral("Event,User,Time,Session Seconds\r\nlogin,JD,<time>,\r\nlogout,JD,<time>,\r\n"
                                      "login,\"Smith, A\",<time>,\r\nlogout,\"Smith, A\",<time>,\r\n"));
    }

    // Three threads post (every other message through errorLog, as warnings)
    // while one writes straight away, racing the GUI thread for the file:
    // every message lands once, in the order its thread sent it.
    void everyThreadsMessagesArriveOnceAndInOrder()
    {
        QCOMPARE(beginLog(QStringLiteral("Threads")), 1);
        const int threads = 4, each = 4000;
        std::atomic<int> running{threads};
        std::vector<std::unique_ptr<QThread>> pool;
        for (int t = 0; t < threads; ++t) {
            pool.emplace_back(QThread::create([t, &running] {
                for (int i = 0; i < each; ++i) {
                    const QString text = QStringLiteral("thread %1 message %2").arg(t).arg(i);
                    if (t == 0 || i % 2 == 0)
                        getLogObject()->log(text, QString(), i, QString(), t == 0 ? 3 : 1, t == 0);
                    else
                        errorLog(text, QStringLiteral("f.cpp"), i, QString(), 2);
                }
                --running;
            }));
            pool.back()->start();
        }
        while (running.load())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        for (auto &thread : pool)
            QVERIFY(thread->wait(10000));
        QCoreApplication::sendPostedEvents();
        CZOSLog *log = getLogObject();
        QVERIFY(log->messageCount() == threads * each && log->errors() == each);
        QCOMPARE(log->warnings(), (threads - 1) * each / 2);
        closeLog();

        const QRegularExpression entry(QStringLiteral("^[^\t]*\t(Warning > |Error   > )?thread (\\d) message (\\d+)\r$"));
        QVector<int> next(threads, 0);
        for (const QByteArray &line : readFile(path("zoactivity.log")).split('\n')) {
            const QRegularExpressionMatch m = entry.match(QString::fromLatin1(line));
            const int t = m.captured(2).toInt(), i = m.captured(3).toInt();
            QVERIFY2(!m.hasMatch() || i == next[t]++, line.constData());
            QVERIFY(!m.hasMatch() || m.captured(1) == (t == 0 ? "Error   > " : i % 2 ? "Warning > " : ""));
        }
        QCOMPARE(next, QVector<int>(threads, each));
    }

    void errorMessageShowsTextDetailAndGuards()
    {
        QMainWindow hidden; // not shown: still the parent of an error message
        QWidget other;
        other.show();
        CZOUtilityFns::setCursor(ECURSOR_WAIT);
        CZOUtilityFns::setCanClose(false); // a period already running must survive the box

        Seen seen;
        Answerer answerer({noting(&seen, [](QMessageBox *box) { box->button(QMessageBox::Ok)->click(); })});
        CZOSErrorHandler::errorMessage(nullptr, ES_OPEN_FAILED, QStringLiteral("/data/mouse 7/ClickInfo.txt"));

        QVERIFY(seen.shown && !seen.canClose);
        QCOMPARE(QStringList({seen.text, seen.title}) + seen.buttons,
                 QStringList({" Unable to open file. /data/mouse 7/ClickInfo.txt", CZOUtilityFns::getAppName(), "OK"}));
        QCOMPARE(seen.parent, &hidden);
        QCOMPARE(seen.cursor, Qt::ArrowCursor);
        // Afterwards: the busy cursor is back and only the outer period remains.
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        QVERIFY(!CZOUtilityFns::canClose());
        CZOUtilityFns::setCanClose(true);
        CZOUtilityFns::restoreCursor();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void boxThatMayNotRejectIgnoresEscapeAndClose()
    {
        QMainWindow hidden; // the box's own search wants a visible main window
        CZOSMessageBox box(QMessageBox::Question, QStringLiteral("t"), QStringLiteral("Keep going?"),
                           QMessageBox::Ok | QMessageBox::Cancel, nullptr, Qt::Dialog, false);
        QVERIFY(!box.mayReject());
        Seen seen;
        Answerer answerer({noting(&seen, [&seen](QMessageBox *b) {
            QTest::keyClick(b, Qt::Key_Escape);
            b->close();
            b->reject();
            QCoreApplication::processEvents();
            seen.stillOpenAfterEscape = b->isVisible();
            b->button(QMessageBox::Ok)->click();
        })});
        QCOMPARE(box.exec(), int(QMessageBox::Ok));
        QCOMPARE(seen.parent, nullptr);
        QVERIFY(seen.stillOpenAfterEscape && !seen.canClose);
    }

    void shortcuts_data()
    {
        QTest::addColumn<QString>("which"); QTest::addColumn<QString>("press"); QTest::addColumn<int>("result");
        QTest::addColumn<bool>("visibleParentOnly");

        QTest::newRow("error returns the code") << "error" << "Retry" << int(QMessageBox::Retry) << false;
        QTest::newRow("question returns the code") << "question" << "enter" << int(QMessageBox::Yes) << false;
        QTest::newRow("warning returns the code") << "warning" << "No" << int(QMessageBox::No) << false;
        QTest::newRow("information with texts returns the index") << "informationTexts" << "Later" << 1 << true;
        QTest::newRow("question with texts: escape button") << "questionTexts" << "escape" << 2 << true;
        QTest::newRow("warning with texts: default button") << "warningTexts" << "enter" << 0 << false;
        QTest::newRow("status question: Enter takes Yes") << "status" << "enter" << int(QMessageBox::Yes) << false;
        QTest::newRow("status question: Escape takes Cancel") << "status" << "escape" << int(QMessageBox::Cancel) << false;
    }

    void shortcuts()
    {
        QFETCH(QString, which); QFETCH(QString, press); QFETCH(int, result); QFETCH(bool, visibleParentOnly);

        QMainWindow hidden;
        const QString title = QStringLiteral("Shortcut"), text = QStringLiteral("Proceed?");
        const int yes = QMessageBox::Yes | QMessageBox::Default, no = QMessageBox::No | QMessageBox::Escape;
        const int abort = QMessageBox::Abort | QMessageBox::Escape;
        const QString a = QStringLiteral("Now"), b = QStringLiteral("Later"), c = QStringLiteral("Never");

        Seen seen;
        Answerer answerer({noting(&seen, [&seen, press](QMessageBox *box) {
            if (press == QLatin1String("enter"))
                QTest::keyClick(box, Qt::Key_Return);
            else if (press == QLatin1String("escape"))
                QTest::keyClick(box, Qt::Key_Escape);
            else // the box's buttons, in the order their texts were noted
                box->buttons().value(seen.buttons.indexOf(press))->click(); // null, and a crash, if missing
        })});
        const QHash<QString, std::function<int()>> show{
            {"error", [&] { return CZOSMessageBox::error(nullptr, title, text, QMessageBox::Retry, abort); }},
            {"question", [&] { return CZOSMessageBox::question(nullptr, title, text, yes, no); }},
            {"warning", [&] { return CZOSMessageBox::warning(nullptr, title, text, yes, no); }},
            {"informationTexts", [&] { return CZOSMessageBox::information(nullptr, title, text, a, b, c, 0, 2); }},
            {"questionTexts", [&] { return CZOSMessageBox::question(nullptr, title, text, a, b, c, 0, 2); }},
            {"warningTexts", [&] { return CZOSMessageBox::warning(nullptr, title, text, a, b, c, 0, 2); }},
            {"status", [] { return CZOSErrorHandler::question(nullptr, ES_DATASET_EXISTS, QString()); }},
        };
        QCOMPARE(show.value(which)(), result);
        QVERIFY(seen.shown && !seen.canClose);
        if (which == QLatin1String("status")) {
            QCOMPARE(seen.text, CZOSErrorHandler::statusText(ES_DATASET_EXISTS));
            QCOMPARE(seen.buttons.size(), 3);
        } else {
            QCOMPARE(seen.title, title);
        }
        QCOMPARE(seen.cursor, Qt::ArrowCursor);
        QCOMPARE(seen.parent, visibleParentOnly ? nullptr : static_cast<QWidget *>(&hidden));
        QVERIFY(!QGuiApplication::overrideCursor());
    }

private:
    QString path(const char *name) const { return m_dir->filePath(QLatin1String(name)); }
    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestCZOSLog)
#include "tst_czoslog.moc"
