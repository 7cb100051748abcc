#include "czoslog.h"

#include "zopath.h"
#include "zopreferencehooks.h"
#include "zouserstats.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPointer>
#include <QThread>

#include <atomic>
#include <mutex>

namespace {

const int kRotateAboveBytes = 204800;
const QString kLogFileName = QStringLiteral("zoactivity.log");
const QString kBackupFileName = QStringLiteral("zoactivity.bak");
const QString kSessionRule = QString(84, QLatin1Char('='));
const QString kLineEnd = QStringLiteral("\r\n");

std::atomic<CZOSLog *> s_log{nullptr};

// The last message written, shared by every log of the process so that runs
// of one message are written once. Guarded by s_lastMutex.
std::mutex s_lastMutex;
QString s_lastMessage;

bool isRepeat(const QString &message)
{
    std::lock_guard<std::mutex> locker(s_lastMutex);
    return QString::compare(message, s_lastMessage, Qt::CaseInsensitive) == 0;
}

// Checks and remembers in one step, so two threads cannot both pass.
bool rememberUnlessRepeat(const QString &message)
{
    std::lock_guard<std::mutex> locker(s_lastMutex);
    if (QString::compare(message, s_lastMessage, Qt::CaseInsensitive) == 0)
        return false;
    s_lastMessage = message;
    return true;
}

QString levelText(int level)
{
    switch (level) {
    case ZOS_LOG_WARNING:
        return QStringLiteral("Warning");
    case ZOS_LOG_ERROR:
        return QStringLiteral("Error");
    default:
        return QStringLiteral("Information");
    }
}

struct GLDriverStrings {
    QString vendor, renderer, version;
};

// Reads the driver strings through a throw-away context. Only on the GUI
// thread of a GUI application on a platform that can make contexts; anything
// else (no display, the offscreen platform, no driver) gives empty strings.
// The strings cannot change while the process runs, so one look suffices.
GLDriverStrings glDriverStrings()
{
    static bool s_looked = false; // GUI thread only
    static GLDriverStrings s_strings;

    auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!app || QThread::currentThread() != app->thread())
        return GLDriverStrings();
    if (s_looked)
        return s_strings;
    s_looked = true;

    const QString platform = QGuiApplication::platformName();
    if (platform.startsWith(QLatin1String("offscreen")) || platform.startsWith(QLatin1String("minimal"))
        || platform == QLatin1String("vnc"))
        return s_strings;

    QOpenGLContext *previous = QOpenGLContext::currentContext();
    QSurface *previousSurface = previous ? previous->surface() : nullptr;

    QOpenGLContext context;
    if (!context.create())
        return s_strings;
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (surface.isValid() && context.makeCurrent(&surface)) {
        QOpenGLFunctions *f = context.functions();
        auto text = [f](GLenum name) {
            const GLubyte *s = f->glGetString(name);
            return s ? QString::fromLatin1(reinterpret_cast<const char *>(s)) : QString();
        };
        s_strings.vendor = text(GL_VENDOR);
        s_strings.renderer = text(GL_RENDERER);
        s_strings.version = text(GL_VERSION);
        context.doneCurrent();
    }
    if (previous && previousSurface)
        previous->makeCurrent(previousSurface);
    return s_strings;
}

QPointer<CZOSLogEventHandler> s_eventHandler; // GUI thread only
QtMessageHandler s_previousMessageHandler = nullptr;

void messageHandlerAdapter(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    // With no log open the message would vanish; let the previous handler have it.
    if (!getLogObject()) {
        if (s_previousMessageHandler)
            s_previousMessageHandler(type, context, text);
        return;
    }
    ZOSMessageHandler(type, text.toUtf8().constData());
}

} // namespace

// ---------------------------------------------------------------------------
// CZOSLogEvent

CZOSLogEvent::CZOSLogEvent(const QString &message, const QString &file, int line, const QString &time)
    : CZOSLogEvent(message, file, line, time, ZOS_LOG_INFORMATION)
{
}

CZOSLogEvent::CZOSLogEvent(const QString &message, const QString &file, int line, const QString &time, long type)
    : QEvent(LogEventType), m_strMessage(message), m_strFile(file), m_strTime(time), m_nLine(line), m_lType(type)
{
}

CZOSLogEvent::CZOSLogEvent(const CZOSLogEvent &other) = default;
CZOSLogEvent &CZOSLogEvent::operator=(const CZOSLogEvent &other) = default;
CZOSLogEvent::~CZOSLogEvent() = default;

// ---------------------------------------------------------------------------
// CZOSLog

CZOSLog::CZOSLog(QString name, QObject *parent)
    : QObject(parent), m_strName(std::move(name)),
      m_strTimeFormat(QLocale::system().timeFormat(QLocale::ShortFormat))
{
    m_stream.setCodec("UTF-8");
}

