#include "czopreference.h"

#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "zoconstants.h"
#include "zopreferencehooks.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>

// Built in this order when the library loads, torn down in reverse.
QString CZOPreference::m_strAppVersion;
CPLPreferenceManager CZOPreference::m_oPreferenceManager;
CPLSettingsFileWrapper CZOPreference::m_oPreferences;
CZOSSettings CZOPreference::m_oSettings;
CZOPreferenceSignal CZOPreference::m_oSignalHandler;
S3DViewSettings CZOPreference::m_s3DViewSettings;
SDefaultColorbar CZOPreference::m_sDefaultColorbar;
SPresetColors CZOPreference::m_sPresetColors;
QColor CZOPreference::m_sDefaultLuminROILineColor(255, 0, 0);
QColor CZOPreference::m_sDefaultFluorROILineColor(0, 0, 255);
QStringList CZOPreference::m_lPresetNames{ZO_COLORTABLE_MIDNIGHT, ZO_COLORTABLE_DAYLIGHT, QStringLiteral("Dusk")};
bool CZOPreference::m_bIsSequenceLoading = false;
void *CZOPreference::m_pLoadingSeqDataset = nullptr;
bool CZOPreference::m_bLaunchForBackgroundAcquisition = false;
bool CZOPreference::m_bOverrideLoadTimeColorSettings = false;
bool CZOPreference::m_bShowTransIllumination = false;
bool CZOPreference::m_bTPVisibleStatus = false;
bool CZOPreference::m_bUserPrefChanged = false;

namespace {

// Opens the store to the log and the utility class, which are built below it
// and reach it only through these hooks; closed again before the store goes.
struct HookInstaller {
    HookInstaller()
    {
        ZOPreferenceHooks hooks;
        hooks.activeUserSession = [](QString *userName, QString *sessionText) {
            CPLPreferenceUser *user = CZOPreference::getActiveUser();
            if (!user || user->getUserName(userName) != ES_SUCCESS)
                return false;
            *sessionText = user->getCurrentSession();
            return true;
        };
        hooks.activeUserName = [] { return CZOPreference::getActiveUserName(); };
        hooks.selectUser = [] { CZOPreference::doUserSelection(); };
        hooks.preferenceSignal = [] { return CZOPreference::getSignalHandler(); };
        zoSetPreferenceHooks(hooks);
    }
    ~HookInstaller() { zoSetPreferenceHooks(ZOPreferenceHooks()); }
};
const HookInstaller s_hookInstaller;

// "R G B" in decimal; a missing or unreadable part is 0.
QColor parseColor(const QString &text)
{
    int rgb[3];
    for (int i = 0; i < 3; ++i)
        rgb[i] = qBound(0, text.section(QLatin1Char(' '), i, i).toInt(nullptr, 10), 255);
    return QColor(rgb[0], rgb[1], rgb[2]);
}

} // namespace

S3DViewSettings S3DViewSettings::defaults()
{
    S3DViewSettings s;
    s.nBackgroundColorType = 0;
    s.oBackgroundSolidColor = QColor(50, 152, 255);
    s.oGradientTopColor = QColor(0, 0, 0);
    s.oGradientBottomColor = QColor(0, 0, 0);
    s.strBackgroundPresetColor = ZO_COLORTABLE_MIDNIGHT;
    s.strLuminColorTable = ZO_COLORTABLE_RAINBOW;
    s.strFluorColorTable = ZO_COLORTABLE_YELLOWHOT;
    s.bLuminReverse = true;
    s.bFluorReverse = false;
    s.bUsePaletteSettingsDuringLoad = true;
    s.oLuminROILineColor = QColor(255, 0, 0);
    s.oFluorROILineColor = QColor(0, 0, 255);
    s.str3DVolumeColorTable = ZO_COLORTABLE_JET;
    s.b3DVolumeReverse = false;
    s.o2DViewBackgroundColor = QColor(255, 255, 255);
    s.o3DViewTextColor = QColor(Qt::white);
    s.o2DViewTextColor = QColor(Qt::black);
    s.o3DSurfaceColor = QColor(Qt::gray);
    s.n2DTextSize = 8;
    s.n3DTextSize = 8;
    s.strCTTargetType = QStringLiteral("Animal");
    return s;
}

