#include "czoutilityfns.h"

#include "generalutilities.h"
#include "zoappstate_p.h"
#include "zoconstants.h"
#include "zoplatform.h"
#include "zopreferencehooks.h"

#include <QAction>
#include <QMap>
#include <QPointer>

#ifdef ZO_HAVE_OPENMP
#include <omp.h>
#endif

#include <thread>

namespace {

const quint64 kTwoGiB = 2147483648ULL;

bool multiCoreAtLoad()
{
#ifdef ZO_HAVE_OPENMP
    return omp_get_num_procs() >= 1;
#else
    return std::thread::hardware_concurrency() >= 1;
#endif
}

// All state is unsynchronised and belongs to the GUI thread.
QMap<QString, QPointer<QAction>> s_actions;
bool s_roiMeasurementsBlocked = false;
bool s_closeAllClicked = false;
bool s_noToAllClicked = false;
bool s_applicationActive = false;
bool s_testWidgetVisible = false;
bool s_batchMode = false;
bool s_appLoaded = false;
bool s_plugin = false;
int s_memoryLoadLimit = 0;
bool s_memoryLoadLimitSet = false;
const bool s_multiCore = multiCoreAtLoad();
quint16 s_readerServerPort = 0;
std::list<std::string> s_scannedChipIDs;
QString s_kValue;

} // namespace

CZOUtilityFns::~CZOUtilityFns() = default;

// The name, the close guard and the cursor are kept by the log's layer, whose
// message boxes need them too.
QString CZOUtilityFns::getAppName()
{
    return ZOAppState::appName();
}

QString CZOUtilityFns::getBuildKind()
{
    return ZOAppState::buildKind();
}

void CZOUtilityFns::setBuildKind(const QString &kind)
{
    ZOAppState::setBuildKind(kind);
}

QIcon CZOUtilityFns::appIcon()
{
    return QIcon(QStringLiteral(":/Resource/ZOSApp.ico"));
}

QString CZOUtilityFns::generateCurrentSeqName()
{
    // Until the preference store sets its hooks there is no user to name.
    const ZOPreferenceHooks hooks = zoPreferenceHooks();
    QString user = hooks.activeUserName ? hooks.activeUserName() : QString();
    if (user.isEmpty() && hooks.selectUser && hooks.activeUserName) {
        hooks.selectUser();
        user = hooks.activeUserName();
    }
    return user + getCurrentDateAndTimeAsString() + QStringLiteral("_SEQ");
}

bool CZOUtilityFns::isAcquisitionMachine()
{
    const QVariant value = ZOPlatform::machineSetting(ZO_PRODUCT_NORBECK_INSTRUMENTS, ZO_PRODUCT_ZOLVANE,
                                                      QStringLiteral("Current_Version"),
                                                      QStringLiteral("InstalledVersion"));
    return value.toString() == QLatin1String("Acquisition");
}

QString CZOUtilityFns::normalisedActionName(const QString &name)
{
    QString key = name.trimmed();
    key.remove(QLatin1Char('&'));
    key.remove(QLatin1Char('.'));
    return key.toLower();
}

bool CZOUtilityFns::addAction(const QString &name, QAction *action)
{
    const QString key = normalisedActionName(name);
    auto it = s_actions.find(key);
    if (it != s_actions.end() && !it.value().isNull())
        return false;
    s_actions.insert(key, action);
    return true;
}

QAction *CZOUtilityFns::getAction(const QString &name)
{
    return s_actions.value(normalisedActionName(name)).data();
}

QCursor CZOUtilityFns::getZOSCursor(tagECURSOR_TYPE type)
{
    switch (type) {
    case ECURSOR_WAIT:
        return QCursor(Qt::WaitCursor);
    case ECURSOR_BUSY:
        return QCursor(Qt::BusyCursor);
    case ECURSOR_CROSS:
        return QCursor(Qt::CrossCursor);
    case ECURSOR_HAND:
        return QCursor(Qt::OpenHandCursor);
    case ECURSOR_GRAB:
        return QCursor(Qt::ClosedHandCursor);
    case ECURSOR_POINTING:
        return QCursor(Qt::PointingHandCursor);
    case ECURSOR_IBEAM:
        return QCursor(Qt::IBeamCursor);
    case ECURSOR_SIZE_ALL:
        return QCursor(Qt::SizeAllCursor);
    case ECURSOR_SIZE_HOR:
        return QCursor(Qt::SizeHorCursor);
    case ECURSOR_SIZE_VER:
        return QCursor(Qt::SizeVerCursor);
    case ECURSOR_SIZE_BDIAG:
        return QCursor(Qt::SizeBDiagCursor);
    case ECURSOR_SIZE_FDIAG:
        return QCursor(Qt::SizeFDiagCursor);
    case ECURSOR_FORBIDDEN:
        return QCursor(Qt::ForbiddenCursor);
    case ECURSOR_WHATS_THIS:
        return QCursor(Qt::WhatsThisCursor);
    case ECURSOR_ARROW:
        break;
    }
    return QCursor(Qt::ArrowCursor);
}

