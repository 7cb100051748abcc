#pragma once
// The display-free heart of both XY plots: the lines, the ranges (automatic
// or zoomed), the layout of plot area, texts and legend, the data/pixel
// mapping, the curve strips, the hit-testing behind tool tips and read-outs,
// and the data files. It knows nothing of QPainter or OpenGL; each widget
// derives from it and only draws and handles its toolkit's events.

#include "zoutils_export.h"
#include "zosplotdefs.h"
#include "zosplotlines.h"
#include "zosplotscale.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QHash>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QStringList>
#include <QVector>

#include <cstdio>

// One data line: the points and, for the painted plot's tool tips, per point
// texts (a line without labels gets no tool tips).
struct ZOUTILS_EXPORT SZOSPlotLine : SZOSPlotLineData {
    QStringList labels; // first line of the point's tool tip
    QStringList angles; // view angle text shown in the tool tip
    QStringList notes;  // last line of the tool tip
};
using SZOSXYPlotLine = SZOSPlotLine;
using SZOSGLXYPlotLine = SZOSPlotLine;

// A vertical (X) or horizontal (Y) marker in data units.
struct SZOSPlotMarker {
    QString name;
    double value = 0.0;
    QColor color;
};

// A text placed by the layout: baseline start in window pixels.
struct SZOSPlotText {
    QPoint position;
    QString text;
};

// How the plot area sits in the widget.
enum class EZOSPlotLayout : int {
    Inset, // 35 pixels from every edge (the painted plot)
    Margins // margins from the font, legend and exponents (the GL plot)
};

class ZOUTILS_EXPORT CZOSPlotCore
{
public:
    explicit CZOSPlotCore(EZOSPlotLayout layout);
    virtual ~CZOSPlotCore();
    CZOSPlotCore(const CZOSPlotCore &) = delete;
    CZOSPlotCore &operator=(const CZOSPlotCore &) = delete;

    bool removeDataLine(const QString &name);   // false for an unknown name
    bool removeXErrorData(const QString &name); // empties the X errors; false for an unknown name
    bool removeYErrorData(const QString &name);
    // Deletes every line and empties the area read-out text; markers stay.
    void clear();
    bool isEmpty() const { return m_lines.isEmpty(); }
    int getNumberOfPlots() const { return m_lines.size(); }
    QStringList getNamesOfPlots() const { return m_lines.keys(); }
    // The lines by name; the plot owns the records.
    const QHash<QString, SZOSPlotLine *> &getPlotList() const { return m_lines; }
    bool getDisplaySettings(const QString &name, DISPLAY_SETTINGS &settings) const;
    bool setDisplaySettings(const QString &name, const DISPLAY_SETTINGS &settings);

    void setTitle(const QString &title);
    QString getTitle() const { return m_sTitle; }
    void setXAxisLabel(const QString &label);
    QString getXAxisLabel() const { return m_sXAxisLabel; }
    void setYAxisLabel(const QString &label);
    QString getYAxisLabel() const { return m_sYAxisLabel; }
    void setFont(const QFont &font); // also refreshes the metrics
    QFont getFont() const { return m_oFont; }
    const QFontMetrics &plotFontMetrics() const { return m_oFontMetrics; }
    void showLegend(bool show);
    bool isLegendShown() const { return m_bShowLegend; }
    void setXAxisReversed(bool reversed);
    bool isXAxisReversed() const { return m_bXAxisReversed; }
    void setYAxisReversed(bool reversed);
    bool isYAxisReversed() const { return m_bYAxisReversed; }
    // A positive step replaces the computed X label step (rounded up to whole ticks); 0 restores it.
    void setXAxisRangeStep(double step);
    int getCurrentDisplayMode() const { return m_nCurrentDisplayMode; }
    // Sets the current display mode and writes it into every line's settings.
    void setDisplayModeOfAllLines(int mode);
    // Reduction of long lines to the first, lowest, highest and last point
    // of each pixel column (default on); off draws every segment.
    void setCurveReduction(bool on);

    // Zoom and pan. The view is the automatic (nice) range until one of these
    // sets it; restoreAutoRange() returns to it. Pixels are window pixels.
    bool isZoomed() const { return m_bZoomed; }
    // Scales both spans by `factor` (below 1 zooms in) about the pixel, whose
    // data point stays under it.
    void zoomAt(const QPointF &pixel, double factor);
    // Shows the data under the pixel rectangle (at least 2 pixels each way).
    bool zoomToRect(const QRectF &pixels);
    // Moves the view so the data under `from` comes under `to`.
    void panBy(const QPointF &from, const QPointF &to);
    // Shows exactly this data range; false (and no change) for an empty or non-finite one.
    bool setView(double xMin, double xMax, double yMin, double yMax);
    void restoreAutoRange();

