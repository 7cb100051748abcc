#include "ccdcorrections.h"
#include "ccdcorrections_p.h"
#include "zocpu_p.h"

#include "cilimage.h"
#include "cplclickinfo.h"
#include "cplsection.h"
#include "czoslog.h"
#include "zoconstants.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

const QString kShelfFovTable = QStringLiteral("Shelf Position FOV Table");
const QString kDefectPixels = QStringLiteral("Defect Map Pixels");
const QString kDefectColumns = QStringLiteral("Defect Map Columns");
const QString kDefectRows = QStringLiteral("Defect Map Rows");
const QString kDefectJointRepair = QStringLiteral("Defect Map Joint Repair");
const QString kAndor = QStringLiteral("Andor");
const QString kAndorUnitCoefficients = QStringLiteral("1.0,0.0,0.0,0.0,0.0,0.0");

constexpr int kDefaultDataMultiplier = 10;
constexpr double kShelfFovTolerance = 0.01;

void logError(const QString &message)
{
    ZOS_LOG(message, ZOS_LOG_ERROR);
}

void logWarning(const QString &message)
{
    ZOS_LOG(message, ZOS_LOG_WARNING);
}

bool parseFiniteFloat(const QString &text, float &value)
{
    bool ok = false;
    const float v = text.toFloat(&ok);
    if (!ok || !std::isfinite(v))
        return false;
    value = v;
    return true;
}

// A stored "Read Bias Level" of `sectionName`. False when the section or key
// is missing; otherwise `status` tells whether the text was a number.
bool storedReadBias(const CPLClickInfo &clickInfo, const QString &sectionName, float *result, tag_estatus &status)
{
    const CPLSection *section = clickInfo.getSection(sectionName);
    if (!section || !section->hasKey(ZO_CI_READ_BIAS_LEVEL))
        return false;
    const QString text = section->value(ZO_CI_READ_BIAS_LEVEL);
    if (parseFiniteFloat(text, *result)) {
        status = ES_SUCCESS;
    } else {
        logError(QStringLiteral("The read bias level '%1' of the %2 section is not a number.").arg(text, sectionName));
        status = ES_UNKNOWN_ERROR;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Defect map

// Coordinates above this are refused: no sensor is that large, and the bound
// keeps the expanded line lists small whatever the text says.
constexpr int kMaxDefectCoordinate = 65535;

bool parseIndex(const QString &text, int &value)
{
    bool ok = false;
    const int v = text.trimmed().toInt(&ok, 10);
    if (!ok || v < 0 || v > kMaxDefectCoordinate)
        return false;
    value = v;
    return true;
}

// "3;7-9; 12" -> 3 7 8 9 12, sorted and unique.
bool parseLines(const QString &text, QVector<int> &lines)
{
    lines.clear();
    std::vector<std::pair<int, int>> ranges;
    const QStringList entries = text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &entry : entries) {
        if (entry.trimmed().isEmpty())
            continue;
        const int dash = entry.indexOf(QLatin1Char('-'));
        int a = 0;
        int b = 0;
        if (dash < 0) {
            if (!parseIndex(entry, a))
                return false;
            b = a;
        } else if (!parseIndex(entry.left(dash), a) || !parseIndex(entry.mid(dash + 1), b) || b < a) {
            return false;
        }
        ranges.emplace_back(a, b);
    }
    // Merged before expanding, so overlapping ranges cost nothing extra.
    std::sort(ranges.begin(), ranges.end());
    int next = 0; // first line not yet listed
    for (const auto &[a, b] : ranges) {
        for (int v = std::max(a, next); v <= b; ++v)
            lines.append(v);
        next = std::max(next, b + 1);
    }
    return true;
}

bool parsePixels(const QString &text, QVector<QPoint> &pixels)
{
    pixels.clear();
    const QStringList entries = text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &entry : entries) {
        if (entry.trimmed().isEmpty())
            continue;
        const int comma = entry.indexOf(QLatin1Char(','));
        int x = 0;
        int y = 0;
        if (comma < 0 || !parseIndex(entry.left(comma), x) || !parseIndex(entry.mid(comma + 1), y))
            return false;
        pixels.append(QPoint(x, y));
    }
    return true;
}

