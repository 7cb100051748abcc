#include "czosglxyplot.h"

#include "czoslog.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

bool worthReducing(int points, int columns) { return points > 4 * std::max(columns, 1) + 16; }

} // namespace

CZOSGLXYPlot::CZOSGLXYPlot(QWidget *parent, const char *name)
    : QGLWidget(parent)
    , m_oFont(QStringLiteral("Times"), 9, 25, false)
    , m_oFontMetrics(m_oFont)
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    // paintGL clears the frame itself; a filling background would make the
    // text painter wipe the GL picture when it begins.
    setAutoFillBackground(false);
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
    connect(m_pDisplayModeGroup, &QActionGroup::triggered, this, &CZOSGLXYPlot::onDisplayPopupActivated);
}

CZOSGLXYPlot::~CZOSGLXYPlot() { ZOSPlotLines::deleteAll(m_lines); }

// ---- data ----------------------------------------------------------------

bool CZOSGLXYPlot::addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                               const QVector<double> &xErrors, const QVector<double> &yErrors,
                               const DISPLAY_SETTINGS *settings)
{
    if (x.isEmpty() || x.size() != y.size()) {
        ZOS_LOG(QStringLiteral("Plot line '%1' not added: %2 X values and %3 Y values.")
                    .arg(name)
                    .arg(x.size())
                    .arg(y.size()),
                ZOS_LOG_WARNING);
        return false;
    }
    auto *line = new SZOSGLXYPlotLine;
    line->setPoints(x, y, xErrors, yErrors);
    ZOSPlotLines::insert(m_lines, name, line, settings, m_nCurrentDisplayMode);
    invalidate();
    return true;
}

bool CZOSGLXYPlot::removeDataLine(const QString &name)
{
    if (!ZOSPlotLines::remove(m_lines, name))
        return false;
    invalidate();
    return true;
}

bool CZOSGLXYPlot::removeXErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, true))
        return false;
    invalidate();
    return true;
}

bool CZOSGLXYPlot::removeYErrorData(const QString &name)
{
    if (!ZOSPlotLines::clearErrors(m_lines, name, false))
        return false;
    invalidate();
    return true;
}

void CZOSGLXYPlot::clear()
{
    ZOSPlotLines::deleteAll(m_lines);
    invalidate();
}

bool CZOSGLXYPlot::getDisplaySettings(const QString &name, DISPLAY_SETTINGS &settings) const
{
    return ZOSPlotLines::getSettings(m_lines, name, settings);
}

bool CZOSGLXYPlot::setDisplaySettings(const QString &name, const DISPLAY_SETTINGS &settings)
{
    if (!ZOSPlotLines::setSettings(m_lines, name, settings))
        return false;
    update();
    return true;
}

// ---- appearance ------------------------------------------------------------

void CZOSGLXYPlot::setTitle(const QString &title)
{
    m_sTitle = title;
    update();
}

void CZOSGLXYPlot::setXAxisLabel(const QString &label)
{
    m_sXAxisLabel = label;
    invalidate(); // the low-padding bottom margin depends on it
}

void CZOSGLXYPlot::setYAxisLabel(const QString &label)
{
    m_sYAxisLabel = label;
    update();
}

void CZOSGLXYPlot::setFont(const QFont &font)
{
    m_oFont = font;
    m_oFontMetrics = QFontMetrics(m_oFont);
    invalidate();
}

void CZOSGLXYPlot::showLegend(bool show)
{
    m_bShowLegend = show;
    invalidate();
}

void CZOSGLXYPlot::setXAxisReversed(bool reversed)
{
    m_bXAxisReversed = reversed;
    update();
}

void CZOSGLXYPlot::setYAxisReversed(bool reversed)
{
    m_bYAxisReversed = reversed;
    update();
}

void CZOSGLXYPlot::setXAxisRangeStep(double step)
{
    m_dXAxisRangeStep = step;
    update();
}

void CZOSGLXYPlot::setBackwards(bool backwards)
{
    m_bBackwards = backwards;
    update();
}

void CZOSGLXYPlot::setLowMarginPadding(bool low)
{
    m_bLowMarginPadding = low;
    invalidate();
}

