#include "zosplotscale.h"

#include "generalutilities.h"

#include <algorithm>
#include <cmath>

namespace {

inline double finiteOrZero(double v) { return std::isfinite(v) ? v : 0.0; }

} // namespace

ZOSPlotExtent zosLineExtent(const ZOSPlotLineView &line)
{
    ZOSPlotExtent e;
    if (!line.x || !line.y || line.count < 1) {
        return e;
    }
    double xMin = HUGE_VAL;
    double xMax = -HUGE_VAL;
    double yMin = HUGE_VAL;
    double yMax = -HUGE_VAL;
    const int xErrors = line.xErrors ? std::min(line.xErrorCount, line.count) : 0;
    const int yErrors = line.yErrors ? std::min(line.yErrorCount, line.count) : 0;
    const int plain = std::max(xErrors, yErrors);
    // Points that carry errors first; the rest (usually all) in a tight loop.
    for (int i = 0; i < plain; ++i) {
        const double x = line.x[i];
        const double y = line.y[i];
        if (!std::isfinite(x) || !std::isfinite(y)) {
            continue;
        }
        const double ex = i < xErrors ? std::fabs(finiteOrZero(line.xErrors[i])) : 0.0;
        const double ey = i < yErrors ? std::fabs(finiteOrZero(line.yErrors[i])) : 0.0;
        xMin = std::min(xMin, x - ex);
        xMax = std::max(xMax, x + ex);
        yMin = std::min(yMin, y - ey);
        yMax = std::max(yMax, y + ey);
    }
    for (int i = plain; i < line.count; ++i) {
        const double x = line.x[i];
        const double y = line.y[i];
        // x - x is 0 for finite x and NaN otherwise: one test for both values.
        if ((x - x) + (y - y) != 0.0) {
            continue;
        }
        xMin = x < xMin ? x : xMin;
        xMax = x > xMax ? x : xMax;
        yMin = y < yMin ? y : yMin;
        yMax = y > yMax ? y : yMax;
    }
    if (xMin > xMax) {
        return e; // no finite point
    }
    e.xMin = xMin;
    e.xMax = xMax;
    e.yMin = yMin;
    e.yMax = yMax;
    e.valid = std::isfinite(xMin) && std::isfinite(xMax) && std::isfinite(yMin) && std::isfinite(yMax);
    return e;
}

ZOSPlotExtent zosMergeExtents(const ZOSPlotExtent &a, const ZOSPlotExtent &b)
{
    if (!a.valid) {
        return b;
    }
    if (!b.valid) {
        return a;
    }
    ZOSPlotExtent e;
    e.valid = true;
    e.xMin = std::min(a.xMin, b.xMin);
    e.xMax = std::max(a.xMax, b.xMax);
    e.yMin = std::min(a.yMin, b.yMin);
    e.yMax = std::max(a.yMax, b.yMax);
    return e;
}

ZOSPlotRanges zosDetermineRanges(const ZOSPlotExtent &extent, bool yFloor)
{
    ZOSPlotRanges r;
    r.extent = extent;
    if (!extent.valid) {
        return r;
    }
    double xMin = extent.xMin;
    double yMin = extent.yMin;
    if (xMin == extent.xMax) {
        xMin = 0.0;
    }
    if (yMin == extent.yMax || yFloor) {
        yMin = 0.0;
    }
    getNiceRangeForDisplay(xMin, extent.xMax, ZOS_PLOT_MAX_TICKS, &r.xRange);
    getNiceRangeForDisplay(yMin, extent.yMax, ZOS_PLOT_MAX_TICKS, &r.yRange);
    r.xDisplayMin = r.xRange.niceMinimum;
    r.xDisplayMax = r.xRange.niceMaximum;
    r.yDisplayMin = r.yRange.niceMinimum;
    r.yDisplayMax = r.yRange.niceMaximum;
    r.drawable = r.xDisplayMax - r.xDisplayMin >= 1e-12 && r.yDisplayMax - r.yDisplayMin >= 1e-12;
    return r;
}

ZOSPlotRanges zosViewRanges(const ZOSPlotExtent &extent, double xMin, double xMax, double yMin, double yMax)
{
    ZOSPlotRanges r;
    r.extent = extent;
    getNiceRangeForDisplay(xMin, xMax, ZOS_PLOT_MAX_TICKS, &r.xRange);
    getNiceRangeForDisplay(yMin, yMax, ZOS_PLOT_MAX_TICKS, &r.yRange);
    r.xDisplayMin = xMin;
    r.xDisplayMax = xMax;
    r.yDisplayMin = yMin;
    r.yDisplayMax = yMax;
    r.drawable = xMax - xMin >= 1e-12 && yMax - yMin >= 1e-12;
    return r;
}