// Fills every pixel flagged in `bad` from its rim inwards: each round, every
// flagged pixel with at least one good 8-neighbour takes the rounded mean of
// those neighbours, and all of a round's results are applied together.
// `todo` lists the flagged pixel indices. The caller guarantees a good pixel.
void fillFromRim(quint16 *pixels, int width, int height, std::vector<quint8> &bad, std::vector<qint64> todo)
{
    struct Update {
        qint64 index;
        quint16 value;
    };
    std::vector<Update> updates;
    std::vector<qint64> remaining;
    while (!todo.empty()) {
        updates.clear();
        remaining.clear();
        for (const qint64 index : todo) {
            const int x = int(index % width);
            const int y = int(index / width);
            quint32 total = 0;
            quint32 n = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                const int yy = y + dy;
                if (yy < 0 || yy >= height)
                    continue;
                for (int dx = -1; dx <= 1; ++dx) {
                    const int xx = x + dx;
                    if ((dx == 0 && dy == 0) || xx < 0 || xx >= width)
                        continue;
                    const qint64 j = qint64(yy) * width + xx;
                    if (!bad[size_t(j)]) {
                        total += pixels[j];
                        ++n;
                    }
                }
            }
            if (n)
                updates.push_back({index, quint16((total + n / 2) / n)});
            else
                remaining.push_back(index);
        }
        if (updates.empty())
            return; // unreachable while a good pixel exists
        for (const Update &u : updates) {
            pixels[u.index] = u.value;
            bad[size_t(u.index)] = 0;
        }
        todo.swap(remaining);
    }
}

// Interpolates each bad line (a column when `columns`, else a row) between
// the nearest good lines on either side; at an edge the one good line is
// copied. `lines` is sorted; at least one line of that direction is good.
void repairLines(quint16 *pixels, int width, int height, const QVector<int> &lines, bool columns)
{
    const int lineCount = columns ? width : height; // lines in this direction
    const int length = columns ? height : width;    // pixels along one line
    const qint64 step = columns ? width : 1;        // from pixel to pixel along a line
    const qint64 lineStep = columns ? 1 : width;    // from line to line
    std::vector<quint8> isBad(size_t(lineCount), 0);
    for (const int l : lines)
        isBad[size_t(l)] = 1;

    for (const int l : lines) {
        int before = l - 1;
        while (before >= 0 && isBad[size_t(before)])
            --before;
        int after = l + 1;
        while (after < lineCount && isBad[size_t(after)])
            ++after;
        const bool hasBefore = before >= 0;
        const bool hasAfter = after < lineCount;
        const double t = hasBefore && hasAfter ? double(l - before) / double(after - before) : 0.0;
        quint16 *target = pixels + l * lineStep;
        const quint16 *a = pixels + (hasBefore ? before : after) * lineStep;
        const quint16 *b = pixels + (hasAfter ? after : before) * lineStep;
        for (int k = 0; k < length; ++k) {
            const double va = a[k * step];
            const double vb = b[k * step];
            target[k * step] = quint16(std::lround(va + (vb - va) * t));
        }
    }
}

} // namespace

// ---------------------------------------------------------------------------

