#pragma once
// Process-wide application state and small services, all static: flags and
// counters, the registry of named menu actions, the cursor, the memory-load
// limit, the application name and icon, sequence names and the
// acquisition-station test. The state is unsynchronised: GUI thread only.

#include "zoutils_export.h"

#include <QCursor>
#include <QIcon>
#include <QString>

#include <list>
#include <string>

class QAction;
class CZOPreferenceSignal;

// The cursors the application shows; getZOSCursor() gives their shapes.
enum tagECURSOR_TYPE : int {
    ECURSOR_ARROW = 0,
    ECURSOR_WAIT,       // busy, input blocked
    ECURSOR_BUSY,       // busy, input still accepted
    ECURSOR_CROSS,      // drawing ROIs, picking points
    ECURSOR_HAND,       // panning (open hand)
    ECURSOR_GRAB,       // panning while dragging (closed hand)
    ECURSOR_POINTING,   // links and clickable items
    ECURSOR_IBEAM,      // text
    ECURSOR_SIZE_ALL,   // moving an ROI
    ECURSOR_SIZE_HOR,
    ECURSOR_SIZE_VER,
    ECURSOR_SIZE_BDIAG, // corner handles
    ECURSOR_SIZE_FDIAG,
    ECURSOR_FORBIDDEN,
    ECURSOR_WHATS_THIS
};

class ZOUTILS_EXPORT CZOUtilityFns
{
public:
    CZOUtilityFns() = default;
    CZOUtilityFns(const CZOUtilityFns &) = default;
    CZOUtilityFns &operator=(const CZOUtilityFns &) = default;
    virtual ~CZOUtilityFns();

    // Services
    // "Zolvane® 4.7.2 (64-bit)", followed by the build kind when one is set.
    static QString getAppName();
    // The build kind ("Beta", ...) appended to the name with a blank; empty by default.
    static QString getBuildKind();
    static void setBuildKind(const QString &kind);
    static QIcon appIcon(); // ":/Resource/ZOSApp.ico"
    // The active user's name, the local time as 14 digits and "_SEQ", e.g.
    // jdoe20260305070809_SEQ. With no active user the person is asked to pick
    // one first; until the preference store is set up the name part is empty.
    static QString generateCurrentSeqName();
    // True when the machine-wide setting "InstalledVersion" of
    // Norbeck Instruments\Zolvane\Current_Version is exactly "Acquisition".
    // Read on every call.
    static bool isAcquisitionMachine();

    // Action registry. Names are normalised: trimmed, "&" and "." removed,
    // lower-cased, so "&Open..." and "open" are one name. The registry does
    // not own the actions; a destroyed action leaves its name free again.
    static bool addAction(const QString &name, QAction *action); // false when the name is taken
    static QAction *getAction(const QString &name);              // null when unknown
    static QString normalisedActionName(const QString &name);

    // Cursors. setCursor() shows a cursor over the whole application until
    // the matching restoreCursor(); calls nest. Without a GUI application
    // they do nothing.
    static QCursor getZOSCursor(tagECURSOR_TYPE type);
    static void setCursor(tagECURSOR_TYPE type);
    static void setCursor(const QCursor &cursor);
    static QCursor *getCurrentCursor(); // the cursor set last, or null; owned by the application
    static void restoreCursor();

    // Memory
    static int getSystemMemoryLoad(); // percent of physical memory in use
    // Available physical memory in bytes, as a signed 32-bit value: only the
    // low 32 bits are kept, deliberately, as callers have always received.
    static qint32 getSystemAvailableMemory();
    // The limit to use for this machine: 75 up to 2 GiB of physical memory,
    // above that 100 - 2 GiB x 25 / total, truncated (87 for 4 GiB).
    static int initSystemMemoryLoadLimit();
    static int memoryLoadLimitFor(quint64 totalPhysicalBytes);
    static bool isMemoryLoadLimit(); // current load above the stored limit
    static int getMemoryLoadLimit(); // initSystemMemoryLoadLimit() until set
    static void setMemoryLoadLimit(int percent);

    // Close control: setCanClose(false) starts a period in which the
    // application must not close, setCanClose(true) ends one (the count never
    // drops below 0). Periods nest.
    static void setCanClose(bool canClose);
    static bool canClose();

    // Batch mode: only ever on at an acquisition station.
    static void setBatchModeEnabled(bool enabled);
    static bool isBatchModeEnabled();

    // Plain state
    static void blockROIMeasurements(bool block);
    static bool isROIMeasurementsBlocked();
    static bool getCloseAllClicked();
    static void setCloseAllClicked(bool clicked);
    static bool getNoToAllClicked();
    static void setNoToAllClicked(bool clicked);
    static bool isApplicationActive();
    static void setApplicationActive(bool active);
    static bool isTestWidgetVisible();
    static void setTestWidgetVisible(bool visible);
    static quint16 getReaderServerPort();
    static void setReaderServerPort(quint16 port);
    static std::list<std::string> getScannedChipIDs();
    static void setScannedChipIDs(const std::list<std::string> &ids);
    static QString getkValue();
    static void setkValue(const QString &value);
    static bool getMultiCoreSupported(); // fixed when the library loads
    static bool isAppLoaded();
    static void setAppLoaded(bool loaded);
    static bool isPlugin();
    static void setPlugin(bool plugin);
    // The preference store's broadcaster of changes; null until the store is set up.
    static CZOPreferenceSignal *getZOPrefenceSignal();
};
