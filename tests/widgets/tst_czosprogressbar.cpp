#include "czosprogressbar.h"
#include "czosstatusprogressbar.h"

#include <QMainWindow>
#include <QStatusBar>
#include <QtTest>

class TestProgressBars : public QObject
{
    Q_OBJECT
private slots:
    void dialogForm();
    void dialogFindsTheVisibleMainWindow();
    void dialogEscapeAndClose_data();
    void dialogEscapeAndClose();
    void dialogCancelButtonRejects();

    void statusForm();
    void clamps_data();
    void clamps();
    void runAbortAndIdle();
    void abortButtonIdleSetsNoFlag();
    void abortButtonWhileRunning();
    void delayedHide();
    void newRunKeepsWidgetShown();
    void statusBarTakesTheMessage();
};

void TestProgressBars::dialogForm()
{
    CZOSProgressBar dialog(nullptr, "busy", false);
    QCOMPARE(dialog.objectName(), QStringLiteral("busy"));
    QCOMPARE(dialog.size(), QSize(285, 108));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("CZOSProgressBar"));
    QCOMPARE(dialog.windowModality(), Qt::ApplicationModal);
    QCOMPARE(dialog.m_pActivityLabel->text(), QStringLiteral("Activity Info"));
    QCOMPARE(dialog.m_pProgBar->value(), 50);
    QCOMPARE(dialog.m_pCancelButton->text(), QStringLiteral("&Cancel"));
    QCOMPARE(dialog.gridLayout->spacing(), 6);
    QVERIFY(dialog.canCancel());

    dialog.initDialog();
    QCOMPARE(dialog.m_pActivityLabel->text(), QString());
    QCOMPARE(dialog.m_pProgBar->value(), 0);
    dialog.setProgress(42);
    dialog.setActivityText(QStringLiteral("Reading frames"));
    QCOMPARE(dialog.m_pProgBar->value(), 42);
    QCOMPARE(dialog.m_pActivityLabel->text(), QStringLiteral("Reading frames"));

    dialog.show();
    QVERIFY(dialog.m_pCancelButton->isVisible());
    dialog.setCanCancel(false);
    QVERIFY(!dialog.m_pCancelButton->isVisible());
}

void TestProgressBars::dialogFindsTheVisibleMainWindow()
{
    QMainWindow hidden;
    QMainWindow shown;
    shown.show();
    CZOSProgressBar dialog;
    QCOMPARE(dialog.parentWidget(), &shown);
    QVERIFY(dialog.windowFlags() & Qt::Dialog);

    QWidget explicitParent;
    CZOSProgressBar child(&explicitParent);
    QCOMPARE(child.parentWidget(), &explicitParent);
}

void TestProgressBars::dialogEscapeAndClose_data()
{
    QTest::addColumn<bool>("canCancel");
    QTest::newRow("cancel allowed: escape terminates and closes") << true;
    QTest::newRow("cancel forbidden: the dialog stays") << false;
}

void TestProgressBars::dialogEscapeAndClose()
{
    QFETCH(bool, canCancel);
    CZOSProgressBar dialog;
    dialog.setCanCancel(canCancel);
    QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(terminated.count(), canCancel ? 1 : 0);
    QCOMPARE(rejected.count(), canCancel ? 1 : 0);
    QCOMPARE(dialog.isVisible(), !canCancel);

    dialog.show();
    QCOMPARE(dialog.close(), canCancel);
    QCOMPARE(dialog.isVisible(), !canCancel);
    QCOMPARE(terminated.count(), canCancel ? 1 : 0); // closing is not a terminate
}

void TestProgressBars::dialogCancelButtonRejects()
{
    CZOSProgressBar dialog;
    QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
    dialog.show();
    QTest::mouseClick(dialog.m_pCancelButton, Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(terminated.count(), 0);
}

void TestProgressBars::statusForm()
{
    CZOSStatusProgressBar bar;
    QCOMPARE(bar.size(), QSize(253, 26));
    QCOMPARE(bar.windowTitle(), QStringLiteral("Form1"));
    QCOMPARE(bar.hboxLayout->spacing(), 2);
    QCOMPARE(bar.hboxLayout1->spacing(), 2);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Message string"));
    QCOMPARE(bar.cancelCaption(), QStringLiteral("Abort"));
    QCOMPARE(bar.m_pProgress->format(), QStringLiteral("%p%"));
    QVERIFY(!bar.m_pProgress->isTextVisible());
    QCOMPARE(bar.totalSteps(), 0); // busy until given a total
    QVERIFY(!bar.inProgress());
    QVERIFY(!bar.isAborted());
    QCOMPARE(bar.m_pCancel->cursor().shape(), Qt::ArrowCursor);
    bar.setCancelCaption(QStringLiteral("Stop"));
    QCOMPARE(bar.cancelCaption(), QStringLiteral("Stop"));
}

void TestProgressBars::clamps_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("maximum");
    // total < 0: setProgress(step) after setTotalSteps(70000)
    QTest::newRow("single step above 65530") << 70000 << -1 << 65530 << 65530;
    QTest::newRow("single step at 65530") << 65530 << -1 << 65530 << 65530;
    QTest::newRow("single step below") << 12 << -1 << 12 << 65530;
    QTest::newRow("pair above both ceilings") << 70000 << 70000 << 65535 << 65537;
    QTest::newRow("pair at the ceilings") << 65535 << 65537 << 65535 << 65537;
    QTest::newRow("pair just past the ceilings") << 65536 << 65538 << 65535 << 65537;
    QTest::newRow("pair in range") << 3 << 9 << 3 << 9;
}

