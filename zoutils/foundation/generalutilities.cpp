#include "generalutilities.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QGuiApplication>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

QString twoDigits(int v)
{
    return QString::asprintf("%02d", v);
}

QString stampOf(const QDateTime &now, bool withTime)
{
    const QDate d = now.date();
    QString s = QString::asprintf("%02d", d.year()) + twoDigits(d.month()) + twoDigits(d.day());
    if (withTime) {
        const QTime t = now.time();
        s += twoDigits(t.hour()) + twoDigits(t.minute()) + twoDigits(t.second());
    }
    return s;
}

// The field of `length` characters that starts `fromEnd` characters before the
// end of the text, as a decimal number; 0 when it is not all there or not a number.
int fieldFromEnd(const QString &text, int fromEnd, int length)
{
    const int pos = text.size() - fromEnd;
    if (pos < 0)
        return 0;
    return text.mid(pos, length).toInt(); // 0 for non-digits
}

} // namespace

QString getCurrentDateAndTimeAsString()
{
    return stampOf(QDateTime::currentDateTime(), true);
}

QString getCurrentDateAsString()
{
    return stampOf(QDateTime::currentDateTime(), false);
}

tm *getCurrentTime()
{
    const time_t now = time(nullptr);
    return localtime(&now);
}

QDateTime getDateTime(QString text)
{
    if (text.isEmpty())
        return QDateTime();
    const int second = fieldFromEnd(text, 2, 2);
    const int minute = fieldFromEnd(text, 4, 2);
    const int hour = fieldFromEnd(text, 6, 2);
    const int day = fieldFromEnd(text, 8, 2);
    const int month = fieldFromEnd(text, 10, 2);
    const int year = fieldFromEnd(text, 14, 4);
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::LocalTime);
}

bool isDateTimeExpired(QDateTime when, float hours)
{
    const qint64 secs = when.secsTo(QDateTime::currentDateTime());
    return float(secs) / 3600.0f > hours;
}

QString doubleToString(double value, int decimals, int expDecimals)
{
    if (decimals >= 99 || expDecimals >= 99)
        return QString();
    // 10^-decimals is taken as the nearest double (not a product of 0.1s, whose
    // rounding error would make 0.01 miss its own inclusive threshold).
    const double threshold = std::pow(10.0, -double(decimals));
    const double magnitude = std::fabs(value);
    if (threshold <= magnitude && magnitude < 10000.0) {
        // A negative count only widens the threshold; it prints no decimals.
        const QByteArray format = "%0." + QByteArray::number(qMax(decimals, 0)) + "lf";
        return QString::asprintf(format.constData(), value);
    }
    const QByteArray format = "%0." + QByteArray::number(qMax(expDecimals, 0)) + "e";
    QString text = QString::asprintf(format.constData(), value);
    adjustExpValue(text);
    return text;
}

void adjustExpValue(QString &text)
{
    const int e = text.lastIndexOf(QLatin1Char('e'), -1, Qt::CaseInsensitive);
    if (e < 0 || e + 1 >= text.size())
        return;
    int pos = e + 1;
    QChar sign = QLatin1Char('+');
    if (text.at(pos) == QLatin1Char('+') || text.at(pos) == QLatin1Char('-')) {
        sign = text.at(pos);
        ++pos;
    }
    QString digits = text.mid(pos);
    if (digits.isEmpty())
        return;
    for (const QChar c : qAsConst(digits)) {
        if (!c.isDigit())
            return;
    }
    while (digits.size() > 2 && digits.startsWith(QLatin1Char('0')))
        digits.remove(0, 1);
    if (digits.size() < 2)
        digits.prepend(QLatin1Char('0'));
    text = text.left(e + 1) + sign + digits;
}

float LERP(float a, float b, float t)
{
    return a + (b - a) * t;
}

float powerf(float x, float y)
{
    return std::exp(y * std::log(x));
}

