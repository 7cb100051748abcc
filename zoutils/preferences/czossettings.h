#pragma once
// The typed view of the active user's settings: the customisation flags of
// the "General User Setting" section, the recent-files list, remembered
// folders and window geometry. Everything lives in the active user's
// sections and reaches disk when that user is saved; with no active user the
// object keeps its last values. One instance, owned by CZOPreference.

#include "zoenums.h"
#include "zoutils_export.h"

#include <QColor>
#include <QRect>
#include <QString>

class CPLPreferenceUser;
class CPLSection;

// Customisation flags; a flag reads true when its value is "Yes" in any case.
struct tag_scustomizeinfo {
    bool bDockToolPanel = false;          // "Dock Tool Panel"
    bool bDockLeft = false;               // "Dock Left"
    QString strActivityBar;               // "Show Activity Bar"
    bool bSaveColors = false;             // "Save Colors"
    bool bSaveDiskPaths = false;          // "Save Disk-Paths": gates the folders
    bool bSaveWindowDetails = false;      // "Save Window Details": gates the geometry
    bool bSaveFileList = false;           // "Save File List": gates the recent files
    bool bEnableTransIllumLocation = false; // "Enable TransIllumination Location"
    bool bAdvancedOption = false;         // "Advanced Option"
    bool bIndividualColorScale = false;   // "Individual Color Scale"
    int nMRUSize = 0;                     // "MRU Size", 0 to 10
    int nWndPrefWidthPercent = 55;        // "WindowPrefWidthInPercent"
    int nWndPrefHeightPercent = 65;       // "WindowPrefHeightInPercent"
    QString strPhotonUnit;                // "Photon"
    QString strCountUnit;                 // "Count"
    bool bSaveFloatCorrectedImage = false; // "Save Float-Corrected Image"
    QString strImageExportFormat;         // "ImageExportFormat"
};

// State of the main window, kept as its number.
enum tag_wndstate : int {
    WND_STATE_NORMAL = 0,
    WND_STATE_MAXIMIZED = 1,
    WND_STATE_MINIMIZED = 2,
    WND_STATE_FULLSCREEN = 3
};

// Colours and place of a plot window.
struct tagstruct_WndSettings {
    QColor oLineColor;
    QColor oBackColor;
    QRect oRect;
};

class ZOUTILS_EXPORT CZOSSettings
{
public:
    static constexpr int MaxMRUCount = 10;

    CZOSSettings();
    virtual ~CZOSSettings();

    // Reads the customisation record, then the window details, then the
    // folders and recent files from the active user.
    void readUserTxtFile();
    // Writes the window details and the folders; a failure of either is
    // reported through the error handler and the other still runs.
    void writeUserTxtFile();

    // Reads "General User Setting", creating it with its defaults when the
    // active user has none.
    void readCustomizeInfo();
    // Writes the record into "General User Setting" (made when missing),
    // keeping the section's other keys. ES_INVALID_STATE with no active user.
    tag_estatus writeCustomizeInfo();
    tag_scustomizeinfo *getCustomizeInfo() { return &m_sCustomizeInfo; }

    void readWndDetails();
    tag_estatus writeWndDetails();
    void readPaths();
    tag_estatus writePaths();

    bool isToolPanelDocked() const { return m_sCustomizeInfo.bDockToolPanel; }
    bool isDockedRight() const { return !m_sCustomizeInfo.bDockLeft; }
    bool isAdvancedOptionChecked() const { return m_sCustomizeInfo.bAdvancedOption; }
    bool isSaveCorrectedImageEnabled() const { return m_sCustomizeInfo.bSaveFloatCorrectedImage; }

    // Recent files, newest first, compared ignoring case. Only the first
    // "MRU Size" slots are used.
    bool addMRUString(const QString &path);
    bool removeMRUString(const QString &path);
    QString getMRUString(unsigned int index) const;
    int getMRUCount() const;

    QString getBrowsePath() const { return m_strBrowsePath; }
    void setBrowsePath(const QString &path) { m_strBrowsePath = path; }
    QString getOpenPath() const { return m_strOpenPath; }
    void setOpenPath(const QString &path) { m_strOpenPath = path; }
    QString getExportPath() const { return m_strExportPath; }
    void setExportPath(const QString &path) { m_strExportPath = path; }
    QString getRecentFilePath() const { return m_strRecentFilePath; }
    void setRecentFilePath(const QString &path) { m_strRecentFilePath = path; }
    QString getSetUpFileOpenPath() const { return m_strSetUpFileOpenPath; }
    void setSetUpFileOpenPath(const QString &path) { m_strSetUpFileOpenPath = path; }
    QRect getMainWndRect() const { return m_oMainWndRect; }
    void setMainWndRect(const QRect &rect) { m_oMainWndRect = rect; }
    tag_wndstate getMainWndState() const { return m_eMainWndState; }
    void setMainWndState(tag_wndstate state) { m_eMainWndState = state; }
    QRect getToolPanelRect() const { return m_oToolPanelRect; }
    void setToolPanelRect(const QRect &rect) { m_oToolPanelRect = rect; }
    tagstruct_WndSettings getHistogramSettings() const { return m_sHistogramSettings; }
    void setHistogramSettings(const tagstruct_WndSettings &settings) { m_sHistogramSettings = settings; }
    tagstruct_WndSettings getProfileSettings() const { return m_sProfileSettings; }
    void setProfileSettings(const tagstruct_WndSettings &settings) { m_sProfileSettings = settings; }

private:
    // The active user's section `name`; made and added when `create` is set.
    static CPLSection *userSection(const QString &name, bool create);

    tag_scustomizeinfo m_sCustomizeInfo;
    QString m_aMRU[MaxMRUCount];
    tag_wndstate m_eMainWndState = WND_STATE_NORMAL;
    tagstruct_WndSettings m_sProfileSettings;
    tagstruct_WndSettings m_sHistogramSettings;
    QRect m_oMainWndRect;
    QRect m_oToolPanelRect;
    QString m_strBrowsePath;
    QString m_strOpenPath;
    QString m_strExportPath;
    QString m_strRecentFilePath;
    QString m_strSetUpFileOpenPath;
};
