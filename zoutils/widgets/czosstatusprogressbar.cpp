#include "czosstatusprogressbar.h"

#include <QStatusBar>
#include <QTimer>

#include <algorithm>

CZOSStatusProgressBar::CZOSStatusProgressBar(QWidget *parent, Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setupUi(this);
    m_pHideTimer = new QTimer(this);
    m_pHideTimer->setSingleShot(true);
    connect(m_pHideTimer, &QTimer::timeout, this, [this] { hide(); });
    CZOSStatusProgressBar::init();
}

CZOSStatusProgressBar::~CZOSStatusProgressBar() = default;

void CZOSStatusProgressBar::init()
{
    m_pStatusBar = nullptr;
    m_bInProgress = false;
    m_bAborted = false;
    m_strCancelMessage = tr("Aborting...");
    m_pProgress->setMaximum(0);
    m_pCancel->setCursor(Qt::ArrowCursor);
}

void CZOSStatusProgressBar::setStatusBar(QStatusBar *statusBar)
{
    m_pStatusBar = statusBar;
}

QStatusBar *CZOSStatusProgressBar::statusBar() const
{
    return m_pStatusBar;
}

void CZOSStatusProgressBar::show()
{
    m_pHideTimer->stop();
    if (m_pStatusBar) {
        adjustSize();
        setMaximumHeight(m_pStatusBar->height());
        adjustSize();
    }
    m_pCancel->setEnabled(m_bCanBeAborted);
    QWidget::show();
}

void CZOSStatusProgressBar::hide()
{
    m_pHideTimer->stop();
    if (m_pStatusBar)
        m_pStatusBar->clearMessage();
    QWidget::hide();
}

void CZOSStatusProgressBar::setCancelCaption(const QString &caption)
{
    m_pCancel->setText(caption);
}

void CZOSStatusProgressBar::setProgressMessage(const QString &message)
{
    // The label keeps the text either way so progressMessage() can read it back.
    m_pLblMsg->setText(message);
    if (m_pStatusBar) {
        m_pLblMsg->hide();
        m_pStatusBar->showMessage(message);
    } else {
        m_pLblMsg->show();
    }
}

void CZOSStatusProgressBar::setTotalSteps(int totalSteps)
{
    m_pProgress->setMaximum(std::min(totalSteps, 65530));
}

void CZOSStatusProgressBar::setProgress(const QString &message, int step, int totalSteps)
{
    startRunning();
    setProgressMessage(message);
    setProgress(step, totalSteps);
    if (isHidden() || m_pHideTimer->isActive())
        show();
}

void CZOSStatusProgressBar::setProgress(const QString &message, int step)
{
    startRunning();
    setProgressMessage(message);
    setProgress(step);
    if (isHidden() || m_pHideTimer->isActive())
        show();
}

void CZOSStatusProgressBar::setProgress(int step, int totalSteps)
{
    // The maximum first: a value above the old maximum would be ignored.
    m_pProgress->setMaximum(std::min(totalSteps, 65537));
    m_pProgress->setValue(std::min(step, 65535));
}

void CZOSStatusProgressBar::setProgress(int step)
{
    m_pProgress->setValue(std::min(step, 65530));
}

void CZOSStatusProgressBar::startProgress(const QString &message, int totalSteps)
{
    m_bInProgress = true;
    m_bAborted = false;
    setProgressMessage(message);
    setTotalSteps(totalSteps);
    // A pending delayed hide of the last run must not hide this one.
    if (isHidden() || m_pHideTimer->isActive())
        show();
}

void CZOSStatusProgressBar::endProgress()
{
    m_bInProgress = false;
    m_bCanBeAborted = true;
    m_bAborted = false;
    hide();
}

void CZOSStatusProgressBar::endProgress(const QString &message, int milliseconds)
{
    if (isVisible()) {
        setProgressMessage(message);
        m_pProgress->reset();
        m_pCancel->setEnabled(false);
        m_pHideTimer->start(std::max(milliseconds, 0));
    }
    m_bInProgress = false;
    m_bAborted = false;
}

void CZOSStatusProgressBar::endProgress(const QString &message)
{
    endProgress(message, 2000);
}

void CZOSStatusProgressBar::setCancelMessage(const QString &message)
{
    m_strCancelMessage = message;
}

bool CZOSStatusProgressBar::inProgress()
{
    return m_bInProgress;
}

int CZOSStatusProgressBar::progressStep()
{
    return m_pProgress->value();
}

int CZOSStatusProgressBar::totalSteps()
{
    return m_pProgress->maximum();
}

QString CZOSStatusProgressBar::progressMessage()
{
    return m_pLblMsg->text();
}

QString CZOSStatusProgressBar::cancelCaption()
{
    return m_pCancel->text();
}

void CZOSStatusProgressBar::setCanBeAborted(bool canBeAborted)
{
    m_bCanBeAborted = canBeAborted;
    if (isVisible())
        m_pCancel->setEnabled(canBeAborted);
}

bool CZOSStatusProgressBar::isAborted()
{
    return m_bAborted;
}

bool CZOSStatusProgressBar::abort()
{
    if (!m_bInProgress)
        return false;
    showCancelMessage();
    m_bAborted = true;
    return true;
}

void CZOSStatusProgressBar::onClickCancel()
{
    showCancelMessage();
    if (m_bInProgress) {
        m_bAborted = true;
        emit cancelClicked();
    }
}

void CZOSStatusProgressBar::languageChange()
{
    retranslateUi(this);
}

void CZOSStatusProgressBar::startRunning()
{
    if (!m_bInProgress) {
        m_bInProgress = true;
        m_bAborted = false;
    }
}

void CZOSStatusProgressBar::showCancelMessage()
{
    // Repainted at once: the worker may not return to the event loop soon.
    m_pLblMsg->setText(m_strCancelMessage);
    m_pLblMsg->repaint();
    if (m_pStatusBar) {
        m_pStatusBar->showMessage(m_strCancelMessage);
        m_pStatusBar->repaint();
    }
}
