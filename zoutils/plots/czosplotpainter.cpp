#include "czosplotpainter.h"

#include "czosplotcore.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace {

const int M = ZOS_PLOT_MARGIN;

bool isGLLook(const CZOSPlotCore &core) { return core.layoutKind() == EZOSPlotLayout::Margins; }

// Pixel centres: the points of one column then stack exactly, so a reduced
// curve covers the same pixels as the full one.
QPointF pixelCentre(const ZOSAxisMap &xm, const ZOSAxisMap &ym, double x, double y)
{
    return QPointF(std::floor(xm.toPixel(x)) + 0.5, std::floor(ym.toPixel(y)) + 0.5);
}

QPen linePen(const DISPLAY_SETTINGS &s) { return QPen(s.lineColor, std::max(1, s.lineWidth)); }

bool drawsPoints(int mode) { return mode == EDM_POINTS || mode == EDM_POINTS_AND_LINES; }

} // namespace

void CZOSPlotPainter::paint(QPainter &painter, CZOSPlotCore &core, int width, int height, const QColor &background)
{
    core.prepare(width, height);
    painter.setFont(core.getFont());
    painter.fillRect(QRect(0, 0, width, height), background);
    if (core.isEmpty()) {
        painter.setPen(Qt::red);
        painter.drawText(QRect(0, 0, width, height), Qt::AlignCenter, QStringLiteral("No data available"));
        return;
    }
    // A plot area of a pixel or more is needed for anything in data units.
    const QRect area = core.plotArea();
    if (core.isDrawable() && area.width() > 0 && area.height() > 0) {
        drawShadedRectangle(painter, core);
        drawGridLines(painter, core);
        drawAxes(painter, core);
        drawTexts(painter, core);
        // A zoomed view cuts through the data; the automatic one holds it all.
        painter.save();
        if (core.isZoomed()) {
            painter.setClipRect(area.adjusted(0, 0, 1, 1));
        }
        drawPoints(painter, core);
        drawCurves(painter, core);
        if (isGLLook(core)) {
            drawErrorBars(painter, core);
        }
        painter.restore();
        if (!core.m_sQuvelPlotArea.isEmpty()) {
            core.calculateQuvelPlotArea();
            painter.setPen(Qt::black);
            painter.drawText(area.left() + 5, area.top() + core.plotFontMetrics().ascent() + 2, core.m_sQuvelPlotArea);
        }
        if (core.isLegendShown()) {
            drawLegend(painter, core);
        }
    }
    // In every case, even without a usable range (markers then collapse onto
    // the axis origin).
    drawReferenceLines(painter, core);
    drawMarkers(painter, core);
}

void CZOSPlotPainter::drawShadedRectangle(QPainter &painter, const CZOSPlotCore &core)
{
    if (!core.m_bShadedRectangleVisible || !(core.m_dXDisplayMax > 0) || core.m_nShadedEnd <= 0) {
        return;
    }
    const int w = core.plotWidth();
    const ZOSAxisMap xm = core.xMap();
    const int start = std::max(M, int(std::lround(xm.toPixel(core.m_nShadedStart))));
    int end = int(std::lround(xm.toPixel(core.m_nShadedEnd)));
    if (end > w - 2 * M) {
        end = w - M;
    }
    painter.setPen(core.m_oShadedColor);
    painter.setBrush(core.m_oShadedColor);
    painter.drawRect(QRect(start, M, end - start, core.plotHeight() - 2 * M));
    painter.setBrush(Qt::NoBrush);
}

void CZOSPlotPainter::drawGridLines(QPainter &painter, const CZOSPlotCore &core)
{
    const QRect a = core.plotArea();
    const int bottom = a.top() + a.height();
    painter.setPen(QPen(Qt::lightGray, 1, Qt::SolidLine));
    if (core.m_nGridType == EGT_VERTICAL || core.m_nGridType == EGT_BOTH) {
        const ZOSAxisMap xm = core.xMap();
        for (double v : core.xLabelValues()) {
            const int px = int(std::lround(xm.toPixel(v)));
            painter.drawLine(px, bottom, px, a.top());
        }
    }
    if (core.m_nGridType == EGT_HORIZONTAL || core.m_nGridType == EGT_BOTH) {
        const ZOSAxisMap ym = core.yMap();
        for (double v : core.yLabelValues()) {
            const int py = int(std::lround(ym.toPixel(v)));
            painter.drawLine(a.left(), py, a.left() + a.width(), py);
        }
    }
}

