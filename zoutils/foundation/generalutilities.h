#pragma once
// General helper functions: date-time stamps, number texts, folder copy and
// delete, path shortening, MD5 texts, colour of a wavelength, line pixels and
// colour-table names. All are stateless and reentrant, except getCurrentTime(),
// whose result lives in the C library's shared buffer.

#include "zoutils_export.h"
#include "zoenums.h"

#include <QDateTime>
#include <QDir>
#include <QFont>
#include <QList>
#include <QString>

#include <ctime>

// A point of two doubles, x then y.
struct ZOUTILS_EXPORT Coord2d {
    double x = 0.0;
    double y = 0.0;
    Coord2d() = default;
    Coord2d(double ax, double ay) : x(ax), y(ay) {}
    bool operator==(const Coord2d &o) const { return x == o.x && y == o.y; }
    bool operator!=(const Coord2d &o) const { return !(*this == o); }
};

// Dates and times. Stamps are 14 digits: year (4), month, day, hour, minute,
// second, local time, no separators.
ZOUTILS_EXPORT QString getCurrentDateAndTimeAsString();
ZOUTILS_EXPORT QString getCurrentDateAsString(); // 8 digits: year, month, day
// The C library's broken-down local time; points into its static buffer, which
// the next call overwrites. Never free it.
ZOUTILS_EXPORT tm *getCurrentTime();
// Reads a 14-digit stamp from the right-hand end of the text (a prefix, such
// as a file name, is ignored). An empty text gives a null QDateTime; non-digit
// characters, or a text shorter than 14 characters, give an invalid one.
ZOUTILS_EXPORT QDateTime getDateTime(QString text);
// True when the whole seconds from `when` to now, over 3600, exceed `hours`.
ZOUTILS_EXPORT bool isDateTimeExpired(QDateTime when, float hours);

// Numbers.
// Fixed form with `decimals` places for 10^-decimals <= |value| < 10000,
// otherwise exponent form with `expDecimals` places passed through
// adjustExpValue(). A null text when either count is 99 or more; a negative
// count prints no decimals (a negative `decimals` widens the threshold to
// 10^|decimals|).
ZOUTILS_EXPORT QString doubleToString(double value, int decimals, int expDecimals);
// Rewrites the exponent of an exponent-form number text in place so that it
// reads the same on every platform: a sign always, and at least two digits with
// no further leading zeros ("1.50e+003" and "1.50e+3" both become "1.50e+03";
// "2.0e-100" stays). A text without an exponent is left alone.
ZOUTILS_EXPORT void adjustExpValue(QString &text);
ZOUTILS_EXPORT float LERP(float a, float b, float t);
ZOUTILS_EXPORT float powerf(float x, float y); // exp(y * ln x) in single precision
ZOUTILS_EXPORT int IsLittleEndian();
ZOUTILS_EXPORT int sizeInBytes(ZOSDataTypes type); // 1, 2, 4, 4, 8 for members 1 to 5; else 0

// Files and folders.
// Copies the files of `source` into `destination` (and, when recursive, its
// sub-folders). Both folders must exist. Existing files are not overwritten.
// Returns false when a folder is missing or a sub-folder copy fails.
ZOUTILS_EXPORT bool copyFolderContents(QDir source, QDir destination, bool recursive);
// Deletes the folder with everything below it; false when it does not exist or
// something in it cannot be removed (what was removed before stays removed).
ZOUTILS_EXPORT bool deleteFolderTree(QDir folder);
// Shortens a path longer than 50 characters for display, in place:
// "first/second/.../last", or the path cut to 47 characters plus "...".
ZOUTILS_EXPORT void shortenFolderNameForDisplay(QString &path);
// MD5 of the text's Latin-1 bytes, 32 lower-case hexadecimal digits.
ZOUTILS_EXPORT QString getMD5String(QString text);

// Texts and names.
ZOUTILS_EXPORT bool caseInsensitiveLessThan(const QString &a, const QString &b);
ZOUTILS_EXPORT bool caseInsensitiveGreaterThan(const QString &a, const QString &b);
ZOUTILS_EXPORT QString getCTNameForColorTable(ZOS_COLORTABLE_TYPES type);
// Names for members 0 to 14 only: member 15 (Jet) deliberately has none here;
// translate it with getCTTypeForCLUT() first.
ZOUTILS_EXPORT QString getCTNameForCLUT(tag_ecolortable clut);
ZOUTILS_EXPORT ZOS_COLORTABLE_TYPES getCTTypeForCLUT(tag_ecolortable clut);
// The application's default font, two points smaller.
ZOUTILS_EXPORT QFont getMACDefaultFont();

// Colours and geometry.
// The colour of visible light (380 to 780 nm) as 0xFFRRGGBB; black (0xFF000000)
// outside that band and for NaN or infinite input.
ZOUTILS_EXPORT unsigned int convertWaveLengthToRGB(double nanometres);
// The pixels of the straight line between two points, both ends included
// (Bresenham).
ZOUTILS_EXPORT QList<Coord2d> getIntermediatePoints(int x1, int y1, int x2, int y2);