CZOPreference::CZOPreference() = default;

CZOPreference::~CZOPreference() = default;

tag_estatus CZOPreference::loadPreferences()
{
    return m_oPreferenceManager.initialLoad(QCoreApplication::applicationDirPath());
}

CPLSettingsFileWrapper *CZOPreference::getPreferences()
{
    CPLPreferenceUser *user = m_oPreferenceManager.getActiveUser();
    if (!user)
        return &m_oPreferences;
    m_oPreferences.clear();
    QString name;
    user->getUserName(&name);
    m_oPreferences.load(getUserProfileDirPath() + QLatin1Char('/') + ZO_FOLDER_PROFILES + QLatin1Char('/') + name
                        + ZO_FILE_TXT_EXTENSION);
    return &m_oPreferences;
}

void CZOPreference::clearPreferences()
{
    m_oPreferences.clear();
}

bool CZOPreference::get3DViewPreferencesFromFile(S3DViewSettings &settings)
{
    settings = S3DViewSettings::defaults();
    const CPLSettingsFileWrapper *file = getPreferences();
    const CPLSection *section = file ? file->getSection(ZO_PREF_3D_VIEW_PREFERENCES) : nullptr;
    if (!section)
        return false;

    // Each key on its own: a missing or unreadable one keeps its default.
    auto readInt = [section](const QString &key, int &value) { section->getIntValue(key, value); };
    auto readBool = [section](const QString &key, bool &value) {
        int number = 0;
        if (section->getIntValue(key, number) == ES_SUCCESS)
            value = number != 0;
    };
    auto readText = [section](const QString &key, QString &value) { section->getValue(key, value); };
    auto readColor = [section](const QString &key, QColor &value) {
        QString text;
        if (section->getValue(key, text) == ES_SUCCESS)
            value = parseColor(text);
    };
    readInt(ZO_PREF_3D_VIEW_BACKGROUND_COLOR_TYPE, settings.nBackgroundColorType);
    readColor(ZO_PREF_3D_VIEW_BACKGROUND_SOLID_COLOR, settings.oBackgroundSolidColor);
    readColor(ZO_PREF_3D_VIEW_BACKGROUND_GRADIENT_TOP_COLOR, settings.oGradientTopColor);
    readColor(ZO_PREF_3D_VIEW_BACKGROUND_GRADIENT_BOTTOM_COLOR, settings.oGradientBottomColor);
    readText(ZO_PREF_3D_VIEW_BACKGROUND_PRESET_COLOR, settings.strBackgroundPresetColor);
    readText(ZO_PREF_LUMIN_COLOR_TABLE, settings.strLuminColorTable);
    readText(ZO_PREF_FLUOR_COLOR_TABLE, settings.strFluorColorTable);
    readBool(ZO_PREF_LUMIN_REVERSE_CHECKBOX, settings.bLuminReverse);
    readBool(ZO_PREF_FLUOR_REVERSE_CHECKBOX, settings.bFluorReverse);
    readBool(ZO_PREF_USE_PALETTE_SETTINGS_DURING_LOAD_TIME, settings.bUsePaletteSettingsDuringLoad);
    readColor(ZO_PREF_LUMIN_ROI_LINE_COLOR, settings.oLuminROILineColor);
    readColor(ZO_PREF_FLUOR_ROI_LINE_COLOR, settings.oFluorROILineColor);
    readText(ZO_PREF_3DVOLUME_COLOR_TABLE, settings.str3DVolumeColorTable);
    readBool(ZO_PREF_3DVOLUME_REVERSE_CHECKBOX, settings.b3DVolumeReverse);
    readColor(ZO_PREF_2D_VIEW_BACKGROUND_SOLID_COLOR, settings.o2DViewBackgroundColor);
    readColor(ZO_PREF_3D_VIEW_TEXT_COLOR, settings.o3DViewTextColor);
    readColor(ZO_PREF_2D_VIEW_TEXT_COLOR, settings.o2DViewTextColor);
    readColor(ZO_PREF_3D_SURFACE_COLOR, settings.o3DSurfaceColor);
    readInt(ZO_PREF_2D_TEXT_SIZE, settings.n2DTextSize);
    readInt(ZO_PREF_3D_TEXT_SIZE, settings.n3DTextSize);
    readText(ZO_PREF_CT_TARGET_TYPE, settings.strCTTargetType);
    return true;
}

