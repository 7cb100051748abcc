#include "clickinfoconstruction.h"

#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cplsection.h"
#include "cplsequenceinfo.h"
#include "czopreference.h"
#include "zoconstants.h"

#include <QDateTime>
#include <QDir>

namespace {

// Revision of the click-number section this library writes.
constexpr int kClickInfoFormatRevision = 1;

} // namespace

tag_estatus createNewClickInfo(CPLClickInfo *clickInfo, const QString &clickNumber, bool complete)
{
    if (!clickInfo)
        return ES_INVALID_POINTER;
    const QDateTime now = QDateTime::currentDateTime();
    const QString number = complete ? clickNumber : clickNumber + now.toString(QStringLiteral("yyyyMMddhhmmss"));
    clickInfo->setClickNumber(number);

    tag_estatus status =
        clickInfo->addTiffClickNumberSection(kClickInfoFormatRevision, complete, CZOPreference::getAppVersion());
    if (status == ES_SUCCESS)
        status = clickInfo->appendUserSpecificSections(CPLClickInfo::UserInputSection);
    if (status == ES_SUCCESS)
        status = clickInfo->appendAnalysisUserInputSection();
    return status;
}

tag_estatus createNewSeqInfo(CPLSequenceInfo *seqInfo, const QStringList &clickNumbers)
{
    if (!seqInfo)
        return ES_INVALID_POINTER;
    seqInfo->clearSequenceList();
    for (const QString &clickNumber : clickNumbers) {
        const tag_estatus status = seqInfo->addClickNumber(clickNumber);
        if (status != ES_SUCCESS)
            return status;
    }
    tag_estatus status = seqInfo->addSequenceNumberSection(CZOPreference::getAppVersion());
    if (status == ES_SUCCESS)
        status = seqInfo->appendUserSpecificSections(CPLClickInfo::UserInputSection);
    return status;
}

tag_estatus addCameraInfoSection(const CPLCameraInfo *cameraInfo, CPLClickInfo *clickInfo)
{
    if (!cameraInfo || !clickInfo)
        return ES_INVALID_POINTER;
    const CPLSection *cameraSection = cameraInfo->getSection(ZO_CI_CAMERA_SYSTEM_INFO);
    if (!cameraSection)
        return ES_INVALID_POINTER;
    return clickInfo->addSection(new CPLSection(*cameraSection));
}

QString tiffFileNameForImageType(int type)
{
    switch (type) {
    case IT_LUMINESCENT: return QStringLiteral("luminescent.TIF");
    case IT_READBIAS: return QStringLiteral("readbias.TIF");
    case IT_READSIGMA: return QStringLiteral("readsigma.TIF");
    case IT_DARKCHARGE: return QStringLiteral("background.TIF");
    case IT_READBIASONLY: return QStringLiteral("readbiasonly.TIF");
    case IT_REFERENCE: return QStringLiteral("reference.TIF");
    case IT_STRUCTURE: return QStringLiteral("structure.TIF");
    case IT_FLUORESCENT_BKG: return QStringLiteral("fluorescentbkg.TIF");
    case IT_XRAY: return QStringLiteral("x-ray.TIF");
    case IT_PHOTOGRAPH:
    default: return QStringLiteral("photograph.TIF");
    }
}

tag_estatus addTiffImageSection(CPLClickInfo *clickInfo, tag_eimagetype type, const QString &comment,
                                sIASetupInfo *setup, bool replace)
{
    if (!clickInfo)
        return ES_INVALID_POINTER;
    return clickInfo->addImageSection(tiffFileNameForImageType(type), comment, type, setup, replace);
}

tag_estatus saveNewClickInfo(const QString &folder, const CPLClickInfo *clickInfo)
{
    if (!clickInfo)
        return ES_INVALID_POINTER;
    QDir dir(folder);
    if (!dir.exists())
        dir.mkdir(dir.absolutePath());
    return clickInfo->saveClickInfo(folder + QLatin1Char('/') + ZO_FILE_CLICKINFO_TXT);
}
