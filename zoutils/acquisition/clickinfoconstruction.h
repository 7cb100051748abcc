#pragma once
// Building the records of a new acquisition: the click info of one image set
// ("ClickInfo.txt" in the click's folder) and the sequence record of a series.
//
// Stateless free functions; the records are the caller's. Failures are the
// parser library's statuses, passed through unchanged.

#include "zoutils_export.h"
#include "zoenums.h"

#include <QString>
#include <QStringList>

class CPLCameraInfo;
class CPLClickInfo;
class CPLSequenceInfo;
class sIASetupInfo;

// Starts a click info: sets the click number (`clickNumber` as given when
// `complete`, otherwise followed by the current local date-time as 14 digits,
// "yyyyMMddhhmmss"), adds the click-number section with the application
// version, then the user-input and analysis user-input sections. Returns the
// first failing status, 16 for a null record, or 0.
ZOUTILS_EXPORT tag_estatus createNewClickInfo(CPLClickInfo *clickInfo, const QString &clickNumber, bool complete);

// Starts a sequence record from `clickNumbers` (in list order; the list is
// replaced), adds the sequence section with the application version and the
// user-input section. An empty list still gives both sections. Returns the
// first failing status (nothing further is added), 16 for a null record, or 0.
ZOUTILS_EXPORT tag_estatus createNewSeqInfo(CPLSequenceInfo *seqInfo, const QStringList &clickNumbers);

// Adds a full copy of the camera's "Camera System Info" section to the click
// info, replacing one already there. Returns 16 when either record or the
// camera section is missing, else 0.
ZOUTILS_EXPORT tag_estatus addCameraInfoSection(const CPLCameraInfo *cameraInfo, CPLClickInfo *clickInfo);

// The file name under which an image of kind `type` is stored in its click's
// folder: "photograph.TIF", "luminescent.TIF", "readbias.TIF",
// "readsigma.TIF", "background.TIF", "readbiasonly.TIF", "reference.TIF",
// "structure.TIF", "fluorescentbkg.TIF" for kinds 0 to 8, "x-ray.TIF" for 12,
// and "photograph.TIF" for any other kind.
ZOUTILS_EXPORT QString tiffFileNameForImageType(int type);

// Adds the section of the image of kind `type`, naming its file
// (tiffFileNameForImageType), with `comment` as the section's comment and
// the set-up's keys; `replace` allows replacing an existing section. Returns
// CPLClickInfo::addImageSection's status, or 16 for a null click info.
ZOUTILS_EXPORT tag_estatus addTiffImageSection(CPLClickInfo *clickInfo, tag_eimagetype type, const QString &comment,
                                               sIASetupInfo *setup, bool replace);

// Writes the click info as "ClickInfo.txt" in `folder`, creating the folder
// first when it does not exist (one level only; a failure there shows as the
// save's status). Returns the parser library's status, or 16 for null.
ZOUTILS_EXPORT tag_estatus saveNewClickInfo(const QString &folder, const CPLClickInfo *clickInfo);
