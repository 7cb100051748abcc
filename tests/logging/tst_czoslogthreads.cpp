#include "czoslog.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <vector>

class TestCZOSLogThreads : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

private slots:
    // Three threads post (every other message through errorLog, as warnings)
    // while one writes straight away, racing the GUI thread for the file:
    // every message lands once, in the order its thread sent it.
    void everyThreadsMessagesArriveOnceAndInOrder()
    {
        QStandardPaths::setTestModeEnabled(true);
        qputenv("ZO_DATA_ROOT", m_dir.path().toLocal8Bit() + '/');
        QVERIFY(CZOSLogEventHandler::install());
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

        QFile file(m_dir.filePath(QStringLiteral("zoactivity.log")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QRegularExpression entry(QStringLiteral("^[^\t]*\t(Warning > |Error   > )?thread (\\d) message (\\d+)\r$"));
        QVector<int> next(threads, 0);
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QRegularExpressionMatch m = entry.match(QString::fromLatin1(line));
            const int t = m.captured(2).toInt(), i = m.captured(3).toInt();
            QVERIFY2(!m.hasMatch() || i == next[t]++, line.constData());
            QVERIFY(!m.hasMatch() || m.captured(1) == (t == 0 ? "Error   > " : i % 2 ? "Warning > " : ""));
        }
        QCOMPARE(next, QVector<int>(threads, each));
    }
};

QTEST_GUILESS_MAIN(TestCZOSLogThreads)
#include "tst_czoslogthreads.moc"
