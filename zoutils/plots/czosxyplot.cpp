#include "czosxyplot.h"

#include "czoslog.h"

#include <QAction>
#include <QActionGroup>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPolygonF>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

const int M = ZOS_PLOT_MARGIN;

// Long lines are reduced only when they hold clearly more points than the
// reduced form (at most four per pixel column) would.
bool worthReducing(int points, int columns) { return points > 4 * std::max(columns, 1) + 16; }

} // namespace

CZOSXYPlot::CZOSXYPlot(QWidget *parent, const char *name)
    : QWidget(parent)
    , m_oFont(QStringLiteral("Times"), 9, 25, false)
    , m_oFontMetrics(m_oFont)
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    m_pPopupMenu = new QMenu(this);
    m_pDisplayModeGroup = new QActionGroup(this);
    m_pDisplayModeGroup->setExclusive(true);
    const QStringList modes{QStringLiteral("Points"), QStringLiteral("Lines"), QStringLiteral("Points and Lines")};
    for (int i = 0; i < modes.size(); ++i) {
        QAction *action = m_pPopupMenu->addAction(modes.at(i));
        action->setCheckable(true);
        action->setChecked(i == EDM_LINES);
        m_pDisplayModeGroup->addAction(action);
        m_pPopupMenu->addSeparator();
    }
    connect(m_pDisplayModeGroup, &QActionGroup::triggered, this, &CZOSXYPlot::onDisplayPopupActivated);

    m_pGridMenu = m_pPopupMenu->addMenu(QStringLiteral("Display Grid Lines"));
    m_pGridGroup = new QActionGroup(this);
    m_pGridGroup->setExclusive(true);
    const QStringList grids{QStringLiteral("None"), QStringLiteral("Vertical"), QStringLiteral("Horizontal"),
                            QStringLiteral("Both")};
    const QStringList icons{QStringLiteral(":/Resource/grid_none.xpm"), QStringLiteral(":/Resource/grid_vert.xpm"),
                            QStringLiteral(":/Resource/grid_horiz.xpm"), QStringLiteral(":/Resource/grid_both.xpm")};
    for (int i = 0; i < grids.size(); ++i) {
        QAction *action = m_pGridMenu->addAction(QIcon(icons.at(i)), grids.at(i));
        action->setCheckable(true);
        action->setChecked(i == EGT_NONE);
        m_pGridGroup->addAction(action);
    }
    connect(m_pGridMenu, &QMenu::triggered, this, &CZOSXYPlot::onGridTypeSubMenuTriggered);

    connect(this, &CZOSXYPlot::normalizedPosXChanged, this, &CZOSXYPlot::valueOnPlotXAxisChanged);
    connect(this, &CZOSXYPlot::normalizedPosYChanged, this, &CZOSXYPlot::valueOnPlotYAxisChanged);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

CZOSXYPlot::~CZOSXYPlot() { ZOSPlotLines::deleteAll(m_lines); }

// ---- data ----------------------------------------------------------------

bool CZOSXYPlot::addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                             const QVector<double> &xErrors, const QVector<double> &yErrors,
                             const QStringList &labels, const QStringList &angles, const QStringList &notes)
{
    if (x.isEmpty() || x.size() != y.size()) {
        ZOS_LOG(QStringLiteral("Plot line '%1' not added: %2 X values and %3 Y values.")
                    .arg(name)
                    .arg(x.size())
                    .arg(y.size()),
                ZOS_LOG_WARNING);
        return false;
    }
    auto *line = new SZOSXYPlotLine;
    line->setPoints(x, y, xErrors, yErrors);
    line->labels = labels;
    line->angles = angles;
    line->notes = notes;
    ZOSPlotLines::insert(m_lines, name, line, nullptr, m_nCurrentDisplayMode);
    invalidate();
    return true;
}

bool CZOSXYPlot::removeDataLine(const QString &name)
{
    if (!ZOSPlotLines::remove(m_lines, name))
        return false;
    invalidate();
    return true;
}

bool CZOSXYPlot::removeXErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, true))
        return false;
    invalidate();
    return true;
}

bool CZOSXYPlot::removeYErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, false))
        return false;
    invalidate();
    return true;
}

void CZOSXYPlot::clear()
{
    ZOSPlotLines::deleteAll(m_lines);
    m_sQuvelPlotArea.clear();
    invalidate();
}

bool CZOSXYPlot::getDisplaySettings(const QString &name, DISPLAY_SETTINGS &settings) const
{
    return ZOSPlotLines::getSettings(m_lines, name, settings);
}

