#pragma once
// The application-wide activity log: "zoactivity.log" in the application data
// folder, mirrored to an activity window through signals.
//
// Any thread may log. log() posts a CZOSLogEvent to the application object by
// default; the handler of that event (CZOSLogEventHandler, installed once by
// the host) writes it on the thread of the event loop. Immediate writes take
// the log's mutex.
//
// File format: each session starts, on its first entry, with a line of 84
// "=", "<name> - Launched: [<date>, <time>]" and the OpenGL driver line (empty
// strings when the file is opened off the GUI thread or where no context can
// be made: offscreen platform, no display, no driver). Entries are
// "<time>\t<message>" for information and "<time>\t<level, 8 wide>> <message>"
// otherwise; lines end in "\r\n". endLog() adds the error and warning
// summary. A file above 204800 bytes is moved to "zoactivity.bak" in the
// application data folder when the next session opens it.

#include "zoutils_export.h"

#include <QEvent>
#include <QFile>
#include <QObject>
#include <QString>
#include <QTextStream>
#include <QTime>

#include <mutex>

// Where entries go.
enum LOGLOCATION : int {
    LOG_TO_WINDOW = 0,         // activity window only (signals)
    LOG_TO_FILE = 1,           // file only
    LOG_TO_FILE_AND_WINDOW = 2 // both
};

// Message types: the low four bits are the level; ZOS_LOG_STATUSBAR asks for
// the status bar as well.
enum {
    ZOS_LOG_INFORMATION = 1,
    ZOS_LOG_WARNING = 2,
    ZOS_LOG_ERROR = 3,
    ZOS_LOG_LEVEL_MASK = 0x0F,
    ZOS_LOG_STATUSBAR = 0x10
};

// One deferred log entry, posted to the application object.
class ZOUTILS_EXPORT CZOSLogEvent : public QEvent
{
public:
    static constexpr QEvent::Type LogEventType = QEvent::Type(41002);

    CZOSLogEvent(const QString &message, const QString &file, int line, const QString &time);
    CZOSLogEvent(const QString &message, const QString &file, int line, const QString &time, long type);
    CZOSLogEvent(const CZOSLogEvent &other);
    CZOSLogEvent &operator=(const CZOSLogEvent &other);
    ~CZOSLogEvent() override;

    QString logMessage() const { return m_strMessage; }
    QString logFileName() const { return m_strFile; }
    int logLineNum() const { return m_nLine; }
    QString logTime() const { return m_strTime; }
    long logType() const { return m_lType; }

    void setLogMessage(const QString &message) { m_strMessage = message; }
    void setLogFileName(const QString &file) { m_strFile = file; }
    void setLogLineNum(int line) { m_nLine = line; }
    void setLogTime(const QString &time) { m_strTime = time; }
    void setLogType(long type) { m_lType = type; }

private:
    QString m_strMessage;
    QString m_strFile;
    QString m_strTime;
    int m_nLine = 0;
    long m_lType = ZOS_LOG_INFORMATION;
};

class ZOUTILS_EXPORT CZOSLog : public QObject
{
    Q_OBJECT
public:
    // Writes nowhere until beginLog() gives it a file; location LOG_TO_FILE.
    explicit CZOSLog(QString name, QObject *parent = nullptr);
    ~CZOSLog() override; // closes the file without a summary; endLog() writes one

    // Sets the file and the location. A file already open under another name
    // is closed first; the new one opens (with a session header) on the next entry.
    void beginLog(QString fileName, LOGLOCATION location);

    // Logs one entry. Empty messages and a repeat of the last written message
    // (ignoring case) are dropped. With `immediate` false the entry is posted
    // to the application object and written by the event handler; nothing
    // happens when there is no application object. Safe from any thread.
    void log(QString message, QString file, int line, QString time, long type, bool immediate = false);

    // Logs the logout line of the active user (when the preference store
    // names one), writes the error and warning summary and closes the file.
    void endLog();

    void writeToOutputWindow(QString text, bool b1, bool b2);

    int errors() const;
    int warnings() const;
    bool hasErrors() const { return errors() > 0; }
    bool hasWarnings() const { return warnings() > 0; }
    int messageCount() const;

    QString name() const { return m_strName; }
    QString fileName() const;
    LOGLOCATION location() const;

signals:
    void activityMessage(QString number, QString level, QString message, QString time, QString file, QString line);
    void outputMessage(QString text, bool b1, bool b2);
    void statusBarMessage(QString text);

private:
    void writeFileLocked(const QString &level, bool isInformation, const QString &message, const QString &time);
    void writeActivityWindowLocked(const QString &number, const QString &level, const QString &message,
                                   const QString &time, const QString &file, const QString &line);
    bool openFileLocked();
    QString currentTimeText();

    const QString m_strName;
    // Non-recursive: a slot connected directly to a signal of this log must
    // not log immediately. A standard mutex rather than QMutex so that thread
    // checkers see every hand-over. Guards everything below.
    mutable std::mutex m_mutex;
    QFile m_file;
    QTextStream m_stream;
    LOGLOCATION m_location = LOG_TO_FILE;
    int m_nErrors = 0;
    int m_nWarnings = 0;
    int m_nActivityLines = 0;
    int m_nMessages = 0;
    // The short time text changes at most once a second; keep the last one.
    QString m_strTimeFormat;
    qint64 m_nTimeTextSecond = -1; // UTC seconds since the epoch
    QString m_strTimeText;
};

// Installs itself as an event filter of the application object and writes
// every posted CZOSLogEvent to the current log (immediate path). One call from
// the GUI thread, after the application object exists:
//     CZOSLogEventHandler::install();
// The handler is a child of the application object and dies with it.
class ZOUTILS_EXPORT CZOSLogEventHandler : public QObject
{
    Q_OBJECT
public:
    // False when there is no application object or when called from another
    // thread than the application's. Installing twice is harmless.
    static bool install();
    static void uninstall();
    static bool isInstalled();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit CZOSLogEventHandler(QObject *parent);
};

// Creates the global log named `name`, starts the user statistics log and,
// when that succeeds, points the log at "zoactivity.log" in the application
// data folder (file and window). 1 on success; 0 when the statistics log could
// not start (the log then exists but writes nowhere) or the log exists already.
ZOUTILS_EXPORT int beginLog(QString name);
// Closes the user statistics log, writes the entries still queued for the
// log (when called on the application's thread), ends and destroys the global log.
ZOUTILS_EXPORT void closeLog();
// The global log, or null when none is open. Owned by the library.
ZOUTILS_EXPORT CZOSLog *getLogObject();
// Logs `message` with `line` and `type` on the deferred path; `file` and
// `time` are not used.
ZOUTILS_EXPORT void errorLog(QString message, QString file, int line, QString time, long type);

// Routes a toolkit message to the log as "QT -> <text>": debug messages go to
// the status bar, warnings count as warnings, critical messages as errors;
// fatal and other messages are logged like debug ones and do not end the program.
ZOUTILS_EXPORT void ZOSMessageHandler(QtMsgType type, const char *text);
// Installs ZOSMessageHandler through qInstallMessageHandler; returns the
// handler it replaced so a host can put it back.
ZOUTILS_EXPORT QtMessageHandler installZOSMessageHandler();

// Logs through the global log on the deferred path, with this file and line.
#define ZOS_LOG(message, type)                                                                   \
    do {                                                                                         \
        if (CZOSLog *zosLog_ = getLogObject())                                                   \
            zosLog_->log((message), QStringLiteral(__FILE__), __LINE__, QString(), long(type)); \
    } while (0)