CZOSLog::~CZOSLog()
{
    std::lock_guard<std::mutex> locker(m_mutex);
    if (m_file.isOpen()) {
        m_stream.flush();
        m_file.close();
    }
}

void CZOSLog::beginLog(QString fileName, LOGLOCATION location)
{
    std::lock_guard<std::mutex> locker(m_mutex);
    if (m_file.isOpen() && m_file.fileName() != fileName) {
        m_stream.flush();
        m_stream.setDevice(nullptr);
        m_file.close();
    }
    if (!m_file.isOpen())
        m_file.setFileName(fileName);
    m_location = location;
}

QString CZOSLog::fileName() const
{
    std::lock_guard<std::mutex> locker(m_mutex);
    return m_file.fileName();
}

LOGLOCATION CZOSLog::location() const
{
    std::lock_guard<std::mutex> locker(m_mutex);
    return m_location;
}

int CZOSLog::errors() const
{
    std::lock_guard<std::mutex> locker(m_mutex);
    return m_nErrors;
}

int CZOSLog::warnings() const
{
    std::lock_guard<std::mutex> locker(m_mutex);
    return m_nWarnings;
}

int CZOSLog::messageCount() const
{
    std::lock_guard<std::mutex> locker(m_mutex);
    return m_nMessages;
}

void CZOSLog::log(QString message, QString file, int line, QString time, long type, bool immediate)
{
    if (message.isEmpty() || isRepeat(message))
        return;

    if (!immediate) {
        if (QCoreApplication *app = QCoreApplication::instance())
            QCoreApplication::postEvent(app, new CZOSLogEvent(message, file, line, time, type));
        return;
    }

    std::lock_guard<std::mutex> locker(m_mutex);
    if (!rememberUnlessRepeat(message))
        return;

    const int level = int(type & ZOS_LOG_LEVEL_MASK);
    const QString levelName = levelText(level);
    const bool isInformation = level != ZOS_LOG_WARNING && level != ZOS_LOG_ERROR;
    // Callers pass a placeholder time; the entry carries the time it is written.
    const QString now = currentTimeText();

    ++m_nMessages;
    if (level == ZOS_LOG_WARNING)
        ++m_nWarnings;
    else if (level == ZOS_LOG_ERROR)
        ++m_nErrors;

    if (m_location == LOG_TO_FILE || m_location == LOG_TO_FILE_AND_WINDOW)
        writeFileLocked(levelName, isInformation, message, now);

    if (m_location == LOG_TO_WINDOW || m_location == LOG_TO_FILE_AND_WINDOW) {
        ++m_nActivityLines;
        const QString shortFile = file.mid(file.lastIndexOf(QLatin1Char('\\')) + 1);
        writeActivityWindowLocked(QString::number(m_nActivityLines), levelName, message, now, shortFile,
                                  QString::number(line));
    }

    if (level == ZOS_LOG_ERROR || (type & ZOS_LOG_STATUSBAR))
        emit statusBarMessage(message);
}

QString CZOSLog::currentTimeText()
{
    // Local time costs a time-zone look-up (file system calls) every time;
    // the text can only change when the UTC second does.
    const qint64 second = QDateTime::currentMSecsSinceEpoch() / 1000;
    if (second != m_nTimeTextSecond) {
        m_nTimeTextSecond = second;
        m_strTimeText = QTime::currentTime().toString(m_strTimeFormat);
    }
    return m_strTimeText;
}

bool CZOSLog::openFileLocked()
{
    const QString path = m_file.fileName();
    const QFileInfo info(path);
    if (info.isFile() && info.size() > kRotateAboveBytes) {
        const QString folder = getZOPath(ZO_PATH_APPDATA, true, nullptr);
        // Without a data folder there is nowhere to keep the old entries, so
        // the file is kept and grows rather than being thrown away.
        if (!folder.isEmpty()) {
            const QString backup = folder + kBackupFileName;
            QFile::remove(backup);
            if (!QFile::exists(backup))
                QFile::copy(path, backup);
            QFile::remove(path);
        }
    }
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    m_stream.setDevice(&m_file);

    const GLDriverStrings gl = glDriverStrings();
    m_stream << kSessionRule << kLineEnd
             << QStringLiteral("%1 - Launched: [%2, %3]")
                    .arg(m_strName, QDate::currentDate().toString(Qt::TextDate), currentTimeText())
             << kLineEnd
             << QStringLiteral("OpenGL Vendor: %1, Driver: %2, Version: %3").arg(gl.vendor, gl.renderer, gl.version)
             << kLineEnd;
    return true;
}

