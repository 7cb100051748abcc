// Where the core meets its users: window and data coordinates, read-outs,
// tool tips and the data files.
#include "czosplotcore.h"

#include "czoslog.h"

#include <algorithm>
#include <cmath>

namespace {

const int M = ZOS_PLOT_MARGIN;

FILE *openPlotFile(const char *path, const char *mode)
{
    FILE *file = path ? std::fopen(path, mode) : nullptr;
    if (!file) {
        ZOS_LOG(QString::asprintf("Unable to open file\n File:%s\n for saving plot data.", path ? path : ""),
                ZOS_LOG_ERROR);
    }
    return file;
}

} // namespace

// ---- coordinates -------------------------------------------------------------
// The painted plot maps over its plot area (qRound); the GL plot through its
// orthographic window (rounded half away from zero), as its vertices travel.

void CZOSPlotCore::getNormalizedCoords(double x, double y, double &nx, double &ny) const
{
    // Offsets from the window corner keep float precision for data far from
    // zero (1e9 + 0.5 would not survive as a GL float).
    const double w = m_dRight - m_dLeft;
    const double h = m_dTop - m_dBottom;
    nx = w != 0.0 ? (x - m_dLeft) / w : 0.0;
    ny = h != 0.0 ? (y - m_dBottom) / h : 0.0;
}

QPoint CZOSPlotCore::windowPoint(double x, double y) const
{
    if (m_eLayout == EZOSPlotLayout::Inset) {
        return QPoint(int(std::lround(xMap().toPixel(x))), int(std::lround(yMap().toPixel(y))));
    }
    double nx = 0.0;
    double ny = 0.0;
    getNormalizedCoords(x, y, nx, ny);
    if (m_bXAxisReversed) {
        nx = 1.0 - nx;
    }
    if (m_bYAxisReversed) {
        ny = 1.0 - ny;
    }
    return QPoint(int(std::lround(std::clamp(nx * m_nWidth, -1e9, 1e9))),
                  int(std::lround(std::clamp(m_nHeight - ny * m_nHeight, -1e9, 1e9))));
}

void CZOSPlotCore::convertObjectToWindowCoords(double x, double y, int &wx, int &wy)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        wx = qRound(xMap().toPixel(x));
        wy = qRound(yMap().toPixel(y));
        return;
    }
    const QPoint p = windowPoint(x, y);
    wx = p.x();
    wy = p.y();
}

void CZOSPlotCore::convertWindowToObjectCoords(int wx, int wy, double &x, double &y)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        x = xMap().toData(wx);
        y = yMap().toData(wy);
        return;
    }
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

int CZOSPlotCore::convertObjectToWindowWidth(double w)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        return qRound(std::fabs(w * xMap().pixelsPerUnit()));
    }
    const double span = m_dRight - m_dLeft;
    return span != 0.0 ? int(std::lround(std::fabs(w / span * m_nWidth))) : 0;
}

int CZOSPlotCore::convertObjectToWindowHeight(double h)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        return qRound(std::fabs(h * yMap().pixelsPerUnit()));
    }
    const double span = m_dTop - m_dBottom;
    return span != 0.0 ? int(std::lround(std::fabs(h / span * m_nHeight))) : 0;
}

void CZOSPlotCore::convertObjectToWindowSize(double w, double h, int &wWidth, int &wHeight)
{
    wWidth = convertObjectToWindowWidth(w);
    wHeight = convertObjectToWindowHeight(h);
}

double CZOSPlotCore::convertWindowToObjectWidth(int w)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        const double s = xMap().pixelsPerUnit();
        return s != 0.0 ? std::fabs(w / s) : 0.0;
    }
    return m_nWidth ? std::fabs(double(w) * (m_dRight - m_dLeft) / m_nWidth) : 0.0;
}

double CZOSPlotCore::convertWindowToObjectHeight(int h)
{
    ensureLayout();
    if (m_eLayout == EZOSPlotLayout::Inset) {
        const double s = yMap().pixelsPerUnit();
        return s != 0.0 ? std::fabs(h / s) : 0.0;
    }
    return m_nHeight ? std::fabs(double(h) * (m_dTop - m_dBottom) / m_nHeight) : 0.0;
}

void CZOSPlotCore::convertWindowToObjectSize(int wWidth, int wHeight, double &w, double &h)
{
    w = convertWindowToObjectWidth(wWidth);
    h = convertWindowToObjectHeight(wHeight);
}

