#pragma once
// The description of one acquisition set-up, used by value.

#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>
#include <QtGlobal>

class CPLSection;

class ZOPARSER_EXPORT sIASetupInfo
{
public:
    // Every member at its default; timeStamp is now.
    sIASetupInfo();
    sIASetupInfo(const sIASetupInfo &other) = default;
    sIASetupInfo &operator=(const sIASetupInfo &other) = default;
    virtual ~sIASetupInfo() = default;

    // Luminescent / fluorescent image
    double exposureTime = 0;              // seconds
    int binningFactor = 1;
    QString demandTemperature;            // CCD cooling set-point text
    QString excitationFilter = QStringLiteral("Block");
    QString emissionFilter = QStringLiteral("Open");
    QString fluorescenceLevel = QStringLiteral("High");
    QString lumFStop = QStringLiteral("2");
    QString lumBinningType = QStringLiteral("Medium");
    QString lumExposureMode = QStringLiteral("Auto");
    QString exposureUnits = QStringLiteral("sec"); // unit of every exposure text
    QString emGain = QStringLiteral("Low");
    // Shared
    double fov = 0;                       // field of view, cm
    double imagingAngle = 0;              // degrees
    QString positionName = QStringLiteral("Load");
    QString doorLock = QStringLiteral("Unlocked");
    QString focusMode = QStringLiteral("Coarse");
    QString stageHeight = QStringLiteral("18");
    double subjectHeight = 1.5;           // cm
    float zoomFactor = 1.0f;
    double ccdTemperature = -1.0;         // measured, degrees C; -1 when not measured
    // Photograph
    double photoExposureTime = 0;         // seconds
    int photoBinning = 1;
    QString photoFStop = QStringLiteral("8");
    QString photoBinningType = QStringLiteral("Medium");
    QString photoExposureMode = QStringLiteral("Auto");
    // X-ray image
    double xrayExposureTime = 0;          // seconds
    int xrayBinning = 1;
    QString xrayFStop = QStringLiteral("8");
    double xrayTubeVoltage = 0;           // kV
    double xrayTubeCurrent = 0;           // uA
    QString xrayTubeFilter = QStringLiteral("out");
    qint64 timeStamp = 0;                 // seconds since 1970 (UTC), set at construction

    // Writes the members that describe an image of kind `type` into
    // `section` (adding or replacing keys): the exposure keys of the
    // photograph for IT_PHOTOGRAPH, of the x-ray image for IT_XRAY, of the
    // luminescent image otherwise; then the shared keys. "Exposure Time" is
    // the number, a blank and exposureUnits ("60 sec").
    // ES_INVALID_POINTER for null.
    tag_estatus writeToSection(CPLSection *section, tag_eimagetype type) const;
    // Reads back what writeToSection wrote for `type`. Missing keys leave
    // their members as they are; ES_INVALID_DATA_TYPE when a present key
    // does not parse (the other keys are still read).
    tag_estatus readFromSection(const CPLSection &section, tag_eimagetype type);
};
