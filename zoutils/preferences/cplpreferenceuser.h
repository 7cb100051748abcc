#pragma once
// One user of the application: initials, password digest, the values kept
// for each label data set, a few choices and the free-form settings sections,
// persisted as "<profile directory>/profiles/<initials>.txt".
//
// Profile file, lines ended by "\r\n":
//   *** User Input:\t(User Profile)
//   User ID:\t<name>
//   Chosen User Label Name Set:\t<label set name>
//   Preferred calibration:\t<calibration>
//   Auto-Save datasets:\t<yes|no>
//   (empty line)
//   one "*** User Label Name Set:" block per label data set
//   every custom settings section, in list order
// On reading, the name comes from the file name and auto-save is always off.
// Files are Latin-1; a profile holding text that Latin-1 cannot carry back
// is written as UTF-8 instead, and reading takes either.

#include "zoenums.h"
#include "zoutils_export.h"

#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVector>

class CPLLabelDataSet;
class CPLPreferenceKeyList;
class CPLSection;

class ZOUTILS_EXPORT CPLPreferenceUser
{
public:
    CPLPreferenceUser();
    // `name` may be a file name: ".txt" and what follows it are cut off. The
    // password is the clear text; only its digest is kept.
    CPLPreferenceUser(const QString &name, const QString &password);
    // Copies are deep (key lists, sections and the session clock).
    CPLPreferenceUser(const CPLPreferenceUser &other);
    CPLPreferenceUser &operator=(const CPLPreferenceUser &other);
    // Copies `*other`; a null pointer leaves this user unchanged.
    CPLPreferenceUser &operator=(const CPLPreferenceUser *other);
    virtual ~CPLPreferenceUser();

    // Replaces the choices, key lists and sections with those of the file.
    // ES_OPEN_FAILED when the file cannot be read; ES_SUCCESS otherwise, also
    // for damaged files (what can be read is kept, the rest is skipped).
    tag_estatus loadData(const QString &path);
    // Writes the profile through a temporary file that replaces the old one
    // only when everything was written, so a failed save keeps the previous
    // profile. Adds the "General User Setting" defaults when there is no such
    // section and brings the "User Password" section up to date.
    // ES_WRITE_FAILED when the profiles folder cannot be made, ES_OPEN_FAILED
    // when the file cannot be opened, ES_UNKNOWN_ERROR when writing fails.
    tag_estatus saveData();
    // The file saveData() writes.
    QString profileFilePath() const;

    bool isNewAcquisitionSession() const { return m_bNewAcquisitionSession; }
    void setAcquisitionSession(bool isNew) { m_bNewAcquisitionSession = isNew; }
    bool isSaveRequired() const { return m_bSaveRequired; }
    void setUpdateFlag() { m_bSaveRequired = true; }
    bool isAutoSave() const { return m_bAutoSave; }
    void setAutoSave(bool autoSave) { m_bAutoSave = autoSave; }

    // Getters return ES_INVALID_POINTER for a null output, else ES_SUCCESS.
    tag_estatus getUserName(QString *name) const;
    void setUserName(const QString &name) { m_strUserName = name; }
    // The MD5 digest of the password (getMD5String).
    tag_estatus getUserPass(QString *digest) const;
    // Stores the digest of `password`.
    void setNewPass(const QString &password);
    // Changes the password when `oldPassword` matches the stored digest;
    // ES_WRONG_INFORMATION (nothing changed) when it does not.
    tag_estatus setNewPass(const QString &oldPassword, const QString &newPassword);
    // Whether `password` is this user's password.
    bool checkPassword(const QString &password) const;
    tag_estatus getChosenLabelName(QString *name) const;
    void setChosenLabelName(const QString &name) { m_strChosenLabelName = name; }
    tag_estatus getDefaultCalibration(QString *calibration) const;
    void setDefaultCalibration(const QString &calibration) { m_strPreferredCalibration = calibration; }
    tag_estatus getDefaultUserPath(QString *path) const;
    void setDefaultUserPath(const QString &path) { m_strDefaultUserPath = path; }

