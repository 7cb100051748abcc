#pragma once

#include "zoutils_export.h"
#include "zosplotdefs.h"
#include "zosplotlines.h"
#include "zosplotscale.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QHash>
#include <QImage>
#include <QList>
#include <QStringList>
#include <QVector>
#include <QWidget>

class QAction;
class QActionGroup;
class QMenu;
class QPainter;

// One data line of the painted plot: the points and, per point, the texts of
// its tool tip.
struct ZOUTILS_EXPORT SZOSXYPlotLine : SZOSPlotLineData {
    QStringList labels; // one per point; first line of the point's tool tip
    QStringList angles; // view angle text shown in the tool tip
    QStringList notes;  // last line of the tool tip
};

// A vertical (X) or horizontal (Y) marker in data units.
struct SZOSPlotMarker {
    QString name;
    double value = 0.0;
    QColor color;
};

// An XY plot drawn with QPainter: named data lines, markers, two reference
// lines, a shaded rectangle, title, axis labels, legend and grid lines. The
// plot area is inset 35 pixels from every edge. Long lines are reduced to the
// points that decide each pixel column before drawing (see setCurveReduction).
// Non-finite points are left out of the ranges and break the curve. GUI thread only.
class ZOUTILS_EXPORT CZOSXYPlot : public QWidget
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
    // without labels gets no tool tips. New lines take `settings` (default
    // blue lines, 1 pixel) with the plot's current display mode.
    bool addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                     const QVector<double> &xErrors = QVector<double>(),
                     const QVector<double> &yErrors = QVector<double>(), const QStringList &labels = QStringList(),
                     const QStringList &angles = QStringList(), const QStringList &notes = QStringList());
    bool removeDataLine(const QString &name);  // false for an unknown name
    bool removeXErrorData(const QString &name); // empties the X errors; false for an unknown name
    bool removeYErrorData(const QString &name);
    // Deletes every line and empties the area read-out text; markers stay.
    void clear();
    bool isEmpty() const { return m_lines.isEmpty(); }
    int getNumberOfPlots() const { return m_lines.size(); }
    QStringList getNamesOfPlots() const { return m_lines.keys(); }
    // The lines by name; the plot owns the records.
    const QHash<QString, SZOSXYPlotLine *> &getPlotList() const { return m_lines; }
    bool getDisplaySettings(const QString &name, DISPLAY_SETTINGS &settings) const;
    bool setDisplaySettings(const QString &name, const DISPLAY_SETTINGS &settings);

    void addMarkerX(const QString &name, double value, const QColor &color);
    void addMarkerY(const QString &name, double value, const QColor &color);
    bool removeMarkerX(const QString &name); // the first marker of that name
    bool removeMarkerY(const QString &name);

    void setTitle(const QString &title);
    QString getTitle() const { return m_sTitle; }
    void setXAxisLabel(const QString &label);
    QString getXAxisLabel() const { return m_sXAxisLabel; }
    void setYAxisLabel(const QString &label);
    QString getYAxisLabel() const { return m_sYAxisLabel; }
    void setFont(const QFont &font); // also refreshes the metrics
    QFont getFont() const { return m_oFont; }
    void showLegend(bool show);
    void setXAxisReversed(bool reversed);
    bool isXAxisReversed() const { return m_bXAxisReversed; }
    void setYAxisReversed(bool reversed);
    bool isYAxisReversed() const { return m_bYAxisReversed; }
    void setYAxisFloor(bool floor); // the Y range then starts at 0
    // A positive step replaces the computed X label step (rounded up to whole ticks); 0 restores it.
    void setXAxisRangeStep(double step);
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
    int getCurrentDisplayMode() const { return m_nCurrentDisplayMode; }
    // Data units per pixel on each axis.
    void getXYRatios(double &xRatio, double &yRatio);
    // Reduction of long lines to the first, lowest, highest and last point
    // of each pixel column (default on); off draws every segment.
    void setCurveReduction(bool on);

    // The displayed ranges as of the last paint or conversion.
    double getXDisplayMin();
    double getXDisplayMax();
    double getYDisplayMin();
    double getYDisplayMax();
    // The nice-range records and the tick label texts, in drawing order.
    tagZOSDisplayRange getXRange();
    tagZOSDisplayRange getYRange();
    QStringList getXTickLabels();
    QStringList getYTickLabels();

    void convertObjectToWindowCoords(double x, double y, int &wx, int &wy);
    void convertWindowToObjectCoords(int wx, int wy, double &x, double &y);
    int convertObjectToWindowWidth(double width);
    int convertObjectToWindowHeight(double height);
    void convertObjectToWindowSize(double width, double height, int &wWidth, int &wHeight);
    double convertWindowToObjectWidth(int width);
    double convertWindowToObjectHeight(int height);
    void convertWindowToObjectSize(int wWidth, int wHeight, double &width, double &height);

    // Multi-view read-out: a non-empty text turns the area read-out on.
    void setQuvelPlotArea(const QString &text);
    QString getQuvelPlotArea() const { return m_sQuvelPlotArea; }
    void setQuvelPlotYAxisUnitType(const QString &unit);

    // The tool tip for a cursor at `pos`, empty when no labelled point is near.
    QString toolTipTextAt(const QPoint &pos);
    // The widget painted off-screen at its current size.
    QImage getPrintImage();
    // Writes every line as comma-separated text (each field followed by ", ").
    // False, with a log entry, when the file cannot be opened.
    bool saveData(const char *path);

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
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    bool event(QEvent *event) override;

    void convertObjectToNormalizedCoords(double x, double y, double &nx, double &ny);
    void convertNormalizedToObjectCoords(double nx, double ny, double &x, double &y);
    void convertWindowToNormalizedCoords(int wx, int wy, double &nx, double &ny);

    bool determineRanges();
    void paintPlot(QPainter &painter);
    void drawShadedRectangle(QPainter &painter);
    void drawGridLines(QPainter &painter);
    void drawTitle(QPainter &painter);
    void drawAxes(QPainter &painter);
    void drawPlotCurves(QPainter &painter);
    void drawPlotAreaValue(QPainter &painter);
    void drawLegend(QPainter &painter);
    void drawReferenceLines(QPainter &painter);
    void drawMarkers(QPainter &painter);
    QString getPlotValueString() const;
    void calculateQuvelPlotArea();
    bool getWindowPosWithinPlotLimits(int x, int y) const;

