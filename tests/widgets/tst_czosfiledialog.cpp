#include "answerer.h"
#include "czopreference.h"
#include "czosfiledialog.h"
#include "czossettings.h"
#include "czoutilityfns.h"

#include <QPushButton>

namespace {

using Step = Answerer::Step;
Step type(const QString &name, const QString &filter = {}) { return Answerer::type(name, filter); }

const Step escape = [](QWidget *w) { QTest::keyClick(w, Qt::Key_Escape); };

Step click(int which)
{
    return [which](QWidget *w) {
        QTest::mouseClick(static_cast<QMessageBox *>(w)->button(QMessageBox::StandardButton(which)), Qt::LeftButton);
    };
}

const QStringList kFilters{"CSV files (*.csv)", "TIFF images (*.tif)", "PNG images (*.png)"};

} // namespace

class TestCZOSFileDialog : public QObject
{
    Q_OBJECT
private:
    QString path(const QString &name) const { return m_dir->path() + '/' + name; }
    int save(QString &name) { return CZOSFileDialog::getSaveFileName(nullptr, {}, name, {"csv", "tif", "png"}, kFilters); }
    int open(QString &name, bool setup) { return CZOSFileDialog::getOpenFileName(nullptr, {}, name, kFilters, setup); }
    void touch(const QString &name) { QVERIFY(QFile(path(name)).open(QIODevice::WriteOnly)); }
    QScopedPointer<QTemporaryDir> m_dir;
    CZOSSettings *m_settings = nullptr;
    const QString m_box = "box " + CZOUtilityFns::getAppName() + '|';
private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        m_settings = CZOPreference::getSettings();
    }

    void init()
    {
        m_dir.reset(new QTemporaryDir);
        qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
        for (const char *sub : {"open", "setup", "recent", "other"})
            QVERIFY(QDir(m_dir->path()).mkdir(sub));
        m_settings->setOpenPath(path("open"));
        m_settings->setSetUpFileOpenPath(path("setup"));
        m_settings->setRecentFilePath(path("recent"));
        m_settings->setExportPath(QString());
        m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
    }

    void open()
    {
        for (int remember = 0; remember < 2; ++remember) {
            for (bool setup : {true, false}) {
                init();
                m_settings->getCustomizeInfo()->bSaveDiskPaths = remember;
                touch("other/a.tif");
                Answerer answer({type(path("other/a.tif")), escape});
                QString fileName = "untouched";
                QCOMPARE(open(fileName, setup), 0);
                QCOMPARE(fileName, path("other/a.tif"));
                QCOMPARE(m_settings->getSetUpFileOpenPath(), path(setup && remember ? "other" : "setup"));
                QCOMPARE(m_settings->getOpenPath(), path(!setup && remember ? "other" : "open"));
                QCOMPARE(open(fileName, setup), 19); // cancelled: the name stays
                QCOMPARE(fileName, path("other/a.tif"));
                const QString start = path(remember ? "other" : setup ? "setup" : "open");
                QCOMPARE(answer.seen, QStringList({"file " + path(setup ? "setup" : "open") + ' ' + kFilters.join('|'),
                                                   "file " + start + ' ' + kFilters.join('|')}));
            }
        }
        touch("open/a.tif");
        touch("open/b.tif");
        m_settings->setOpenPath(path("open/"));
        Answerer answer({type("\"a.tif\" \"b.tif\"")});
        QStringList names;
        QCOMPARE(int(CZOSFileDialog::getOpenFileNames(nullptr, QString(), names, kFilters)), 0);
        QCOMPARE(names.size(), 2);
        QCOMPARE(m_settings->getOpenPath(), path("open"));
    }

    void saveExtension_data()
    {
        QTest::addColumn<QString>("typed"); QTest::addColumn<QString>("filter"); QTest::addColumn<QString>("saved");
        QTest::newRow("bare name gets the csv of its filter") << "report" << kFilters[0] << "report.csv";
        QTest::newRow("trailing dot replaced") << "report." << kFilters[0] << "report.csv";
        QTest::newRow("other filter, other extension") << "report" << kFilters[1] << "report.tif";
        QTest::newRow("known extension kept whatever its case") << "report.CSV" << kFilters[1] << "report.CSV";
        QTest::newRow("known extension of another filter kept") << "report.png" << kFilters[0] << "report.png";
        QTest::newRow("unknown suffix gets the extension") << "report.v2" << kFilters[0] << "report.v2.csv";
    }

    void saveExtension()
    {
        QFETCH(QString, typed); QFETCH(QString, filter); QFETCH(QString, saved);
        Answerer answer({type(typed, filter)});
        QString fileName;
        QCOMPARE(save(fileName), 0);
        QCOMPARE(fileName, path("recent/") + saved);
        // The filter text ends in ";;", which the toolkit shows as one more, empty, filter.
        QCOMPARE(answer.seen, QStringList{"file " + path("recent") + ' ' + kFilters.join('|') + '|'});
    }

    // Chosen, then gone before the dialog returns: the file cannot be read, its
    // folder not written; the user is told and the name is left as it was.
    void choiceGoneIsReported()
    {
        touch("other/a.tif");
        const auto thenRemove = [](const QString &gone, const Step &step) {
            return [=](QWidget *w) {
                connect(static_cast<QDialog *>(w), &QDialog::accepted, [gone] { QDir(gone).removeRecursively(), QFile::remove(gone); });
                step(w);
            };
        };
        Answerer answer({thenRemove(path("other/a.tif"), type(path("other/a.tif"))), click(QMessageBox::Ok),
                         thenRemove(path("other"), type(path("other/b.csv"))), click(QMessageBox::Ok)});
        QString fileName = "untouched";
        QCOMPARE(open(fileName, false), 65);
        QCOMPARE(save(fileName), 64);
        QCOMPARE(fileName, QStringLiteral("untouched"));
        QCOMPARE(answer.seen.size(), 4);
        QVERIFY2(answer.seen[1].startsWith(m_box) && answer.seen[1].endsWith('\n' + path("other/a.tif")), qPrintable(answer.seen[1]));
        QVERIFY2(answer.seen[3].startsWith(m_box) && answer.seen[3].endsWith('\n' + path("other")), qPrintable(answer.seen[3]));
    }

    void saveQuestions_data()
    {
        QTest::addColumn<QString>("typed"); QTest::addColumn<int>("button"); QTest::addColumn<int>("status");
        QTest::addColumn<QString>("saved");
        const QString longest = QString(181, 'n') + ".csv";
        QTest::newRow("185 characters pass") << longest << 0 << 0 << longest;
        QTest::newRow("186 characters refused") << "n" + longest << int(QMessageBox::Ok) << 19 << "";
        QTest::newRow("overwrite: yes") << "old" << int(QMessageBox::Yes) << 0 << "old.csv";
        QTest::newRow("overwrite: cancel aborts") << "old" << int(QMessageBox::Cancel) << 46 << "";
        QTest::newRow("overwrite: no asks again") << "old" << int(QMessageBox::No) << 0 << "new.csv";
    }

    void saveQuestions()
    {
        QFETCH(QString, typed); QFETCH(int, button); QFETCH(QString, saved);
        touch("recent/old.csv");
        bool defaults = false;
        Answerer answer({type(typed),
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
        QCOMPARE(answer.seen.size(), button == QMessageBox::No ? 3 : button ? 2 : 1);
        if (typed == "old")
            QVERIFY(defaults && answer.seen[1].startsWith(m_box + "File: " + path("recent/old.csv") + " exists"));
    }
};

QTEST_MAIN(TestCZOSFileDialog)
#include "tst_czosfiledialog.moc"
