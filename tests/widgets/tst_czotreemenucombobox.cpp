#include "czoslog.h"
#include "czotreemenucombobox.h"

#include <QMenu>
#include <QStandardItemModel>
#include <QtTest>

namespace {

QString probe(int i) { return QStringLiteral("Probe %1").arg(i, 3, 10, QLatin1Char('0')); }

// `count` probes in two categories, after a "Recently Used" holding `recent`.
QByteArray probeFile(int count, const QStringList &recent = {})
{
    QString xml = "<?xml version=\"1.0\"?>\n<Category Name=\"Fluorescent Probes\">\n<Category Name=\"Recently Used\">\n";
    for (const QString &name : recent)
        xml += QStringLiteral("<PROBE Name=\"%1\"/>\n").arg(name);
    xml += "</Category>\n<Category Name=\"Dyes\">\n";
    for (int i = 0; i < count; ++i)
        xml += (i == count / 2 ? "</Category>\n<Category Name=\"Proteins\">\n" : "")
               + QStringLiteral("<PROBE Name=\"%1\"/>\n").arg(probe(i));
    return (xml + "</Category>\n</Category>\n").toUtf8();
}

QMenu *submenu(QMenu *menu, const QString &title)
{
    for (QAction *a : menu->actions())
        if (QMenu *sub = a->menu())
            if (QMenu *found = sub->title() == title ? sub : submenu(sub, title))
                return found;
    return nullptr;
}

QList<QAction *> probeActions(CZOTreeMenuComboBox &combo)
{
    QList<QAction *> actions;
    combo.obtainChilrentActionsOfRootMenu(&actions, combo.menu());
    return actions;
}

QAction *action(CZOTreeMenuComboBox &combo, const QString &text)
{
    for (QAction *a : probeActions(combo))
        if (a->text() == text)
            return a;
    return nullptr;
}

QStringList texts(const QList<QAction *> &actions, bool checkedOnly = false)
{
    QStringList out;
    for (QAction *a : actions)
        if (!checkedOnly || a->isChecked())
            out << a->text();
    return out;
}

int depth(const QStandardItem *item, int *singleChildBranches = nullptr)
{
    int deepest = 0;
    for (int r = 0; r < item->rowCount(); ++r) {
        if (singleChildBranches && item->child(r)->rowCount() == 1)
            ++*singleChildBranches;
        deepest = std::max(deepest, 1 + depth(item->child(r), singleChildBranches));
    }
    return deepest;
}

} // namespace

class TestCZOTreeMenuComboBox : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup() { QCoreApplication::processEvents(), closeLog(); }

    void builtInFileInstalledAndRewritable();
    void choosingFromTheMenu();
    void displayTypes_data();
    void displayTypes();
    void recentList_data();
    void recentList();
    void menuOptionsAndOneChildRule();
    void badFiles_data();
    void badFiles();
    void blankNamesKeepTheStructure();
    void unwritableAndMissing();

private:
    QString probesPath() const { return m_dir->filePath("Probes/ProbesTree.xml"); }
    void writeProbes(const QByteArray &bytes);
    QByteArray readProbes();
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
    // "%2" in the folder catches texts built with chained arg() calls.
    m_dir.reset(new QTemporaryDir(QDir::tempPath() + "/probes%2-XXXXXX"));
    QVERIFY(m_dir->isValid());
    qputenv("ZO_DATA_ROOT", m_dir->path().toLocal8Bit() + '/');
    QCOMPARE(beginLog(QStringLiteral("Test")), 1);
}

void TestCZOTreeMenuComboBox::writeProbes(const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(m_dir->filePath("Probes")));
    QFile f(probesPath());
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

