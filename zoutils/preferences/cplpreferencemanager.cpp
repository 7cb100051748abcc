#include "cplpreferencemanager.h"

#include "cpllabeldataset.h"
#include "cplpreferenceuser.h"
#include "czoslog.h"
#include "czosuseriddialog.h"
#include "generalutilities.h"
#include "zoconstants.h"
#include "zoplatform.h"
#include "zopreferencetexts_p.h"
#include "zouserstats.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace zoprefs;

namespace {

void logFolderFailure(const QString &folder)
{
    ZOS_LOG(QStringLiteral("Unable to locate/create folder '%1' to save the application preferences.").arg(folder),
            ZOS_LOG_ERROR);
}

// Finds or makes `name` in `parent`; false when it is not a folder afterwards.
bool findOrMakeFolder(const QString &parent, const QString &name, bool *existed = nullptr)
{
    const QString path = parent + QLatin1Char('/') + name;
    const QFileInfo info(path);
    if (existed)
        *existed = info.isDir();
    if (info.isDir())
        return true;
    return !info.exists() && QDir(parent).mkdir(name) && QFileInfo(path).isDir();
}

// Whether the folder holds anything besides "." and "..".
bool hasEntries(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir()
        && !QDir(path).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System).isEmpty();
}

// Copies the tree of `source` into `destination`, replacing files of the same
// name. Unlike copyFolderContents, any file that cannot be copied makes the
// result false, so that the caller never deletes a source it did not carry
// over in full.
bool copyTreeReplacing(const QString &source, const QString &destination)
{
    if (!QDir().mkpath(destination))
        return false;
    bool ok = true;
    const QFileInfoList entries =
        QDir(source).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &entry : entries) {
        const QString target = destination + QLatin1Char('/') + entry.fileName();
        if (entry.isDir() && !entry.isSymLink()) {
            ok = copyTreeReplacing(entry.absoluteFilePath(), target) && ok;
            continue;
        }
        if (QFileInfo(target).isDir()) {
            ok = false;
            continue;
        }
        QFile::remove(target);
        ok = QFile::copy(entry.absoluteFilePath(), target) && ok;
    }
    return ok;
}

} // namespace

CPLPreferenceManager::CPLPreferenceManager(const CPLPreferenceManager &other)
{
    copyFrom(other);
}

CPLPreferenceManager &CPLPreferenceManager::operator=(const CPLPreferenceManager &other)
{
    if (this != &other)
        copyFrom(other);
    return *this;
}

CPLPreferenceManager::~CPLPreferenceManager()
{
    clearUsers();
}

void CPLPreferenceManager::copyFrom(const CPLPreferenceManager &other)
{
    clearUsers();
    m_strProfileDir = other.m_strProfileDir;
    for (const CPLPreferenceUser *user : other.m_lUsers)
        m_lUsers.append(new CPLPreferenceUser(*user));
    m_lUserNames = other.m_lUserNames;
    m_nUserCount = other.m_nUserCount;
    const int active = other.m_lUsers.indexOf(other.m_pActiveUser);
    m_pActiveUser = active >= 0 ? m_lUsers.at(active) : nullptr;
    m_strActiveUserName = m_pActiveUser ? other.m_strActiveUserName : QString();
}

void CPLPreferenceManager::clearUsers()
{
    m_pActiveUser = nullptr;
    m_strActiveUserName.clear();
    qDeleteAll(m_lUsers);
    m_lUsers.clear();
    m_lUserNames.clear();
    m_nUserCount = 0;
}

QString CPLPreferenceManager::profilesFolder() const
{
    return m_strProfileDir + QLatin1Char('/') + ZO_FOLDER_PROFILES + QLatin1Char('/');
}

