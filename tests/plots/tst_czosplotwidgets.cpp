// The two plot widgets as a user drives them: menus, mouse zoom and pan,
// signals, exports and the GL picture. The arithmetic behind them is the
// core's test.
#include "answerer.h"
#include "czosglxyplot.h"
#include "czosxyplot.h"
#include "testfiles.h"

#include <QAction>
#include <QActionGroup>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {
using V = QVector<double>;

bool isBlue(QRgb c) { return qBlue(c) > 200 && qRed(c) < 80 && qGreen(c) < 80; }
bool isRed(QRgb c) { return qRed(c) > 200 && qGreen(c) < 80 && qBlue(c) < 80; }
bool isDark(QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; }

int countWhere(const QImage &image, const QRect &area, bool (*test)(QRgb))
{
    int n = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            n += test(image.pixel(x, y));
    return n;
}

// Either widget through one interface: the test rows name the kind.
struct Plot {
    std::unique_ptr<QWidget> widget;
    CZOSPlotCore *core = nullptr;
    std::function<bool(const QString &, const V &, const V &)> add;
    std::function<bool(const QString &, const QSize &)> exportPlot;
    std::function<void()> copy;
};

template <typename Widget>
Plot wrap(Widget *w)
{
    w->resize(400, 300);
    return {std::unique_ptr<QWidget>(w), w, [w](const QString &name, const V &x, const V &y) { return w->addDataLine(name, x, y); },
            [w](const QString &path, const QSize &size) { return w->exportPlot(path, size); },
            [w] { w->copyToClipboard(QSize(120, 90)); }};
}

Plot makePlot(const QString &kind)
{
    return kind == QLatin1String("painted") ? wrap(new CZOSXYPlot(nullptr, "painted"))
                                            : wrap(new CZOSGLXYPlot(nullptr, "gl"));
}

void send(QWidget *w, QEvent::Type type, Qt::MouseButton button, const QPoint &pos, Qt::KeyboardModifiers mods = {})
{
    // A move carries the button held down; without one, a widget that does not
    // track the mouse never sees it.
    QMouseEvent event(type, pos, w->mapToGlobal(pos), type == QEvent::MouseMove ? Qt::NoButton : button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : button, mods);
    QApplication::sendEvent(w, &event);
}
} // namespace

