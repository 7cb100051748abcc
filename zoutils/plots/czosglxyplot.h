#pragma once

#include "zoutils_export.h"
#include "zosplotdefs.h"
#include "zosplotlines.h"
#include "zosplotscale.h"

#include <QFont>
#include <QFontMetrics>
#include <QGLWidget>
#include <QHash>
#include <QImage>
#include <QVector>

#include <cstdio>

class QAction;
class QActionGroup;
class QMenu;
class QPainter;

// One data line of the GL plot.
struct ZOUTILS_EXPORT SZOSGLXYPlotLine : SZOSPlotLineData {
};

// The OpenGL twin of CZOSXYPlot for plots of many points: named lines with
// point styles, a staircase mode, red error bars, title, axis labels and a
// legend. Long lines are reduced to the points that decide each pixel column
// before they reach OpenGL (see setCurveReduction); points, staircases and
// short lines are drawn whole. Texts are painted over the GL picture with
// QPainter in window coordinates. Non-finite points are left out of the
// ranges and break the curve.
//
// Needs an OpenGL context (under a headless X server: xvfb-run -a). Where none
// can be made, drawing does nothing and getPrintImage() returns a null image.
// GUI thread only.
class ZOUTILS_EXPORT CZOSGLXYPlot : public QGLWidget
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
    bool removeDataLine(const QString &name); // false for an unknown name
    bool removeXErrorData(const QString &name);
    bool removeYErrorData(const QString &name);
    void clear();
    bool isEmpty() const { return m_lines.isEmpty(); }
    int getNumberOfPlots() const { return m_lines.size(); }
    QStringList getNamesOfPlots() const { return m_lines.keys(); }
    // The lines by name; the plot owns the records.
    const QHash<QString, SZOSGLXYPlotLine *> &getPlotList() const { return m_lines; }
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
    void showLegend(bool show);
    void setXAxisReversed(bool reversed);
    bool isXAxisReversed() const { return m_bXAxisReversed; }
    void setYAxisReversed(bool reversed);
    bool isYAxisReversed() const { return m_bYAxisReversed; }
    // A positive step replaces the computed X label step (rounded up to whole ticks); 0 restores it.
    void setXAxisRangeStep(double step);
    // On (default): strips run through all points in order. Off: a strip
    // breaks wherever X decreases.
    void setBackwards(bool backwards);
    bool getBackwards() const { return m_bBackwards; }
    void setLowMarginPadding(bool low);
    int getCurrentDisplayMode() const { return m_nCurrentDisplayMode; }
    // Reduction of long lines per pixel column (default on); off sends every vertex.
    void setCurveReduction(bool on);

    // Layout results, as of the last layout (paint or conversion).
    ZOSPlotMargins getMargins();
    // The orthographic window in data units: left, bottom, right, top.
    QRectF getOrthoWindow(); // x = left, y = bottom, width and height positive
    double getXDisplayMin();
    double getXDisplayMax();
    double getYDisplayMin();
    double getYDisplayMax();
    tagZOSDisplayRange getXRange();
    tagZOSDisplayRange getYRange();
    // The line strips of the last paint, as vertex counts per strip (a test
    // and diagnostics hook: what reached OpenGL).
    QVector<int> lastStripSizes() const { return m_lastStripSizes; }
    // The strips a line is drawn as, in data units, without a GL context.
    QVector<QVector<QPointF>> lineStrips(const QString &name);

    void convertObjectToWindowCoords(double x, double y, int &wx, int &wy);
    void convertWindowToObjectCoords(int wx, int wy, double &x, double &y);
    int convertObjectToWindowWidth(double width);
    int convertObjectToWindowHeight(double height);
    void convertObjectToWindowSize(double width, double height, int &wWidth, int &wHeight);
    double convertWindowToObjectWidth(int width);
    double convertWindowToObjectHeight(int height);
    void convertWindowToObjectSize(int wWidth, int wHeight, double &width, double &height);

    // The frame buffer after a fresh paint; a null image without a GL context.
    QImage getPrintImage();
    // Opens `path` for appending or writing and writes every line with
    // writeDataToFile. False, with a log entry, when it cannot be opened.
    bool saveData(const char *path, bool append, char delimiter);
    // False for a null file; the caller keeps and closes it.
    bool writeDataToFile(FILE *file, char delimiter);

public slots:
    void onDisplayPopupActivated(QAction *action);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent *event) override;

    // Data coordinates as sent to OpenGL: offsets from the window's left and
    // bottom, divided by the window's width and height.
    void getNormalizedCoords(double x, double y, double &nx, double &ny) const;

    bool determineRanges();
    void calculateLayout();
    void createOrthosettings();
    void drawTitle();
    void drawAxes();
    void drawPlotCurves();
    void drawLegend(QPainter &painter);

private:
    struct TextItem {
        QPoint position; // baseline start, window coordinates
        QString text;
        QColor color;
    };
    void ensureLayout();
    void invalidate();
    ZOSAxisMap xPixelMap() const; // data X to window column
    void vertex(double x, double y) const;
    void drawText(int x, int y, const QString &text, const QColor &color = Qt::black);
    void buildStrips(const SZOSGLXYPlotLine &line, QVector<QVector<QPointF>> *dataStrips,
                     QVector<float> *vertices, QVector<int> *stripSizes);

    // Data extent and displayed nice ranges.
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
    // The orthographic window in data units.
    double m_dLeft = 0.0;
    double m_dBottom = 0.0;
    double m_dRight = 1.0;
    double m_dTop = 1.0;
    ZOSPlotMargins m_oMargins;
    tagZOSDisplayRange m_oXRange;
    tagZOSDisplayRange m_oYRange;
    bool m_bDrawable = false;
    bool m_bLayoutDirty = true;

    QString m_sTitle;
    QString m_sXAxisLabel;
    QString m_sYAxisLabel;
    QFont m_oFont;
    QFontMetrics m_oFontMetrics;

    QHash<QString, SZOSGLXYPlotLine *> m_lines; // owned

    bool m_bShowLegend = true;
    int m_nLegendWidth = 0;
    int m_nLegendHeight = 0;
    int m_nCurrentDisplayMode = EDM_LINES;
    bool m_bXAxisReversed = false;
    bool m_bYAxisReversed = false;
    double m_dXAxisRangeStep = 0.0;
    bool m_bBackwards = true;
    bool m_bLowMarginPadding = false;
    bool m_bReduceCurves = true;
    bool m_bSwapped = false; // Mesa keeps its first surface size until a swap

    QVector<TextItem> m_texts; // collected while drawing, painted last
    QVector<int> m_lastStripSizes;

    QMenu *m_pPopupMenu = nullptr;
    QActionGroup *m_pDisplayModeGroup = nullptr;
};
