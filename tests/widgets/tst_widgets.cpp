// The probe-tree combo box, the progress bars and the file dialog.
#include "answerer.h"
#include "czopreference.h"
#include "czosfiledialog.h"
#include "czoslog.h"
#include "czosprogressbar.h"
#include "czossettings.h"
#include "czosstatusprogressbar.h"
#include "czotreemenucombobox.h"
#include "czoutilityfns.h"
#include "testfiles.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QtTest>

namespace {

QString probe(int i) { return QStringLiteral("Probe %1").arg(i, 3, 10, QLatin1Char('0')); }

// `count` probes in two categories, after a "Recently Used" holding `recent`, then `extra`.
QByteArray probeFile(int count, const QStringList &recent = {}, const QString &extra = {})
{
    QString xml = "<?xml version=\"1.0\"?>\n<Category Name=\"Fluorescent Probes\">\n<Category Name=\"Recently Used\">\n";
    for (const QString &name : recent)
        xml += QStringLiteral("<PROBE Name=\"%1\"/>\n").arg(name);
    xml += "</Category>\n<Category Name=\"Dyes\">\n";
    for (int i = 0; i < count; ++i)
        xml += (i == count / 2 ? "</Category>\n<Category Name=\"Proteins\">\n" : "")
               + QStringLiteral("<PROBE Name=\"%1\"/>\n").arg(probe(i));
    return (xml + "</Category>\n" + extra + "</Category>\n").toUtf8();
}

QMenu *submenu(QMenu *menu, const QString &title)
{
    for (QAction *a : menu->actions())
        if (QMenu *sub = a->menu())
            if (QMenu *found = sub->title() == title ? sub : submenu(sub, title))
                return found;
    return nullptr;
}

QList<QAction *> actions(CZOTreeMenuComboBox &combo, QMenu *menu = nullptr)
{
    QList<QAction *> out;
    combo.obtainChilrentActionsOfRootMenu(&out, menu ? menu : combo.menu());
    return out;
}

// The texts of the probe actions under `menu`, all or only the checked ones.
QStringList texts(CZOTreeMenuComboBox &combo, bool checkedOnly = false, QMenu *menu = nullptr)
{
    QStringList out;
    for (QAction *a : actions(combo, menu))
        if (!checkedOnly || a->isChecked())
            out << a->text();
    return out;
}

QAction *action(CZOTreeMenuComboBox &combo, const QString &text) { return actions(combo).at(texts(combo).indexOf(text)); }

using Step = Answerer::Step;
// Chooses `filter` when given, types `name` and presses Return, as a user would.
Step type(const QString &name, const QString &filter = QString())
{
    return [name, filter](QWidget *w) {
        auto *combo = w->findChild<QComboBox *>("fileTypeCombo");
        const int index = combo && !filter.isEmpty() ? combo->findText(filter) : -1;
        if (index >= 0)
            combo->setCurrentIndex(index), emit combo->activated(index);
        auto *edit = w->findChild<QLineEdit *>("fileNameEdit");
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

const QStringList kFilters{"CSV files (*.csv)", "TIFF images (*.tif)", "PNG images (*.png)"};

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        CZOSLogEventHandler::install();
        QStandardPaths::setTestModeEnabled(true); // before the settings are made
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        m_settings = CZOPreference::getSettings();
    }
    void cleanup() { QCoreApplication::processEvents(), closeLog(); }
    void init()
    {
        closeLog(); // the file dialog tests start afresh more than once
        // "%2" in the folder catches texts built with chained arg() calls.
        m_dir.reset(new QTemporaryDir(QDir::tempPath() + "/widgets%2-XXXXXX"));
        useDataRoot(m_dir->path());
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        for (const char *sub : {"open", "setup", "recent", "other"})
            QVERIFY(QDir(m_dir->path()).mkdir(sub));
        m_settings->setOpenPath(path("open"));
        m_settings->setSetUpFileOpenPath(path("setup"));
        m_settings->setRecentFilePath(path("recent"));
        m_settings->setExportPath(QString());
        m_settings->getCustomizeInfo()->bSaveDiskPaths = true;
    }

    void builtInFileInstalledAndRewritable()
    {
        QStringList names;
        {
            CZOTreeMenuComboBox combo;
            QCOMPARE(readFile(probesPath()), readFile(CZOTreeMenuComboBox::builtInProbeFile()));
            QVERIFY(combo.loadedProbeCount() >= 98 && !logText().contains("Load Failed"));
            names = combo.probeNames();
            QVERIFY(combo.saveRecentUsedProbes({"EGFP", "Indocyanine Green"}));
        }
        CZOTreeMenuComboBox again;
        QStringList reread = again.probeNames();
        std::sort(names.begin(), names.end());
        std::sort(reread.begin(), reread.end());
        QCOMPARE(reread, names);

        // A folder in the file's place cannot be opened for writing, even by root.
        QVERIFY(QFile::remove(probesPath()) && QDir().mkpath(probesPath()));
        QVERIFY(!again.saveRecentUsedProbes({probe(1), "EGFP"}));
        QCOMPARE(again.recentlyUsedProbes(), QStringList({"EGFP", "Indocyanine Green"}));
        QVERIFY(logText().contains("Error   > Unable to add probes in use to recently used list. " + probesPath() + " : "));
    }

    void choosingFromTheMenu()
    {
        writeProbes(probeFile(100, {probe(7)}, "<Category Name=\"Recently Used Dyes\"><PROBE Name=\"Cy5\"/></Category>\n"));
        CZOTreeMenuComboBox combo;
        QCOMPARE(combo.recentlyUsedProbes(), QStringList{probe(7)}); // from the first branch of that name only
        combo.show();
        combo.showPopup();
        QVERIFY(QTest::qWaitForWindowExposed(combo.menu()));
        QCOMPARE(combo.menu()->grab().toImage().pixelColor(0, 10), QColor(Qt::black)); // the styled menu's border
        submenu(combo.menu(), "Dyes")->actions().at(7)->trigger();
        QCOMPARE(QStringList({combo.currentText(), combo.toolTip()}), QStringList({probe(7), combo.menu()->title()}));
        action(combo, probe(7))->trigger(); // chosen again, from either place: it stays checked in both
        QCOMPARE(texts(combo, true), QStringList({probe(7), probe(7)})); // in "Recently Used" too
        QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&combo, &move); // the tool tip gives a long name whole
        QCOMPARE(combo.toolTip(), probe(7));
        action(combo, probe(60))->trigger();
        QCOMPARE(combo.itemText(0), probe(60)); // newest on top
        QCOMPARE(texts(combo, true), QStringList({probe(60)}));
        action(combo, probe(7))->trigger(); // known: made current, not added
        QCOMPARE(qMakePair(combo.count(), combo.currentIndex()), qMakePair(2, 1));
        combo.setCurrentIndex(0); // choosing in the combo moves the check marks
        QCOMPARE(texts(combo, true), QStringList({probe(60)}));
        combo.setShowRecentlyUsedProbeList(false); // a rebuilt menu too
        QCOMPARE(texts(combo, true), QStringList({probe(60)}));
        // Reading the file again finds every probe again; a rebuilt menu replaces the old one.
        delete combo.createTreeModelFromFile(probesPath());
        combo.setAllowSelectMultiMenuItem(true), QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(combo.loadedProbeCount(), 101);
        QCOMPARE(combo.findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
    }

    void displayTypes()
    {
        const QStringList extras[] = {{}, {}, {"Qdot info", "Input Ex/Em"}, {"Unknown", "ALFood", "ALFree"}, {}};
        for (int type : {0, 2, 3, 9}) {
            writeProbes(probeFile(100));
            CZOTreeMenuComboBox combo(static_cast<PROBETREEDISPLAYTYPE>(type));
            QCOMPARE(texts(combo, false, nullptr).mid(100), extras[qMin(type, 4)]);
            QCOMPARE(combo.probeNames().contains("KRV-2"), type == 3);
            QVERIFY(combo.saveRecentUsedProbes({"Unknown"}));
            QCOMPARE(combo.recentlyUsedProbes().size(), type == 3 ? 1 : 0);
            if (type == 2) { // a user chooses a root item
                action(combo, "Input Ex/Em")->trigger();
                QCOMPARE(combo.currentText(), QStringLiteral("Input Ex/Em"));
            }
            const QByteArray written = readFile(probesPath()); // the extras are never written to the file
            QVERIFY(!written.contains("Qdot") && !written.contains("ALFood"));
        }
    }

    void recentList_data()
    {
        QTest::addColumn<QStringList>("inFile"); QTest::addColumn<QStringList>("used"); QTest::addColumn<bool>("result");
        QTest::addColumn<QStringList>("recent");
        const QString a = probe(1), b = probe(2), c = probe(3);
        QTest::newRow("later copy wins") << QStringList() << QStringList{a, b, a} << true << QStringList{a, b};
        QTest::newRow("merged, newest first") << QStringList{b, c} << QStringList{c, a} << true << QStringList{a, c, b};
        QTest::newRow("unknown, empty, null and other case skipped")
            << QStringList() << QStringList{a, "Not A Probe", "", QString(), a.toLower()} << true << QStringList{a};
        QStringList twelve, lastTen;
        for (int i = 0; i < 12; ++i)
            twelve << probe(i), lastTen.prepend(probe(i));
        QTest::newRow("twelve keep the last ten") << QStringList() << twelve << true << QStringList(lastTen.mid(0, 10));
        QTest::newRow("empty list refused") << QStringList{a} << QStringList() << false << QStringList{a};
    }

    void recentList()
    {
        QFETCH(QStringList, inFile); QFETCH(QStringList, recent);
        writeProbes(probeFile(100, inFile));
        {
            CZOTreeMenuComboBox combo;
            QCOMPARE(combo.recentlyUsedProbes(), inFile);
            QFETCH(QStringList, used);
            QTEST(combo.saveRecentUsedProbes(used), "result");
            QCOMPARE(texts(combo, false, submenu(combo.menu(), "Recently Used")), recent);
        }
        CZOTreeMenuComboBox reread;
        QCOMPARE(reread.recentlyUsedProbes(), recent);
        QCOMPARE(reread.loadedProbeCount(), 100);
    }

    void menuOptionsAndOneChildRule()
    {
        QByteArray xml = probeFile(100, {probe(5)}, "<Category Name=\"Lonely\"><PROBE Name=\"Only Child\"/></Category>\n"
                                                    "<Category Name=\"  \"><PROBE Name=\"inBlank\"/></Category>\n");
        writeProbes(xml.replace("Probe 001", "apricot").replace("Probe 002", "Zebra"));
        {
            CZOTreeMenuComboBox combo;
            // A blank category opens nothing: its probe sits beside it, its end closes nothing.
            QCOMPARE(combo.treeModel()->item(0)->child(0)->rowCount(), 5);
            combo.setShowRecentlyUsedProbeList(false);
            QVERIFY(!submenu(combo.menu(), "Recently Used") && submenu(combo.menu(), "Lonely"));
            combo.setAllowSelectMultiMenuItem(true);
            action(combo, probe(10))->trigger();
            action(combo, probe(70))->trigger();
            QCOMPARE(texts(combo, true), QStringList({probe(10), probe(70)}));
            QCOMPARE(combo.count(), 0);

            QStandardItem *root = combo.displayModel()->item(0);
            QVERIFY(!combo.addNewCategoryStdItemFromStringList(nullptr, "Alphabetical"));
            QVERIFY(!combo.addNewCategoryStdItemFromStringList(root, "  "));
            QVERIFY(combo.addNewCategoryStdItemFromStringList(root, "Alphabetical"));
            QMenu *alpha = submenu(combo.menu(), "Alphabetical");
            QStringList initials;
            for (QAction *a : alpha->actions())
                initials << a->text() + QString::number(a->menu()->actions().size());
            QCOMPARE(initials, QStringList({"A1", "I1", "O1", "P98", "Z1"}));
            QVERIFY(combo.saveRecentUsedProbes({"Only Child"}));
        }
        // The writer turns a one-child category into a probe of its name.
        const QByteArray written = readFile(probesPath());
        QVERIFY(written.contains("<PROBE Name=\"Lonely\"/>"));
        QCOMPARE(written.count("Only Child"), 1); // left only in the recent list
    }

    void badFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("loaded"); // -1: some, fewer than the file holds
        QTest::addColumn<QStringList>("logLines"); QTest::addColumn<bool>("rewritable");
        const QString shortLoad = "Load Failed: Expect to load 98 items, loaded  %1 items.";
        QTest::newRow("empty") << QByteArray() << 0 << QStringList{shortLoad.arg(0), "is not intact"} << false;
        QTest::newRow("not XML") << QByteArray("GFP, RFP\n") << 0 << QStringList{shortLoad.arg(0), "at line 1"} << false;
        const QByteArray full = probeFile(120);
        QTest::newRow("truncated") << full.left(full.size() / 2) << -1 << QStringList{"Premature end of document"}
                                   << false;
        QTest::newRow("97 probes keep the tree") << probeFile(97) << 97 << QStringList{shortLoad.arg(97)} << true;
        QByteArray deep = "<?xml version=\"1.0\"?>\n";
        for (int i = 0; i < 10000; ++i)
            deep += "<Category Name=\"L" + QByteArray::number(i) + "\">";
        deep += "<PROBE Name=\"Bottom\"/>" + QByteArray("</Category>").repeated(10000);
        QTest::newRow("10000 levels") << deep << 1 << QStringList{shortLoad.arg(1), "deeper than 32 levels"} << false;
    }

