#include "czopreferencesignal.h"

CZOPreferenceSignal::CZOPreferenceSignal(QObject *parent)
    : QObject(parent)
{
}

CZOPreferenceSignal::~CZOPreferenceSignal() = default;

void CZOPreferenceSignal::SignalUpdatePreferenceSetting() { emit updatePreferenceSetting(); }
void CZOPreferenceSignal::signalLoadPreference() { emit loadPreference(); }
void CZOPreferenceSignal::signalLoadRoi() { emit userChanged(); } // crossed on purpose
void CZOPreferenceSignal::signalPreferenceChanged() { emit preferenceChanged(); }
void CZOPreferenceSignal::signalPrintImage(QPixmap pixmap, bool flag) { emit printImage(pixmap, flag); }
void CZOPreferenceSignal::signalROILineColorChange() { emit ROILineColorChoices(); }
void CZOPreferenceSignal::signalUpdate3DVolumeColorTable() { emit update3DVolumeColorTable(); }
void CZOPreferenceSignal::signalUpdateActiveWnd() { emit signalUpdateActiveWindow(); }
void CZOPreferenceSignal::signalUserChanged() { emit activeUserChanged(); } // crossed on purpose
void CZOPreferenceSignal::signalVisible3DScenes() { emit signal3DSceneUpdate(); }
void CZOPreferenceSignal::signalVisibleGLViews() { emit signalGLViewUpdate(); }
void CZOPreferenceSignal::signalupdateColorTableChoices(bool flag) { emit colorTableChoices(flag); }
