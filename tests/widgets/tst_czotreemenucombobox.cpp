#include "czoslog.h"
#include "czotreemenucombobox.h"

#include <QMenu>
#include <QStandardItemModel>
#include <QtTest>

namespace {

QString probeName(int i)
{
    return QStringLiteral("Probe %1").arg(i, 3, 10, QLatin1Char('0'));
}

// A well-formed probe file: `count` probes in two categories, and the
// recently used names given.
QByteArray probeFile(int count, const QStringList &recent = {})
{
    QString xml = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<Category Name=\"Fluorescent Probes\">\n"
                                 "    <Category Name=\"Recently Used\">\n");
    for (const QString &name : recent)
        xml += QStringLiteral("        <PROBE Name=\"%1\"/>\n").arg(name);
    xml += QStringLiteral("    </Category>\n    <Category Name=\"Dyes\">\n");
    for (int i = 0; i < count; ++i) {
        if (i == count / 2)
            xml += QStringLiteral("    </Category>\n    <Category Name=\"Proteins\">\n");
        xml += QStringLiteral("        <PROBE Name=\"%1\"/>\n").arg(probeName(i));
    }
    xml += QStringLiteral("    </Category>\n</Category>\n");
    return xml.toUtf8();
}

QAction *findAction(QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (QMenu *sub = action->menu()) {
            if (QAction *found = findAction(sub, text))
                return found;
        } else if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

QMenu *findSubmenu(QMenu *menu, const QString &title)
{
    for (QAction *action : menu->actions()) {
        if (QMenu *sub = action->menu()) {
            if (sub->title() == title)
                return sub;
            if (QMenu *found = findSubmenu(sub, title))
                return found;
        }
    }
    return nullptr;
}

QStringList checkedTexts(CZOTreeMenuComboBox &combo)
{
    QList<QAction *> actions;
    combo.obtainChilrentActionsOfRootMenu(&actions, combo.menu());
    QStringList texts;
    for (QAction *a : actions)
        if (a->isChecked())
            texts << a->text();
    return texts;
}

QStringList comboItems(const QComboBox &combo)
{
    QStringList items;
    for (int i = 0; i < combo.count(); ++i)
        items << combo.itemText(i);
    return items;
}

int depthBelow(const QStandardItem *item)
{
    int deepest = 0;
    for (int r = 0; r < item->rowCount(); ++r)
        deepest = std::max(deepest, 1 + depthBelow(item->child(r)));
    return deepest;
}

// Branches with exactly one child lose it when written back.
void collectSingleChildBranches(const QStandardItem *item, QStringList *out)
{
    for (int r = 0; r < item->rowCount(); ++r) {
        const QStandardItem *child = item->child(r);
        if (child->rowCount() == 1)
            *out << child->text();
        collectSingleChildBranches(child, out);
    }
}

} // namespace

class TestCZOTreeMenuComboBox : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void builtInFileInstalledOnFirstUse();
    void builtInFileSurvivesRewriting();
    void choosingFromTheMenu();
    void clickingARootItem();
    void displayTypes_data();
    void displayTypes();
    void recentList_data();
    void recentList();
    void recentListMergesWithTheFile();
    void recentMenuAndMultipleSelection();
    void oneChildCategoryWrittenAsProbe();
    void alphabeticalCategory();
    void badFiles_data();
    void badFiles();
    void blankNamesKeepTheStructure();
    void missingFileLogged();
    void unwritableFileLogged();
    void noProbeFolderUsesTheBuiltInList();

private:
    QString probesPath() const { return m_dir->filePath(QStringLiteral("Probes/ProbesTree.xml")); }
    void writeProbes(const QByteArray &bytes);
    QString logText();
    QScopedPointer<QTemporaryDir> m_dir;
};

void TestCZOTreeMenuComboBox::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(CZOSLogEventHandler::install());
}

void TestCZOTreeMenuComboBox::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
}

void TestCZOTreeMenuComboBox::cleanup()
{
    QCoreApplication::processEvents();
    closeLog();
}

void TestCZOTreeMenuComboBox::writeProbes(const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("Probes"))));
    QFile f(probesPath());
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

