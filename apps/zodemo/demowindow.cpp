#include "demowindow.h"

#include "czosglxyplot.h"
#include "czosstatusprogressbar.h"
#include "czosxyplot.h"
#include "czotreemenucombobox.h"
#include "czoutilityfns.h"
#include "demoacquisition.h"

#include <QAction>
#include <QCloseEvent>
#include <QMenu>
#include <QHBoxLayout>
#include <QLabel>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

DemoWindow::DemoWindow(QWidget *parent)
    : QMainWindow(parent)
{
    setWindowTitle(CZOUtilityFns::getAppName());
    setWindowIcon(CZOUtilityFns::appIcon());

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *top = new QHBoxLayout;
    top->addWidget(new QLabel(tr("Probe:"), central));
    m_pProbes = new CZOTreeMenuComboBox(PROBETREE_PROBES, central);
    m_pProbes->setMinimumWidth(220);
    top->addWidget(m_pProbes);
    top->addStretch();
    layout->addLayout(top);

    auto *splitter = new QSplitter(Qt::Horizontal, central);
    m_pProfile = new CZOSXYPlot(splitter, "profile");
    m_pProfile->setTitle(tr("Line profile, row 230"));
    m_pProfile->setXAxisLabel(tr("Pixel"));
    m_pProfile->setYAxisLabel(tr("Counts"));
    m_pHistogram = new CZOSGLXYPlot(splitter, "histogram");
    m_pHistogram->setTitle(tr("Histogram"));
    m_pHistogram->setXAxisLabel(tr("Grey level"));
    m_pHistogram->setYAxisLabel(tr("Pixels"));
    splitter->addWidget(m_pProfile);
    splitter->addWidget(m_pHistogram);
    splitter->setSizes({600, 600});
    layout->addWidget(splitter, 1);
    setCentralWidget(central);

    m_pProgress = new CZOSStatusProgressBar(statusBar());
    statusBar()->addPermanentWidget(m_pProgress);
    m_pProgress->setStatusBar(statusBar());
    m_pProgress->hide();
    resize(1200, 640);
}

void DemoWindow::showResult(const DemoResult &result)
{
    m_pProfile->addDataLine(tr("row 230"), result.profileX, result.profileY, QVector<double>(), result.profileErr);
    m_pProfile->addMarkerX(tr("centre"), 260.0, Qt::darkGreen);
    m_pHistogram->addDataLine(tr("corrected image"), result.histogramX, result.histogramY);
    // The acquisition used EGFP: pick it in the probe menu, as a person would,
    // and report it as recently used.
    QList<QAction *> actions;
    m_pProbes->obtainChilrentActionsOfRootMenu(&actions, m_pProbes->menu());
    for (QAction *action : qAsConst(actions)) {
        if (action->text() == QLatin1String("EGFP")) {
            action->trigger();
            break;
        }
    }
    m_pProbes->saveRecentUsedProbes(QStringList{QStringLiteral("EGFP")});
}

void DemoWindow::closeEvent(QCloseEvent *event)
{
    // A message box that is still open keeps the application from closing.
    if (!CZOUtilityFns::canClose()) {
        event->ignore();
        return;
    }
    QMainWindow::closeEvent(event);
}
