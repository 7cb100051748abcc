#include "czopreference.h"
#include "czosfiledialog.h"
#include "czossettings.h"
#include "czoutilityfns.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

#include <functional>

#include <unistd.h>

namespace {

using Step = std::function<void(QWidget *)>;

// Answers the application's modal dialogs, one step per dialog seen, and records each: "file <folder> <filters>"
// or "box <title>|<text>". A dialog beyond the steps is recorded as "unexpected" and closed, so a test fails
// instead of hanging.
class Answerer : public QObject
{
public:
    explicit Answerer(QList<Step> steps) : m_steps(std::move(steps))
    {
        connect(&m_timer, &QTimer::timeout, this, &Answerer::poll);
        m_timer.start(20);
    }
    QStringList seen;

private:
    void poll()
    {
        QWidget *w = QApplication::activeModalWidget();
        if (!w || !w->isVisible() || m_busy)
            return;
        if (auto *d = qobject_cast<QFileDialog *>(w))
            seen << "file " + d->directory().absolutePath() + ' ' + d->nameFilters().join('|');
        else if (auto *box = qobject_cast<QMessageBox *>(w))
            seen << "box " + box->windowTitle() + '|' + box->text();
        if (m_steps.isEmpty()) {
            seen.last().prepend("unexpected ");
            static_cast<QDialog *>(w)->reject();
            return;
        }
        // From an event of its own: the step may open a nested modal dialog.
        m_busy = true;
        QTimer::singleShot(0, w, [this, w, step = m_steps.takeFirst()] { m_busy = false, step(w); });
    }
    QList<Step> m_steps;
    QTimer m_timer;
    bool m_busy = false;
};

// Chooses `filter` when given, types `name` and presses Return, as a user would.
Step type(const QString &name, const QString &filter = QString())
{
    return [name, filter](QWidget *w) {
        auto *combo = w->findChild<QComboBox *>("fileTypeCombo");
        const int index = combo ? combo->findText(filter) : -1;
        if (!filter.isEmpty() && index >= 0) {
            combo->setCurrentIndex(index);
            emit combo->activated(index);
        }
        auto *edit = w->findChild<QLineEdit *>("fileNameEdit");
        QVERIFY(edit);
        edit->clear();
        QTest::keyClicks(edit, name);
        QTest::keyClick(edit, Qt::Key_Return);
    };
}

const Step escape = [](QWidget *w) { QTest::keyClick(w, Qt::Key_Escape); };

Step click(int which)
{
    return [which](QWidget *w) {
        QTest::mouseClick(static_cast<QMessageBox *>(w)->button(QMessageBox::StandardButton(which)), Qt::LeftButton);
    };
}

// Root passes every permission check; inside this guard the real user, the one that permission checks ask
// about, is "nobody".
struct Unprivileged {
    const bool active = geteuid() == 0;
    Unprivileged() { QVERIFY(!active || setresuid(65534, 0, -1) == 0); }
    ~Unprivileged() { QVERIFY(!active || setresuid(0, 0, -1) == 0); }
};

const QStringList kFilters{"CSV files (*.csv)", "TIFF images (*.tif)", "PNG images (*.png)"};
const QStringList kExtensions{"csv", "tif", "png"};

} // namespace

class TestCZOSFileDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void folderPath_data();
    void folderPath();
    void open_data();
    void open();
    void openSeveralFiles();
    void saveExtension_data();
    void saveExtension();
    void saveStartsWithTheProposedName();
    void saveNameLength_data();
    void saveNameLength();
    void overwriteQuestion_data();
    void overwriteQuestion();
    void permissions();

private:
    QString path(const QString &name) const { return m_dir->path() + '/' + name; }
    QString dialogSeen(const QString &folder, const QStringList &filters = kFilters) const
    {
        return "file " + path(folder) + ' ' + filters.join('|');
    }
    int save(QString &fileName) { return CZOSFileDialog::getSaveFileName(nullptr, {}, fileName, kExtensions, kFilters); }
    void touch(const QString &name) { QVERIFY(QFile(path(name)).open(QIODevice::WriteOnly)); }
    QScopedPointer<QTemporaryDir> m_dir;
    CZOSSettings *m_settings = nullptr;
    const QString m_box = "box " + CZOUtilityFns::getAppName() + '|';
};

void TestCZOSFileDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_settings = CZOPreference::getSettings();
}

void TestCZOSFileDialog::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
    // Group and others may look in: the permission test acts as another user.
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::permissions(m_dir->path()) | QFileDevice::ReadGroup
                                                     | QFileDevice::ExeGroup | QFileDevice::ReadOther
                                                     | QFileDevice::ExeOther));
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    for (const char *sub : {"open", "setup", "recent", "other"})
        QVERIFY(QDir(m_dir->path()).mkdir(sub));
    m_settings->setOpenPath(path("open"));
    m_settings->setSetUpFileOpenPath(path("setup"));
    m_settings->setRecentFilePath(path("recent"));
    m_settings->setExportPath(QString());
    m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
}

