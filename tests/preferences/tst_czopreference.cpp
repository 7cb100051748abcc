#include "prefstestfixture.h"

#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czosuseriddialog.h"
#include "czoutilityfns.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>

Q_DECLARE_METATYPE(S3DViewSettings)

class TestCZOPreference : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void versionLine_data();
    void versionLine();
    void presetColors_data();
    void presetColors();
    void viewDefaultsWithoutActiveUser();
    void viewSettingsFromTheProfile();
    void emittersEmitExactlyOneSignal_data();
    void emittersEmitExactlyOneSignal();
    void userSelectionTellsTheViews();
    void saveFilters_data();
    void saveFilters();
    void preferredWindowSize_data();
    void preferredWindowSize();
    void sequenceLoadingBelongsToOneDataSet();
    void exportPathNeedsSaveDiskPaths();
    void utilityClassReachesTheStore();

private:
    CPLPreferenceUser *activateNewUser(const QString &name);
    PrefsFolders m_folders;
};

void TestCZOPreference::init()
{
    m_folders.setUp();
    QCOMPARE(m_folders.load(), ES_SUCCESS);
}

void TestCZOPreference::cleanup()
{
    CZOPreference::getPreferenceManager()->setActiveUserToNone();
    CZOPreference::setAppVersion(QString());
}

CPLPreferenceUser *TestCZOPreference::activateNewUser(const QString &name)
{
    int index = -1;
    CPLPreferenceManager *manager = CZOPreference::getPreferenceManager();
    if (manager->addUser(name, &index, QString()) != ES_SUCCESS || manager->setActiveUser(unsigned(index)) != ES_SUCCESS)
        return nullptr;
    return CZOPreference::getActiveUser();
}

void TestCZOPreference::versionLine_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("line");
    QTest::newRow("no version") << "" << QString::fromUtf8("Zolvane\u00AE (64-bit)  (Jul 29 2018, 21:41:08)");
    QTest::newRow("version") << "4.7.2" << QString::fromUtf8("Zolvane\u00AE 4.7.2 (64-bit)  (Jul 29 2018, 21:41:08)");
}

void TestCZOPreference::versionLine()
{
    QFETCH(QString, version);
    QFETCH(QString, line);
    CZOPreference::setAppVersion(version);
    QCOMPARE(CZOPreference::getVerString(), line);
}

void TestCZOPreference::presetColors_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QColor>("top");
    QTest::addColumn<QColor>("bottom");
    QTest::newRow("Midnight") << "Midnight" << QColor(0, 0, 0) << QColor(0, 0, 0);
    QTest::newRow("Daylight") << "Daylight" << QColor(50, 152, 255) << QColor(200, 228, 255);
    QTest::newRow("Dusk") << "Dusk" << QColor(0, 0, 122) << QColor(108, 124, 167);
    QTest::newRow("case matters") << "dusk" << QColor(0, 0, 0) << QColor(0, 0, 0);
    QTest::newRow("unknown") << "Noon" << QColor(0, 0, 0) << QColor(0, 0, 0);
}

void TestCZOPreference::presetColors()
{
    QFETCH(QString, name);
    QFETCH(QColor, top);
    QFETCH(QColor, bottom);
    const SPresetColors colors = CZOPreference::getPresetColor(name);
    QCOMPARE(colors.oTopColor, top);
    QCOMPARE(colors.oBottomColor, bottom);
}