QString TestCZOTreeMenuComboBox::logText()
{
    QCoreApplication::processEvents(); // the log writes on the event loop
    QFile f(m_dir->filePath(QStringLiteral("zoactivity.log")));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

void TestCZOTreeMenuComboBox::builtInFileInstalledOnFirstUse()
{
    QVERIFY(!QFile::exists(probesPath()));
    CZOTreeMenuComboBox combo;
    QCOMPARE(combo.filePath(), probesPath());
    QFile installed(probesPath());
    QVERIFY(installed.open(QIODevice::ReadOnly));
    QFile builtIn(CZOTreeMenuComboBox::builtInProbeFile());
    QVERIFY(builtIn.open(QIODevice::ReadOnly));
    QCOMPARE(installed.readAll(), builtIn.readAll());
    QVERIFY(QFileInfo(probesPath()).isWritable());

    QVERIFY(combo.loadedProbeCount() >= CZOTreeMenuComboBox::expectedMinimumProbes());
    QCOMPARE(combo.probeNames().size(), combo.loadedProbeCount());
    QCOMPARE(combo.recentlyUsedProbes(), QStringList());
    QVERIFY(!logText().contains(QStringLiteral("Load Failed")));
    QCOMPARE(combo.count(), 0);

    // Every probe can be chosen from the menu.
    QList<QAction *> actions;
    combo.obtainChilrentActionsOfRootMenu(&actions, combo.menu());
    QSet<QString> offered;
    for (QAction *a : actions)
        offered.insert(a->text());
    for (const QString &name : combo.probeNames())
        QVERIFY2(offered.contains(name), qPrintable(name));

    // No category of the shipped file may lose its probe when written back.
    QStringList single;
    collectSingleChildBranches(combo.treeModel()->item(0), &single);
    QCOMPARE(single, QStringList());
}

void TestCZOTreeMenuComboBox::builtInFileSurvivesRewriting()
{
    QStringList before;
    {
        CZOTreeMenuComboBox combo;
        before = combo.probeNames();
        QVERIFY(combo.saveRecentUsedProbes({QStringLiteral("EGFP"), QStringLiteral("Indocyanine Green")}));
    }
    CZOTreeMenuComboBox again;
    QStringList after = again.probeNames();
    after.sort();
    before.sort();
    QCOMPARE(after, before); // the recent names now come first in file order
    QCOMPARE(again.recentlyUsedProbes(), QStringList({QStringLiteral("Indocyanine Green"), QStringLiteral("EGFP")}));
    QMenu *recent = findSubmenu(again.menu(), QStringLiteral("Recently Used"));
    QVERIFY(recent);
    QCOMPARE(recent->actions().size(), 2);
    QCOMPARE(recent->actions().first()->text(), QStringLiteral("Indocyanine Green"));
}

void TestCZOTreeMenuComboBox::choosingFromTheMenu()
{
    writeProbes(probeFile(100, {probeName(7)}));
    CZOTreeMenuComboBox combo;
    combo.show();
    combo.showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(combo.menu()));
    QCOMPARE(combo.menu()->actions().size(), 1); // the file's one top category
    QVERIFY(combo.menu()->styleSheet().startsWith(QStringLiteral("QMenu {background-color: white;")));

    QAction *seven = findAction(findSubmenu(combo.menu(), QStringLiteral("Dyes")), probeName(7));
    QVERIFY(seven && seven->isCheckable());
    seven->trigger();
    QCOMPARE(comboItems(combo), QStringList({probeName(7)}));
    QCOMPARE(combo.currentText(), probeName(7));
    // Also in "Recently Used": every action of the probe is checked.
    QCOMPARE(checkedTexts(combo), QStringList({probeName(7), probeName(7)}));

    QAction *sixty = findAction(combo.menu(), probeName(60));
    sixty->trigger();
    QCOMPARE(comboItems(combo), QStringList({probeName(60), probeName(7)}));
    QCOMPARE(checkedTexts(combo), QStringList({probeName(60)}));

    // A probe already in the combo becomes current, not a second item.
    findAction(combo.menu(), probeName(7))->trigger();
    QCOMPARE(comboItems(combo), QStringList({probeName(60), probeName(7)}));
    QCOMPARE(combo.currentIndex(), 1);

    // Choosing in the combo itself moves the check marks.
    combo.setCurrentIndex(0);
    QCOMPARE(checkedTexts(combo), QStringList({probeName(60)}));
}

void TestCZOTreeMenuComboBox::clickingARootItem()
{
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo(PROBETREE_AUTOFLUORESCENCE);
    combo.show();
    combo.showPopup();
    QMenu *menu = combo.menu();
    QVERIFY(QTest::qWaitForWindowExposed(menu));
    QAction *food = findAction(menu, QStringLiteral("ALFood"));
    QVERIFY(food);
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(food).center());
    QCOMPARE(combo.currentText(), QStringLiteral("ALFood"));
    QVERIFY(food->isChecked());
    QTRY_VERIFY(!menu->isVisible());
}

