#include "czoserrorhandler.h"

#include "zoappstate_p.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QKeyEvent>
#include <QMainWindow>

namespace {

// Indexed by tag_estatus. The texts are shown as users have always seen
// them: the misspellings and the double full stop of 60 are deliberate.
const QString kStatusTexts[ES_STATUS_COUNT] = {
    QStringLiteral(" No Problems Encountered "), // 0
    QStringLiteral(" Success."), // 1
    QStringLiteral(" Could not locate the requested file on disk "), // 2
    QStringLiteral(" Header not found in the file "), // 3
    QStringLiteral(" Possibly empty file "), // 4
    QStringLiteral(" Possibly corrupt file "), // 5
    QStringLiteral(" Could not read file. "), // 6
    QStringLiteral(" Could not write file. "), // 7
    QStringLiteral(" Persistent storage has insufficient space. "), // 8
    QStringLiteral(" File has not been closed. "), // 9
    QStringLiteral(" End of file has been reached. "), // 10
    QStringLiteral(" Unable to open file. "), // 11
    QStringLiteral(" File operation failed. "), // 12
    QStringLiteral(" Delete operation failed. "), // 13
    QStringLiteral(" Updating a operation failed. "), // 14
    QStringLiteral(" A required formatting character not found. "), // 15
    QStringLiteral(" Attempt to use/pass an invalid pointer. "), // 16
    QStringLiteral(" Unknown or unsupported Command. "), // 17
    QStringLiteral(" Wrong information passed. "), // 18
    QStringLiteral(" Argument was invalid. "), // 19
    QStringLiteral(" Invalid characters detected. "), // 20
    QStringLiteral(" Data type specified is invalid. "), // 21
    QStringLiteral(" Invalid media/picture file type. "), // 22
    QStringLiteral(" Log updation operation failed. "), // 23
    QStringLiteral(" The specified Id is not found"), // 24
    QStringLiteral(" Timer object created. "), // 25
    QStringLiteral(" Failed to create timer object. "), // 26
    QStringLiteral(" Match found."), // 27
    QStringLiteral(" Match not found. "), // 28
    QStringLiteral(" End of buffer was encountered.\nUnable to continue."), // 29
    QStringLiteral(" Feature not supported.\nUnable to continue."), // 30
    QStringLiteral(" Unknown error detected.\nUnable to continue."), // 31
    QStringLiteral(" Critical error detected.\nUnable to continue."), // 32
    QStringLiteral(" Invalid system state to perform requested operation. "), // 33
    QStringLiteral(" Unable to allocate memory for operation.\nUnable to continue."), // 34
    QStringLiteral(" Initialization of one or several modules failed."), // 35
    QStringLiteral(" Un-Initialization of one or several modules failed. "), // 36
    QStringLiteral(" Remove operation failed. "), // 37
    QStringLiteral(" Selected item is already present. "), // 38
    QStringLiteral(" Invalid file type found.\n Unable to continue."), // 39
    QStringLiteral(" Required images not found. "), // 40
    QStringLiteral(" Dataset with that image number already exists. Do you want to reload the dataset?"), // 41
    QStringLiteral(" Failure while closing dataset window with Image Number : "), // 42
    QStringLiteral(" A valid printer was not found.\nPlease run printer setup OR contact your System Administrator."), // 43
    QStringLiteral(" One or more necessary files required to load the dataset were not found. Loading of dataset failed."), // 44
    QStringLiteral(" Invalid image. Unable to continue"), // 45
    QStringLiteral(" Process Aborted."), // 46
    QStringLiteral(" Process Failed."), // 47
    QStringLiteral(" Invalid input data. Unable to continue."), // 48
    QStringLiteral(" Requested section key not found in Clickinfo.txt."), // 49
    QStringLiteral(" Crop rectangle not defined."), // 50
    QStringLiteral(" Invalid command line argument specified."), // 51
    QStringLiteral(" Surface Topography related data not available."), // 52
    QStringLiteral(" The current folder does not contain any sub-folders"), // 53
    QStringLiteral(" The current folder is last folder present in its parent"), // 54
    QStringLiteral(" Could not write to System Registry. Application settings were not saved"), // 55
    QStringLiteral(" Valid Dataset(s) could not be found in the specified path."), // 56
    QStringLiteral(" Aborted by User. "), // 57
    QStringLiteral("User ID must be two or three letters (A-Z)."), // 58
    QStringLiteral("'userlabelnames.txt' is corrupted."), // 59
    QStringLiteral(" Directory creation failed.."), // 60
    QStringLiteral(" Image has to be Photograph or Luminescent type to continue."), // 61
    QStringLiteral(" Incorrect File/Dataset path specified."), // 62
    QStringLiteral(" Data or images related to Surface Topography Analysis not available\n Unable to continue."), // 63
    QStringLiteral(" Write permissions not enabled for the specified Folder or File."), // 64
    QStringLiteral(" Read permissions not enabled for the specified Folder or File."), // 65
    QStringLiteral(" Error in loading volume data."), // 66
    QStringLiteral(" Error in loading mesh data."), // 67
    QStringLiteral("One or more loaded images do not support this operation."), // 68
    QStringLiteral("Apply to all option cannot be applied in 3D View."), // 69
    QStringLiteral("Insufficient data to continue with Spectral Analysis"), // 70
    QStringLiteral("Unable to find any valid sections in ClickInfo.txt"), // 71
    QStringLiteral("Unable to find any valid sections in SequenceInfo.txt"), // 72
    QStringLiteral("Unable to fit organs to the mouse mesh."), // 73
    QStringLiteral("Unsupported organ database for fitting organs to the mouse mesh"), // 74
    QStringLiteral("No organs available to fit to the mouse mesh"), // 75
    QStringLiteral("Unable to create a QuickTime media file.\nPlease verify QuickTime 7.0 is installed and try again."), // 76
    QString(), // 77: reserved
    QString(), // 78: reserved
    QStringLiteral("Motor controller command failed"), // 79
    QStringLiteral("Motors are still moving"), // 80
    QStringLiteral("Motor pssitioning failed"), // 81
    QStringLiteral("Spectral Camera configuration file not found"), // 82
    QStringLiteral("Cannot find system configuration file.\n Please make sure it is in the application path before launching the application."), // 83
    QStringLiteral("Improper selection of mask during auto fluorescent background subtraction"), // 84
    QStringLiteral("Very low memory encountered - Unable to load the complete sequence."), // 85
    QStringLiteral("Very low memory encountered - Unable to load the dataset."), // 86
    QStringLiteral("Unable to load volume data - File does not contain valid 3D data."), // 87
    QStringLiteral("Sequence does not contain any ClickNumbers."), // 88
};

bool s_cancelClicked = false;

// Keeps the application open and shows the arrow cursor while a box is up.
class ShowGuard
{
public:
    ShowGuard()
    {
        ZOAppState::setCanClose(false);
        ZOAppState::setCursor(QCursor(Qt::ArrowCursor));
    }
    ~ShowGuard()
    {
        ZOAppState::restoreCursor();
        ZOAppState::setCanClose(true);
    }
    ShowGuard(const ShowGuard &) = delete;
    ShowGuard &operator=(const ShowGuard &) = delete;
};

} // namespace

