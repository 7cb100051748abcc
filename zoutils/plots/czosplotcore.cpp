#include "czosplotcore.h"

#include "czoslog.h"

#include <algorithm>
#include <cmath>

namespace {

const int M = ZOS_PLOT_MARGIN;

bool removeMarker(QList<SZOSPlotMarker> &markers, const QString &name)
{
    for (int i = 0; i < markers.size(); ++i) {
        if (markers.at(i).name == name) {
            markers.removeAt(i);
            return true;
        }
    }
    return false;
}

} // namespace

CZOSPlotCore::CZOSPlotCore(EZOSPlotLayout layout)
    : m_eLayout(layout)
    , m_oFont(QStringLiteral("Times"), 9, 25, false)
    , m_oFontMetrics(m_oFont)
{
}

CZOSPlotCore::~CZOSPlotCore() { ZOSPlotLines::deleteAll(m_lines); }

// ---- data ----------------------------------------------------------------

bool CZOSPlotCore::insertLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                              const QVector<double> &xErrors, const QVector<double> &yErrors,
                              const DISPLAY_SETTINGS *settings, const QStringList &labels,
                              const QStringList &angles, const QStringList &notes)
{
    if (x.isEmpty() || x.size() != y.size()) {
        ZOS_LOG(QStringLiteral("Plot line '%1' not added: %2 X values and %3 Y values.")
                    .arg(name)
                    .arg(x.size())
                    .arg(y.size()),
                ZOS_LOG_WARNING);
        return false;
    }
    auto *line = new SZOSPlotLine;
    line->setPoints(x, y, xErrors, yErrors);
    line->labels = labels;
    line->angles = angles;
    line->notes = notes;
    ZOSPlotLines::insert(m_lines, name, line, settings, m_nCurrentDisplayMode);
    invalidate();
    return true;
}

bool CZOSPlotCore::removeDataLine(const QString &name)
{
    if (!ZOSPlotLines::remove(m_lines, name))
        return false;
    invalidate();
    return true;
}

bool CZOSPlotCore::removeXErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, true))
        return false;
    invalidate();
    return true;
}

bool CZOSPlotCore::removeYErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, false))
        return false;
    invalidate();
    return true;
}

void CZOSPlotCore::clear()
{
    ZOSPlotLines::deleteAll(m_lines);
    m_sQuvelPlotArea.clear();
    m_bZoomed = false;
    invalidate();
}

bool CZOSPlotCore::getDisplaySettings(const QString &name, DISPLAY_SETTINGS &settings) const
{
    return ZOSPlotLines::getSettings(m_lines, name, settings);
}

bool CZOSPlotCore::setDisplaySettings(const QString &name, const DISPLAY_SETTINGS &settings)
{
    if (!ZOSPlotLines::setSettings(m_lines, name, settings))
        return false;
    plotChanged();
    return true;
}

void CZOSPlotCore::setDisplayModeOfAllLines(int mode)
{
    m_nCurrentDisplayMode = mode;
    for (SZOSPlotLine *line : qAsConst(m_lines)) {
        line->settings.displayMode = mode;
    }
    plotChanged();
}

void CZOSPlotCore::addMarkerX(const QString &name, double value, const QColor &color)
{
    m_markersX.append({name, value, color});
    plotChanged();
}

void CZOSPlotCore::addMarkerY(const QString &name, double value, const QColor &color)
{
    m_markersY.append({name, value, color});
    plotChanged();
}

bool CZOSPlotCore::removeMarkerX(const QString &name)
{
    const bool removed = removeMarker(m_markersX, name);
    plotChanged();
    return removed;
}

bool CZOSPlotCore::removeMarkerY(const QString &name)
{
    const bool removed = removeMarker(m_markersY, name);
    plotChanged();
    return removed;
}

// ---- appearance ------------------------------------------------------------
// Setters that change the ranges or the margins invalidate the layout; the
// others only repaint.

void CZOSPlotCore::setTitle(const QString &title)
{
    m_sTitle = title;
    plotChanged();
}

void CZOSPlotCore::setXAxisLabel(const QString &label)
{
    m_sXAxisLabel = label;
    invalidate(); // the bottom margin depends on it
}

void CZOSPlotCore::setYAxisLabel(const QString &label)
{
    m_sYAxisLabel = label;
    plotChanged();
}

