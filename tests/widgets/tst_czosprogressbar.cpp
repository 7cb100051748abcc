#include "czosprogressbar.h"
#include "czosstatusprogressbar.h"

#include <QMainWindow>
#include <QStatusBar>
#include <QtTest>

class TestProgressBars : public QObject
{
    Q_OBJECT
private slots:
    void dialog()
    {
        QMainWindow hidden, shown;
        shown.show();
        for (bool canCancel : {true, false}) {
            CZOSProgressBar dialog(nullptr, "busy");
            QCOMPARE(dialog.parentWidget(), &shown); // the first visible main window
            dialog.setActivityText("x"), dialog.setProgress(3), dialog.initDialog();
            QCOMPARE(dialog.m_pActivityLabel->text() + QString::number(dialog.m_pProgBar->value()), QStringLiteral("0"));
            dialog.setCanCancel(canCancel);
            QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
            dialog.show();
            QCOMPARE(dialog.m_pCancelButton->isVisible(), canCancel);
            // Escape cancels when allowed and is swallowed otherwise; only Escape terminates.
            QTest::keyClick(&dialog, Qt::Key_Escape);
            QCOMPARE(terminated.count(), canCancel ? 1 : 0);
            QCOMPARE(dialog.isVisible(), !canCancel);
            dialog.show();
            QCOMPARE(dialog.close(), canCancel);
        }
    }

    void abortAndEnd()
    {
        CZOSStatusProgressBar bar;
        QSignalSpy clicked(&bar, &CZOSStatusProgressBar::cancelClicked);
        bar.show();
        QTest::mouseClick(bar.m_pCancel, Qt::LeftButton); // idle: the message only
        QCOMPARE(bar.progressMessage(), QStringLiteral("Aborting..."));
        QVERIFY(!bar.isAborted() && clicked.isEmpty() && !bar.abort());
        bar.startProgress(QStringLiteral("Acquiring"), 5);
        QCOMPARE(bar.totalSteps(), 5);
        QTest::mouseClick(bar.m_pCancel, Qt::LeftButton);
        QVERIFY(bar.isAborted() && clicked.size() == 1);
        bar.endProgress();
        QVERIFY(!bar.isAborted() && !bar.isVisible() && !bar.inProgress());

        bar.setCancelMessage(QStringLiteral("Stopping..."));
        bar.setProgress(QStringLiteral("Saving"), 1, 2); // a message starts a run
        QVERIFY(bar.isVisible() && bar.inProgress());
        bar.setCanBeAborted(false);
        QVERIFY(!bar.m_pCancel->isEnabled());
        QVERIFY(bar.abort() && bar.isAborted());
        QCOMPARE(bar.progressMessage(), QStringLiteral("Stopping..."));
        bar.endProgress(QStringLiteral("Done"));
        QVERIFY(!bar.inProgress() && !bar.isAborted());
        QCOMPARE(bar.progressMessage(), QStringLiteral("Done"));
        QCOMPARE(bar.progressStep(), -1);
        QTest::qWait(1000);
        QVERIFY(bar.isVisible()); // still shown with its last word
        QTRY_VERIFY_WITH_TIMEOUT(!bar.isVisible(), 5000);
    }

    void statusBarTakesTheMessages()
    {
        QMainWindow window;
        QStatusBar *statusBar = window.statusBar();
        window.show();
        auto *bar = new CZOSStatusProgressBar;
        statusBar->addPermanentWidget(bar);
        bar->setStatusBar(statusBar);
        bar->startProgress(QStringLiteral("Acquiring"), 5);
        QCOMPARE(statusBar->currentMessage(), QStringLiteral("Acquiring"));
        QVERIFY(!bar->m_pLblMsg->isVisible());
        QTest::mouseClick(bar->m_pCancel, Qt::LeftButton);
        QCOMPARE(statusBar->currentMessage(), QStringLiteral("Aborting..."));
        bar->hide();
        QCOMPARE(statusBar->currentMessage(), QString());
        bar->startProgress(QStringLiteral("Again"), 5); // shown again: no taller than the bar it sits in
        QCOMPARE(bar->maximumHeight(), statusBar->height());

        auto *other = new QStatusBar;
        bar->setStatusBar(other);
        delete other; // the widget forgets it
        QCOMPARE(bar->statusBar(), static_cast<QStatusBar *>(nullptr));
        bar->setProgress(QStringLiteral("Alone"), 1);
        QVERIFY(bar->m_pLblMsg->isVisible());
    }
};

QTEST_MAIN(TestProgressBars)
#include "tst_czosprogressbar.moc"