bool CZOSXYPlot::setDisplaySettings(const QString &name, const DISPLAY_SETTINGS &settings)
{
    if (!ZOSPlotLines::setSettings(m_lines, name, settings))
        return false;
    update();
    return true;
}

void CZOSXYPlot::addMarkerX(const QString &name, double value, const QColor &color)
{
    m_markersX.append({name, value, color});
    update();
}

void CZOSXYPlot::addMarkerY(const QString &name, double value, const QColor &color)
{
    m_markersY.append({name, value, color});
    update();
}

static bool removeMarker(QList<SZOSPlotMarker> &markers, const QString &name)
{
    for (int i = 0; i < markers.size(); ++i) {
        if (markers.at(i).name == name) {
            markers.removeAt(i);
            return true;
        }
    }
    return false;
}

bool CZOSXYPlot::removeMarkerX(const QString &name)
{
    const bool removed = removeMarker(m_markersX, name);
    update();
    return removed;
}

bool CZOSXYPlot::removeMarkerY(const QString &name)
{
    const bool removed = removeMarker(m_markersY, name);
    update();
    return removed;
}

// ---- appearance ------------------------------------------------------------

void CZOSXYPlot::setTitle(const QString &title)
{
    m_sTitle = title;
    update();
}

void CZOSXYPlot::setXAxisLabel(const QString &label)
{
    m_sXAxisLabel = label;
    update();
}

void CZOSXYPlot::setYAxisLabel(const QString &label)
{
    m_sYAxisLabel = label;
    update();
}

void CZOSXYPlot::setFont(const QFont &font)
{
    m_oFont = font;
    m_oFontMetrics = QFontMetrics(m_oFont);
    update();
}

void CZOSXYPlot::showLegend(bool show)
{
    m_bShowLegend = show;
    update();
}

void CZOSXYPlot::setXAxisReversed(bool reversed)
{
    m_bXAxisReversed = reversed;
    update();
}

void CZOSXYPlot::setYAxisReversed(bool reversed)
{
    m_bYAxisReversed = reversed;
    update();
}

void CZOSXYPlot::setYAxisFloor(bool floor)
{
    m_bYAxisFloor = floor;
    invalidate();
}

void CZOSXYPlot::setXAxisRangeStep(double step)
{
    m_dXAxisRangeStep = step;
    update();
}

void CZOSXYPlot::setReferenceLineX(bool enabled)
{
    m_bReferenceLineX = enabled;
    update();
}

void CZOSXYPlot::setReferenceLineY(bool enabled)
{
    m_bReferenceLineY = enabled;
    update();
}

void CZOSXYPlot::setReferenceLinePosX(double position)
{
    m_dReferenceLinePosX = position;
    update();
}

void CZOSXYPlot::setReferenceLinePosY(double position)
{
    m_dReferenceLinePosY = position;
    update();
}

void CZOSXYPlot::setReferenceLineColors(const QColor &line, const QColor &text)
{
    m_oReferenceColor1 = line;
    m_oReferenceColor2 = text;
    update();
}

void CZOSXYPlot::setShadedRectangleParams(int start, int end, const QColor &color)
{
    m_nShadedStart = start;
    m_nShadedEnd = end;
    m_oShadedColor = color;
    update();
}

void CZOSXYPlot::setVisibleShadedRectangle(bool visible)
{
    m_bShadedRectangleVisible = visible;
    update();
}

void CZOSXYPlot::setGridType(int type)
{
    m_nGridType = (type >= EGT_NONE && type <= EGT_BOTH) ? type : EGT_NONE;
    const QList<QAction *> actions = m_pGridGroup->actions();
    if (m_nGridType < actions.size()) {
        actions.at(m_nGridType)->setChecked(true);
    }
    update();
}

void CZOSXYPlot::setCurveReduction(bool on)
{
    m_bReduceCurves = on;
    update();
}

void CZOSXYPlot::getXYRatios(double &xRatio, double &yRatio)
{
    ensureRanges();
    const int w = std::abs(m_nWidth - 2 * M);
    const int h = std::abs(m_nHeight - 2 * M);
    xRatio = w ? std::fabs(m_dXDisplayMax - m_dXDisplayMin) / w : 0.0;
    yRatio = h ? std::fabs(m_dYDisplayMax - m_dYDisplayMin) / h : 0.0;
}

double CZOSXYPlot::getXDisplayMin()
{
    ensureRanges();
    return m_dXDisplayMin;
}

