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

// What a modal dialog looked like when a step answered it.
struct Seen {
    QString kind; // "file" or "box"
    QString directory;
    QString typedName; // the file name box as the dialog opened
    QStringList nameFilters;
    QString title;
    QString text;
    bool noIsDefault = false;
    bool cancelIsEscape = false;
};

using Step = std::function<void(QWidget *)>;

QString dialogText(QWidget *w)
{
    if (auto *box = qobject_cast<QMessageBox *>(w))
        return box->text();
    return w->windowTitle();
}

// Answers the application's modal dialogs, one step per dialog seen, in order.
// A dialog that stays open (a refused name) gets the next step.
class Answerer : public QObject
{
public:
    explicit Answerer(QList<Step> steps) : m_steps(std::move(steps))
    {
        connect(&m_timer, &QTimer::timeout, this, &Answerer::poll);
        m_timer.start(20);
    }
    QList<Seen> seen;
    QStringList unexpected;

private:
    void poll()
    {
        QWidget *w = QApplication::activeModalWidget();
        if (!w || !w->isVisible() || m_busy)
            return;
        if (m_steps.isEmpty()) {
            // A dialog nobody expected: record it and close it so the test fails instead of hanging.
            unexpected << w->metaObject()->className() + QStringLiteral(": ") + dialogText(w);
            if (auto *dialog = qobject_cast<QDialog *>(w))
                dialog->reject();
            return;
        }
        Seen s;
        if (auto *dialog = qobject_cast<QFileDialog *>(w)) {
            s.kind = QStringLiteral("file");
            s.directory = dialog->directory().absolutePath();
            s.nameFilters = dialog->nameFilters();
            s.title = dialog->windowTitle();
            if (auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
                s.typedName = edit->text();
        } else if (auto *box = qobject_cast<QMessageBox *>(w)) {
            s.kind = QStringLiteral("box");
            s.title = box->windowTitle();
            s.text = box->text();
            s.noIsDefault = box->defaultButton() && box->defaultButton() == box->button(QMessageBox::No);
            s.cancelIsEscape = box->escapeButton() && box->escapeButton() == box->button(QMessageBox::Cancel);
        }
        seen << s;
        // Run from an event of its own: a step may open a nested modal dialog,
        // and this timer cannot fire again until its slot returns.
        const Step step = m_steps.takeFirst();
        m_busy = true;
        QTimer::singleShot(0, w, [this, step, w] {
            m_busy = false;
            step(w);
        });
    }
    QList<Step> m_steps;
    QTimer m_timer;
    bool m_busy = false; // a step is queued
};

// Chooses `filter` (when given), types `name` and presses Return, as a user would.
Step typeName(const QString &name, const QString &filter = QString())
{
    return [name, filter](QWidget *w) {
        auto *dialog = qobject_cast<QFileDialog *>(w);
        if (!dialog)
            return;
        if (!filter.isEmpty()) {
            auto *combo = dialog->findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
            const int index = combo ? combo->findText(filter) : -1;
            if (index >= 0) {
                combo->setCurrentIndex(index);
                emit combo->activated(index);
            }
        }
        auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        if (!edit)
            return;
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, name);
        QTest::keyClick(edit, Qt::Key_Return);
    };
}

Step pressEscape()
{
    return [](QWidget *w) { QTest::keyClick(w, Qt::Key_Escape); };
}

Step clickButton(QMessageBox::StandardButton which)
{
    return [which](QWidget *w) {
        if (auto *box = qobject_cast<QMessageBox *>(w))
            if (QAbstractButton *b = box->button(which))
                QTest::mouseClick(b, Qt::LeftButton);
    };
}

// Root passes every permission check; for the scope of this guard the
// process's real user (the one permission checks ask about) is "nobody".
class Unprivileged
{
public:
    Unprivileged() : m_active(geteuid() == 0) { QVERIFY(!m_active || setresuid(65534, 0, -1) == 0); }
    ~Unprivileged()
    {
        if (m_active)
            QVERIFY(setresuid(0, 0, -1) == 0);
    }
    Q_DISABLE_COPY(Unprivileged)

private:
    const bool m_active;
};

