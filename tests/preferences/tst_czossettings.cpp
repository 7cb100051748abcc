#include "prefstestfixture.h"

#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czossettings.h"

class TestCZOSSettings : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void missingSectionIsCreatedWithItsDefaults();
    void mruSizeRules_data();
    void mruSizeRules();
    void mruList();
    void pathsAndWindowsRoundTrip();
    void windowDefaultsWhenMissing();
    void customizeInfoKeepsOtherKeys();
    void noActiveUserKeepsLastValues();

private:
    CPLPreferenceUser *activate(const QString &name, CPLSection *general);
    CZOSSettings *settings() { return CZOPreference::getSettings(); }
    PrefsFolders m_folders;
};

void TestCZOSSettings::init()
{
    m_folders.setUp();
    QCOMPARE(m_folders.load(), ES_SUCCESS);
}

void TestCZOSSettings::cleanup()
{
    CZOPreference::getPreferenceManager()->setActiveUserToNone();
}

CPLPreferenceUser *TestCZOSSettings::activate(const QString &name, CPLSection *general)
{
    CPLPreferenceManager *manager = CZOPreference::getPreferenceManager();
    int index = -1;
    manager->addUser(name, &index, QString());
    CPLPreferenceUser *user = (*manager)[unsigned(index)];
    if (general)
        user->addCustomSettingsSection(general);
    manager->setActiveUser(unsigned(index));
    return user;
}

void TestCZOSSettings::missingSectionIsCreatedWithItsDefaults()
{
    CPLPreferenceUser *user = activate("DF", nullptr);
    CZOPreference::readUserTxtFile();
    CPLSection *general = nullptr;
    QCOMPARE(user->getCustomSettingsSection("General User Setting", &general), ES_SUCCESS);
    QCOMPARE(general->keys(),
             (QStringList{"Dock Tool Panel", "Dock Left", "Show Activity Bar", "Save Colors",
                          "Enable TransIllumination Location", "Individual Color Scale", "Save Float-Corrected Image",
                          "Advanced Option", "Save Disk-Paths", "Save Window Details", "Save File List", "MRU Size",
                          "WindowPrefWidthInPercent", "WindowPrefHeightInPercent", "ImageExportFormat"}));
    const tag_scustomizeinfo *info = settings()->getCustomizeInfo();
    QVERIFY(!settings()->isToolPanelDocked());
    QVERIFY(settings()->isDockedRight());
    QCOMPARE(info->strActivityBar, QStringLiteral("Warnings / Errors"));
    QVERIFY(info->bSaveColors && info->bEnableTransIllumLocation && info->bIndividualColorScale);
    QVERIFY(!settings()->isSaveCorrectedImageEnabled() && !settings()->isAdvancedOptionChecked());
    QVERIFY(info->bSaveDiskPaths && info->bSaveWindowDetails && info->bSaveFileList);
    QCOMPARE(info->nMRUSize, 5);
    QCOMPARE(info->nWndPrefWidthPercent, 55);
    QCOMPARE(info->nWndPrefHeightPercent, 65);
    QCOMPARE(info->strImageExportFormat, QStringLiteral("png"));
}

void TestCZOSSettings::mruSizeRules_data()
{
    QTest::addColumn<QString>("fileList");
    QTest::addColumn<QString>("mruSize");
    QTest::addColumn<int>("size");
    QTest::newRow("list off") << "No" << "7" << 0;
    QTest::newRow("too large") << "Yes" << "12" << 5;
    QTest::newRow("negative counts as too large") << "yes" << "-3" << 5;
    QTest::newRow("ten stays") << "YES" << "10" << 10;
    QTest::newRow("zero stays") << "Yes" << "0" << 0;
    QTest::newRow("empty") << "Yes" << "" << 5;
}