// ---------------------------------------------------------------------------
// CZOSErrorHandler

QString CZOSErrorHandler::statusText(tag_estatus status)
{
    const int index = int(status);
    return index >= 0 && index < ES_STATUS_COUNT ? kStatusTexts[index] : QString();
}

void CZOSErrorHandler::errorMessage(QWidget *parent, tag_estatus status, QString detail)
{
    CZOSMessageBox box(QMessageBox::Information, ZOAppState::appName(), statusText(status) + detail,
                       QMessageBox::Ok, CZOSMessageBox::findParent(parent, false), Qt::Dialog, true);
    box.exec();
}

int CZOSErrorHandler::question(QWidget *parent, tag_estatus status, QString detail)
{
    CZOSMessageBox box(QMessageBox::Warning, ZOAppState::appName(), statusText(status) + detail,
                       QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                       CZOSMessageBox::findParent(parent, false), Qt::Dialog, true);
    box.setDefaultButton(QMessageBox::Yes);
    box.setEscapeButton(QMessageBox::Cancel);
    return box.exec();
}

// ---------------------------------------------------------------------------
// CZOSMessageBox

CZOSMessageBox::CZOSMessageBox(QWidget *parent, bool mayReject)
    : QMessageBox(findParent(parent, true)), m_bMayReject(mayReject)
{
}