void TestCZOTreeMenuComboBox::displayTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("extraRootItems");
    QTest::addColumn<bool>("extraProbeNames");
    QTest::newRow("0 adds nothing") << 0 << QStringList() << false;
    QTest::newRow("1 quantum dots and input") << 1 << QStringList{"Qdot info", "Input Ex/Em"} << false;
    QTest::newRow("2 like 1") << 2 << QStringList{"Qdot info", "Input Ex/Em"} << false;
    QTest::newRow("3 autofluorescence") << 3 << QStringList{"Unknown", "ALFood", "ALFree"} << true;
    QTest::newRow("4 like 3") << 4 << QStringList{"Unknown", "ALFood", "ALFree"} << true;
    QTest::newRow("unknown value adds nothing") << 9 << QStringList() << false;
}

void TestCZOTreeMenuComboBox::displayTypes()
{
    QFETCH(int, type);
    QFETCH(QStringList, extraRootItems);
    QFETCH(bool, extraProbeNames);
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo(static_cast<PROBETREEDISPLAYTYPE>(type));
    QStringList rootTexts;
    for (QAction *a : combo.menu()->actions())
        rootTexts << a->text();
    QCOMPARE(rootTexts, QStringList{"Fluorescent Probes"} + extraRootItems);
    QCOMPARE(combo.loadedProbeCount(), 100);
    QCOMPARE(combo.probeNames().contains(QStringLiteral("KRV-2")), extraProbeNames);
    QCOMPARE(combo.probeNames().contains(QStringLiteral("Unknown")), extraProbeNames);
    // The extras are shown, never written to the file.
    QVERIFY(combo.saveRecentUsedProbes({probeName(1)}));
    QFile f(probesPath());
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray written = f.readAll();
    QVERIFY(!written.contains("Qdot") && !written.contains("ALFood"));
}

void TestCZOTreeMenuComboBox::recentList_data()
{
    QTest::addColumn<QStringList>("used");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QStringList>("recent");
    const QString a = probeName(1), b = probeName(2), c = probeName(3);
    QTest::newRow("later copy wins") << QStringList{a, b, a} << true << QStringList{a, b};
    QTest::newRow("last given first") << QStringList{a, b, c} << true << QStringList{c, b, a};
    QTest::newRow("unknown, empty and null skipped")
        << QStringList{a, QStringLiteral("Not A Probe"), QString(""), QString(), probeName(1).toLower()} << true
        << QStringList{a};
    QStringList twelve;
    QStringList lastTen;
    for (int i = 0; i < 12; ++i)
        twelve << probeName(i);
    for (int i = 11; i >= 2; --i)
        lastTen << probeName(i);
    QTest::newRow("twelve keep the last ten") << twelve << true << lastTen;
    QTest::newRow("empty list refused") << QStringList() << false << QStringList();
    QTest::newRow("only unknown names still rewrite") << QStringList{QStringLiteral("Nope")} << true << QStringList();
}

void TestCZOTreeMenuComboBox::recentList()
{
    QFETCH(QStringList, used);
    QFETCH(bool, result);
    QFETCH(QStringList, recent);
    writeProbes(probeFile(100));
    const QDateTime before = QFileInfo(probesPath()).lastModified();
    {
        CZOTreeMenuComboBox combo;
        QCOMPARE(combo.saveRecentUsedProbes(used), result);
        QCOMPARE(combo.recentlyUsedProbes(), recent);
        QMenu *menu = findSubmenu(combo.menu(), QStringLiteral("Recently Used"));
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), recent.size());
        QCOMPARE(menu->isEnabled(), !recent.isEmpty());
    }
    if (!result)
        QCOMPARE(QFileInfo(probesPath()).lastModified(), before);
    CZOTreeMenuComboBox reread;
    QCOMPARE(reread.recentlyUsedProbes(), recent);
    QCOMPARE(reread.loadedProbeCount(), 100);
}

void TestCZOTreeMenuComboBox::recentListMergesWithTheFile()
{
    writeProbes(probeFile(100, {probeName(5), probeName(6)}));
    CZOTreeMenuComboBox combo;
    QCOMPARE(combo.recentlyUsedProbes(), QStringList({probeName(5), probeName(6)}));
    QVERIFY(combo.saveRecentUsedProbes({probeName(6), probeName(9)}));
    QCOMPARE(combo.recentlyUsedProbes(), QStringList({probeName(9), probeName(6), probeName(5)}));
}