    // The displayed ranges as of the last paint or conversion.
    double getXDisplayMin();
    double getXDisplayMax();
    double getYDisplayMin();
    double getYDisplayMax();
    // The nice-range records (for a zoomed view, those of the view) and the
    // tick label texts, in drawing order.
    tagZOSDisplayRange getXRange();
    tagZOSDisplayRange getYRange();
    QStringList getXTickLabels();
    QStringList getYTickLabels();
    // Data units per pixel on each axis.
    void getXYRatios(double &xRatio, double &yRatio);

    void convertObjectToWindowCoords(double x, double y, int &wx, int &wy);
    void convertWindowToObjectCoords(int wx, int wy, double &x, double &y);
    int convertObjectToWindowWidth(double width);
    int convertObjectToWindowHeight(double height);
    void convertObjectToWindowSize(double width, double height, int &wWidth, int &wHeight);
    double convertWindowToObjectWidth(int width);
    double convertWindowToObjectHeight(int height);
    void convertWindowToObjectSize(int wWidth, int wHeight, double &width, double &height);

    // ---- for the renderers: valid after prepare() -------------------------------
    // Takes the widget size and brings ranges and layout up to date. False
    // when no range can be drawn.
    bool prepare(int width, int height);
    EZOSPlotLayout layoutKind() const { return m_eLayout; }
    int plotWidth() const { return m_nWidth; }
    int plotHeight() const { return m_nHeight; }
    bool isDrawable() const { return m_bDrawable; }
    // The plot area in window pixels (right and bottom are the axis lines).
    QRect plotArea() const;
    ZOSAxisMap xMap() const; // data X to window column over the plot area
    ZOSAxisMap yMap() const;
    // Label positions in drawing order.
    QVector<double> xLabelValues() const;
    QVector<double> yLabelValues() const;
    // Tick labels, exponent factors and axis labels, placed.
    QVector<SZOSPlotText> axisTexts() const;
    // Title; an empty text when there is none.
    SZOSPlotText titleText() const;
    // The legend box (right edge 3 pixels from the widget's), one row per line in hash order.
    QRect legendBox();
    int legendRowHeight() const { return m_oFontMetrics.height(); }
    // Visits the strips a line is drawn as: put(x, y) for each vertex in data
    // units, end() after each strip. Long lines are reduced per pixel column;
    // the GL plot draws a staircase (next x, this y) in EDM_STAIRCASE and
    // breaks strips where X turns back when backwards is off.
    template <typename Put, typename End>
    void forEachStripVertex(const SZOSPlotLine &line, Put put, End end) const;

protected:
    friend class CZOSPlotPainter;
    // Called after every change that needs a repaint.
    virtual void plotChanged() = 0;
    // The widget's size, which getters and conversions lay the plot out for.
    virtual QSize plotWidgetSize() const = 0;