double CZOSXYPlot::getXDisplayMax()
{
    ensureRanges();
    return m_dXDisplayMax;
}

double CZOSXYPlot::getYDisplayMin()
{
    ensureRanges();
    return m_dYDisplayMin;
}

double CZOSXYPlot::getYDisplayMax()
{
    ensureRanges();
    return m_dYDisplayMax;
}

tagZOSDisplayRange CZOSXYPlot::getXRange()
{
    ensureRanges();
    return m_oXRange;
}

tagZOSDisplayRange CZOSXYPlot::getYRange()
{
    ensureRanges();
    return m_oYRange;
}

QStringList CZOSXYPlot::getXTickLabels()
{
    ensureRanges();
    QStringList texts;
    for (double v : xLabelValues()) {
        texts << zosTickLabel(v, m_oXRange);
    }
    return texts;
}

QStringList CZOSXYPlot::getYTickLabels()
{
    ensureRanges();
    QStringList texts;
    for (double v : yLabelValues()) {
        texts << zosTickLabel(v, m_oYRange);
    }
    return texts;
}

void CZOSXYPlot::setQuvelPlotArea(const QString &text)
{
    m_sQuvelPlotArea = text;
    update();
}

void CZOSXYPlot::setQuvelPlotYAxisUnitType(const QString &unit)
{
    m_sQuvelYUnitType = unit;
    update();
}

// ---- ranges and coordinates --------------------------------------------------

void CZOSXYPlot::invalidate()
{
    m_bRangesDirty = true;
    update();
}

void CZOSXYPlot::ensureRanges()
{
    if (m_bRangesDirty || m_nWidth != width() || m_nHeight != height()) {
        determineRanges();
    }
}

bool CZOSXYPlot::determineRanges()
{
    m_nWidth = width();
    m_nHeight = height();
    m_bRangesDirty = false;
    m_bDrawable = false;
    if (m_lines.isEmpty()) {
        return false;
    }
    const SZOSXYPlotLine *first = m_lines.constBegin().value();
    if (first->x.isEmpty() || first->y.isEmpty()) {
        return false;
    }
    // Each line's extent is kept with its data, so a repaint costs nothing per point.
    ZOSPlotExtent extent;
    for (const SZOSXYPlotLine *line : qAsConst(m_lines)) {
        extent = zosMergeExtents(extent, line->extent);
    }
    const ZOSPlotRanges r = zosDetermineRanges(extent, m_bYAxisFloor);
    m_dXMin = extent.xMin;
    m_dXMax = extent.xMax;
    m_dYMin = extent.yMin;
    m_dYMax = extent.yMax;
    m_dXDisplayMin = r.xDisplayMin;
    m_dXDisplayMax = r.xDisplayMax;
    m_dYDisplayMin = r.yDisplayMin;
    m_dYDisplayMax = r.yDisplayMax;
    m_oXRange = r.xRange;
    m_oYRange = r.yRange;
    m_bDrawable = r.drawable;
    return m_bDrawable;
}

ZOSAxisMap CZOSXYPlot::xMap() const
{
    return ZOSAxisMap(m_dXDisplayMin, m_dXDisplayMax, m_bXAxisReversed, M, m_nWidth - 2 * M);
}

ZOSAxisMap CZOSXYPlot::yMap() const
{
    return ZOSAxisMap(m_dYDisplayMin, m_dYDisplayMax, m_bYAxisReversed, m_nHeight - M, -(m_nHeight - 2 * M));
}

void CZOSXYPlot::convertObjectToWindowCoords(double x, double y, int &wx, int &wy)
{
    ensureRanges();
    wx = qRound(xMap().toPixel(x));
    wy = qRound(yMap().toPixel(y));
}

void CZOSXYPlot::convertWindowToObjectCoords(int wx, int wy, double &x, double &y)
{
    ensureRanges();
    x = xMap().toData(wx);
    y = yMap().toData(wy);
}

int CZOSXYPlot::convertObjectToWindowWidth(double w)
{
    ensureRanges();
    return qRound(std::fabs(w * xMap().pixelsPerUnit()));
}

int CZOSXYPlot::convertObjectToWindowHeight(double h)
{
    ensureRanges();
    return qRound(std::fabs(h * yMap().pixelsPerUnit()));
}

void CZOSXYPlot::convertObjectToWindowSize(double w, double h, int &wWidth, int &wHeight)
{
    wWidth = convertObjectToWindowWidth(w);
    wHeight = convertObjectToWindowHeight(h);
}