    void badFiles()
    {
        QFETCH(QByteArray, bytes); QFETCH(int, loaded); QFETCH(QStringList, logLines); QFETCH(bool, rewritable);
        writeProbes(bytes);
        CZOTreeMenuComboBox combo;
        const int count = combo.loadedProbeCount();
        QVERIFY(loaded >= 0 ? count == loaded : count > 0 && count < 120);
        QCOMPARE(texts(combo).size(), count);
        const QString log = logText();
        for (const QString &line : logLines << probesPath())
            QVERIFY2(log.contains(line), qPrintable(line + " not in\n" + log));
        // A damaged file is left for the user to repair, not overwritten with what could be read.
        QCOMPARE(combo.saveRecentUsedProbes({combo.probeNames().value(0)}), rewritable);
        QCOMPARE(readFile(probesPath()) == bytes, !rewritable);
    }
    void dialog()
    {
        QMainWindow hidden, shown;
        shown.show();
        for (bool canCancel : {true, false}) {
            CZOSProgressBar dialog(nullptr, "busy");
            QCOMPARE(dialog.parentWidget(), &shown); // the first visible main window
            dialog.setActivityText("x"), dialog.setProgress(3), dialog.initDialog();
            QCOMPARE(dialog.m_pActivityLabel->text() + QString::number(dialog.m_pProgBar->value()), QStringLiteral("0"));
            dialog.setCanCancel(canCancel);
            QSignalSpy terminated(&dialog, &CZOSProgressBar::terminate);
            dialog.show();
            QCOMPARE(dialog.m_pCancelButton->isVisible(), canCancel);
            // Escape cancels when allowed and is swallowed otherwise; only Escape terminates.
            QTest::keyClick(&dialog, Qt::Key_Escape);
            QCOMPARE(qMakePair(terminated.count(), dialog.isVisible()), qMakePair(canCancel ? 1 : 0, !canCancel));
            dialog.show();
            QCOMPARE(dialog.close(), canCancel);
        }
    }

