#include "czossettings.h"

#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czopreference.h"
#include "czoserrorhandler.h"
#include "zoconstants.h"
#include "zopreferencetexts_p.h"

using namespace zoprefs;

namespace {

const QString kOpenPath = QStringLiteral("Open Path");
const QString kBrowsePath = QStringLiteral("Browse Path");
const QString kExportPath = QStringLiteral("Export Path");
const QString kSetUpFilePath = QStringLiteral("SetUp File Path");
const QString kMRUFile = QStringLiteral("MRU File %1");
const QString kProfileWindow = QStringLiteral("Profile Window Details");
const QString kHistogramWindow = QStringLiteral("Histogram Window Details");
const QString kToolPanelWindow = QStringLiteral("Tool Panel Window Details");
const QString kMainWindow = QStringLiteral("Main Window Details");
const QString kMainWindowState = QStringLiteral("Main Window State");
const QString kX1 = QStringLiteral("X1");
const QString kY1 = QStringLiteral("Y1");
const QString kX2 = QStringLiteral("X2");
const QString kY2 = QStringLiteral("Y2");
const QString kBackRed = QStringLiteral("BackColor Red");
const QString kBackGreen = QStringLiteral("BackColor Green");
const QString kBackBlue = QStringLiteral("BackColor Blue");
const QString kLineRed = QStringLiteral("LineColor Red");
const QString kLineGreen = QStringLiteral("LineColor Green");
const QString kLineBlue = QStringLiteral("LineColor Blue");

bool isYes(const CPLSection *section, const QString &key)
{
    return section->value(key).compare(ZO_CI_YES, Qt::CaseInsensitive) == 0;
}

QString yesNo(bool flag)
{
    return flag ? ZO_CI_YES : kNo;
}

// The key's number; `fallback` when the section or the key is missing, the
// value is empty or not a number.
int intValue(const CPLSection *section, const QString &key, int fallback)
{
    if (!section)
        return fallback;
    bool ok = false;
    const int value = section->value(key).trimmed().toInt(&ok, 10);
    return ok ? value : fallback;
}

QRect readRect(const CPLSection *section)
{
    return QRect(QPoint(intValue(section, kX1, -1), intValue(section, kY1, -1)),
                 QPoint(intValue(section, kX2, -1), intValue(section, kY2, -1)));
}

void writeRect(CPLSection *section, const QRect &rect)
{
    section->setIntValue(kX1, rect.left());
    section->setIntValue(kY1, rect.top());
    section->setIntValue(kX2, rect.right());
    section->setIntValue(kY2, rect.bottom());
}

QColor readColor(const CPLSection *section, const QString &red, const QString &green, const QString &blue,
                 const QColor &fallback)
{
    return QColor(qBound(0, intValue(section, red, fallback.red()), 255),
                  qBound(0, intValue(section, green, fallback.green()), 255),
                  qBound(0, intValue(section, blue, fallback.blue()), 255));
}

tagstruct_WndSettings readWindow(const CPLSection *section, const QColor &lineColor)
{
    tagstruct_WndSettings settings;
    settings.oRect = readRect(section);
    settings.oBackColor = readColor(section, kBackRed, kBackGreen, kBackBlue, QColor(255, 255, 255));
    settings.oLineColor = readColor(section, kLineRed, kLineGreen, kLineBlue, lineColor);
    return settings;
}

void writeWindow(CPLSection *section, const tagstruct_WndSettings &settings)
{
    writeRect(section, settings.oRect);
    section->setIntValue(kBackRed, settings.oBackColor.red());
    section->setIntValue(kBackGreen, settings.oBackColor.green());
    section->setIntValue(kBackBlue, settings.oBackColor.blue());
    section->setIntValue(kLineRed, settings.oLineColor.red());
    section->setIntValue(kLineGreen, settings.oLineColor.green());
    section->setIntValue(kLineBlue, settings.oLineColor.blue());
}

} // namespace

CZOSSettings::CZOSSettings() = default;

CZOSSettings::~CZOSSettings() = default;

CPLSection *CZOSSettings::userSection(const QString &name, bool create)
{
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    if (!user)
        return nullptr;
    CPLSection *section = nullptr;
    if (user->getCustomSettingsSection(name, &section) != ES_SUCCESS && create) {
        section = new CPLSection(name);
        user->addCustomSettingsSection(section);
    }
    return section;
}

void CZOSSettings::readUserTxtFile()
{
    readCustomizeInfo();
    readWndDetails();
    readPaths();
}

void CZOSSettings::writeUserTxtFile()
{
    tag_estatus status = writeWndDetails();
    if (status != ES_SUCCESS)
        CZOSErrorHandler::errorMessage(nullptr, status, QStringLiteral(" -Window Positions"));
    status = writePaths();
    if (status != ES_SUCCESS)
        CZOSErrorHandler::errorMessage(nullptr, status, QStringLiteral(" -System paths"));
}

