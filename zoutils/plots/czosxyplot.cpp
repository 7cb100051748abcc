#include "czosxyplot.h"

#include "czosplotpainter.h"

#include <QAction>
#include <QActionGroup>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <cmath>

CZOSXYPlot::CZOSXYPlot(QWidget *parent, const char *name)
    : QWidget(parent)
    , CZOSPlotCore(EZOSPlotLayout::Inset)
    , m_oInteraction(this, this)
{
    if (name) {
        setObjectName(QString::fromLatin1(name));
    }
    connect(m_oInteraction.displayModeGroup(), &QActionGroup::triggered, this, &CZOSXYPlot::onDisplayPopupActivated);

    m_pGridMenu = m_oInteraction.menu()->addMenu(QStringLiteral("Display Grid Lines"));
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
    m_oInteraction.addViewEntries();

    connect(this, &CZOSXYPlot::normalizedPosXChanged, this, &CZOSXYPlot::valueOnPlotXAxisChanged);
    connect(this, &CZOSXYPlot::normalizedPosYChanged, this, &CZOSXYPlot::valueOnPlotYAxisChanged);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

CZOSXYPlot::~CZOSXYPlot() = default;

bool CZOSXYPlot::addDataLine(const QString &name, const QVector<double> &x, const QVector<double> &y,
                             const QVector<double> &xErrors, const QVector<double> &yErrors,
                             const QStringList &labels, const QStringList &angles, const QStringList &notes)
{
    return insertLine(name, x, y, xErrors, yErrors, nullptr, labels, angles, notes);
}

void CZOSXYPlot::setGridType(int type)
{
    CZOSPlotCore::setGridType(type);
    const QList<QAction *> actions = m_pGridGroup->actions();
    if (getGridType() < actions.size()) {
        actions.at(getGridType())->setChecked(true);
    }
}

bool CZOSXYPlot::exportPlot(const QString &path, const QSize &size) const
{
    return m_oInteraction.exportPlot(path, size);
}

// ---- painting ----------------------------------------------------------------

void CZOSXYPlot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    CZOSPlotPainter::paint(painter, *this, width(), height(), Qt::white);
}

QImage CZOSXYPlot::getPrintImage() { return m_oInteraction.renderImage(size()); }

// ---- menu and mouse ------------------------------------------------------------

void CZOSXYPlot::onDisplayPopupActivated(QAction *action)
{
    setDisplayModeOfAllLines(CZOSPlotInteraction::displayModeOf(action));
}

void CZOSXYPlot::onGridTypeSubMenuTriggered(QAction *action)
{
    const QString text = action ? action->text() : QString();
    const QStringList names{QStringLiteral("None"), QStringLiteral("Vertical"), QStringLiteral("Horizontal"),
                            QStringLiteral("Both")};
    const int type = names.indexOf(text);
    if (type >= 0) {
        CZOSPlotCore::setGridType(type);
    }
}

void CZOSXYPlot::valueOnPlotXAxisChanged(double position)
{
    ensureLayout();
    m_dReferenceLinePosX = position;
    emit actualPlotXValueChanged(m_dXDisplayMin + std::fabs(m_dXDisplayMax - m_dXDisplayMin) * position);
    update();
}

void CZOSXYPlot::valueOnPlotYAxisChanged(double position)
{
    ensureLayout();
    m_dReferenceLinePosY = position;
    emit actualPlotYValueChanged(m_dYDisplayMin + std::fabs(m_dYDisplayMax - m_dYDisplayMin) * position);
    update();
}

void CZOSXYPlot::emitNormalizedPosition(const QPoint &pos)
{
    double nx = 0.0;
    double ny = 0.0;
    convertWindowToNormalizedCoords(pos.x(), pos.y(), nx, ny);
    emit normalizedPosXChanged(nx);
    emit normalizedPosYChanged(ny);
}

void CZOSXYPlot::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        m_oInteraction.menu()->popup(event->globalPos());
        return;
    }
    if (m_oInteraction.mousePress(event)) {
        return;
    }
    if (event->button() == Qt::LeftButton && getWindowPosWithinPlotLimits(event->x(), event->y())) {
        m_bDragging = true;
        emitNormalizedPosition(event->pos());
    }
}

void CZOSXYPlot::mouseMoveEvent(QMouseEvent *event)
{
    if (QToolTip::isVisible()) {
        QToolTip::hideText();
    }
    if (m_oInteraction.mouseMove(event)) {
        return;
    }
    if (m_bDragging && getWindowPosWithinPlotLimits(event->x(), event->y())) {
        emitNormalizedPosition(event->pos());
    }
}

void CZOSXYPlot::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_oInteraction.mouseRelease(event)) {
        return;
    }
    if (event->button() == Qt::LeftButton) {
        m_bDragging = false;
    }
}

void CZOSXYPlot::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_bDragging = false;
    if (!m_oInteraction.mouseDoubleClick(event)) {
        QWidget::mouseDoubleClickEvent(event);
    }
}

void CZOSXYPlot::wheelEvent(QWheelEvent *event) { m_oInteraction.wheel(event); }

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