CZOSMessageBox::CZOSMessageBox(QMessageBox::Icon icon, const QString &title, const QString &text,
                               QMessageBox::StandardButtons buttons, QWidget *parent, Qt::WindowFlags flags,
                               bool mayReject)
    : QMessageBox(icon, title, text, buttons, findParent(parent, true), flags), m_bMayReject(mayReject)
{
}

QWidget *CZOSMessageBox::findParent(QWidget *parent, bool visibleOnly)
{
    if (parent || !qobject_cast<QApplication *>(QCoreApplication::instance()))
        return parent;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *w : windows) {
        if (qobject_cast<QMainWindow *>(w) && (!visibleOnly || w->isVisible()))
            return w;
    }
    return nullptr;
}

int CZOSMessageBox::exec()
{
    ShowGuard guard;
    return QMessageBox::exec();
}

void CZOSMessageBox::reject()
{
    if (m_bMayReject)
        QMessageBox::reject();
}

void CZOSMessageBox::keyPressEvent(QKeyEvent *event)
{
    // QMessageBox answers Escape by clicking its escape button, bypassing reject().
    if (!m_bMayReject && event->matches(QKeySequence::Cancel)) {
        event->accept();
        return;
    }
    QMessageBox::keyPressEvent(event);
}

void CZOSMessageBox::closeEvent(QCloseEvent *event)
{
    if (!m_bMayReject) {
        event->ignore();
        return;
    }
    QMessageBox::closeEvent(event);
}

int CZOSMessageBox::error(QWidget *parent, const QString &title, const QString &text, int button0, int button1,
                          int button2)
{
    ShowGuard guard;
    return QMessageBox::critical(findParent(parent, false), title, text, button0, button1, button2);
}

int CZOSMessageBox::information(QWidget *parent, const QString &title, const QString &text, int button0,
                                int button1, int button2)
{
    ShowGuard guard;
    return QMessageBox::information(findParent(parent, false), title, text, button0, button1, button2);
}

int CZOSMessageBox::information(QWidget *parent, const QString &title, const QString &text,
                                const QString &button0Text, const QString &button1Text, const QString &button2Text,
                                int defaultButton, int escapeButton)
{
    ShowGuard guard;
    return QMessageBox::information(findParent(parent, true), title, text, button0Text, button1Text, button2Text,
                                    defaultButton, escapeButton);
}

int CZOSMessageBox::question(QWidget *parent, const QString &title, const QString &text, int button0, int button1,
                             int button2)
{
    ShowGuard guard;
    return QMessageBox::question(findParent(parent, false), title, text, button0, button1, button2);
}

int CZOSMessageBox::question(QWidget *parent, const QString &title, const QString &text, const QString &button0Text,
                             const QString &button1Text, const QString &button2Text, int defaultButton,
                             int escapeButton)
{
    ShowGuard guard;
    return QMessageBox::question(findParent(parent, true), title, text, button0Text, button1Text, button2Text,
                                 defaultButton, escapeButton);
}

int CZOSMessageBox::warning(QWidget *parent, const QString &title, const QString &text, int button0, int button1,
                            int button2)
{
    ShowGuard guard;
    return QMessageBox::warning(findParent(parent, false), title, text, button0, button1, button2);
}

int CZOSMessageBox::warning(QWidget *parent, const QString &title, const QString &text, const QString &button0Text,
                            const QString &button1Text, const QString &button2Text, int defaultButton,
                            int escapeButton)
{
    ShowGuard guard;
    return QMessageBox::warning(findParent(parent, false), title, text, button0Text, button1Text, button2Text,
                                defaultButton, escapeButton);
}

bool CZOSMessageBox::isCancelClicked()
{
    return s_cancelClicked;
}

void CZOSMessageBox::setCancelClicked(bool clicked)
{
    s_cancelClicked = clicked;
}