class TestPlotWidgets : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void initTestCase() { useDataRoot(m_dir.path()); }

    void kinds_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("painted") << "painted";
        QTest::newRow("gl") << "gl";
    }

    void menuAndMouse_data() { kinds_data(); }

    // A right click opens the menu, whose display modes apply to every line.
    // Wheel zoom keeps the point under the cursor; a shift drag zooms to the
    // band, a middle or Ctrl drag pans, a double-click or the menu restores.
    void menuAndMouse()
    {
        QFETCH(QString, kind);
        Plot plot = makePlot(kind);
        QWidget *w = plot.widget.get();
        CZOSPlotCore *core = plot.core;
        auto *group = w->findChild<QActionGroup *>();
        QVERIFY(group->actions().at(1)->isChecked()); // lines by default
        QVERIFY(kind == "gl" || w->hasMouseTracking()); // the painted plot's read-outs follow the bare cursor
        QVERIFY(plot.add("l", {10, 20}, {0, 100}));
        QVector<int> modes;
        DISPLAY_SETTINGS s;
        for (int i : {0, 2, 1}) {
            group->actions().at(i)->trigger();
            QVERIFY(core->getDisplaySettings("l", s));
            modes << core->getCurrentDisplayMode() << s.displayMode;
        }
        QCOMPARE(modes, (QVector<int>{0, 0, 2, 2, 1, 1}));
        for (QEvent::Type click : {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick}) {
            send(w, click, Qt::RightButton, QPoint(100, 100));
            QVERIFY(w->findChild<QMenu *>()->isVisible());
            w->findChild<QMenu *>()->close();
        }
        auto range = [core] {
            return V{core->getXDisplayMin(), core->getXDisplayMax(), core->getYDisplayMin(), core->getYDisplayMax()};
        };
        const V automatic = range();
        const QPoint at(120, 90);
        double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        core->convertWindowToObjectCoords(at.x(), at.y(), x0, y0);
        QWheelEvent wheel(at, w->mapToGlobal(at), QPoint(), QPoint(0, 240), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(w, &wheel);
        QVERIFY(wheel.isAccepted()); // a scrolling parent must not scroll as well
        core->convertWindowToObjectCoords(at.x(), at.y(), x1, y1);
        QVERIFY(std::fabs(x1 - x0) < 1e-9 && std::fabs(y1 - y0) < 1e-9);
        QCOMPARE(range()[1] - range()[0], (automatic[1] - automatic[0]) * 0.64);
        send(w, QEvent::MouseButtonDblClick, Qt::LeftButton, at);
        QCOMPARE(range(), automatic);

        int ax = 0, ay = 0, bx = 0, by = 0;
        core->convertObjectToWindowCoords(12, 80, ax, ay);
        core->convertObjectToWindowCoords(16, 40, bx, by);
        send(w, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(ax, ay), Qt::ShiftModifier);
        send(w, QEvent::MouseMove, Qt::LeftButton, QPoint(bx, by), Qt::ShiftModifier);
        send(w, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(bx, by), Qt::ShiftModifier);
        const V band = range();
        for (int i = 0; i < 4; ++i)
            QVERIFY2(std::fabs(band[i] - V{12, 16, 40, 80}[i]) < 0.1 * (i < 2 ? 1 : 10), qPrintable(QString::number(band[i])));
        const QPoint from(200, 150), to(250, 120);
        double fx = 0, fy = 0;
        core->convertWindowToObjectCoords(from.x(), from.y(), fx, fy);
        for (auto [button, mods] : {std::pair(Qt::MiddleButton, Qt::NoModifier), {Qt::LeftButton, Qt::ControlModifier}}) {
            send(w, QEvent::MouseButtonPress, button, from, mods);
            send(w, QEvent::MouseMove, button, to, mods);
            QCOMPARE(w->cursor().shape(), Qt::ClosedHandCursor);
            send(w, QEvent::MouseButtonRelease, button, to, mods);
            core->convertWindowToObjectCoords(to.x(), to.y(), x1, y1);
            QVERIFY(std::fabs(x1 - fx) < 1e-9 && std::fabs(y1 - fy) < 1e-9);
            core->convertWindowToObjectCoords(from.x(), from.y(), fx, fy);
        }
        QVERIFY(core->isZoomed());
        for (QAction *a : w->findChild<QMenu *>()->actions())
            if (a->text() == "Restore Automatic Range")
                a->trigger();
        QCOMPARE(range(), automatic);
    }

    void exports_data()
    {
        QTest::addColumn<QString>("kind"); QTest::addColumn<QString>("suffix");
        for (const char *kind : {"painted", "gl"})
            for (const char *suffix : {"png", "svg", "pdf"})
                QTest::addRow("%s %s", kind, suffix) << kind << suffix;
    }

    // Exports open, have the asked size and hold the plot's lines, with or
    // without a GL context (the GL plot is not even shown here).
    void exports()
    {
        QFETCH(QString, kind); QFETCH(QString, suffix);
        Plot plot = makePlot(kind);
        QVERIFY(plot.add("trace", {0, 1, 2, 3}, {0, 3, 1, 2}));
        if (auto *painted = qobject_cast<CZOSXYPlot *>(plot.widget.get()))
            painted->addMarkerX("M", 1.5, Qt::green);
        else // the GL layout draws error bars
            QVERIFY(static_cast<CZOSGLXYPlot *>(plot.widget.get())->addDataLine("bars", {0, 3}, {1, 1}, {}, {0.5, 0.5}));
        const QString path = m_dir.filePath(kind + "." + suffix);
        const QSize size(640, 360);
        QVERIFY(plot.exportPlot(path, size));
        const QByteArray bytes = readFile(path);
        if (suffix == "svg") {
            QSvgRenderer svg(bytes);
            QVERIFY(svg.isValid());
            QCOMPARE(svg.viewBox(), QRect(QPoint(0, 0), size)); // drawn in pixels
            QVERIFY(bytes.contains("<polyline") && bytes.contains("#0000ff"));
        } else if (suffix == "pdf") {
            QVERIFY(bytes.startsWith("%PDF-"));
            // Every line has a width: a zero-width one prints as a hairline that all but vanishes.
            QByteArray drawn; // qUncompress wants the size first: 1 MiB is room enough
            for (int at = 0; (at = bytes.indexOf("\nstream\n", at) + 8) >= 8;)
                if (bytes.at(at) == 'x') // zlib's first byte
                    drawn += qUncompress(QByteArray("\0\x10\0\0", 4) + bytes.mid(at));
            QVERIFY(drawn.contains(" w ") && !drawn.contains("\n0 w "));
        } else {
            const QImage image = QImage::fromData(bytes);
            QCOMPARE(image.size(), size);
            QVERIFY(countWhere(image, image.rect(), isBlue) > 100);
        }
        QVERIFY(!plot.exportPlot(m_dir.filePath("plot.unknown"), size));
        QVERIFY(!plot.exportPlot(m_dir.filePath("no/such/folder/plot.png"), size));
        plot.copy();
        QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(120, 90));
    }

    // The menu's export asks for a file, then for the size, which starts at the plot's own.
    void exportFromTheMenu()
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        Plot plot = makePlot("painted");
        QVERIFY(plot.add("l", {0, 1}, {0, 1}));
        const QString name = m_dir.filePath("menu");
        Answerer answer({[name](QWidget *w) {
                             w->findChild<QLineEdit *>("fileNameEdit")->setText(name);
                             QTest::keyClick(w->findChild<QLineEdit *>("fileNameEdit"), Qt::Key_Return);
                         },
                         [](QWidget *w) { w->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click(); }});
        for (QAction *action : plot.widget->findChild<QMenu *>()->actions())
            if (action->text() == "Export as PNG...")
                action->trigger();
        QCOMPARE(QImage(m_dir.filePath("menu.png")).size(), QSize(400, 300)); // the suffix added
        QCOMPARE(answer.seen.size(), 2);
    }

    void paintedPlotSignals()
    {
        CZOSXYPlot plot(nullptr, "plot");
        plot.resize(270, 270);
        QVERIFY(plot.addDataLine("l", {10, 20}, {0, 100}));
        QSignalSpy nx(&plot, &CZOSXYPlot::normalizedPosXChanged);
        QSignalSpy ax(&plot, &CZOSXYPlot::actualPlotXValueChanged);
        QSignalSpy ay(&plot, &CZOSXYPlot::actualPlotYValueChanged);
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(85, 185));
        QCOMPARE(nx.count(), 1);
        QCOMPARE((V{nx.at(0).at(0).toDouble(), ax.at(0).at(0).toDouble(), ay.at(0).at(0).toDouble()}),
                 (V{0.25, 12.5, 25.0}));
        send(&plot, QEvent::MouseMove, Qt::LeftButton, QPoint(135, 135));
        QCOMPARE(ax.count(), 2);
        QCOMPARE(ax.at(1).at(0).toDouble(), 15.0);
        send(&plot, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(135, 135));
        send(&plot, QEvent::MouseMove, Qt::NoButton, QPoint(150, 150));
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(5, 5)); // outside the plot area
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(150, 150), Qt::ShiftModifier); // a band
        QCOMPARE(ax.count(), 2);
        // The grid submenu and its API agree, from the start (no grid).
        QMenu *grid = nullptr;
        for (QMenu *menu : plot.findChildren<QMenu *>())
            grid = menu->title() == QLatin1String("Display Grid Lines") ? menu : grid;
        QVERIFY(grid->actions().at(0)->isChecked());
        grid->actions().at(2)->trigger();
        QCOMPARE(plot.getGridType(), int(EGT_HORIZONTAL));
        plot.setGridType(EGT_VERTICAL);
        QVERIFY(grid->actions().at(1)->isChecked());
        plot.setGridType(7);
        QCOMPARE(plot.getGridType(), int(EGT_NONE));
        // getPrintImage is the plot at the widget's size, as the screen shows it
        // (inside the plot area: texts are antialiased for their own device).
        const QImage print = plot.getPrintImage();
        QCOMPARE(print.size(), plot.size());
        const QRect inside(36, 30, 199, 204);
        QCOMPARE(print.copy(inside).convertToFormat(QImage::Format_RGB32),
                 plot.grab().toImage().copy(inside).convertToFormat(QImage::Format_RGB32));
        plot.resize(0, 0);
        QVERIFY(!plot.getPrintImage().isNull());
    }

    void glPicture()
    {
        CZOSGLXYPlot plot(nullptr, "gl");
        plot.resize(400, 300);
        plot.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plot));
        V x;
        for (int i = 0; i <= 100; ++i)
            x << i * 0.1;
        QVERIFY(plot.addDataLine("rising", x, x, {}, {0.5}));
        plot.showLegend(false);
        if (!plot.isValid()) // pictures need a GL context; the offscreen platform cannot make one
            QSKIP("No OpenGL context on this display");
        const QImage image = plot.getPrintImage();
        QCOMPARE(image.size(), QSize(400, 300));
        int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        plot.convertObjectToWindowCoords(0, 0, x0, y0);
        plot.convertObjectToWindowCoords(10, 10, x1, y1);
        // Axes along the plot area's left and bottom edges (the Y range starts
        // at -1 to hold the error bar; away from the curve's start and the bar).
        int axisLeft = 0, axisY = 0;
        plot.convertObjectToWindowCoords(0, plot.getYDisplayMin(), axisLeft, axisY);
        QVERIFY(countWhere(image, QRect(x0 - 1, y1 + 5, 3, y0 - y1 - 20), isDark) >= y0 - y1 - 20);
        QVERIFY(countWhere(image, QRect(x0 + 5, axisY - 1, x1 - x0 - 10, 3), isDark) >= x1 - x0 - 10);
        QVERIFY(countWhere(image, QRect(x0 - 10, axisY + 8, x1 - x0 + 20, 14), isDark) > 20); // tick labels over the picture
        // The curve rises from the bottom left; the first point carries a red error bar.
        QVERIFY(countWhere(image, QRect(x0 + 1, y0 - 20, 20, 19), isBlue) > 3);
        QCOMPARE(countWhere(image, QRect(x1 - 20, y0 - 20, 19, 19), isBlue), 0);
        QVERIFY(countWhere(image, QRect(x0 - 2, y0 - 20, 5, 19), isRed) > 5);
        QCOMPARE(plot.lastStripSizes(), QVector<int>{101});
        // The GL picture and the QPainter export draw the same curve, within two pixels.
        const QImage exported = plot.renderImage();
        auto blueBox = [](const QImage &i) {
            QRect box;
            for (int r = 0; r < i.height(); ++r)
                for (int c = 0; c < i.width(); ++c)
                    box |= isBlue(i.pixel(c, r)) ? QRect(c, r, 1, 1) : QRect();
            return box;
        };
        const QRect a = blueBox(image), b = blueBox(exported);
        const QPoint d1 = a.topLeft() - b.topLeft(), d2 = a.bottomRight() - b.bottomRight();
        QVERIFY2(std::max({qAbs(d1.x()), qAbs(d1.y()), qAbs(d2.x()), qAbs(d2.y())}) <= 2,
                 qPrintable(QString("%1,%2 %3,%4").arg(b.left()).arg(b.top()).arg(b.right()).arg(b.bottom())));
        plot.setXAxisReversed(true);
        const QImage flipped = plot.getPrintImage();
        QCOMPARE(countWhere(flipped, QRect(x0 + 1, y0 - 20, 20, 19), isBlue), 0);
        QVERIFY(countWhere(flipped, QRect(400 - x0 - 21, y0 - 20, 20, 19), isBlue) > 3);
        // A zoomed view is cut at the plot area's edges (axis lines included), as in the export.
        plot.setXAxisReversed(false);
        plot.clear();
        QVERIFY(plot.addDataLine("across", {0, 10}, {5, 5}) && plot.addDataLine("up", {5, 5}, {0, 10}));
        QVERIFY(plot.setView(2, 8, 2, 8));
        QCOMPARE(blueBox(plot.getPrintImage()), plot.plotArea().adjusted(0, 0, 1, 1));
        // Backwards off breaks the strip; a staircase doubles the steps.
        plot.clear();
        DISPLAY_SETTINGS s;
        s.displayMode = EDM_STAIRCASE;
        QVERIFY(plot.addDataLine("p", {1, 2, 3, 2, 3}, {1, 2, 3, 4, 5}, {}, {}, &s));
        plot.setBackwards(false);
        const QRect stairs = blueBox(plot.getPrintImage());
        QCOMPARE(plot.lastStripSizes(), (QVector<int>{5, 3}));
        QVERIFY(qAbs(stairs.top() - blueBox(plot.renderImage()).top()) <= 2); // the second piece drawn too
        // A long curve is reduced to a few points a column, unless asked not to.
        V lx(200000), ly(200000);
        for (int i = 0; i < lx.size(); ++i)
            lx[i] = i, ly[i] = std::sin(i * 2e-4) * 50 + (i * 7919 % 101) * 0.05;
        plot.clear();
        QVERIFY(plot.addDataLine("long", lx, ly));
        plot.getPrintImage();
        QVERIFY(plot.lastStripSizes().value(0) < 4 * 400);
        plot.setCurveReduction(false);
        plot.getPrintImage();
        QCOMPARE(plot.lastStripSizes(), QVector<int>{int(lx.size())});
        plot.resize(30, 20); // smaller than the margins
        QVERIFY(!plot.getPrintImage().isNull());
        for (const QSize size : {QSize(0, 20), QSize(20, 0)}) {
            plot.resize(size);
            QVERIFY(plot.getPrintImage().isNull());
        }
    }

    void pointStyles_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<QVector<QPoint>>("on"); // blue offsets from the point's pixel; "off" ones are not
        QTest::addColumn<QVector<QPoint>>("off");
        const QVector<QPoint> arms{{-3, 0}, {3, 0}, {0, -3}, {0, 3}}, far{{7, 0}, {-7, 0}, {0, 7}, {0, -7}};
        QTest::newRow("plus") << int(EPS_PLUS) << arms << far + QVector<QPoint>{{3, 3}, {-3, -3}, {-3, 3}, {3, -3}};
        // The rising stroke of a cross lands a pixel apart in GL and QPainter; the falling one agrees.
        QTest::newRow("cross") << int(EPS_CROSS) << QVector<QPoint>{{-3, -3}, {3, 3}, {-2, -2}, {2, 2}}
                               << far + QVector<QPoint>{{3, 0}, {0, 3}, {-3, 0}, {0, -3}, {-4, 0}, {0, 4}, {4, 0}, {6, 6}, {-6, -6}};
        QTest::newRow("round") << int(EPS_ROUND) << arms << far + QVector<QPoint>{{-5, -5}, {5, 5}, {-5, 5}, {5, -5}};
        QTest::newRow("square") << int(EPS_SQUARE) << QVector<QPoint>{{-3, -3}, {3, 3}, {-3, 3}, {3, -3}}
                                << far + QVector<QPoint>{{6, 6}, {-6, -6}};
    }

    // The GL picture and its QPainter export draw each point style about the point's pixel.
    void pointStyles()
    {
        QFETCH(int, style); QFETCH(QVector<QPoint>, on); QFETCH(QVector<QPoint>, off);
        CZOSGLXYPlot plot(nullptr, "points");
        plot.showLegend(false);
        DISPLAY_SETTINGS s;
        s.displayMode = EDM_POINTS;
        s.pointStyle = style;
        s.pointSize = 9;
        QVERIFY(plot.addDataLine("p", {0, 10, 20}, {0, 10, 20}, {}, {}, &s));
        // A plot area of odd sides puts the middle point on a pixel's centre.
        plot.resize(301, 300);
        plot.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plot));
        plot.getMargins();
        if (plot.plotArea().height() % 2 == 0)
            plot.resize(301, 301);
        if (!plot.isValid())
            QSKIP("No OpenGL context on this display");
        const QImage gl = plot.getPrintImage(), painted = plot.renderImage();
        const QPoint at(int(plot.xMap().toPixel(10)), int(plot.yMap().toPixel(10)));
        for (const QImage *image : {&gl, &painted})
            for (const QPoint &d : on + off)
                QVERIFY2(isBlue(image->pixel(at + d)) == on.contains(d),
                         qPrintable(QString("%1,%2 %3").arg(d.x()).arg(d.y()).arg(image == &gl ? "GL" : "export")));
    }
};

QTEST_MAIN(TestPlotWidgets)
#include "tst_czosplotwidgets.moc"