double CZOSXYPlot::convertWindowToObjectWidth(int w)
{
    ensureRanges();
    const double s = xMap().pixelsPerUnit();
    return s != 0.0 ? std::fabs(w / s) : 0.0;
}

double CZOSXYPlot::convertWindowToObjectHeight(int h)
{
    ensureRanges();
    const double s = yMap().pixelsPerUnit();
    return s != 0.0 ? std::fabs(h / s) : 0.0;
}

void CZOSXYPlot::convertWindowToObjectSize(int wWidth, int wHeight, double &w, double &h)
{
    w = convertWindowToObjectWidth(wWidth);
    h = convertWindowToObjectHeight(wHeight);
}

void CZOSXYPlot::convertObjectToNormalizedCoords(double x, double y, double &nx, double &ny)
{
    ensureRanges();
    const double xs = m_dXDisplayMax - m_dXDisplayMin;
    const double ys = m_dYDisplayMax - m_dYDisplayMin;
    nx = xs != 0.0 ? (x - m_dXDisplayMin) / xs : 0.0;
    ny = ys != 0.0 ? (y - m_dYDisplayMin) / ys : 0.0;
}

void CZOSXYPlot::convertNormalizedToObjectCoords(double nx, double ny, double &x, double &y)
{
    ensureRanges();
    x = m_dXDisplayMin + nx * (m_dXDisplayMax - m_dXDisplayMin);
    y = m_dYDisplayMin + ny * (m_dYDisplayMax - m_dYDisplayMin);
}

void CZOSXYPlot::convertWindowToNormalizedCoords(int wx, int wy, double &nx, double &ny)
{
    const int w = width() - 2 * M;
    const int h = height() - 2 * M;
    nx = w > 0 ? double(wx - M) / w : 0.0;
    ny = h > 0 ? double(height() - M - wy) / h : 0.0;
}

bool CZOSXYPlot::getWindowPosWithinPlotLimits(int x, int y) const
{
    return x >= M && x <= width() - M && y >= M && y <= height() - M;
}

// ---- painting ----------------------------------------------------------------

void CZOSXYPlot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintPlot(painter);
}

void CZOSXYPlot::resizeEvent(QResizeEvent *event)
{
    m_bRangesDirty = true;
    QWidget::resizeEvent(event);
}

QImage CZOSXYPlot::getPrintImage()
{
    QImage image(size().expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    paintPlot(painter);
    painter.end();
    return image;
}

void CZOSXYPlot::paintPlot(QPainter &painter)
{
    determineRanges();
    painter.setFont(m_oFont);
    painter.fillRect(rect(), Qt::white);
    if (m_lines.isEmpty()) {
        painter.setPen(Qt::red);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("No data available"));
        return;
    }
    // A plot area of a pixel or more is needed for anything in data units.
    const bool body = m_bDrawable && m_nWidth > 2 * M && m_nHeight > 2 * M;
    if (body) {
        drawShadedRectangle(painter);
        drawGridLines(painter);
        drawTitle(painter);
        drawAxes(painter);
        drawPlotCurves(painter);
        drawPlotAreaValue(painter);
        if (m_bShowLegend) {
            drawLegend(painter);
        }
    }
    // In every case, even without a usable range (markers then collapse onto
    // the axis origin).
    drawReferenceLines(painter);
    drawMarkers(painter);
}

void CZOSXYPlot::drawShadedRectangle(QPainter &painter)
{
    if (!m_bShadedRectangleVisible || !(m_dXDisplayMax > 0) || m_nShadedEnd <= 0) {
        return;
    }
    const ZOSAxisMap xm = xMap();
    const int start = std::max(M, int(std::lround(xm.toPixel(m_nShadedStart))));
    int end = int(std::lround(xm.toPixel(m_nShadedEnd)));
    if (end > m_nWidth - 2 * M) {
        end = m_nWidth - M;
    }
    const QRect r(start, M, end - start, m_nHeight - 2 * M);
    painter.setPen(m_oShadedColor);
    painter.setBrush(m_oShadedColor);
    painter.drawRect(r);
    painter.setBrush(Qt::NoBrush);
}

QVector<double> CZOSXYPlot::xLabelValues() const
{
    const double step = zosLabelStep(m_dXDisplayMax - m_dXDisplayMin, m_nWidth,
                                     m_oFontMetrics.horizontalAdvance(QStringLiteral("999999")), m_oXRange.tickStep,
                                     m_dXAxisRangeStep);
    return zosLabelValues(m_dXDisplayMin, m_dXDisplayMax, step, m_bXAxisReversed);
}