ZOSAxisMap::ZOSAxisMap(double displayMin, double displayMax, bool reversed, double pixelOrigin, double pixelLength)
{
    if (reversed) {
        std::swap(displayMin, displayMax);
    }
    const double span = displayMax - displayMin;
    m_from = displayMin;
    m_origin = pixelOrigin;
    m_scale = (span != 0.0 && std::isfinite(span)) ? pixelLength / span : 0.0;
}

bool zosUsesExponentFactor(int exponent) { return exponent < -2 || exponent > 3; }

QString zosTickLabel(double value, const tagZOSDisplayRange &range)
{
    if (range.exponent < -2) {
        return doubleToString(value / std::pow(10.0, range.exponent), 1, 1);
    }
    if (range.exponent > 3) {
        return QStringLiteral("%1").arg(value / std::pow(10.0, range.exponent), 0, 'f', 1);
    }
    const double m = std::fabs(range.niceMinimum);
    const bool integral = !(m > 0.0 && m < 1.0) && range.tickStep >= 1.0;
    if (integral) {
        return QStringLiteral("%1").arg(qint64(value));
    }
    return doubleToString(value, 2, 2);
}

double zosLabelStep(double span, int pixels, double labelPixels, double tickStep, double forcedStep)
{
    span = std::fabs(span);
    if (!(tickStep > 0.0) || !(span > 0.0) || !std::isfinite(span) || pixels < 1) {
        return 0.0;
    }
    // The small allowance keeps an exact multiple from rounding up a whole step.
    if (forcedStep > 0.0 && std::isfinite(forcedStep)) {
        return std::max(1.0, std::ceil(forcedStep / tickStep - 1e-9)) * tickStep;
    }
    const double labelUnits = span / pixels * labelPixels;
    return std::max(1.0, std::ceil(labelUnits / tickStep - 1e-9)) * tickStep;
}

QVector<double> zosLabelValues(double displayMin, double displayMax, double step, bool reversed, bool aligned)
{
    QVector<double> values;
    if (aligned && step > 0.0) {
        const double first = std::ceil(displayMin / step - 1e-9) * step;
        const double last = std::floor(displayMax / step + 1e-9) * step;
        return first <= last ? zosLabelValues(first, last, step, reversed) : values;
    }
    const double span = displayMax - displayMin;
    if (!(step > 0.0) || !(span >= 0.0) || !std::isfinite(span)) {
        return values;
    }
    const int n = int(std::min(std::floor(span / step + 1e-9), 999.0)) + 1;
    values.reserve(n);
    const double start = reversed ? displayMax : displayMin;
    const double direction = reversed ? -1.0 : 1.0;
    // On the step grid (as nice ranges are) values are whole multiples of the
    // step, which print cleanly; -0.3 + 0.1 would be -0.19999999999999998.
    const double k0 = std::round(start / step);
    const bool onGrid = std::fabs(k0 * step - start) <= step * 1e-9 && std::fabs(k0) < 1e15;
    // A step below 1 such as 0.1 is taken as 1 / 10: multiples are then one
    // correctly rounded division, as exact as the literal -0.3 itself.
    double divisor = 1.0;
    double unit = step;
    if (step < 1.0) {
        divisor = std::pow(10.0, std::ceil(-std::log10(step)));
        unit = std::round(step * divisor);
        if (std::fabs(unit - step * divisor) > 1e-9 * unit || unit < 1.0) {
            divisor = 1.0;
            unit = step;
        }
    }
    for (int k = 0; k < n; ++k) {
        double v = onGrid ? (k0 + direction * k) * unit / divisor : start + direction * k * step;
        if (std::fabs(v) < step * 1e-9) {
            v = 0.0; // -0.3 + 3 * 0.1 is 5.6e-17, which would print as a number
        }
        values.append(v);
    }
    return values;
}