void CZOSPlotCore::setFont(const QFont &font)
{
    m_oFont = font;
    m_oFontMetrics = QFontMetrics(m_oFont);
    invalidate();
}

void CZOSPlotCore::showLegend(bool show)
{
    m_bShowLegend = show;
    invalidate();
}

void CZOSPlotCore::setXAxisReversed(bool reversed)
{
    m_bXAxisReversed = reversed;
    plotChanged();
}

void CZOSPlotCore::setYAxisReversed(bool reversed)
{
    m_bYAxisReversed = reversed;
    plotChanged();
}

void CZOSPlotCore::setYAxisFloor(bool floor)
{
    m_bYAxisFloor = floor;
    invalidate();
}

void CZOSPlotCore::setXAxisRangeStep(double step)
{
    m_dXAxisRangeStep = step;
    plotChanged();
}

void CZOSPlotCore::setCurveReduction(bool on)
{
    m_bReduceCurves = on;
    plotChanged();
}

void CZOSPlotCore::setBackwards(bool backwards)
{
    m_bBackwards = backwards;
    plotChanged();
}

void CZOSPlotCore::setLowMarginPadding(bool low)
{
    m_bLowMarginPadding = low;
    invalidate();
}

void CZOSPlotCore::setReferenceLineX(bool enabled)
{
    m_bReferenceLineX = enabled;
    plotChanged();
}

void CZOSPlotCore::setReferenceLineY(bool enabled)
{
    m_bReferenceLineY = enabled;
    plotChanged();
}

void CZOSPlotCore::setReferenceLinePosX(double position)
{
    m_dReferenceLinePosX = position;
    plotChanged();
}

void CZOSPlotCore::setReferenceLinePosY(double position)
{
    m_dReferenceLinePosY = position;
    plotChanged();
}

void CZOSPlotCore::setReferenceLineColors(const QColor &line, const QColor &text)
{
    m_oReferenceColor1 = line;
    m_oReferenceColor2 = text;
    plotChanged();
}

void CZOSPlotCore::setShadedRectangleParams(int start, int end, const QColor &color)
{
    m_nShadedStart = start;
    m_nShadedEnd = end;
    m_oShadedColor = color;
    plotChanged();
}

void CZOSPlotCore::setVisibleShadedRectangle(bool visible)
{
    m_bShadedRectangleVisible = visible;
    plotChanged();
}

void CZOSPlotCore::setGridType(int type)
{
    m_nGridType = (type >= EGT_NONE && type <= EGT_BOTH) ? type : EGT_NONE;
    plotChanged();
}

void CZOSPlotCore::setQuvelPlotArea(const QString &text)
{
    m_sQuvelPlotArea = text;
    plotChanged();
}

void CZOSPlotCore::setQuvelPlotYAxisUnitType(const QString &unit)
{
    m_sQuvelYUnitType = unit;
    plotChanged();
}

// ---- zoom and pan ------------------------------------------------------------

bool CZOSPlotCore::setView(double xMin, double xMax, double yMin, double yMax)
{
    // A span below what doubles can resolve at that magnitude would map
    // every point to one pixel.
    auto usable = [](double lo, double hi) {
        return std::isfinite(lo) && std::isfinite(hi) && hi - lo >= 1e-12 &&
               hi - lo > 1e-12 * std::max(std::fabs(lo), std::fabs(hi));
    };
    if (!usable(xMin, xMax) || !usable(yMin, yMax)) {
        return false;
    }
    m_bZoomed = true;
    m_dViewX0 = xMin;
    m_dViewX1 = xMax;
    m_dViewY0 = yMin;
    m_dViewY1 = yMax;
    invalidate();
    return true;
}

void CZOSPlotCore::zoomAt(const QPointF &pixel, double factor)
{
    ensureLayout();
    if (!m_bDrawable || !(factor > 0.0) || !std::isfinite(factor)) {
        return;
    }
    const double x = xMap().toData(pixel.x());
    const double y = yMap().toData(pixel.y());
    // The point's fraction of each span is kept, so it stays under the pixel.
    setView(x - (x - m_dXDisplayMin) * factor, x + (m_dXDisplayMax - x) * factor,
            y - (y - m_dYDisplayMin) * factor, y + (m_dYDisplayMax - y) * factor);
}