QVector<double> CZOSXYPlot::yLabelValues() const
{
    const double step = zosLabelStep(m_dYDisplayMax - m_dYDisplayMin, m_nHeight, 5.0 * m_oFontMetrics.height(),
                                     m_oYRange.tickStep);
    return zosLabelValues(m_dYDisplayMin, m_dYDisplayMax, step, m_bYAxisReversed);
}

void CZOSXYPlot::drawGridLines(QPainter &painter)
{
    painter.setPen(QPen(Qt::lightGray, 1, Qt::SolidLine));
    if (m_nGridType == EGT_VERTICAL || m_nGridType == EGT_BOTH) {
        const ZOSAxisMap xm = xMap();
        for (double v : xLabelValues()) {
            const int px = int(std::lround(xm.toPixel(v)));
            painter.drawLine(px, m_nHeight - M, px, M);
        }
    }
    if (m_nGridType == EGT_HORIZONTAL || m_nGridType == EGT_BOTH) {
        const ZOSAxisMap ym = yMap();
        for (double v : yLabelValues()) {
            const int py = int(std::lround(ym.toPixel(v)));
            painter.drawLine(M, py, m_nWidth - M, py);
        }
    }
}

void CZOSXYPlot::drawTitle(QPainter &painter)
{
    if (m_sTitle.isEmpty()) {
        return;
    }
    painter.setPen(Qt::black);
    const int tw = m_oFontMetrics.horizontalAdvance(m_sTitle);
    painter.drawText((m_nWidth - tw) / 2, m_oFontMetrics.ascent() + 2, m_sTitle);
}

void CZOSXYPlot::drawAxes(QPainter &painter)
{
    const QFontMetrics &fm = m_oFontMetrics;
    const int raise = fm.ascent() - fm.descent();
    painter.setPen(Qt::black);
    painter.drawLine(M, m_nHeight - M, m_nWidth - M, m_nHeight - M);
    painter.drawLine(M, M, M, m_nHeight - M);

    const QString x10 = QStringLiteral("x10");
    const int x10Width = fm.horizontalAdvance(x10);
    if (zosUsesExponentFactor(m_oXRange.exponent)) {
        painter.drawText(m_nWidth - 33, m_nHeight - 30, x10);
        painter.drawText(m_nWidth - 33 + x10Width, m_nHeight - 30 - raise,
                         QStringLiteral("%1").arg(m_oXRange.exponent));
    }
    if (zosUsesExponentFactor(m_oYRange.exponent)) {
        painter.drawText(M - x10Width, 33 - raise, x10);
        painter.drawText(M, 33 - 2 * raise, QStringLiteral("%1").arg(m_oYRange.exponent));
    }

    const ZOSAxisMap xm = xMap();
    for (double v : xLabelValues()) {
        const int px = int(std::lround(xm.toPixel(v)));
        painter.drawLine(px, m_nHeight - M, px, m_nHeight - M + 7);
        const QString text = zosTickLabel(v, m_oXRange);
        painter.drawText(px - fm.horizontalAdvance(text) / 2, m_nHeight - M + 7 + fm.ascent(), text);
    }
    const ZOSAxisMap ym = yMap();
    for (double v : yLabelValues()) {
        const int py = int(std::lround(ym.toPixel(v)));
        painter.drawLine(M, py, M - 7, py);
        const QString text = zosTickLabel(v, m_oYRange);
        painter.drawText(M - 7 - 2 - fm.horizontalAdvance(text), py + raise / 2, text);
    }

    if (!m_sXAxisLabel.isEmpty()) {
        painter.drawText((m_nWidth - fm.horizontalAdvance(m_sXAxisLabel)) / 2, m_nHeight - 2, m_sXAxisLabel);
    }
    if (!m_sYAxisLabel.isEmpty()) {
        painter.drawText(40, 33, m_sYAxisLabel);
    }
}

