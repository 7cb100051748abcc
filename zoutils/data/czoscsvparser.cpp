#include "czoscsvparser.h"
#include "czoscsvparser_p.h"

#include "czosavefile.h"
#include "czoslog.h"
#include "zocpu_p.h"
#include "zoplatform.h"

#include <QByteArray>
#include <QFile>
#include <QTextStream>
#include <QVector>

#include <QtAlgorithms>

#include <algorithm>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr qint64 kBlockSize = 64 * 1024;

struct Field {
    int begin;
    int length;
};

// Calls visit(line, length) for one line without its line end, unless it is
// empty; returns what visit returns (true to go on).
template <typename Visit>
inline bool visitLine(const char *line, int length, Visit &visit)
{
    if (length > 0 && line[length - 1] == '\r')
        --length;
    return length == 0 || visit(line, length);
}

// Calls visit(line, length) for every non-empty line of data[0, size) that
// ends in '\n', until visit returns false. Returns the offset of the text
// after the last '\n' (the unfinished last line), or -1 when stopped early.
// Files are mostly short lines, so newlines are found 16 bytes at a time
// rather than with one library call per line.
template <typename Visit>
int forEachEndedLine(const char *data, int size, Visit &visit)
{
    int lineStart = 0;
    int i = 0;
#ifdef __SSE2__
    const __m128i newline = _mm_set1_epi8('\n');
    for (; i + 16 <= size; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i));
        uint mask = uint(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, newline)));
        while (mask) {
            const int at = i + int(qCountTrailingZeroBits(mask));
            mask &= mask - 1;
            if (!visitLine(data + lineStart, at - lineStart, visit))
                return -1;
            lineStart = at + 1;
        }
    }
    i = qMax(i, lineStart);
#endif
    while (i < size) {
        const void *found = std::memchr(data + i, '\n', size_t(size - i));
        if (!found)
            break;
        const int at = int(static_cast<const char *>(found) - data);
        if (!visitLine(data + lineStart, at - lineStart, visit))
            return -1;
        lineStart = i = at + 1;
    }
    return lineStart;
}

// Calls visit(line, length) for every non-empty line of `data` until visit
// returns false.
template <typename Visit>
void forEachLine(const QByteArray &data, Visit visit)
{
    const int tail = forEachEndedLine(data.constData(), data.size(), visit);
    if (tail >= 0 && tail < data.size())
        visitLine(data.constData() + tail, data.size() - tail, visit);
}

// The length of the leading stretch of `data` made of tidy lines: non-empty,
// ending in "\r\n", numbered below `stopLine` (counting from `lines`) and not
// starting with the byte `watch` (-1 for none). Such lines need no rewriting;
// `lines` is advanced past them.
int tidyRun(const char *data, int size, int stopLine, int watch, int &lines)
{
    const int wanted = stopLine >= lines ? stopLine - lines : std::numeric_limits<int>::max();
    int count = 0;
    int lineStart = 0;
    // The line [lineStart, at) ending at the '\n' at `at`: keep going while it is tidy.
    const auto tidy = [&](int at) {
        if (count == wanted || at - lineStart < 2 || data[at - 1] != '\r'
            || (watch >= 0 && uchar(data[lineStart]) == uint(watch)))
            return false;
        ++count;
        lineStart = at + 1;
        return true;
    };
    int i = 0;
#ifdef ZO_AVX2
    if (zoHasAvx2()) // the long tidy stretches, 64 bytes a step
        i = ZoCsvScan::tidyBlocksAvx2(data, size, watch, wanted, count, lineStart);
#endif
#ifdef __SSE2__
    const __m128i newline = _mm_set1_epi8('\n');
    for (; i + 16 <= size; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i));
        for (uint mask = uint(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, newline))); mask; mask &= mask - 1)
            if (!tidy(i + int(qCountTrailingZeroBits(mask))))
                goto done;
    }
