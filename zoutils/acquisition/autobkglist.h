#pragma once
// The auto background configuration file: the list of background
// acquisitions the application takes by itself. Stateless free functions;
// the file path is always the caller's.
//
// File form (text, platform line ends):
//   "#" title
//   "#Binning Key"
//   header 1 .. header 4, one per line
//   one line per row: the six column values, joined by the separator
// Values are written as they are, without quoting: a value holding the
// separator breaks its row for the reader.

#include "zoutils_export.h"
#include "zoenums.h"

#include <QList>
#include <QString>
#include <QStringList>

// The table to write; owned by the caller. Row i takes element i of every
// column list (an empty text where a list is shorter).
struct ZOUTILS_EXPORT _tagAutoBkgListFileParam
{
    QStringList column1;
    QStringList column2;
    QStringList column3;
    QStringList column4;
    QStringList column5;
    QStringList column6;
    QString header1;
    QString header2;
    QString header3;
    QString header4;
    QString title;
    int rowCount = 0;
};

// One row as read back: columns 1, 2, 3 and 5, untrimmed. Columns 4 and 6
// are written but deliberately not read back.
class ZOUTILS_EXPORT SAutoBkgListInfo
{
public:
    SAutoBkgListInfo() = default;
    SAutoBkgListInfo(const QString &c1, const QString &c2, const QString &c3, const QString &c5)
        : column1(c1), column2(c2), column3(c3), column5(c5)
    {
    }
    SAutoBkgListInfo(const SAutoBkgListInfo &other) = default;
    SAutoBkgListInfo(SAutoBkgListInfo &&other) noexcept = default;
    SAutoBkgListInfo &operator=(const SAutoBkgListInfo &other) = default;
    SAutoBkgListInfo &operator=(SAutoBkgListInfo &&other) noexcept = default;
    ~SAutoBkgListInfo() = default;

    bool operator==(const SAutoBkgListInfo &o) const
    {
        return column1 == o.column1 && column2 == o.column2 && column3 == o.column3 && column5 == o.column5;
    }
    bool operator!=(const SAutoBkgListInfo &o) const { return !(*this == o); }

    QString column1;
    QString column2;
    QString column3;
    QString column5;
};

// Writes `table` to `path` (truncating it), each value followed by
// `separator` except the last of a row. Returns 0, also when the file cannot
// be opened: nothing is then written and nothing is reported (a missing list
// only means no automatic backgrounds). 16 for a null table.
ZOUTILS_EXPORT tag_estatus saveInfoToAutoBkgList(const _tagAutoBkgListFileParam *table, const QString &separator,
                                                 const QString &path);

// Appends to `records` every line of `path` that splits at "," into exactly
// six fields, with base-10 integers in fields 1 and 3 and a non-empty field 5;
// other lines (headers included) are skipped silently, as are empty ones.
// Lines may end in "\r\n", "\n" or "\r". Returns 0, or 6 (and an error in the
// application log) when the file cannot be opened.
ZOUTILS_EXPORT tag_estatus readInfoFromAutoBkgList(const QString &path, QList<SAutoBkgListInfo> &records);