void CZOSXYPlot::drawPlotCurves(QPainter &painter)
{
    const ZOSAxisMap xm = xMap();
    const ZOSAxisMap ym = yMap();
    // Pass 1: points as small plus signs.
    for (const SZOSXYPlotLine *line : qAsConst(m_lines)) {
        const int mode = line->settings.displayMode;
        if (mode != EDM_POINTS && mode != EDM_POINTS_AND_LINES) {
            continue;
        }
        painter.setPen(QPen(line->settings.lineColor, std::max(1, line->settings.lineWidth)));
        QVector<QLineF> strokes;
        strokes.reserve(2 * line->nPoints);
        for (int i = 0; i < line->nPoints; ++i) {
            const double x = line->x[i];
            const double y = line->y[i];
            if (!std::isfinite(x) || !std::isfinite(y)) {
                continue;
            }
            const QPointF p(std::floor(xm.toPixel(x)) + 0.5, std::floor(ym.toPixel(y)) + 0.5);
            strokes.append(QLineF(p.x() - 2, p.y(), p.x() + 2, p.y()));
            strokes.append(QLineF(p.x(), p.y() - 2, p.x(), p.y() + 2));
        }
        painter.drawLines(strokes);
    }
    // Pass 2: a segment from each point to the next.
    QVector<int> indices;
    QPolygonF piece;
    for (const SZOSXYPlotLine *line : qAsConst(m_lines)) {
        const int mode = line->settings.displayMode;
        if (mode != EDM_LINES && mode != EDM_POINTS_AND_LINES && mode != EDM_STAIRCASE) {
            continue;
        }
        painter.setPen(QPen(line->settings.lineColor, std::max(1, line->settings.lineWidth)));
        indices.clear();
        const bool reduce = m_bReduceCurves && worthReducing(line->nPoints, m_nWidth - 2 * M);
        zosReducePolyline(line->x.constData(), line->y.constData(), line->nPoints, xm, false, reduce, indices,
                          line->sortedAndFinite);
        piece.clear();
        for (int i : qAsConst(indices)) {
            if (i >= 0) {
                // Pixel centres: points of one column then stack exactly, so the
                // reduced curve covers the same pixels as the full one.
                piece.append(QPointF(std::floor(xm.toPixel(line->x[i])) + 0.5,
                                     std::floor(ym.toPixel(line->y[i])) + 0.5));
                continue;
            }
            if (piece.size() > 1) {
                painter.drawPolyline(piece);
            }
            piece.clear();
        }
    }
    if (!m_sQuvelPlotArea.isEmpty()) {
        calculateQuvelPlotArea();
    }
}

void CZOSXYPlot::calculateQuvelPlotArea()
{
    if (m_sQuvelPlotArea.isEmpty()) {
        return;
    }
    m_sQuvelPlotArea = QStringLiteral("Total Area: ");
    if (m_lines.size() != 1) {
        return;
    }
    const SZOSXYPlotLine *line = m_lines.constBegin().value();
    const double area = zosQuvelArea(line->x.constData(), line->y.constData(), line->nPoints);
    m_sQuvelPlotArea += QString::number(area, 'g', 6) + QStringLiteral(" ") + m_sQuvelYUnitType;
}

void CZOSXYPlot::drawPlotAreaValue(QPainter &painter)
{
    if (m_sQuvelPlotArea.isEmpty()) {
        return;
    }
    painter.setPen(Qt::black);
    painter.drawText(M + 5, M + m_oFontMetrics.ascent() + 2, m_sQuvelPlotArea);
}

void CZOSXYPlot::drawLegend(QPainter &painter)
{
    QStringList names = m_lines.keys();
    int widest = 0;
    for (const QString &n : qAsConst(names)) {
        widest = std::max(widest, m_oFontMetrics.horizontalAdvance(n));
    }
    const int lineHeight = m_oFontMetrics.height();
    m_nLegendWidth = widest + 14;
    m_nLegendHeight = m_lines.size() * lineHeight + 4;
    const QRect box(m_nWidth - 3 - m_nLegendWidth, 3, m_nLegendWidth, m_nLegendHeight);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(box);
    painter.setBrush(Qt::NoBrush);
    // Hash order, as the curves are drawn; a swatch of the line colour before each name.
    int y = box.top() + 2;
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it, y += lineHeight) {
        painter.fillRect(box.left() + 3, y + (lineHeight - 8) / 2, 8, 8, it.value()->settings.lineColor);
        painter.setPen(Qt::black);
        painter.drawText(box.left() + 13, y + m_oFontMetrics.ascent(), it.key());
    }
}