#endif
    while (i < size) {
        const void *found = std::memchr(data + i, '\n', size_t(size - i));
        if (!found || !tidy(int(static_cast<const char *>(found) - data)))
            break;
        i = lineStart;
    }
#ifdef __SSE2__
done:
#endif
    lines += count;
    return lineStart;
}

int indexOfComma(const char *line, int length)
{
    const void *comma = std::memchr(line, ',', size_t(length));
    return comma ? int(static_cast<const char *>(comma) - line) : length;
}

// True when the line's first field is `key`; a key holding "," never is.
bool firstFieldEquals(const char *line, int length, const QByteArray &key)
{
    const int k = key.size();
    if (length < k || (length > k && line[k] != ',') || (k > 0 && line[0] != key.at(0)))
        return false;
    return std::memcmp(line, key.constData(), size_t(k)) == 0 && !key.contains(',');
}

// The non-empty fields of a line.
QVector<Field> nonEmptyFields(const char *line, int length)
{
    QVector<Field> fields;
    int begin = 0;
    while (begin <= length) {
        const int comma = begin + indexOfComma(line + begin, length - begin);
        if (comma > begin)
            fields.append({begin, comma - begin});
        begin = comma + 1;
    }
    return fields;
}

// Describes the new text of a file as pieces of its old text and new bytes.
// Lines that already end in "\r\n" and follow each other become one piece,
// so a tidy file costs a few pieces instead of one copy per line. Pieces of
// the old text point into it (QByteArray::fromRawData) and copy nothing.
class Rewriter
{
public:
    explicit Rewriter(const QByteArray &source)
        : m_source(source)
    {
    }

    // Keeps a line of the source (without its line end), followed by "\r\n".
    void keep(const char *line, int length)
    {
        const int begin = int(line - m_source.constData());
        const int end = begin + length;
        const bool tidy = end + 2 <= m_source.size() && line[length] == '\r' && line[length + 1] == '\n';
        if (tidy) {
            keepBlock(begin, end + 2);
        } else {
            QByteArray bytes(line, length);
            append(bytes.append(kLineEnd, 2));
        }
    }

    // Keeps source bytes [begin, end), whole tidy lines, as they are.
    void keepBlock(int begin, int end)
    {
        if (begin == end)
            return;
        if (begin != m_runEnd) {
            flush();
            m_runBegin = begin;
        }
        m_runEnd = end;
    }

    // New bytes after what was kept so far.
    void append(const QByteArray &bytes)
    {
        flush();
        if (!bytes.isEmpty())
            m_pieces.append(bytes);
        // Kept blocks are tidy lines; new bytes are tidy when they are one.
        m_tidy = m_tidy && bytes.size() > 2 && bytes.indexOf('\n') == bytes.size() - 1 && bytes.endsWith(kLineEnd);
    }

    // True when the new text is tidy lines only, each ending in "\r\n".
    bool tidy() const { return m_tidy; }

    const QList<QByteArray> &pieces()
    {
        flush();
        return m_pieces;
    }

private:
    void flush()
    {
        if (m_runEnd > m_runBegin)
            m_pieces.append(QByteArray::fromRawData(m_source.constData() + m_runBegin, m_runEnd - m_runBegin));
        m_runBegin = m_runEnd = -1;
    }

    const QByteArray &m_source;
    QList<QByteArray> m_pieces;
    int m_runBegin = -1; // the pending piece of source lines, [begin, end)
    int m_runEnd = -1;
    bool m_tidy = true;
};