const QStringList kFilters{QStringLiteral("CSV files (*.csv)"), QStringLiteral("TIFF images (*.tif)"),
                           QStringLiteral("PNG images (*.png)")};
const QStringList kExtensions{QStringLiteral("csv"), QStringLiteral("tif"), QStringLiteral("png")};

} // namespace

class TestCZOSFileDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void folderPath_data();
    void folderPath();
    void openStartsInTheUsersFolder_data();
    void openStartsInTheUsersFolder();
    void openCancelled();
    void openUnreadableFile();
    void openSeveralFiles();
    void saveAddsTheFilterExtension_data();
    void saveAddsTheFilterExtension();
    void saveOffersTheProposedName();
    void saveNameLength_data();
    void saveNameLength();
    void overwriteQuestion_data();
    void overwriteQuestion();
    void saveIntoUnwritableFolder();
    void unreadableStartFolder();

private:
    QString path(const QString &name) const { return m_dir->path() + QLatin1Char('/') + name; }
    void touch(const QString &name);
    QScopedPointer<QTemporaryDir> m_dir;
    CZOSSettings *m_settings = nullptr;
};

void TestCZOSFileDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_settings = CZOPreference::getSettings();
    QVERIFY(m_settings);
}

void TestCZOSFileDialog::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
    // Others may look in: the permission tests act as another user.
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::permissions(m_dir->path()) | QFileDevice::ReadGroup
                                                     | QFileDevice::ExeGroup | QFileDevice::ReadOther
                                                     | QFileDevice::ExeOther));
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    for (const char *sub : {"open", "setup", "recent", "other"})
        QVERIFY(QDir(m_dir->path()).mkdir(QString::fromLatin1(sub)));
    m_settings->setOpenPath(path(QStringLiteral("open")));
    m_settings->setSetUpFileOpenPath(path(QStringLiteral("setup")));
    m_settings->setRecentFilePath(path(QStringLiteral("recent")));
    m_settings->setExportPath(QString());
    m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
}

void TestCZOSFileDialog::touch(const QString &name)
{
    QFile f(path(name));
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("x");
}

void TestCZOSFileDialog::folderPath_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    const QString d = QCoreApplication::applicationDirPath(); // a folder that exists
    QTest::newRow("folder with slash loses its first character") << d + "/" << d.mid(1) + "/";
    QTest::newRow("folder without slash kept") << d << d;
    QTest::newRow("file gives its folder") << d + "/a.tif" << d;
    QTest::newRow("missing folder with slash") << QStringLiteral("C:/data/") << QStringLiteral(":/data");
}

void TestCZOSFileDialog::folderPath()
{
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QCOMPARE(CZOSFileDialog::getFolderPath(input), expected);
}

void TestCZOSFileDialog::openStartsInTheUsersFolder_data()
{
    QTest::addColumn<bool>("setup");
    QTest::addColumn<bool>("remember");
    QTest::newRow("set-up file, remembered") << true << true;
    QTest::newRow("set-up file, not remembered") << true << false;
    QTest::newRow("other file, remembered") << false << true;
    QTest::newRow("other file, not remembered") << false << false;
}

void TestCZOSFileDialog::openStartsInTheUsersFolder()
{
    QFETCH(bool, setup);
    QFETCH(bool, remember);
    m_settings->getCustomizeInfo()->bSaveDiskPaths = remember;
    touch(QStringLiteral("other/scan.tif"));
    Answerer answer({typeName(path(QStringLiteral("other/scan.tif")))});
    QString fileName = QStringLiteral("untouched");
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QStringLiteral("Open scan"), fileName, kFilters, setup)),
             0);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen.size(), 1);
    QCOMPARE(answer.seen[0].directory, path(setup ? QStringLiteral("setup") : QStringLiteral("open")));
    QCOMPARE(answer.seen[0].nameFilters, kFilters);
    QCOMPARE(answer.seen[0].title, QStringLiteral("Open scan"));
    QCOMPARE(fileName, path(QStringLiteral("other/scan.tif")));

    const QString other = path(QStringLiteral("other"));
    QCOMPARE(m_settings->getSetUpFileOpenPath(), setup && remember ? other : path(QStringLiteral("setup")));
    QCOMPARE(m_settings->getOpenPath(), !setup && remember ? other : path(QStringLiteral("open")));
}

