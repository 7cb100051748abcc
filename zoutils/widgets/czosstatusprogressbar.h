#pragma once
// A slim progress widget for a main window's status bar: a message, a
// progress bar without text and an abort button. A worker running on the GUI
// thread polls isAborted() and must let events run for the button to be seen.
// GUI thread only.

#include "ui_czosstatusprogressbar.h"
#include "zoutils_export.h"

#include <QPointer>
#include <QWidget>

class QStatusBar;
class QTimer;

class ZOUTILS_EXPORT CZOSStatusProgressBar : public QWidget, public Ui::CZOSStatusProgressBar
{
    Q_OBJECT
public:
    // Starts idle, with a busy indicator and "Aborting..." as the cancel message.
    explicit CZOSStatusProgressBar(QWidget *parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~CZOSStatusProgressBar() override;

    // Progress messages go to this status bar (not owned; forgotten when it
    // is destroyed) and the widget's own label is hidden. Null: the label shows them.
    void setStatusBar(QStatusBar *statusBar);
    QStatusBar *statusBar() const;

public slots:
    // Enables the button per can-be-aborted and shows; beside a status bar
    // the widget is no taller than the bar.
    virtual void show();
    // Clears the status bar's message and hides.
    virtual void hide();
    virtual void setCancelCaption(const QString &caption);
    virtual void setProgressMessage(const QString &message);
    // The ceilings of the value and maximum differ between the overloads on
    // purpose: 65530 here and in setProgress(int), 65535/65537 in setProgress(int, int).
    virtual void setTotalSteps(int totalSteps);
    virtual void setProgress(const QString &message, int step, int totalSteps);
    virtual void setProgress(const QString &message, int step);
    virtual void setProgress(int step, int totalSteps);
    virtual void setProgress(int step);
    virtual void startProgress(const QString &message, int totalSteps);
    // Idle at once: hidden, can be aborted again.
    virtual void endProgress();
    // Idle; when visible, shows `message`, resets the bar, disables the button
    // and hides after `milliseconds`. A new start before then keeps it shown.
    virtual void endProgress(const QString &message, int milliseconds);
    virtual void endProgress(const QString &message); // hides after 2000 ms
    virtual void setCancelMessage(const QString &message);
    virtual void init();
    virtual bool inProgress();
    virtual int progressStep();
    virtual int totalSteps();
    virtual QString progressMessage();
    virtual QString cancelCaption();
    virtual void setCanBeAborted(bool canBeAborted);
    virtual bool isAborted();
    // While running: shows the cancel message, sets the aborted flag and
    // returns true. Idle: false and nothing changes.
    virtual bool abort();
    // The button: shows the cancel message; while running also sets the
    // aborted flag and emits cancelClicked().
    virtual void onClickCancel();

signals:
    void cancelClicked();

protected:
    virtual void languageChange();

private:
    void startRunning();
    void showCancelMessage();

    bool m_bInProgress = false;
    bool m_bCanBeAborted = true;
    bool m_bAborted = false;
    QString m_strCancelMessage;
    QPointer<QStatusBar> m_pStatusBar;
    QTimer *m_pHideTimer = nullptr; // the delayed hide of endProgress(message, ms)
};