// Where the new text of `pieces` first differs from `old` (its length when
// `old` holds all of it), and the new text's length.
void compareText(const QByteArray &old, const QList<QByteArray> &pieces, qint64 &firstChange, qint64 &size)
{
    firstChange = -1;
    size = 0;
    for (const QByteArray &piece : pieces) {
        if (firstChange < 0) {
            const qint64 comparable = qBound(qint64(0), qint64(old.size()) - size, qint64(piece.size()));
            const char *const oldBytes = old.constData() + size;
            const char *const data = piece.constData();
            // A piece of the old text in its old place matches without a look.
            const qint64 same = data == oldBytes ? comparable
                                                 : std::mismatch(data, data + comparable, oldBytes).first - data;
            if (same < piece.size())
                firstChange = size + same;
        }
        size += piece.size();
    }
    if (firstChange < 0)
        firstChange = size;
}

// Walks every line of `source`: stretches of tidy lines (see tidyRun) are kept
// whole; every other non-empty line goes to look(line, length, number).
// Line `stopLine` and lines starting with `watch` always go to look(). With
// `tidyAfterStop`, the lines after line `stopLine` are known to be tidy and
// are kept without a look.
template <typename Look>
void rewriteLines(const QByteArray &source, Rewriter &rewriter, int stopLine, int watch, Look look,
                  bool tidyAfterStop = false)
{
    const char *const data = source.constData();
    const int size = source.size();
    int number = 0;
    int pos = 0;
    while (pos < size) {
        const int end = pos + tidyRun(data + pos, size - pos, stopLine, watch, number);
        rewriter.keepBlock(pos, end);
        if (end >= size)
            break;
        const void *found = std::memchr(data + end, '\n', size_t(size - end));
        const int lineEnd = found ? int(static_cast<const char *>(found) - data) : size;
        auto visit = [&](const char *line, int length) {
            look(line, length, number++);
            return true;
        };
        visitLine(data + end, lineEnd - end, visit);
        pos = lineEnd + 1;
        if (tidyAfterStop && number > stopLine) {
            rewriter.keepBlock(qMin(pos, size), size);
            break;
        }
    }
}

QByteArray joined(const QStringList &fields)
{
    return fields.join(QLatin1Char(',')).toUtf8();
}

} // namespace

CZOSCSVParser::CZOSCSVParser(QString fileName, QStringList header)
    : m_header(header)
{
    m_pFile = new QFile(fileName);
    // Binary mode on purpose: the parser writes "\r\n" itself and reads both
    // line ends, so the bytes are the same on every platform. Unbuffered, so
    // that a failed write leaves nothing behind to be written later; the
    // stream buffers callers' text.
    if (!m_pFile->open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        ZOS_LOG(QStringLiteral("%1 is already opened by another application. Please close it.").arg(fileName),
                ZOS_LOG_ERROR);
        return;
    }
    m_strTarget = CZOSaveFile::resolvedTarget(fileName);
    CZOSaveFile::removeStaleStagingFiles(m_strTarget);
    m_pStream = new QTextStream(m_pFile);
    m_pStream->setCodec("UTF-8");

    if (!header.isEmpty()) {
        QByteArray firstLine;
        char block[256];
        for (qint64 n = 0; (n = m_pFile->read(block, sizeof block)) > 0;) {
            const void *end = std::memchr(block, '\n', size_t(n));
            firstLine.append(block, end ? int(static_cast<const char *>(end) - block) : int(n));
            if (end)
                break;
        }
        if (firstLine.endsWith('\r'))
            firstLine.chop(1);
        bool hasRows = !firstLine.isEmpty();
        if (!hasRows)
            scanLines([&](const char *, int) {
                hasRows = true;
                return false;
            });
        if (!hasRows || firstLine.count(',') + 1 < header.size())
            addHeader(header);
    }
    // Free text written through getOutputStream() goes after the last line.
    m_pStream->seek(m_pFile->size());
}

CZOSCSVParser::CZOSCSVParser(const CZOSCSVParser &other)
    : m_header(other.m_header)
{
}

CZOSCSVParser &CZOSCSVParser::operator=(const CZOSCSVParser &other)
{
    m_header = other.m_header;
    return *this;
}

CZOSCSVParser::~CZOSCSVParser()
{
    delete m_pStream; // flushes what callers wrote
    delete m_pFile;
    dropScratch();
}

