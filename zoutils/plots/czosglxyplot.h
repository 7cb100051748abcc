#pragma once

#include "zoutils_export.h"
#include "czosplotcore.h"
#include "czosplotinteraction.h"

#include <QGLWidget>
#include <QImage>
#include <QVector>

class QAction;

// The OpenGL twin of CZOSXYPlot for plots of many points: named lines with
// point styles, a staircase mode, red error bars, title, axis labels and a
// legend. Long lines are reduced to the points that decide each pixel column
// before they reach OpenGL (see setCurveReduction); points, staircases and
// short lines are drawn whole. Texts are painted over the GL picture with
// QPainter in window coordinates. Non-finite points are left out of the
// ranges and break the curve. Zoom, pan and exports as CZOSPlotInteraction
// describes; exports are drawn with QPainter and need no GL context.
//
// Needs an OpenGL context (under a headless X server: xvfb-run -a). Where none
// can be made, drawing does nothing and getPrintImage() returns a null image.
// GUI thread only.
class ZOUTILS_EXPORT CZOSGLXYPlot : public QGLWidget, public CZOSPlotCore
{
    Q_OBJECT
public:
    explicit CZOSGLXYPlot(QWidget *parent = nullptr, const char *name = nullptr);
    ~CZOSGLXYPlot() override;

    // Adds a line, or replaces the line of the same name, copying the values.
    // X and Y must hold the same number of values (at least one); otherwise
    // nothing changes and false is returned. Error arrays longer than the
    // points are cut to the point count. Without `settings` a new line is
    // drawn in blue in the current display mode and a replaced line keeps
    // its settings.
    bool addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                     const QVector<double> &xErrors = QVector<double>(),
                     const QVector<double> &yErrors = QVector<double>(), const DISPLAY_SETTINGS *settings = nullptr);

    using CZOSPlotCore::setFont;
    using CZOSPlotCore::setBackwards;
    using CZOSPlotCore::getBackwards;
    using CZOSPlotCore::setLowMarginPadding;
    // Layout results, as of the last layout (paint or conversion).
    using CZOSPlotCore::getMargins;
    using CZOSPlotCore::getOrthoWindow;
    // The strips a line is drawn as, in data units, without a GL context.
    using CZOSPlotCore::lineStrips;
    // The line strips of the last paint, as vertex counts per strip (a test
    // and diagnostics hook: what reached OpenGL).
    QVector<int> lastStripSizes() const { return m_lastStripSizes; }

    // The frame buffer after a fresh paint; a null image without a GL context.
    QImage getPrintImage();
    // The plot drawn with QPainter at `size` (the widget's size when invalid),
    // and as a file whose suffix (".png", ".svg", ".pdf" or another image
    // format) says the kind; both work without a GL context.
    QImage renderImage(const QSize &size = QSize()) const { return m_oInteraction.renderImage(size); }
    bool exportPlot(const QString &path, const QSize &size = QSize()) const;
    void copyToClipboard(const QSize &size = QSize()) const { m_oInteraction.copyToClipboard(size); }
    // Opens `path` for appending or writing and writes every line with
    // writeDataToFile. False, with a log entry, when it cannot be opened.
    using CZOSPlotCore::saveData;
    // False for a null file; the caller keeps and closes it.
    using CZOSPlotCore::writeDataToFile;

public slots:
    void onDisplayPopupActivated(QAction *action);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void plotChanged() override { update(); }
    QSize plotWidgetSize() const override { return size(); }

    void createOrthosettings();
    void drawAxes();
    void drawPlotCurves();

private:
    void vertex(double x, double y) const;
    void drawPoints(const SZOSPlotLine &line);

    bool m_bSwapped = false; // Mesa keeps its first surface size until a swap
    QVector<int> m_lastStripSizes;
    CZOSPlotInteraction m_oInteraction;
};