void TestCZOSFileDialog::openCancelled()
{
    Answerer answer({pressEscape()});
    QString fileName = QStringLiteral("untouched");
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QString(), fileName, kFilters, false)), 19);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(fileName, QStringLiteral("untouched"));
    QStringList names{QStringLiteral("untouched")};
    Answerer again({pressEscape()});
    QCOMPARE(int(CZOSFileDialog::getOpenFileNames(nullptr, QString(), names, kFilters)), 19);
    QCOMPARE(again.unexpected, QStringList());
    QCOMPARE(names, QStringList{QStringLiteral("untouched")});
}

void TestCZOSFileDialog::openUnreadableFile()
{
    touch(QStringLiteral("open/locked.tif"));
    QVERIFY(QFile::setPermissions(path(QStringLiteral("open/locked.tif")), QFileDevice::WriteOwner));
    Unprivileged nobody;
    Answerer answer({typeName(QStringLiteral("locked.tif")), clickButton(QMessageBox::Ok)});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QString(), fileName, kFilters, false)), 65);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen.size(), 2);
    QCOMPARE(answer.seen[1].text, QStringLiteral(" Read permissions not enabled for the specified Folder or File.\n")
                                      + path(QStringLiteral("open/locked.tif")));
    QCOMPARE(answer.seen[1].title, CZOUtilityFns::getAppName());
    QCOMPARE(fileName, QString());
    QCOMPARE(m_settings->getOpenPath(), path(QStringLiteral("open")));
}

void TestCZOSFileDialog::openSeveralFiles()
{
    touch(QStringLiteral("open/a.tif"));
    touch(QStringLiteral("open/b.tif"));
    m_settings->setOpenPath(path(QStringLiteral("open")) + QLatin1Char('/'));
    Answerer answer({typeName(QStringLiteral("\"a.tif\" \"b.tif\""))});
    QStringList names;
    QCOMPARE(int(CZOSFileDialog::getOpenFileNames(nullptr, QString(), names, kFilters)), 0);
    QCOMPARE(answer.unexpected, QStringList());
    names.sort();
    QCOMPARE(names, QStringList({path(QStringLiteral("open/a.tif")), path(QStringLiteral("open/b.tif"))}));
    QCOMPARE(m_settings->getOpenPath(), path(QStringLiteral("open")));
}

void TestCZOSFileDialog::saveAddsTheFilterExtension_data()
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

void TestCZOSFileDialog::saveAddsTheFilterExtension()
{
    QFETCH(QString, typed);
    QFETCH(QString, filter);
    QFETCH(QString, saved);
    Answerer answer({typeName(typed, filter)});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QStringLiteral("Save"), fileName, kExtensions, kFilters)),
             0);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen.size(), 1);
    QCOMPARE(answer.seen[0].directory, path(QStringLiteral("recent")));
    // The save dialog's filter text ends in ";;", which the toolkit shows as one more, empty, filter.
    QCOMPARE(answer.seen[0].nameFilters, kFilters + QStringList{QString()});
    QCOMPARE(fileName, path(QStringLiteral("recent/")) + saved);
    QVERIFY(!QFile::exists(fileName)); // choosing a name writes nothing
}