void TestCZOPreference::viewDefaultsWithoutActiveUser()
{
    QVERIFY(!CZOPreference::getActiveUser());
    CPLSettingsFileWrapper *wrapper = CZOPreference::getPreferences();
    wrapper->addSection(new CPLSection(QStringLiteral("Kept")));
    QCOMPARE(CZOPreference::getPreferences()->sectionCount(), 1); // not reloaded
    CZOPreference::clearPreferences();

    S3DViewSettings settings;
    QVERIFY(!CZOPreference::get3DViewPreferencesFromFile(settings));
    QCOMPARE(settings.nBackgroundColorType, 0);
    QCOMPARE(settings.oBackgroundSolidColor, QColor(50, 152, 255));
    QCOMPARE(settings.oGradientTopColor, QColor(0, 0, 0));
    QCOMPARE(settings.strBackgroundPresetColor, QStringLiteral("Midnight"));
    QCOMPARE(settings.strLuminColorTable, QStringLiteral("Rainbow"));
    QCOMPARE(settings.strFluorColorTable, QStringLiteral("YellowHot"));
    QVERIFY(settings.bLuminReverse);
    QVERIFY(!settings.bFluorReverse);
    QVERIFY(settings.bUsePaletteSettingsDuringLoad);
    QCOMPARE(settings.oLuminROILineColor, QColor(255, 0, 0));
    QCOMPARE(settings.oFluorROILineColor, QColor(0, 0, 255));
    QCOMPARE(settings.str3DVolumeColorTable, QStringLiteral("Jet"));
    QCOMPARE(settings.o2DViewBackgroundColor, QColor(255, 255, 255));
    QCOMPARE(settings.o3DViewTextColor, QColor(Qt::white));
    QCOMPARE(settings.o2DViewTextColor, QColor(Qt::black));
    QCOMPARE(settings.o3DSurfaceColor, QColor(Qt::gray));
    QCOMPARE(settings.n2DTextSize, 8);
    QCOMPARE(settings.n3DTextSize, 8);
    QCOMPARE(settings.strCTTargetType, QStringLiteral("Animal"));

    QColor lumin, fluor;
    CZOPreference::getDefaultROILineColor(lumin, fluor);
    QCOMPARE(lumin, QColor(255, 0, 0));
    QCOMPARE(fluor, QColor(0, 0, 255));
    const SDefaultColorbar bar = CZOPreference::getDefaultColorBar();
    QCOMPARE((QVector<qint32>{bar.nVisible, bar.nShowTitle, bar.nPosition, bar.nNumberFormat, bar.nFontSize,
                              bar.nDecimals}),
             (QVector<qint32>{1, 1, 2, 0, 8, 0}));
}

void TestCZOPreference::viewSettingsFromTheProfile()
{
    CPLPreferenceUser *user = activateNewUser(QStringLiteral("VW"));
    QVERIFY(user);
    auto *section = new CPLSection(QStringLiteral("3D View Preferences"));
    section->setValue(QStringLiteral("3D View Background Color Type"), QStringLiteral("2"));
    section->setValue(QStringLiteral("3D View Background Solid Color"), QStringLiteral("10 20"));
    section->setValue(QStringLiteral("3D View Text Color"), QStringLiteral("1 2 3"));
    section->setValue(QStringLiteral("Fluor Color table"), QStringLiteral("Grays"));
    section->setValue(QStringLiteral("Fluor Color Table"), QStringLiteral("wrong case is another key"));
    section->setValue(QStringLiteral("Lumin Reverse Checkbox"), QStringLiteral("0"));
    section->setValue(QStringLiteral("3DVolume Reverse CheckBox"), QStringLiteral("5"));
    section->setValue(QStringLiteral("2D Text Size"), QStringLiteral("twelve"));
    section->setValue(QStringLiteral("3D Text Size"), QStringLiteral("14"));
    user->addCustomSettingsSection(section);
    QCOMPARE(user->saveData(), ES_SUCCESS);

    S3DViewSettings settings;
    QVERIFY(CZOPreference::get3DViewPreferencesFromFile(settings));
    QCOMPARE(settings.nBackgroundColorType, 2);
    QCOMPARE(settings.oBackgroundSolidColor, QColor(10, 20, 0));
    QCOMPARE(settings.o3DViewTextColor, QColor(1, 2, 3));
    QCOMPARE(settings.strFluorColorTable, QStringLiteral("Grays"));
    QVERIFY(!settings.bLuminReverse);
    QVERIFY(settings.b3DVolumeReverse);
    QCOMPARE(settings.n2DTextSize, 8); // unreadable: default
    QCOMPARE(settings.n3DTextSize, 14);
    QCOMPARE(settings.strLuminColorTable, QStringLiteral("Rainbow")); // missing: default

    CZOPreference::initialize3DViewPreferences();
    QColor color;
    CZOPreference::getPreferredROILineColor(true, color);
    QCOMPARE(color, QColor(0, 0, 255));
    QCOMPARE(CZOPreference::getDefault3DViewSettings().n3DTextSize, 14);
}

