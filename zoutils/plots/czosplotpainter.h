#pragma once
// Draws a plot core with QPainter: the painted plot's screen, and every
// plot's exports (image, SVG, PDF, clipboard). Stateless.

#include "zoutils_export.h"

#include <QColor>

class CZOSPlotCore;
class QPainter;

class ZOUTILS_EXPORT CZOSPlotPainter
{
public:
    // The whole plot at width x height (the core is laid out for that size).
    // A core with the GL layout is drawn as the GL plot draws it: point
    // styles, staircases and red error bars.
    static void paint(QPainter &painter, CZOSPlotCore &core, int width, int height, const QColor &background);
    // The title and the axis texts, in black.
    static void drawTexts(QPainter &painter, const CZOSPlotCore &core);
    static void drawLegend(QPainter &painter, CZOSPlotCore &core);

private:
    static void drawShadedRectangle(QPainter &painter, const CZOSPlotCore &core);
    static void drawGridLines(QPainter &painter, const CZOSPlotCore &core);
    static void drawAxes(QPainter &painter, const CZOSPlotCore &core);
    static void drawPoints(QPainter &painter, const CZOSPlotCore &core);
    static void drawCurves(QPainter &painter, const CZOSPlotCore &core);
    static void drawErrorBars(QPainter &painter, const CZOSPlotCore &core);
    static void drawReferenceLines(QPainter &painter, const CZOSPlotCore &core);
    static void drawMarkers(QPainter &painter, const CZOSPlotCore &core);
};
