#pragma once
// The users of this machine: finds or makes the profile directory
// (<ALLUSERSPROFILE>/Application Data/Norbeck Instruments/Zolvane), carries
// profiles over from older locations, loads every profile, and keeps the
// users, the active one and the label data sets. GUI thread only.

#include "zoenums.h"
#include "zoutils_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class CPLPreferenceUser;
class CZOSUserIDDialog;

class ZOUTILS_EXPORT CPLPreferenceManager
{
public:
    CPLPreferenceManager() = default;
    // Copies are deep; the copy's active user is its own copy of the active one.
    CPLPreferenceManager(const CPLPreferenceManager &other);
    CPLPreferenceManager &operator=(const CPLPreferenceManager &other);
    virtual ~CPLPreferenceManager();

    // Finds or makes the profile directory, carries older profiles over,
    // sets up the default label data and loads every profile of
    // "<profile directory>/profiles" (files "<initials>.txt", names shorter
    // than 8 characters). Users loaded before are dropped first. No user is
    // active afterwards. ES_INIT_FAILED when a folder cannot be found or made.
    tag_estatus initialLoad(const QString &appDirPath);

    // The name is upper-cased. An existing name makes that user active
    // (setActiveUser's status). ES_INVALID_USER_ID for a name that is not 2
    // or 3 characters long. A new user is neither activated nor saved.
    tag_estatus addUser(QString name, const QString &password);
    // The same, reporting the user's index (-1 when the name is refused).
    tag_estatus addUser(QString name, int *index, const QString &password);
    // Exact (case-sensitive) position in the names, or -1.
    int getUserIndex(const QString &name) const;
    // User `index`, or null; owned by the manager.
    CPLPreferenceUser *operator[](unsigned int index) const;
    tag_estatus getUserCount(int *count) const;
    int userCount() const { return m_nUserCount; }
    // Hands out the manager's own list; ES_INVALID_POINTER for null.
    tag_estatus getAllUserNames(QStringList **names);
    // The active user (owned by the manager) or null; its name or empty.
    CPLPreferenceUser *getActiveUser() const { return m_pActiveUser; }
    QString getActiveUserName() const { return m_strActiveUserName; }
    QString getProfileDirectory() const { return m_strProfileDir; }

    // Logs user `index` in: restarts its session clock, counts the login in
    // the user statistics and logs ">>NAME Logged IN<<". A visible selection
    // dialog is closed first. ES_INVALID_INPUT (nothing changes) for an index
    // not below the count.
    tag_estatus setActiveUser(unsigned int index);
    void setActiveUserToNone();
    // Runs the selection dialog, `preselect` chosen first. Always returns
    // ES_UNKNOWN_ERROR, whatever happened (kept so for callers that expect
    // it); look at getActiveUser() afterwards.
    tag_estatus selectUser(const QString &preselect);
    // The selection dialog while selectUser() runs, else null.
    CZOSUserIDDialog *selectionDialog() const { return m_pUserIDDialog; }
    // Saves the active user; ES_INVALID_STATE when there is none.
    tag_estatus saveData();

    // Removing a user deletes its profile file and (deleteUser and
    // deleteActiveUser) its ROI folder. ES_UNKNOWN_ERROR when the user is not
    // known. Deleting the active user leaves no user active.
    tag_estatus deleteUser(const QString &userName);
    tag_estatus deleteActiveUser();
    tag_estatus deleteAllUsers();

    // Replaces the label data sets with the one "Zolvane Universal" set.
    tag_estatus addDefaultLabelData();
    // Adds one label data set per "*** User Label Name Set" block of `text`;
    // the first failing status is returned. With no set at all the default
    // set is put in.
    tag_estatus loadLabelData(QString *text);

private:
    void clearUsers();
    void copyFrom(const CPLPreferenceManager &other);
    void removeAt(int index);
    QString profilesFolder() const;

    QString m_strProfileDir;
    QList<CPLPreferenceUser *> m_lUsers; // owned, parallel to m_lUserNames
    CPLPreferenceUser *m_pActiveUser = nullptr; // one of m_lUsers, or null
    QStringList m_lUserNames;
    QString m_strActiveUserName;
    int m_nUserCount = 0;
    CZOSUserIDDialog *m_pUserIDDialog = nullptr; // only while selectUser() runs
};