tag_estatus CPLPreferenceManager::initialLoad(const QString &appDirPath)
{
    clearUsers();

    const QString obsolete = appDirPath + QLatin1Char('/') + kObsoleteProfilesFolder;
    if (!appDirPath.isEmpty() && QFileInfo(obsolete).isDir())
        deleteFolderTree(QDir(obsolete));

    const QString base = ZOPlatform::environmentFolder("ALLUSERSPROFILE");
    const QString appData = base + QLatin1Char('/') + kApplicationData;
    // Elsewhere than on Windows the base is a stand-in folder that may not exist yet.
    if (base.isEmpty() || !QDir().mkpath(base) || !findOrMakeFolder(base, kApplicationData)) {
        logFolderFailure(appData);
        return ES_INIT_FAILED;
    }
    const QString maker = appData + QLatin1Char('/') + ZO_PRODUCT_NORBECK_INSTRUMENTS;
    bool profileDirExisted = false;
    if (!findOrMakeFolder(appData, ZO_PRODUCT_NORBECK_INSTRUMENTS)
        || !findOrMakeFolder(maker, ZO_PRODUCT_ZOLVANE, &profileDirExisted)) {
        logFolderFailure(maker);
        return ES_INIT_FAILED;
    }
    m_strProfileDir = maker + QLatin1Char('/') + ZO_PRODUCT_ZOLVANE;

    // Profiles of older versions: the per-user folder is moved (copied, then
    // removed), the old machine-wide one copied once, when the directory is new.
    const QString appDataEnv = ZOPlatform::environmentFolder("APPDATA");
    if (!appDataEnv.isEmpty()) {
        const QString oldMaker = appDataEnv + QLatin1Char('/') + ZO_PRODUCT_TESSALY;
        const QString oldUserDir = oldMaker + QLatin1Char('/') + ZO_PRODUCT_ZOLVANE;
        if (hasEntries(oldUserDir)) {
            if (copyTreeReplacing(oldUserDir, m_strProfileDir))
                deleteFolderTree(QDir(oldMaker));
            else
                ZOS_LOG(QStringLiteral("Profiles in '%1' could not all be carried over; the folder is kept.")
                            .arg(oldUserDir),
                        ZOS_LOG_WARNING);
        }
    }
    if (!profileDirExisted) {
        const QString oldMachineDir =
            appData + QLatin1Char('/') + ZO_PRODUCT_TESSALY + QLatin1Char('/') + ZO_PRODUCT_ZOLVANE;
        if (hasEntries(oldMachineDir))
            copyTreeReplacing(oldMachineDir, m_strProfileDir);
    }

    addDefaultLabelData();

    const QString folder = profilesFolder();
    const QStringList files = QDir(folder).entryList(QDir::Files, QDir::Name);
    for (const QString &fileName : files) {
        // Initials plus ".txt"; longer names are other files, deliberately ignored.
        const int ext = fileName.indexOf(ZO_FILE_TXT_EXTENSION);
        if (ext < 0 || fileName.size() >= 8)
            continue;
        const QString name = fileName.left(ext);
        if (name.trimmed().isEmpty())
            continue;
        auto *user = new CPLPreferenceUser(fileName, QString());
        m_lUserNames.append(name);
        ++m_nUserCount;
        user->loadData(folder + fileName); // a damaged profile still gives a user with defaults
        m_lUsers.append(user);
    }
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::addUser(QString name, const QString &password)
{
    int index = -1;
    return addUser(name, &index, password);
}

tag_estatus CPLPreferenceManager::addUser(QString name, int *index, const QString &password)
{
    name = name.toUpper();
    const int existing = getUserIndex(name);
    if (index)
        *index = existing;
    if (existing >= 0)
        return setActiveUser(unsigned(existing));
    if (name.size() != 2 && name.size() != 3)
        return ES_INVALID_USER_ID;
    m_lUserNames.append(name);
    m_lUsers.append(new CPLPreferenceUser(name, password));
    ++m_nUserCount;
    if (index)
        *index = m_nUserCount - 1;
    return ES_SUCCESS;
}

int CPLPreferenceManager::getUserIndex(const QString &name) const
{
    return m_lUserNames.indexOf(name);
}

CPLPreferenceUser *CPLPreferenceManager::operator[](unsigned int index) const
{
    return index < unsigned(m_lUsers.size()) ? m_lUsers.at(int(index)) : nullptr;
}

tag_estatus CPLPreferenceManager::getUserCount(int *count) const
{
    if (!count)
        return ES_INVALID_POINTER;
    *count = m_nUserCount;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::getAllUserNames(QStringList **names)
{
    if (!names)
        return ES_INVALID_POINTER;
    *names = &m_lUserNames;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::setActiveUser(unsigned int index)
{
    if (m_pUserIDDialog && m_pUserIDDialog->isVisible()) {
        m_pUserIDDialog->hide();
    }
    if (index >= unsigned(m_nUserCount) || index >= unsigned(m_lUsers.size()))
        return ES_INVALID_INPUT;
    m_pActiveUser = m_lUsers.at(int(index));
    m_strActiveUserName = m_lUserNames.at(int(index));
    m_pActiveUser->restartSessionTimer();
    updateUserStats(m_strActiveUserName);
    ZOS_LOG(QStringLiteral(">>%1 Logged IN<<").arg(m_strActiveUserName.toUpper()), ZOS_LOG_INFORMATION);
    return ES_SUCCESS;
}

void CPLPreferenceManager::setActiveUserToNone()
{
    m_pActiveUser = nullptr;
    m_strActiveUserName.clear();
}

tag_estatus CPLPreferenceManager::selectUser(const QString &preselect)
{
    m_pUserIDDialog = new CZOSUserIDDialog(this, QApplication::activeWindow());
    QComboBox *combo = m_pUserIDDialog->userComboBox();
    combo->addItems(m_lUserNames);
    if (!preselect.isEmpty())
        combo->setCurrentIndex(getUserIndex(preselect));
    if (combo->count() == 0)
        combo->addItem(kNoUser);
    m_pUserIDDialog->show();
    m_pUserIDDialog->setModal(false);
    const int result = m_pUserIDDialog->exec();
    const QString chosen = combo->currentText();
    delete m_pUserIDDialog;
    m_pUserIDDialog = nullptr;
    // "_none_" and unknown texts give -1, which setActiveUser refuses.
    if (result == QDialog::Accepted && !chosen.isEmpty())
        setActiveUser(unsigned(getUserIndex(chosen)));
    return ES_UNKNOWN_ERROR; // deliberately the same whatever happened
}

tag_estatus CPLPreferenceManager::saveData()
{
    return m_pActiveUser ? m_pActiveUser->saveData() : ES_INVALID_STATE;
}

void CPLPreferenceManager::removeAt(int index)
{
    CPLPreferenceUser *user = m_lUsers.takeAt(index);
    const QString name = m_lUserNames.takeAt(index);
    --m_nUserCount;
    if (user == m_pActiveUser)
        setActiveUserToNone();
    delete user;
    QFile::remove(profilesFolder() + name + ZO_FILE_TXT_EXTENSION);
}

tag_estatus CPLPreferenceManager::deleteUser(const QString &userName)
{
    const QString name = userName; // may be the active name, which removeAt() clears
    const int index = getUserIndex(name);
    if (index < 0)
        return ES_UNKNOWN_ERROR;
    removeAt(index);
    QString roiFolder;
    CPLPreferenceUser::getRoiFolderForUser(name, &roiFolder);
    if (QFileInfo(roiFolder).isDir())
        deleteFolderTree(QDir(roiFolder));
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::deleteActiveUser()
{
    if (getUserIndex(m_strActiveUserName) < 0)
        return ES_UNKNOWN_ERROR;
    return deleteUser(m_strActiveUserName);
}

tag_estatus CPLPreferenceManager::deleteAllUsers()
{
    while (!m_lUsers.isEmpty())
        removeAt(m_lUsers.size() - 1);
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::addDefaultLabelData()
{
    qDeleteAll(CPLPreferenceUser::m_pLabelDataSetList);
    CPLPreferenceUser::m_pLabelDataSetList.clear();
    CPLPreferenceUser::m_nDataSetCount = 0;
    const QStringList labels{QStringLiteral("User"), ZO_LABEL_GROUP, ZO_LABEL_EXPERIMENT, ZO_LABEL_COMMENT1,
                             ZO_LABEL_COMMENT2, ZO_LABEL_TIME_POINT, ZO_LABEL_ANIMAL_NUMBER, ZO_LABEL_ANIMAL_STRAIN,
                             ZO_LABEL_ANIMAL_MODEL, ZO_LABEL_SEX, ZO_LABEL_VIEW, ZO_LABEL_CELL_LINE,
                             ZO_LABEL_REPORTER, ZO_LABEL_TREATMENT, ZO_LABEL_LUC_INJECTION_TIME,
                             ZO_LABEL_IACUC_NUMBER};
    CPLPreferenceUser::m_pLabelDataSetList.append(new CPLLabelDataSet(ZO_PRODUCT_ZOLVANE_UNIVERSAL, labels));
    ++CPLPreferenceUser::m_nDataSetCount;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceManager::loadLabelData(QString *text)
{
    if (!text)
        return ES_INVALID_POINTER;
    const QString marker = kSectionPrefix + ZO_CI_USER_LABEL_NAME_SET;
    tag_estatus result = ES_SUCCESS;
    int added = 0;
    int pos = text->indexOf(marker);
    while (pos >= 0) {
        const int next = text->indexOf(marker, pos + marker.size());
        const QString block = text->mid(pos, next < 0 ? -1 : next - pos);
        pos = next;
        auto *set = new CPLLabelDataSet;
        const tag_estatus status = set->loadData(block);
        if (status != ES_SUCCESS) {
            delete set;
            if (result == ES_SUCCESS)
                result = status;
            continue;
        }
        CPLPreferenceUser::m_pLabelDataSetList.append(set);
        ++CPLPreferenceUser::m_nDataSetCount;
        ++added;
    }
    if (added == 0)
        addDefaultLabelData();
    return result;
}