void TestCZOSSettings::mruSizeRules()
{
    QFETCH(QString, fileList);
    QFETCH(QString, mruSize);
    QFETCH(int, size);
    auto *general = new CPLSection("General User Setting");
    general->setValue("Save File List", fileList);
    general->setValue("MRU Size", mruSize);
    general->setValue("WindowPrefWidthInPercent", "");
    activate("MR", general);
    settings()->readCustomizeInfo();
    QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, size);
    QCOMPARE(settings()->getCustomizeInfo()->nWndPrefWidthPercent, 55);
    QCOMPARE(settings()->getCustomizeInfo()->nWndPrefHeightPercent, 65);
    for (int i = 0; i < 12; ++i)
        settings()->addMRUString(QStringLiteral("file%1.tif").arg(i));
    QCOMPARE(settings()->getMRUCount(), size);
    QCOMPARE(settings()->getMRUString(0), size ? QStringLiteral("file11.tif") : QString());
    QCOMPARE(settings()->getMRUString(unsigned(size)), QString());
}

void TestCZOSSettings::mruList()
{
    activate("ML", nullptr);
    CZOPreference::readUserTxtFile(); // five empty slots
    QVERIFY(!settings()->addMRUString(QString()));
    QVERIFY(settings()->addMRUString("b.tif"));
    QVERIFY(settings()->addMRUString("c:/A.TIF"));
    QVERIFY(settings()->addMRUString("C:/a.tif"));
    QCOMPARE(settings()->getMRUCount(), 2);
    QCOMPARE(settings()->getMRUString(0), QStringLiteral("C:/a.tif"));
    QCOMPARE(settings()->getMRUString(1), QStringLiteral("b.tif"));
    for (const char *name : {"1", "2", "3", "4"})
        settings()->addMRUString(name);
    QCOMPARE(settings()->getMRUCount(), 5);
    QCOMPARE(settings()->getMRUString(4), QStringLiteral("C:/a.tif")); // b.tif dropped out
    QVERIFY(settings()->removeMRUString("C:/A.tif"));
    QVERIFY(!settings()->removeMRUString("C:/A.tif"));
    QCOMPARE(settings()->getMRUCount(), 4);
    QCOMPARE(settings()->getMRUString(0), QStringLiteral("4"));
    QCOMPARE(settings()->getMRUString(3), QStringLiteral("1"));
}

void TestCZOSSettings::pathsAndWindowsRoundTrip()
{
    CPLPreferenceUser *user = activate("RT", nullptr);
    CZOPreference::readUserTxtFile();
    settings()->setOpenPath("/open");
    settings()->setBrowsePath("/browse");
    settings()->setExportPath("/export");
    settings()->setSetUpFileOpenPath("/setup");
    user->setDefaultUserPath("/work");
    settings()->addMRUString("/one.tif");
    settings()->addMRUString("/two.tif");
    settings()->setMainWndRect(QRect(QPoint(10, 20), QPoint(800, 600)));
    settings()->setMainWndState(WND_STATE_MAXIMIZED);
    settings()->setToolPanelRect(QRect(1, 2, 3, 4));
    settings()->setProfileSettings({QColor(1, 2, 3), QColor(4, 5, 6), QRect(7, 8, 9, 10)});
    CZOPreference::writeUserTxtFile();
    QCOMPARE(user->saveData(), ES_SUCCESS);

    CZOPreference::getPreferenceManager()->setActiveUserToNone();
    QCOMPARE(m_folders.load(), ES_SUCCESS);
    QCOMPARE(CZOPreference::getPreferenceManager()->setActiveUser(0), ES_SUCCESS);
    CPLSection *paths = nullptr;
    QCOMPARE(CZOPreference::getActiveUser()->getCustomSettingsSection("Application Related Paths", &paths),
             ES_SUCCESS);
    QCOMPARE(paths->value("MRU File 1"), QStringLiteral("/two.tif"));
    QCOMPARE(paths->value("Preferred working Directory"), QStringLiteral("/work"));

    CZOSSettings fresh;
    std::swap(*settings(), fresh);
    CZOPreference::readUserTxtFile();
    QCOMPARE(settings()->getOpenPath(), QStringLiteral("/open"));
    QCOMPARE(settings()->getBrowsePath(), QStringLiteral("/browse"));
    QCOMPARE(settings()->getExportPath(), QStringLiteral("/export"));
    QCOMPARE(settings()->getSetUpFileOpenPath(), QStringLiteral("/setup"));
    QCOMPARE(settings()->getMRUCount(), 2);
    QCOMPARE(settings()->getMRUString(1), QStringLiteral("/one.tif"));
    QCOMPARE(settings()->getMainWndRect(), QRect(QPoint(10, 20), QPoint(800, 600)));
    QCOMPARE(settings()->getMainWndState(), WND_STATE_MAXIMIZED);
    QCOMPARE(settings()->getToolPanelRect(), QRect(1, 2, 3, 4));
    QCOMPARE(settings()->getProfileSettings().oLineColor, QColor(1, 2, 3));
    QCOMPARE(settings()->getProfileSettings().oBackColor, QColor(4, 5, 6));
    QCOMPARE(settings()->getProfileSettings().oRect, QRect(7, 8, 9, 10));
    std::swap(*settings(), fresh);
}

