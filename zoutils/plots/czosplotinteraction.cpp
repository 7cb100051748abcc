#include "czosplotinteraction.h"
#include "czosavefile.h"

#include "czoslog.h"
#include "czosplotcore.h"
#include "czosplotpainter.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QImageWriter>
#include <QMenu>
#include <QMouseEvent>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QRubberBand>
#include <QSpinBox>
#include <QSvgGenerator>
#include <QWheelEvent>

#include <cmath>

namespace {

// One wheel notch (120 units) zooms in or out by this factor.
const double WheelZoom = 0.8;
// Exports are drawn in window pixels; vector formats take the screen's
// resolution so that texts keep the size the layout measured them at.
int screenDpi(const QWidget *widget) { return std::max(1, widget->logicalDpiX()); }

// The size of an export, asked from the user; an invalid size when cancelled.
QSize askSize(QWidget *parent, const QSize &initial)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Export Size"));
    auto *form = new QFormLayout(&dialog);
    QSpinBox *spins[2] = {new QSpinBox(&dialog), new QSpinBox(&dialog)};
    const int values[2] = {initial.width(), initial.height()};
    const QString names[2] = {QStringLiteral("Width (pixels):"), QStringLiteral("Height (pixels):")};
    for (int i = 0; i < 2; ++i) {
        spins[i]->setRange(16, 20000);
        spins[i]->setValue(values[i]);
        form->addRow(names[i], spins[i]);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    form->addRow(buttons);
    return dialog.exec() == QDialog::Accepted ? QSize(spins[0]->value(), spins[1]->value()) : QSize();
}

} // namespace

CZOSPlotInteraction::CZOSPlotInteraction(QWidget *widget, CZOSPlotCore *core)
    : m_pWidget(widget)
    , m_pCore(core)
    , m_pMenu(new QMenu(widget))
    , m_pDisplayModeGroup(new QActionGroup(widget))
{
    m_pDisplayModeGroup->setExclusive(true);
    const QStringList modes{QStringLiteral("Points"), QStringLiteral("Lines"), QStringLiteral("Points and Lines")};
    for (int i = 0; i < modes.size(); ++i) {
        QAction *action = m_pMenu->addAction(modes.at(i));
        action->setCheckable(true);
        action->setChecked(i == EDM_LINES);
        m_pDisplayModeGroup->addAction(action);
        m_pMenu->addSeparator();
    }
}

int CZOSPlotInteraction::displayModeOf(const QAction *action)
{
    const QString text = action ? action->text() : QString();
    if (text == QLatin1String("Lines")) {
        return EDM_LINES;
    }
    return text == QLatin1String("Points and Lines") ? EDM_POINTS_AND_LINES : EDM_POINTS;
}

void CZOSPlotInteraction::addViewEntries()
{
    m_pMenu->addSeparator();
    QObject::connect(m_pMenu->addAction(QStringLiteral("Restore Automatic Range")), &QAction::triggered, m_pWidget,
                     [this]() { m_pCore->restoreAutoRange(); });
    const QString formats[3][2] = {{QStringLiteral("png"), QStringLiteral("PNG images (*.png)")},
                                   {QStringLiteral("svg"), QStringLiteral("SVG drawings (*.svg)")},
                                   {QStringLiteral("pdf"), QStringLiteral("PDF documents (*.pdf)")}};
    for (const auto &format : formats) {
        const QString suffix = format[0];
        const QString filter = format[1];
        QAction *action = m_pMenu->addAction(QStringLiteral("Export as %1...").arg(suffix.toUpper()));
        QObject::connect(action, &QAction::triggered, m_pWidget,
                         [this, suffix, filter]() { exportFromMenu(suffix, filter); });
    }
    QObject::connect(m_pMenu->addAction(QStringLiteral("Copy to Clipboard")), &QAction::triggered, m_pWidget,
                     [this]() { copyToClipboard(QSize()); });
}

void CZOSPlotInteraction::exportFromMenu(const QString &suffix, const QString &filter)
{
    QString path = QFileDialog::getSaveFileName(m_pWidget, QStringLiteral("Export Plot"),
                                                QStringLiteral("plot.") + suffix, filter);
    if (path.isEmpty()) {
        return;
    }
    if (QFileInfo(path).suffix().isEmpty()) {
        path += QLatin1Char('.') + suffix;
    }
    const QSize size = askSize(m_pWidget, exportSize(QSize()));
    if (size.isValid()) {
        exportPlot(path, size);
    }
}

// ---- mouse -------------------------------------------------------------------------

