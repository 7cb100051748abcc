#pragma once
// The process-wide, static-only preference store: the application version,
// the users (through the preference manager), the settings, the active
// user's preference file, the 3D/2D view defaults, ROI line colours, the
// colour-bar defaults and a few run-time flags. Built when the library is
// loaded and kept until it is unloaded; GUI thread only.

#include "cplpreferencemanager.h"
#include "cplsettingsfilewrapper.h"
#include "czopreferencesignal.h"
#include "czossettings.h"
#include "zoutils_export.h"

#include <QColor>
#include <QSize>
#include <QString>
#include <QStringList>

class CPLPreferenceUser;

// The 3D and 2D view defaults of the section "3D View Preferences".
// Colours are stored as "R G B"; booleans and sizes as integers.
struct S3DViewSettings {
    int nBackgroundColorType = 0;        // "3D View Background Color Type": solid, gradient or preset
    QColor oBackgroundSolidColor;        // "3D View Background Solid Color"
    QColor oGradientTopColor;            // "3D View Background Gradient Top Color"
    QColor oGradientBottomColor;         // "3D View Background Gradient Bottom Color"
    QString strBackgroundPresetColor;    // "3D View Background preset color"
    QString strLuminColorTable;          // "Lumin Color Table"
    QString strFluorColorTable;          // "Fluor Color table"
    bool bLuminReverse = false;          // "Lumin Reverse Checkbox"
    bool bFluorReverse = false;          // "Fluor Reverse Checkbox"
    bool bUsePaletteSettingsDuringLoad = false; // "Use Palette Settings during Load Time"
    QColor oLuminROILineColor;           // "Lumin ROI Line Color"
    QColor oFluorROILineColor;           // "Fluor ROI Line Color"
    QString str3DVolumeColorTable;       // "3DVolume Color Table"
    bool b3DVolumeReverse = false;       // "3DVolume Reverse CheckBox"
    QColor o2DViewBackgroundColor;       // "2D View Background solid color"
    QColor o3DViewTextColor;             // "3D View Text Color"
    QColor o2DViewTextColor;             // "2D View Text Color"
    QColor o3DSurfaceColor;              // "3D Surface Color"
    int n2DTextSize = 0;                 // "2D Text Size"
    int n3DTextSize = 0;                 // "3D Text Size"
    QString strCTTargetType;             // "CT Target Type"

    // The values used when the file has none.
    static S3DViewSettings defaults();
};

// Top and bottom colour of a 3D background gradient preset.
struct SPresetColors {
    QColor oTopColor;
    QColor oBottomColor;
};

// The default colour bar.
struct SDefaultColorbar {
    qint32 nVisible = 1;       // shown with new images
    qint32 nShowTitle = 1;     // with its unit title
    qint32 nPosition = 2;      // 0 left, 1 top, 2 right, 3 bottom
    qint32 nNumberFormat = 0;  // 0 automatic, 1 fixed, 2 scientific
    qint32 nFontSize = 8;      // points
    qint32 nDecimals = 0;      // 0 automatic
};

class ZOUTILS_EXPORT CZOPreference
{
public:
    CZOPreference();
    CZOPreference(const CZOPreference &) = default;
    CZOPreference &operator=(const CZOPreference &) = default;
    virtual ~CZOPreference();

    // Loads the users (CPLPreferenceManager::initialLoad with the
    // application's folder) and passes its status on.
    static tag_estatus loadPreferences();
    // With an active user, re-reads that user's profile file into the
    // wrapper on every call; without one, returns the wrapper untouched.
    // The wrapper is owned by the store.
    static CPLSettingsFileWrapper *getPreferences();
    static void clearPreferences();

    // Fills `settings` from "3D View Preferences" (missing keys take their
    // defaults). False, with every field at its default, when there is no
    // preference file or no such section.
    static bool get3DViewPreferencesFromFile(S3DViewSettings &settings);
    static void get3DViewPreferences(S3DViewSettings &settings);
    static void initialize3DViewPreferences();
    static S3DViewSettings getDefault3DViewSettings();
    static void setDefault3DViewSettings(const S3DViewSettings &settings);