int IsLittleEndian()
{
    const int one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1 ? 1 : 0;
}

int sizeInBytes(ZOSDataTypes type)
{
    switch (type) {
    case ZOS_DT_UINT8: return 1;
    case ZOS_DT_UINT16: return 2;
    case ZOS_DT_INT32:
    case ZOS_DT_FLOAT: return 4;
    case ZOS_DT_DOUBLE: return 8;
    default: return 0;
    }
}

bool copyFolderContents(QDir source, QDir destination, bool recursive)
{
    if (!source.exists() || !destination.exists())
        return false;
    QDir::Filters filter = QDir::Files | QDir::Hidden | QDir::System;
    if (recursive)
        filter |= QDir::Dirs | QDir::NoDotAndDotDot;
    const QFileInfoList entries = source.entryInfoList(filter, QDir::Name);
    for (const QFileInfo &entry : entries) {
        if (!entry.isDir())
            continue;
        // A linked folder is not followed: it could lead back into the tree.
        if (entry.isSymLink())
            continue;
        destination.mkdir(entry.fileName());
        if (!copyFolderContents(QDir(entry.absoluteFilePath()),
                                QDir(destination.filePath(entry.fileName())), true))
            return false;
    }
    for (const QFileInfo &entry : entries) {
        if (entry.isDir())
            continue;
        QFile::copy(entry.absoluteFilePath(), destination.filePath(entry.fileName()));
    }
    return true;
}

bool deleteFolderTree(QDir folder)
{
    if (!folder.exists())
        return false;
    // Links (to files or folders) are removed as links, never followed.
    const QFileInfoList files = folder.entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo &f : files) {
        if (!QFile::remove(f.absoluteFilePath()))
            return false;
    }
    const QFileInfoList dirs = folder.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &d : dirs) {
        if (d.isSymLink()) {
            if (!QFile::remove(d.absoluteFilePath()))
                return false;
            continue;
        }
        if (!deleteFolderTree(QDir(d.absoluteFilePath())))
            return false;
    }
    const QString name = QFileInfo(folder.absolutePath()).fileName();
    QDir parent(folder.absolutePath());
    if (!parent.cdUp())
        return false;
    return parent.rmdir(name);
}

void shortenFolderNameForDisplay(QString &path)
{
    if (path.size() <= 50)
        return;
    QString forward = path;
    forward.replace(QLatin1Char('\\'), QLatin1Char('/'));
    const QStringList pieces = forward.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString shortForm = forward;
    if (pieces.size() > 3)
        shortForm = pieces.first() + QLatin1Char('/') + pieces.at(1) + QLatin1String("/.../") + pieces.last();
    // The fall-back cuts the full path, not the short form, on purpose.
    if (shortForm.size() > 50)
        path = forward.left(47) + QLatin1String("...");
    else
        path = shortForm;
}

QString getMD5String(QString text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toLatin1(), QCryptographicHash::Md5).toHex());
}

bool caseInsensitiveLessThan(const QString &a, const QString &b)
{
    return a.toLower() < b.toLower();
}

bool caseInsensitiveGreaterThan(const QString &a, const QString &b)
{
    return a.toLower() > b.toLower();
}

QString getCTNameForColorTable(ZOS_COLORTABLE_TYPES type)
{
    static const char *const names[] = {"Grays", "Rainbow", "YellowHot", "BlueHot", "BlueRedGreen",
                                        "PlanetEarth", "Terrain", "Rainbow2", "Red", "Green",
                                        "Blue", "Cyan", "Yellow", "Magenta", "Orange"};
    const int t = int(type);
    if (t >= 0 && t <= 14)
        return QString::fromLatin1(names[t]);
    switch (t) {
    case ZOS_CT_BLUEYELLOW: return QStringLiteral("BlueYellow");
    case ZOS_CT_GREENPINK: return QStringLiteral("GreenPink");
    case ZOS_CT_EOSB: return QStringLiteral("EosB");
    case ZOS_CT_JET: return QStringLiteral("Jet");
    default: return QString();
    }
}

