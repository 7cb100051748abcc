#pragma once

#include "zoutils_export.h"
#include "czosplotcore.h"
#include "czosplotinteraction.h"

#include <QImage>
#include <QWidget>

class QAction;
class QActionGroup;
class QMenu;

// An XY plot drawn with QPainter: named data lines, markers, two reference
// lines, a shaded rectangle, title, axis labels, legend and grid lines. The
// plot area is inset 35 pixels from every edge. Long lines are reduced to the
// points that decide each pixel column before drawing (see setCurveReduction).
// Non-finite points are left out of the ranges and break the curve. Zoom,
// pan and exports as CZOSPlotInteraction describes. GUI thread only.
class ZOUTILS_EXPORT CZOSXYPlot : public QWidget, public CZOSPlotCore
{
    Q_OBJECT
public:
    explicit CZOSXYPlot(QWidget *parent = nullptr, const char *name = nullptr);
    ~CZOSXYPlot() override;

    // Adds a line, or replaces the line of the same name, copying the values.
    // X and Y must hold the same number of values (at least one); otherwise
    // nothing changes and false is returned. Error arrays longer than the
    // points are cut to the point count; shorter ones give error bars to the
    // first points only. Label, angle and note lists are per point; a line
    // without labels gets no tool tips. New lines take the default settings
    // (blue lines, 1 pixel) with the plot's current display mode.
    bool addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                     const QVector<double> &xErrors = QVector<double>(),
                     const QVector<double> &yErrors = QVector<double>(), const QStringList &labels = QStringList(),
                     const QStringList &angles = QStringList(), const QStringList &notes = QStringList());

    using CZOSPlotCore::setFont;
    using CZOSPlotCore::addMarkerX;
    using CZOSPlotCore::addMarkerY;
    using CZOSPlotCore::removeMarkerX;
    using CZOSPlotCore::removeMarkerY;
    using CZOSPlotCore::setYAxisFloor;
    using CZOSPlotCore::setReferenceLineX;
    using CZOSPlotCore::setReferenceLineY;
    using CZOSPlotCore::setReferenceLinePosX;
    using CZOSPlotCore::setReferenceLinePosY;
    using CZOSPlotCore::setReferenceLineColors;
    using CZOSPlotCore::setShadedRectangleParams;
    using CZOSPlotCore::setVisibleShadedRectangle;
    using CZOSPlotCore::getGridType;
    using CZOSPlotCore::setQuvelPlotArea;
    using CZOSPlotCore::getQuvelPlotArea;
    using CZOSPlotCore::setQuvelPlotYAxisUnitType;
    using CZOSPlotCore::toolTipTextAt;
    void setGridType(int type); // an EGRIDTYPE value; also checks its menu entry

    // The widget painted off-screen at its current size.
    QImage getPrintImage();
    // The plot at `size` (the widget's size when invalid), and as a file whose
    // suffix (".png", ".svg", ".pdf" or another image format) says the kind.
    QImage renderImage(const QSize &size = QSize()) const { return m_oInteraction.renderImage(size); }
    bool exportPlot(const QString &path, const QSize &size = QSize()) const;
    void copyToClipboard(const QSize &size = QSize()) const { m_oInteraction.copyToClipboard(size); }
    // Writes every line as comma-separated text (each field followed by ", ").
    // False, with a log entry, when the file cannot be opened.
    bool saveData(const char *path) { return saveCommaSeparated(path); }

signals:
    void actualPlotXValueChanged(double value);
    void actualPlotYValueChanged(double value);
    void normalizedPosXChanged(double position);
    void normalizedPosYChanged(double position);

public slots:
    void onDisplayPopupActivated(QAction *action);
    void onGridTypeSubMenuTriggered(QAction *action);
    void valueOnPlotXAxisChanged(double position);
    void valueOnPlotYAxisChanged(double position);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool event(QEvent *event) override;
    void plotChanged() override { update(); }
    QSize plotWidgetSize() const override { return size(); }

private:
    void emitNormalizedPosition(const QPoint &pos);

    bool m_bDragging = false;
    CZOSPlotInteraction m_oInteraction;
    QMenu *m_pGridMenu = nullptr;
    QActionGroup *m_pGridGroup = nullptr;
};