bool CZOSPlotInteraction::mousePress(QMouseEvent *event)
{
    const Qt::KeyboardModifiers mods = event->modifiers();
    if (event->button() == Qt::LeftButton && (mods & Qt::ShiftModifier)) {
        m_oBandStart = event->pos();
        if (!m_pRubberBand) {
            m_pRubberBand = new QRubberBand(QRubberBand::Rectangle, m_pWidget);
        }
        m_pRubberBand->setGeometry(QRect(m_oBandStart, QSize()));
        m_pRubberBand->show();
        m_bBanding = true;
        return true;
    }
    if (event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && (mods & Qt::ControlModifier))) {
        m_bPanning = true;
        m_oPanLast = event->pos();
        m_pWidget->setCursor(Qt::ClosedHandCursor);
        return true;
    }
    return false;
}

bool CZOSPlotInteraction::mouseMove(QMouseEvent *event)
{
    if (m_bBanding) {
        m_pRubberBand->setGeometry(QRect(m_oBandStart, event->pos()).normalized());
        return true;
    }
    if (m_bPanning) {
        m_pCore->panBy(m_oPanLast, event->pos());
        m_oPanLast = event->pos();
        return true;
    }
    return false;
}

bool CZOSPlotInteraction::mouseRelease(QMouseEvent *event)
{
    if (m_bBanding) {
        m_bBanding = false;
        m_pRubberBand->hide();
        m_pCore->zoomToRect(QRectF(m_oBandStart, event->pos()));
        return true;
    }
    if (m_bPanning) {
        m_bPanning = false;
        m_pWidget->unsetCursor();
        return true;
    }
    return false;
}

bool CZOSPlotInteraction::mouseDoubleClick(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        return false;
    }
    m_pCore->restoreAutoRange();
    return true;
}

void CZOSPlotInteraction::wheel(QWheelEvent *event)
{
    const int delta = event->angleDelta().y();
    if (delta != 0) {
        m_pCore->zoomAt(event->position(), std::pow(WheelZoom, delta / 120.0));
    }
    event->accept();
}

// ---- exports -------------------------------------------------------------------------

QSize CZOSPlotInteraction::exportSize(const QSize &size) const
{
    return size.isValid() && !size.isEmpty() ? size : m_pWidget->size().expandedTo(QSize(1, 1));
}

QColor CZOSPlotInteraction::exportBackground() const
{
    // The painted plot is white; the GL plot clears to its widget's background.
    if (m_pCore->layoutKind() == EZOSPlotLayout::Inset) {
        return Qt::white;
    }
    return m_pWidget->palette().color(m_pWidget->backgroundRole());
}

QImage CZOSPlotInteraction::renderImage(const QSize &size) const
{
    const QSize s = exportSize(size);
    const QColor background = exportBackground();
    QImage image(s, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    CZOSPlotPainter::paint(painter, *m_pCore, s.width(), s.height(), background);
    return image;
}

bool CZOSPlotInteraction::exportPlot(const QString &path, const QSize &size) const
{
    const QSize s = exportSize(size);
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QColor background = exportBackground();
    // Written beside the target and renamed over it, so a failed export
    // leaves an older file whole.
    CZOSaveFile file(path);
    bool ok = file.open();
    const auto paintOn = [&](QPaintDevice *device) {
        QPainter painter;
        if (!painter.begin(device)) {
            return false;
        }
        CZOSPlotPainter::paint(painter, *m_pCore, s.width(), s.height(), background);
        return painter.end();
    };
    if (ok && suffix == QLatin1String("svg")) {
        QSvgGenerator svg;
        svg.setOutputDevice(file.device());
        svg.setSize(s);
        svg.setViewBox(QRect(QPoint(0, 0), s));
        svg.setResolution(screenDpi(m_pWidget));
        svg.setTitle(m_pCore->getTitle());
        ok = paintOn(&svg);
    } else if (ok && suffix == QLatin1String("pdf")) {
        QPdfWriter pdf(file.device());
        const int dpi = screenDpi(m_pWidget);
        pdf.setResolution(dpi);
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        pdf.setPageSize(QPageSize(QSizeF(s.width() * 72.0 / dpi, s.height() * 72.0 / dpi), QPageSize::Point,
                                  QString(), QPageSize::ExactMatch));
        pdf.setTitle(m_pCore->getTitle());
        ok = paintOn(&pdf);
    } else if (ok) {
        const QByteArray format = suffix.toLatin1();
        ok = QImageWriter::supportedImageFormats().contains(format)
            && renderImage(s).save(file.device(), format.constData());
    }
    ok = ok && file.commit();
    if (!ok) {
        ZOS_LOG(QStringLiteral("Unable to export the plot to %1: %2").arg(path, file.errorString()), ZOS_LOG_ERROR);
    }
    return ok;
}

void CZOSPlotInteraction::copyToClipboard(const QSize &size) const
{
    if (QClipboard *clipboard = QGuiApplication::clipboard()) {
        clipboard->setImage(renderImage(size));
    }
}
