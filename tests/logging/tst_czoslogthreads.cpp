#include "czoslog.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <vector>

namespace {
const int kPostingThreads = 4;
const int kMessagesPerThread = 5000;
const int kImmediateMessages = 2000;
} // namespace

class TestCZOSLogThreads : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyThreadsMessagesArriveOnceAndInOrder();

private:
    QTemporaryDir m_dir;
};

void TestCZOSLogThreads::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    qputenv("ZO_DATA_ROOT", m_dir.path().toLocal8Bit() + '/');
    QVERIFY(CZOSLogEventHandler::install());
}

void TestCZOSLogThreads::everyThreadsMessagesArriveOnceAndInOrder()
{
    QCOMPARE(beginLog(QStringLiteral("Threads")), 1);
    CZOSLog *log = getLogObject();

    std::atomic<int> running{kPostingThreads + 1};
    std::vector<std::unique_ptr<QThread>> threads;
    for (int t = 0; t < kPostingThreads; ++t) {
        threads.emplace_back(QThread::create([t, &running] {
            for (int i = 0; i < kMessagesPerThread; ++i) {
                const QString text = QStringLiteral("poster %1 message %2").arg(t).arg(i);
                // Every other message takes the free function; odd ones are warnings.
                if (i % 2)
                    errorLog(text, QStringLiteral("f.cpp"), i, QString(), 2);
                else
                    getLogObject()->log(text, QStringLiteral("f.cpp"), i, QString(), 1);
            }
            --running;
        }));
    }
    // One thread writes immediately, racing the GUI thread for the file.
    threads.emplace_back(QThread::create([&running] {
        for (int i = 0; i < kImmediateMessages; ++i)
            getLogObject()->log(QStringLiteral("direct %1").arg(i), QString(), i, QString(), 3, true);
        --running;
    }));
    for (auto &thread : threads)
        thread->start();

    QEventLoop loop;
    QTimer poll;
    connect(&poll, &QTimer::timeout, &loop, [&] {
        if (running.load() == 0)
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    for (auto &thread : threads)
        QVERIFY(thread->wait(10000));
    QCoreApplication::sendPostedEvents();

    const int total = kPostingThreads * kMessagesPerThread + kImmediateMessages;
    QCOMPARE(log->messageCount(), total);
    QCOMPARE(log->warnings(), kPostingThreads * kMessagesPerThread / 2);
    QCOMPARE(log->errors(), kImmediateMessages);
    closeLog();

    QFile file(m_dir.filePath(QStringLiteral("zoactivity.log")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    // Header (3 lines), entries, blank, summary, rule, and the empty rest after the last line end.
    QCOMPARE(lines.size(), 3 + total + 3 + 1);
    QVERIFY(lines.at(2).startsWith("OpenGL Vendor: , Driver: , Version: \r")); // no GUI here
    QCOMPARE(lines.at(3 + total + 1), QByteArray("Found 2000 errors, 10000  warnings\r"));

    // Each thread's messages appear once each, in the order it sent them; odd posted ones are warnings.
    const QRegularExpression entry(
        QStringLiteral("^[^\t]*\t(?:(Warning > )?poster (\\d) message (\\d+)|Error   > direct (\\d+))\r$"));
    QVector<int> next(kPostingThreads + 1, 0);
    for (int n = 3; n < 3 + total; ++n) {
        const QRegularExpressionMatch m = entry.match(QString::fromLatin1(lines.at(n)));
        QVERIFY2(m.hasMatch(), lines.at(n).constData());
        const bool direct = !m.captured(4).isEmpty();
        const int thread = direct ? kPostingThreads : m.captured(2).toInt();
        const int index = (direct ? m.captured(4) : m.captured(3)).toInt();
        if (!direct)
            QCOMPARE(!m.captured(1).isEmpty(), index % 2 == 1);
        QVERIFY2(index == next[thread]++, lines.at(n).constData());
    }
    for (int t = 0; t < kPostingThreads; ++t)
        QCOMPARE(next[t], kMessagesPerThread);
    QCOMPARE(next[kPostingThreads], kImmediateMessages);
}

// Before any application object exists: deferred entries go nowhere, the
// event handler cannot be installed, and the immediate path still writes
// (with empty driver strings, since there is no GUI).
static bool withoutAnApplicationObject()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("solo.log"));
    CZOSLog log(QStringLiteral("Solo"));
    log.beginLog(path, LOG_TO_FILE);
    log.log(QStringLiteral("posted to nobody"), QString(), 1, QString(), 1);
    ZOSMessageHandler(QtWarningMsg, "no log object either");
    bool ok = log.messageCount() == 0 && !CZOSLogEventHandler::install();
    log.log(QStringLiteral("written directly"), QString(), 1, QString(), 1, true);
    log.endLog();
    QFile f(path);
    ok = ok && f.open(QIODevice::ReadOnly);
    const QByteArray bytes = f.readAll();
    ok = ok && bytes.contains("\r\nOpenGL Vendor: , Driver: , Version: \r\n") && bytes.contains("\twritten directly\r\n")
         && !bytes.contains("posted to nobody");
    if (!ok)
        fprintf(stderr, "FAIL: logging without an application object\n%s\n", bytes.constData());
    return ok;
}

int main(int argc, char *argv[])
{
    const bool solo = withoutAnApplicationObject();
    QCoreApplication app(argc, argv);
    TestCZOSLogThreads test;
    const int failures = QTest::qExec(&test, argc, argv);
    return solo ? failures : failures + 1;
}

#include "tst_czoslogthreads.moc"
