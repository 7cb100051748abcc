#include "setupmatching.h"

#include "cilimage.h"
#include "cplsection.h"
#include "generalutilities.h"
#include "zoconstants.h"

#include <QDateTime>
#include <QStringView>

#include <cmath>

namespace {

// Keys of a fluorescent reference section; lower case as the reference index
// files write them.
const QString kRefFov = QStringLiteral("fov");
const QString kRefBinning = QStringLiteral("binning factor");
const QString kRefFluorescenceLevel = QStringLiteral("fluorescence level");
const QString kRefEmissionFilter = QStringLiteral("emission filter");
const QString kRefExcitationFilter = QStringLiteral("excitation filter");

constexpr double kLuminTolerance = 1e-5;
constexpr double kXrayTolerance = 0.01;
constexpr float kBkgAgeLimitHours = 48.0f;
constexpr float kStaleImageHours = 1.0f;

// "Not greater than", so that a NaN difference passes.
inline bool within(double a, double b, double tolerance)
{
    return !(std::fabs(a - b) > tolerance);
}

bool isAscii(QStringView s)
{
    for (const QChar c : s)
        if (c.unicode() >= 0x80)
            return false;
    return true;
}

// a.toLower() == b.toLower(), without allocating for ASCII texts (the usual
// case: filter names, levels, apertures).
bool sameLowered(QStringView a, QStringView b)
{
    if (a.size() == b.size()) {
        const QChar *pa = a.data();
        const QChar *pb = b.data();
        for (qsizetype i = 0; i < a.size(); ++i) {
            ushort x = pa[i].unicode();
            ushort y = pb[i].unicode();
            if ((x | y) >= 0x80)
                return a.toString().toLower() == b.toString().toLower();
            if (ushort(x - 'A') < 26)
                x += 32;
            if (ushort(y - 'A') < 26)
                y += 32;
            if (x != y)
                return false;
        }
        return true;
    }
    // Lower-casing can change a text's length only outside ASCII.
    if (isAscii(a) && isAscii(b))
        return false;
    return a.toString().toLower() == b.toString().toLower();
}

// Age in hours of a section named by its date-time stamp.
float sectionAgeHours(const CPLSection &section, const QDateTime &now)
{
    const qint64 secs = getDateTime(section.name()).secsTo(now);
    return float(secs) / 3600.0f;
}

CPLSection *mostRecent(const QList<CPLSection *> &list, float limitHours)
{
    const QDateTime now = QDateTime::currentDateTime();
    CPLSection *best = nullptr;
    float limit = limitHours;
    for (CPLSection *section : list) {
        if (!section)
            continue;
        const float age = sectionAgeHours(*section, now);
        // ">=" so that of equal ages the later section wins.
        if (limit >= age) {
            limit = age;
            best = section;
        }
    }
    return best;
}

template<typename Record, typename Rule>
Record *findFromBack(QList<Record *> &list, const sIASetupInfo *wanted, Rule rule)
{
    if (!wanted)
        return nullptr;
    for (qsizetype i = list.size() - 1; i >= 0; --i) {
        Record *candidate = list.at(i);
        if (candidate && rule(wanted, &candidate->setup))
            return candidate;
    }
    return nullptr;
}

} // namespace

// ---------------------------------------------------------------------------
// Records

SIAImage::SIAImage(const sIASetupInfo &setupInfo, CILImage *ownedImage)
    : setup(setupInfo)
    , image(ownedImage)
{
}

// Sharing the pointer is the contract of this record (see the header).
SIAImage::SIAImage(const SIAImage &other)
    : setup(other.setup)
    , image(other.image)
{
}

SIAImage &SIAImage::operator=(const SIAImage &other)
{
    setup = other.setup;
    image = other.image;
    return *this;
}

SIAImage::~SIAImage()
{
    delete image;
    image = nullptr;
}

SIAImageInfo::SIAImageInfo(const sIASetupInfo &setupInfo, const QString &imageName)
    : setup(setupInfo)
    , name(imageName)
{
}

SIAImageInfo::~SIAImageInfo() = default;

// ---------------------------------------------------------------------------
// Comparison rules

bool isLuminParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate, bool fluorescent)
{
    if (!wanted || !candidate)
        return false;
    if (!within(wanted->exposureTime, candidate->exposureTime, kLuminTolerance)
        || wanted->binningFactor != candidate->binningFactor)
        return false;
    if (fluorescent) {
        // The cheap number first; the result does not depend on the order.
        return within(wanted->fov, candidate->fov, kLuminTolerance)
            && sameLowered(wanted->lumFStop, candidate->lumFStop)
            && sameLowered(wanted->fluorescenceLevel, candidate->fluorescenceLevel)
            && sameLowered(wanted->excitationFilter, candidate->excitationFilter)
            && sameLowered(wanted->emissionFilter, candidate->emissionFilter);
    }
    return sameLowered(QStringView(wanted->demandTemperature).trimmed(),
                       QStringView(candidate->demandTemperature).trimmed());
}

bool isPhotoParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate)
{
    if (!wanted || !candidate)
        return false;
    return wanted->photoExposureTime == candidate->photoExposureTime
        && wanted->photoBinning == candidate->photoBinning
        && wanted->photoFStop == candidate->photoFStop
        && wanted->fov == candidate->fov
        && wanted->imagingAngle == candidate->imagingAngle
        && sameLowered(wanted->positionName, candidate->positionName);
}

