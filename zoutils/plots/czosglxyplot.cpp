#include "czosglxyplot.h"

#include "czosplotpainter.h"

#include <QActionGroup>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

CZOSGLXYPlot::CZOSGLXYPlot(QWidget *parent, const char *name)
    : QGLWidget(parent)
    , CZOSPlotCore(EZOSPlotLayout::Margins)
    , m_oInteraction(this, this)
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    // paintGL clears the frame itself; a filling background would make the
    // text painter wipe the GL picture when it begins.
    setAutoFillBackground(false);
    connect(m_oInteraction.displayModeGroup(), &QActionGroup::triggered, this,
            &CZOSGLXYPlot::onDisplayPopupActivated);
    m_oInteraction.addViewEntries();
}

CZOSGLXYPlot::~CZOSGLXYPlot() = default;

bool CZOSGLXYPlot::addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                               const QVector<double> &xErrors, const QVector<double> &yErrors,
                               const DISPLAY_SETTINGS *settings)
{
    return insertLine(name, x, y, xErrors, yErrors, settings);
}

bool CZOSGLXYPlot::exportPlot(const QString &path, const QSize &size) const
{
    return m_oInteraction.exportPlot(path, size);
}

// ---- drawing -------------------------------------------------------------------

void CZOSGLXYPlot::initializeGL()
{
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
}

void CZOSGLXYPlot::resizeGL(int w, int h)
{
    prepare(w, h);
    update();
}

void CZOSGLXYPlot::vertex(double x, double y) const
{
    double nx = 0.0;
    double ny = 0.0;
    getNormalizedCoords(x, y, nx, ny);
    glVertex2d(nx, ny);
}