void TestCZOTreeMenuComboBox::recentMenuAndMultipleSelection()
{
    writeProbes(probeFile(100, {probeName(5)}));
    CZOTreeMenuComboBox combo;
    QVERIFY(findSubmenu(combo.menu(), QStringLiteral("Recently Used")));
    combo.setShowRecentlyUsedProbeList(false);
    QVERIFY(!findSubmenu(combo.menu(), QStringLiteral("Recently Used")));
    QVERIFY(findSubmenu(combo.menu(), QStringLiteral("Dyes")));

    combo.setAllowSelectMultiMenuItem(true);
    QVERIFY(findSubmenu(combo.menu(), QStringLiteral("Dyes"))->styleSheet().isEmpty());
    findAction(combo.menu(), probeName(1))->trigger();
    findAction(combo.menu(), probeName(70))->trigger();
    QCOMPARE(checkedTexts(combo), QStringList({probeName(1), probeName(70)}));
    QCOMPARE(combo.count(), 0);
}

void TestCZOTreeMenuComboBox::oneChildCategoryWrittenAsProbe()
{
    QByteArray xml = probeFile(100);
    xml.replace("</Category>\n</Category>\n",
                "</Category>\n    <Category Name=\"Lonely\">\n        <PROBE Name=\"Only Child\"/>\n"
                "    </Category>\n</Category>\n");
    writeProbes(xml);
    {
        CZOTreeMenuComboBox combo;
        QVERIFY(findSubmenu(combo.menu(), QStringLiteral("Lonely")));
        QVERIFY(combo.saveRecentUsedProbes({QStringLiteral("Only Child")}));
    }
    QFile f(probesPath());
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray written = f.readAll();
    QVERIFY(written.contains("<PROBE Name=\"Lonely\"/>"));
    QCOMPARE(written.count("Only Child"), 1); // kept in the recent list only
}

void TestCZOTreeMenuComboBox::alphabeticalCategory()
{
    QByteArray xml = probeFile(100);
    xml.replace("Probe 001", "apricot").replace("Probe 002", "Zebra");
    writeProbes(xml);
    CZOTreeMenuComboBox combo;
    QStandardItem *root = combo.displayModel()->item(0);
    QVERIFY(!combo.addNewCategoryStdItemFromStringList(nullptr, QStringLiteral("Alphabetical")));
    QVERIFY(!combo.addNewCategoryStdItemFromStringList(root, QStringLiteral("  ")));
    QVERIFY(combo.addNewCategoryStdItemFromStringList(root, QStringLiteral("Alphabetical")));
    QMenu *alpha = findSubmenu(combo.menu(), QStringLiteral("Alphabetical"));
    QVERIFY(alpha);
    QStringList groups;
    for (QAction *a : alpha->actions())
        groups << a->text();
    QCOMPARE(groups, QStringList({"A", "P", "Z"}));
    QCOMPARE(alpha->actions().at(1)->menu()->actions().size(), 98);
    QCOMPARE(alpha->actions().at(0)->menu()->actions().first()->text(), QStringLiteral("apricot"));
}

void TestCZOTreeMenuComboBox::badFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("loaded");
    QTest::addColumn<QStringList>("logLines");
    QTest::addColumn<bool>("rewritable");

    const QString shortLoad = QStringLiteral("Load Failed: Expect to load 98 items, loaded  %1 items.");
    QTest::newRow("empty") << QByteArray() << 0 << QStringList{shortLoad.arg(0), "is not intact at line"} << false;
    QTest::newRow("not XML") << QByteArray("probes: GFP, RFP\n") << 0
                             << QStringList{shortLoad.arg(0), "is not intact at line 1"} << false;
    const QByteArray full = probeFile(120);
    QTest::newRow("truncated") << full.left(full.size() / 2) << -1
                               << QStringList{"is not intact at line", "Premature end of document"} << false;
    QTest::newRow("97 probes keep the tree") << probeFile(97) << 97 << QStringList{shortLoad.arg(97)} << true;

    QByteArray deep = "<?xml version=\"1.0\"?>\n";
    for (int i = 0; i < 10000; ++i)
        deep += "<Category Name=\"L" + QByteArray::number(i) + "\">";
    deep += "<PROBE Name=\"Bottom\"/>";
    for (int i = 0; i < 10000; ++i)
        deep += "</Category>";
    QTest::newRow("10000 levels") << deep << 1
                                  << QStringList{shortLoad.arg(1), "nested deeper than 32 levels were flattened"}
                                  << false;
}