QTextStream *CZOSCSVParser::getOutputStream()
{
    return m_pStream;
}

tag_estatus CZOSCSVParser::checkFile()
{
    if (!m_pFile)
        return ES_INVALID_POINTER;
    if (!m_pFile->isOpen() || !m_pStream)
        return ES_FILE_OPERATION_FAILED;
    m_pStream->flush();
    // Another parser or program may have replaced the file since: follow it.
    if (!ZOPlatform::isSameFile(*m_pFile, m_strTarget, &m_seen) && QFile::exists(m_strTarget)) {
        m_tidyStamp = m_seen = ZOFileStamp();
        if (!reopen())
            return ES_FILE_OPERATION_FAILED;
    }
    // The caller's text through the stream moves the file's position off the end.
    m_bKnownTidy = m_tidyStamp.size >= 0 && m_seen == m_tidyStamp && m_pFile->pos() == m_seen.size;
    return ES_SUCCESS;
}

bool CZOSCSVParser::reopen()
{
    m_pFile->close();
    return m_pFile->open(QIODevice::ReadWrite | QIODevice::Unbuffered);
}

void CZOSCSVParser::dropScratch()
{
    if (!m_pScratch)
        return;
    m_pScratch->remove(); // closes it first
    delete m_pScratch;
    m_pScratch = nullptr;
}

// Appending, or cutting rows off the end, changes the file in place with one
// write or one truncation; a failed append is cut off again. Every other
// change is swapped in whole (swapIn), so the file never holds a mix.
tag_estatus CZOSCSVParser::writeText(const QByteArray &old, const QList<QByteArray> &pieces, bool tidy)
{
    qint64 firstChange = 0;
    qint64 size = 0;
    compareText(old, pieces, firstChange, size);
    const qint64 oldSize = old.size();
    bool ok = true;
    if (firstChange == oldSize && size > oldSize) {
        // One write, so that a kill leaves the row whole or absent.
        QByteArray tail;
        qint64 at = 0;
        for (const QByteArray &piece : pieces) {
            const qint64 skip = qBound(qint64(0), oldSize - at, qint64(piece.size()));
            at += piece.size();
            tail.append(piece.constData() + skip, int(piece.size() - skip));
        }
        ok = m_pFile->seek(oldSize) && m_pFile->write(tail) == tail.size();
        if (!ok)
            m_pFile->resize(oldSize);
        m_tidyStamp = ZOFileStamp(); // the row may hold anything
    } else if (firstChange == size && size < oldSize) {
        ok = m_pFile->resize(size);
        m_tidyStamp = ZOFileStamp();
    } else if (firstChange < size) {
        ok = swapIn(pieces, size);
        // Remembered so that the next change can keep the lines after its row
        // without a look (only a write within the same tick of the file
        // system's clock could go unseen, and would only stay untidied).
        m_tidyStamp = ok && tidy ? ZOPlatform::fileStamp(*m_pFile) : ZOFileStamp();
    }
    m_pStream->seek(ok ? size : m_pFile->size());
    return ok ? ES_SUCCESS : ES_FILE_OPERATION_FAILED;
}