void CZOSSettings::readCustomizeInfo()
{
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    if (!user)
        return;
    CPLSection *section = userSection(kGeneralUserSetting, false);
    tag_scustomizeinfo &info = m_sCustomizeInfo;
    if (!section) {
        // This set differs from the one a user's first save writes; both are kept.
        section = new CPLSection(kGeneralUserSetting);
        section->setValue(kDockToolPanel, kNo);
        section->setValue(kDockLeft, kNo);
        section->setValue(kShowActivityBar, ZO_LOGCAT_WARNINGS_ERRORS);
        section->setValue(kSaveColors, ZO_CI_YES);
        section->setValue(kEnableTransIllumination, QStringLiteral("yes"));
        section->setValue(kIndividualColorScale, QStringLiteral("yes"));
        section->setValue(kSaveFloatCorrected, kNo);
        section->setValue(kAdvancedOption, kNo);
        section->setValue(kSaveDiskPaths, ZO_CI_YES);
        section->setValue(kSaveWindowDetails, ZO_CI_YES);
        section->setValue(kSaveFileList, ZO_CI_YES);
        section->setValue(kMRUSize, QStringLiteral("5"));
        section->setValue(kWindowWidthPercent, QStringLiteral("55"));
        section->setValue(kWindowHeightPercent, QStringLiteral("65"));
        section->setValue(kImageExportFormat, QStringLiteral("png"));
        user->addCustomSettingsSection(section);
        user->setUpdateFlag();
    }
    info.bDockToolPanel = isYes(section, kDockToolPanel);
    info.bDockLeft = isYes(section, kDockLeft);
    info.strActivityBar = section->value(kShowActivityBar);
    info.bSaveColors = isYes(section, kSaveColors);
    info.bSaveDiskPaths = isYes(section, kSaveDiskPaths);
    info.bSaveWindowDetails = isYes(section, kSaveWindowDetails);
    info.bSaveFileList = isYes(section, kSaveFileList);
    info.bEnableTransIllumLocation = isYes(section, kEnableTransIllumination);
    info.bAdvancedOption = isYes(section, kAdvancedOption);
    info.bIndividualColorScale = isYes(section, kIndividualColorScale);
    info.nMRUSize = info.bSaveFileList ? intValue(section, kMRUSize, 5) : 0;
    info.nWndPrefWidthPercent = intValue(section, kWindowWidthPercent, 55);
    info.nWndPrefHeightPercent = intValue(section, kWindowHeightPercent, 65);
    info.strPhotonUnit = section->value(kPhoton);
    info.strCountUnit = section->value(kCount);
    info.bSaveFloatCorrectedImage = isYes(section, kSaveFloatCorrected);
    info.strImageExportFormat = section->value(kImageExportFormat);
    // An unsigned test on purpose: a negative size counts as too large.
    if (info.bSaveFileList && unsigned(info.nMRUSize) > unsigned(MaxMRUCount))
        info.nMRUSize = 5;
}

tag_estatus CZOSSettings::writeCustomizeInfo()
{
    CPLSection *section = userSection(kGeneralUserSetting, true);
    if (!section)
        return ES_INVALID_STATE;
    const tag_scustomizeinfo &info = m_sCustomizeInfo;
    section->setValue(kDockToolPanel, yesNo(info.bDockToolPanel));
    section->setValue(kDockLeft, yesNo(info.bDockLeft));
    section->setValue(kShowActivityBar, info.strActivityBar);
    section->setValue(kSaveColors, yesNo(info.bSaveColors));
    section->setValue(kSaveDiskPaths, yesNo(info.bSaveDiskPaths));
    section->setValue(kSaveWindowDetails, yesNo(info.bSaveWindowDetails));
    section->setValue(kSaveFileList, yesNo(info.bSaveFileList));
    section->setValue(kEnableTransIllumination, yesNo(info.bEnableTransIllumLocation));
    section->setValue(kAdvancedOption, yesNo(info.bAdvancedOption));
    section->setValue(kIndividualColorScale, yesNo(info.bIndividualColorScale));
    section->setIntValue(kMRUSize, info.nMRUSize);
    section->setIntValue(kWindowWidthPercent, info.nWndPrefWidthPercent);
    section->setIntValue(kWindowHeightPercent, info.nWndPrefHeightPercent);
    section->setValue(kPhoton, info.strPhotonUnit);
    section->setValue(kCount, info.strCountUnit);
    section->setValue(kSaveFloatCorrected, yesNo(info.bSaveFloatCorrectedImage));
    section->setValue(kImageExportFormat, info.strImageExportFormat);
    CZOPreference::getActiveUser()->setUpdateFlag();
    return ES_SUCCESS;
}