void CZOPreference::get3DViewPreferences(S3DViewSettings &settings)
{
    settings = m_s3DViewSettings;
}

void CZOPreference::initialize3DViewPreferences()
{
    get3DViewPreferencesFromFile(m_s3DViewSettings);
}

S3DViewSettings CZOPreference::getDefault3DViewSettings()
{
    return m_s3DViewSettings;
}

void CZOPreference::setDefault3DViewSettings(const S3DViewSettings &settings)
{
    m_s3DViewSettings = settings;
}

SPresetColors CZOPreference::getPresetColor(const QString &name)
{
    SPresetColors colors;
    switch (m_lPresetNames.indexOf(name)) {
    case 1: // Daylight
        colors.oTopColor = QColor(50, 152, 255);
        colors.oBottomColor = QColor(200, 228, 255);
        break;
    case 2: // Dusk
        colors.oTopColor = QColor(0, 0, 122);
        colors.oBottomColor = QColor(108, 124, 167);
        break;
    default: // Midnight, also for unknown names
        colors.oTopColor = QColor(0, 0, 0);
        colors.oBottomColor = QColor(0, 0, 0);
        break;
    }
    m_sPresetColors = colors;
    return colors;
}

QStringList CZOPreference::getPresetColorNames()
{
    return m_lPresetNames;
}

SDefaultColorbar CZOPreference::getDefaultColorBar()
{
    return m_sDefaultColorbar;
}

void CZOPreference::setDefaultColorBar(SDefaultColorbar colorbar)
{
    m_sDefaultColorbar = colorbar;
}

void CZOPreference::getDefaultROILineColor(QColor &lumin, QColor &fluor)
{
    lumin = m_sDefaultLuminROILineColor;
    fluor = m_sDefaultFluorROILineColor;
}

void CZOPreference::setDefaultROILineColor(const QColor &lumin, const QColor &fluor)
{
    m_sDefaultLuminROILineColor = lumin;
    m_sDefaultFluorROILineColor = fluor;
}

void CZOPreference::getPreferredROILineColor(bool fluorescent, QColor &color)
{
    S3DViewSettings settings;
    get3DViewPreferences(settings);
    color = fluorescent ? settings.oFluorROILineColor : settings.oLuminROILineColor;
}

QSize CZOPreference::preferredSizeForScreen(const QSize &screen, int widthPercent, int heightPercent, bool adjust)
{
    if (adjust) {
        widthPercent += 5;
        heightPercent -= 5;
    }
    return QSize(screen.width() * widthPercent / 100, screen.height() * heightPercent / 100);
}

void CZOPreference::getWindowsPreferredSize(int &width, int &height, bool adjust)
{
    const QScreen *screen = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
        ? QGuiApplication::primaryScreen()
        : nullptr;
    const tag_scustomizeinfo *info = m_oSettings.getCustomizeInfo();
    const QSize size = preferredSizeForScreen(screen ? screen->geometry().size() : QSize(0, 0),
                                              info->nWndPrefWidthPercent, info->nWndPrefHeightPercent, adjust);
    width = size.width();
    height = size.height();
}

void CZOPreference::modifySaveFilterByPreference(QString &filter)
{
    const QString format = getUsersPreferredFormat();
    if (format.isEmpty() || !filter.contains(format))
        return;
    const QString separator = QStringLiteral(";;");
    QStringList filters = filter.split(separator, Qt::SkipEmptyParts);
    modifySaveFilterListByPreference(filters);
    filter = filters.join(separator);
}

void CZOPreference::modifySaveFilterListByPreference(QStringList &filters)
{
    const QString format = getUsersPreferredFormat();
    if (format.isEmpty())
        return;
    const QString pattern = QLatin1Char('.') + format;
    for (int i = 0; i < filters.size(); ++i) {
        if (filters.at(i).contains(pattern)) {
            filters.move(i, 0);
            return;
        }
    }
}