    bool insertLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                    const QVector<double> &xErrors, const QVector<double> &yErrors, const DISPLAY_SETTINGS *settings,
                    const QStringList &labels = QStringList(), const QStringList &angles = QStringList(),
                    const QStringList &notes = QStringList());
    bool determineRanges();
    void calculateLayout();
    void ensureLayout();
    void invalidate();
    // The GL plot's vertex coordinates: offsets from the window's left and
    // bottom divided by its width and height.
    void getNormalizedCoords(double x, double y, double &nx, double &ny) const;
    // The painted plot's fractions of the displayed range and of the plot area.
    void convertObjectToNormalizedCoords(double x, double y, double &nx, double &ny);
    void convertNormalizedToObjectCoords(double nx, double ny, double &x, double &y);
    void convertWindowToNormalizedCoords(int wx, int wy, double &nx, double &ny) const;
    bool getWindowPosWithinPlotLimits(int x, int y) const;

    // Painted plot only: markers, reference lines, shaded rectangle, grid,
    // area read-out and tool tips.
    void addMarkerX(const QString &name, double value, const QColor &color);
    void addMarkerY(const QString &name, double value, const QColor &color);
    bool removeMarkerX(const QString &name); // the first marker of that name
    bool removeMarkerY(const QString &name);
    void setYAxisFloor(bool floor); // the Y range then starts at 0
    void setReferenceLineX(bool enabled);
    void setReferenceLineY(bool enabled);
    // Positions are fractions (0 .. 1) of the plot area; outside that, nothing is drawn.
    void setReferenceLinePosX(double position);
    void setReferenceLinePosY(double position);
    void setReferenceLineColors(const QColor &line, const QColor &text);
    // Start and end are X data values; the rectangle spans the plot height.
    void setShadedRectangleParams(int start, int end, const QColor &color);
    void setVisibleShadedRectangle(bool visible);
    void setGridType(int type); // an EGRIDTYPE value
    int getGridType() const { return m_nGridType; }
    // Multi-view read-out: a non-empty text turns the area read-out on.
    void setQuvelPlotArea(const QString &text);
    QString getQuvelPlotArea() const { return m_sQuvelPlotArea; }
    void setQuvelPlotYAxisUnitType(const QString &unit);
    void calculateQuvelPlotArea();
    QString getPlotValueString() const;
    // The tool tip for a cursor at `pos` (as of the current size), empty when no labelled point is near.
    QString toolTipTextAt(const QPoint &pos);

    // GL plot only.
    ZOSPlotMargins getMargins();
    // The orthographic window in data units: x = left, y = bottom, width and
    // height positive.
    QRectF getOrthoWindow();
    // The strips a line is drawn as, in data units.
    QVector<QVector<QPointF>> lineStrips(const QString &name);
    // On (default): strips run through all points in order. Off: a strip
    // breaks wherever X decreases.
    void setBackwards(bool backwards);
    bool getBackwards() const { return m_bBackwards; }
    void setLowMarginPadding(bool low);

    // "name, " blocks with every field followed by ", " (the painted plot's file).
    bool saveCommaSeparated(const char *path);
    // Opens for appending or writing and writes with writeDataToFile.
    bool saveData(const char *path, bool append, char delimiter);
    // "title: name" blocks, fields joined by `delimiter`; false for a null file.
    bool writeDataToFile(FILE *file, char delimiter);

    QHash<QString, SZOSPlotLine *> m_lines; // owned
    QList<SZOSPlotMarker> m_markersX;
    QList<SZOSPlotMarker> m_markersY;
    bool m_bReferenceLineX = false;
    bool m_bReferenceLineY = false;
    double m_dReferenceLinePosX = -1.0;
    double m_dReferenceLinePosY = -1.0;
    QColor m_oReferenceColor1 = Qt::red;
    QColor m_oReferenceColor2 = Qt::red;
    bool m_bShadedRectangleVisible = false;
    int m_nShadedStart = 0;
    int m_nShadedEnd = 0;
    QColor m_oShadedColor = Qt::lightGray;
    int m_nGridType = EGT_NONE;
    QString m_sQuvelPlotArea;
    QString m_sQuvelYUnitType;

    // The displayed range.
    double m_dXDisplayMin = 0.0;
    double m_dXDisplayMax = 0.0;
    double m_dYDisplayMin = 0.0;
    double m_dYDisplayMax = 0.0;
    tagZOSDisplayRange m_oXRange;
    tagZOSDisplayRange m_oYRange;

private:
    ZOSAxisMap reductionMap() const;
    QPoint windowPoint(double x, double y) const; // as the axis texts place them

    const EZOSPlotLayout m_eLayout;
    int m_nWidth = 0;
    int m_nHeight = 0;
    // The GL plot's orthographic window in data units.
    double m_dLeft = 0.0;
    double m_dBottom = 0.0;
    double m_dRight = 1.0;
    double m_dTop = 1.0;
    ZOSPlotMargins m_oMargins;
    bool m_bDrawable = false;
    bool m_bLayoutDirty = true;
    bool m_bZoomed = false;
    double m_dViewX0 = 0.0; // the zoomed view, when m_bZoomed
    double m_dViewX1 = 0.0;
    double m_dViewY0 = 0.0;
    double m_dViewY1 = 0.0;

    QString m_sTitle;
    QString m_sXAxisLabel;
    QString m_sYAxisLabel;
    QFont m_oFont;
    QFontMetrics m_oFontMetrics;

    bool m_bShowLegend = true;
    int m_nCurrentDisplayMode = EDM_LINES;
    bool m_bXAxisReversed = false;
    bool m_bYAxisReversed = false;
    bool m_bYAxisFloor = false;
    double m_dXAxisRangeStep = 0.0;
    bool m_bReduceCurves = true;
    bool m_bBackwards = true;
    bool m_bLowMarginPadding = false;

    // Reduced strips need the indices of the kept points; kept between calls.
    mutable QVector<int> m_indices;
};

template <typename Put, typename End>
void CZOSPlotCore::forEachStripVertex(const SZOSPlotLine &line, Put put, End end) const
{
    const bool gl = m_eLayout == EZOSPlotLayout::Margins;
    const bool staircase = gl && line.settings.displayMode == EDM_STAIRCASE;
    const bool reduce = m_bReduceCurves && !staircase && zosWorthReducing(line.nPoints, plotArea().width());
    m_indices.clear();
    zosReducePolyline(line.x.constData(), line.y.constData(), line.nPoints, reductionMap(), gl && !m_bBackwards,
                      reduce, m_indices, line.sortedAndFinite);
    int previous = -1;
    for (int i : qAsConst(m_indices)) {
        if (i < 0) {
            previous = -1;
            end();
            continue;
        }
        if (staircase && previous >= 0) {
            put(line.x[i], line.y[previous]); // the step: next x, this y
        }
        put(line.x[i], line.y[i]);
        previous = i;
    }
}