void TestCZOSFileDialog::folderPath_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    const QString d = QCoreApplication::applicationDirPath(); // a folder that exists
    QTest::newRow("folder with slash loses its first character") << d + "/" << d.mid(1) + "/";
    QTest::newRow("folder without slash kept") << d << d;
    QTest::newRow("file gives its folder") << d + "/a.tif" << d;
    QTest::newRow("missing folder with slash") << "C:/data/" << ":/data";
}

void TestCZOSFileDialog::folderPath()
{
    QFETCH(QString, input);
    QTEST(CZOSFileDialog::getFolderPath(input), "expected");
}

void TestCZOSFileDialog::open_data()
{
    QTest::addColumn<bool>("setup");
    QTest::addColumn<bool>("remember");
    QTest::newRow("set-up file, remembered") << true << true;
    QTest::newRow("set-up file, not remembered") << true << false;
    QTest::newRow("other file, remembered") << false << true;
    QTest::newRow("other file, not remembered") << false << false;
}

void TestCZOSFileDialog::open()
{
    QFETCH(bool, setup);
    QFETCH(bool, remember);
    m_settings->getCustomizeInfo()->bSaveDiskPaths = remember;
    touch("other/scan.tif");
    Answerer answer({type(path("other/scan.tif")), escape});
    QString fileName = "untouched";
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, "Open", fileName, kFilters, setup)), 0);
    QCOMPARE(fileName, path("other/scan.tif"));
    QCOMPARE(m_settings->getSetUpFileOpenPath(), path(setup && remember ? "other" : "setup"));
    QCOMPARE(m_settings->getOpenPath(), path(!setup && remember ? "other" : "open"));
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, "Open", fileName, kFilters, setup)), 19); // cancelled
    QCOMPARE(fileName, path("other/scan.tif"));
    const QString start = remember ? "other" : setup ? "setup" : "open";
    QCOMPARE(answer.seen, QStringList({dialogSeen(setup ? "setup" : "open"), dialogSeen(start)}));
}

void TestCZOSFileDialog::openSeveralFiles()
{
    touch("open/a.tif");
    touch("open/b.tif");
    m_settings->setOpenPath(path("open/"));
    Answerer answer({type("\"a.tif\" \"b.tif\""), escape});
    QStringList names;
    QCOMPARE(int(CZOSFileDialog::getOpenFileNames(nullptr, QString(), names, kFilters)), 0);
    names.sort();
    QCOMPARE(names, QStringList({path("open/a.tif"), path("open/b.tif")}));
    QCOMPARE(m_settings->getOpenPath(), path("open"));
    QCOMPARE(int(CZOSFileDialog::getOpenFileNames(nullptr, QString(), names, kFilters)), 19);
    QCOMPARE(names.size(), 2);
}

void TestCZOSFileDialog::saveExtension_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("saved");
    QTest::newRow("bare name gets the csv of its filter") << "report" << kFilters[0] << "report.csv";
    QTest::newRow("trailing dot replaced") << "report." << kFilters[0] << "report.csv";
    QTest::newRow("other filter, other extension") << "report" << kFilters[1] << "report.tif";
    QTest::newRow("known extension kept whatever its case") << "report.CSV" << kFilters[1] << "report.CSV";
    QTest::newRow("known extension of another filter kept") << "report.png" << kFilters[0] << "report.png";
    QTest::newRow("unknown suffix gets the extension") << "report.v2" << kFilters[0] << "report.v2.csv";
}

void TestCZOSFileDialog::saveExtension()
{
    QFETCH(QString, typed);
    QFETCH(QString, filter);
    QFETCH(QString, saved);
    Answerer answer({type(typed, filter)});
    QString fileName;
    QCOMPARE(save(fileName), 0);
    QCOMPARE(fileName, path("recent/") + saved);
    // The filter text ends in ";;", which the toolkit shows as one more, empty, filter.
    QCOMPARE(answer.seen, QStringList{dialogSeen("recent", kFilters + QStringList{QString()})});
}