tag_estatus measureReadBias(CPLClickInfo &clickInfo, CILImage *image, float *result)
{
    if (!result)
        return ES_INVALID_POINTER;
    *result = 0.0f;

    tag_estatus status = ES_SUCCESS;
    if (storedReadBias(clickInfo, ZO_IMAGE_DARKCHARGE_IMAGE, result, status)
        || storedReadBias(clickInfo, ZO_IMAGE_READBIASONLY_IMAGE, result, status))
        return status;
    if (!image)
        return ES_UNKNOWN_ERROR;
    if (storedReadBias(clickInfo, ZO_IMAGE_READBIAS_IMAGE, result, status))
        return status;

    qint64 lowerLimit = 0;
    qint64 upperLimit = 65535;
    int multiplier = kDefaultDataMultiplier;
    if (const CPLSection *camera = clickInfo.getSection(ZO_CI_CAMERA_SYSTEM_INFO)) {
        // The multiplier is taken from the read-bias section, not from the
        // camera's: images carry the multiplier they were scaled with.
        const CPLSection *readBias = clickInfo.getSection(ZO_IMAGE_READBIAS_IMAGE);
        const QString multiplierText = readBias ? readBias->value(ZO_KEY_DATA_MULTIPLIER) : QString();
        if (!multiplierText.isEmpty()) {
            bool ok = false;
            multiplier = multiplierText.toInt(&ok, 10);
            if (!ok || multiplier <= 0) {
                logError(QStringLiteral("The data multiplier '%1' is not a positive integer.").arg(multiplierText));
                return ES_UNKNOWN_ERROR;
            }
        }
        auto readLimit = [multiplier](const QString &text, qint64 &limit) {
            if (text.isEmpty())
                return true;
            bool ok = false;
            const int v = text.toInt(&ok, 10);
            if (!ok) {
                logError(QStringLiteral("The read bias limit '%1' is not an integer.").arg(text));
                return false;
            }
            limit = qint64(v) * multiplier;
            return true;
        };
        if (!readLimit(camera->value(ZO_CI_READ_BIAS_LOWER_LIMIT), lowerLimit)
            || !readLimit(camera->value(ZO_CI_READ_BIAS_UPPER_LIMIT), upperLimit))
            return ES_UNKNOWN_ERROR;
    }

    image->RefreshImageStats();
    const int minimum = image->getMinimum();
    const int maximum = image->getMaximum();
    if (image->isNull() || !(minimum > lowerLimit && maximum < upperLimit)) {
        logError(QStringLiteral("Unable to measure the read bias: pixel values %1 to %2 are not within the limits %3 to %4.")
                     .arg(minimum)
                     .arg(maximum)
                     .arg(lowerLimit)
                     .arg(upperLimit));
        return ES_UNKNOWN_ERROR;
    }
    *result = float(image->getMean()) / float(multiplier);
    return ES_SUCCESS;
}

bool createReadSigmaImage(CILImage *source, CILImage *sum, quint16 *unused, CILImage *count, CILImage *mask,
                          float lowerLimit, float upperLimit, int accumulate)
{
    Q_UNUSED(unused);
    if (!source || !sum || !count || !mask)
        return false;
    const int width = source->getWidth();
    const int height = source->getHeight();
    for (const CILImage *other : {sum, count, mask})
        if (other->getWidth() != width || other->getHeight() != height)
            return false;

    const qint64 n = source->getPixelCount();
    quint16 first = 0;
    quint16 last = 0;
    if (n > 0 && ZoReadSigma::strictIntegerRange(lowerLimit, upperLimit, first, last)) {
        if (zoHasAvx2())
            ZoReadSigma::accumulateImages<16>(*source, *sum, *count, *mask, first, last, accumulate != 0);
        else
            ZoReadSigma::accumulateImages<ZoReadSigma::BaselineWidth>(*source, *sum, *count, *mask, first, last,
                                                                      accumulate != 0);
        return true;
    }

    // No value can be in range (or no pixels): the mask is cleared and sum and
    // count only cleared or kept.
    if (n > 0) {
        if (!accumulate) {
            std::memset(sum->getPixels(), 0, size_t(n) * sizeof(quint16));
            std::memset(count->getPixels(), 0, size_t(n) * sizeof(quint16));
        }
        std::memset(mask->getPixels(), 0, size_t(n) * sizeof(quint16));
    }
    source->RefreshImageStats();
    mask->RefreshImageStats();
    count->RefreshImageStats();
    sum->RefreshImageStats();
    return true;
}