bool isXrayParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate)
{
    if (!wanted || !candidate)
        return false;
    return within(wanted->xrayExposureTime, candidate->xrayExposureTime, kXrayTolerance)
        && wanted->xrayBinning == candidate->xrayBinning
        && wanted->xrayFStop == candidate->xrayFStop
        && wanted->fov == candidate->fov
        && within(wanted->imagingAngle, candidate->imagingAngle, kXrayTolerance)
        && sameLowered(wanted->positionName, candidate->positionName)
        && within(wanted->xrayTubeVoltage, candidate->xrayTubeVoltage, kXrayTolerance)
        && within(wanted->xrayTubeCurrent, candidate->xrayTubeCurrent, kXrayTolerance)
        && sameLowered(wanted->xrayTubeFilter, candidate->xrayTubeFilter);
}

bool isFLReferenceParametersMatched(const sIASetupInfo &wanted, const sIASetupInfo &candidate, bool compareBinning)
{
    if (wanted.fov != candidate.fov)
        return false;
    if (compareBinning && wanted.binningFactor != candidate.binningFactor)
        return false;
    return sameLowered(wanted.excitationFilter, candidate.excitationFilter)
        && sameLowered(wanted.fluorescenceLevel, candidate.fluorescenceLevel)
        && wanted.imagingAngle == candidate.imagingAngle;
}

// ---------------------------------------------------------------------------
// Searches

SIAImage *findMatchingImageFromList(QList<SIAImage *> &list, const sIASetupInfo *wanted, bool fluorescent)
{
    return findFromBack(list, wanted, [fluorescent](const sIASetupInfo *w, const sIASetupInfo *c) {
        return isLuminParametersMatched(w, c, fluorescent);
    });
}

SIAImageInfo *findMatchingPhotoFromList(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted)
{
    return findFromBack(list, wanted, isPhotoParametersMatched);
}

SIAImageInfo *findMatchingXrayFromList(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted)
{
    return findFromBack(list, wanted, isXrayParametersMatched);
}

SIAImageInfo *findMatchingImageFromList2(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted, bool fluorescent)
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    for (qsizetype i = list.size() - 1; i >= 0; --i) {
        SIAImageInfo *candidate = list.at(i);
        if (!candidate) {
            list.removeAt(i);
            continue;
        }
        // Stored stamps are 32-bit seconds; the truncation is deliberate.
        const qint64 seconds = now - qint64(qint32(candidate->setup.timeStamp));
        if (float(seconds) / 3600.0f > kStaleImageHours) {
            list.removeAt(i);
            delete candidate;
            continue;
        }
        if (isLuminParametersMatched(wanted, &candidate->setup, fluorescent))
            return candidate;
    }
    return nullptr;
}

CPLSection *findMatchingFluorescentReferenceImageFromList(QList<CPLSection *> &list, const sIASetupInfo *wanted,
                                                          bool compareBinning)
{
    if (!wanted)
        return nullptr;
    for (qsizetype i = list.size() - 1; i >= 0; --i) {
        CPLSection *section = list.at(i);
        if (!section)
            continue;
        // Missing or unreadable keys keep the defaults of a new set-up.
        sIASetupInfo candidate;
        section->getDoubleValue(kRefFov, candidate.fov);
        section->getIntValue(kRefBinning, candidate.binningFactor);
        section->getValue(kRefFluorescenceLevel, candidate.fluorescenceLevel);
        section->getValue(kRefEmissionFilter, candidate.emissionFilter);
        section->getValue(kRefExcitationFilter, candidate.excitationFilter);
        section->getDoubleValue(ZO_KEY_IMAGING_ANGLE, candidate.imagingAngle);
        if (isFLReferenceParametersMatched(*wanted, candidate, compareBinning))
            return section;
    }
    return nullptr;
}

CPLSection *findMostRecentBkgInfo(const QList<CPLSection *> &list)
{
    return mostRecent(list, kBkgAgeLimitHours);
}

CPLSection *findMostRecentXRayRefInfo(const QList<CPLSection *> &list, int days)
{
    // 64-bit so that a huge day count cannot overflow.
    return mostRecent(list, float(qint64(days) * 24));
}

CPLSection *getMatchingBkgImageSection(const QList<CPLSection *> &list, const sIASetupInfo *wanted)
{
    if (!wanted)
        return nullptr;
    const QStringView wantedTemperature = QStringView(wanted->demandTemperature).trimmed();
    QList<CPLSection *> matching;
    for (CPLSection *section : list) {
        if (!section)
            continue;
        QString exposureText;
        section->getValue(ZO_KEY_EXPOSURE_TIME, exposureText);
        // Only the number before the unit counts; a text without a blank
        // (no unit) reads as 0. Stored backgrounds always carry the unit, and
        // this oddity is kept so that old lists keep their meaning.
        const int blank = exposureText.indexOf(QLatin1Char(' '));
        bool ok = false;
        float exposure = blank < 0 ? 0.0f : QStringView(exposureText).left(blank).toFloat(&ok);
        if (!ok)
            exposure = 0.0f;
        int binning = 1;
        section->getIntValue(ZO_KEY_BINNING_FACTOR, binning);
        QString temperature;
        section->getValue(ZO_KEY_DEMAND_TEMPERATURE, temperature);

        if (within(wanted->exposureTime, double(exposure), kLuminTolerance) && binning == wanted->binningFactor
            && sameLowered(QStringView(temperature).trimmed(), wantedTemperature))
            matching.append(section);
    }
    return matching.isEmpty() ? nullptr : findMostRecentBkgInfo(matching);
}

bool ZOA_CheckIfDarkBkgNeeded(int numerator, int denominator, float value)
{
    const float ratio = float(numerator) / float(denominator);
    const float signal = ratio * ratio * value;
    // The product stays float and is widened only for the comparison: a value
    // of 0.00074f lies just below the double threshold.
    return double(signal) >= 0.00074;
}