void CZOSPlotPainter::drawAxes(QPainter &painter, const CZOSPlotCore &core)
{
    const QRect a = core.plotArea();
    const int left = a.left();
    const int right = a.left() + a.width();
    const int bottom = a.top() + a.height();
    painter.setPen(Qt::black);
    painter.drawLine(left, bottom, right, bottom);
    painter.drawLine(left, a.top(), left, bottom);
    const ZOSAxisMap xm = core.xMap();
    for (double v : core.xLabelValues()) {
        const int px = int(std::lround(xm.toPixel(v)));
        painter.drawLine(px, bottom, px, bottom + 7);
    }
    const ZOSAxisMap ym = core.yMap();
    for (double v : core.yLabelValues()) {
        const int py = int(std::lround(ym.toPixel(v)));
        painter.drawLine(left, py, left - 7, py);
    }
}

void CZOSPlotPainter::drawTexts(QPainter &painter, const CZOSPlotCore &core)
{
    painter.setPen(Qt::black);
    const SZOSPlotText title = core.titleText();
    if (!title.text.isEmpty()) {
        painter.drawText(title.position, title.text);
    }
    for (const SZOSPlotText &text : core.axisTexts()) {
        painter.drawText(text.position, text.text);
    }
}

void CZOSPlotPainter::drawPoints(QPainter &painter, const CZOSPlotCore &core)
{
    const ZOSAxisMap xm = core.xMap();
    const ZOSAxisMap ym = core.yMap();
    const bool gl = isGLLook(core);
    for (const SZOSPlotLine *line : qAsConst(core.m_lines)) {
        const DISPLAY_SETTINGS &s = line->settings;
        if (!drawsPoints(s.displayMode)) {
            continue;
        }
        // The painted plot's points are 2-pixel plus signs in the line's pen;
        // the GL plot's take the line's point style, size and colour.
        const int style = gl ? s.pointStyle : EPS_PLUS;
        const QColor colour = gl && s.usePointColor ? s.pointColor : s.lineColor;
        const double half = !gl ? 2.0 : style == EPS_CROSS ? 4.0 : std::max(1, s.pointSize) / 2.0;
        painter.setPen(gl ? QPen(colour, 1) : linePen(s));
        QVector<QLineF> strokes;
        strokes.reserve(2 * line->nPoints);
        for (int i = 0; i < line->nPoints; ++i) {
            if (!std::isfinite(line->x[i]) || !std::isfinite(line->y[i])) {
                continue;
            }
            const QPointF p = pixelCentre(xm, ym, line->x[i], line->y[i]);
            if (style == EPS_PLUS) {
                strokes.append(QLineF(p.x() - half, p.y(), p.x() + half, p.y()));
                strokes.append(QLineF(p.x(), p.y() - half, p.x(), p.y() + half));
            } else if (style == EPS_CROSS) {
                strokes.append(QLineF(p.x() - half, p.y() - half, p.x() + half, p.y() + half));
                strokes.append(QLineF(p.x() - half, p.y() + half, p.x() + half, p.y() - half));
            } else if (style == EPS_ROUND) {
                painter.setBrush(colour);
                painter.drawEllipse(p, half, half);
            } else {
                painter.fillRect(QRectF(p.x() - half, p.y() - half, 2 * half, 2 * half), colour);
            }
        }
        painter.setBrush(Qt::NoBrush);
        painter.drawLines(strokes);
    }
}

void CZOSPlotPainter::drawCurves(QPainter &painter, const CZOSPlotCore &core)
{
    const ZOSAxisMap xm = core.xMap();
    const ZOSAxisMap ym = core.yMap();
    QPolygonF piece;
    for (const SZOSPlotLine *line : qAsConst(core.m_lines)) {
        const int mode = line->settings.displayMode;
        if (mode != EDM_LINES && mode != EDM_POINTS_AND_LINES && mode != EDM_STAIRCASE) {
            continue;
        }
        painter.setPen(linePen(line->settings));
        piece.clear();
        core.forEachStripVertex(
            *line, [&](double x, double y) { piece.append(pixelCentre(xm, ym, x, y)); },
            [&]() {
                if (piece.size() > 1) {
                    painter.drawPolyline(piece);
                }
                piece.clear();
            });
    }
}

