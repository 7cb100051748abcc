// Arbitrary file contents through every CSV operation. After any change the
// file must be tidy: non-empty lines ending in "\r\n", except a last row
// appended without one.
#include "czoscsvparser.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

bool tidy(const QByteArray &bytes, bool lastMayBeOpen)
{
    int start = 0;
    while (start < bytes.size()) {
        const int nl = bytes.indexOf('\n', start);
        if (nl < 0)
            return lastMayBeOpen;
        if (nl - start < 2 || bytes.at(nl - 1) != '\r')
            return false;
        start = nl + 1;
    }
    return true;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("table.csv"));
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(input);
    }
    // A few bytes choose the header width and the operations' arguments.
    const int pick = size > 0 ? data[0] : 0;
    QStringList header;
    for (int i = 0; i < pick % 5; ++i)
        header << QStringLiteral("h%1").arg(i);
    // Keys never hold a line end: the format has no quoting to carry one.
    const QString key = QString::fromUtf8(input.left(pick % 4)).remove(QLatin1Char('\n'));

    CZOSCSVParser parser(path, header);
    const int rows = parser.getNumRows();
    if (rows < 0 || (!header.isEmpty() && rows < 1))
        __builtin_trap();
    for (int row = -1; row <= rows && row < 40; ++row)
        for (int column = -1; column < 4; ++column)
            parser.getCSVColumnValue(row, column);
    const int found = parser.getCSVRowNumber(key);
    if (found < -1 || found >= rows)
        __builtin_trap();

    if (parser.setCSVColumnValue(pick % (rows + 2) - 1, pick % 3, QStringLiteral("v")) != ES_SUCCESS
        || !tidy(contents(path), false) || parser.getNumRows() > rows)
        __builtin_trap();
    if (parser.removeRow(key) != ES_SUCCESS || !tidy(contents(path), false)
        || parser.getCSVRowNumber(key) != -1)
        __builtin_trap();
    const int before = parser.getNumRows();
    if (parser.addRow({key, QStringLiteral("x")}) != ES_SUCCESS || !tidy(contents(path), true)
        || parser.getNumRows() != before + 1)
        __builtin_trap();
    return 0;
}