void TestCZOSFileDialog::saveStartsWithTheProposedName()
{
    m_settings->getCustomizeInfo()->bSaveDiskPaths = false;
    QString offered;
    Step look = [&offered](QWidget *w) { offered = w->findChild<QLineEdit *>("fileNameEdit")->text(); };
    Answerer answer({[=](QWidget *w) { look(w), type(path("other/x.csv"))(w); },
                     [=](QWidget *w) { look(w), type("y.csv")(w); }});
    QString fileName = "elsewhere/report.csv";
    QCOMPARE(save(fileName), 0);
    QCOMPARE(offered, QStringLiteral("report.csv"));
    QCOMPARE(fileName, path("other/x.csv"));
    QCOMPARE(m_settings->getRecentFilePath(), path("other")); // the next start
    QCOMPARE(m_settings->getExportPath(), QString());         // kept on file only when remembered

    m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
    fileName = "notes.txt"; // not one of the extensions: no name offered
    QCOMPARE(save(fileName), 0);
    QCOMPARE(offered, QString());
    QVERIFY(answer.seen.last().startsWith("file " + path("other ")));
    QCOMPARE(m_settings->getExportPath(), path("other"));
}

void TestCZOSFileDialog::saveNameLength_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("status");
    QTest::newRow("185 characters pass") << 185 << 0;
    QTest::newRow("186 characters refused") << 186 << 19;
    QTest::newRow("1000 characters refused") << 1000 << 19;
}

void TestCZOSFileDialog::saveNameLength()
{
    QFETCH(int, length);
    QFETCH(int, status);
    const QString name = QString(length - 4, 'n') + ".csv";
    // Past 255 the toolkit's dialog keeps the name from being accepted; the user gives up.
    Answerer answer({type(name), length > 255 ? escape : click(QMessageBox::Ok)});
    QString fileName;
    QCOMPARE(save(fileName), status);
    const QString full = path("recent/") + name;
    QCOMPARE(fileName, status == 0 ? full : QString());
    const int half = full.size() / 2;
    if (length == 186)
        QCOMPARE(answer.seen.value(1), m_box + "The path you entered, \n'" + full.left(half) + "\n" + full.mid(half)
                                           + "',\nis too long. Enter a shorter path");
}

void TestCZOSFileDialog::overwriteQuestion_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("saved");
    QTest::newRow("yes overwrites") << int(QMessageBox::Yes) << 0 << "old.csv";
    QTest::newRow("cancel aborts") << int(QMessageBox::Cancel) << 46 << "";
    QTest::newRow("no asks again") << int(QMessageBox::No) << 0 << "new.csv";
}

void TestCZOSFileDialog::overwriteQuestion()
{
    QFETCH(int, button);
    QFETCH(QString, saved);
    touch("recent/old.csv");
    bool defaults = false;
    Answerer answer({type("old"),
                     [&defaults, button](QWidget *w) {
                         auto *box = static_cast<QMessageBox *>(w);
                         defaults = box->defaultButton() == static_cast<QPushButton *>(box->button(QMessageBox::No))
                                    && box->escapeButton() == box->button(QMessageBox::Cancel);
                         click(button)(w);
                     },
                     type("new")});
    QString fileName;
    QTEST(save(fileName), "status");
    QCOMPARE(fileName, saved.isEmpty() ? QString() : path("recent/") + saved);
    QVERIFY(defaults);
    QCOMPARE(answer.seen.value(1), m_box + "File: " + path("recent/old.csv")
                                       + " exists in the specified path.\nOverwrite existing file?");
    QCOMPARE(answer.seen.size(), button == QMessageBox::No ? 3 : 2);
}

void TestCZOSFileDialog::permissions()
{
    touch("open/locked.tif");
    QVERIFY(QFile::setPermissions(path("open/locked.tif"), QFileDevice::WriteOwner));
    QVERIFY(QDir().mkdir(path("locked")));
    QVERIFY(QFile::setPermissions(path("locked"), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    QVERIFY(QFile::setPermissions(path("setup"), QFileDevice::WriteOwner));
    touch("other/scan.tif");
    Unprivileged nobody;
    Answerer answer({type("locked.tif"), click(QMessageBox::Ok), type(path("locked/out.csv")), click(QMessageBox::Ok),
                     type(path("other/scan.tif"))});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QString(), fileName, kFilters, false)), 65);
    QCOMPARE(answer.seen.value(1), m_box + " Read permissions not enabled for the specified Folder or File.\n"
                                       + path("open/locked.tif"));
    QCOMPARE(save(fileName), 64);
    QCOMPARE(answer.seen.value(3), m_box + " Write permissions not enabled for the specified Folder or File.\n"
                                       + path("locked"));
    QCOMPARE(fileName, QString());
    QCOMPARE(m_settings->getRecentFilePath(), path("recent")); // nothing remembered
    // An unreadable start folder still lets the user go elsewhere.
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QString(), fileName, kFilters, true)), 0);
    QCOMPARE(fileName, path("other/scan.tif"));
    QCOMPARE(answer.seen.size(), 5);
}

QTEST_MAIN(TestCZOSFileDialog)
#include "tst_czosfiledialog.moc"
