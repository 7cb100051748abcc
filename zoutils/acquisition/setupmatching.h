#pragma once
// Deciding whether a stored correction or reference image can be reused for
// an acquisition set-up: the comparison rules, the searches over candidate
// lists and the age-based choices among click-info sections.
//
// Stateless free functions. Every search returns a pointer into the caller's
// list, or null, and transfers no ownership (findMatchingImageFromList2
// excepted, which deletes the stale entries it removes). A null set-up or a
// null list element never matches.
//
// "Within t" means the absolute difference is not greater than t, so a NaN
// difference passes a within test and fails an exact one. "Case-insensitive"
// means both texts lower-cased, then compared for equality.

#include "zoutils_export.h"

#include "siasetupinfo.h"

#include <QList>
#include <QString>

class CILImage;
class CPLSection;

// A set-up together with its image.
//
// Owns `image` and deletes it on destruction. Copying (construction or
// assignment) copies the set-up and the pointer itself, not the image, so the
// two objects then own the same image: only one of them may be destroyed with
// the pointer still set. Assignment does not delete the image held before,
// since a copy may share it.
class ZOUTILS_EXPORT SIAImage
{
public:
    SIAImage() = default;
    SIAImage(const sIASetupInfo &setupInfo, CILImage *ownedImage);
    SIAImage(const SIAImage &other);
    SIAImage &operator=(const SIAImage &other);
    virtual ~SIAImage();

    sIASetupInfo setup;
    CILImage *image = nullptr;
};

// A set-up together with the name or path of its stored image, as the caller
// gives it. Copies are independent.
class ZOUTILS_EXPORT SIAImageInfo
{
public:
    SIAImageInfo() = default;
    SIAImageInfo(const sIASetupInfo &setupInfo, const QString &imageName);
    SIAImageInfo(const SIAImageInfo &other) = default;
    SIAImageInfo &operator=(const SIAImageInfo &other) = default;
    virtual ~SIAImageInfo();

    sIASetupInfo setup;
    QString name;
};

// Comparison rules; `wanted` is the set-up about to be acquired.

// Exposure within 1e-5 s and equal binning, then:
//  fluorescent: lumFStop, fluorescenceLevel, excitationFilter and
//    emissionFilter case-insensitively and fov within 1e-5 (the cooling
//    set-point is not compared);
//  luminescent: demandTemperature, trimmed and case-insensitively (the optics
//    are not compared).
ZOUTILS_EXPORT bool isLuminParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate,
                                             bool fluorescent);
// Exactly equal photoExposureTime, photoBinning, photoFStop (case-sensitive),
// fov and imagingAngle; positionName case-insensitively.
ZOUTILS_EXPORT bool isPhotoParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate);
// xrayExposureTime within 0.01, equal xrayBinning, xrayFStop (case-sensitive)
// and fov, imagingAngle within 0.01, positionName case-insensitively, tube
// voltage and current within 0.01, xrayTubeFilter case-insensitively.
ZOUTILS_EXPORT bool isXrayParametersMatched(const sIASetupInfo *wanted, const sIASetupInfo *candidate);
// Exactly equal fov, equal binningFactor when `compareBinning`,
// excitationFilter and fluorescenceLevel case-insensitively, exactly equal
// imagingAngle. The emission filter is deliberately not compared.
ZOUTILS_EXPORT bool isFLReferenceParametersMatched(const sIASetupInfo &wanted, const sIASetupInfo &candidate,
                                                   bool compareBinning);

// Searches from the last element towards the first; the first match (so the
// one added last) is returned. Linear; nothing is allocated per candidate.
ZOUTILS_EXPORT SIAImage *findMatchingImageFromList(QList<SIAImage *> &list, const sIASetupInfo *wanted,
                                                   bool fluorescent);
ZOUTILS_EXPORT SIAImageInfo *findMatchingPhotoFromList(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted);
ZOUTILS_EXPORT SIAImageInfo *findMatchingXrayFromList(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted);

// As findMatchingImageFromList, but each element visited whose set-up is more
// than one hour old (timeStamp read as 32-bit seconds since 1970) is deleted
// and removed from the list first. Elements in front of the match are left
// alone; with no match every stale element is gone. Null elements are removed.
ZOUTILS_EXPORT SIAImageInfo *findMatchingImageFromList2(QList<SIAImageInfo *> &list, const sIASetupInfo *wanted,
                                                        bool fluorescent);

// Reads "fov", "binning factor", "fluorescence level", "emission filter",
// "excitation filter" and "Imaging Angle" of each section (last to first) over
// the defaults of a new set-up and returns the first section that matches
// `wanted` by isFLReferenceParametersMatched.
ZOUTILS_EXPORT CPLSection *findMatchingFluorescentReferenceImageFromList(QList<CPLSection *> &list,
                                                                         const sIASetupInfo *wanted,
                                                                         bool compareBinning);

// Section names are date-time stamps (getDateTime). Returns the youngest
// section not older than 48 hours; of equal ages the later one in the list.
// A section dated in the future has a negative age and wins over past ones.
ZOUTILS_EXPORT CPLSection *findMostRecentBkgInfo(const QList<CPLSection *> &list);
// The same with a limit of `days` x 24 hours; 0 days accepts only sections
// dated at or after now.
ZOUTILS_EXPORT CPLSection *findMostRecentXRayRefInfo(const QList<CPLSection *> &list, int days);

// Collects the background sections whose "Exposure Time" (the number before
// the first blank: "60 sec" is 60, while a text without a blank reads as 0)
// is within 1e-5 of wanted->exposureTime, whose "Binning Factor" (1 when
// missing or unreadable) equals wanted->binningFactor and whose "Demand
// Temperature" equals wanted->demandTemperature, trimmed and
// case-insensitively; returns findMostRecentBkgInfo over them, or null.
ZOUTILS_EXPORT CPLSection *getMatchingBkgImageSection(const QList<CPLSection *> &list, const sIASetupInfo *wanted);

// Whether a dark background is worth taking: (numerator / denominator)^2 x
// value, computed in float and widened to double, is at least 0.00074.
// A zero denominator gives an infinite ratio (true for a positive value).
ZOUTILS_EXPORT bool ZOA_CheckIfDarkBkgNeeded(int numerator, int denominator, float value);
