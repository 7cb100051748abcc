#include "czosfiledialog.h"

#include "czopreference.h"
#include "czoserrorhandler.h"
#include "czossettings.h"
#include "czoutilityfns.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

namespace {
// Longest file name (without its folder) that may be saved.
constexpr int kMaxSaveNameLength = 185;

bool rememberFolders()
{
    return CZOPreference::getSettings()->getCustomizeInfo()->bSaveDiskPaths;
}

QString folderBeforeLastSlash(const QString &path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}
} // namespace

tag_estatus CZOSFileDialog::getOpenFileName(QWidget *parent, QString caption, QString &fileName,
                                            QStringList filters, bool setup)
{
    CZOSSettings *settings = CZOPreference::getSettings();
    const QString start = setup ? settings->getSetUpFileOpenPath() : settings->getOpenPath();
    const QString chosen = QFileDialog::getOpenFileName(parent, caption, start, filters.join(QStringLiteral(";;")));
    if (chosen.isEmpty())
        return ES_INVALID_ARGUMENT;
    if (!QFileInfo(chosen).isReadable()) {
        CZOSErrorHandler::errorMessage(parent, ES_NO_READ_PERMISSION, QStringLiteral("\n") + chosen);
        return ES_NO_READ_PERMISSION;
    }
    if (rememberFolders()) {
        if (setup)
            settings->setSetUpFileOpenPath(getFolderPath(chosen));
        else
            settings->setOpenPath(getFolderPath(chosen));
    }
    fileName = chosen;
    return ES_SUCCESS;
}

tag_estatus CZOSFileDialog::getOpenFileNames(QWidget *parent, QString caption, QStringList &fileNames,
                                             QStringList filters)
{
    CZOSSettings *settings = CZOPreference::getSettings();
    const QStringList chosen = QFileDialog::getOpenFileNames(parent, caption, settings->getOpenPath(),
                                                             filters.join(QStringLiteral(";;")));
    if (chosen.isEmpty())
        return ES_INVALID_ARGUMENT;
    for (const QString &name : chosen) {
        if (!QFileInfo(name).isReadable()) {
            CZOSErrorHandler::errorMessage(parent, ES_NO_READ_PERMISSION, QStringLiteral("\n") + name);
            return ES_NO_READ_PERMISSION;
        }
    }
    if (rememberFolders())
        settings->setOpenPath(getFolderPath(chosen.first()));
    fileNames = chosen;
    return ES_SUCCESS;
}

tag_estatus CZOSFileDialog::getSaveFileName(QWidget *parent, QString caption, QString &fileName,
                                            QStringList extensions, QStringList filters)
{
    CZOSSettings *settings = CZOPreference::getSettings();
    QString start = settings->getRecentFilePath();
    const QString proposedName = QFileInfo(fileName).fileName();
    bool proposalHasExtension = false;
    for (const QString &extension : qAsConst(extensions))
        proposalHasExtension = proposalHasExtension || (!extension.isEmpty() && fileName.endsWith(extension));
    if (proposalHasExtension && !proposedName.isEmpty()) {
        QString folder = start.isEmpty() ? QStringLiteral(".") : start;
        if (folder.size() > 1 && folder.endsWith(QLatin1Char('/')))
            folder.chop(1);
        start = folder + QLatin1Char('/') + proposedName;
    }

    QString filter;
    for (const QString &f : qAsConst(filters))
        filter += f + QStringLiteral(";;");

    QString selectedFilter;
    QString chosen = QFileDialog::getSaveFileName(parent, caption, start, filter, &selectedFilter,
                                                  QFileDialog::DontConfirmOverwrite);
    if (chosen.isEmpty())
        return ES_INVALID_ARGUMENT;

    const QString folder = QFileInfo(chosen).absolutePath();
    if (!QFileInfo(folder).isWritable()) {
        CZOSErrorHandler::errorMessage(parent, ES_NO_WRITE_PERMISSION, QStringLiteral("\n") + folder);
        return ES_NO_WRITE_PERMISSION;
    }

    // The recent folder serves this session; the export folder is the one kept on file.
    settings->setRecentFilePath(folderBeforeLastSlash(chosen));
    if (rememberFolders())
        settings->setExportPath(folderBeforeLastSlash(chosen));

    QString suffix = QFileInfo(chosen).suffix().toLower();
    if (suffix.isEmpty() && chosen.endsWith(QLatin1Char('.')))
        chosen.chop(1);
    if (!isKnownExtension(extensions, suffix)) {
        const QString extension = getSelectedFilter(filters, extensions, selectedFilter);
        // A filter without an extension adds nothing, not a bare ".".
        if (!extension.isEmpty() && (suffix.isEmpty() || suffix != extension))
            chosen += QLatin1Char('.') + extension;
    }

    if (QFileInfo(chosen).fileName().size() > kMaxSaveNameLength) {
        const int half = chosen.size() / 2;
        CZOSMessageBox::information(parent, CZOUtilityFns::getAppName(),
                                    QStringLiteral("The path you entered, \n'") + chosen.left(half)
                                        + QStringLiteral("\n") + chosen.mid(half)
                                        + QStringLiteral("',\nis too long. Enter a shorter path"),
                                    QMessageBox::Ok);
        return ES_INVALID_ARGUMENT;
    }

    if (QFileInfo::exists(chosen)) {
        const int answer = CZOSMessageBox::information(
            parent, CZOUtilityFns::getAppName(),
            QStringLiteral("File: ") + chosen + QStringLiteral(" exists in the specified path.\nOverwrite existing file?"),
            QMessageBox::Yes, QMessageBox::No | QMessageBox::Default, QMessageBox::Cancel | QMessageBox::Escape);
        switch (answer & QMessageBox::ButtonMask) {
        case QMessageBox::Yes:
            break;
        case QMessageBox::No:
            return getSaveFileName(parent, caption, fileName, extensions, filters);
        default:
            return ES_PROCESS_ABORTED;
        }
    }
    fileName = chosen;
    return ES_SUCCESS;
}

QString CZOSFileDialog::getFolderPath(QString path)
{
    const bool isDirectory = QFileInfo(path).isDir();
    // Deliberate: drops the first character, not the trailing "/".
    if (path.endsWith(QLatin1Char('/')))
        path = path.right(path.size() - 1);
    if (isDirectory)
        return path;
    return folderBeforeLastSlash(path);
}

QString CZOSFileDialog::getSelectedFilter(QStringList filters, QStringList extensions, QString selectedFilter)
{
    for (int i = 0; i < filters.size(); ++i) {
        if (filters.at(i).contains(selectedFilter))
            return extensions.value(i);
    }
    return QString();
}

bool CZOSFileDialog::isKnownExtension(QStringList extensions, QString extension)
{
    const QString wanted = extension.toLower();
    for (const QString &known : qAsConst(extensions)) {
        if (known.toLower() == wanted)
            return true;
    }
    return false;
}
