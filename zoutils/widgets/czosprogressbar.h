#pragma once
// A small progress dialog: an activity text, a progress bar and a cancel
// button. GUI thread only.

#include "ui_czosprogressbar.h"
#include "zoutils_export.h"

#include <QDialog>

class ZOUTILS_EXPORT CZOSProgressBar : public QDialog, public Ui::CZOSProgressBar
{
    Q_OBJECT
public:
    // Without a parent, the first visible top-level main window becomes the
    // parent and the dialog keeps the dialog window flag. The dialog is always
    // application-modal once shown; `modal` only sets the initial flag. Can
    // cancel is true.
    explicit CZOSProgressBar(QWidget *parent = nullptr, const char *name = nullptr, bool modal = false,
                             Qt::WindowFlags flags = Qt::WindowFlags());
    ~CZOSProgressBar() override;

    bool canCancel() const { return m_bCanCancel; }

public slots:
    virtual void initDialog(); // empty activity text, value 0
    virtual void setProgress(int value);
    virtual void setActivityText(QString text);
    // Shows or hides the cancel button; without it, closing and Escape do nothing.
    virtual void setCanCancel(bool canCancel);

signals:
    // Escape pressed while cancelling is allowed; the dialog is then rejected.
    void terminate();

protected:
    bool event(QEvent *event) override;
    virtual void languageChange();

private:
    bool m_bCanCancel = true;
};