bool CZOSPlotCore::zoomToRect(const QRectF &pixels)
{
    ensureLayout();
    const QRectF r = pixels.normalized();
    if (!m_bDrawable || r.width() < 2 || r.height() < 2) {
        return false;
    }
    const double x0 = xMap().toData(r.left());
    const double x1 = xMap().toData(r.right());
    const double y0 = yMap().toData(r.top());
    const double y1 = yMap().toData(r.bottom());
    return setView(std::min(x0, x1), std::max(x0, x1), std::min(y0, y1), std::max(y0, y1));
}

void CZOSPlotCore::panBy(const QPointF &from, const QPointF &to)
{
    ensureLayout();
    if (!m_bDrawable) {
        return;
    }
    const double dx = xMap().toData(from.x()) - xMap().toData(to.x());
    const double dy = yMap().toData(from.y()) - yMap().toData(to.y());
    setView(m_dXDisplayMin + dx, m_dXDisplayMax + dx, m_dYDisplayMin + dy, m_dYDisplayMax + dy);
}

void CZOSPlotCore::restoreAutoRange()
{
    m_bZoomed = false;
    invalidate();
}

// ---- ranges and layout ------------------------------------------------------------

void CZOSPlotCore::invalidate()
{
    m_bLayoutDirty = true;
    plotChanged();
}

void CZOSPlotCore::ensureLayout()
{
    const QSize size = plotWidgetSize();
    if (m_bLayoutDirty || m_nWidth != size.width() || m_nHeight != size.height()) {
        prepare(size.width(), size.height());
    }
}

bool CZOSPlotCore::prepare(int width, int height)
{
    m_nWidth = width;
    m_nHeight = height;
    calculateLayout();
    return m_bDrawable;
}

bool CZOSPlotCore::determineRanges()
{
    m_bDrawable = false;
    if (m_lines.isEmpty()) {
        return false;
    }
    const SZOSPlotLine *first = m_lines.constBegin().value();
    if (first->x.isEmpty() || first->y.isEmpty()) {
        return false;
    }
    // Each line's extent is kept with its data, so a repaint costs nothing per point.
    ZOSPlotExtent extent;
    for (const SZOSPlotLine *line : qAsConst(m_lines)) {
        extent = zosMergeExtents(extent, line->extent);
    }
    const ZOSPlotRanges r = m_bZoomed ? zosViewRanges(extent, m_dViewX0, m_dViewX1, m_dViewY0, m_dViewY1)
                                      : zosDetermineRanges(extent, m_bYAxisFloor);
    m_dXDisplayMin = r.xDisplayMin;
    m_dXDisplayMax = r.xDisplayMax;
    m_dYDisplayMin = r.yDisplayMin;
    m_dYDisplayMax = r.yDisplayMax;
    m_oXRange = r.xRange;
    m_oYRange = r.yRange;
    m_bDrawable = r.drawable;
    return m_bDrawable;
}

void CZOSPlotCore::calculateLayout()
{
    m_bLayoutDirty = false;
    const bool inset = m_eLayout == EZOSPlotLayout::Inset;
    // The painted plot keeps its inset even without a range: reference lines
    // and markers are drawn in every case.
    m_oMargins = inset ? ZOSPlotMargins{M, M, M, M} : ZOSPlotMargins();
    m_dLeft = 0.0;
    m_dBottom = 0.0;
    m_dRight = std::max(m_nWidth, 1);
    m_dTop = std::max(m_nHeight, 1);
    if (!determineRanges()) {
        return;
    }
    if (!inset) {
        ZOSGLLayoutInput in;
        in.lowMarginPadding = m_bLowMarginPadding;
        in.legendShown = m_bShowLegend;
        in.xLabelEmpty = m_sXAxisLabel.isEmpty();
        in.fontAscent = m_oFontMetrics.ascent();
        in.fontDescent = m_oFontMetrics.descent();
        in.xExponent = m_oXRange.exponent;
        in.yExponent = m_oYRange.exponent;
        m_oMargins = zosGLMargins(in);
    }
    // Margins wider than the widget leave a one-pixel plot area, never a negative one.
    const double plotWidth = std::max(1, m_nWidth - m_oMargins.left - m_oMargins.right);
    const double plotHeight = std::max(1, m_nHeight - m_oMargins.bottom - m_oMargins.top);
    const double xSpan = m_dXDisplayMax - m_dXDisplayMin;
    const double ySpan = m_dYDisplayMax - m_dYDisplayMin;
    m_dLeft = m_dXDisplayMin - m_oMargins.left * xSpan / plotWidth;
    m_dRight = m_dXDisplayMax + m_oMargins.right * xSpan / plotWidth;
    m_dBottom = m_dYDisplayMin - m_oMargins.bottom * ySpan / plotHeight;
    m_dTop = m_dYDisplayMax + m_oMargins.top * ySpan / plotHeight;
}

