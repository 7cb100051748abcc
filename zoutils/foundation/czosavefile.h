#pragma once
// Replaces a whole file so that nothing is ever half written: the new content
// goes to a staging file beside the target, QSaveFile flushes it to the disk,
// and only then is it renamed over the target. A kill, a crash or a failed
// write (a full disk, an I/O error) at any moment leaves the complete old file
// or the complete new one; a failed save leaves no staging file behind.
//
// Staging files are named "." + target name + ".zosave-" + six random
// characters (QSaveFile may add its own ".XXXXXX"), so that the one a killed
// process leaves is told from a user's "notes.txt.backup" and removed by the
// next save of the same file. QSaveFile's own temporary names cannot be told
// apart like that, which is why it writes to a staging name of ours.
//
// A symbolic link is followed: its target is replaced and the link stays. The
// new file takes the old one's permissions. The folder must exist; it is never
// created here.
//
// Private to the three libraries (a static library linked into each); not
// installed. Not thread-safe: one object per save.

#include <QIODevice>
#include <QScopedPointer>
#include <QString>

class QByteArray;
class QSaveFile;

class CZOSaveFile
{
public:
    explicit CZOSaveFile(const QString &path);
    ~CZOSaveFile(); // drops an uncommitted save: the target is left as it was

    CZOSaveFile(const CZOSaveFile &) = delete;
    CZOSaveFile &operator=(const CZOSaveFile &) = delete;

    // Removes stale staging files of the target and opens a new staging file
    // write-only, with `extraMode` added (QIODevice::Text, for instance).
    // False when the target is a folder or the staging file cannot be made.
    bool open(QIODevice::OpenMode extraMode = QIODevice::NotOpen);
    // Where the new content goes; null before open(). Owned by this object.
    QIODevice *device() const;
    // Flushes the staging file to the disk and renames it over the target.
    // False, with the target untouched and no staging file left, when a write
    // failed or the rename does.
    bool commit();
    QString errorString() const { return m_sError; }

    // Writes `bytes` as the whole new content of `path`; false as commit().
    static bool save(const QString &path, const QByteArray &bytes, QString *error = nullptr);

    // The file a save of `path` replaces: `path` itself, or the file a
    // symbolic link at `path` finally points to.
    static QString resolvedTarget(const QString &path);
    // A new, unused staging name for `target` (an absolute, resolved path).
    static QString newStagingPath(const QString &target);
    // Removes the staging files that saves of `target` left behind.
    static void removeStaleStagingFiles(const QString &target);
    // Renames `from` over `to` in one step, replacing `to`.
    static bool replace(const QString &from, const QString &to, QString *error);

private:
    QString m_sTarget;
    QString m_sStaging;
    QString m_sError;
    QScopedPointer<QSaveFile> m_pFile;
};
