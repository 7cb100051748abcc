// zodemo: the host application of the utility library. It starts up the way
// the imaging application does (message handler, log, preferences, a user),
// runs one simulated acquisition through the library, shows the results in
// its window and shuts down with the log's summary. With --headless it does
// the same without waiting for a person, saves PNGs of its window, plots and
// probe menu, and prints a report of what it did and where the files are.

#include "cplpreferencemanager.h"
#include "cplpreferenceuser.h"
#include "czopreference.h"
#include "czoslog.h"
#include "czosstatusprogressbar.h"
#include "czosglxyplot.h"
#include "czosutilitylibrary.h"
#include "czosxyplot.h"
#include "czotreemenucombobox.h"
#include "czoutilityfns.h"
#include "demoacquisition.h"
#include "demowindow.h"
#include "zoconstants.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace {

// Lets deferred log entries and paint events through.
void pump(int rounds = 3)
{
    for (int i = 0; i < rounds; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
}

// Selects the demo user "DEM", creating it on the first run.
void selectUser(bool headless)
{
    CPLPreferenceManager *manager = CZOPreference::getPreferenceManager();
    if (!headless)
        CZOPreference::doUserSelection();
    if (!CZOPreference::getActiveUser()) {
        const QString name = QStringLiteral("DEM");
        manager->addUser(name, QString()); // activates DEM when it exists already
        if (!CZOPreference::getActiveUser())
            manager->setActiveUser(unsigned(manager->getUserIndex(name)));
    }
    CZOPreference::readUserTxtFile();
}

QImage screenPicture(const QRect &area)
{
    QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->grabWindow(0, area.x(), area.y(), area.width(), area.height()).toImage() : QImage();
}

// The probe menu opened three levels deep, down to the green dyes.
QImage probeMenuPicture(CZOTreeMenuComboBox *combo)
{
    QMenu *menu = combo ? combo->menu() : nullptr;
    if (!menu)
        return QImage();
    const QStringList path{QStringLiteral("Fluorescent Probes"), QStringLiteral("By Emission Color"),
                           QStringLiteral("Green")};
    QList<QMenu *> open{menu};
    menu->popup(combo->mapToGlobal(QPoint(0, combo->height())));
    pump(3);
    QRect area = menu->geometry();
    for (const QString &title : path) {
        QMenu *parent = open.last();
        QMenu *sub = nullptr;
        for (QAction *action : parent->actions()) {
            if (action->menu() && action->text() == title) {
                sub = action->menu();
                parent->setActiveAction(action);
                sub->popup(parent->mapToGlobal(parent->actionGeometry(action).topRight()));
                break;
            }
        }
        if (!sub)
            break;
        pump(3);
        open << sub;
        area = area.united(sub->geometry());
    }
    // The cascade runs past the window's bottom edge, where the bare X screen
    // is black: only the window and the menus are kept, the rest transparent.
    const QRect grabbed = area.adjusted(-2, -2, 2, 2);
    QImage picture = screenPicture(grabbed).convertToFormat(QImage::Format_ARGB32);
    QRegion shown = combo->window()->frameGeometry();
    for (const QMenu *m : open)
        shown += m->geometry();
    if (!picture.isNull()) {
        QPainter painter(&picture);
        painter.setClipRegion((QRegion(grabbed) - shown).translated(-grabbed.topLeft()));
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.fillRect(picture.rect(), Qt::transparent);
    }
    for (int i = open.size() - 1; i >= 0; --i)
        open[i]->hide();
    return picture;
}

bool savePng(const QImage &image, const QString &path, QStringList &files)
{
    if (image.isNull() || !image.save(path))
        return false;
    files << path;
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(ZO_PRODUCT_NORBECK_INSTRUMENTS);
    QCoreApplication::setApplicationName(ZO_PRODUCT_ZOLVANE);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Runs one simulated acquisition through the zoutils library."));
    parser.addHelpOption();
    QCommandLineOption headlessOption(QStringLiteral("headless"), QStringLiteral("Run without waiting for a person."));
    QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("Output folder (default: ./zodemo-output)."),
                                 QStringLiteral("folder"), QStringLiteral("zodemo-output"));
    parser.addOption(headlessOption);
    parser.addOption(outOption);
    parser.process(app);
    const bool headless = parser.isSet(headlessOption);
    QDir().mkpath(parser.value(outOption));
    const QString out = QDir(parser.value(outOption)).absolutePath();

    // Everything the library writes lands in the output folder: the
    // application data folder, the machine-wide profile folder, the roaming one.
    qputenv("ZO_DATA_ROOT", QFile::encodeName(out + QStringLiteral("/appdata")));
    qputenv("ALLUSERSPROFILE", QFile::encodeName(out + QStringLiteral("/allusers")));
    qputenv("APPDATA", QFile::encodeName(out + QStringLiteral("/roaming")));

    // Start-up: toolkit messages into the log, the log, the preferences, a user.
    installZOSMessageHandler();
    CZOSLogEventHandler::install();
    beginLog(ZO_PRODUCT_ZOLVANE);
    CZOPreference::setAppVersion(QStringLiteral("4.7.2"));
    const tag_estatus prefStatus = CZOPreference::loadPreferences();
    selectUser(headless);
    ZOS_LOG(QStringLiteral("zodemo started, preferences status %1").arg(int(prefStatus)), ZOS_LOG_INFORMATION);

    DemoWindow window;
    window.show();
    pump();

    CZOSStatusProgressBar *progress = window.progressBar();
    progress->startProgress(QObject::tr("Acquiring"), DemoAcquisition::stepCount());
    DemoAcquisition acquisition(out);
    DemoResult result = acquisition.run([progress](int step, const QString &text) {
        progress->setProgress(text, step);
        pump(1);
        if (!qEnvironmentVariableIsSet("ZODEMO_FAST"))
            QThread::msleep(120); // slow enough to see the bar move
    });
    window.showResult(result);
    progress->endProgress(result.ok ? QObject::tr("Acquisition done") : QObject::tr("Acquisition failed"), 1500);
    pump();

    QStringList files = result.files;
    int exitCode = result.ok ? 0 : 1;
    if (headless) {
        window.resize(1200, 640);
        pump(5);
        // From the screen: a widget grab leaves the GL plot black.
        savePng(screenPicture(window.frameGeometry()), out + QStringLiteral("/window.png"), files);
        CZOSXYPlot *profile = window.profilePlot();
        savePng(profile->getPrintImage(), out + QStringLiteral("/profile.png"), files);
        for (const QString &name : {QStringLiteral("/profile.svg"), QStringLiteral("/profile.pdf")}) {
            if (profile->exportPlot(out + name))
                files << out + name;
        }
        // The peak as a rubber band drawn across it shows it, then back to the whole row.
        const auto peak = std::max_element(result.profileY.cbegin(), result.profileY.cend());
        if (peak != result.profileY.cend()) {
            const double x = result.profileX.value(int(peak - result.profileY.cbegin()));
            profile->setView(x - 80, x + 80, profile->getYDisplayMin(), profile->getYDisplayMax());
        }
        savePng(profile->getPrintImage(), out + QStringLiteral("/profile-zoomed.png"), files);
        profile->restoreAutoRange();
        savePng(window.histogramPlot()->getPrintImage(), out + QStringLiteral("/histogram.png"), files);
        savePng(probeMenuPicture(window.probeCombo()), out + QStringLiteral("/probe-menu.png"), files);
    } else {
        exitCode = app.exec();
    }

    // Shut-down: settings and profile saved, the log closed with its summary.
    CZOPreference::writeUserTxtFile();
    CZOPreference::getPreferenceManager()->saveData();
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    pump();
    CZOSLog *log = getLogObject();
    const QString logPath = log ? log->fileName() : QString();
    const int errors = log ? log->errors() : 0;
    const int warnings = log ? log->warnings() : 0;
    closeLog();
    if (!logPath.isEmpty())
        files << logPath;
    if (user) {
        QString name;
        user->getUserName(&name);
        files << CZOPreference::getUserProfileDirPath() + QStringLiteral("/profiles/") + name + QStringLiteral(".txt");
    }

    QTextStream report(stdout);
    report << "zodemo " << CZOUtilityFns::getAppName() << " (library marker " << fnZOSUtilityLibrary() << ")\n";
    report << "  user " << CZOPreference::getActiveUserName() << ", click " << result.clickNumber << "\n";
    for (const QString &line : qAsConst(result.report))
        report << "  " << line << "\n";
    report << "  log: " << errors << " errors, " << warnings << " warnings\n";
    report << "files in " << out << ":\n";
    for (const QString &file : qAsConst(files))
        report << "  " << QDir(out).relativeFilePath(file) << (QFileInfo::exists(file) ? "" : "  (missing)") << "\n";
    report.flush();
    return exitCode;
}