    // "Midnight", "Daylight" or "Dusk"; any other name gives "Midnight".
    static SPresetColors getPresetColor(const QString &name);
    static QStringList getPresetColorNames();
    static SDefaultColorbar getDefaultColorBar();
    static void setDefaultColorBar(SDefaultColorbar colorbar);

    static void getDefaultROILineColor(QColor &lumin, QColor &fluor);
    static void setDefaultROILineColor(const QColor &lumin, const QColor &fluor);
    static void getPreferredROILineColor(bool fluorescent, QColor &color);

    // The preferred main window size on the primary screen, from the
    // percentages of the settings; `adjust` widens by 5 and lowers by 5
    // percent. 0 x 0 without a screen.
    static void getWindowsPreferredSize(int &width, int &height, bool adjust);
    // The same sum for a given screen size.
    static QSize preferredSizeForScreen(const QSize &screen, int widthPercent, int heightPercent, bool adjust);

    // Moves the filter entry of the preferred save format to the front.
    static void modifySaveFilterByPreference(QString &filter);
    static void modifySaveFilterListByPreference(QStringList &filters);
    // Stores a non-empty format in the settings and writes the
    // customisation record at once.
    static void setUsersPreferredFormat(const QString &format);
    static QString getUsersPreferredFormat();

    static void readUserTxtFile();
    static void writeUserTxtFile();

    // Settles the active user, running the selection when there is none,
    // and tells the views (userChanged when a user is active, then
    // activeUserChanged).
    static void doUserSelection();

    // "Zolvane®", the version when set, "(64-bit)" and the build stamp.
    static QString getVerString();
    static QString getAppVersion();
    static void setAppVersion(const QString &version);
    static CPLPreferenceUser *getActiveUser();
    static QString getActiveUserName();
    static CPLPreferenceManager *getPreferenceManager();
    static CZOSSettings *getSettings();
    static CZOPreferenceSignal *getSignalHandler();
    // The profile directory of the manager (empty before loadPreferences).
    static QString getUserProfileDirPath();

    // Kept only when the user saves disk paths.
    static void setExportPath(const QString &path);

    // `dataset` identifies the data set being loaded.
    static void setIsSequenceLoading(bool loading, void *dataset);
    // The flag; false when `dataset` is given and is not the one loading.
    static bool isSequenceLoading(void *dataset = nullptr);
    static void setTransIllumOption(bool on);
    static bool getTransIllumOption();
    static void setTPVisibleStatus(bool visible);
    static bool getTPVisibleStatus();
    static void setLaunchForBackgroundAcquisition(bool on);
    static bool isLaunchedForBackgroundAcquisition();
    static void setOverrideLoadTimeColorSettings(bool on);
    static bool isOverrideLoadTimeColorSettings();
    static void setUserPreferenceChanged(bool changed);
    static bool isUserPreferenceChanged();

private:
    static QString m_strAppVersion;
    static CPLPreferenceManager m_oPreferenceManager;
    static CPLSettingsFileWrapper m_oPreferences;
    static CZOSSettings m_oSettings;
    static CZOPreferenceSignal m_oSignalHandler;
    static S3DViewSettings m_s3DViewSettings;
    static SDefaultColorbar m_sDefaultColorbar;
    static SPresetColors m_sPresetColors;
    static QColor m_sDefaultLuminROILineColor;
    static QColor m_sDefaultFluorROILineColor;
    static QStringList m_lPresetNames;
    static bool m_bIsSequenceLoading;
    static void *m_pLoadingSeqDataset;
    static bool m_bLaunchForBackgroundAcquisition;
    static bool m_bOverrideLoadTimeColorSettings;
    static bool m_bShowTransIllumination;
    static bool m_bTPVisibleStatus;
    static bool m_bUserPrefChanged;
};