tag_estatus getFlatFieldCoefficients(CPLClickInfo &clickInfo, float *coefs, int capacity, int &count, bool multiView,
                                     tag_eimagetype type)
{
    count = 0;
    const CPLSection *imageSection = clickInfo.getSection(imageTypeSectionName(type));
    if (!imageSection || !coefs)
        return ES_INVALID_POINTER;

    const QString fNumber = imageSection->value(ZO_KEY_F_NUMBER);
    const QString fov = imageSection->value(ZO_KEY_FIELD_OF_VIEW);

    const CPLSection *configPtr = clickInfo.getSection(ZO_CI_CAMERA_SYSTEM_INFO);
    const CPLSection config = configPtr ? *configPtr : CPLSection(ZO_CI_CAMERA_SYSTEM_INFO);

    QString firstKey;
    QString secondKey;
    if (multiView) {
        firstKey = QStringLiteral("MV Flat Field f/%1 Coefs").arg(fNumber);
    } else {
        QString shelf;
        const bool mapped = getShelfPositionFromFOV(config, fov, shelf) == ES_SUCCESS;
        firstKey = QStringLiteral("Shelf Position %1 FF5 f/%2 Coefs").arg(shelf, fNumber);
        if (!mapped)
            logError(QStringLiteral("New-Unable to map the FOV(%1) to Shelf position %2").arg(fov, shelf));
        secondKey = QStringLiteral("Shelf Position %1 Flat Field f/%2 Coefs").arg(shelf, fNumber);
        if (!mapped)
            logError(QStringLiteral("Old-Unable to map the FOV(%1) to Shelf position %2").arg(fov, shelf));
    }

    QString text = config.value(firstKey);
    if (text.isEmpty() && !secondKey.isEmpty())
        text = config.value(secondKey);
    if (text.isEmpty() && config.value(ZO_CI_CAMERA_SYSTEM_INFO).contains(kAndor))
        text = kAndorUnitCoefficients;
    if (text.isEmpty()) {
        logError(QStringLiteral("Unable to find the flat field keys: '%1' or '%2' in the configuration file.")
                     .arg(firstKey, secondKey));
        return ES_UNKNOWN_ERROR;
    }

    // Camera files carry trailing commas and empty places: every piece counts,
    // and one that is empty or not a number stands for 0.
    const QStringList pieces = text.split(QLatin1Char(','), Qt::KeepEmptyParts);
    const int stored = capacity > 0 ? std::min(capacity, pieces.size()) : pieces.size();
    bool allNumbers = true;
    for (int i = 0; i < stored; ++i) {
        const QString &piece = pieces.at(i);
        if (!parseFiniteFloat(piece, coefs[i])) {
            coefs[i] = 0.0f;
            allNumbers = allNumbers && piece.trimmed().isEmpty();
        }
    }
    if (!allNumbers)
        logWarning(QStringLiteral("The flat field coefficients '%1' hold pieces that are not numbers; they count as 0.")
                       .arg(text));
    if (stored < pieces.size())
        logWarning(QStringLiteral("The flat field coefficients '%1' number %2; only the first %3 fit and are used.")
                       .arg(text)
                       .arg(pieces.size())
                       .arg(stored));
    count = stored;
    return ES_SUCCESS;
}

tag_estatus getShelfPositionFromFOV(const CPLSection &cameraSystem, const QString &fov, QString &shelf)
{
    shelf.clear();
    if (!cameraSystem.hasKey(kShelfFovTable))
        return ES_SECTION_KEY_NOT_FOUND;

    const QString trimmedFov = fov.trimmed();
    const int blank = trimmedFov.indexOf(QLatin1Char(' '));
    bool ok = false;
    const double wanted = (blank < 0 ? trimmedFov : trimmedFov.left(blank)).toDouble(&ok);
    if (!ok || !std::isfinite(wanted))
        return ES_INVALID_DATA_TYPE;

    const QStringList entries = cameraSystem.value(kShelfFovTable).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    QString found;
    for (const QString &entry : entries) {
        if (entry.trimmed().isEmpty())
            continue;
        const int equals = entry.indexOf(QLatin1Char('='));
        const QString position = entry.left(equals).trimmed();
        const double entryFov = equals < 0 ? 0.0 : entry.mid(equals + 1).toDouble(&ok);
        if (equals < 0 || !ok || position.isEmpty() || !std::isfinite(entryFov))
            return ES_INVALID_DATA_TYPE;
        if (found.isEmpty() && std::fabs(entryFov - wanted) <= kShelfFovTolerance)
            found = position;
    }
    if (found.isEmpty())
        return ES_MATCH_NOT_FOUND;
    shelf = found;
    return ES_SUCCESS;
}

tag_estatus parseCCDDefectMap(const CPLSection &cameraSystem, SCCDDefectMap &map)
{
    map = SCCDDefectMap();
    bool joint = false;
    const bool ok = parsePixels(cameraSystem.value(kDefectPixels), map.pixels)
        && parseLines(cameraSystem.value(kDefectColumns), map.columns)
        && parseLines(cameraSystem.value(kDefectRows), map.rows)
        && (!cameraSystem.hasKey(kDefectJointRepair)
            || cameraSystem.getBoolValue(kDefectJointRepair, joint) == ES_SUCCESS);
    if (!ok) {
        map = SCCDDefectMap();
        return ES_INVALID_DATA_TYPE;
    }
    map.jointRepair = joint;
    return ES_SUCCESS;
}