void CZOPreference::setUsersPreferredFormat(const QString &format)
{
    if (format.isEmpty())
        return;
    m_oSettings.getCustomizeInfo()->strImageExportFormat = format;
    m_oSettings.writeCustomizeInfo();
}

QString CZOPreference::getUsersPreferredFormat()
{
    return m_oSettings.getCustomizeInfo()->strImageExportFormat;
}

void CZOPreference::readUserTxtFile()
{
    m_oSettings.readUserTxtFile();
}

void CZOPreference::writeUserTxtFile()
{
    m_oSettings.writeUserTxtFile();
}

void CZOPreference::doUserSelection()
{
    if (m_oPreferenceManager.getActiveUser()) {
        emit m_oSignalHandler.userChanged();
        emit m_oSignalHandler.activeUserChanged();
        return;
    }
    m_oPreferenceManager.selectUser(QString());
    if (m_oPreferenceManager.getActiveUser())
        emit m_oSignalHandler.userChanged();
    emit m_oSignalHandler.activeUserChanged();
}

QString CZOPreference::getVerString()
{
    // The empty edition text leaves two blanks before the build stamp; kept.
    QString text = QStringLiteral("Zolvane\u00AE");
    if (!m_strAppVersion.isEmpty())
        text += QLatin1Char(' ') + m_strAppVersion;
    text += QStringLiteral(" (64-bit)");
    text += QLatin1Char(' ') + QString() + QLatin1Char(' ');
    text += QStringLiteral("(Jul 29 2018, 21:41:08)");
    return text;
}

QString CZOPreference::getAppVersion()
{
    return m_strAppVersion;
}

void CZOPreference::setAppVersion(const QString &version)
{
    m_strAppVersion = version;
}

CPLPreferenceUser *CZOPreference::getActiveUser()
{
    return m_oPreferenceManager.getActiveUser();
}

QString CZOPreference::getActiveUserName()
{
    return m_oPreferenceManager.getActiveUserName();
}

CPLPreferenceManager *CZOPreference::getPreferenceManager()
{
    return &m_oPreferenceManager;
}

CZOSSettings *CZOPreference::getSettings()
{
    return &m_oSettings;
}

CZOPreferenceSignal *CZOPreference::getSignalHandler()
{
    return &m_oSignalHandler;
}

QString CZOPreference::getUserProfileDirPath()
{
    return m_oPreferenceManager.getProfileDirectory();
}

void CZOPreference::setExportPath(const QString &path)
{
    if (m_oSettings.getCustomizeInfo()->bSaveDiskPaths)
        m_oSettings.setExportPath(path);
}

void CZOPreference::setIsSequenceLoading(bool loading, void *dataset)
{
    m_bIsSequenceLoading = loading;
    m_pLoadingSeqDataset = dataset;
}

bool CZOPreference::isSequenceLoading(void *dataset)
{
    if (dataset && dataset != m_pLoadingSeqDataset)
        return false;
    return m_bIsSequenceLoading;
}

void CZOPreference::setTransIllumOption(bool on) { m_bShowTransIllumination = on; }
bool CZOPreference::getTransIllumOption() { return m_bShowTransIllumination; }
void CZOPreference::setTPVisibleStatus(bool visible) { m_bTPVisibleStatus = visible; }
bool CZOPreference::getTPVisibleStatus() { return m_bTPVisibleStatus; }
void CZOPreference::setLaunchForBackgroundAcquisition(bool on) { m_bLaunchForBackgroundAcquisition = on; }
bool CZOPreference::isLaunchedForBackgroundAcquisition() { return m_bLaunchForBackgroundAcquisition; }
void CZOPreference::setOverrideLoadTimeColorSettings(bool on) { m_bOverrideLoadTimeColorSettings = on; }
bool CZOPreference::isOverrideLoadTimeColorSettings() { return m_bOverrideLoadTimeColorSettings; }
void CZOPreference::setUserPreferenceChanged(bool changed) { m_bUserPrefChanged = changed; }
bool CZOPreference::isUserPreferenceChanged() { return m_bUserPrefChanged; }