// Writes the new text to the staging file and exchanges the two files' names
// in one rename; where the file system cannot, the text replaces the file by
// a rename over it. Either way the old text stays until the new one is whole.
bool CZOSCSVParser::swapIn(const QList<QByteArray> &pieces, qint64 size)
{
    if (m_bExchange && !m_pScratch) {
        // Unbuffered like the table, which it becomes at the next change.
        m_pScratch = new QFile(CZOSaveFile::newStagingPath(m_strTarget));
        if (!m_pScratch->open(QIODevice::ReadWrite | QIODevice::Unbuffered | QIODevice::NewOnly)
            || !m_pScratch->setPermissions(QFile::permissions(m_strTarget)))
            dropScratch();
    }
    if (m_pScratch) {
        bool ok = m_pScratch->seek(0);
        for (const QByteArray &piece : pieces)
            ok = ok && m_pScratch->write(piece) == piece.size();
        ok = ok && (m_pScratch->size() == size || m_pScratch->resize(size));
        bool supported = true;
        if (ok && ZOPlatform::exchangeFiles(m_pScratch->fileName(), m_strTarget, &supported)) {
            // Each name now holds the other's text; the open files follow
            // their names, so that neither needs opening again.
            if (!ZOPlatform::swapOpenFiles(*m_pFile, *m_pScratch)) {
                dropScratch();
                reopen();
            }
            return true;
        }
        dropScratch(); // a failed change leaves no staging file
        if (!ok)
            return false;
        m_bExchange = supported;
    }
    QByteArray text;
    text.reserve(int(size));
    for (const QByteArray &piece : pieces)
        text += piece;
    if (!CZOSaveFile::save(m_strTarget, text))
        return false;
    reopen();
    return true;
}

bool CZOSCSVParser::readFile(QByteArray &contents)
{
    if (!m_pFile->seek(0))
        return false;
    if (m_seen.size < 0) {
        contents = m_pFile->readAll();
        return m_pFile->error() == QFileDevice::NoError;
    }
    // The size checkFile() has just seen saves asking for it again.
    contents.resize(int(qMin(m_seen.size, qint64(std::numeric_limits<int>::max()))));
    const qint64 n = m_pFile->read(contents.data(), contents.size());
    contents.resize(int(qMax(n, qint64(0))));
    return n >= 0;
}

template <typename Visit>
void CZOSCSVParser::scanLines(Visit visit)
{
    m_pStream->flush();
    const qint64 position = m_pStream->pos();
    if (m_pFile->seek(0)) {
        QByteArray block(int(kBlockSize), Qt::Uninitialized);
        QByteArray carry; // the start of a line that runs into the next block
        bool more = true;
        qint64 n = 0;
        while (more && (n = m_pFile->read(block.data(), kBlockSize)) > 0) {
            const char *p = block.constData();
            int size = int(n);
            if (!carry.isEmpty()) {
                const char *nl = static_cast<const char *>(std::memchr(p, '\n', size_t(size)));
                if (!nl) {
                    carry.append(p, size);
                    continue;
                }
                carry.append(p, int(nl - p));
                more = visitLine(carry.constData(), carry.size(), visit);
                carry.clear();
                size -= int(nl + 1 - p);
                p = nl + 1;
            }
            if (!more)
                break;
            const int tail = forEachEndedLine(p, size, visit);
            more = tail >= 0;
            if (more)
                carry.append(p + tail, size - tail);
        }
        if (more && !carry.isEmpty())
            visitLine(carry.constData(), carry.size(), visit);
    }
    m_pStream->seek(position);
}

tag_estatus CZOSCSVParser::addHeader(QStringList header)
{
    const tag_estatus status = checkFile();
    if (status != ES_SUCCESS)
        return status;
    if (header.isEmpty())
        return ES_WRONG_INFORMATION;

    QByteArray contents;
    if (!readFile(contents))
        return ES_FILE_OPERATION_FAILED;
    const QByteArray first = joined(header);
    Rewriter rewriter(contents);
    rewriter.append(first + kLineEnd);
    // The first line goes, whatever it holds; it is the header being replaced.
    bool firstLine = true;
    const int firstEnd = contents.indexOf('\n');
    if (firstEnd >= 0)
        forEachLine(contents, [&](const char *line, int length) {
            if (firstLine && line - contents.constData() < firstEnd) // the first line, when not empty
                firstLine = false;
            else
                rewriter.keep(line, length);
            return true;
        });
    return writeText(contents, rewriter.pieces(), rewriter.tidy());
}