QRect CZOSPlotCore::plotArea() const
{
    // The GL plot mirrors its whole window along a reversed axis, margins included.
    const bool gl = m_eLayout == EZOSPlotLayout::Margins;
    const ZOSPlotMargins &m = m_oMargins;
    const int left = gl && m_bXAxisReversed ? m.right : m.left;
    const int top = gl && m_bYAxisReversed ? m.bottom : m.top;
    return QRect(left, top, m_nWidth - m.left - m.right, m_nHeight - m.top - m.bottom);
}

ZOSPlotMargins CZOSPlotCore::getMargins()
{
    ensureLayout();
    return m_oMargins;
}

QRectF CZOSPlotCore::getOrthoWindow()
{
    ensureLayout();
    return QRectF(m_dLeft, m_dBottom, m_dRight - m_dLeft, m_dTop - m_dBottom);
}

ZOSAxisMap CZOSPlotCore::xMap() const
{
    const QRect a = plotArea();
    return ZOSAxisMap(m_dXDisplayMin, m_dXDisplayMax, m_bXAxisReversed, a.left(), a.width());
}

ZOSAxisMap CZOSPlotCore::yMap() const
{
    const QRect a = plotArea();
    return ZOSAxisMap(m_dYDisplayMin, m_dYDisplayMax, m_bYAxisReversed, a.top() + a.height(), -a.height());
}

ZOSAxisMap CZOSPlotCore::reductionMap() const
{
    // The GL plot reduces over the columns of its whole window.
    if (m_eLayout == EZOSPlotLayout::Margins) {
        return ZOSAxisMap(m_dLeft, m_dRight, m_bXAxisReversed, 0, m_nWidth);
    }
    return xMap();
}

double CZOSPlotCore::getXDisplayMin()
{
    ensureLayout();
    return m_dXDisplayMin;
}

double CZOSPlotCore::getXDisplayMax()
{
    ensureLayout();
    return m_dXDisplayMax;
}

double CZOSPlotCore::getYDisplayMin()
{
    ensureLayout();
    return m_dYDisplayMin;
}

double CZOSPlotCore::getYDisplayMax()
{
    ensureLayout();
    return m_dYDisplayMax;
}

tagZOSDisplayRange CZOSPlotCore::getXRange()
{
    ensureLayout();
    return m_oXRange;
}

tagZOSDisplayRange CZOSPlotCore::getYRange()
{
    ensureLayout();
    return m_oYRange;
}

QStringList CZOSPlotCore::getXTickLabels()
{
    ensureLayout();
    QStringList texts;
    for (double v : xLabelValues()) {
        texts << zosTickLabel(v, m_oXRange);
    }
    return texts;
}

QStringList CZOSPlotCore::getYTickLabels()
{
    ensureLayout();
    QStringList texts;
    for (double v : yLabelValues()) {
        texts << zosTickLabel(v, m_oYRange);
    }
    return texts;
}

void CZOSPlotCore::getXYRatios(double &xRatio, double &yRatio)
{
    ensureLayout();
    const int w = std::abs(plotArea().width());
    const int h = std::abs(plotArea().height());
    xRatio = w ? std::fabs(m_dXDisplayMax - m_dXDisplayMin) / w : 0.0;
    yRatio = h ? std::fabs(m_dYDisplayMax - m_dYDisplayMin) / h : 0.0;
}

// ---- axes, texts and legend --------------------------------------------------------

