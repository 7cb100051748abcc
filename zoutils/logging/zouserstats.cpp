#include "zouserstats.h"

#include "zopath.h"

#include <QDateTime>
#include <QFile>
#include <mutex>

namespace {

const QString kHeader = QStringLiteral("Event,User,Time,Session Seconds\r\n");

std::mutex s_statsMutex; // guards everything below
bool s_started = false;
QString s_user;          // the user whose session is open; empty when none
QDateTime s_sessionStart;

// Commas, quotes and line breaks in a name would break the row; quote it.
QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) && !text.contains(QLatin1Char('\n'))
        && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

bool appendRowLocked(const QString &row)
{
    QFile file(userStatsFileName());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return false;
    const QByteArray bytes = row.toUtf8();
    return file.write(bytes) == bytes.size();
}

void endSessionLocked()
{
    if (s_user.isEmpty())
        return;
    const QDateTime now = QDateTime::currentDateTime();
    appendRowLocked(QLatin1String("logout,") + csvField(s_user) + QLatin1Char(',') + now.toString(Qt::ISODate)
                    + QLatin1Char(',') + QString::number(s_sessionStart.secsTo(now)) + QLatin1String("\r\n"));
    s_user.clear();
}

} // namespace

QString userStatsFileName()
{
    const QString folder = getZOPath(ZO_PATH_APPDATA, true, nullptr);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("zouserstats.csv");
}

int beginUserStatLogging()
{
    std::lock_guard<std::mutex> locker(s_statsMutex);
    const QString path = userStatsFileName();
    if (path.isEmpty())
        return 0;
    // Unbuffered: a buffered header that a full disk refuses would be lost at close, unseen.
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return 0;
    if (file.size() == 0) {
        const QByteArray header = kHeader.toUtf8();
        if (file.write(header) != header.size())
            return 0;
    }
    s_started = true;
    return 1;
}

void closeUserStatLogging()
{
    std::lock_guard<std::mutex> locker(s_statsMutex);
    if (!s_started)
        return;
    endSessionLocked();
    s_started = false;
}

void updateUserStats(const QString &name)
{
    std::lock_guard<std::mutex> locker(s_statsMutex);
    if (!s_started || name.isEmpty() || name == s_user)
        return;
    endSessionLocked();
    s_user = name;
    s_sessionStart = QDateTime::currentDateTime();
    appendRowLocked(QLatin1String("login,") + csvField(s_user) + QLatin1Char(',')
                    + s_sessionStart.toString(Qt::ISODate) + QLatin1String(",\r\n"));
}