void TestCZOSSettings::windowDefaultsWhenMissing()
{
    auto *histogram = new CPLSection("Histogram Window Details");
    histogram->setValue("X1", "5");
    histogram->setValue("LineColor Green", "not a number");
    activate("WD", nullptr)->addCustomSettingsSection(histogram);
    CZOPreference::readUserTxtFile();
    const QRect none(QPoint(-1, -1), QPoint(-1, -1));
    QCOMPARE(settings()->getProfileSettings().oRect, none);
    QCOMPARE(settings()->getProfileSettings().oLineColor, QColor(0, 0, 205));
    QCOMPARE(settings()->getProfileSettings().oBackColor, QColor(255, 255, 255));
    QCOMPARE(settings()->getHistogramSettings().oRect, QRect(QPoint(5, -1), QPoint(-1, -1)));
    QCOMPARE(settings()->getHistogramSettings().oLineColor, QColor(255, 0, 0));
    QCOMPARE(settings()->getToolPanelRect(), none);
    QCOMPARE(settings()->getMainWndRect(), none);
}

void TestCZOSSettings::customizeInfoKeepsOtherKeys()
{
    auto *general = new CPLSection("General User Setting");
    general->setValue("Own Key", "kept");
    general->setValue("Dock Left", "yes");
    CPLPreferenceUser *user = activate("CK", general);
    settings()->readCustomizeInfo();
    QVERIFY(!settings()->isDockedRight());
    settings()->getCustomizeInfo()->bAdvancedOption = true;
    QCOMPARE(settings()->writeCustomizeInfo(), ES_SUCCESS);
    QCOMPARE(general->value("Own Key"), QStringLiteral("kept"));
    QCOMPARE(general->value("Advanced Option"), QStringLiteral("Yes"));
    QCOMPARE(general->value("Dock Left"), QStringLiteral("Yes"));
    QVERIFY(user->isSaveRequired());
}

void TestCZOSSettings::noActiveUserKeepsLastValues()
{
    activate("NA", nullptr);
    settings()->readCustomizeInfo();
    settings()->setOpenPath("/last");
    CZOPreference::getPreferenceManager()->setActiveUserToNone();
    CZOPreference::readUserTxtFile();
    CZOPreference::writeUserTxtFile(); // nothing to write to, and no error box
    QCOMPARE(settings()->getOpenPath(), QStringLiteral("/last"));
    QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, 5);
    QCOMPARE(settings()->writeCustomizeInfo(), ES_INVALID_STATE);
}

QTEST_MAIN(TestCZOSSettings)
#include "tst_czossettings.moc"
