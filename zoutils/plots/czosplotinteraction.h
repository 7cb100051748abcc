#pragma once
// What both plot widgets do with the toolkit alike: the popup menu's display
// modes and its zoom and export entries, wheel zoom, rubber-band zoom, pan
// and restore, and the exports (PNG and other image formats, SVG, PDF, the
// clipboard), rendered through the plot core with QPainter, so they need no
// OpenGL context.
//
// Mouse: the wheel zooms about the cursor (the data point under it stays);
// Shift + left drag zooms to a rubber band; a middle drag, or Ctrl + left
// drag, pans; a left double-click restores the automatic range.

#include "zoutils_export.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>

class CZOSPlotCore;
class QAction;
class QActionGroup;
class QMenu;
class QMouseEvent;
class QRubberBand;
class QWheelEvent;
class QWidget;

class ZOUTILS_EXPORT CZOSPlotInteraction
{
public:
    // Builds the menu's display-mode entries ("Points", "Lines" checked,
    // "Points and Lines", each followed by a separator) in one exclusive group.
    CZOSPlotInteraction(QWidget *widget, CZOSPlotCore *core);

    // The display mode a menu entry names: "Lines" 1, "Points and Lines" 2,
    // any other text 0.
    static int displayModeOf(const QAction *action);

    QMenu *menu() const { return m_pMenu; }
    QActionGroup *displayModeGroup() const { return m_pDisplayModeGroup; }
    // Appends, after the widget's own entries, a separator, "Restore Automatic
    // Range", "Export as PNG...", "Export as SVG...", "Export as PDF..." and
    // "Copy to Clipboard".
    void addViewEntries();

    // Each returns true when it took the event.
    bool mousePress(QMouseEvent *event);
    bool mouseMove(QMouseEvent *event);
    bool mouseRelease(QMouseEvent *event);
    bool mouseDoubleClick(QMouseEvent *event);
    void wheel(QWheelEvent *event);

    // The plot at `size` (the widget's size when invalid).
    QImage renderImage(const QSize &size) const;
    // Writes the plot at `size` as the path's suffix says: ".svg", ".pdf", or
    // an image format such as ".png". False, with a log entry, for an unknown
    // suffix or an unwritable file.
    bool exportPlot(const QString &path, const QSize &size) const;
    void copyToClipboard(const QSize &size) const;

private:
    QSize exportSize(const QSize &size) const;
    QColor exportBackground() const;
    void exportFromMenu(const QString &suffix, const QString &filter);

    QWidget *m_pWidget;
    CZOSPlotCore *m_pCore;
    QMenu *m_pMenu;
    QActionGroup *m_pDisplayModeGroup;
    QRubberBand *m_pRubberBand = nullptr;
    QPoint m_oBandStart;
    QPoint m_oPanLast;
    bool m_bBanding = false;
    bool m_bPanning = false;
};