    void abortAndEnd()
    {
        CZOSStatusProgressBar bar;
        QSignalSpy clicked(&bar, &CZOSStatusProgressBar::cancelClicked);
        bar.show();
        QTest::mouseClick(bar.m_pCancel, Qt::LeftButton); // idle: the message only
        QCOMPARE(bar.progressMessage(), QStringLiteral("Aborting..."));
        QVERIFY(!bar.isAborted() && clicked.isEmpty() && !bar.abort());
        bar.startProgress(QStringLiteral("Acquiring"), 5);
        QCOMPARE(bar.totalSteps(), 5);
        QTest::mouseClick(bar.m_pCancel, Qt::LeftButton);
        QVERIFY(bar.isAborted() && clicked.size() == 1);
        bar.endProgress();
        QVERIFY(!bar.isAborted() && !bar.isVisible() && !bar.inProgress());

        bar.setCancelMessage(QStringLiteral("Stopping..."));
        bar.setProgress(QStringLiteral("Saving"), 1, 2); // a message starts a run
        QVERIFY(bar.isVisible() && bar.inProgress());
        bar.setCanBeAborted(false);
        QVERIFY(!bar.m_pCancel->isEnabled());
        QVERIFY(bar.abort() && bar.isAborted());
        QCOMPARE(bar.progressMessage(), QStringLiteral("Stopping..."));
        bar.endProgress(QStringLiteral("Done"));
        QVERIFY(!bar.inProgress() && !bar.isAborted());
        QCOMPARE(qMakePair(bar.progressMessage(), bar.progressStep()), qMakePair(QStringLiteral("Done"), -1));
        QTest::qWait(1000);
        QVERIFY(bar.isVisible()); // still shown with its last word
        QTRY_VERIFY_WITH_TIMEOUT(!bar.isVisible(), 5000);
    }