private:
    void ensureRanges();
    void invalidate();
    ZOSAxisMap xMap() const;
    ZOSAxisMap yMap() const;
    QVector<double> xLabelValues() const;
    QVector<double> yLabelValues() const;

    // Data extent (with error half-widths) and the displayed nice range.
    double m_dXMin = 0.0;
    double m_dYMin = 0.0;
    double m_dXMax = 0.0;
    double m_dYMax = 0.0;
    double m_dXDisplayMin = 0.0;
    double m_dXDisplayMax = 0.0;
    double m_dYDisplayMin = 0.0;
    double m_dYDisplayMax = 0.0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    tagZOSDisplayRange m_oXRange;
    tagZOSDisplayRange m_oYRange;
    bool m_bDrawable = false;
    bool m_bRangesDirty = true;

    QString m_sTitle;
    QString m_sXAxisLabel;
    QString m_sYAxisLabel;
    QFont m_oFont;
    QFontMetrics m_oFontMetrics;

    QHash<QString, SZOSXYPlotLine *> m_lines; // owned
    QList<SZOSPlotMarker> m_markersX;
    QList<SZOSPlotMarker> m_markersY;

    bool m_bShowLegend = true;
    int m_nLegendWidth = 0;
    int m_nLegendHeight = 0;
    int m_nCurrentDisplayMode = EDM_LINES;
    bool m_bXAxisReversed = false;
    bool m_bYAxisReversed = false;
    bool m_bYAxisFloor = false;
    double m_dXAxisRangeStep = 0.0;
    bool m_bReduceCurves = true;

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

    bool m_bDragging = false;

    QMenu *m_pPopupMenu = nullptr;
    QActionGroup *m_pDisplayModeGroup = nullptr;
    QMenu *m_pGridMenu = nullptr;
    QActionGroup *m_pGridGroup = nullptr;
};
