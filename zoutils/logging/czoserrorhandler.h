#pragma once
// The user-facing side of error reporting: the message text of every
// tag_estatus, and the application's message box. GUI thread only.
//
// Every box shown here finds its own parent (the first main window when none
// is given), shows the arrow cursor while it is open and keeps the
// application from closing (CZOUtilityFns::canClose() is false) until it is
// answered.

#include "zoenums.h"
#include "zoutils_export.h"

#include <QMessageBox>
#include <QString>

class ZOUTILS_EXPORT CZOSErrorHandler
{
public:
    // The fixed text of a status, blanks and spelling as users have always
    // seen them. Only values 0 to 88 have texts; others give an empty text.
    static QString statusText(tag_estatus status);

    // The status text directly followed by `detail` (add no separator: the
    // texts carry their own blanks) in an information box titled with the
    // application's name, with one OK button.
    static void errorMessage(QWidget *parent, tag_estatus status, QString detail);
    // The same text in a warning box with Yes (default), No and Cancel (taken
    // by Escape); returns QMessageBox::Yes, No or Cancel.
    static int question(QWidget *parent, tag_estatus status, QString detail);
};

class ZOUTILS_EXPORT CZOSMessageBox : public QMessageBox
{
    Q_OBJECT
public:
    // Without a parent, the first visible main window becomes the parent.
    // With `mayReject` false, Escape and the window's close button do nothing:
    // the box closes only through one of its buttons.
    CZOSMessageBox(QWidget *parent, bool mayReject);
    CZOSMessageBox(QMessageBox::Icon icon, const QString &title, const QString &text,
                   QMessageBox::StandardButtons buttons, QWidget *parent, Qt::WindowFlags flags, bool mayReject);

    bool mayReject() const { return m_bMayReject; }

    // Shows the box modally with the arrow cursor and the close guard.
    int exec() override;
    void reject() override;

    // Shortcuts; they return what the QMessageBox functions of the same name
    // return: the code of the button pressed (int buttons, with the
    // QMessageBox::Default and Escape flags) or its index (button texts).
    // error() and the int forms take the first main window, visible or not,
    // as parent when none is given; the forms with button texts of
    // information() and question() take the first visible one.
    static int error(QWidget *parent, const QString &title, const QString &text, int button0, int button1 = 0,
                     int button2 = 0);
    static int information(QWidget *parent, const QString &title, const QString &text, int button0,
                           int button1 = 0, int button2 = 0);
    static int information(QWidget *parent, const QString &title, const QString &text,
                           const QString &button0Text, const QString &button1Text = QString(),
                           const QString &button2Text = QString(), int defaultButton = 0, int escapeButton = -1);
    static int question(QWidget *parent, const QString &title, const QString &text, int button0, int button1 = 0,
                        int button2 = 0);
    static int question(QWidget *parent, const QString &title, const QString &text, const QString &button0Text,
                        const QString &button1Text = QString(), const QString &button2Text = QString(),
                        int defaultButton = 0, int escapeButton = -1);
    static int warning(QWidget *parent, const QString &title, const QString &text, int button0, int button1 = 0,
                       int button2 = 0);
    static int warning(QWidget *parent, const QString &title, const QString &text, const QString &button0Text,
                       const QString &button1Text = QString(), const QString &button2Text = QString(),
                       int defaultButton = 0, int escapeButton = -1);

    // A process-wide note that the user cancelled a run of questions; the box
    // never sets it itself.
    static bool isCancelClicked();
    static void setCancelClicked(bool clicked);

    // The parent a box takes when given none: the first top-level main
    // window (the first visible one when `visibleOnly`), or null.
    static QWidget *findParent(QWidget *parent, bool visibleOnly);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    const bool m_bMayReject;
};