void CZOSPlotPainter::drawErrorBars(QPainter &painter, const CZOSPlotCore &core)
{
    const ZOSAxisMap xm = core.xMap();
    const ZOSAxisMap ym = core.yMap();
    QVector<QLineF> bars;
    for (const SZOSPlotLine *line : qAsConst(core.m_lines)) {
        for (int i = 0; i < line->nPoints; ++i) {
            const double x = line->x[i];
            const double y = line->y[i];
            if (!std::isfinite(x) || !std::isfinite(y)) {
                continue;
            }
            // GL draws nothing for a zero-length bar; QPainter would draw a dot.
            if (i < line->nXErrors && std::isfinite(line->xErrors[i]) && line->xErrors[i] != 0.0) {
                bars.append(QLineF(xm.toPixel(x - line->xErrors[i]), ym.toPixel(y), xm.toPixel(x + line->xErrors[i]),
                                   ym.toPixel(y)));
            }
            if (i < line->nYErrors && std::isfinite(line->yErrors[i]) && line->yErrors[i] != 0.0) {
                bars.append(QLineF(xm.toPixel(x), ym.toPixel(y - line->yErrors[i]), xm.toPixel(x),
                                   ym.toPixel(y + line->yErrors[i])));
            }
        }
    }
    painter.setPen(QPen(Qt::red, 1));
    painter.drawLines(bars);
}

void CZOSPlotPainter::drawLegend(QPainter &painter, CZOSPlotCore &core)
{
    const QRect box = core.legendBox();
    const int rowHeight = core.legendRowHeight();
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(box);
    painter.setBrush(Qt::NoBrush);
    // Hash order, as the curves are drawn; a swatch of the line colour before each name.
    int y = box.top() + 2;
    for (auto it = core.m_lines.constBegin(); it != core.m_lines.constEnd(); ++it, y += rowHeight) {
        painter.fillRect(box.left() + 3, y + (rowHeight - 8) / 2, 8, 8, it.value()->settings.lineColor);
        painter.drawText(box.left() + 13, y + core.plotFontMetrics().ascent(), it.key());
    }
}

void CZOSPlotPainter::drawReferenceLines(QPainter &painter, const CZOSPlotCore &core)
{
    const int w = core.plotWidth();
    const int h = core.plotHeight();
    const bool xOn = core.m_bReferenceLineX && core.m_dReferenceLinePosX >= 0.0 && core.m_dReferenceLinePosX <= 1.0;
    const bool yOn = core.m_bReferenceLineY && core.m_dReferenceLinePosY >= 0.0 && core.m_dReferenceLinePosY <= 1.0;
    painter.setPen(core.m_oReferenceColor1);
    if (xOn) {
        const int x = M + int(core.m_dReferenceLinePosX * (w - 2 * M));
        painter.drawLine(x, M, x, h - M);
    }
    if (yOn) {
        const int y = h - M - int(core.m_dReferenceLinePosY * (h - 2 * M));
        painter.drawLine(M, y, w - M, y);
    }
    if (xOn || yOn) {
        const QString text = core.getPlotValueString();
        const int tw = core.plotFontMetrics().horizontalAdvance(text);
        painter.setPen(core.m_oReferenceColor2);
        painter.drawText(QRect(w - tw - 50, h - 20, tw, core.plotFontMetrics().height()), Qt::AlignCenter, text);
    }
}

void CZOSPlotPainter::drawMarkers(QPainter &painter, const CZOSPlotCore &core)
{
    const int w = core.plotWidth();
    const int h = core.plotHeight();
    const QFontMetrics &fm = core.plotFontMetrics();
    const ZOSAxisMap xm = core.xMap();
    const ZOSAxisMap ym = core.yMap();
    for (const SZOSPlotMarker &marker : qAsConst(core.m_markersX)) {
        const double px = xm.toPixel(marker.value);
        if (!std::isfinite(px)) {
            continue;
        }
        const int x = int(std::lround(std::clamp(px, -1e6, 1e6)));
        painter.setPen(QPen(marker.color, 1, Qt::DashLine));
        painter.drawLine(x, M, x, h - M);
        painter.drawText(x + 2, M + fm.ascent(), marker.name);
    }
    for (const SZOSPlotMarker &marker : qAsConst(core.m_markersY)) {
        const double py = ym.toPixel(marker.value);
        if (!std::isfinite(py)) {
            continue;
        }
        const int y = int(std::lround(std::clamp(py, -1e6, 1e6)));
        painter.setPen(QPen(marker.color, 1, Qt::DashLine));
        painter.drawLine(M, y, w - M, y);
        painter.drawText(w - M - fm.horizontalAdvance(marker.name) - 2, y - 2, marker.name);
    }
}
