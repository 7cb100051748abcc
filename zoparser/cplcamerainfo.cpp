#include "cplcamerainfo.h"

#include "parserconstants_p.h"

CPLSection *CPLCameraInfo::getCameraSystemInfoSection() const
{
    return getSection(zoparser::kCameraSystemInfo());
}

tag_estatus CPLCameraInfo::loadCameraInfo(const QString &path)
{
    const tag_estatus status = loadFile(path);
    if (status != ES_SUCCESS)
        return status;
    return getCameraSystemInfoSection() ? ES_SUCCESS : ES_SYSTEM_CONFIG_NOT_FOUND;
}

tag_estatus CPLCameraInfo::saveCameraInfo(const QString &path) const
{
    return saveFile(path);
}
