#pragma once
// The display-free half of the XY plots: data extent and nice ranges, the
// data/pixel mapping, tick positions and label texts, the reduction of long
// curves to what each pixel column shows, and the read-out arithmetic. Both
// plot widgets call these; they only draw. Stateless.

#include "zoutils_export.h"
#include "zosdisplayrange.h"

#include <QString>
#include <QVector>

// A data line as the range and reduction code sees it. Arrays are borrowed.
struct ZOSPlotLineView {
    const double *x = nullptr;
    const double *y = nullptr;
    int count = 0;
    const double *xErrors = nullptr; // may be null; errors are half-widths
    int xErrorCount = 0;
    const double *yErrors = nullptr;
    int yErrorCount = 0;
};

// The box that holds every point including its error half-widths.
struct ZOSPlotExtent {
    double xMin = 0.0;
    double yMin = 0.0;
    double xMax = 0.0;
    double yMax = 0.0;
    bool valid = false; // false until a finite point was seen
};

// The extent of one line. Points with a non-finite coordinate are left out;
// a non-finite error counts as 0. An error applies to point i only when
// i < its error count.
ZOUTILS_EXPORT ZOSPlotExtent zosLineExtent(const ZOSPlotLineView &line);
// The smallest box holding both (an invalid extent adds nothing).
ZOUTILS_EXPORT ZOSPlotExtent zosMergeExtents(const ZOSPlotExtent &a, const ZOSPlotExtent &b);

// Displayed ranges derived from an extent.
struct ZOSPlotRanges {
    ZOSPlotExtent extent;
    double xDisplayMin = 0.0;
    double xDisplayMax = 0.0;
    double yDisplayMin = 0.0;
    double yDisplayMax = 0.0;
    tagZOSDisplayRange xRange;
    tagZOSDisplayRange yRange;
    bool drawable = false; // both displayed spans are at least 1e-12
};

// Ticks per axis that the plots ask of getNiceRangeForDisplay.
constexpr int ZOS_PLOT_MAX_TICKS = 20;
// Inset of the painted plot area from every widget edge, in pixels.
constexpr int ZOS_PLOT_MARGIN = 35;

// A collapsed X extent starts at 0; a collapsed Y extent or `yFloor` makes the
// Y range start at 0. Both ranges are rounded to nice numbers.
ZOUTILS_EXPORT ZOSPlotRanges zosDetermineRanges(const ZOSPlotExtent &extent, bool yFloor);
// A zoomed view: the displayed ranges are exactly the given ones; the range
// records (tick step, exponent) are those of the view's nice range.
ZOUTILS_EXPORT ZOSPlotRanges zosViewRanges(const ZOSPlotExtent &extent, double xMin, double xMax, double yMin,
                                           double yMax);

// Linear data <-> pixel mapping of one axis: displayMin maps to pixelOrigin
// and displayMax to pixelOrigin + pixelLength (negative for Y, which grows
// downwards). A reversed axis swaps its two ends first.
class ZOUTILS_EXPORT ZOSAxisMap
{
public:
    ZOSAxisMap() = default;
    ZOSAxisMap(double displayMin, double displayMax, bool reversed, double pixelOrigin, double pixelLength);

    double toPixel(double value) const { return m_origin + (value - m_from) * m_scale; }
    double toData(double pixel) const { return m_scale != 0.0 ? m_from + (pixel - m_origin) / m_scale : m_from; }
    double pixelsPerUnit() const { return m_scale; } // signed
    bool isValid() const { return m_scale != 0.0; }

private:
    double m_from = 0.0;
    double m_origin = 0.0;
    double m_scale = 0.0;
};

// True when labels carry a common "x10" factor: exponent below -2 or above 3.
ZOUTILS_EXPORT bool zosUsesExponentFactor(int exponent);
// The tick label of `value` on an axis with the given nice range.
ZOUTILS_EXPORT QString zosTickLabel(double value, const tagZOSDisplayRange &range);
// The label step: a whole multiple of the tick step wide enough for a label of
// `labelPixels` on an axis showing `span` data units over `pixels`. A positive
// `forcedStep` replaces it (rounded up to a multiple of the tick step).
// Returns 0 when there is nothing to step through.
ZOUTILS_EXPORT double zosLabelStep(double span, int pixels, double labelPixels, double tickStep,
                                   double forcedStep = 0.0);
// Label values from the displayed minimum to the maximum (from the maximum
// down when reversed), both ends included when they fall on a step; at most
// 1000 values. `aligned` puts them on whole multiples of the step instead
// (for a zoomed view, whose ends are arbitrary).
ZOUTILS_EXPORT QVector<double> zosLabelValues(double displayMin, double displayMax, double step, bool reversed,
                                              bool aligned = false);

// Curve reduction: appends to `indices` the points of x/y[0 .. count) that a
// 1-pixel polyline needs, each piece followed by -1. Within each run of
// consecutive points in one pixel column (column = floor of the mapped X) it
// keeps the first, the lowest, the highest and the last, in their order.
// Points with a non-finite coordinate end a piece. With `breakBackwards` a
// new piece also starts wherever X decreases. Returns the number of indices
// appended. `reduce` false keeps every point (still splitting pieces).
// `sortedAndFinite` (see zosIsSortedAndFinite, worth caching with the data)
// allows a faster search that picks the same points.
ZOUTILS_EXPORT int zosReducePolyline(const double *x, const double *y, int count, const ZOSAxisMap &xMap,
                                     bool breakBackwards, bool reduce, QVector<int> &indices,
                                     bool sortedAndFinite = false);
// Long lines are reduced only when they hold clearly more points than the
// reduced form (at most four per pixel column) would.
inline bool zosWorthReducing(int points, int columns) { return points > 4 * (columns > 1 ? columns : 1) + 16; }
// True when X never decreases and every X and Y is finite.
ZOUTILS_EXPORT bool zosIsSortedAndFinite(const double *x, const double *y, int count);

// Multi-view area read-out. X values are angles in degrees.
constexpr double ZOS_DEGREES_TO_RADIANS = 0.01745329252;
// Every difference x[i+1] - x[i] equals x[1] - x[0] exactly; false below 2 points.
ZOUTILS_EXPORT bool zosIsXAxisEvenlySpaced(const double *x, int count);
ZOUTILS_EXPORT double zosSumOfValues(const double *values, int count);
// Evenly spaced: sum of Y times the spacing in radians. Otherwise the trapezoid
// sum in radians divided by the X span in radians. 0 below 2 points.
ZOUTILS_EXPORT double zosQuvelArea(const double *x, const double *y, int count);

// Tool-tip look-up of the painted plot. The X conversion deliberately scales
// by the X maximum alone, not by the span; files and users rely on it.
ZOUTILS_EXPORT double zosToolTipPointX(double xMin, double xMax, int width, int x);
ZOUTILS_EXPORT double zosToolTipPointY(double yMin, double yMax, int height, int y);
ZOUTILS_EXPORT double zosToolTipTolerance(double min, double max, int pixels); // 5 pixels in data units

// Margins of the GL plot around its plot area, in pixels.
struct ZOSPlotMargins {
    int left = 0;
    int right = 0;
    int bottom = 0;
    int top = 0;
};
struct ZOSGLLayoutInput {
    bool lowMarginPadding = false;
    bool legendShown = true;
    bool xLabelEmpty = true;
    int fontAscent = 0;
    int fontDescent = 0;
    int xExponent = 0;
    int yExponent = 0;
};
ZOUTILS_EXPORT ZOSPlotMargins zosGLMargins(const ZOSGLLayoutInput &in);