QVector<double> CZOSPlotCore::xLabelValues() const
{
    const double step = zosLabelStep(m_dXDisplayMax - m_dXDisplayMin, m_nWidth,
                                     m_oFontMetrics.horizontalAdvance(QStringLiteral("999999")), m_oXRange.tickStep,
                                     m_dXAxisRangeStep);
    return zosLabelValues(m_dXDisplayMin, m_dXDisplayMax, step, m_bXAxisReversed, m_bZoomed);
}

QVector<double> CZOSPlotCore::yLabelValues() const
{
    const double step = zosLabelStep(m_dYDisplayMax - m_dYDisplayMin, m_nHeight, 5.0 * m_oFontMetrics.height(),
                                     m_oYRange.tickStep);
    return zosLabelValues(m_dYDisplayMin, m_dYDisplayMax, step, m_bYAxisReversed, m_bZoomed);
}

QVector<SZOSPlotText> CZOSPlotCore::axisTexts() const
{
    const QFontMetrics &fm = m_oFontMetrics;
    const int raise = fm.ascent() - fm.descent();
    // The axes run along the plot area's left and bottom edges as seen on screen.
    const double axisX = m_bXAxisReversed ? m_dXDisplayMax : m_dXDisplayMin;
    const double axisY = m_bYAxisReversed ? m_dYDisplayMax : m_dYDisplayMin;
    QVector<SZOSPlotText> texts;
    for (double v : xLabelValues()) {
        const QPoint p = windowPoint(v, axisY);
        const QString text = zosTickLabel(v, m_oXRange);
        texts.append({QPoint(p.x() - fm.horizontalAdvance(text) / 2, p.y() + 7 + fm.ascent()), text});
    }
    for (double v : yLabelValues()) {
        const QPoint p = windowPoint(axisX, v);
        const QString text = zosTickLabel(v, m_oYRange);
        texts.append({QPoint(p.x() - 9 - fm.horizontalAdvance(text), p.y() + raise / 2), text});
    }
    const QPoint origin = windowPoint(axisX, axisY);
    const QPoint end = windowPoint(m_bXAxisReversed ? m_dXDisplayMin : m_dXDisplayMax,
                                   m_bYAxisReversed ? m_dYDisplayMin : m_dYDisplayMax);
    const QString x10 = QStringLiteral("x10");
    const int x10Width = fm.horizontalAdvance(x10);
    if (zosUsesExponentFactor(m_oXRange.exponent)) {
        texts.append({QPoint(end.x() + 2, origin.y() + 5), x10});
        texts.append({QPoint(end.x() + 2 + x10Width, origin.y() + 5 - raise), QString::number(m_oXRange.exponent)});
    }
    if (zosUsesExponentFactor(m_oYRange.exponent)) {
        texts.append({QPoint(origin.x() - x10Width, end.y() - 2 - raise), x10});
        texts.append({QPoint(origin.x(), end.y() - 2 - 2 * raise), QString::number(m_oYRange.exponent)});
    }
    if (!m_sXAxisLabel.isEmpty()) {
        texts.append({QPoint((m_nWidth - fm.horizontalAdvance(m_sXAxisLabel)) / 2, m_nHeight - 2), m_sXAxisLabel});
    }
    if (!m_sYAxisLabel.isEmpty()) {
        texts.append({QPoint(origin.x() + 5, end.y() - 2), m_sYAxisLabel});
    }
    return texts;
}

SZOSPlotText CZOSPlotCore::titleText() const
{
    return {QPoint((m_nWidth - m_oFontMetrics.horizontalAdvance(m_sTitle)) / 2, m_oFontMetrics.ascent() + 2),
            m_sTitle};
}

QRect CZOSPlotCore::legendBox()
{
    int widest = 0;
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        widest = std::max(widest, m_oFontMetrics.horizontalAdvance(it.key()));
    }
    const int width = widest + 14;
    return QRect(m_nWidth - 3 - width, 3, width, m_lines.size() * legendRowHeight() + 4);
}

QVector<QVector<QPointF>> CZOSPlotCore::lineStrips(const QString &name)
{
    ensureLayout();
    QVector<QVector<QPointF>> strips;
    const SZOSPlotLine *line = m_lines.value(name);
    if (line) {
        QVector<QPointF> strip;
        forEachStripVertex(
            *line, [&](double x, double y) { strip.append(QPointF(x, y)); },
            [&]() {
                strips.append(strip);
                strip.clear();
            });
    }
    return strips;
}
