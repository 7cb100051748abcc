#pragma once
// The application's file dialogs: the standard Qt dialogs with the user's
// start folders, remembered folders, the extension of the chosen filter, a
// limit on the length of saved file names and an overwrite question.
// Failures reach the user through CZOSErrorHandler. GUI thread only.
//
// Results are statuses: ES_SUCCESS (0); ES_INVALID_ARGUMENT (19) when nothing
// was chosen or a name was too long; ES_PROCESS_ABORTED (46) when the
// overwrite question was cancelled; ES_NO_WRITE_PERMISSION (64);
// ES_NO_READ_PERMISSION (65).
//
// The folders come from and go to CZOPreference::getSettings(); they are
// remembered across sessions only when the user's "Save Disk-Paths" is on.

#include "zoenums.h"
#include "zoutils_export.h"

#include <QString>
#include <QStringList>

class QWidget;

class ZOUTILS_EXPORT CZOSFileDialog
{
public:
    CZOSFileDialog() = default;
    virtual ~CZOSFileDialog() = default;

    // Starts in the set-up file folder when `setup` is set, else in the open
    // folder. `filters` are Qt name filters ("Images (*.tif)"). On success
    // `fileName` is the chosen file; otherwise it is left as it was.
    static tag_estatus getOpenFileName(QWidget *parent, QString caption, QString &fileName, QStringList filters,
                                       bool setup);
    // Starts in the open folder; the folder of the first file is remembered.
    // Any unreadable file gives ES_NO_READ_PERMISSION and no names.
    static tag_estatus getOpenFileNames(QWidget *parent, QString caption, QStringList &fileNames,
                                        QStringList filters);
    // `extensions` ("csv", without the dot) pair up with `filters` by index.
    // A proposed `fileName` ending in one of them names the file offered in
    // the recent file folder. The saved name gets the extension of the chosen
    // filter unless it already ends in a known one; names of 186 characters or
    // more are refused. An existing file is overwritten only after the user
    // agrees; "No" opens the dialog again.
    static tag_estatus getSaveFileName(QWidget *parent, QString caption, QString &fileName, QStringList extensions,
                                       QStringList filters);

    // The folder of `path`: the path itself when it names a directory, else
    // the part before the last "/". A path ending in "/" first loses its FIRST
    // character ("C:/data/" gives ":/data/"); callers have always relied on
    // this, so it stays.
    static QString getFolderPath(QString path);

private:
    // The extension paired with the first filter containing `selectedFilter`; empty when none does.
    static QString getSelectedFilter(QStringList filters, QStringList extensions, QString selectedFilter);
    // Whether `extension` is in `extensions`, ignoring case.
    static bool isKnownExtension(QStringList extensions, QString extension);
};