void CZOSGLXYPlot::setCurveReduction(bool on)
{
    m_bReduceCurves = on;
    update();
}

ZOSPlotMargins CZOSGLXYPlot::getMargins()
{
    ensureLayout();
    return m_oMargins;
}

QRectF CZOSGLXYPlot::getOrthoWindow()
{
    ensureLayout();
    return QRectF(m_dLeft, m_dBottom, m_dRight - m_dLeft, m_dTop - m_dBottom);
}

double CZOSGLXYPlot::getXDisplayMin()
{
    ensureLayout();
    return m_dXDisplayMin;
}

double CZOSGLXYPlot::getXDisplayMax()
{
    ensureLayout();
    return m_dXDisplayMax;
}

double CZOSGLXYPlot::getYDisplayMin()
{
    ensureLayout();
    return m_dYDisplayMin;
}

double CZOSGLXYPlot::getYDisplayMax()
{
    ensureLayout();
    return m_dYDisplayMax;
}

tagZOSDisplayRange CZOSGLXYPlot::getXRange()
{
    ensureLayout();
    return m_oXRange;
}

tagZOSDisplayRange CZOSGLXYPlot::getYRange()
{
    ensureLayout();
    return m_oYRange;
}

// ---- ranges, layout and coordinates ------------------------------------------

void CZOSGLXYPlot::invalidate()
{
    m_bLayoutDirty = true;
    update();
}

void CZOSGLXYPlot::ensureLayout()
{
    if (m_bLayoutDirty || m_nWidth != width() || m_nHeight != height()) {
        calculateLayout();
    }
}