void CZOSSettings::readWndDetails()
{
    if (!CZOPreference::getActiveUser() || !m_sCustomizeInfo.bSaveWindowDetails)
        return;
    m_sProfileSettings = readWindow(userSection(kProfileWindow, false), QColor(0, 0, 205));
    m_sHistogramSettings = readWindow(userSection(kHistogramWindow, false), QColor(255, 0, 0));
    m_oToolPanelRect = readRect(userSection(kToolPanelWindow, false));
    const CPLSection *main = userSection(kMainWindow, false);
    m_oMainWndRect = readRect(main);
    const int state = intValue(main, kMainWindowState, WND_STATE_NORMAL);
    m_eMainWndState = state >= WND_STATE_NORMAL && state <= WND_STATE_FULLSCREEN ? tag_wndstate(state)
                                                                                  : WND_STATE_NORMAL;
}

tag_estatus CZOSSettings::writeWndDetails()
{
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    if (!user || !m_sCustomizeInfo.bSaveWindowDetails)
        return ES_SUCCESS;
    writeWindow(userSection(kProfileWindow, true), m_sProfileSettings);
    writeWindow(userSection(kHistogramWindow, true), m_sHistogramSettings);
    writeRect(userSection(kToolPanelWindow, true), m_oToolPanelRect);
    CPLSection *main = userSection(kMainWindow, true);
    writeRect(main, m_oMainWndRect);
    main->setIntValue(kMainWindowState, int(m_eMainWndState));
    user->setUpdateFlag();
    return ES_SUCCESS;
}

void CZOSSettings::readPaths()
{
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    if (!user)
        return;
    const CPLSection *section = userSection(kApplicationPaths, false);
    if (!section) {
        // A user without saved paths has no recent files either: never show another user's.
        for (QString &entry : m_aMRU)
            entry.clear();
        return;
    }
    if (m_sCustomizeInfo.bSaveDiskPaths) {
        m_strOpenPath = section->value(kOpenPath);
        m_strBrowsePath = section->value(kBrowsePath);
        m_strExportPath = section->value(kExportPath);
        m_strSetUpFileOpenPath = section->value(kSetUpFilePath);
        if (section->hasKey(kPreferredWorkingDirectory))
            user->setDefaultUserPath(section->value(kPreferredWorkingDirectory));
    }
    const int used = qBound(0, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount));
    for (int i = 0; i < MaxMRUCount; ++i)
        m_aMRU[i] = i < used ? section->value(kMRUFile.arg(i + 1)) : QString();
}

tag_estatus CZOSSettings::writePaths()
{
    CPLPreferenceUser *user = CZOPreference::getActiveUser();
    if (!user)
        return ES_SUCCESS;
    CPLSection *section = userSection(kApplicationPaths, true);
    if (m_sCustomizeInfo.bSaveDiskPaths) {
        section->setValue(kOpenPath, m_strOpenPath);
        section->setValue(kBrowsePath, m_strBrowsePath);
        section->setValue(kExportPath, m_strExportPath);
        section->setValue(kSetUpFilePath, m_strSetUpFileOpenPath);
        QString workingDir;
        user->getDefaultUserPath(&workingDir);
        section->setValue(kPreferredWorkingDirectory, workingDir);
    }
    const int used = qBound(0, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount));
    for (int i = 0; i < used; ++i)
        section->setValue(kMRUFile.arg(i + 1), m_aMRU[i]);
    user->setUpdateFlag();
    return ES_SUCCESS;
}

bool CZOSSettings::addMRUString(const QString &path)
{
    if (path.isEmpty())
        return false;
    QStringList kept;
    for (const QString &entry : m_aMRU) {
        if (!entry.isEmpty() && entry.compare(path, Qt::CaseInsensitive) != 0)
            kept.append(entry);
    }
    kept.prepend(path);
    // The oldest entry beyond the used slots drops out.
    const int used = qBound(1, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount));
    for (int i = 0; i < MaxMRUCount; ++i)
        m_aMRU[i] = i < used && i < kept.size() ? kept.at(i) : QString();
    return true;
}

bool CZOSSettings::removeMRUString(const QString &path)
{
    const int used = qBound(0, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount));
    bool removed = false;
    for (int i = 0; i < used;) {
        if (m_aMRU[i].isEmpty() || m_aMRU[i].compare(path, Qt::CaseInsensitive) != 0) {
            ++i;
            continue;
        }
        for (int j = i; j + 1 < used; ++j)
            m_aMRU[j] = m_aMRU[j + 1];
        m_aMRU[used - 1].clear();
        removed = true;
    }
    return removed;
}

QString CZOSSettings::getMRUString(unsigned int index) const
{
    if (index >= unsigned(qBound(0, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount))))
        return QString();
    return m_aMRU[index];
}

int CZOSSettings::getMRUCount() const
{
    const int used = qBound(0, m_sCustomizeInfo.nMRUSize, int(MaxMRUCount));
    int count = 0;
    while (count < used && !m_aMRU[count].isEmpty())
        ++count;
    return count;
}