QString getCTNameForCLUT(tag_ecolortable clut)
{
    const int c = int(clut);
    if (c < 0 || c > 14)
        return QString();
    return getCTNameForColorTable(ZOS_COLORTABLE_TYPES(c));
}

ZOS_COLORTABLE_TYPES getCTTypeForCLUT(tag_ecolortable clut)
{
    const int c = int(clut);
    if (c >= 1 && c <= 14)
        return ZOS_COLORTABLE_TYPES(c);
    if (c == CLUT_JET)
        return ZOS_CT_JET;
    return ZOS_CT_GRAYS;
}

QFont getMACDefaultFont()
{
    QFont font = QGuiApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() - 2);
    else if (font.pixelSize() > 2)
        font.setPixelSize(font.pixelSize() - 2);
    return font;
}

unsigned int convertWaveLengthToRGB(double w)
{
    const unsigned int black = 0xFF000000u;
    if (!std::isfinite(w))
        return black;
    double r = 0.0, g = 0.0, b = 0.0;
    if (w >= 380 && w <= 440) {
        r = -(w - 440) / 60;
        b = 1;
    } else if (w >= 440 && w <= 490) {
        g = (w - 440) / 50;
        b = 1;
    } else if (w >= 490 && w <= 510) {
        g = 1;
        b = -(w - 510) / 20;
    } else if (w >= 510 && w <= 580) {
        r = (w - 510) / 70;
        g = 1;
    } else if (w >= 580 && w <= 645) {
        r = 1;
        g = -(w - 645) / 65;
    } else if (w >= 645 && w <= 780) {
        r = 1;
    }
    double f = 1.0;
    if (w > 700)
        f = 0.3 + 0.7 * (780 - w) / 80;
    else if (w < 420)
        f = 0.3 + 0.7 * (w - 380) / 40;
    auto channel = [f](double c) -> unsigned int {
        const double v = f * c;
        if (!(v > 0.0)) // also catches -0.0 from the first band
            return 0u;
        return static_cast<unsigned int>(static_cast<int>(255.0 * std::pow(v, 0.8))) & 0xFFu;
    };
    return black | channel(r) << 16 | channel(g) << 8 | channel(b);
}

QList<Coord2d> getIntermediatePoints(int x1, int y1, int x2, int y2)
{
    // 64-bit arithmetic: the doubled differences overflow int for lines that
    // span most of the int range.
    const int64_t dx = std::llabs(int64_t(x2) - x1);
    const int64_t dy = std::llabs(int64_t(y2) - y1);
    int64_t count, d, step1, step2;
    int64_t xs1, ys1, xs2 = 1, ys2 = 1;
    if (dx < dy) {
        count = dy + 1;
        d = 2 * dx - dy;
        step1 = 2 * dx;
        step2 = 2 * (dx - dy);
        xs1 = 0;
        ys1 = 1;
    } else {
        count = dx + 1;
        d = 2 * dy - dx;
        step1 = 2 * dy;
        step2 = 2 * (dy - dx);
        xs1 = 1;
        ys1 = 0;
    }
    if (x1 > x2) {
        xs1 = -xs1;
        xs2 = -xs2;
    }
    if (y1 > y2) {
        ys1 = -ys1;
        ys2 = -ys2;
    }
    QList<Coord2d> points;
    points.reserve(int(qMin<int64_t>(count, 1 << 24)));
    int64_t x = x1, y = y1;
    for (int64_t i = 0; i < count; ++i) {
        const Coord2d p{static_cast<double>(x), static_cast<double>(y)};
        if (points.isEmpty() || points.last() != p)
            points.append(p);
        if (d < 0) {
            x += xs1;
            y += ys1;
            d += step1;
        } else {
            x += xs2;
            y += ys2;
            d += step2;
        }
    }
    return points;
}