QString CZOSXYPlot::getPlotValueString() const
{
    const double xValue = m_dXDisplayMin + m_dReferenceLinePosX * (m_dXDisplayMax - m_dXDisplayMin);
    QString text = QStringLiteral("%1: %2").arg(m_sXAxisLabel).arg(xValue, 0, 'f', 2);
    if (m_bReferenceLineY && m_dReferenceLinePosY >= 0.0 && m_dReferenceLinePosY <= 1.0) {
        const double yValue = m_dYDisplayMin + m_dReferenceLinePosY * (m_dYDisplayMax - m_dYDisplayMin);
        text += QStringLiteral("   %1: %2").arg(m_sYAxisLabel).arg(yValue, 0, 'f', 2);
    }
    return text;
}

void CZOSXYPlot::drawReferenceLines(QPainter &painter)
{
    const bool xOn = m_bReferenceLineX && m_dReferenceLinePosX >= 0.0 && m_dReferenceLinePosX <= 1.0;
    const bool yOn = m_bReferenceLineY && m_dReferenceLinePosY >= 0.0 && m_dReferenceLinePosY <= 1.0;
    painter.setPen(m_oReferenceColor1);
    if (xOn) {
        const int x = M + int(m_dReferenceLinePosX * (m_nWidth - 2 * M));
        painter.drawLine(x, M, x, m_nHeight - M);
    }
    if (yOn) {
        const int y = m_nHeight - M - int(m_dReferenceLinePosY * (m_nHeight - 2 * M));
        painter.drawLine(M, y, m_nWidth - M, y);
    }
    if (xOn || yOn) {
        const QString text = getPlotValueString();
        const int tw = m_oFontMetrics.horizontalAdvance(text);
        painter.setPen(m_oReferenceColor2);
        painter.drawText(QRect(m_nWidth - tw - 50, m_nHeight - 20, tw, m_oFontMetrics.height()), Qt::AlignCenter,
                         text);
    }
}

void CZOSXYPlot::drawMarkers(QPainter &painter)
{
    const ZOSAxisMap xm = xMap();
    const ZOSAxisMap ym = yMap();
    for (const SZOSPlotMarker &marker : qAsConst(m_markersX)) {
        const double px = xm.toPixel(marker.value);
        if (!std::isfinite(px)) {
            continue;
        }
        const int x = int(std::lround(std::clamp(px, -1e6, 1e6)));
        painter.setPen(QPen(marker.color, 1, Qt::DashLine));
        painter.drawLine(x, M, x, m_nHeight - M);
        painter.drawText(x + 2, M + m_oFontMetrics.ascent(), marker.name);
    }
    for (const SZOSPlotMarker &marker : qAsConst(m_markersY)) {
        const double py = ym.toPixel(marker.value);
        if (!std::isfinite(py)) {
            continue;
        }
        const int y = int(std::lround(std::clamp(py, -1e6, 1e6)));
        painter.setPen(QPen(marker.color, 1, Qt::DashLine));
        painter.drawLine(M, y, m_nWidth - M, y);
        painter.drawText(m_nWidth - M - m_oFontMetrics.horizontalAdvance(marker.name) - 2, y - 2, marker.name);
    }
}

// ---- menu and mouse ------------------------------------------------------------

void CZOSXYPlot::onDisplayPopupActivated(QAction *action)
{
    const QString text = action ? action->text() : QString();
    int mode = EDM_POINTS;
    if (text == QLatin1String("Lines")) {
        mode = EDM_LINES;
    } else if (text == QLatin1String("Points and Lines")) {
        mode = EDM_POINTS_AND_LINES;
    }
    m_nCurrentDisplayMode = mode;
    for (SZOSXYPlotLine *line : qAsConst(m_lines)) {
        line->settings.displayMode = mode;
    }
    update();
}

void CZOSXYPlot::onGridTypeSubMenuTriggered(QAction *action)
{
    const QString text = action ? action->text() : QString();
    if (text == QLatin1String("None")) {
        m_nGridType = EGT_NONE;
    } else if (text == QLatin1String("Vertical")) {
        m_nGridType = EGT_VERTICAL;
    } else if (text == QLatin1String("Horizontal")) {
        m_nGridType = EGT_HORIZONTAL;
    } else if (text == QLatin1String("Both")) {
        m_nGridType = EGT_BOTH;
    }
    update();
}

void CZOSXYPlot::valueOnPlotXAxisChanged(double position)
{
    ensureRanges();
    m_dReferenceLinePosX = position;
    emit actualPlotXValueChanged(m_dXDisplayMin + std::fabs(m_dXDisplayMax - m_dXDisplayMin) * position);
    update();
}

