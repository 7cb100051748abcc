#include "siasetupinfo.h"

#include "cplsection.h"
#include "textform_p.h"

#include <QDateTime>

namespace {

// Keys of an image section.
const char kExposureTime[] = "Exposure Time";
const char kBinningFactor[] = "Binning Factor";
const char kBinningType[] = "Binning Type";
const char kExposureMode[] = "Exposure Mode";
const char kFNumber[] = "f Number";
const char kDemandTemperature[] = "Demand Temperature";
const char kExcitationFilter[] = "Excitation filter";
const char kEmissionFilter[] = "Emission filter";
const char kFluorescenceLevel[] = "Fluorescence level";
const char kEmGain[] = "EM Gain";
const char kTubeVoltage[] = "X-ray tube voltage";
const char kTubeCurrent[] = "X-ray tube plate current";
const char kTubeFilter[] = "X-ray tube filter";
const char kFieldOfView[] = "Field of View";
const char kImagingAngle[] = "Imaging Angle";
const char kPosition[] = "Position";
const char kDoorLock[] = "Door Lock";
const char kFocusMode[] = "Focus Mode";
const char kStageHeight[] = "Stage Height";
const char kSubjectHeight[] = "Subject Height";
const char kZoomFactor[] = "Zoom Factor";
const char kCcdTemperature[] = "CCD Temperature";
const char kTimeStamp[] = "Time Stamp";

QString key(const char *k) { return QString::fromLatin1(k); }

// Collects the first failing status of a run of reads; a missing key is not
// a failure.
struct Reader {
    const CPLSection &s;
    tag_estatus status = ES_SUCCESS;

    void note(tag_estatus st)
    {
        if (st == ES_INVALID_DATA_TYPE && status == ES_SUCCESS)
            status = st;
    }
    void text(const char *k, QString &v) { s.getValue(key(k), v); }
    void number(const char *k, int &v) { note(s.getIntValue(key(k), v)); }
    void number(const char *k, double &v) { note(s.getDoubleValue(key(k), v)); }
    void number(const char *k, float &v)
    {
        double d = v;
        const tag_estatus st = s.getDoubleValue(key(k), d);
        note(st);
        if (st == ES_SUCCESS)
            v = float(d);
    }
    void number(const char *k, qint64 &v)
    {
        QString t;
        if (s.getValue(key(k), t) != ES_SUCCESS)
            return;
        bool ok = false;
        const qint64 n = t.trimmed().toLongLong(&ok, 10);
        if (ok)
            v = n;
        else
            note(ES_INVALID_DATA_TYPE);
    }
    // "60 sec": the number before the first blank, the unit after it.
    void exposure(double &v, QString &units)
    {
        QString t;
        if (s.getValue(key(kExposureTime), t) != ES_SUCCESS)
            return;
        const int blank = t.indexOf(QLatin1Char(' '));
        double n = 0;
        if (!zoparser::parseDouble(blank < 0 ? t : t.left(blank), n)) {
            note(ES_INVALID_DATA_TYPE);
            return;
        }
        v = n;
        if (blank >= 0)
            units = t.mid(blank + 1);
    }
};

} // namespace

sIASetupInfo::sIASetupInfo()
    : timeStamp(QDateTime::currentSecsSinceEpoch())
{
}