void TestCZOPreference::emittersEmitExactlyOneSignal_data()
{
    QTest::addColumn<int>("emitter");
    QTest::addColumn<QString>("signal");
    const char *expected[] = {"updatePreferenceSetting()", "loadPreference()", "userChanged()",
                              "preferenceChanged()", "printImage(QPixmap,bool)", "ROILineColorChoices()",
                              "update3DVolumeColorTable()", "signalUpdateActiveWindow()", "activeUserChanged()",
                              "signal3DSceneUpdate()", "signalGLViewUpdate()", "colorTableChoices(bool)"};
    const char *names[] = {"SignalUpdatePreferenceSetting", "signalLoadPreference", "signalLoadRoi (crossed)",
                           "signalPreferenceChanged", "signalPrintImage", "signalROILineColorChange",
                           "signalUpdate3DVolumeColorTable", "signalUpdateActiveWnd", "signalUserChanged (crossed)",
                           "signalVisible3DScenes", "signalVisibleGLViews", "signalupdateColorTableChoices"};
    for (int i = 0; i < 12; ++i)
        QTest::newRow(names[i]) << i << QString::fromLatin1(expected[i]);
}

void TestCZOPreference::emittersEmitExactlyOneSignal()
{
    QFETCH(int, emitter);
    QFETCH(QString, signal);
    CZOPreferenceSignal *handler = CZOPreference::getSignalHandler();
    const QMetaObject *meta = handler->metaObject();
    QMap<QString, QSignalSpy *> spies;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() == QMetaMethod::Signal)
            spies.insert(QString::fromLatin1(method.methodSignature()), new QSignalSpy(handler, method));
    }
    QCOMPARE(spies.size(), 12);
    const QPixmap pixmap(2, 2);
    const std::function<void()> emitters[] = {
        [=] { handler->SignalUpdatePreferenceSetting(); }, [=] { handler->signalLoadPreference(); },
        [=] { handler->signalLoadRoi(); }, [=] { handler->signalPreferenceChanged(); },
        [=] { handler->signalPrintImage(pixmap, true); }, [=] { handler->signalROILineColorChange(); },
        [=] { handler->signalUpdate3DVolumeColorTable(); }, [=] { handler->signalUpdateActiveWnd(); },
        [=] { handler->signalUserChanged(); }, [=] { handler->signalVisible3DScenes(); },
        [=] { handler->signalVisibleGLViews(); }, [=] { handler->signalupdateColorTableChoices(true); }};
    emitters[emitter]();
    for (auto it = spies.cbegin(); it != spies.cend(); ++it)
        QCOMPARE(qMakePair(it.key(), it.value()->count()), qMakePair(it.key(), it.key() == signal ? 1 : 0));
    if (signal.contains("bool"))
        QCOMPARE(spies.value(signal)->first().last().toBool(), true);
    qDeleteAll(spies);
}

void TestCZOPreference::userSelectionTellsTheViews()
{
    CZOPreferenceSignal *handler = CZOPreference::getSignalHandler();
    QStringList order;
    auto a = connect(handler, &CZOPreferenceSignal::userChanged, [&order] { order << "userChanged"; });
    auto b = connect(handler, &CZOPreferenceSignal::activeUserChanged, [&order] { order << "activeUserChanged"; });

    // No user and the dialog cancelled: only activeUserChanged.
    QTimer::singleShot(50, [] {
        if (CZOSUserIDDialog *dialog = CZOPreference::getPreferenceManager()->selectionDialog())
            dialog->reject();
    });
    CZOPreference::doUserSelection();
    QCOMPARE(order, QStringList{"activeUserChanged"});

    order.clear();
    QVERIFY(activateNewUser(QStringLiteral("SL")));
    CZOPreference::doUserSelection();
    QCOMPARE(order, (QStringList{"userChanged", "activeUserChanged"}));
    disconnect(a);
    disconnect(b);
}

void TestCZOPreference::saveFilters_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("result");
    QTest::newRow("preferred moves first") << "tif" << "PNG (*.png);;TIFF (*.tif);;JPEG (*.jpg)"
                                           << "TIFF (*.tif);;PNG (*.png);;JPEG (*.jpg)";
    QTest::newRow("empty parts dropped") << "jpg" << "PNG (*.png);;;;JPEG (*.jpg);;" << "JPEG (*.jpg);;PNG (*.png)";
    QTest::newRow("case-sensitive") << "TIF" << "PNG (*.png);;TIFF (*.tif)" << "PNG (*.png);;TIFF (*.tif)";
    QTest::newRow("format named but no dotted entry") << "png" << "png files;;TIFF (*.tif)"
                                                      << "png files;;TIFF (*.tif)";
    QTest::newRow("absent: untouched, empty parts too") << "bmp" << "PNG (*.png);;;;TIFF (*.tif)"
                                                        << "PNG (*.png);;;;TIFF (*.tif)";
}