namespace {

// floor() of the mapped X without the library call; pixels far off the
// surface only need to differ from their neighbours, so the clamp is harmless.
inline qint64 pixelColumn(const ZOSAxisMap &map, double x)
{
    const double px = std::max(-4.0e18, std::min(4.0e18, map.toPixel(x)));
    qint64 c = qint64(px);
    c -= (px < double(c)) ? 1 : 0;
    return c;
}

// Sorted, finite X and finite Y: each column is an index range found by
// galloping search, so X is barely read and Y is scanned in tight loops.
// Picks the same points as the general loop below.
void reduceSorted(const double *x, const double *y, int count, const ZOSAxisMap &xMap, QVector<int> &indices)
{
    int i = 0;
    while (i < count) {
        const qint64 c = pixelColumn(xMap, x[i]);
        // Gallop to a bound past the column, then bisect for its end.
        int inside = i;
        int step = 1;
        int probe = i + 1;
        while (probe < count && pixelColumn(xMap, x[probe]) == c) {
            inside = probe;
            step *= 2;
            probe = inside + step;
        }
        int outside = std::min(probe, count);
        while (outside - inside > 1) {
            const int mid = inside + (outside - inside) / 2;
            if (pixelColumn(xMap, x[mid]) == c) {
                inside = mid;
            } else {
                outside = mid;
            }
        }
        const int first = i;
        const int last = inside;
        // Four independent chains: one chain waits on each comparison in turn.
        double lo[4] = {y[first], y[first], y[first], y[first]};
        double hi[4] = {y[first], y[first], y[first], y[first]};
        int k = first + 1;
        for (; k + 3 <= last; k += 4) {
            for (int j = 0; j < 4; ++j) {
                lo[j] = y[k + j] < lo[j] ? y[k + j] : lo[j];
                hi[j] = y[k + j] > hi[j] ? y[k + j] : hi[j];
            }
        }
        for (; k <= last; ++k) {
            lo[0] = y[k] < lo[0] ? y[k] : lo[0];
            hi[0] = y[k] > hi[0] ? y[k] : hi[0];
        }
        const double lowY = std::min(std::min(lo[0], lo[1]), std::min(lo[2], lo[3]));
        const double highY = std::max(std::max(hi[0], hi[1]), std::max(hi[2], hi[3]));
        int lowest = first;
        while (y[lowest] != lowY) {
            ++lowest;
        }
        int highest = first;
        while (y[highest] != highY) {
            ++highest;
        }
        indices.append(first);
        const int a = std::min(lowest, highest);
        const int b = std::max(lowest, highest);
        if (a != first && a != last) {
            indices.append(a);
        }
        if (b != first && b != last && b != a) {
            indices.append(b);
        }
        if (last != first) {
            indices.append(last);
        }
        i = last + 1;
    }
    indices.append(-1);
}

} // namespace

bool zosIsSortedAndFinite(const double *x, const double *y, int count)
{
    if (!x || !y) {
        return false;
    }
    double prev = -HUGE_VAL;
    bool ok = true;
    for (int i = 0; i < count; ++i) {
        const double xi = x[i];
        const double yi = y[i];
        // Every test false for NaN; x - x is NaN for infinities.
        ok &= (xi >= prev) & ((xi - xi) == 0.0) & ((yi - yi) == 0.0);
        prev = xi;
    }
    return ok;
}

int zosReducePolyline(const double *x, const double *y, int count, const ZOSAxisMap &xMap, bool breakBackwards,
                      bool reduce, QVector<int> &indices, bool sortedAndFinite)
{
    const int before = indices.size();
    if (reduce && sortedAndFinite && x && y && count > 0 && xMap.isValid()) {
        reduceSorted(x, y, count, xMap, indices);
        return indices.size() - before;
    }
    if (!x || !y || count < 1) {
        return 0;
    }
    if (reduce) {
        // At most four points per column (plus piece ends) survive; reserve a
        // little to avoid regrowth without holding memory for every point.
        indices.reserve(before + 4096);
    } else {
        indices.reserve(before + count + 1);
    }
    bool pieceOpen = false;
    // The current column group: first, lowest, highest and last point, with
    // the extreme values kept in registers.
    int first = -1;
    int lowest = -1;
    int highest = -1;
    int last = -1;
    double lowY = 0.0;
    double highY = 0.0;
    qint64 column = 0;
    double prevX = 0.0;
    bool havePrev = false;

    auto flushGroup = [&]() {
        if (first < 0) {
            return;
        }
        indices.append(first);
        const int a = std::min(lowest, highest);
        const int b = std::max(lowest, highest);
        if (a != first && a != last) {
            indices.append(a);
        }
        if (b != first && b != last && b != a) {
            indices.append(b);
        }
        if (last != first) {
            indices.append(last);
        }
        first = -1;
    };
    auto endPiece = [&]() {
        flushGroup();
        if (pieceOpen) {
            indices.append(-1);
            pieceOpen = false;
        }
        havePrev = false;
    };

    for (int i = 0; i < count; ++i) {
        const double xi = x[i];
        const double yi = y[i];
        if ((xi - xi) + (yi - yi) != 0.0) { // NaN or infinite
            endPiece();
            continue;
        }
        if (breakBackwards && havePrev && xi < prevX) {
            endPiece();
        }
        prevX = xi;
        havePrev = true;
        pieceOpen = true;
        if (!reduce) {
            indices.append(i);
            continue;
        }
        const qint64 c = pixelColumn(xMap, xi);
        if (first >= 0 && c == column) {
            // Branch-free: on noisy data these tests are coin flips.
            last = i;
            const bool lower = yi < lowY;
            const bool higher = yi > highY;
            lowY = lower ? yi : lowY;
            lowest = lower ? i : lowest;
            highY = higher ? yi : highY;
            highest = higher ? i : highest;
            continue;
        }
        flushGroup();
        first = lowest = highest = last = i;
        lowY = highY = yi;
        column = c;
    }
    endPiece();
    return indices.size() - before;
}