tag_estatus sIASetupInfo::writeToSection(CPLSection *section, tag_eimagetype type) const
{
    if (!section)
        return ES_INVALID_POINTER;
    CPLSection &s = *section;
    auto exposureText = [this](double seconds) { return zoparser::formatDouble(seconds) + QLatin1Char(' ') + exposureUnits; };

    switch (type) {
    case IT_PHOTOGRAPH:
        s.setValue(key(kExposureTime), exposureText(photoExposureTime));
        s.setIntValue(key(kBinningFactor), photoBinning);
        s.setValue(key(kBinningType), photoBinningType);
        s.setValue(key(kExposureMode), photoExposureMode);
        s.setValue(key(kFNumber), photoFStop);
        break;
    case IT_XRAY:
        s.setValue(key(kExposureTime), exposureText(xrayExposureTime));
        s.setIntValue(key(kBinningFactor), xrayBinning);
        s.setValue(key(kFNumber), xrayFStop);
        s.setDoubleValue(key(kTubeVoltage), xrayTubeVoltage);
        s.setDoubleValue(key(kTubeCurrent), xrayTubeCurrent);
        s.setValue(key(kTubeFilter), xrayTubeFilter);
        break;
    default:
        s.setValue(key(kExposureTime), exposureText(exposureTime));
        s.setIntValue(key(kBinningFactor), binningFactor);
        s.setValue(key(kBinningType), lumBinningType);
        s.setValue(key(kExposureMode), lumExposureMode);
        s.setValue(key(kFNumber), lumFStop);
        s.setValue(key(kDemandTemperature), demandTemperature);
        s.setValue(key(kExcitationFilter), excitationFilter);
        s.setValue(key(kEmissionFilter), emissionFilter);
        s.setValue(key(kFluorescenceLevel), fluorescenceLevel);
        s.setValue(key(kEmGain), emGain);
        break;
    }
    s.setDoubleValue(key(kFieldOfView), fov);
    s.setDoubleValue(key(kImagingAngle), imagingAngle);
    s.setValue(key(kPosition), positionName);
    s.setValue(key(kDoorLock), doorLock);
    s.setValue(key(kFocusMode), focusMode);
    s.setValue(key(kStageHeight), stageHeight);
    s.setDoubleValue(key(kSubjectHeight), subjectHeight);
    s.setDoubleValue(key(kZoomFactor), zoomFactor);
    s.setDoubleValue(key(kCcdTemperature), ccdTemperature);
    s.setValue(key(kTimeStamp), QString::number(timeStamp));
    return ES_SUCCESS;
}

tag_estatus sIASetupInfo::readFromSection(const CPLSection &section, tag_eimagetype type)
{
    Reader r{section};
    switch (type) {
    case IT_PHOTOGRAPH:
        r.exposure(photoExposureTime, exposureUnits);
        r.number(kBinningFactor, photoBinning);
        r.text(kBinningType, photoBinningType);
        r.text(kExposureMode, photoExposureMode);
        r.text(kFNumber, photoFStop);
        break;
    case IT_XRAY:
        r.exposure(xrayExposureTime, exposureUnits);
        r.number(kBinningFactor, xrayBinning);
        r.text(kFNumber, xrayFStop);
        r.number(kTubeVoltage, xrayTubeVoltage);
        r.number(kTubeCurrent, xrayTubeCurrent);
        r.text(kTubeFilter, xrayTubeFilter);
        break;
    default:
        r.exposure(exposureTime, exposureUnits);
        r.number(kBinningFactor, binningFactor);
        r.text(kBinningType, lumBinningType);
        r.text(kExposureMode, lumExposureMode);
        r.text(kFNumber, lumFStop);
        r.text(kDemandTemperature, demandTemperature);
        r.text(kExcitationFilter, excitationFilter);
        r.text(kEmissionFilter, emissionFilter);
        r.text(kFluorescenceLevel, fluorescenceLevel);
        r.text(kEmGain, emGain);
        break;
    }
    r.number(kFieldOfView, fov);
    r.number(kImagingAngle, imagingAngle);
    r.text(kPosition, positionName);
    r.text(kDoorLock, doorLock);
    r.text(kFocusMode, focusMode);
    r.text(kStageHeight, stageHeight);
    r.number(kSubjectHeight, subjectHeight);
    r.number(kZoomFactor, zoomFactor);
    r.number(kCcdTemperature, ccdTemperature);
    r.number(kTimeStamp, timeStamp);
    return r.status;
}