void TestCZOPreference::saveFilters()
{
    QFETCH(QString, format);
    QFETCH(QString, filter);
    QFETCH(QString, result);
    CPLPreferenceUser *user = activateNewUser(QStringLiteral("SF"));
    QVERIFY(user);
    CZOPreference::setUsersPreferredFormat(QString()); // ignored
    CZOPreference::setUsersPreferredFormat(format);
    QCOMPARE(CZOPreference::getUsersPreferredFormat(), format);
    // Written into the user's settings at once.
    CPLSection *general = nullptr;
    QCOMPARE(user->getCustomSettingsSection(QStringLiteral("General User Setting"), &general), ES_SUCCESS);
    QCOMPARE(general->value(QStringLiteral("ImageExportFormat")), format);
    CZOPreference::modifySaveFilterByPreference(filter);
    QCOMPARE(filter, result);
}

void TestCZOPreference::preferredWindowSize_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("adjust");
    QTest::addColumn<QSize>("size");
    QTest::newRow("adjusted 80/80 on 1920x1080") << QSize(1920, 1080) << 80 << 80 << true << QSize(1632, 810);
    QTest::newRow("plain 80/80") << QSize(1920, 1080) << 80 << 80 << false << QSize(1536, 864);
    QTest::newRow("truncates") << QSize(1001, 999) << 55 << 65 << false << QSize(550, 649);
}

void TestCZOPreference::preferredWindowSize()
{
    QFETCH(QSize, screen);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, adjust);
    QFETCH(QSize, size);
    QCOMPARE(CZOPreference::preferredSizeForScreen(screen, width, height, adjust), size);

    tag_scustomizeinfo *info = CZOPreference::getSettings()->getCustomizeInfo();
    info->nWndPrefWidthPercent = width;
    info->nWndPrefHeightPercent = height;
    int w = -1, h = -1;
    CZOPreference::getWindowsPreferredSize(w, h, adjust);
    const QSize primary = QGuiApplication::primaryScreen()->geometry().size();
    QCOMPARE(QSize(w, h), CZOPreference::preferredSizeForScreen(primary, width, height, adjust));
}

void TestCZOPreference::sequenceLoadingBelongsToOneDataSet()
{
    int a = 0, b = 0;
    CZOPreference::setIsSequenceLoading(true, &a);
    QVERIFY(CZOPreference::isSequenceLoading());
    QVERIFY(CZOPreference::isSequenceLoading(&a));
    QVERIFY(!CZOPreference::isSequenceLoading(&b));
    CZOPreference::setIsSequenceLoading(false, &a);
    QVERIFY(!CZOPreference::isSequenceLoading(&a));
}

void TestCZOPreference::exportPathNeedsSaveDiskPaths()
{
    tag_scustomizeinfo *info = CZOPreference::getSettings()->getCustomizeInfo();
    info->bSaveDiskPaths = false;
    CZOPreference::getSettings()->setExportPath(QStringLiteral("/before"));
    CZOPreference::setExportPath(QStringLiteral("/ignored"));
    QCOMPARE(CZOPreference::getSettings()->getExportPath(), QStringLiteral("/before"));
    info->bSaveDiskPaths = true;
    CZOPreference::setExportPath(QStringLiteral("/kept"));
    QCOMPARE(CZOPreference::getSettings()->getExportPath(), QStringLiteral("/kept"));
}

void TestCZOPreference::utilityClassReachesTheStore()
{
    QCOMPARE(CZOUtilityFns::getZOPrefenceSignal(), CZOPreference::getSignalHandler());
    QVERIFY(activateNewUser(QStringLiteral("UF")));
    const QString name = CZOUtilityFns::generateCurrentSeqName();
    QVERIFY2(QRegularExpression("^UF\\d{14}_SEQ$").match(name).hasMatch(), qPrintable(name));
}

QTEST_MAIN(TestCZOPreference)
#include "tst_czopreference.moc"