bool CZOSGLXYPlot::determineRanges()
{
    m_bDrawable = false;
    if (m_lines.isEmpty()) {
        return false;
    }
    const SZOSGLXYPlotLine *first = m_lines.constBegin().value();
    if (first->x.isEmpty() || first->y.isEmpty()) {
        return false;
    }
    ZOSPlotExtent extent;
    for (const SZOSGLXYPlotLine *line : qAsConst(m_lines)) {
        extent = zosMergeExtents(extent, line->extent);
    }
    const ZOSPlotRanges r = zosDetermineRanges(extent, false);
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

void CZOSGLXYPlot::calculateLayout()
{
    m_nWidth = width();
    m_nHeight = height();
    m_bLayoutDirty = false;
    m_oMargins = ZOSPlotMargins();
    m_dLeft = 0.0;
    m_dBottom = 0.0;
    m_dRight = std::max(m_nWidth, 1);
    m_dTop = std::max(m_nHeight, 1);
    if (m_lines.isEmpty() || !determineRanges()) {
        return;
    }
    ZOSGLLayoutInput in;
    in.lowMarginPadding = m_bLowMarginPadding;
    in.legendShown = m_bShowLegend;
    in.xLabelEmpty = m_sXAxisLabel.isEmpty();
    in.fontAscent = m_oFontMetrics.ascent();
    in.fontDescent = m_oFontMetrics.descent();
    in.xExponent = m_oXRange.exponent;
    in.yExponent = m_oYRange.exponent;
    m_oMargins = zosGLMargins(in);
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

ZOSAxisMap CZOSGLXYPlot::xPixelMap() const
{
    return ZOSAxisMap(m_dLeft, m_dRight, m_bXAxisReversed, 0, m_nWidth);
}

void CZOSGLXYPlot::getNormalizedCoords(double x, double y, double &nx, double &ny) const
{
    // Offsets from the window corner keep float precision for data far from
    // zero (1e9 + 0.5 would not survive as a GL float).
    const double w = m_dRight - m_dLeft;
    const double h = m_dTop - m_dBottom;
    nx = w != 0.0 ? (x - m_dLeft) / w : 0.0;
    ny = h != 0.0 ? (y - m_dBottom) / h : 0.0;
}

void CZOSGLXYPlot::vertex(double x, double y) const
{
    double nx = 0.0;
    double ny = 0.0;
    getNormalizedCoords(x, y, nx, ny);
    glVertex2d(nx, ny);
}

void CZOSGLXYPlot::convertObjectToWindowCoords(double x, double y, int &wx, int &wy)
{
    ensureLayout();
    double nx = 0.0;
    double ny = 0.0;
    getNormalizedCoords(x, y, nx, ny);
    if (m_bXAxisReversed) {
        nx = 1.0 - nx;
    }
    if (m_bYAxisReversed) {
        ny = 1.0 - ny;
    }
    wx = int(std::lround(std::clamp(nx * m_nWidth, -1e9, 1e9)));
    wy = int(std::lround(std::clamp(m_nHeight - ny * m_nHeight, -1e9, 1e9)));
}

void CZOSGLXYPlot::convertWindowToObjectCoords(int wx, int wy, double &x, double &y)
{
    ensureLayout();
    double nx = m_nWidth ? double(wx) / m_nWidth : 0.0;
    double ny = m_nHeight ? double(m_nHeight - wy) / m_nHeight : 0.0;
    if (m_bXAxisReversed) {
        nx = 1.0 - nx;
    }
    if (m_bYAxisReversed) {
        ny = 1.0 - ny;
    }
    x = m_dLeft + nx * (m_dRight - m_dLeft);
    y = m_dBottom + ny * (m_dTop - m_dBottom);
}

int CZOSGLXYPlot::convertObjectToWindowWidth(double w)
{
    ensureLayout();
    const double span = m_dRight - m_dLeft;
    return span != 0.0 ? int(std::lround(std::fabs(w / span * m_nWidth))) : 0;
}

int CZOSGLXYPlot::convertObjectToWindowHeight(double h)
{
    ensureLayout();
    const double span = m_dTop - m_dBottom;
    return span != 0.0 ? int(std::lround(std::fabs(h / span * m_nHeight))) : 0;
}

void CZOSGLXYPlot::convertObjectToWindowSize(double w, double h, int &wWidth, int &wHeight)
{
    wWidth = convertObjectToWindowWidth(w);
    wHeight = convertObjectToWindowHeight(h);
}

double CZOSGLXYPlot::convertWindowToObjectWidth(int w)
{
    ensureLayout();
    return m_nWidth ? std::fabs(double(w) * (m_dRight - m_dLeft) / m_nWidth) : 0.0;
}

double CZOSGLXYPlot::convertWindowToObjectHeight(int h)
{
    ensureLayout();
    return m_nHeight ? std::fabs(double(h) * (m_dTop - m_dBottom) / m_nHeight) : 0.0;
}

void CZOSGLXYPlot::convertWindowToObjectSize(int wWidth, int wHeight, double &w, double &h)
{
    w = convertWindowToObjectWidth(wWidth);
    h = convertWindowToObjectHeight(wHeight);
}

// ---- drawing -------------------------------------------------------------------

void CZOSGLXYPlot::initializeGL()
{
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
}

void CZOSGLXYPlot::resizeGL(int w, int h)
{
    m_nWidth = w;
    m_nHeight = h;
    calculateLayout();
    update();
}

void CZOSGLXYPlot::createOrthosettings()
{
    glViewport(0, 0, m_nWidth, m_nHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // Vertices arrive as fractions of the window (getNormalizedCoords), so the
    // window's limits divided by its extent become 0 and 1 here.
    double left = 0.0;
    double right = 1.0;
    double bottom = 0.0;
    double top = 1.0;
    if (m_bXAxisReversed) {
        std::swap(left, right);
    }
    if (m_bYAxisReversed) {
        std::swap(bottom, top);
    }
    glOrtho(left, right, bottom, top, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void CZOSGLXYPlot::drawText(int x, int y, const QString &text, const QColor &color)
{
    m_texts.append({QPoint(x, y), text, color});
}

void CZOSGLXYPlot::paintGL()
{
    calculateLayout();
    createOrthosettings();
    const QColor background = palette().color(backgroundRole());
    glClearColor(background.red() / 255.0f, background.green() / 255.0f, background.blue() / 255.0f, 1.0f);
    glEnable(GL_DEPTH_TEST);
    // Everything lies at depth 0: with the default GL_LESS later drawing (the
    // red error bars over the lines) would lose to earlier drawing.
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_texts.clear();
    m_lastStripSizes.clear();

    if (m_lines.isEmpty()) {
        const QString text = QStringLiteral("No data available");
        drawText((m_nWidth - m_oFontMetrics.horizontalAdvance(text)) / 2, (m_nHeight + m_oFontMetrics.ascent()) / 2,
                 text, Qt::red);
    } else if (m_bDrawable) {
        glLineWidth(1.0f);
        drawTitle();
        drawAxes();
        drawPlotCurves();
    }

    // Texts and the legend go over the GL picture in one painter pass. The
    // painter must not swap buffers: the frame is swapped (or grabbed) after paintGL.
    if (!m_texts.isEmpty() || (m_bShowLegend && m_bDrawable)) {
        const bool autoSwap = autoBufferSwap();
        setAutoBufferSwap(false);
        QPainter painter(this);
        painter.setFont(m_oFont);
        for (const TextItem &item : qAsConst(m_texts)) {
            painter.setPen(item.color);
            painter.drawText(item.position, item.text);
        }
        if (m_bShowLegend && m_bDrawable) {
            drawLegend(painter);
        }
        painter.end();
        setAutoBufferSwap(autoSwap);
    }
    glFlush();
}

void CZOSGLXYPlot::drawTitle()
{
    if (m_sTitle.isEmpty()) {
        return;
    }
    drawText((m_nWidth - m_oFontMetrics.horizontalAdvance(m_sTitle)) / 2, m_oFontMetrics.ascent() + 2, m_sTitle);
}

void CZOSGLXYPlot::drawAxes()
{
    const QFontMetrics &fm = m_oFontMetrics;
    const int raise = fm.ascent() - fm.descent();
    // The axes run along the plot area's left and bottom edges as seen on screen.
    const double axisX = m_bXAxisReversed ? m_dXDisplayMax : m_dXDisplayMin;
    const double axisY = m_bYAxisReversed ? m_dYDisplayMax : m_dYDisplayMin;
    const double pixelX = (m_dRight - m_dLeft) / std::max(m_nWidth, 1);
    const double pixelY = (m_dTop - m_dBottom) / std::max(m_nHeight, 1);
    const double down = m_bYAxisReversed ? 7 * pixelY : -7 * pixelY;
    const double leftwards = m_bXAxisReversed ? 7 * pixelX : -7 * pixelX;

    const double xStep = zosLabelStep(m_dXDisplayMax - m_dXDisplayMin, m_nWidth,
                                      fm.horizontalAdvance(QStringLiteral("999999")), m_oXRange.tickStep,
                                      m_dXAxisRangeStep);
    const double yStep = zosLabelStep(m_dYDisplayMax - m_dYDisplayMin, m_nHeight, 5.0 * fm.height(),
                                      m_oYRange.tickStep);
    const QVector<double> xValues = zosLabelValues(m_dXDisplayMin, m_dXDisplayMax, xStep, m_bXAxisReversed);
    const QVector<double> yValues = zosLabelValues(m_dYDisplayMin, m_dYDisplayMax, yStep, m_bYAxisReversed);

    glColor3f(0.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    vertex(m_dXDisplayMin, axisY);
    vertex(m_dXDisplayMax, axisY);
    vertex(axisX, m_dYDisplayMin);
    vertex(axisX, m_dYDisplayMax);
    for (double v : xValues) {
        vertex(v, axisY);
        vertex(v, axisY + down);
    }
    for (double v : yValues) {
        vertex(axisX, v);
        vertex(axisX + leftwards, v);
    }
    glEnd();

    int wx = 0;
    int wy = 0;
    for (double v : xValues) {
        convertObjectToWindowCoords(v, axisY, wx, wy);
        const QString text = zosTickLabel(v, m_oXRange);
        drawText(wx - fm.horizontalAdvance(text) / 2, wy + 7 + fm.ascent(), text);
    }
    for (double v : yValues) {
        convertObjectToWindowCoords(axisX, v, wx, wy);
        const QString text = zosTickLabel(v, m_oYRange);
        drawText(wx - 9 - fm.horizontalAdvance(text), wy + raise / 2, text);
    }

    int originX = 0;
    int originY = 0;
    convertObjectToWindowCoords(axisX, axisY, originX, originY);
    int endX = 0;
    int topY = 0;
    convertObjectToWindowCoords(m_bXAxisReversed ? m_dXDisplayMin : m_dXDisplayMax,
                                m_bYAxisReversed ? m_dYDisplayMin : m_dYDisplayMax, endX, topY);
    const QString x10 = QStringLiteral("x10");
    const int x10Width = fm.horizontalAdvance(x10);
    if (zosUsesExponentFactor(m_oXRange.exponent)) {
        drawText(endX + 2, originY + 5, x10);
        drawText(endX + 2 + x10Width, originY + 5 - raise, QStringLiteral("%1").arg(m_oXRange.exponent));
    }
    if (zosUsesExponentFactor(m_oYRange.exponent)) {
        drawText(originX - x10Width, topY - 2 - raise, x10);
        drawText(originX, topY - 2 - 2 * raise, QStringLiteral("%1").arg(m_oYRange.exponent));
    }
    if (!m_sXAxisLabel.isEmpty()) {
        drawText((m_nWidth - fm.horizontalAdvance(m_sXAxisLabel)) / 2, m_nHeight - 2, m_sXAxisLabel);
    }
    if (!m_sYAxisLabel.isEmpty()) {
        drawText(originX + 5, topY - 2, m_sYAxisLabel);
    }
}

void CZOSGLXYPlot::buildStrips(const SZOSGLXYPlotLine &line, QVector<QVector<QPointF>> *dataStrips,
                               QVector<float> *vertices, QVector<int> *stripSizes)
{
    const bool staircase = line.settings.displayMode == EDM_STAIRCASE;
    const int columns = m_nWidth - m_oMargins.left - m_oMargins.right;
    const bool reduce = m_bReduceCurves && !staircase && worthReducing(line.nPoints, columns);
    QVector<int> indices;
    zosReducePolyline(line.x.constData(), line.y.constData(), line.nPoints, xPixelMap(), !m_bBackwards, reduce,
                      indices, line.sortedAndFinite);

    const double w = std::max(m_nWidth, 1);
    const double h = std::max(m_nHeight, 1);
    int stripStart = vertices ? vertices->size() : 0;
    QVector<QPointF> strip;
    auto put = [&](double x, double y) {
        if (dataStrips) {
            strip.append(QPointF(x, y));
        }
        if (vertices) {
            // Pixel centres, as the painted plot: the points of one column
            // stack exactly, so the reduced strip lights the same pixels.
            double nx = 0.0;
            double ny = 0.0;
            getNormalizedCoords(x, y, nx, ny);
            const double ux = m_bXAxisReversed ? 1.0 - nx : nx;
            const double uy = m_bYAxisReversed ? 1.0 - ny : ny;
            double sx = (std::floor(std::clamp(ux * w, -1e7, 1e7)) + 0.5) / w;
            double sy = (std::floor(std::clamp(uy * h, -1e7, 1e7)) + 0.5) / h;
            vertices->append(float(m_bXAxisReversed ? 1.0 - sx : sx));
            vertices->append(float(m_bYAxisReversed ? 1.0 - sy : sy));
        }
    };
    int previous = -1;
    for (int i : qAsConst(indices)) {
        if (i >= 0) {
            if (staircase && previous >= 0) {
                put(line.x[i], line.y[previous]); // the step: next x, this y
            }
            put(line.x[i], line.y[i]);
            previous = i;
            continue;
        }
        previous = -1;
        if (dataStrips) {
            dataStrips->append(strip);
            strip.clear();
        }
        if (vertices) {
            const int n = (vertices->size() - stripStart) / 2;
            if (stripSizes) {
                stripSizes->append(n);
            }
            stripStart = vertices->size();
        }
    }
}

QVector<QVector<QPointF>> CZOSGLXYPlot::lineStrips(const QString &name)
{
    ensureLayout();
    QVector<QVector<QPointF>> strips;
    const SZOSGLXYPlotLine *line = m_lines.value(name);
    if (line) {
        buildStrips(*line, &strips, nullptr, nullptr);
    }
    return strips;
}

void CZOSGLXYPlot::drawPlotCurves()
{
    const double pixelX = (m_dRight - m_dLeft) / std::max(m_nWidth, 1);
    const double pixelY = (m_dTop - m_dBottom) / std::max(m_nHeight, 1);
    QVector<float> vertices;
    QVector<int> sizes;
    for (const SZOSGLXYPlotLine *line : qAsConst(m_lines)) {
        const DISPLAY_SETTINGS &s = line->settings;
        if (s.displayMode == EDM_POINTS || s.displayMode == EDM_POINTS_AND_LINES) {
            const QColor c = s.usePointColor ? s.pointColor : s.lineColor;
            glColor4f(c.redF(), c.greenF(), c.blueF(), c.alphaF());
            const int size = std::max(1, s.pointSize);
            if (s.pointStyle == EPS_PLUS || s.pointStyle == EPS_CROSS) {
                // A plus spans the point size; a cross is an 8-pixel square's diagonals.
                const double hx = (s.pointStyle == EPS_PLUS ? size / 2.0 : 4.0) * pixelX;
                const double hy = (s.pointStyle == EPS_PLUS ? size / 2.0 : 4.0) * pixelY;
                glBegin(GL_LINES);
                for (int i = 0; i < line->nPoints; ++i) {
                    const double x = line->x[i];
                    const double y = line->y[i];
                    if (!std::isfinite(x) || !std::isfinite(y)) {
                        continue;
                    }
                    if (s.pointStyle == EPS_PLUS) {
                        vertex(x - hx, y);
                        vertex(x + hx, y);
                        vertex(x, y - hy);
                        vertex(x, y + hy);
                    } else {
                        vertex(x - hx, y - hy);
                        vertex(x + hx, y + hy);
                        vertex(x - hx, y + hy);
                        vertex(x + hx, y - hy);
                    }
                }
                glEnd();
            } else {
                if (s.pointStyle == EPS_ROUND) {
                    glEnable(GL_POINT_SMOOTH);
                } else {
                    glDisable(GL_POINT_SMOOTH);
                }
                glPointSize(float(size));
                glBegin(GL_POINTS);
                for (int i = 0; i < line->nPoints; ++i) {
                    if (std::isfinite(line->x[i]) && std::isfinite(line->y[i])) {
                        vertex(line->x[i], line->y[i]);
                    }
                }
                glEnd();
                glDisable(GL_POINT_SMOOTH);
            }
        }
        if (s.displayMode == EDM_LINES || s.displayMode == EDM_POINTS_AND_LINES || s.displayMode == EDM_STAIRCASE) {
            vertices.clear();
            sizes.clear();
            buildStrips(*line, nullptr, &vertices, &sizes);
            m_lastStripSizes += sizes;
            glColor4f(s.lineColor.redF(), s.lineColor.greenF(), s.lineColor.blueF(), s.lineColor.alphaF());
            glLineWidth(float(std::max(1, s.lineWidth)));
            glEnableClientState(GL_VERTEX_ARRAY);
            glVertexPointer(2, GL_FLOAT, 0, vertices.constData());
            int first = 0;
            for (int n : qAsConst(sizes)) {
                if (n > 1) {
                    glDrawArrays(GL_LINE_STRIP, first, n);
                }
                first += n;
            }
            glDisableClientState(GL_VERTEX_ARRAY);
            glLineWidth(1.0f);
        }
    }
    // Error bars last, in red whatever the line colours.
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    for (const SZOSGLXYPlotLine *line : qAsConst(m_lines)) {
        for (int i = 0; i < line->nPoints; ++i) {
            const double x = line->x[i];
            const double y = line->y[i];
            if (!std::isfinite(x) || !std::isfinite(y)) {
                continue;
            }
            if (i < line->nXErrors && std::isfinite(line->xErrors[i])) {
                vertex(x - line->xErrors[i], y);
                vertex(x + line->xErrors[i], y);
            }
            if (i < line->nYErrors && std::isfinite(line->yErrors[i])) {
                vertex(x, y - line->yErrors[i]);
                vertex(x, y + line->yErrors[i]);
            }
        }
    }
    glEnd();
}

void CZOSGLXYPlot::drawLegend(QPainter &painter)
{
    int widest = 0;
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        widest = std::max(widest, m_oFontMetrics.horizontalAdvance(it.key()));
    }
    const int lineHeight = m_oFontMetrics.height();
    m_nLegendWidth = widest + 14;
    m_nLegendHeight = m_lines.size() * lineHeight + 4;
    const QRect box(m_nWidth - 3 - m_nLegendWidth, 3, m_nLegendWidth, m_nLegendHeight);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(box);
    painter.setBrush(Qt::NoBrush);
    int y = box.top() + 2;
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it, y += lineHeight) {
        painter.fillRect(box.left() + 3, y + (lineHeight - 8) / 2, 8, 8, it.value()->settings.lineColor);
        painter.setPen(Qt::black);
        painter.drawText(box.left() + 13, y + m_oFontMetrics.ascent(), it.key());
    }
}

QImage CZOSGLXYPlot::getPrintImage()
{
    if (!isValid() || width() < 1 || height() < 1) {
        return QImage();
    }
    if (!m_bSwapped) {
        // Mesa's software renderer sizes its surface on the first swap.
        updateGL();
        m_bSwapped = true;
    }
    makeCurrent();
    paintGL();
    glFinish();
    return grabFrameBuffer();
}

// ---- menu and mouse ------------------------------------------------------------

void CZOSGLXYPlot::onDisplayPopupActivated(QAction *action)
{
    const QString text = action ? action->text() : QString();
    int mode = EDM_POINTS;
    if (text == QLatin1String("Lines")) {
        mode = EDM_LINES;
    } else if (text == QLatin1String("Points and Lines")) {
        mode = EDM_POINTS_AND_LINES;
    }
    m_nCurrentDisplayMode = mode;
    for (SZOSGLXYPlotLine *line : qAsConst(m_lines)) {
        line->settings.displayMode = mode;
    }
    update();
}

void CZOSGLXYPlot::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        m_pPopupMenu->popup(event->globalPos());
        return;
    }
    QGLWidget::mousePressEvent(event);
}

// ---- data file -------------------------------------------------------------------

bool CZOSGLXYPlot::saveData(const char *path, bool append, char delimiter)
{
    FILE *file = path ? std::fopen(path, append ? "a" : "w") : nullptr;
    if (!file) {
        ZOS_LOG(QString::asprintf("Unable to open file\n File:%s\n for saving plot data.", path ? path : ""),
                ZOS_LOG_ERROR);
        return false;
    }
    const bool ok = writeDataToFile(file, delimiter);
    return std::fclose(file) == 0 && ok;
}

bool CZOSGLXYPlot::writeDataToFile(FILE *file, char delimiter)
{
    if (!file) {
        return false;
    }
    const QByteArray title = m_sTitle.toLocal8Bit();
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        const SZOSGLXYPlotLine *line = it.value();
        std::fprintf(file, "%s: %s", title.constData(), it.key().toLocal8Bit().constData());
        std::fprintf(file, "\nX Values%cY Values", delimiter);
        if (line->nXErrors > 0) {
            std::fprintf(file, "%cX Errors", delimiter);
        }
        if (line->nYErrors > 0) {
            std::fprintf(file, "%cY Errors", delimiter);
        }
        for (int i = 0; i < line->nPoints; ++i) {
            std::fprintf(file, "\n%lg%c%lg", line->x[i], delimiter, line->y[i]);
            if (i < line->nXErrors) {
                std::fprintf(file, "%c%lg", delimiter, line->xErrors[i]);
            }
            if (i < line->nYErrors) {
                std::fprintf(file, "%c%lg", delimiter, line->yErrors[i]);
            }
        }
        std::fprintf(file, "\n\n");
    }
    if (!m_lines.isEmpty()) {
        std::fprintf(file, "\n");
    }
    return true;
}