void TestCZOSFileDialog::saveOffersTheProposedName()
{
    m_settings->getCustomizeInfo()->bSaveDiskPaths = false;
    Answerer answer({typeName(path(QStringLiteral("other/x.csv"))), typeName(QStringLiteral("y.csv"))});
    QString fileName = QStringLiteral("elsewhere/report.csv");
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QString(), fileName, kExtensions, kFilters)), 0);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen[0].directory, path(QStringLiteral("recent")));
    QCOMPARE(answer.seen[0].typedName, QStringLiteral("report.csv"));
    QCOMPARE(fileName, path(QStringLiteral("other/x.csv")));
    // The chosen folder is the next start; it is kept on file only when remembered.
    QCOMPARE(m_settings->getRecentFilePath(), path(QStringLiteral("other")));
    QCOMPARE(m_settings->getExportPath(), QString());

    m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
    fileName = QStringLiteral("notes.txt"); // not one of the extensions: no name offered
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QString(), fileName, kExtensions, kFilters)), 0);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen[1].directory, path(QStringLiteral("other")));
    QCOMPARE(answer.seen[1].typedName, QString());
    QCOMPARE(m_settings->getExportPath(), path(QStringLiteral("other")));
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
    const QString name = QString(length - 4, QLatin1Char('n')) + QStringLiteral(".csv");
    // The toolkit's dialog itself refuses names the file system cannot hold;
    // the user then gives up.
    Answerer answer({typeName(name), clickButton(QMessageBox::Ok), pressEscape()});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QString(), fileName, kExtensions, kFilters)), status);
    QCOMPARE(answer.unexpected, QStringList());
    if (status == 0) {
        QCOMPARE(fileName, path(QStringLiteral("recent/")) + name);
        return;
    }
    QCOMPARE(fileName, QString());
    if (length > 255)
        return;
    QCOMPARE(answer.seen.size(), 2);
    const QString full = path(QStringLiteral("recent/")) + name;
    const int half = full.size() / 2;
    QCOMPARE(answer.seen[1].title, CZOUtilityFns::getAppName());
    QCOMPARE(answer.seen[1].text, QStringLiteral("The path you entered, \n'") + full.left(half) + QStringLiteral("\n")
                                      + full.mid(half) + QStringLiteral("',\nis too long. Enter a shorter path"));
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
    QFETCH(int, status);
    QFETCH(QString, saved);
    touch(QStringLiteral("recent/old.csv"));
    Answerer answer({typeName(QStringLiteral("old")),
                     clickButton(QMessageBox::StandardButton(button)),
                     typeName(QStringLiteral("new"))});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QString(), fileName, kExtensions, kFilters)), status);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(fileName, saved.isEmpty() ? QString() : path(QStringLiteral("recent/")) + saved);
    QCOMPARE(answer.seen.size(), button == QMessageBox::No ? 3 : 2);
    const Seen &box = answer.seen[1];
    QCOMPARE(box.kind, QStringLiteral("box"));
    QCOMPARE(box.title, CZOUtilityFns::getAppName());
    QCOMPARE(box.text, QStringLiteral("File: ") + path(QStringLiteral("recent/old.csv"))
                           + QStringLiteral(" exists in the specified path.\nOverwrite existing file?"));
    QVERIFY(box.noIsDefault);
    QVERIFY(box.cancelIsEscape);
    if (button == QMessageBox::No)
        QCOMPARE(answer.seen[2].kind, QStringLiteral("file"));
}

void TestCZOSFileDialog::saveIntoUnwritableFolder()
{
    const QString locked = path(QStringLiteral("locked"));
    QVERIFY(QDir().mkdir(locked));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadOther
                                              | QFileDevice::ExeOther));
    Unprivileged nobody;
    Answerer answer({typeName(locked + QStringLiteral("/out.csv")), clickButton(QMessageBox::Ok)});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getSaveFileName(nullptr, QString(), fileName, kExtensions, kFilters)), 64);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(answer.seen.size(), 2);
    QCOMPARE(answer.seen[1].text,
             QStringLiteral(" Write permissions not enabled for the specified Folder or File.\n") + locked);
    QCOMPARE(m_settings->getRecentFilePath(), path(QStringLiteral("recent"))); // nothing remembered
}

void TestCZOSFileDialog::unreadableStartFolder()
{
    QVERIFY(QFile::setPermissions(path(QStringLiteral("open")), QFileDevice::WriteOwner));
    Unprivileged nobody;
    touch(QStringLiteral("other/scan.tif"));
    Answerer answer({typeName(path(QStringLiteral("other/scan.tif")))});
    QString fileName;
    QCOMPARE(int(CZOSFileDialog::getOpenFileName(nullptr, QString(), fileName, kFilters, false)), 0);
    QCOMPARE(answer.unexpected, QStringList());
    QCOMPARE(fileName, path(QStringLiteral("other/scan.tif")));
    QVERIFY(QFile::setPermissions(path(QStringLiteral("open")), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                                   | QFileDevice::ExeOwner));
}

QTEST_MAIN(TestCZOSFileDialog)
#include "tst_czosfiledialog.moc"
