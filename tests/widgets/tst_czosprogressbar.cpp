#include "czosprogressbar.h"
#include "czosstatusprogressbar.h"

#include <QMainWindow>
#include <QStatusBar>
#include <QtTest>

class TestProgressBars : public QObject
{
    Q_OBJECT
private slots:
    void dialogFormAndCancel();
    void dialogEscape_data();
    void dialogEscape();
    void clamps_data();
    void clamps();
    void abortButton_data();
    void abortButton();
    void delayedHideAndRestart();
    void statusBarTakesTheMessage();
};

void TestProgressBars::dialogFormAndCancel()
{
    QMainWindow hidden, shown;
    shown.show();
    CZOSProgressBar dialog(nullptr, "busy");
    QCOMPARE(dialog.parentWidget(), &shown); // the first visible main window
    QCOMPARE(dialog.size(), QSize(285, 108));
    QCOMPARE(dialog.windowModality(), Qt::ApplicationModal);
    dialog.initDialog();
    QCOMPARE(dialog.m_pActivityLabel->text(), QString());
    QCOMPARE(dialog.m_pProgBar->value(), 0);
    QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
    dialog.show();
    QTest::mouseClick(dialog.m_pCancelButton, Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(terminated.count(), 0); // only Escape terminates
}

void TestProgressBars::dialogEscape_data()
{
    QTest::addColumn<bool>("canCancel");
    QTest::newRow("cancel allowed") << true;
    QTest::newRow("cancel forbidden") << false;
}

void TestProgressBars::dialogEscape()
{
    QFETCH(bool, canCancel);
    CZOSProgressBar dialog;
    dialog.setCanCancel(canCancel);
    QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
    dialog.show();
    QCOMPARE(dialog.m_pCancelButton->isVisible(), canCancel);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(terminated.count(), canCancel ? 1 : 0);
    QCOMPARE(dialog.isVisible(), !canCancel);
    dialog.show();
    QCOMPARE(dialog.close(), canCancel);
}

void TestProgressBars::clamps_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("total"); // -1: setTotalSteps(70000), then setProgress(step)
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("maximum");
    QTest::newRow("step alone above 65530") << 70000 << -1 << 65530 << 65530;
    QTest::newRow("pair above both ceilings") << 70000 << 70000 << 65535 << 65537;
    QTest::newRow("pair just past the ceilings") << 65536 << 65538 << 65535 << 65537;
    QTest::newRow("pair in range") << 3 << 9 << 3 << 9;
}

void TestProgressBars::clamps()
{
    QFETCH(int, step);
    QFETCH(int, total);
    CZOSStatusProgressBar bar;
    if (total < 0) {
        bar.setTotalSteps(70000);
        bar.setProgress(step);
    } else {
        bar.setProgress(step, total);
    }
    QTEST(bar.progressStep(), "value");
    QTEST(bar.totalSteps(), "maximum");
}

void TestProgressBars::abortButton_data()
{
    QTest::addColumn<bool>("running");
    QTest::newRow("idle: message only") << false;
    QTest::newRow("running: flag and signal") << true;
}

void TestProgressBars::abortButton()
{
    QFETCH(bool, running);
    CZOSStatusProgressBar bar;
    QCOMPARE(bar.size(), QSize(253, 26));
    bar.show();
    if (running)
        bar.startProgress(QStringLiteral("Acquiring"), 5);
    QSignalSpy clicked(&bar, &CZOSStatusProgressBar::cancelClicked);
    QTest::mouseClick(bar.m_pCancel, Qt::LeftButton);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Aborting..."));
    QCOMPARE(bar.isAborted(), running);
    QCOMPARE(clicked.count(), running ? 1 : 0);

    bar.endProgress();
    QVERIFY(!bar.isAborted() && !bar.isVisible());
    bar.setCancelMessage(QStringLiteral("Stopping..."));
    QCOMPARE(bar.abort(), false);
    bar.setProgress(QStringLiteral("Saving"), 1, 2); // a message starts a run
    QCOMPARE(bar.abort(), true);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Stopping..."));
}

void TestProgressBars::delayedHideAndRestart()
{
    CZOSStatusProgressBar bar;
    bar.startProgress(QStringLiteral("Acquiring"), 5);
    bar.setCanBeAborted(false);
    QVERIFY(!bar.m_pCancel->isEnabled());
    QVERIFY(bar.abort());
    bar.endProgress(QStringLiteral("Done"));
    QVERIFY(!bar.inProgress() && !bar.isAborted());
    QCOMPARE(bar.progressMessage(), QStringLiteral("Done"));
    QCOMPARE(bar.progressStep(), -1);
    QTest::qWait(1000);
    QVERIFY(bar.isVisible()); // still shown with its last word
    QTRY_VERIFY_WITH_TIMEOUT(!bar.isVisible(), 5000);

    // A run started before a pending hide keeps the widget and its button.
    bar.startProgress(QStringLiteral("First"), 5);
    bar.endProgress(QStringLiteral("First done"), 50);
    bar.setCanBeAborted(true);
    bar.startProgress(QStringLiteral("Second"), 5);
    QTest::qWait(200);
    QVERIFY(bar.isVisible() && bar.m_pCancel->isEnabled());
}

void TestProgressBars::statusBarTakesTheMessage()
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
    bar->hide();
    QCOMPARE(statusBar->currentMessage(), QString());

    auto *other = new QStatusBar;
    bar->setStatusBar(other);
    delete other; // the widget forgets it
    QCOMPARE(bar->statusBar(), static_cast<QStatusBar *>(nullptr));
    bar->setProgress(QStringLiteral("Alone"), 1);
    QVERIFY(bar->m_pLblMsg->isVisible());
}

QTEST_MAIN(TestProgressBars)
#include "tst_czosprogressbar.moc"
