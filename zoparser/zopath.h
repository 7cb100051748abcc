#pragma once
// Folders of the application by path tag.

#include "zoparser_export.h"

#include <QString>

class CPLCameraInfo;

enum ZOPathTag : int {
    ZO_PATH_APPDATA = 1, // the application data folder ("zoactivity.log", statistics)
    ZO_PATH_PROBES = 2   // the folder of "ProbesTree.xml"
};

// The folder for a path tag, always ending in "/"; an empty text for an
// unknown tag or when `create` is set and the folder cannot be made.
//
// Tag 1: $ZO_DATA_ROOT when that environment variable is set, otherwise the
// per-user generic data folder + "Norbeck Instruments/Zolvane/".
// Tag 2: the tag-1 folder + "Probes/".
// Tests and the demo set ZO_DATA_ROOT to point every file at one folder.
// `cameraInfo` is accepted for callers that pass one; no tag depends on it.
ZOPARSER_EXPORT QString getZOPath(int tag, bool create = true, const CPLCameraInfo *cameraInfo = nullptr);