bool zosIsXAxisEvenlySpaced(const double *x, int count)
{
    if (!x || count < 2) {
        return false;
    }
    const double d = x[1] - x[0];
    for (int i = 1; i + 1 < count; ++i) {
        if (x[i + 1] - x[i] != d) {
            return false;
        }
    }
    return true;
}

double zosSumOfValues(const double *values, int count)
{
    double sum = 0.0;
    for (int i = 0; values && i < count; ++i) {
        sum += values[i];
    }
    return sum;
}

double zosQuvelArea(const double *x, const double *y, int count)
{
    if (!x || !y || count < 2) {
        return 0.0;
    }
    if (zosIsXAxisEvenlySpaced(x, count)) {
        return zosSumOfValues(y, count) * (x[1] - x[0]) * ZOS_DEGREES_TO_RADIANS;
    }
    double sum = 0.0;
    for (int i = 0; i + 1 < count; ++i) {
        sum += (y[i + 1] + y[i]) * (x[i + 1] - x[i]) * ZOS_DEGREES_TO_RADIANS * 0.5;
    }
    const auto mm = std::minmax_element(x, x + count);
    const double span = (*mm.second - *mm.first) * ZOS_DEGREES_TO_RADIANS;
    return span != 0.0 ? sum / span : 0.0;
}

double zosToolTipPointX(double xMin, double xMax, int width, int x)
{
    const int plot = width - 2 * ZOS_PLOT_MARGIN;
    return plot != 0 ? xMax / plot * (x - ZOS_PLOT_MARGIN) + xMin : xMin;
}

double zosToolTipPointY(double yMin, double yMax, int height, int y)
{
    const int plot = height - 2 * ZOS_PLOT_MARGIN;
    return plot != 0 ? (yMax - yMin) / plot * (height - ZOS_PLOT_MARGIN - y) + yMin : yMin;
}

double zosToolTipTolerance(double min, double max, int pixels)
{
    const int plot = pixels - 2 * ZOS_PLOT_MARGIN;
    return plot != 0 ? (max - min) * 5 / plot : 0.0;
}

ZOSPlotMargins zosGLMargins(const ZOSGLLayoutInput &in)
{
    const int textHeight = in.fontAscent - in.fontDescent;
    ZOSPlotMargins m;
    if (!in.lowMarginPadding) {
        m.left = 50;
        m.right = 40;
        m.bottom = 30;
        m.top = in.legendShown ? 50 : textHeight + 2 * (textHeight + 2);
    } else {
        m.left = 35;
        m.right = zosUsesExponentFactor(in.xExponent) ? 40 : 15;
        m.bottom = in.xLabelEmpty ? 20 : 30;
        m.top = in.legendShown ? 50 : textHeight + 5;
        if (zosUsesExponentFactor(in.yExponent)) {
            m.top = 50;
        }
    }
    // An X label needs a row of its own below the tick labels: the 7-pixel
    // tick, a line of tick labels, then the label's ascent over its baseline
    // 2 pixels above the edge. 30 pixels cannot hold both at this library's
    // default font, and the label ran into the tick labels and the exponent.
    if (!in.xLabelEmpty) {
        m.bottom = std::max(m.bottom, 2 * in.fontAscent + in.fontDescent + 8);
    }
    return m;
}