void CZOSLog::writeFileLocked(const QString &level, bool isInformation, const QString &message, const QString &time)
{
    if (m_file.fileName().isEmpty())
        return;
    if (!m_file.isOpen() && !openFileLocked())
        return;

    QString line;
    line.reserve(time.size() + message.size() + 14);
    line += time;
    line += QLatin1Char('\t');
    if (!isInformation) {
        line += level.leftJustified(8, QLatin1Char(' '), true);
        line += QLatin1String("> ");
    }
    line += message;
    line += kLineEnd;
    m_stream << line;
    m_stream.flush();
}

void CZOSLog::writeActivityWindowLocked(const QString &number, const QString &level, const QString &message,
                                        const QString &time, const QString &file, const QString &line)
{
    emit activityMessage(number, level, message, time, file, line);
}

void CZOSLog::writeToOutputWindow(QString text, bool b1, bool b2)
{
    emit outputMessage(text, b1, b2);
}

void CZOSLog::endLog()
{
    // Until the preference store sets its hook there is no user: no logout line.
    const ZOPreferenceHooks hooks = zoPreferenceHooks();
    QString user, session;
    if (hooks.activeUserSession && hooks.activeUserSession(&user, &session))
        log(QStringLiteral(">>%1 Logged OUT<< Session Lasted: %2").arg(user.toUpper(), session), QString(), 357,
            QString(), ZOS_LOG_INFORMATION, true);

    std::lock_guard<std::mutex> locker(m_mutex);
    if (!m_file.isOpen())
        return;
    // The double blank before "warnings" is part of the file format.
    m_stream << kLineEnd << QStringLiteral("Found %1 errors, %2  warnings").arg(m_nErrors).arg(m_nWarnings)
             << kLineEnd << kSessionRule << kLineEnd;
    m_stream.flush();
    m_stream.setDevice(nullptr);
    m_file.close();
}

// ---------------------------------------------------------------------------
// CZOSLogEventHandler

CZOSLogEventHandler::CZOSLogEventHandler(QObject *parent) : QObject(parent) {}

bool CZOSLogEventHandler::install()
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() != app->thread())
        return false;
    if (!s_eventHandler) {
        s_eventHandler = new CZOSLogEventHandler(app);
        app->installEventFilter(s_eventHandler);
    }
    return true;
}

void CZOSLogEventHandler::uninstall()
{
    delete s_eventHandler.data();
}

bool CZOSLogEventHandler::isInstalled()
{
    return !s_eventHandler.isNull();
}

bool CZOSLogEventHandler::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != CZOSLogEvent::LogEventType || watched != QCoreApplication::instance())
        return false;
    const auto *entry = dynamic_cast<const CZOSLogEvent *>(event);
    if (!entry)
        return false;
    if (CZOSLog *log = getLogObject())
        log->log(entry->logMessage(), entry->logFileName(), entry->logLineNum(), entry->logTime(), entry->logType(),
                 true);
    return true;
}

// ---------------------------------------------------------------------------
// Free functions

int beginLog(QString name)
{
    if (s_log.load())
        return 0;
    auto *log = new CZOSLog(std::move(name));
    s_log.store(log);
    if (!beginUserStatLogging())
        return 0;
    const QString folder = getZOPath(ZO_PATH_APPDATA, true, nullptr);
    if (folder.isEmpty())
        return 0;
    log->beginLog(folder + kLogFileName, LOG_TO_FILE_AND_WINDOW);
    return 1;
}

void closeLog()
{
    closeUserStatLogging();
    // Entries still queued would find no log once it is gone; write them first.
    QCoreApplication *app = QCoreApplication::instance();
    if (app && QThread::currentThread() == app->thread())
        QCoreApplication::sendPostedEvents(app, CZOSLogEvent::LogEventType);
    CZOSLog *log = s_log.exchange(nullptr);
    if (!log)
        return;
    log->endLog();
    delete log;
}

CZOSLog *getLogObject()
{
    return s_log.load();
}

void errorLog(QString message, QString file, int line, QString time, long type)
{
    Q_UNUSED(file)
    Q_UNUSED(time)
    if (CZOSLog *log = getLogObject())
        log->log(message, QString(), line, QString(), type, false);
}

void ZOSMessageHandler(QtMsgType type, const char *text)
{
    long logType = ZOS_LOG_STATUSBAR;
    switch (type) {
    case QtWarningMsg:
        logType = ZOS_LOG_WARNING;
        break;
    case QtCriticalMsg:
        logType = ZOS_LOG_ERROR;
        break;
    default: // debug, info, fatal: information shown on the status bar
        break;
    }
    if (CZOSLog *log = getLogObject())
        log->log(QStringLiteral("QT -> ") + QString::fromUtf8(text), QString(), 0, QString(), logType, false);
}

QtMessageHandler installZOSMessageHandler()
{
    QtMessageHandler previous = qInstallMessageHandler(messageHandlerAdapter);
    if (previous != messageHandlerAdapter)
        s_previousMessageHandler = previous;
    return previous;
}