void CZOSXYPlot::valueOnPlotYAxisChanged(double position)
{
    ensureRanges();
    m_dReferenceLinePosY = position;
    emit actualPlotYValueChanged(m_dYDisplayMin + std::fabs(m_dYDisplayMax - m_dYDisplayMin) * position);
    update();
}

void CZOSXYPlot::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        m_pPopupMenu->popup(event->globalPos());
        return;
    }
    if (event->button() == Qt::LeftButton && getWindowPosWithinPlotLimits(event->x(), event->y())) {
        m_bDragging = true;
        double nx = 0.0;
        double ny = 0.0;
        convertWindowToNormalizedCoords(event->x(), event->y(), nx, ny);
        emit normalizedPosXChanged(nx);
        emit normalizedPosYChanged(ny);
    }
}

void CZOSXYPlot::mouseMoveEvent(QMouseEvent *event)
{
    if (QToolTip::isVisible()) {
        QToolTip::hideText();
    }
    if (m_bDragging && getWindowPosWithinPlotLimits(event->x(), event->y())) {
        double nx = 0.0;
        double ny = 0.0;
        convertWindowToNormalizedCoords(event->x(), event->y(), nx, ny);
        emit normalizedPosXChanged(nx);
        emit normalizedPosYChanged(ny);
    }
}

void CZOSXYPlot::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_bDragging = false;
    }
}

QString CZOSXYPlot::toolTipTextAt(const QPoint &pos)
{
    ensureRanges();
    if (!m_bDrawable) {
        return QString();
    }
    const double x = zosToolTipPointX(m_dXDisplayMin, m_dXDisplayMax, m_nWidth, pos.x());
    const double y = zosToolTipPointY(m_dYDisplayMin, m_dYDisplayMax, m_nHeight, pos.y());
    const double xTol = zosToolTipTolerance(m_dXDisplayMin, m_dXDisplayMax, m_nWidth);
    const double yTol = zosToolTipTolerance(m_dYDisplayMin, m_dYDisplayMax, m_nHeight);
    for (const SZOSXYPlotLine *line : qAsConst(m_lines)) {
        if (line->labels.isEmpty()) {
            continue;
        }
        const int n = std::min(line->nPoints, int(line->labels.size()));
        for (int i = 0; i < n; ++i) {
            if (std::fabs(line->x[i] - x) <= xTol && std::fabs(line->y[i] - y) <= yTol) {
                return line->labels.at(i) + QStringLiteral("\nQVL-2 Angle: ") + line->angles.value(i) +
                       QStringLiteral("\n") + m_sQuvelYUnitType + QStringLiteral(": ") +
                       QString::number(line->y[i], 'g', 6) + QStringLiteral("\n") + line->notes.value(i);
            }
        }
    }
    return QString();
}

bool CZOSXYPlot::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        auto *help = static_cast<QHelpEvent *>(event);
        const QString text = toolTipTextAt(help->pos());
        if (text.isEmpty()) {
            QToolTip::hideText();
            event->ignore();
        } else {
            QToolTip::showText(help->globalPos(), text, this);
        }
        return true;
    }
    return QWidget::event(event);
}

// ---- data file -------------------------------------------------------------------

bool CZOSXYPlot::saveData(const char *path)
{
    FILE *file = path ? std::fopen(path, "w") : nullptr;
    if (!file) {
        ZOS_LOG(QString::asprintf("Unable to open file\n File:%s\n for saving plot data.", path ? path : ""),
                ZOS_LOG_ERROR);
        return false;
    }
    // Every field, the last of a row included, is followed by ", ": readers of
    // these files expect the trailing separator.
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        const SZOSXYPlotLine *line = it.value();
        std::fprintf(file, "%s, ", it.key().toLocal8Bit().constData());
        std::fprintf(file, "\n");
        std::fprintf(file, "X Values, Y Values, ");
        if (line->nXErrors > 0) {
            std::fprintf(file, "X Errors, ");
        }
        if (line->nYErrors > 0) {
            std::fprintf(file, "Y Errors, ");
        }
        std::fprintf(file, "\n");
        for (int i = 0; i < line->nPoints; ++i) {
            std::fprintf(file, "%lg, %lg, ", line->x[i], line->y[i]);
            if (i < line->nXErrors) {
                std::fprintf(file, "%lg, ", line->xErrors[i]);
            }
            if (i < line->nYErrors) {
                std::fprintf(file, "%lg, ", line->yErrors[i]);
            }
            std::fprintf(file, "\n");
        }
        std::fprintf(file, "\n");
    }
    return std::fclose(file) == 0;
}
