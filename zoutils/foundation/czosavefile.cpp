#include "czosavefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSaveFile>

#include <filesystem>
#include <system_error>

namespace {

const QLatin1String kStagingMark(".zosave-");

// "." + name + ".zosave-": what every staging name of `target` starts with.
QString stagingPrefix(const QString &target)
{
    return QLatin1Char('.') + QFileInfo(target).fileName() + kStagingMark;
}

std::filesystem::path nativePath(const QString &path)
{
    return std::filesystem::u8path(QDir::toNativeSeparators(path).toUtf8().toStdString());
}

} // namespace

CZOSaveFile::CZOSaveFile(const QString &path)
    : m_sTarget(resolvedTarget(path))
{
}

CZOSaveFile::~CZOSaveFile()
{
    // A QSaveFile destroyed before commit() removes what it wrote.
}

QString CZOSaveFile::resolvedTarget(const QString &path)
{
    QFileInfo info(path);
    for (int depth = 0; depth < 32 && info.isSymbolicLink(); ++depth)
        info.setFile(info.symLinkTarget());
    return info.isSymbolicLink() ? QFileInfo(path).absoluteFilePath() : info.absoluteFilePath();
}

QString CZOSaveFile::newStagingPath(const QString &target)
{
    static const char kChars[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    QString name = stagingPrefix(target);
    for (int i = 0; i < 6; ++i)
        name += QLatin1Char(kChars[QRandomGenerator::global()->bounded(int(sizeof kChars - 1))]);
    return QFileInfo(target).absolutePath() + QLatin1Char('/') + name;
}

void CZOSaveFile::removeStaleStagingFiles(const QString &target)
{
    const QFileInfo info(target);
    const QString prefix = stagingPrefix(target);
    QDir folder = info.absoluteDir();
    const QStringList names = folder.entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        if (name.startsWith(prefix))
            folder.remove(name);
    }
}

bool CZOSaveFile::replace(const QString &from, const QString &to, QString *error)
{
    // Unlike QFile::rename, this replaces an existing `to` in one step, on
    // Windows too (MoveFileEx with MOVEFILE_REPLACE_EXISTING).
    std::error_code code;
    std::filesystem::rename(nativePath(from), nativePath(to), code);
    if (code && error)
        *error = QString::fromLocal8Bit(code.message().c_str());
    return !code;
}

bool CZOSaveFile::open(QIODevice::OpenMode extraMode)
{
    m_pFile.reset();
    const QFileInfo target(m_sTarget);
    if (target.isDir()) {
        m_sError = QStringLiteral("%1 is a folder").arg(m_sTarget);
        return false;
    }
    removeStaleStagingFiles(m_sTarget);
    m_sStaging = newStagingPath(m_sTarget);
    m_pFile.reset(new QSaveFile(m_sStaging));
    // Unbuffered: QSaveFile then remembers every failed write until commit(),
    // whereas a write failing in a buffer flush that a seek() made is forgotten
    // by the next successful call. Callers write in blocks or through streams.
    if (!m_pFile->open(QIODevice::WriteOnly | QIODevice::Unbuffered | extraMode)) {
        m_sError = m_pFile->errorString();
        m_pFile.reset();
        return false;
    }
    // The staging file is new: give it the permissions of the file it replaces.
    if (target.exists() && !m_pFile->setPermissions(target.permissions())) {
        m_sError = m_pFile->errorString();
        m_pFile.reset();
        return false;
    }
    return true;
}

QIODevice *CZOSaveFile::device() const
{
    return m_pFile.data();
}

bool CZOSaveFile::commit()
{
    if (!m_pFile) {
        m_sError = QStringLiteral("%1 was not opened for saving").arg(m_sTarget);
        return false;
    }
    // QSaveFile does not always count a failed final flush as a write error:
    // check it here, so that a short file is never committed.
    if (!m_pFile->flush() || m_pFile->error() != QFileDevice::NoError) {
        m_sError = m_pFile->errorString();
        m_pFile->cancelWriting();
    }
    // QSaveFile writes its data to the disk before it names the staging file;
    // on failure it removes what it wrote.
    const bool staged = m_pFile->commit();
    if (!staged && m_sError.isEmpty())
        m_sError = m_pFile->errorString();
    m_pFile.reset();
    if (!staged)
        return false;
    if (!replace(m_sStaging, m_sTarget, &m_sError)) {
        QFile::remove(m_sStaging);
        return false;
    }
    return true;
}

bool CZOSaveFile::save(const QString &path, const QByteArray &bytes, QString *error)
{
    CZOSaveFile file(path);
    bool ok = file.open();
    if (ok && file.device()->write(bytes) != bytes.size()) {
        file.m_sError = file.device()->errorString();
        ok = false;
    }
    ok = ok && file.commit();
    if (!ok && error)
        *error = file.errorString();
    return ok;
}