void CZOUtilityFns::setCursor(tagECURSOR_TYPE type)
{
    setCursor(getZOSCursor(type));
}

void CZOUtilityFns::setCursor(const QCursor &cursor)
{
    // The application's override stack keeps the earlier cursors for restoreCursor().
    ZOAppState::setCursor(cursor);
}

QCursor *CZOUtilityFns::getCurrentCursor()
{
    return ZOAppState::currentCursor();
}

void CZOUtilityFns::restoreCursor()
{
    ZOAppState::restoreCursor();
}

int CZOUtilityFns::getSystemMemoryLoad()
{
    ZOMemoryStatus status;
    ZOPlatform::memoryStatus(&status);
    return status.loadPercent;
}

qint32 CZOUtilityFns::getSystemAvailableMemory()
{
    ZOMemoryStatus status;
    ZOPlatform::memoryStatus(&status);
    return qint32(quint32(status.availablePhysical));
}

int CZOUtilityFns::memoryLoadLimitFor(quint64 totalPhysicalBytes)
{
    if (totalPhysicalBytes <= kTwoGiB)
        return 75;
    return int(100.0 - double(kTwoGiB) * 25.0 / double(totalPhysicalBytes));
}

int CZOUtilityFns::initSystemMemoryLoadLimit()
{
    ZOMemoryStatus status;
    ZOPlatform::memoryStatus(&status);
    return memoryLoadLimitFor(status.totalPhysical);
}

bool CZOUtilityFns::isMemoryLoadLimit()
{
    return getSystemMemoryLoad() > getMemoryLoadLimit();
}

int CZOUtilityFns::getMemoryLoadLimit()
{
    if (!s_memoryLoadLimitSet)
        setMemoryLoadLimit(initSystemMemoryLoadLimit());
    return s_memoryLoadLimit;
}

void CZOUtilityFns::setMemoryLoadLimit(int percent)
{
    s_memoryLoadLimit = percent;
    s_memoryLoadLimitSet = true;
}

void CZOUtilityFns::setCanClose(bool canClose)
{
    ZOAppState::setCanClose(canClose);
}

bool CZOUtilityFns::canClose()
{
    return ZOAppState::canClose();
}

void CZOUtilityFns::setBatchModeEnabled(bool enabled)
{
    s_batchMode = enabled && isAcquisitionMachine();
}

bool CZOUtilityFns::isBatchModeEnabled()
{
    return s_batchMode && isAcquisitionMachine();
}

void CZOUtilityFns::blockROIMeasurements(bool block) { s_roiMeasurementsBlocked = block; }
bool CZOUtilityFns::isROIMeasurementsBlocked() { return s_roiMeasurementsBlocked; }
bool CZOUtilityFns::getCloseAllClicked() { return s_closeAllClicked; }
void CZOUtilityFns::setCloseAllClicked(bool clicked) { s_closeAllClicked = clicked; }
bool CZOUtilityFns::getNoToAllClicked() { return s_noToAllClicked; }
void CZOUtilityFns::setNoToAllClicked(bool clicked) { s_noToAllClicked = clicked; }
bool CZOUtilityFns::isApplicationActive() { return s_applicationActive; }
void CZOUtilityFns::setApplicationActive(bool active) { s_applicationActive = active; }
bool CZOUtilityFns::isTestWidgetVisible() { return s_testWidgetVisible; }
void CZOUtilityFns::setTestWidgetVisible(bool visible) { s_testWidgetVisible = visible; }
quint16 CZOUtilityFns::getReaderServerPort() { return s_readerServerPort; }
void CZOUtilityFns::setReaderServerPort(quint16 port) { s_readerServerPort = port; }
std::list<std::string> CZOUtilityFns::getScannedChipIDs() { return s_scannedChipIDs; }
void CZOUtilityFns::setScannedChipIDs(const std::list<std::string> &ids) { s_scannedChipIDs = ids; }
QString CZOUtilityFns::getkValue() { return s_kValue; }
void CZOUtilityFns::setkValue(const QString &value) { s_kValue = value; }
bool CZOUtilityFns::getMultiCoreSupported() { return s_multiCore; }
bool CZOUtilityFns::isAppLoaded() { return s_appLoaded; }
void CZOUtilityFns::setAppLoaded(bool loaded) { s_appLoaded = loaded; }
bool CZOUtilityFns::isPlugin() { return s_plugin; }
void CZOUtilityFns::setPlugin(bool plugin) { s_plugin = plugin; }

CZOPreferenceSignal *CZOUtilityFns::getZOPrefenceSignal()
{
    // Null until the preference store sets its hook.
    const ZOPreferenceHooks hooks = zoPreferenceHooks();
    return hooks.preferenceSignal ? hooks.preferenceSignal() : nullptr;
}