void CZOSGLXYPlot::createOrthosettings()
{
    glViewport(0, 0, plotWidth(), plotHeight());
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // Vertices arrive as fractions of the window (getNormalizedCoords), so the
    // window's limits divided by its extent become 0 and 1 here.
    double left = 0.0;
    double right = 1.0;
    double bottom = 0.0;
    double top = 1.0;
    if (isXAxisReversed()) {
        std::swap(left, right);
    }
    if (isYAxisReversed()) {
        std::swap(bottom, top);
    }
    glOrtho(left, right, bottom, top, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void CZOSGLXYPlot::paintGL()
{
    prepare(width(), height());
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
    m_lastStripSizes.clear();
    if (!isEmpty() && !isDrawable()) {
        glFlush();
        return;
    }
    if (isDrawable()) {
        glLineWidth(1.0f);
        drawAxes();
        // A zoomed view cuts through the data; the automatic one holds it all.
        if (isZoomed()) {
            const QRect a = plotArea();
            glEnable(GL_SCISSOR_TEST);
            glScissor(a.left(), height() - a.top() - a.height() - 1, a.width() + 1, a.height() + 1);
        }
        drawPlotCurves();
        glDisable(GL_SCISSOR_TEST);
    }
    // Texts and the legend go over the GL picture in one painter pass. The
    // painter must not swap buffers: the frame is swapped (or grabbed) after paintGL.
    const bool autoSwap = autoBufferSwap();
    setAutoBufferSwap(false);
    QPainter painter(this);
    painter.setFont(getFont());
    if (isEmpty()) {
        const QFontMetrics &fm = plotFontMetrics();
        const QString text = QStringLiteral("No data available");
        painter.setPen(Qt::red);
        painter.drawText((width() - fm.horizontalAdvance(text)) / 2, (height() + fm.ascent()) / 2, text);
    } else {
        CZOSPlotPainter::drawTexts(painter, *this);
        if (isLegendShown()) {
            CZOSPlotPainter::drawLegend(painter, *this);
        }
    }
    painter.end();
    setAutoBufferSwap(autoSwap);
    glFlush();
}

void CZOSGLXYPlot::drawAxes()
{
    // The axes run along the plot area's left and bottom edges as seen on screen.
    const double axisX = isXAxisReversed() ? m_dXDisplayMax : m_dXDisplayMin;
    const double axisY = isYAxisReversed() ? m_dYDisplayMax : m_dYDisplayMin;
    const QRectF window = getOrthoWindow();
    const double pixelX = window.width() / std::max(plotWidth(), 1);
    const double pixelY = window.height() / std::max(plotHeight(), 1);
    const double down = isYAxisReversed() ? 7 * pixelY : -7 * pixelY;
    const double leftwards = isXAxisReversed() ? 7 * pixelX : -7 * pixelX;
    glColor3f(0.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    vertex(m_dXDisplayMin, axisY);
    vertex(m_dXDisplayMax, axisY);
    vertex(axisX, m_dYDisplayMin);
    vertex(axisX, m_dYDisplayMax);
    for (double v : xLabelValues()) {
        vertex(v, axisY);
        vertex(v, axisY + down);
    }
    for (double v : yLabelValues()) {
        vertex(axisX, v);
        vertex(axisX + leftwards, v);
    }
    glEnd();
}

void CZOSGLXYPlot::drawPoints(const SZOSPlotLine &line)
{
    const DISPLAY_SETTINGS &s = line.settings;
    const QColor c = s.usePointColor ? s.pointColor : s.lineColor;
    glColor4f(c.redF(), c.greenF(), c.blueF(), c.alphaF());
    const int size = std::max(1, s.pointSize);
    if (s.pointStyle == EPS_PLUS || s.pointStyle == EPS_CROSS) {
        // A plus spans the point size; a cross is an 8-pixel square's diagonals.
        const QRectF window = getOrthoWindow();
        const double half = s.pointStyle == EPS_PLUS ? size / 2.0 : 4.0;
        const double hx = half * window.width() / std::max(plotWidth(), 1);
        const double hy = half * window.height() / std::max(plotHeight(), 1);
        glBegin(GL_LINES);
        for (int i = 0; i < line.nPoints; ++i) {
            const double x = line.x[i];
            const double y = line.y[i];
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
        return;
    }
    if (s.pointStyle == EPS_ROUND) {
        glEnable(GL_POINT_SMOOTH);
    } else {
        glDisable(GL_POINT_SMOOTH);
    }
    glPointSize(float(size));
    glBegin(GL_POINTS);
    for (int i = 0; i < line.nPoints; ++i) {
        if (std::isfinite(line.x[i]) && std::isfinite(line.y[i])) {
            vertex(line.x[i], line.y[i]);
        }
    }
    glEnd();
    glDisable(GL_POINT_SMOOTH);
}

void CZOSGLXYPlot::drawPlotCurves()
{
    const double w = std::max(plotWidth(), 1);
    const double h = std::max(plotHeight(), 1);
    const bool xReversed = isXAxisReversed();
    const bool yReversed = isYAxisReversed();
    QVector<float> vertices;
    QVector<int> sizes;
    for (const SZOSPlotLine *line : qAsConst(m_lines)) {
        const DISPLAY_SETTINGS &s = line->settings;
        if (s.displayMode == EDM_POINTS || s.displayMode == EDM_POINTS_AND_LINES) {
            drawPoints(*line);
        }
        if (s.displayMode != EDM_LINES && s.displayMode != EDM_POINTS_AND_LINES && s.displayMode != EDM_STAIRCASE) {
            continue;
        }
        vertices.clear();
        sizes.clear();
        int stripStart = 0;
        forEachStripVertex(
            *line,
            [&](double x, double y) {
                // Pixel centres, as the painted plot: the points of one column
                // stack exactly, so the reduced strip lights the same pixels.
                double nx = 0.0;
                double ny = 0.0;
                getNormalizedCoords(x, y, nx, ny);
                const double ux = xReversed ? 1.0 - nx : nx;
                const double uy = yReversed ? 1.0 - ny : ny;
                const double sx = (std::floor(std::clamp(ux * w, -1e7, 1e7)) + 0.5) / w;
                const double sy = (std::floor(std::clamp(uy * h, -1e7, 1e7)) + 0.5) / h;
                vertices.append(float(xReversed ? 1.0 - sx : sx));
                vertices.append(float(yReversed ? 1.0 - sy : sy));
            },
            [&]() {
                sizes.append((vertices.size() - stripStart) / 2);
                stripStart = vertices.size();
            });
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
    // Error bars last, in red whatever the line colours.
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    for (const SZOSPlotLine *line : qAsConst(m_lines)) {
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
    setDisplayModeOfAllLines(CZOSPlotInteraction::displayModeOf(action));
}

void CZOSGLXYPlot::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        m_oInteraction.menu()->popup(event->globalPos());
    } else if (!m_oInteraction.mousePress(event)) {
        QGLWidget::mousePressEvent(event);
    }
}

void CZOSGLXYPlot::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_oInteraction.mouseMove(event)) {
        QGLWidget::mouseMoveEvent(event);
    }
}

void CZOSGLXYPlot::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_oInteraction.mouseRelease(event)) {
        QGLWidget::mouseReleaseEvent(event);
    }
}

void CZOSGLXYPlot::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!m_oInteraction.mouseDoubleClick(event)) {
        QGLWidget::mouseDoubleClickEvent(event);
    }
}

void CZOSGLXYPlot::wheelEvent(QWheelEvent *event) { m_oInteraction.wheel(event); }
