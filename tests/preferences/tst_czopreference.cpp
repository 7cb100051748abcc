#include "prefstestfixture.h"

#include "czossettings.h"

// The store's statics and the settings it reads and writes through the
// active user's sections.
class TestCZOPreference : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folders.setUp(); }

    void cleanup()
    {
        CZOPreference::getPreferenceManager()->setActiveUserToNone();
    }

    void viewSettingsFromTheProfile()
    {
        CPLPreferenceUser *user = PrefsFolders::activate(QStringLiteral("VW"));
        QVERIFY(user);
        user->addCustomSettingsSection(PrefsFolders::section(
            "3D View Preferences", {{"3D View Background Color Type", "2"}, {"3D View Background Solid Color", "10 20"},
                                    {"Fluor Color table", "Grays"}, {"Fluor Color Table", "wrong case is another key"},
                                    {"Lumin Reverse Checkbox", "0"}, {"3DVolume Reverse CheckBox", "5"},
                                    {"2D Text Size", "twelve"}, {"3D Text Size", "14"}}));
        QCOMPARE(user->saveData(), ES_SUCCESS);

        S3DViewSettings s;
        QVERIFY(CZOPreference::get3DViewPreferencesFromFile(s));
        // Unreadable or missing values take their defaults.
        QCOMPARE((QVariantList{s.nBackgroundColorType, s.oBackgroundSolidColor, s.strFluorColorTable, s.bLuminReverse,
                               s.b3DVolumeReverse, s.n2DTextSize, s.n3DTextSize, s.strLuminColorTable}),
                 (QVariantList{2, QColor(10, 20, 0), "Grays", false, true, 8, 14, "Rainbow"}));
        QCOMPARE((QVector<QColor>{CZOPreference::getPresetColor("Dusk").oTopColor,
                                  CZOPreference::getPresetColor("Daylight").oBottomColor,
                                  CZOPreference::getPresetColor("unknown").oTopColor}),
                 (QVector<QColor>{QColor(0, 0, 122), QColor(200, 228, 255), QColor(0, 0, 0)}));
        CZOPreference::initialize3DViewPreferences();
        QCOMPARE(CZOPreference::getDefault3DViewSettings().n3DTextSize, 14);
    }

    void saveFilters_data()
    {
        QTest::addColumn<QString>("format"); QTest::addColumn<QString>("filter"); QTest::addColumn<QString>("result");
        QTest::newRow("preferred moves first, empty parts dropped")
            << "tif" << "PNG (*.png);;;;TIFF (*.tif);;JPEG (*.jpg);;" << "TIFF (*.tif);;PNG (*.png);;JPEG (*.jpg)";
        QTest::newRow("absent: untouched, empty parts too") << "bmp" << "PNG (*.png);;;;TIFF (*.tif)"
                                                            << "PNG (*.png);;;;TIFF (*.tif)";
    }

    void saveFilters()
    {
        QFETCH(QString, format); QFETCH(QString, filter); QFETCH(QString, result);
        CPLPreferenceUser *user = PrefsFolders::activate(QStringLiteral("SF"));
        QVERIFY(user);
        CZOPreference::setUsersPreferredFormat(format);
        CZOPreference::setUsersPreferredFormat(QString()); // ignored
        QCOMPARE(CZOPreference::getUsersPreferredFormat(), format);
        CPLSection *general = nullptr; // written into the user's settings at once
        QVERIFY(user->getCustomSettingsSection("General User Setting", &general) == ES_SUCCESS
                && general->value("ImageExportFormat") == format);
        CZOPreference::modifySaveFilterByPreference(filter);
        QCOMPARE(filter, result);
    }

    void preferredWindowSize()
    {
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1920, 1080), 80, 80, true), QSize(1632, 810));
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1920, 1080), 80, 80, false), QSize(1536, 864));
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1001, 999), 55, 65, false), QSize(550, 649)); // truncates
    }

    void missingSettingsSectionIsCreatedWithItsDefaults()
    {
        CPLPreferenceUser *user = PrefsFolders::activate("DF");
        *settings()->getCustomizeInfo() = tag_scustomizeinfo(); // every flag off: each must be read
        CZOPreference::readUserTxtFile();
        QVERIFY(user->isSaveRequired()); // the new section must reach the file
        CPLSection *general = nullptr;
        QCOMPARE(user->getCustomSettingsSection("General User Setting", &general), ES_SUCCESS);
        QCOMPARE(general->keys(),
                 (QStringList{"Dock Tool Panel", "Dock Left", "Show Activity Bar", "Save Colors",
                              "Enable TransIllumination Location", "Individual Color Scale", "Save Float-Corrected Image",
                              "Advanced Option", "Save Disk-Paths", "Save Window Details", "Save File List", "MRU Size",
                              "WindowPrefWidthInPercent", "WindowPrefHeightInPercent", "ImageExportFormat"}));
        const tag_scustomizeinfo *i = settings()->getCustomizeInfo();
        QCOMPARE((QVariantList{i->bDockToolPanel, i->bDockLeft, i->strActivityBar, i->bSaveColors,
                               i->bEnableTransIllumLocation, i->bIndividualColorScale, i->bSaveFloatCorrectedImage,
                               i->bAdvancedOption, i->bSaveDiskPaths, i->bSaveWindowDetails, i->bSaveFileList, i->nMRUSize,
                               i->nWndPrefWidthPercent, i->nWndPrefHeightPercent, i->strImageExportFormat}),
                 (QVariantList{false, false, "Warnings / Errors", true, true, true, false, false, true, true, true, 5, 55,
                               65, "png"}));
    }

    void mruSizeRules_data()
    {
        QTest::addColumn<QString>("fileList"); QTest::addColumn<QString>("mruSize"); QTest::addColumn<int>("size");
        QTest::newRow("list off") << "No" << "7" << 0;
        QTest::newRow("too large") << "Yes" << "12" << 5;
        QTest::newRow("negative counts as too large") << "yes" << "-3" << 5;
        QTest::newRow("ten stays") << "YES" << "10" << 10;
        QTest::newRow("zero stays") << "Yes" << "0" << 0;
        QTest::newRow("empty") << "Yes" << "" << 5;
    }

    void mruSizeRules()
    {
        QFETCH(QString, fileList); QFETCH(QString, mruSize); QFETCH(int, size);
        QVERIFY(PrefsFolders::activate("MR", PrefsFolders::section("General User Setting", {{"Save File List", fileList},
                                                                                          {"MRU Size", mruSize},
                                                                                          {"WindowPrefWidthInPercent", ""}})));
        settings()->readCustomizeInfo();
        QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, size);
        QCOMPARE(settings()->getCustomizeInfo()->nWndPrefWidthPercent, 55);
        for (int i = 0; i < 12; ++i)
            settings()->addMRUString(QStringLiteral("file%1.tif").arg(i));
        QCOMPARE(settings()->getMRUCount(), size);
        QCOMPARE(settings()->getMRUString(0), size ? QStringLiteral("file11.tif") : QString());
        QCOMPARE(settings()->getMRUString(unsigned(size)), QString());
    }

    void mruList()
    {
        QVERIFY(PrefsFolders::activate("ML"));
        CZOPreference::readUserTxtFile(); // five empty slots
        QVERIFY(!settings()->addMRUString(QString()));
        QVERIFY(settings()->addMRUString("b.tif"));
        QVERIFY(settings()->addMRUString("c:/A.TIF"));
        QVERIFY(settings()->addMRUString("C:/a.tif"));
        QCOMPARE(settings()->getMRUCount(), 2);
        QCOMPARE(settings()->getMRUString(0), QStringLiteral("C:/a.tif"));
        for (const char *name : {"1", "2", "3", "4"})
            settings()->addMRUString(name);
        QCOMPARE(settings()->getMRUCount(), 5);
        QCOMPARE(settings()->getMRUString(4), QStringLiteral("C:/a.tif")); // b.tif dropped out
        QVERIFY(settings()->removeMRUString("C:/A.tif"));
        QVERIFY(!settings()->removeMRUString("C:/A.tif"));
        QCOMPARE(settings()->getMRUCount(), 4);
        QCOMPARE(settings()->getMRUString(3), QStringLiteral("1"));
        QVERIFY(settings()->removeMRUString("3")); // from the middle: the later ones move up
        QCOMPARE(QStringList({settings()->getMRUString(0), settings()->getMRUString(1), settings()->getMRUString(2)}),
                 QStringList({"4", "2", "1"}));
        QCOMPARE(settings()->getMRUCount(), 3);
    }

    void pathsAndWindowsRoundTrip()
    {
        CPLPreferenceUser *user = PrefsFolders::activate("RT");
        CZOPreference::readUserTxtFile();
        settings()->setOpenPath("/open");
        settings()->setExportPath("/export");
        user->setDefaultUserPath("/work");
        settings()->addMRUString("/one.tif");
        settings()->addMRUString("/two.tif");
        settings()->setMainWndRect(QRect(QPoint(10, 20), QPoint(800, 600)));
        settings()->setMainWndState(WND_STATE_MAXIMIZED);
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
        const CZOSSettings *s = settings();
        QCOMPARE((QVariantList{s->getOpenPath(), s->getExportPath(), s->getMRUString(0), s->getMRUString(1),
                               s->getMainWndRect(), int(s->getMainWndState()), s->getProfileSettings().oLineColor,
                               s->getProfileSettings().oBackColor, s->getProfileSettings().oRect}),
                 (QVariantList{"/open", "/export", "/two.tif", "/one.tif", QRect(QPoint(10, 20), QPoint(800, 600)),
                               int(WND_STATE_MAXIMIZED), QColor(1, 2, 3), QColor(4, 5, 6), QRect(7, 8, 9, 10)}));
        std::swap(*settings(), fresh);
    }

    void customizeInfoKeepsOtherKeys()
    {
        CPLSection *general = PrefsFolders::section("General User Setting", {{"Own Key", "kept"}, {"Dock Left", "yes"}});
        CPLPreferenceUser *user = PrefsFolders::activate("CK", general);
        settings()->readCustomizeInfo();
        QVERIFY(!settings()->isDockedRight());
        settings()->getCustomizeInfo()->bAdvancedOption = true;
        settings()->getCustomizeInfo()->nWndPrefWidthPercent = 81;
        settings()->getCustomizeInfo()->nWndPrefHeightPercent = 71;
        QCOMPARE(settings()->writeCustomizeInfo(), ES_SUCCESS);
        QCOMPARE(QStringList({general->value("WindowPrefWidthInPercent"), general->value("WindowPrefHeightInPercent"),
                              general->value("Own Key"), general->value("Advanced Option"), general->value("Dock Left")}),
                 QStringList({"81", "71", "kept", "Yes", "Yes"}));
        QVERIFY(user->isSaveRequired());
    }

    void noActiveUserKeepsLastValues()
    {
        QVERIFY(PrefsFolders::activate("NA"));
        settings()->readCustomizeInfo();
        settings()->setOpenPath("/last");
        CZOPreference::getPreferenceManager()->setActiveUserToNone();
        CZOPreference::readUserTxtFile();
        CZOPreference::writeUserTxtFile(); // nothing to write to, and no error box
        QCOMPARE(settings()->getOpenPath(), QStringLiteral("/last"));
        QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, 5);
        QCOMPARE(settings()->writeCustomizeInfo(), ES_INVALID_STATE);
    }

private:
    CZOSSettings *settings() { return CZOPreference::getSettings(); }
    PrefsFolders m_folders;
};

QTEST_MAIN(TestCZOPreference)
#include "tst_czopreference.moc"