    // Label data. The sets are shared by all users (filled by the manager);
    // each user keeps one key list per set, in the same order.
    // ES_INVALID_INPUT for an index outside the sets.
    tag_estatus setActiveLabelData(int index);
    int getActiveLabelDataIndex() const { return m_nActiveLabelData; }
    // The set at the active index; ES_INVALID_POINTER for a null output,
    // ES_INVALID_INPUT when there is no such set.
    tag_estatus getActiveLabelData(CPLLabelDataSet **set) const;
    // This user's key list at the active index (owned by the user).
    tag_estatus getActiveKeyListData(CPLPreferenceKeyList **keys) const;
    // The first set called `name`; ES_ID_NOT_FOUND when there is none.
    static tag_estatus getLabelData(const QString &name, CPLLabelDataSet **set);
    static tag_estatus getLabelDataNames(QStringList *names);
    // Key list i (owned by the user), or null out of range.
    CPLPreferenceKeyList *operator[](int i) const;
    int keyListCount() const { return m_vKeyLists.size(); }

    // Custom settings sections, owned by the user. Adding takes ownership and
    // appends (the list may hold sections of the same name); removing deletes
    // the section and returns whether it was there.
    tag_estatus addCustomSettingsSection(CPLSection *section);
    bool removeCustomSettingsSection(CPLSection *section);
    // The first section whose name equals `key`; ES_INVALID_POINTER for a null
    // output, ES_SECTION_KEY_NOT_FOUND (output null) when there is none.
    tag_estatus getCustomSettingsSection(const QString &key, CPLSection **section) const;
    const QList<CPLSection *> &getCustomSettingsSections() const { return m_lCustomSections; }

    // Session clock: not running until the user logs in.
    QElapsedTimer *getSessionTimer() { return &m_oSessionTimer; }
    void restartSessionTimer() { m_oSessionTimer.start(); }
    // 00:00:00 plus the time since login (00:00:00 when not logged in).
    QTime getCurrentSessionTime() const;
    // The same as "hh:mm:ss".
    QString getCurrentSession() const;

    // ROI files: "<profile directory>/profiles/ROIs for <user>".
    static tag_estatus getRoiFolderForUser(const QString &user, QString *folder);
    // Makes `folder` if needed and gives "ROI_<k>_<user>.txt" for the smallest
    // free k from 1 (numbers count modulo 900; when 1 to 899 are all taken,
    // k is 1). ES_INVALID_POINTER for a null output, ES_DIR_CREATE_FAILED.
    tag_estatus getNextRoiFileNameFromUserFolder(QString &folder, QString *fileName) const;
    // Remembers the ROI file `*fileName` under the menu entry `menuName` in
    // section "ROI File <number>" (replaced when it exists).
    tag_estatus saveRoiMenuAndFileNames(int number, const QString &menuName, QString *fileName);
    // Menu names of the "ROI File" sections, in section order.
    QStringList getROIMenuNames() const;
    // ES_ID_NOT_FOUND when no entry has that menu name.
    tag_estatus getRoiFileNameForMenuName(const QString &menuName, QString *fileName) const;
    tag_estatus deleteUserRoiMenuItem(const QString &menuName);
    // The same for 3D ROIs, one "3D ROI" section per entry.
    tag_estatus save3DROIFileDetails(const QString &menuName, const QString &fileName);
    tag_estatus get3DROIFileName(const QString &menuName, QString *fileName) const;
    QStringList get3DROIMenuNames() const;
    tag_estatus delete3DROIFileDetails(const QString &menuName);

    // The label data sets known to the application; filled and owned by the
    // preference manager.
    static QList<CPLLabelDataSet *> m_pLabelDataSetList;
    static int m_nDataSetCount;

private:
    void createKeyLists();
    void clearKeyLists();
    void clearCustomSections();
    void copyFrom(const CPLPreferenceUser &other);
    void loadGeneralUserSettings();
    void updatePasswordSettingsSection();
    CPLSection *findRoiSection(const QString &menuName) const;
    CPLSection *find3DRoiSection(const QString &menuName) const;
    void loadSections(const QString &text, int from);

    bool m_bNewAcquisitionSession = true;
    bool m_bSaveRequired = false;
    QString m_strUserName;
    QString m_strPassword; // MD5 digest
    QString m_strChosenLabelName;
    QString m_strPreferredCalibration;
    QString m_strDefaultUserPath;
    bool m_bAutoSave = false;
    QElapsedTimer m_oSessionTimer;
    QVector<CPLPreferenceKeyList *> m_vKeyLists; // owned, one per label data set
    int m_nActiveLabelData = 0;
    QList<CPLSection *> m_lCustomSections; // owned
};