void TestCZOTreeMenuComboBox::badFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, loaded);
    QFETCH(QStringList, logLines);
    QFETCH(bool, rewritable);
    writeProbes(bytes);
    CZOTreeMenuComboBox combo;
    if (loaded >= 0)
        QCOMPARE(combo.loadedProbeCount(), loaded);
    else
        QVERIFY(combo.loadedProbeCount() > 0 && combo.loadedProbeCount() < 120);
    QVERIFY(depthBelow(combo.displayModel()->item(0)) <= CZOTreeMenuComboBox::maxCategoryDepth() + 1);
    QList<QAction *> actions;
    combo.obtainChilrentActionsOfRootMenu(&actions, combo.menu());
    QCOMPARE(actions.size(), combo.loadedProbeCount());

    const QString log = logText();
    for (const QString &line : logLines)
        QVERIFY2(log.contains(line), qPrintable(line + QStringLiteral("\nnot in\n") + log));
    QVERIFY(log.contains(probesPath()));

    QCOMPARE(combo.saveRecentUsedProbes({combo.probeNames().value(0)}), rewritable);
    QFile f(probesPath());
    QVERIFY(f.open(QIODevice::ReadOnly));
    if (!rewritable) {
        QCOMPARE(f.readAll(), bytes); // a damaged file is left for the user to repair
        QVERIFY(logText().contains(QStringLiteral("Unable to add probes in use to recently used list. ")
                                   + probesPath() + QStringLiteral(" : ")));
    }
}

void TestCZOTreeMenuComboBox::blankNamesKeepTheStructure()
{
    writeProbes("<Category Name=\"Top\">"
                "<Category Name=\"A\"><Category Name=\"  \"><PROBE Name=\"inBlank\"/></Category>"
                "<PROBE Name=\"\"/><PROBE Name=\" \"/><PROBE Name=\"afterBlank\"/></Category>"
                "<Category Name=\"\"><PROBE Name=\"x\"/><PROBE Name=\"y\"/></Category>"
                "<PROBE Name=\"last\"/></Category>");
    CZOTreeMenuComboBox combo;
    QCOMPARE(combo.probeNames(), QStringList({"inBlank", "afterBlank", "x", "y", "last"}));
    QStandardItem *top = combo.treeModel()->item(0)->child(0);
    QCOMPARE(top->text(), QStringLiteral("Top"));
    QStringList children;
    for (int r = 0; r < top->rowCount(); ++r)
        children << top->child(r)->text();
    QCOMPARE(children, QStringList({"A", "x", "y", "last"}));
    QCOMPARE(top->child(0)->rowCount(), 2); // inBlank and afterBlank
}

void TestCZOTreeMenuComboBox::missingFileLogged()
{
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo;
    const QString missing = m_dir->filePath(QStringLiteral("nowhere/ProbesTree.xml"));
    QScopedPointer<QStandardItemModel> model(combo.createTreeModelFromFile(missing));
    QVERIFY(model);
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(model->item(0)->text(), QStringLiteral("ROOT"));
    QCOMPARE(model->item(0)->rowCount(), 0);
    QCOMPARE(combo.loadedProbeCount(), 0);
    QVERIFY(logText().contains(QStringLiteral("Error   > Imaging Probe Tree (") + missing
                               + QStringLiteral(") Load Failed: No such file or directory.")));
    // Nothing was read, so nothing is written over the good file.
    QVERIFY(!combo.saveRecentUsedProbes({probeName(1)}));
    QCOMPARE(QFileInfo(probesPath()).size(), qint64(probeFile(100).size()));
}

void TestCZOTreeMenuComboBox::unwritableFileLogged()
{
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo;
    // A folder in the file's place cannot be opened for writing, by anyone.
    QVERIFY(QFile::remove(probesPath()));
    QVERIFY(QDir().mkpath(probesPath()));
    QVERIFY(!combo.saveRecentUsedProbes({probeName(1)}));
    QCOMPARE(combo.recentlyUsedProbes(), QStringList({probeName(1)}));
    QVERIFY(logText().contains(QStringLiteral("Error   > Unable to add probes in use to recently used list. ")
                               + probesPath() + QStringLiteral(" : ")));
}

void TestCZOTreeMenuComboBox::noProbeFolderUsesTheBuiltInList()
{
    // A file where the data folder should be: no folder can be made below it.
    QFile blocker(m_dir->filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    qputenv("ZO_DATA_ROOT", blocker.fileName().toLocal8Bit() + '/');
    CZOTreeMenuComboBox combo;
    QCOMPARE(combo.filePath(), CZOTreeMenuComboBox::builtInProbeFile());
    QVERIFY(combo.loadedProbeCount() >= 98);
    QVERIFY(!combo.saveRecentUsedProbes({QStringLiteral("EGFP")}));
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    QVERIFY(logText().contains(QStringLiteral("Unable to add probes in use to recently used list. :/zoutils/")));
}

QTEST_MAIN(TestCZOTreeMenuComboBox)
#include "tst_czotreemenucombobox.moc"
