#include "czosprogressbar.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMainWindow>

static QWidget *firstVisibleMainWindow()
{
    const QWidgetList tops = QApplication::topLevelWidgets();
    for (QWidget *w : tops) {
        if (qobject_cast<QMainWindow *>(w) && w->isVisible())
            return w;
    }
    return nullptr;
}

static QWidget *parentOrMainWindow(QWidget *parent, Qt::WindowFlags &flags)
{
    if (parent)
        return parent;
    QWidget *main = firstVisibleMainWindow();
    if (main)
        flags |= Qt::Dialog;
    return main;
}

CZOSProgressBar::CZOSProgressBar(QWidget *parent, const char *name, bool modal, Qt::WindowFlags flags)
    : QDialog(parentOrMainWindow(parent, flags), flags)
{
    setModal(modal);
    setupUi(this);
    if (name)
        setObjectName(QString::fromLatin1(name));
    setCanCancel(true);
    setWindowModality(Qt::ApplicationModal);
}

CZOSProgressBar::~CZOSProgressBar() = default;

void CZOSProgressBar::initDialog()
{
    m_pActivityLabel->setText(QString());
    m_pProgBar->setValue(0);
}

void CZOSProgressBar::setProgress(int value)
{
    m_pProgBar->setValue(value);
}

void CZOSProgressBar::setActivityText(QString text)
{
    m_pActivityLabel->setText(text);
}

void CZOSProgressBar::setCanCancel(bool canCancel)
{
    m_bCanCancel = canCancel;
    m_pCancelButton->setVisible(canCancel);
}

bool CZOSProgressBar::event(QEvent *e)
{
    if (e->type() == QEvent::Close && !m_bCanCancel) {
        e->ignore();
        return true;
    }
    if (e->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(e)->key() == Qt::Key_Escape) {
        // Escape is a cancel: without permission to cancel it is swallowed
        // too, or the base class would reject a dialog that may not be closed.
        if (m_bCanCancel) {
            emit terminate();
            reject();
        }
        e->accept();
        return true;
    }
    return QDialog::event(e);
}

void CZOSProgressBar::languageChange()
{
    retranslateUi(this);
}
