#pragma once
// A small line editor for one comma-separated text file: keeps the file open,
// makes sure it starts with the expected header line, appends rows, finds a
// row by its first field, reads and changes single cells and removes rows.
//
// Format: one record per line, fields separated by "," with no quoting; the
// first line is the header. Lines are written with "\r\n"; lines ending in
// "\n" alone are read too. Empty lines are skipped when rows are counted,
// searched or copied, and every change drops them from the file. Row numbers
// count the non-empty lines from 0, the header being row 0. Text is UTF-8.
//
// There is no row index: each operation costs one pass over the file. No
// change ever leaves the file half written, whenever the process dies and
// whatever write fails: appending a row is one write at the end, undone when
// it fails; its line end goes before the row, so an append torn by a power
// cut is at worst a short last line of its own, never part of an earlier row,
// and the next change puts its line end after it. Every other change writes
// the whole new text to a staging file beside the table
// (".<name>.zosave-XXXXXX", kept open while the parser lives) and swaps it in
// with one rename. A staging file that a killed process
// left is removed by the next parser opened on the same file. Changes are not
// flushed to the disk one by one (see the README's fsync policy).
//
// Not thread-safe: use one parser from one thread. A file that something else
// replaced since the last operation is opened again before the next one.

#include "zoutils_export.h"
#include "zoenums.h"
#include "zoplatform.h"

#include <QString>
#include <QStringList>

class QByteArray;
class QFile;
class QTextStream;

class ZOUTILS_EXPORT CZOSCSVParser
{
public:
    // Opens (or creates) `fileName` for reading and writing. When it cannot be
    // opened, logs "<file> is already opened by another application. Please
    // close it." as an error and every later operation fails. With a non-empty
    // `header`: a file without any non-empty line, or whose first line has
    // fewer fields than `header`, gets `header` as its first line (replacing
    // that first line); a first line with as many or more fields is kept as it is.
    CZOSCSVParser(QString fileName, QStringList header);
    // Copies hold the header only and no file: their operations return
    // ES_INVALID_POINTER. Assignment copies the header and keeps this
    // parser's own file.
    CZOSCSVParser(const CZOSCSVParser &other);
    CZOSCSVParser &operator=(const CZOSCSVParser &other);
    virtual ~CZOSCSVParser();

    // The changes below return ES_INVALID_POINTER without a file,
    // ES_FILE_OPERATION_FAILED when it is not open or cannot be rewritten,
    // ES_SUCCESS otherwise.

    // Appends `fields` joined by "," as the last row, deliberately without a
    // line end: the file gets no trailing empty line, and the next change adds
    // the "\r\n". An empty list appends an empty last row.
    tag_estatus addRow(QStringList fields);
    // Removes every row whose first field equals `key` (the header too, when
    // its first field does).
    tag_estatus removeRow(QString key);
    // Replaces cell `column` of row `row`. Columns are counted here as in
    // getCSVColumnValue(): empty fields are not counted, and the changed row is
    // written back without them. A row or column out of range changes nothing
    // and still succeeds.
    tag_estatus setCSVColumnValue(int row, int column, QString value);

    // Cell `column` of row `row`, counting only non-empty fields: an empty
    // cell shifts the later cells of its row one column to the left. This
    // differs on purpose from the header check, which counts empty fields too;
    // files and callers depend on both. An empty text when the row or column
    // does not exist or the file is not open.
    QString getCSVColumnValue(int row, int column);
    // The row number of the first row whose first field equals `key`
    // (case-sensitive), or -1.
    int getCSVRowNumber(QString key);
    // The number of non-empty lines, the header included; 0 when not open.
    int getNumRows();
    // The reading functions leave the stream's position where it was.

    // The stream on the file, for callers that write free text; null when the
    // file could not be opened. Owned by the parser. Its codec is UTF-8.
    QTextStream *getOutputStream();

private:
    tag_estatus addHeader(QStringList header);
    tag_estatus checkFile();
    bool readFile(QByteArray &contents);
    template <typename Visit> void scanLines(Visit visit);
    tag_estatus writeText(const QByteArray &old, const QList<QByteArray> &pieces, bool tidy);
    bool swapIn(const QList<QByteArray> &pieces, qint64 size);
    bool reopen();
    void dropScratch();

    QFile *m_pFile = nullptr;         // owned; null in copies
    QTextStream *m_pStream = nullptr; // owned; null when the file did not open
    QStringList m_header;
    QString m_strTarget;              // the file's absolute path, links followed
    QFile *m_pScratch = nullptr;      // owned; the staging file changes are written to
    bool m_bExchange = true;          // false once the file system refused to swap files
    ZOFileStamp m_tidyStamp;          // the file as this parser's last change left it: tidy lines
    bool m_bKnownTidy = false;        // the file is still as that change left it
    ZOFileStamp m_seen;               // the file as the last operation's check found it
};