tag_estatus CZOSCSVParser::addRow(QStringList fields)
{
    const tag_estatus status = checkFile();
    if (status != ES_SUCCESS)
        return status;

    QByteArray contents;
    if (!readFile(contents))
        return ES_FILE_OPERATION_FAILED;
    const QByteArray row = joined(fields);
    Rewriter rewriter(contents);
    rewriteLines(contents, rewriter, -1, -1, [&](const char *line, int length, int) {
        rewriter.keep(line, length);
    });
    rewriter.append(row); // no line end after the last row, deliberately
    return writeText(contents, rewriter.pieces(), rewriter.tidy());
}

tag_estatus CZOSCSVParser::removeRow(QString key)
{
    const tag_estatus status = checkFile();
    if (status != ES_SUCCESS)
        return status;

    QByteArray contents;
    if (!readFile(contents))
        return ES_FILE_OPERATION_FAILED;
    const QByteArray keyBytes = key.toUtf8();
    Rewriter rewriter(contents);
    // Only lines starting like the key need a look.
    const int watch = keyBytes.isEmpty() ? ',' : uchar(keyBytes.at(0));
    rewriteLines(contents, rewriter, -1, watch, [&](const char *line, int length, int) {
        if (!firstFieldEquals(line, length, keyBytes))
            rewriter.keep(line, length);
    });
    return writeText(contents, rewriter.pieces(), rewriter.tidy());
}

tag_estatus CZOSCSVParser::setCSVColumnValue(int row, int column, QString value)
{
    const tag_estatus status = checkFile();
    if (status != ES_SUCCESS)
        return status;

    QByteArray contents;
    if (!readFile(contents))
        return ES_FILE_OPERATION_FAILED;
    const QByteArray valueBytes = value.toUtf8();
    Rewriter rewriter(contents);
    rewriteLines(contents, rewriter, row, -1, [&](const char *line, int length, int number) {
        if (number != row) {
            rewriter.keep(line, length);
            return;
        }
        const QVector<Field> fields = nonEmptyFields(line, length);
        if (column < 0 || column >= fields.size()) {
            // Joining again would drop the row's empty fields, and an
            // out-of-range column is meant to change nothing, so the row stays as read.
            rewriter.keep(line, length);
            return;
        }
        QByteArray changed;
        changed.reserve(length + valueBytes.size() + 2);
        for (int i = 0; i < fields.size(); ++i) {
            if (i > 0)
                changed.append(',');
            if (i == column)
                changed.append(valueBytes);
            else
                changed.append(line + fields[i].begin, fields[i].length);
        }
        if (!changed.isEmpty()) // an emptied row would be skipped from now on anyway
            rewriter.append(changed.append(kLineEnd, 2));
    }, m_bKnownTidy);
    return writeText(contents, rewriter.pieces(), rewriter.tidy());
}

QString CZOSCSVParser::getCSVColumnValue(int row, int column)
{
    if (checkFile() != ES_SUCCESS || row < 0 || column < 0)
        return QString();
    QString value;
    int current = 0;
    scanLines([&](const char *line, int length) {
        if (current++ < row)
            return true;
        const QVector<Field> fields = nonEmptyFields(line, length);
        if (column < fields.size())
            value = QString::fromUtf8(line + fields[column].begin, fields[column].length);
        return false;
    });
    return value;
}

int CZOSCSVParser::getCSVRowNumber(QString key)
{
    if (checkFile() != ES_SUCCESS)
        return -1;
    const QByteArray keyBytes = key.toUtf8();
    int found = -1;
    int current = 0;
    scanLines([&](const char *line, int length) {
        if (firstFieldEquals(line, length, keyBytes))
            found = current;
        ++current;
        return found < 0;
    });
    return found;
}

int CZOSCSVParser::getNumRows()
{
    if (checkFile() != ES_SUCCESS)
        return 0;
    int rows = 0;
    scanLines([&](const char *, int) {
        ++rows;
        return true;
    });
    return rows;
}
