#pragma once
// The one broadcaster of preference and user changes; views connect to its
// signals. Reached through CZOPreference::getSignalHandler().

#include "zoutils_export.h"

#include <QObject>
#include <QPixmap>

class ZOUTILS_EXPORT CZOPreferenceSignal : public QObject
{
    Q_OBJECT
public:
    explicit CZOPreferenceSignal(QObject *parent = nullptr);
    ~CZOPreferenceSignal() override;

    // State flags: stored and returned, nothing more.
    void onAppClosing(bool closing) { m_bMainAppClosing = closing; }
    bool isMainAppClosing() const { return m_bMainAppClosing; }
    void setPluginStatus(bool plugin) { m_bPlugin = plugin; }
    bool isPlugin() const { return m_bPlugin; }
    void setAppLoadingStatus(bool loaded) { m_bMainAppLoaded = loaded; }
    bool isMainAppLoaded() const { return m_bMainAppLoaded; }

    // Each emitter emits exactly one signal. Two are crossed on purpose:
    // signalLoadRoi() emits userChanged() (whose receivers reload ROI state)
    // and signalUserChanged() emits activeUserChanged(). Keep them so.
    void SignalUpdatePreferenceSetting();
    void signalLoadPreference();
    void signalLoadRoi();
    void signalPreferenceChanged();
    void signalPrintImage(QPixmap pixmap, bool flag);
    void signalROILineColorChange();
    void signalUpdate3DVolumeColorTable();
    void signalUpdateActiveWnd();
    void signalUserChanged();
    void signalVisible3DScenes();
    void signalVisibleGLViews();
    void signalupdateColorTableChoices(bool flag);

signals:
    void ROILineColorChoices();
    void activeUserChanged();
    void colorTableChoices(bool);
    void loadPreference();
    void preferenceChanged();
    void printImage(QPixmap, bool);
    void signal3DSceneUpdate();
    void signalGLViewUpdate();
    void signalUpdateActiveWindow();
    void update3DVolumeColorTable();
    void updatePreferenceSetting();
    void userChanged();

private:
    bool m_bMainAppClosing = false;
    bool m_bPlugin = false;
    bool m_bMainAppLoaded = false;
};