    void statusBarTakesTheMessages()
    {
        QMainWindow window;
        QStatusBar *statusBar = window.statusBar();
        window.show();
        auto *bar = new CZOSStatusProgressBar;
        statusBar->addPermanentWidget(bar);
        bar->setStatusBar(statusBar);
        bar->startProgress(QStringLiteral("Acquiring"), 5);
        QCOMPARE(statusBar->currentMessage(), QStringLiteral("Acquiring"));
        QVERIFY(!bar->m_pLblMsg->isVisible());
        QTest::mouseClick(bar->m_pCancel, Qt::LeftButton);
        QCOMPARE(statusBar->currentMessage(), QStringLiteral("Aborting..."));
        bar->hide();
        QCOMPARE(statusBar->currentMessage(), QString());
        bar->startProgress(QStringLiteral("Again"), 5); // shown again: no taller than the bar it sits in
        QCOMPARE(bar->maximumHeight(), statusBar->height());

        auto *other = new QStatusBar;
        bar->setStatusBar(other);
        delete other; // the widget forgets it
        QCOMPARE(bar->statusBar(), static_cast<QStatusBar *>(nullptr));
        bar->setProgress(QStringLiteral("Alone"), 1);
        QVERIFY(bar->m_pLblMsg->isVisible());
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
        QCOMPARE(m_settings->getExportPath(), path("recent")); // the folder kept on file
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

private:
    QString probesPath() const { return m_dir->filePath("Probes/ProbesTree.xml"); }
    void writeProbes(const QByteArray &bytes)
    {
        QVERIFY(QDir().mkpath(m_dir->filePath("Probes")) && ::writeFile(probesPath(), bytes));
    }
    QString logText()
    {
        QCoreApplication::processEvents(); // the log writes on the event loop
        return QString::fromUtf8(readFile(m_dir->filePath("zoactivity.log")));
    }
    QString path(const QString &name) const { return m_dir->path() + '/' + name; }
    int save(QString &name) { return CZOSFileDialog::getSaveFileName(nullptr, {}, name, {"csv", "tif", "png"}, kFilters); }
    int open(QString &name, bool setup) { return CZOSFileDialog::getOpenFileName(nullptr, {}, name, kFilters, setup); }
    void touch(const QString &name) { QVERIFY(QFile(path(name)).open(QIODevice::WriteOnly)); }
    QScopedPointer<QTemporaryDir> m_dir;
    CZOSSettings *m_settings = nullptr;
    const QString m_box = "box " + CZOUtilityFns::getAppName() + '|';
};

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