void CZOSPlotCore::convertObjectToNormalizedCoords(double x, double y, double &nx, double &ny)
{
    ensureLayout();
    const double xs = m_dXDisplayMax - m_dXDisplayMin;
    const double ys = m_dYDisplayMax - m_dYDisplayMin;
    nx = xs != 0.0 ? (x - m_dXDisplayMin) / xs : 0.0;
    ny = ys != 0.0 ? (y - m_dYDisplayMin) / ys : 0.0;
}

void CZOSPlotCore::convertNormalizedToObjectCoords(double nx, double ny, double &x, double &y)
{
    ensureLayout();
    x = m_dXDisplayMin + nx * (m_dXDisplayMax - m_dXDisplayMin);
    y = m_dYDisplayMin + ny * (m_dYDisplayMax - m_dYDisplayMin);
}

void CZOSPlotCore::convertWindowToNormalizedCoords(int wx, int wy, double &nx, double &ny) const
{
    const QSize size = plotWidgetSize();
    const int w = size.width() - 2 * M;
    const int h = size.height() - 2 * M;
    nx = w > 0 ? double(wx - M) / w : 0.0;
    ny = h > 0 ? double(size.height() - M - wy) / h : 0.0;
}

bool CZOSPlotCore::getWindowPosWithinPlotLimits(int x, int y) const
{
    const QSize size = plotWidgetSize();
    return x >= M && x <= size.width() - M && y >= M && y <= size.height() - M;
}

// ---- read-outs and tool tips ---------------------------------------------------------

void CZOSPlotCore::calculateQuvelPlotArea()
{
    if (m_sQuvelPlotArea.isEmpty()) {
        return;
    }
    m_sQuvelPlotArea = QStringLiteral("Total Area: ");
    if (m_lines.size() != 1) {
        return;
    }
    const SZOSPlotLine *line = m_lines.constBegin().value();
    const double area = zosQuvelArea(line->x.constData(), line->y.constData(), line->nPoints);
    m_sQuvelPlotArea += QString::number(area, 'g', 6) + QStringLiteral(" ") + m_sQuvelYUnitType;
}

QString CZOSPlotCore::getPlotValueString() const
{
    const double xValue = m_dXDisplayMin + m_dReferenceLinePosX * (m_dXDisplayMax - m_dXDisplayMin);
    QString text = QStringLiteral("%1: %2").arg(m_sXAxisLabel).arg(xValue, 0, 'f', 2);
    if (m_bReferenceLineY && m_dReferenceLinePosY >= 0.0 && m_dReferenceLinePosY <= 1.0) {
        const double yValue = m_dYDisplayMin + m_dReferenceLinePosY * (m_dYDisplayMax - m_dYDisplayMin);
        text += QStringLiteral("   %1: %2").arg(m_sYAxisLabel).arg(yValue, 0, 'f', 2);
    }
    return text;
}

QString CZOSPlotCore::toolTipTextAt(const QPoint &pos)
{
    ensureLayout();
    if (!m_bDrawable) {
        return QString();
    }
    const double x = zosToolTipPointX(m_dXDisplayMin, m_dXDisplayMax, m_nWidth, pos.x());
    const double y = zosToolTipPointY(m_dYDisplayMin, m_dYDisplayMax, m_nHeight, pos.y());
    const double xTol = zosToolTipTolerance(m_dXDisplayMin, m_dXDisplayMax, m_nWidth);
    const double yTol = zosToolTipTolerance(m_dYDisplayMin, m_dYDisplayMax, m_nHeight);
    for (const SZOSPlotLine *line : qAsConst(m_lines)) {
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

// ---- data files -------------------------------------------------------------------

bool CZOSPlotCore::saveCommaSeparated(const char *path)
{
    FILE *file = openPlotFile(path, "w");
    if (!file) {
        return false;
    }
    // Every field, the last of a row included, is followed by ", ": readers of
    // these files expect the trailing separator.
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        const SZOSPlotLine *line = it.value();
        std::fprintf(file, "%s, \n", it.key().toLocal8Bit().constData());
        std::fprintf(file, "X Values, Y Values, %s%s\n", line->nXErrors > 0 ? "X Errors, " : "",
                     line->nYErrors > 0 ? "Y Errors, " : "");
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

bool CZOSPlotCore::saveData(const char *path, bool append, char delimiter)
{
    FILE *file = openPlotFile(path, append ? "a" : "w");
    if (!file) {
        return false;
    }
    const bool ok = writeDataToFile(file, delimiter);
    return std::fclose(file) == 0 && ok;
}

bool CZOSPlotCore::writeDataToFile(FILE *file, char delimiter)
{
    if (!file) {
        return false;
    }
    const QByteArray title = m_sTitle.toLocal8Bit();
    for (auto it = m_lines.constBegin(); it != m_lines.constEnd(); ++it) {
        const SZOSPlotLine *line = it.value();
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
