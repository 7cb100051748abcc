#pragma once
// Camera corrections: the read-bias level and read-noise accumulation of bias
// frames, the flat-field coefficients of a set-up, and the repair of the
// CCD's defective pixels, columns and rows.
//
// Stateless free functions. Failures are logged to the application log at the
// error level and reported by status.

#include "zoutils_export.h"
#include "zoenums.h"

#include <QPoint>
#include <QString>
#include <QVector>

class CILImage;
class CPLClickInfo;
class CPLSection;

// The read-bias level of a click, in camera counts. The first that applies:
//  1. "Read Bias Level" of the "darkcharge image" section;
//  2. "Read Bias Level" of the "readbiasonly image" section;
//  (without an image: status 31)
//  3. "Read Bias Level" of the "readbias image" section;
//  4. measured from `image`: its mean over the data multiplier, provided its
//     minimum and maximum lie strictly between the limits. The multiplier is
//     "Data Multiplier" of the "readbias image" section (10 when absent); the
//     limits are "Read Bias Lower Limit" and "Read Bias Upper Limit" of the
//     "Camera System Info" section times the multiplier (0 and 65535 when
//     absent). The image's statistics are refreshed from its pixels first.
// `*result` is set to 0 first. Returns 0, or 31 when the level cannot be
// measured or a stored text is not a finite number (or the multiplier is not
// positive); 16 for a null `result`.
ZOUTILS_EXPORT tag_estatus measureReadBias(CPLClickInfo &clickInfo, CILImage *image, float *result);

// Accumulates one bias frame: every pixel of `source` with
// lowerLimit < value < upperLimit (strictly) sets its `mask` pixel to 1 and
// adds the value to `sum` and 1 to `count`; any other pixel sets its mask
// pixel to 0. `sum` and `count` are 16-bit and wrap on overflow (kept as the
// files of this format expect). With `accumulate` zero, sum and count are
// cleared first. Refreshes the statistics of source, mask, count and sum.
// `unused` is not read. Returns true; false, changing nothing, when an image
// is missing or the four sizes differ.
ZOUTILS_EXPORT bool createReadSigmaImage(CILImage *source, CILImage *sum, quint16 *unused, CILImage *count,
                                         CILImage *mask, float lowerLimit, float upperLimit, int accumulate);

// The flat-field coefficients for the image of kind `type` in `clickInfo`:
// read from the "Camera System Info" section under
//  multi-view: "MV Flat Field f/<f number> Coefs";
//  otherwise:  "Shelf Position <shelf> FF5 f/<f number> Coefs", else
//              "Shelf Position <shelf> Flat Field f/<f number> Coefs",
// with the f number and the shelf position (getShelfPositionFromFOV) of the
// image's "f Number" and "Field of View". An Andor camera without keys gets
// "1.0,0.0,0.0,0.0,0.0,0.0". The text holds one coefficient more than it has
// commas, stored in order from coefs[0]; a piece that is empty or not a finite
// number stores 0 (the latter with a warning in the log), so "1,,3," gives
// 1, 0, 3, 0. `count` becomes the number stored. With a positive `capacity`
// at most that many are stored, the first ones, and a longer text logs a
// warning; with `capacity` 0 or below the caller guarantees room for all.
// Nothing is written past coefs[count - 1]. Returns 0; 16 (count 0) when the
// image's section is missing or `coefs` is null; 31 (count 0) when no key
// holds coefficients.
ZOUTILS_EXPORT tag_estatus getFlatFieldCoefficients(CPLClickInfo &clickInfo, float *coefs, int capacity,
                                                    int &count, bool multiView, tag_eimagetype type);

// The stage shelf position for a field of view, from the key
// "Shelf Position FOV Table" of the camera-system section: entries
// "<shelf>=<field of view>" separated by ";" (blanks around either part are
// ignored), for example "A=4;B=7.5;C=12.5;D=20;E=25". `fov` is a number with
// an optional unit after a blank ("12.5 cm"); it matches an entry within
// 0.01. Returns 0 with `shelf` set; otherwise `shelf` is emptied and the
// status is 49 (no table), 21 (unreadable field of view or table) or 28 (no
// entry for the field of view).
ZOUTILS_EXPORT tag_estatus getShelfPositionFromFOV(const CPLSection &cameraSystem, const QString &fov,
                                                   QString &shelf);

// The camera's defect map, in image pixel coordinates (0-based), as kept in
// the camera-system section:
//   "Defect Map Pixels":  "x,y" entries separated by ";"   ("12,40;13,40")
//   "Defect Map Columns": column numbers or ranges "a-b" separated by ";"
//   "Defect Map Rows":    row numbers or ranges, likewise
//   "Defect Map Joint Repair": a truth value ("1", "yes", ...); when true the
//     whole map is repaired in one step instead of list by list.
// Missing keys or empty values mean no defects of that kind; blanks around
// numbers are ignored; coordinates run from 0 to 65535.
struct ZOUTILS_EXPORT SCCDDefectMap
{
    QVector<QPoint> pixels;
    QVector<int> columns; // ascending, without repeats
    QVector<int> rows;    // ascending, without repeats
    bool jointRepair = false;

    bool isEmpty() const { return pixels.isEmpty() && columns.isEmpty() && rows.isEmpty(); }
};

// Parses the defect map of `cameraSystem`. Returns 0, or 21 (with `map`
// emptied) when a value breaks the form above or a number is out of range.
ZOUTILS_EXPORT tag_estatus parseCCDDefectMap(const CPLSection &cameraSystem, SCCDDefectMap &map);

// Repairs the image's defects from the camera's defect map:
//  list by list: each bad column pixel is interpolated linearly between the
//    nearest good columns of its row (the single good one at an edge); then
//    each bad row likewise between the nearest good rows of its column; then
//    each bad pixel becomes the rounded mean of its good 8-neighbours, where
//    a cluster is filled from its rim inwards;
//  joint repair: every defective pixel of the three lists is filled from its
//    rim inwards with the rounded mean of its good 8-neighbours.
// Refreshes the image's statistics on success. Returns 0; 16 for a null
// pointer; 45 for a null image; 21 for an unreadable map; 19 when an entry
// lies outside the image or a whole image side is defective (the image is
// then left unchanged).
ZOUTILS_EXPORT tag_estatus fixCCDDefects(const CPLSection *cameraSystem, CILImage *image);

// Brings the "darkcharge image" section of `clickInfo` up to date for the
// image of kind `type`: the section is created when missing, and the keys
// that decide whether a dark charge fits an image ("Exposure Time",
// "Binning Factor", "Demand Temperature", "f Number", "EM Gain") are copied
// from the image's section, replacing older values and removing those the
// image's section lacks. Other keys of the section are kept. When
// `readBiasLevel` is given it is stored as "Read Bias Level". Returns 0; 16
// when the image's section is missing; 19 for the dark-charge kind itself.
ZOUTILS_EXPORT tag_estatus updateDarkChargeImageSection(CPLClickInfo &clickInfo, tag_eimagetype type,
                                                        const float *readBiasLevel = nullptr);