void TestProgressBars::clamps()
{
    QFETCH(int, step);
    QFETCH(int, total);
    QFETCH(int, value);
    QFETCH(int, maximum);
    CZOSStatusProgressBar bar;
    if (total < 0) {
        bar.setTotalSteps(70000);
        bar.setProgress(step);
    } else {
        bar.setProgress(step, total);
    }
    QCOMPARE(bar.progressStep(), value);
    QCOMPARE(bar.totalSteps(), maximum);
}

void TestProgressBars::runAbortAndIdle()
{
    CZOSStatusProgressBar bar;
    QVERIFY(!bar.abort()); // idle: nothing to abort
    QVERIFY(!bar.isAborted());

    bar.startProgress(QStringLiteral("Acquiring"), 10);
    QVERIFY(bar.isVisible());
    QVERIFY(bar.inProgress());
    QCOMPARE(bar.progressMessage(), QStringLiteral("Acquiring"));
    QCOMPARE(bar.totalSteps(), 10);
    QVERIFY(bar.m_pCancel->isEnabled());

    bar.setCancelMessage(QStringLiteral("Stopping..."));
    QVERIFY(bar.abort());
    QVERIFY(bar.isAborted());
    QCOMPARE(bar.progressMessage(), QStringLiteral("Stopping..."));

    bar.setCanBeAborted(false);
    QVERIFY(!bar.m_pCancel->isEnabled());
    bar.endProgress();
    QVERIFY(!bar.isVisible());
    QVERIFY(!bar.inProgress());
    QVERIFY(!bar.isAborted());

    // A message with a step starts a run of its own.
    bar.setProgress(QStringLiteral("Saving"), 4, 8);
    QVERIFY(bar.inProgress());
    QVERIFY(bar.isVisible());
    QVERIFY(bar.m_pCancel->isEnabled()); // endProgress() made it abortable again
    QCOMPARE(bar.progressStep(), 4);
    QCOMPARE(bar.totalSteps(), 8);
}

void TestProgressBars::abortButtonIdleSetsNoFlag()
{
    CZOSStatusProgressBar bar;
    bar.show();
    QSignalSpy clicked(&bar, &CZOSStatusProgressBar::cancelClicked);
    QTest::mouseClick(bar.m_pCancel, Qt::LeftButton);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Aborting..."));
    QVERIFY(!bar.isAborted());
    QCOMPARE(clicked.count(), 0);
}

void TestProgressBars::abortButtonWhileRunning()
{
    CZOSStatusProgressBar bar;
    bar.startProgress(QStringLiteral("Acquiring"), 5);
    QSignalSpy clicked(&bar, &CZOSStatusProgressBar::cancelClicked);
    QTest::mouseClick(bar.m_pCancel, Qt::LeftButton);
    QVERIFY(bar.isAborted());
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Aborting..."));
}

void TestProgressBars::delayedHide()
{
    CZOSStatusProgressBar bar;
    bar.startProgress(QStringLiteral("Acquiring"), 5);
    bar.setProgress(3);
    QVERIFY(bar.abort());
    bar.endProgress(QStringLiteral("Done"));
    QVERIFY(!bar.inProgress());
    QVERIFY(!bar.isAborted());
    QVERIFY(bar.isVisible()); // still shown with its last word
    QCOMPARE(bar.progressMessage(), QStringLiteral("Done"));
    QCOMPARE(bar.progressStep(), -1);
    QVERIFY(!bar.m_pCancel->isEnabled());
    QTest::qWait(1000);
    QVERIFY(bar.isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!bar.isVisible(), 5000);

    // Idle and hidden: only the flags change.
    bar.endProgress(QStringLiteral("Again"), 0);
    QCOMPARE(bar.progressMessage(), QStringLiteral("Done"));
}

void TestProgressBars::newRunKeepsWidgetShown()
{
    CZOSStatusProgressBar bar;
    bar.startProgress(QStringLiteral("First"), 5);
    bar.endProgress(QStringLiteral("First done"), 50);
    bar.startProgress(QStringLiteral("Second"), 5);
    QVERIFY(bar.m_pCancel->isEnabled());
    QTest::qWait(200);
    QVERIFY(bar.isVisible());
    QVERIFY(bar.inProgress());
}

void TestProgressBars::statusBarTakesTheMessage()
{
    QMainWindow window;
    QStatusBar *statusBar = window.statusBar();
    window.resize(400, 300);
    window.show();
    auto *bar = new CZOSStatusProgressBar;
    statusBar->addPermanentWidget(bar);
    bar->setStatusBar(statusBar);
    bar->startProgress(QStringLiteral("Acquiring"), 5);
    QCOMPARE(statusBar->currentMessage(), QStringLiteral("Acquiring"));
    QVERIFY(!bar->m_pLblMsg->isVisible());
    QCOMPARE(bar->progressMessage(), QStringLiteral("Acquiring"));
    QVERIFY(bar->height() <= statusBar->height());

    QTest::mouseClick(bar->m_pCancel, Qt::LeftButton);
    QVERIFY(bar->isAborted());
    bar->hide();
    QCOMPARE(statusBar->currentMessage(), QString());

    // The guarded pointer forgets a destroyed status bar.
    auto *other = new QStatusBar;
    bar->setStatusBar(other);
    delete other;
    QCOMPARE(bar->statusBar(), static_cast<QStatusBar *>(nullptr));
    bar->setProgress(QStringLiteral("Alone"), 1);
    QVERIFY(bar->m_pLblMsg->isVisible());
}

QTEST_MAIN(TestProgressBars)
#include "tst_czosprogressbar.moc"
