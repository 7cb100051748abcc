#pragma once
// The camera description ("CameraInfo.txt"). Its "Camera System Info"
// section holds the camera's configuration keys (flat-field coefficients,
// read-bias limits, defect map, ...).

#include "cplsectionlist.h"
#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>

class CPLSection;

class ZOPARSER_EXPORT CPLCameraInfo : public CPLSectionList
{
public:
    CPLCameraInfo() = default;
    CPLCameraInfo(const CPLCameraInfo &other) = default;
    CPLCameraInfo &operator=(const CPLCameraInfo &other) = default;
    ~CPLCameraInfo() override = default;

    // The "Camera System Info" section, or null; owned by this record.
    CPLSection *getCameraSystemInfoSection() const;

    // Replaces the record with the file's sections. ES_SYSTEM_CONFIG_NOT_FOUND
    // when the file has no "Camera System Info" section (the other sections
    // are kept); else as CPLSectionList::loadFile.
    tag_estatus loadCameraInfo(const QString &path);
    tag_estatus saveCameraInfo(const QString &path) const;
};
