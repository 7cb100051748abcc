#pragma once
// Section names, keys and messages of the profile files that only the
// preferences part uses. Part of the file format: matched exactly.

#include <QString>

namespace zoprefs {

const QString kGeneralUserSetting = QStringLiteral("General User Setting");
const QString kPasswordKey = QStringLiteral("Password");
const QString kAutoSaveKey = QStringLiteral("Auto-Save datasets");
const QString kApplicationPaths = QStringLiteral("Application Related Paths");
const QString kPreferredWorkingDirectory = QStringLiteral("Preferred working Directory");
const QString kMenuName = QStringLiteral("Menu Name");
const QString kFileOnDisk = QStringLiteral("File On Disk");
const QString kRoiFileSection = QStringLiteral("ROI File %1");
const QString k3DRoiSection = QStringLiteral("3D ROI");
const QString kLabelSetMarker = QStringLiteral("*** User Label Name Set:");
const QString kSectionPrefix = QStringLiteral("*** ");
const QString kDefaultCalibration = QStringLiteral("counts");
const QString kNoUser = QStringLiteral("_none_");

// Folders of the profile directory and of its older locations.
const QString kObsoleteProfilesFolder = QStringLiteral("user profiles");
const QString kApplicationData = QStringLiteral("Application Data");

// Keys of the "General User Setting" section.
const QString kDockToolPanel = QStringLiteral("Dock Tool Panel");
const QString kDockLeft = QStringLiteral("Dock Left");
const QString kShowActivityBar = QStringLiteral("Show Activity Bar");
const QString kSaveColors = QStringLiteral("Save Colors");
const QString kAdvancedOption = QStringLiteral("Advanced Option");
const QString kSaveDiskPaths = QStringLiteral("Save Disk-Paths");
const QString kSaveWindowDetails = QStringLiteral("Save Window Details");
const QString kSaveFileList = QStringLiteral("Save File List");
const QString kMRUSize = QStringLiteral("MRU Size");
const QString kWindowWidthPercent = QStringLiteral("WindowPrefWidthInPercent");
const QString kWindowHeightPercent = QStringLiteral("WindowPrefHeightInPercent");
const QString kSaveFloatCorrected = QStringLiteral("Save Float-Corrected Image");
const QString kImageExportFormat = QStringLiteral("ImageExportFormat");
const QString kEnableTransIllumination = QStringLiteral("Enable TransIllumination Location");
const QString kIndividualColorScale = QStringLiteral("Individual Color Scale");
const QString kPhoton = QStringLiteral("Photon");
const QString kCount = QStringLiteral("Count");
const QString kNo = QStringLiteral("No");

} // namespace zoprefs
