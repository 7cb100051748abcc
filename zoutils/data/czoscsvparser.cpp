#include "czoscsvparser.h"

#include "czoslog.h"

#include <QByteArray>
#include <QFile>
#include <QTextStream>
#include <QVector>

#include <algorithm>
#include <cstring>

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
bool visitLine(const char *line, int length, Visit &visit)
{
    if (length > 0 && line[length - 1] == '\r')
        --length;
    return length == 0 || visit(line, length);
}

// Calls visit(line, length) for every non-empty line of `data` until visit
// returns false.
template <typename Visit>
void forEachLine(const QByteArray &data, Visit visit)
{
    const char *p = data.constData();
    const char *const end = p + data.size();
    while (p < end) {
        const char *nl = static_cast<const char *>(std::memchr(p, '\n', size_t(end - p)));
        const char *lineEnd = nl ? nl : end;
        if (!visitLine(p, int(lineEnd - p), visit))
            return;
        p = lineEnd + 1;
    }
}

int indexOfComma(const char *line, int length)
{
    const void *comma = std::memchr(line, ',', size_t(length));
    return comma ? int(static_cast<const char *>(comma) - line) : length;
}

bool firstFieldEquals(const char *line, int length, const QByteArray &key)
{
    const int first = indexOfComma(line, length);
    return first == key.size() && std::memcmp(line, key.constData(), size_t(first)) == 0;
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

void appendLine(QByteArray &out, const char *line, int length)
{
    out.append(line, length);
    out.append(kLineEnd, 2);
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
    // line ends, so the bytes are the same on every platform.
    if (!m_pFile->open(QIODevice::ReadWrite)) {
        ZOS_LOG(QStringLiteral("%1 is already opened by another application. Please close it.").arg(fileName),
                ZOS_LOG_ERROR);
        return;
    }
    m_pStream = new QTextStream(m_pFile);
    m_pStream->setCodec("UTF-8");

    if (!header.isEmpty()) {
        QByteArray firstLine = m_pFile->readLine();
        if (firstLine.endsWith('\n'))
            firstLine.chop(1);
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
}

QTextStream *CZOSCSVParser::getOutputStream()
{
    return m_pStream;
}

tag_estatus CZOSCSVParser::checkFile() const
{
    if (!m_pFile)
        return ES_INVALID_POINTER;
    if (!m_pFile->isOpen() || !m_pStream)
        return ES_FILE_OPERATION_FAILED;
    return ES_SUCCESS;
}

bool CZOSCSVParser::readFile(QByteArray &contents)
{
    m_pStream->flush();
    if (!m_pFile->seek(0))
        return false;
    contents = m_pFile->readAll();
    return m_pFile->error() == QFileDevice::NoError;
}

// Writes only from the first byte that differs: appending a row or changing a
// late cell leaves the front of the file alone.
tag_estatus CZOSCSVParser::writeFile(const QByteArray &oldContents, const QByteArray &newContents)
{
    const int common = qMin(oldContents.size(), newContents.size());
    const int same = int(std::mismatch(oldContents.constData(), oldContents.constData() + common,
                                       newContents.constData())
                             .first
                         - oldContents.constData());
    bool ok = true;
    if (same < newContents.size()) {
        const qint64 rest = newContents.size() - same;
        ok = m_pFile->seek(same) && m_pFile->write(newContents.constData() + same, rest) == rest;
    }
    ok = m_pFile->flush() && ok;
    if (ok && m_pFile->size() != newContents.size())
        ok = m_pFile->resize(newContents.size());
    // Leave the stream at the end, where the rewrite stopped.
    m_pStream->seek(m_pFile->size());
    return ok ? ES_SUCCESS : ES_FILE_OPERATION_FAILED;
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
            const char *const end = p + n;
            while (more) {
                const char *nl = static_cast<const char *>(std::memchr(p, '\n', size_t(end - p)));
                if (!nl)
                    break;
                if (carry.isEmpty()) {
                    more = visitLine(p, int(nl - p), visit);
                } else {
                    carry.append(p, int(nl - p));
                    more = visitLine(carry.constData(), carry.size(), visit);
                    carry.clear();
                }
                p = nl + 1;
            }
            if (more)
                carry.append(p, int(end - p));
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
    QByteArray out = joined(header);
    out.reserve(out.size() + contents.size() + 2);
    out.append(kLineEnd, 2);
    // The first line goes, whatever it holds; it is the header being replaced.
    const int firstEnd = contents.indexOf('\n');
    if (firstEnd >= 0)
        forEachLine(QByteArray::fromRawData(contents.constData() + firstEnd + 1, contents.size() - firstEnd - 1),
                    [&](const char *line, int length) {
                        appendLine(out, line, length);
                        return true;
                    });
    return writeFile(contents, out);
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
    QByteArray out;
    out.reserve(contents.size() + row.size() + 2);
    forEachLine(contents, [&](const char *line, int length) {
        appendLine(out, line, length);
        return true;
    });
    out.append(row); // no line end after the last row, deliberately
    return writeFile(contents, out);
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
    QByteArray out;
    out.reserve(contents.size() + 2);
    forEachLine(contents, [&](const char *line, int length) {
        if (!firstFieldEquals(line, length, keyBytes))
            appendLine(out, line, length);
        return true;
    });
    return writeFile(contents, out);
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
    QByteArray out;
    out.reserve(contents.size() + valueBytes.size() + 2);
    int current = 0;
    forEachLine(contents, [&](const char *line, int length) {
        const QVector<Field> fields = current++ == row ? nonEmptyFields(line, length) : QVector<Field>();
        if (column < 0 || column >= fields.size()) {
            // Joining again would drop the row's empty fields, and an
            // out-of-range column is meant to change nothing, so the row stays as read.
            appendLine(out, line, length);
            return true;
        }
        const int lineStart = out.size();
        for (int i = 0; i < fields.size(); ++i) {
            if (i > 0)
                out.append(',');
            if (i == column)
                out.append(valueBytes);
            else
                out.append(line + fields[i].begin, fields[i].length);
        }
        if (out.size() > lineStart) // an emptied row would be skipped from now on anyway
            out.append(kLineEnd, 2);
        return true;
    });
    return writeFile(contents, out);
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