tag_estatus fixCCDDefects(const CPLSection *cameraSystem, CILImage *image)
{
    if (!cameraSystem || !image)
        return ES_INVALID_POINTER;
    if (image->isNull())
        return ES_INVALID_IMAGE;

    SCCDDefectMap map;
    tag_estatus status = parseCCDDefectMap(*cameraSystem, map);
    if (status != ES_SUCCESS) {
        logError(QStringLiteral("The defect map of the camera cannot be read."));
        return status;
    }

    const int width = image->getWidth();
    const int height = image->getHeight();
    // Every check comes before the first pixel changes.
    const bool inside = std::all_of(map.pixels.cbegin(), map.pixels.cend(),
                                    [&](const QPoint &p) { return p.x() < width && p.y() < height; })
        && (map.columns.isEmpty() || map.columns.last() < width) && (map.rows.isEmpty() || map.rows.last() < height);
    if (!inside || map.columns.size() == width || map.rows.size() == height) {
        logError(QStringLiteral("The defect map of the camera does not fit the %1 x %2 image.").arg(width).arg(height));
        return ES_INVALID_ARGUMENT;
    }

    quint16 *pixels = image->getPixels();
    const qint64 pixelCount = image->getPixelCount();
    auto flagPixels = [&](std::vector<quint8> &bad, std::vector<qint64> &todo) {
        for (const QPoint &p : map.pixels) {
            const qint64 i = qint64(p.y()) * width + p.x();
            if (!bad[size_t(i)]) {
                bad[size_t(i)] = 1;
                todo.push_back(i);
            }
        }
    };

    if (map.jointRepair) {
        std::vector<quint8> bad(size_t(pixelCount), 0);
        std::vector<qint64> todo;
        for (const int c : map.columns)
            for (int y = 0; y < height; ++y)
                bad[size_t(qint64(y) * width + c)] = 1;
        for (const int r : map.rows)
            std::fill_n(bad.begin() + qint64(r) * width, width, quint8(1));
        for (qint64 i = 0; i < pixelCount; ++i)
            if (bad[size_t(i)])
                todo.push_back(i);
        flagPixels(bad, todo);
        if (qint64(todo.size()) == pixelCount) {
            logError(QStringLiteral("The defect map of the camera leaves no good pixel."));
            return ES_INVALID_ARGUMENT;
        }
        fillFromRim(pixels, width, height, bad, std::move(todo));
    } else {
        std::vector<quint8> bad;
        std::vector<qint64> todo;
        if (!map.pixels.isEmpty()) {
            bad.assign(size_t(pixelCount), 0);
            flagPixels(bad, todo);
            if (qint64(todo.size()) == pixelCount) {
                logError(QStringLiteral("The defect map of the camera leaves no good pixel."));
                return ES_INVALID_ARGUMENT;
            }
        }
        if (!map.columns.isEmpty())
            repairLines(pixels, width, height, map.columns, true);
        if (!map.rows.isEmpty())
            repairLines(pixels, width, height, map.rows, false);
        if (!todo.empty())
            fillFromRim(pixels, width, height, bad, std::move(todo));
    }
    image->RefreshImageStats();
    return ES_SUCCESS;
}

tag_estatus updateDarkChargeImageSection(CPLClickInfo &clickInfo, tag_eimagetype type, const float *readBiasLevel)
{
    if (type == IT_DARKCHARGE)
        return ES_INVALID_ARGUMENT;
    const CPLSection *imageSection = clickInfo.getSection(imageTypeSectionName(type));
    if (!imageSection)
        return ES_INVALID_POINTER;

    CPLSection *dark = clickInfo.getSection(ZO_IMAGE_DARKCHARGE_IMAGE);
    if (!dark) {
        dark = new CPLSection(ZO_IMAGE_DARKCHARGE_IMAGE);
        clickInfo.addSection(dark);
    }
    for (const QString &key : {ZO_KEY_EXPOSURE_TIME, ZO_KEY_BINNING_FACTOR, ZO_KEY_DEMAND_TEMPERATURE, ZO_KEY_F_NUMBER,
                               ZO_KEY_EM_GAIN}) {
        if (imageSection->hasKey(key))
            dark->setValue(key, imageSection->value(key));
        else
            dark->removeKey(key);
    }
    if (readBiasLevel)
        dark->setDoubleValue(ZO_CI_READ_BIAS_LEVEL, double(*readBiasLevel));
    return ES_SUCCESS;
}