QByteArray TestCZOTreeMenuComboBox::readProbes()
{
    QFile f(probesPath());
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QString TestCZOTreeMenuComboBox::logText()
{
    QCoreApplication::processEvents(); // the log writes on the event loop
    QFile f(m_dir->filePath("zoactivity.log"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

void TestCZOTreeMenuComboBox::builtInFileInstalledAndRewritable()
{
    QStringList names;
    {
        CZOTreeMenuComboBox combo;
        QFile builtIn(CZOTreeMenuComboBox::builtInProbeFile());
        QVERIFY(builtIn.open(QIODevice::ReadOnly));
        QCOMPARE(readProbes(), builtIn.readAll());
        QVERIFY(combo.loadedProbeCount() >= 98);
        QVERIFY(!logText().contains("Load Failed"));
        int single = 0; // branches with one child lose it when written back
        depth(combo.treeModel()->item(0), &single);
        QCOMPARE(single, 0);
        names = combo.probeNames();
        QVERIFY(combo.saveRecentUsedProbes({"EGFP", "Indocyanine Green"}));
    }
    CZOTreeMenuComboBox again;
    QStringList reread = again.probeNames();
    std::sort(names.begin(), names.end());
    std::sort(reread.begin(), reread.end());
    QCOMPARE(reread, names);
    QCOMPARE(texts(submenu(again.menu(), "Recently Used")->actions()), QStringList({"Indocyanine Green", "EGFP"}));
}

void TestCZOTreeMenuComboBox::choosingFromTheMenu()
{
    writeProbes(probeFile(100, {probe(7)}));
    CZOTreeMenuComboBox combo;
    combo.show();
    combo.showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(combo.menu()));
    QVERIFY(combo.menu()->styleSheet().startsWith("QMenu {background-color: white;"));
    submenu(combo.menu(), "Dyes")->actions().at(7)->trigger();
    QCOMPARE(combo.currentText(), probe(7));
    QCOMPARE(texts(probeActions(combo), true), QStringList({probe(7), probe(7)})); // in "Recently Used" too
    action(combo, probe(60))->trigger();
    QCOMPARE(combo.itemText(0), probe(60)); // newest on top
    QCOMPARE(texts(probeActions(combo), true), QStringList({probe(60)}));
    action(combo, probe(7))->trigger(); // known: made current, not added
    QCOMPARE(combo.count(), 2);
    QCOMPARE(combo.currentIndex(), 1);
    combo.setCurrentIndex(0); // choosing in the combo moves the check marks
    QCOMPARE(texts(probeActions(combo), true), QStringList({probe(60)}));
}

void TestCZOTreeMenuComboBox::displayTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("extraRootItems");
    QTest::newRow("0 adds nothing") << 0 << QStringList();
    QTest::newRow("2 quantum dots and input") << 2 << QStringList{"Qdot info", "Input Ex/Em"};
    QTest::newRow("3 autofluorescence") << 3 << QStringList{"Unknown", "ALFood", "ALFree"};
    QTest::newRow("unknown value adds nothing") << 9 << QStringList();
}

void TestCZOTreeMenuComboBox::displayTypes()
{
    QFETCH(int, type);
    QFETCH(QStringList, extraRootItems);
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo(static_cast<PROBETREEDISPLAYTYPE>(type));
    QCOMPARE(texts(combo.menu()->actions()), QStringList{"Fluorescent Probes"} + extraRootItems);
    QCOMPARE(combo.probeNames().contains("KRV-2"), type == 3);
    QVERIFY(combo.saveRecentUsedProbes({"Unknown"}));
    QCOMPARE(combo.recentlyUsedProbes().size(), type == 3 ? 1 : 0);
    if (!extraRootItems.isEmpty()) { // a user clicks a root item
        combo.showPopup();
        QVERIFY(QTest::qWaitForWindowExposed(combo.menu()));
        QAction *item = combo.menu()->actions().last();
        QTest::mouseClick(combo.menu(), Qt::LeftButton, {}, combo.menu()->actionGeometry(item).center());
        QCOMPARE(combo.currentText(), extraRootItems.last());
        QVERIFY(item->isChecked());
    }
    const QByteArray written = readProbes(); // the extras are never written to the file
    QVERIFY(!written.contains("Qdot") && !written.contains("ALFood"));
}

void TestCZOTreeMenuComboBox::recentList_data()
{
    QTest::addColumn<QStringList>("inFile");
    QTest::addColumn<QStringList>("used");
    QTest::addColumn<bool>("result");
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

void TestCZOTreeMenuComboBox::recentList()
{
    QFETCH(QStringList, inFile);
    QFETCH(QStringList, recent);
    writeProbes(probeFile(100, inFile));
    {
        CZOTreeMenuComboBox combo;
        QCOMPARE(combo.recentlyUsedProbes(), inFile);
        QFETCH(QStringList, used);
        QTEST(combo.saveRecentUsedProbes(used), "result");
        QCOMPARE(texts(submenu(combo.menu(), "Recently Used")->actions()), recent);
    }
    CZOTreeMenuComboBox reread;
    QCOMPARE(reread.recentlyUsedProbes(), recent);
    QCOMPARE(reread.loadedProbeCount(), 100);
}

void TestCZOTreeMenuComboBox::menuOptionsAndOneChildRule()
{
    QByteArray xml = probeFile(100, {probe(5)});
    writeProbes(xml.replace("Probe 001", "apricot").replace("Probe 002", "Zebra").replace(
        "</Category>\n</Category>\n",
        "</Category>\n<Category Name=\"Lonely\"><PROBE Name=\"Only Child\"/></Category>\n</Category>\n"));
    {
        CZOTreeMenuComboBox combo;
        combo.setShowRecentlyUsedProbeList(false);
        QVERIFY(!submenu(combo.menu(), "Recently Used") && submenu(combo.menu(), "Lonely"));
        combo.setAllowSelectMultiMenuItem(true);
        QVERIFY(submenu(combo.menu(), "Dyes")->styleSheet().isEmpty());
        action(combo, probe(10))->trigger();
        action(combo, probe(70))->trigger();
        QCOMPARE(texts(probeActions(combo), true), QStringList({probe(10), probe(70)}));
        QCOMPARE(combo.count(), 0);

        QStandardItem *root = combo.displayModel()->item(0);
        QVERIFY(!combo.addNewCategoryStdItemFromStringList(nullptr, "Alphabetical"));
        QVERIFY(!combo.addNewCategoryStdItemFromStringList(root, "  "));
        QVERIFY(combo.addNewCategoryStdItemFromStringList(root, "Alphabetical"));
        QMenu *alpha = submenu(combo.menu(), "Alphabetical");
        QCOMPARE(texts(alpha->actions()), QStringList({"A", "O", "P", "Z"}));
        QCOMPARE(alpha->actions().at(2)->menu()->actions().size(), 98);
        QVERIFY(combo.saveRecentUsedProbes({"Only Child"}));
    }
    // The writer turns a one-child category into a probe of its name.
    const QByteArray written = readProbes();
    QVERIFY(written.contains("<PROBE Name=\"Lonely\"/>"));
    QCOMPARE(written.count("Only Child"), 1); // left only in the recent list
}

void TestCZOTreeMenuComboBox::badFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("loaded"); // -1: some, fewer than the file holds
    QTest::addColumn<QStringList>("logLines");
    QTest::addColumn<bool>("rewritable");
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

void TestCZOTreeMenuComboBox::badFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, loaded);
    QFETCH(QStringList, logLines);
    QFETCH(bool, rewritable);
    writeProbes(bytes);
    CZOTreeMenuComboBox combo;
    const int count = combo.loadedProbeCount();
    QVERIFY(loaded >= 0 ? count == loaded : count > 0 && count < 120);
    QCOMPARE(probeActions(combo).size(), count);
    QVERIFY(depth(combo.displayModel()->item(0)) <= CZOTreeMenuComboBox::maxCategoryDepth() + 1);
    const QString log = logText();
    for (const QString &line : logLines << probesPath())
        QVERIFY2(log.contains(line), qPrintable(line + " not in\n" + log));
    // A damaged file is left for the user to repair, not overwritten with what could be read.
    QCOMPARE(combo.saveRecentUsedProbes({combo.probeNames().value(0)}), rewritable);
    if (!rewritable)
        QCOMPARE(readProbes(), bytes);
}

void TestCZOTreeMenuComboBox::blankNamesKeepTheStructure()
{
    writeProbes("<Category Name=\"Top\"><Category Name=\"A\">"
                "<Category Name=\"  \"><PROBE Name=\"inBlank\"/></Category>"
                "<PROBE Name=\"\"/><PROBE Name=\" \"/><PROBE Name=\"afterBlank\"/></Category>"
                "<Category Name=\"\"><PROBE Name=\"x\"/></Category><PROBE Name=\"last\"/></Category>");
    CZOTreeMenuComboBox combo;
    QCOMPARE(combo.probeNames(), QStringList({"inBlank", "afterBlank", "x", "last"}));
    QStandardItem *top = combo.treeModel()->item(0)->child(0);
    QCOMPARE(top->rowCount(), 3); // "A", "x", "last": a blank category's end closes nothing
    QCOMPARE(top->child(0)->rowCount(), 2);
}

void TestCZOTreeMenuComboBox::unwritableAndMissing()
{
    writeProbes(probeFile(100));
    CZOTreeMenuComboBox combo;
    // A folder in the file's place cannot be opened for writing, even by root.
    QVERIFY(QFile::remove(probesPath()) && QDir().mkpath(probesPath()));
    QVERIFY(!combo.saveRecentUsedProbes({probe(1)}));
    QCOMPARE(combo.recentlyUsedProbes(), QStringList({probe(1)}));
    QVERIFY(logText().contains("Error   > Unable to add probes in use to recently used list. " + probesPath() + " : "));

    const QString missing = m_dir->filePath("nowhere.xml");
    QScopedPointer<QStandardItemModel> model(combo.createTreeModelFromFile(missing));
    QCOMPARE(model->item(0)->rowCount(), 0);
    QVERIFY(logText().contains("Error   > Imaging Probe Tree (" + missing + ") Load Failed: No such file or directory."));

    // No probe folder can be made below a file: the built-in list is offered.
    QFile blocker(m_dir->filePath("blocker"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    qputenv("ZO_DATA_ROOT", blocker.fileName().toLocal8Bit() + '/');
    CZOTreeMenuComboBox builtIn;
    QCOMPARE(builtIn.filePath(), CZOTreeMenuComboBox::builtInProbeFile());
    QVERIFY(builtIn.loadedProbeCount() >= 98);
    QVERIFY(!builtIn.saveRecentUsedProbes({"EGFP"}));
}

QTEST_MAIN(TestCZOTreeMenuComboBox)
#include "tst_czotreemenucombobox.moc"
