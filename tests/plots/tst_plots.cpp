// The plots: the core without a window (range, tick and reduction arithmetic,
// both layouts, zoom, texts, read-outs, data files and the QPainter renderer
// that draws the painted plot and every export), then the two widgets as a
// user drives them (menus, mouse zoom and pan, signals, exports and the GL
// picture).
#include "answerer.h"
#include "czosglxyplot.h"
#include "czosplotcore.h"
#include "czosplotpainter.h"
#include "czosxyplot.h"
#include "testfiles.h"

#include <QAction>
#include <QActionGroup>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRubberBand>
#include <QSignalSpy>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {
const double NaN = std::numeric_limits<double>::quiet_NaN();
const double Inf = std::numeric_limits<double>::infinity();
using V = QVector<double>;
using I = QVector<int>;
using P = QVector<QPoint>;

// A core at a fixed size that counts its repaint requests.
class Core : public CZOSPlotCore
{
public:
    explicit Core(EZOSPlotLayout layout = EZOSPlotLayout::Inset, QSize size = QSize(270, 270))
        : CZOSPlotCore(layout), m_size(size) {}
    using CZOSPlotCore::addMarkerX, CZOSPlotCore::addMarkerY, CZOSPlotCore::getMargins, CZOSPlotCore::getOrthoWindow,
        CZOSPlotCore::getPlotValueString, CZOSPlotCore::getQuvelPlotArea, CZOSPlotCore::saveCommaSeparated,
        CZOSPlotCore::saveData, CZOSPlotCore::setGridType, CZOSPlotCore::setQuvelPlotArea,
        CZOSPlotCore::setQuvelPlotYAxisUnitType, CZOSPlotCore::setReferenceLinePosX, CZOSPlotCore::setReferenceLinePosY,
        CZOSPlotCore::setReferenceLineX, CZOSPlotCore::setReferenceLineY, CZOSPlotCore::setShadedRectangleParams,
        CZOSPlotCore::setVisibleShadedRectangle, CZOSPlotCore::toolTipTextAt, CZOSPlotCore::writeDataToFile,
        CZOSPlotCore::convertObjectToNormalizedCoords, CZOSPlotCore::convertNormalizedToObjectCoords,
        CZOSPlotCore::removeMarkerX, CZOSPlotCore::removeMarkerY, CZOSPlotCore::convertWindowToNormalizedCoords;
    bool add(const QString &name, const V &x, const V &y, const V &ex = {}, const V &ey = {},
             const DISPLAY_SETTINGS *settings = nullptr, const QStringList &labels = {})
    {
        return insertLine(name, x, y, ex, ey, settings, labels, {"0", "45", "90"}, {"n0", "n1", "n2"});
    }
    QImage render(const QColor &background = Qt::white)
    {
        QImage image(m_size, QImage::Format_RGB32);
        QPainter painter(&image);
        CZOSPlotPainter::paint(painter, *this, m_size.width(), m_size.height(), background);
        return image;
    }
    QSize m_size;
    int m_changes = 0;

protected:
    void plotChanged() override { ++m_changes; }
    QSize plotWidgetSize() const override { return m_size; }
};

// The pixels of `area` (within the image) that pass `test`.
template <typename Test>
int countWhere(const QImage &image, const QRect &area, Test test)
{
    int n = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            n += test(image.pixel(x, y));
    return n;
}

const QRgb Black = 0, White = 0xFFFFFF, Red = 0xFF0000, Green = 0x00FF00, Blue = 0x0000FF;

// The pixels of `area` that are exactly `colour`.
int count(const QImage &image, QRgb colour, const QRect &area)
{
    return countWhere(image, area, [colour](QRgb c) { return (c & 0xFFFFFF) == colour; });
}

// Equal to rounding: ranges that went through pixels.
bool near(const V &a, const V &b)
{
    for (int i = 0; i < a.size(); ++i)
        if (a.size() != b.size() || std::fabs(a[i] - b[i]) > 1e-9 * std::max(1.0, std::fabs(b[i])))
            return false;
    return a.size() == b.size();
}

ZOSPlotLineView view(const V &x, const V &y, const V &ex = {}, const V &ey = {})
{
    return {x.constData(), y.constData(), int(std::min(x.size(), y.size())), ex.isEmpty() ? nullptr : ex.constData(),
            int(ex.size()),   ey.isEmpty() ? nullptr : ey.constData(),     int(ey.size())};
}
bool isBlue(QRgb c) { return qBlue(c) > 200 && qRed(c) < 80 && qGreen(c) < 80; }
bool isRed(QRgb c) { return qRed(c) > 200 && qGreen(c) < 80 && qBlue(c) < 80; }
bool isDark(QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; }


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

class TestPlots : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void initTestCase() { useDataRoot(m_dir.path()); }

    void extent_data()
    {
        QTest::addColumn<V>("x"); QTest::addColumn<V>("y"); QTest::addColumn<V>("ex"); QTest::addColumn<V>("ey");
        QTest::addColumn<V>("expected"); // xMin, yMin, xMax, yMax; empty: no extent
        QTest::newRow("plain") << V{1, 2, 3} << V{5, -1, 4} << V{} << V{} << V{1, -1, 3, 5};
        QTest::newRow("errors widen") << V{1, 2, 3} << V{5, -1, 4} << V{0.5, 0, 2} << V{1, 1, 1} << V{0.5, -2, 5, 6};
        QTest::newRow("short error array: first points only") << V{1, 2, 3} << V{0, 0, 0} << V{} << V{10}
                                                              << V{1, -10, 3, 10};
        QTest::newRow("NaN and infinite points left out") << V{1, NaN, 3, Inf, 2} << V{1, 100, NaN, 5, 4} << V{}
                                                          << V{} << V{1, 1, 2, 4};
        QTest::newRow("non-finite error counts as 0") << V{1, 2} << V{1, 2} << V{NaN, Inf} << V{} << V{1, 1, 2, 2};
        QTest::newRow("errors past the largest double") << V{1e308} << V{0} << V{1e308} << V{} << V{};
        QTest::newRow("nothing finite") << V{NaN, Inf} << V{1, 2} << V{} << V{} << V{};
    }

    void extent()
    {
        QFETCH(V, x); QFETCH(V, y); QFETCH(V, ex); QFETCH(V, ey); QFETCH(V, expected);
        const ZOSPlotExtent e = zosLineExtent(view(x, y, ex, ey));
        QVERIFY(!zosLineExtent({nullptr, y.constData(), 1}).valid && !zosLineExtent({x.constData(), nullptr, 1}).valid);
        QCOMPARE(e.valid, !expected.isEmpty());
        if (e.valid)
            QCOMPARE((V{e.xMin, e.yMin, e.xMax, e.yMax}), expected);
        // Merging with nothing changes nothing; merging widens.
        const ZOSPlotExtent m = zosMergeExtents(ZOSPlotExtent(), zosMergeExtents(e, ZOSPlotExtent()));
        QCOMPARE((V{m.xMin, m.yMax}), (V{e.xMin, e.yMax}));
        const ZOSPlotExtent w = zosMergeExtents(e, zosLineExtent(view({-50}, {50})));
        QCOMPARE((V{w.xMin, w.yMax}), (V{-50, e.valid ? std::max(50.0, e.yMax) : 50.0}));
    }

    void ranges_data()
    {
        QTest::addColumn<V>("extent"); QTest::addColumn<bool>("floor");
        QTest::addColumn<V>("display"); // x min, x max, y min, y max
        QTest::newRow("every X the same starts X at 0") << V{7, 1, 7, 3} << false << V{0, 7, 1, 3};
        QTest::newRow("floor forces Y from 0") << V{0, 900, 10, 1000} << true << V{0, 10, 0, 1000};
        QTest::newRow("without floor Y hugs the data") << V{0, 900, 10, 1000} << false << V{0, 10, 900, 1000};
        QTest::newRow("all points equal") << V{0, 0, 0, 0} << false << V{0, 0.1, 0, 0.1};
        QTest::newRow("negative") << V{-7, -3, -2, -1} << false << V{-7, -2, -3, -1};
    }

    void ranges()
    {
        QFETCH(V, extent); QFETCH(bool, floor);
        const ZOSPlotRanges r = zosDetermineRanges(zosLineExtent(view({extent[0], extent[2]}, {extent[1], extent[3]})),
                                                   floor);
        QTEST((V{r.xDisplayMin, r.xDisplayMax, r.yDisplayMin, r.yDisplayMax}), "display");
        QVERIFY(r.drawable);
        QVERIFY(!zosDetermineRanges(ZOSPlotExtent(), false).drawable);
        const ZOSPlotRanges z = zosViewRanges(r.extent, 1, 2, 3, 3 + 5e-13);
        QCOMPARE((V{z.xDisplayMin, z.xDisplayMax, z.yDisplayMin}), (V{1, 2, 3}));
        QVERIFY(!z.drawable); // a span below 1e-12; one of 1e-12 still draws
        QVERIFY(zosViewRanges(r.extent, 0, 1e-12, 0, 1e-12).drawable && !zosViewRanges(r.extent, 0, 5e-13, 0, 1).drawable);
    }

    void tickLabels_data()
    {
        QTest::addColumn<double>("value"); QTest::addColumn<double>("niceMin"); QTest::addColumn<double>("step");
        QTest::addColumn<int>("exponent"); QTest::addColumn<QString>("label");
        QTest::newRow("exponent 4 divides by 10^4") << 25000.0 << 0.0 << 5000.0 << 4 << "2.5";
        QTest::newRow("exponent -5 via doubleToString") << 3e-5 << 0.0 << 1e-6 << -5 << "3.0";
        QTest::newRow("integral axis truncates") << 7.0 << 0.0 << 1.0 << 1 << "7";
        QTest::newRow("nice minimum between 0 and 1") << 3.0 << 0.5 << 1.0 << 0 << "3.00";
        QTest::newRow("nice minimum 1 is integral") << 3.0 << 1.0 << 1.0 << 0 << "3";
        QTest::newRow("exponent 3 stays plain") << 2000.0 << 0.0 << 200.0 << 3 << "2000";
        QTest::newRow("exponent -2 stays plain") << 0.05 << 0.0 << 0.005 << -2 << "0.05";
        QTest::newRow("exponent -3 scales") << 0.005 << 0.0 << 0.001 << -3 << "5.0";
    }

    void tickLabels()
    {
        QFETCH(double, value); QFETCH(double, niceMin); QFETCH(double, step); QFETCH(int, exponent);
        tagZOSDisplayRange r;
        r.niceMinimum = niceMin;
        r.tickStep = step;
        r.exponent = exponent;
        QTEST(zosTickLabel(value, r), "label");
    }

    void labelStep_data()
    {
        QTest::addColumn<V>("args"); // span, pixels, label pixels, tick step, forced step
        QTest::addColumn<double>("step");
        QTest::newRow("wide axis labels every tick") << V{10, 1000, 40, 1, 0} << 1.0;
        QTest::newRow("narrow axis skips ticks") << V{10, 200, 40, 1, 0} << 2.0;
        QTest::newRow("exact multiple not rounded up") << V{10, 100, 20, 1, 0} << 2.0;
        QTest::newRow("just past a multiple") << V{10, 100, 20.5, 1, 0} << 3.0;
        QTest::newRow("forced step rounds up to ticks") << V{10, 1000, 40, 1, 2.5} << 3.0;
        QTest::newRow("no span") << V{0, 1000, 40, 1, 0} << 0.0;
        QTest::newRow("no tick step") << V{10, 1000, 40, 0, 0} << 0.0;
    }

    void labelStep()
    {
        QFETCH(V, args);
        QTEST(zosLabelStep(args[0], int(args[1]), args[2], args[3], args[4]), "step");
    }

    void labelValues()
    {
        QCOMPARE(zosLabelValues(-0.3, 0.3, 0.1, false), (V{-0.3, -0.2, -0.1, 0.0, 0.1, 0.2, 0.3}));
        QCOMPARE(zosLabelValues(0, 10, 4, true), (V{10, 6, 2}));
        QCOMPARE(zosLabelValues(0, 10, 4, false), (V{0, 4, 8}));
        QVERIFY(zosLabelValues(0, 10, 0, false).isEmpty());
        QVERIFY(zosLabelValues(10, 0, 1, false).isEmpty());
        QCOMPARE(zosLabelValues(0, 1e9, 1, false).size(), 1000); // capped, no hang
        QCOMPARE(zosLabelValues(0, 3 - 5e-10, 1, false).size(), 4); // a hair short of a step still reaches it
        QVERIFY(zosLabelValues(0, Inf, 1, false).isEmpty() && zosLabelValues(NaN, 1, 1, false).isEmpty());
        // A zoomed view's labels fall on multiples of the step inside it.
        QCOMPARE(zosLabelValues(0.25, 1.3, 0.2, false, true), (V{0.4, 0.6, 0.8, 1.0, 1.2}));
        QCOMPARE(zosLabelValues(-3.5, 2, 2, true, true), (V{2, 0, -2}));
        QCOMPARE(zosLabelValues(2, 4, 2, false, true), (V{2, 4}));
        QVERIFY(zosLabelValues(0.1, 0.3, 0.5, false, true).isEmpty());
    }

    void reduction_data()
    {
        QTest::addColumn<V>("x"); QTest::addColumn<V>("y"); QTest::addColumn<bool>("breakBackwards");
        QTest::addColumn<bool>("reduce"); QTest::addColumn<I>("indices");
        // One pixel per data unit: x 0.0 .. 0.9 share column 0.
        QTest::newRow("one column keeps first, min, max, last")
            << V{0.0, 0.1, 0.2, 0.3, 0.4, 0.5} << V{5, 9, 1, 4, 7, 6} << false << true << I{0, 1, 2, 5, -1};
        QTest::newRow("last is the maximum") << V{0.0, 0.1, 0.2} << V{5, 0, 9} << false << true << I{0, 1, 2, -1};
        QTest::newRow("columns apart") << V{0.0, 1.0, 2.0} << V{1, 2, 3} << false << true << I{0, 1, 2, -1};
        QTest::newRow("negative columns") << V{-0.5, -0.2, 0.1} << V{1, 2, 3} << false << true << I{0, 1, 2, -1};
        QTest::newRow("NaN ends a piece") << V{0, 1, NaN, 3, 4} << V{1, 2, 3, 4, 5} << false << true
                                          << I{0, 1, -1, 3, 4, -1};
        QTest::newRow("infinite Y ends a piece") << V{0, 1, 2} << V{1, Inf, 3} << false << false << I{0, -1, 2, -1};
        QTest::newRow("turning back breaks when asked") << V{1, 2, 3, 2, 3} << V{0, 0, 0, 0, 0} << true << false
                                                        << I{0, 1, 2, -1, 3, 4, -1};
        QTest::newRow("turning back kept connected otherwise") << V{1, 2, 3, 2, 3} << V{0, 0, 0, 0, 0} << false
                                                               << false << I{0, 1, 2, 3, 4, -1};
    }

    void reduction()
    {
        QFETCH(V, x); QFETCH(V, y); QFETCH(bool, breakBackwards); QFETCH(bool, reduce);
        QVector<int> indices{7}; // appends after what is there
        const ZOSAxisMap m(0, 100, false, 0, 100);
        const int n = zosReducePolyline(x.constData(), y.constData(), x.size(), m, breakBackwards, reduce, indices);
        QCOMPARE(indices.takeFirst(), 7);
        QTEST(indices, "indices");
        QCOMPARE(n, indices.size());
        QCOMPARE(zosReducePolyline(nullptr, y.constData(), 3, m, false, reduce, indices), 0);
    }

    // The sorted search must pick exactly the points of the general loop, and
    // either must keep every column's extremes within four points per column.
    void reductionProperties_data()
    {
        QTest::addColumn<bool>("reversed"); QTest::addColumn<int>("count");
        QTest::newRow("dense") << false << 200000;
        QTest::newRow("dense, reversed axis") << true << 200000;
        QTest::newRow("sparse with repeats") << false << 500;
    }

    void reductionProperties()
    {
        QFETCH(bool, reversed); QFETCH(int, count);
        V x(count), y(count);
        quint32 state = 3;
        double at = -50;
        for (int i = 0; i < count; ++i) {
            state = state * 1664525u + 1013904223u;
            at += (state >> 28) * 0.001; // steps of 0 (repeated X) and more
            x[i] = at;
            y[i] = double((state >> 8) % 50); // ties between extremes
        }
        QVERIFY(zosIsSortedAndFinite(x.constData(), y.constData(), count));
        const ZOSAxisMap m(x.first(), x.last(), reversed, 35, 700);
        QVector<int> general, sorted{-9}; // appends after what is there
        const int n = zosReducePolyline(x.constData(), y.constData(), count, m, false, true, general, false);
        QCOMPARE(zosReducePolyline(x.constData(), y.constData(), count, m, false, true, sorted, true), n);
        QCOMPARE(sorted.takeFirst(), -9);
        QCOMPARE(sorted, general);
        QVERIFY(general.size() <= 4 * 702 + 1);
        QCOMPARE(general.first(), 0);
        QCOMPARE(general.at(general.size() - 2), count - 1);
        QMap<qint64, QPair<double, double>> kept, all; // per column: lowest, highest
        auto note = [&](QMap<qint64, QPair<double, double>> &map, int i) {
            const qint64 c = qint64(std::floor(m.toPixel(x[i])));
            const QPair<double, double> was = map.value(c, {y[i], y[i]});
            map.insert(c, {std::min(was.first, y[i]), std::max(was.second, y[i])});
        };
        for (int i = 0; i < count; ++i)
            note(all, i);
        for (int i : qAsConst(general))
            if (i >= 0)
                note(kept, i);
        QCOMPARE(kept, all);
    }

    void sortedAndFinite()
    {
        const V up{1, 2, 2, 3}, down{1, 3, 2}, nan{1, NaN, 3}, inf{1, 2, Inf};
        QVERIFY(zosIsSortedAndFinite(up.constData(), up.constData(), up.size()));
        for (auto [x, y] : {std::pair(&down, &up), {&nan, &up}, {&up, &inf}})
            QVERIFY(!zosIsSortedAndFinite(x->constData(), y->constData(), 3));
        // Any missing array gives the empty answer, not a crash.
        QVERIFY(!zosIsSortedAndFinite(nullptr, up.constData(), 3) && !zosIsSortedAndFinite(up.constData(), nullptr, 3));
    }

    void area_data()
    {
        QTest::addColumn<V>("x"); QTest::addColumn<V>("y"); QTest::addColumn<bool>("even");
        QTest::addColumn<double>("area");
        const double k = ZOS_DEGREES_TO_RADIANS;
        QTest::newRow("even spacing sums Y") << V{0, 10, 20, 30} << V{1, 2, 3, 4} << true << 10 * 10 * k;
        QTest::newRow("uneven spacing trapezoid over span")
            << V{0, 10, 30} << V{1, 3, 5} << false << ((1 + 3) * 10 * k * 0.5 + (3 + 5) * 20 * k * 0.5) / (30 * k);
        QTest::newRow("uneven only at the end") << V{0, 10, 20, 25} << V{1, 1, 1, 1} << false << 1.0;
        QTest::newRow("two points are even") << V{5, 7} << V{2, 2} << true << 4 * 2 * k;
        QTest::newRow("single point") << V{5} << V{2} << false << 0.0;
    }

    void area()
    {
        QFETCH(V, x); QFETCH(V, y);
        QTEST(zosIsXAxisEvenlySpaced(x.constData(), x.size()), "even");
        QFETCH(double, area);
        QCOMPARE(zosQuvelArea(x.constData(), y.constData(), x.size()), area);
    }

    void glMargins_data()
    {
        QTest::addColumn<I>("input");   // low padding, legend, X label empty, X exponent, Y exponent
        QTest::addColumn<I>("margins"); // left, right, bottom, top
        // Font ascent 12, descent 3: text height 9; an X label needs 2 * 12 + 3 + 8 = 35 pixels.
        QTest::newRow("default without legend") << I{0, 0, 1, 0, 0} << I{50, 40, 30, 31};
        QTest::newRow("low, empty X label") << I{1, 0, 1, 0, 0} << I{35, 15, 20, 14};
        QTest::newRow("low, X label") << I{1, 0, 0, 0, 0} << I{35, 15, 35, 14};
        QTest::newRow("low, X exponent 4") << I{1, 0, 1, 4, -2} << I{35, 40, 20, 14};
        QTest::newRow("low, exponents 3 and -3") << I{1, 0, 1, 3, -3} << I{35, 15, 20, 50};
    }

    void glMargins()
    {
        QFETCH(I, input);
        const ZOSPlotMargins m = zosGLMargins({input[0] != 0, input[1] != 0, input[2] != 0, 12, 3, input[3], input[4]});
        QTEST((I{m.left, m.right, m.bottom, m.top}), "margins");
    }

    void lines()
    {
        Core core;
        QVERIFY(!core.add("mismatch", {1, 2, 3}, {1, 2}));
        QVERIFY(!core.add("none", {}, {}));
        QCOMPARE(core.m_changes, 0);
        QVERIFY(core.add("a", {1, 2}, {1, 2}, {}, {1, 2, 3, 4}));
        QCOMPARE(core.getPlotList().value("a")->nYErrors, 2); // cut to the points
        QVERIFY(core.getYDisplayMax() >= 4); // and widening the range
        QVERIFY(core.add("b", {1, 2}, {3, 4}));
        DISPLAY_SETTINGS s;
        QVERIFY(core.getDisplaySettings("a", s));
        QCOMPARE(s.displayMode, int(EDM_LINES));
        s.lineColor = Qt::green;
        QVERIFY(core.setDisplaySettings("a", s));
        // A replaced line keeps its settings; given settings win.
        QVERIFY(core.add("a", {5, 6, 7}, {1, 1, 1}));
        QCOMPARE(core.getPlotList().value("a")->nPoints, 3);
        QVERIFY(core.getDisplaySettings("a", s));
        QCOMPARE(s.lineColor, QColor(Qt::green));
        core.setDisplayModeOfAllLines(EDM_POINTS);
        DISPLAY_SETTINGS given;
        QVERIFY(core.add("c", {1}, {1}, {}, {}, &given));
        QVERIFY(core.getDisplaySettings("c", s));
        QCOMPARE(s.displayMode, int(EDM_LINES));
        QVERIFY(core.add("d", {1}, {1}));
        QVERIFY(core.getDisplaySettings("d", s) && core.getDisplaySettings("b", given));
        QCOMPARE((I{s.displayMode, given.displayMode, core.getCurrentDisplayMode()}), (I{0, 0, 0}));
        const int changes = core.m_changes;
        QVERIFY(core.removeDataLine("a") && !core.removeDataLine("a"));
        QVERIFY(core.m_changes > changes);
        core.clear();
        QVERIFY(core.isEmpty());
    }

    void layout_data()
    {
        QTest::addColumn<int>("layout"); QTest::addColumn<bool>("reversed");
        QTest::newRow("inset") << int(EZOSPlotLayout::Inset) << false;
        QTest::newRow("inset, reversed") << int(EZOSPlotLayout::Inset) << true;
        QTest::newRow("margins") << int(EZOSPlotLayout::Margins) << false;
        QTest::newRow("margins, reversed") << int(EZOSPlotLayout::Margins) << true;
    }

    // The plot area's corners carry the displayed range's ends, conversions
    // go both ways, and the axes and ticks are drawn where the mapping says.
    void layout()
    {
        QFETCH(int, layout); QFETCH(bool, reversed);
        Core core(EZOSPlotLayout(layout), QSize(400, 300));
        QVERIFY(core.add("l", {10, 20}, {0, 100}));
        core.setXAxisLabel("Time");
        core.setXAxisReversed(reversed);
        core.setYAxisReversed(reversed);
        const ZOSPlotMargins m = core.getMargins();
        const QVector<int> expected = layout ? I{50, 40, 2 * core.plotFontMetrics().ascent() + core.plotFontMetrics().descent() + 8, 50} : I{35, 35, 35, 35};
        QCOMPARE((I{m.left, m.right, m.bottom, m.top}), expected);
        // The GL plot mirrors its window, margins included, along a reversed axis.
        const bool mirrored = layout && reversed;
        QRect a = core.plotArea();
        QCOMPARE(a, QRect(mirrored ? m.right : m.left, mirrored ? m.bottom : m.top, 400 - m.left - m.right,
                          300 - m.top - m.bottom));
        int bottom = a.top() + a.height();
        int wx = 0, wy = 0;
        core.convertObjectToWindowCoords(reversed ? 20 : 10, reversed ? 100 : 0, wx, wy);
        QCOMPARE((I{wx, wy}), (I{a.left(), bottom}));
        core.convertObjectToWindowCoords(reversed ? 10 : 20, reversed ? 0 : 100, wx, wy);
        QCOMPARE((I{wx, wy}), (I{a.left() + a.width(), a.top()}));
        const double plotW = a.width(), plotH = a.height();
        for (const QPoint p : {QPoint(0, 0), QPoint(123, 77), QPoint(399, 299)}) {
            double x = 0, y = 0;
            core.convertWindowToObjectCoords(p.x(), p.y(), x, y);
            core.convertObjectToWindowCoords(x, y, wx, wy);
            QCOMPARE(QPoint(wx, wy), p);
            QCOMPARE(x, (reversed ? 20 - (p.x() - a.left()) / plotW * 10 : 10 + (p.x() - a.left()) / plotW * 10));
        }
        int sw = 0, sh = 0;
        core.convertObjectToWindowSize(5, -50, sw, sh);
        QCOMPARE((I{sw, sh}), (I{qRound(plotW / 2), qRound(plotH / 2)}));
        double sizeW = 0, sizeH = 0;
        core.convertWindowToObjectSize(int(plotW), -int(plotH), sizeW, sizeH);
        QVERIFY(near(V{sizeW, sizeH}, V{10, 100}));
        double xr = 0, yr = 0;
        core.getXYRatios(xr, yr);
        QCOMPARE((V{xr, yr}), (V{10 / plotW, 100 / plotH}));
        Core(EZOSPlotLayout::Inset, QSize(70, 70)).convertWindowToNormalizedCoords(40, 30, xr, yr);
        QCOMPARE((V{xr, yr}), (V{0, 0})); // no plot area, no fractions
        // The GL window extends the displayed range by the margins in data units.
        const QRectF w = core.getOrthoWindow();
        if (layout)
            QCOMPARE((V{w.left(), w.right(), w.top()}), (V{10 - m.left * 10 / plotW, 20 + m.right * 10 / plotW,
                                                            0 - m.bottom * 100 / plotH}));
        // Axes along the plot area's left and bottom edges, a tick below each X label and left of each Y label.
        core.setXAxisLabel(QString()); // a smaller margin
        const QImage image = core.render();
        a = core.plotArea();
        bottom = a.top() + a.height();
        QCOMPARE(count(image, Black, QRect(a.left(), a.top() + 20, 1, a.height() - 40)), a.height() - 40);
        QCOMPARE(count(image, Black, QRect(a.left() + 20, bottom, a.width() - 40, 1)), a.width() - 40);
        const ZOSAxisMap xm = core.xMap(), ym = core.yMap();
        int ticks = 0;
        for (double v : core.xLabelValues()) {
            const int px = int(std::lround(xm.toPixel(v)));
            QCOMPARE(count(image, Black, QRect(px, bottom + 1, 1, 6)), 6);
            ticks += px > a.left();
        }
        for (double v : core.yLabelValues())
            QCOMPARE(count(image, Black, QRect(a.left() - 6, int(std::lround(ym.toPixel(v))), 6, 1)), 6);
        QCOMPARE(count(image, Black, QRect(a.left() + 1, bottom + 1, a.width(), 6)), 6 * ticks); // nothing else there
    }

    void zoom_data() { layout_data(); }

    void zoom()
    {
        QFETCH(int, layout); QFETCH(bool, reversed);
        Core core(EZOSPlotLayout(layout), QSize(400, 300));
        QVERIFY(core.add("l", {10, 20}, {0, 100}));
        core.setXAxisReversed(reversed);
        auto displayed = [&] {
            return V{core.getXDisplayMin(), core.getXDisplayMax(), core.getYDisplayMin(), core.getYDisplayMax()};
        };
        const V automatic = displayed();
        // The data point under the cursor stays under it, zooming in and out.
        for (const QPoint p : {QPoint(60, 200), QPoint(333, 41), QPoint(200, 150)}) {
            for (double factor : {0.5, 0.8, 1.7}) {
                double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
                core.convertWindowToObjectCoords(p.x(), p.y(), x0, y0);
                const V before = displayed();
                core.zoomAt(p, factor);
                QVERIFY(core.isZoomed());
                core.convertWindowToObjectCoords(p.x(), p.y(), x1, y1);
                QVERIFY2(std::fabs(x1 - x0) < 1e-9 && std::fabs(y1 - y0) < 1e-9, qPrintable(QString::number(x1 - x0)));
                const V after = displayed();
                QCOMPARE(after[1] - after[0], (before[1] - before[0]) * factor);
            }
        }
        core.restoreAutoRange();
        QVERIFY(!core.isZoomed());
        QCOMPARE(displayed(), automatic);
        // A rubber band shows the data under it; a pan moves the data with the cursor.
        const QRect a = core.plotArea();
        QVERIFY(core.zoomToRect(QRectF(a.left() + a.width() / 2.0, a.top(), -a.width() / 2.0, a.height() / 4.0)));
        QVERIFY(near(displayed(), V{reversed ? 15.0 : 10.0, reversed ? 20.0 : 15.0, 75, 100}));
        QVERIFY(!core.zoomToRect(QRectF(10, 10, 1, 50)));
        core.panBy(QPointF(100, 100), QPointF(100 + a.width() / 5.0, 100 + a.height() / 4.0));
        QVERIFY(near(displayed(), V{reversed ? 16.0 : 9.0, reversed ? 21.0 : 14.0, 81.25, 106.25}));
        QVERIFY(!core.setView(1, 1, 0, 1) && !core.setView(0, 1, NaN, 1) && !core.setView(1e20, 1e20 + 1e6, 0, 1));
        QVERIFY(core.setView(-1, 1, -2, 2));
        QCOMPARE(displayed(), (V{-1, 1, -2, 2}));
        double nx = 0, ny = 0, ox = 0, oy = 0; // fractions of the displayed range, and back
        core.convertObjectToNormalizedCoords(0.5, 1, nx, ny);
        core.convertNormalizedToObjectCoords(nx, ny, ox, oy);
        QVERIFY(near(V{nx, ny, ox, oy}, V{0.75, 0.75, 0.5, 1}));
        QCOMPARE(core.getXTickLabels().first(), QString(reversed ? "0.80" : "-0.80")); // every other tick of 0.2
        // A zoomed view cuts the curve at the plot area's edges.
        core.showLegend(false);
        QVERIFY(core.setView(11, 19, 40, 60));
        const QImage zoomed = core.render();
        const QRect inside = core.plotArea().adjusted(0, 0, 1, 1);
        QVERIFY(count(zoomed, Blue, inside) > 0);
        QCOMPARE(count(zoomed, Blue, zoomed.rect()), count(zoomed, Blue, inside));
        core.showLegend(true); // drawn after the cut curves, outside the plot area
        const QImage legend = core.render();
        QCOMPARE(count(legend, Black, QRect(core.legendBox().topLeft(), QSize(core.legendBox().width(), 1))),
                 core.legendBox().width());
        core.clear(); // new data, new automatic range
        QVERIFY(!core.isZoomed());
        core.zoomAt(QPointF(50, 50), 0.5); // nothing to zoom
        QVERIFY(!core.isZoomed());
    }

    void texts_data()
    {
        QTest::addColumn<int>("layout"); QTest::addColumn<int>("pointSize");
        QTest::newRow("inset") << int(EZOSPlotLayout::Inset) << 9;
        QTest::newRow("margins") << int(EZOSPlotLayout::Margins) << 9;
        QTest::newRow("margins, large font") << int(EZOSPlotLayout::Margins) << 16;
    }

    // Tick labels centred under their ticks, exponent factors beside the axis
    // ends, and the axis labels clear of every other text.
    void texts()
    {
        QFETCH(int, layout); QFETCH(int, pointSize);
        Core core(EZOSPlotLayout(layout), QSize(600, 400));
        core.setFont(QFont("Times", pointSize, 25));
        const QFontMetrics &fm = core.plotFontMetrics();
        QVERIFY(core.add("l", {20000, 260000}, {0, 6e-5}));
        core.setTitle("Title");
        core.setXAxisLabel("Grey level, a long axis label");
        core.setYAxisLabel("Pixels");
        core.render();
        const QVector<SZOSPlotText> texts = core.axisTexts();
        const QStringList xTicks = core.getXTickLabels(), yTicks = core.getYTickLabels();
        QCOMPARE(texts.size(), xTicks.size() + yTicks.size() + 6);
        const QRect a = core.plotArea();
        const int bottom = a.top() + a.height(), right = a.left() + a.width();
        for (int i = 0; i < xTicks.size(); ++i) {
            QCOMPARE(texts[i].text, xTicks[i]);
            int px = 0, py = 0;
            core.convertObjectToWindowCoords(core.xLabelValues()[i], 0, px, py);
            QCOMPARE(texts[i].position, QPoint(px - fm.horizontalAdvance(xTicks[i]) / 2, bottom + 7 + fm.ascent()));
        }
        const int raise = fm.ascent() - fm.descent();
        const int e = xTicks.size() + yTicks.size();
        QCOMPARE(texts[e].position, QPoint(right + 2, bottom + 5));
        QCOMPARE(texts[e + 1].text, QString::number(core.getXRange().exponent));
        QCOMPARE(texts[e + 1].position, QPoint(right + 2 + fm.horizontalAdvance("x10"), bottom + 5 - raise));
        QCOMPARE(texts[e + 2].position, QPoint(a.left() - fm.horizontalAdvance("x10"), a.top() - 2 - raise));
        QCOMPARE(texts[e + 3].text, QString::number(core.getYRange().exponent));
        QCOMPARE(texts[e + 5].position, QPoint(a.left() + 5, a.top() - 2));
        QCOMPARE(core.titleText().position, QPoint((600 - fm.horizontalAdvance("Title")) / 2, fm.ascent() + 2));
        auto box = [&](const SZOSPlotText &t) { return fm.boundingRect(t.text).translated(t.position); };
        const QRect xLabel = box(texts[e + 4]);
        QCOMPARE(xLabel.bottom(), 400 - 2 + fm.descent() - 1);
        for (int i = 0; i < e + 4; ++i)
            QVERIFY2(xLabel.top() >= box(texts[i]).bottom(), qPrintable(texts[i].text + QString(" %1 %2 %3 %4 %5").arg(xLabel.top()).arg(box(texts[i]).bottom()).arg(fm.ascent()).arg(fm.descent()).arg(texts[i].position.y())));
    }

    void readOuts()
    {
        // X 10 .. 20, Y 0 .. 10 on 270 x 270. The cursor at x = 135 is looked up
        // at X = 20 (scaled by the maximum alone), not at the middle 15.
        Core core;
        QVERIFY(core.add("mv", {10, 15, 20}, {0, 5, 5}, {}, {}, nullptr, {"left", "middle", "right"}));
        QVERIFY(core.add("unlabelled", {10, 20}, {5, 10}));
        core.setQuvelPlotYAxisUnitType("Counts");
        const int yAt5 = 270 - 35 - 100;
        QCOMPARE(core.toolTipTextAt(QPoint(135, yAt5)), QString("right\nQVL-2 Angle: 90\nCounts: 5\nn2"));
        QCOMPARE(core.toolTipTextAt(QPoint(85, yAt5)), QString("middle\nQVL-2 Angle: 45\nCounts: 5\nn1"));
        // Tolerances of 5 pixels of span (inclusive): 2.5 pixels on X, whose look-up scales by the maximum.
        QCOMPARE(core.toolTipTextAt(QPoint(85 + 2, yAt5 + 5)), QString("middle\nQVL-2 Angle: 45\nCounts: 5\nn1"));
        QCOMPARE(core.toolTipTextAt(QPoint(85 + 3, yAt5)), QString());
        QCOMPARE(core.toolTipTextAt(QPoint(85, yAt5 + 6)), QString());
        Core wide; // X 0 .. 40: a pixel is 0.2, the X tolerance exactly 1
        QVERIFY(wide.add("w", {0, 20, 40}, {0, 5, 10}, {}, {}, nullptr, {"a", "b", "c"}));
        QCOMPARE(wide.toolTipTextAt(QPoint(140, yAt5)).section('\n', 0, 0), QString("b"));
        // Reference lines read out their position in data units.
        core.setXAxisLabel("Angle");
        core.setReferenceLineX(true);
        core.setReferenceLinePosX(0.25);
        QCOMPARE(core.getPlotValueString(), QString("Angle: 12.50"));
        core.setYAxisLabel("Counts");
        core.setReferenceLineY(true);
        core.setReferenceLinePosY(0.5);
        QCOMPARE(core.getPlotValueString(), QString("Angle: 12.50   Counts: 5.00"));
        core.setReferenceLinePosY(1.01);
        QCOMPARE(core.getPlotValueString(), QString("Angle: 12.50"));
        // The area read-out, recomputed on each paint, for a single line only.
        core.setQuvelPlotArea("on");
        core.render();
        QCOMPARE(core.getQuvelPlotArea(), QString("Total Area: "));
        QVERIFY(core.removeDataLine("unlabelled"));
        core.render();
        const double k = ZOS_DEGREES_TO_RADIANS;
        QCOMPARE(core.getQuvelPlotArea(), "Total Area: " + QString::number(10 * 5 * k, 'g', 6) + " Counts");
        core.clear();
        QVERIFY(core.getQuvelPlotArea().isEmpty());
    }

    void decorations()
    {
        Core core; // X 0 .. 200, Y 0 .. 100 on 270 x 270
        QVERIFY(core.add("l", {0, 200}, {0, 100}));
        core.showLegend(false);
        const int changes = core.m_changes;
        core.setGridType(EGT_BOTH);
        QVERIFY(core.m_changes > changes); // a repaint
        core.addMarkerX("MX", 50, Qt::green);
        core.addMarkerY("MY", 25, Qt::magenta);
        core.setReferenceLineX(true);
        core.setReferenceLinePosX(0.75);
        core.setReferenceLinePosY(0.5); // but not shown
        const QImage image = core.render();
        QVERIFY(!core.removeMarkerX("absent") && !core.removeMarkerY("absent"));
        const QRgb grey = QColor(Qt::lightGray).rgb() & 0xFFFFFF;
        for (double v : core.xLabelValues())
            if (v > 0 && v != 50 && v != 150)
                QVERIFY(count(image, grey, QRect(35 + int(v), 36, 1, 198)) > 150);
        for (double v : core.yLabelValues())
            if (v > 0 && v != 25)
                QVERIFY(count(image, grey, QRect(36, 235 - 2 * int(v), 198, 1)) > 150);
        QVERIFY(count(image, Green, QRect(85, 35, 1, 201)) > 80); // dashed
        QVERIFY(count(image, QColor(Qt::magenta).rgb() & 0xFFFFFF, QRect(35, 185, 201, 1)) > 80);
        // Names: an X marker's right of its line at the top, a Y marker's above its line at the right end.
        const auto ink = [&](const QRect &r) { return count(image, White, r) + count(image, grey, r) < r.width() * r.height() - 4; };
        QVERIFY(ink(QRect(86, 36, 16, 14)) && ink(QRect(213, 170, 20, 14)) && !ink(QRect(236, 160, 34, 26)));
        QVERIFY(!ink(QRect(213, 186, 20, 10)));
        QVERIFY(count(image, Red, QRect(185, 36, 1, 199)) >= 190);
        QVERIFY(count(image, Red, QRect(120, 250, 150, 20)) > 10); // the value text
        QCOMPARE(count(image, Red, QRect(0, 0, 270, 34)) + count(image, Red, QRect(36, 135, 198, 1)), 1);
        // A shaded rectangle on a range within 0 .. 1 still shows.
        Core unit;
        QVERIFY(unit.add("l", {0, 1}, {0, 0}));
        unit.setShadedRectangleParams(0, 1, Qt::green);
        QCOMPARE(count(unit.render(), Green, unit.render().rect()), 0); // until shown
        unit.setVisibleShadedRectangle(true);
        unit.setReferenceLineY(true), unit.setReferenceLinePosY(0.5); // drawn over it, halfway up
        const QImage shaded = unit.render();
        QVERIFY(count(shaded, Green, QRect(40, 40, 190, 190)) > 150 * 150);
        QVERIFY(count(shaded, Red, QRect(35, 135, 201, 1)) > 190 && count(shaded, Red, QRect(236, 135, 34, 1)) == 0);
        QVERIFY(unit.add("l", {-10, 10}, {0, 0})); // past 0, with a rectangle that ends at 0: not drawn
        unit.setShadedRectangleParams(-8, 0, Qt::green);
        QCOMPARE(count(unit.render(), Green, unit.render().rect()), 0);
        // Without a range, markers and reference lines are still drawn; nothing else.
        Core none;
        QVERIFY(none.add("nothing finite", {NaN, Inf}, {1, NaN}));
        none.setReferenceLineY(true);
        none.setReferenceLinePosY(0.0); // an end of the range is inside it
        none.addMarkerX("m", 3, Qt::green);
        none.setReferenceLineX(true), none.setReferenceLinePosX(1.0);
        const QImage bare = none.render();
        QCOMPARE(count(bare, Black, bare.rect()), 0);
        QVERIFY(count(bare, Red, QRect(35, 235, 201, 1)) > 190 && count(bare, Red, QRect(235, 35, 1, 201)) > 190);
    }

    void curvesAndLegend_data()
    {
        QTest::addColumn<int>("layout"); QTest::addColumn<int>("mode");
        QTest::newRow("inset, lines") << int(EZOSPlotLayout::Inset) << int(EDM_LINES);
        QTest::newRow("inset, points") << int(EZOSPlotLayout::Inset) << int(EDM_POINTS);
        QTest::newRow("margins, points and lines") << int(EZOSPlotLayout::Margins) << int(EDM_POINTS_AND_LINES);
    }

    void curvesAndLegend()
    {
        QFETCH(int, layout); QFETCH(int, mode);
        Core core(EZOSPlotLayout(layout), QSize(300, 300));
        DISPLAY_SETTINGS s;
        s.displayMode = mode;
        s.pointSize = 9;
        QVERIFY(core.add("a long line name", {0, 10, 20}, {0, 10, 20}, {}, {2, 0, 0}, &s));
        QVERIFY(core.add("b", {0, 20}, {15, 15}, {}, {}, &s)); // below the legend
        const QImage image = core.render();
        const ZOSAxisMap xm = core.xMap(), ym = core.yMap();
        const QPoint mid(int(xm.toPixel(10)), int(ym.toPixel(10)));
        const QPoint between(int(xm.toPixel(5)), int(ym.toPixel(5)));
        // Points are plus signs: 2 pixels each way in the painted plot, the point size in the GL plot.
        const int arm = layout ? 4 : 2;
        QCOMPARE(count(image, Blue, QRect(mid.x() - arm - 1, mid.y(), 2 * arm + 3, 1)) >= 2 * arm + 1,
                 mode != EDM_LINES);
        if (mode == EDM_POINTS) // one row of arm, not a cross
            QVERIFY(count(image, Blue, QRect(mid.x() - arm - 1, mid.y() - 1, 2 * arm + 3, 1)) <= 1);
        QCOMPARE(count(image, Blue, QRect(between.x() - 1, between.y() - 1, 3, 3)) > 0, mode != EDM_POINTS);
        // The GL plot's error bar in red, over the first point only.
        const int bar = count(image, Red, QRect(int(xm.toPixel(0)), int(ym.toPixel(2)), 1, int(ym.toPixel(-2) - ym.toPixel(2))));
        QCOMPARE(bar > 10, bool(layout));
        QCOMPARE(count(image, Red, QRect(mid.x() - 3, 0, 6, 300)), 0);
        // The legend: right edge 3 pixels in, one row per line.
        const QFontMetrics &fm = core.plotFontMetrics();
        const int w = fm.horizontalAdvance("a long line name") + 14, h = 2 * fm.height() + 4;
        QCOMPARE(core.legendBox(), QRect(300 - 3 - w, 3, w, h));
        QCOMPARE(count(image, Black, QRect(300 - 3 - w, 3, w, 1)), w);
        QCOMPARE(count(image, Black, QRect(300 - 3 - w, 3, 1, h)), h);
        QCOMPARE(count(image, Blue, QRect(300 - w, 3, 10, h)), 2 * 64);
        QCOMPARE(count(image, Blue, QRect(300 - w, 5 + (fm.height() - 8) / 2, 10, 8)), 64); // rows from 2 pixels down
        QVERIFY(count(core.render(Qt::darkGray), White, core.legendBox()) > w * h / 2); // a white box on any background
        core.showLegend(false);
        QCOMPARE(count(core.render(), Blue, QRect(300 - w, 3, 10, h)), 0);
        core.clear(); // no axes, only "No data available"
        const QImage empty = core.render();
        QVERIFY(count(empty, Black, empty.rect()) == 0 && count(empty, White, empty.rect()) < 300 * 300 - 20);
    }

    void dataFiles()
    {
        Core core;
        core.setTitle("Run");
        QVERIFY(core.add("A", {1, 2, 3}, {10, 20.5, 30}, {0.5}, {0.5, 0.25}));
        const QByteArray path = QFile::encodeName(m_dir.filePath("plot.txt"));
        auto contents = [&] { return readFile(QFile::decodeName(path)); };
        QVERIFY(core.saveCommaSeparated(path.constData()));
        QCOMPARE(contents(), QByteArray("A, \nX Values, Y Values, X Errors, Y Errors, \n1, 10, 0.5, 0.5, \n"
                                        "2, 20.5, 0.25, \n3, 30, \n\n"));
        const QByteArray block("Run: A\nX Values\tY Values\tX Errors\tY Errors\n1\t3\t0.5\t0.5\n2\t20.5\t0.25\n3\t30\n\n\n");
        QVERIFY(core.add("A", {1, 2, 3}, {3, 20.5, 30}, {0.5}, {0.5, 0.25}));
        QVERIFY(core.saveData(path.constData(), false, '\t'));
        QVERIFY(core.saveData(path.constData(), true, '\t'));
        QCOMPARE(contents(), block + block);
        QVERIFY(core.removeYErrorData("A"));
        QVERIFY(core.saveCommaSeparated(path.constData()));
        QCOMPARE(contents(), QByteArray("A, \nX Values, Y Values, X Errors, \n1, 3, 0.5, \n2, 20.5, \n3, 30, \n\n"));
        QVERIFY(core.removeXErrorData("A"));
        QVERIFY(core.saveData(path.constData(), false, ','));
        QCOMPARE(contents(), QByteArray("Run: A\nX Values,Y Values\n1,3\n2,20.5\n3,30\n\n\n"));
        QVERIFY(core.add("B", {5}, {6}, {}, {})); // every line is written, in any order
        QVERIFY(core.saveData(path.constData(), false, ','));
        const QByteArray a("Run: A\nX Values,Y Values\n1,3\n2,20.5\n3,30\n\n"), b("Run: B\nX Values,Y Values\n5,6\n\n");
        QVERIFY(contents() == a + b + '\n' || contents() == b + a + '\n');
        QVERIFY(!core.writeDataToFile(nullptr, ','));
        const QByteArray bad = QFile::encodeName(m_dir.filePath("no/such/folder/plot.csv"));
        QVERIFY(!core.saveCommaSeparated(bad.constData()));
        QVERIFY(!core.saveData(bad.constData(), true, ','));
        QVERIFY(!core.saveCommaSeparated(nullptr));
    }

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
            const QList<QByteArray> page = bytes.mid(bytes.indexOf("MediaBox [") + 10).split(']').first().split(' ');
            const QSize points(qRound(page.value(2).toDouble()), qRound(page.value(3).toDouble()));
            QCOMPARE(points, size * 72.0 / plot.widget->logicalDpiX()); // the page is the picture
            // No page margin: the page's first transform (`a b c d x y cm`) does not move the drawing right.
            QCOMPARE(drawn.left(drawn.indexOf(" cm\n")).split('\n').last().split(' ').value(4), QByteArray("0"));
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
        const auto file = [this](const QString &name) {
            return [path = m_dir.filePath(name)](QWidget *w) {
                w->findChild<QLineEdit *>("fileNameEdit")->setText(path);
                QTest::keyClick(w->findChild<QLineEdit *>("fileNameEdit"), Qt::Key_Return);
            };
        };
        const auto press = [](QDialogButtonBox::StandardButton button) {
            return [button](QWidget *w) { w->findChild<QDialogButtonBox *>()->button(button)->click(); };
        };
        Answerer answer({file("menu"), press(QDialogButtonBox::Ok), file("cancelled"), press(QDialogButtonBox::Cancel)});
        for (int i = 0; i < 2; ++i) // the second time the size is cancelled
            for (QAction *action : plot.widget->findChild<QMenu *>()->actions())
                if (action->text() == "Export as PNG...")
                    action->trigger();
        QCOMPARE(QImage(m_dir.filePath("menu.png")).size(), QSize(400, 300)); // the suffix added
        QVERIFY(!QFile::exists(m_dir.filePath("cancelled.png")));
        QCOMPARE(answer.seen.size(), 4);
    }

    void paintedPlotSignals()
    {
        CZOSXYPlot plot(nullptr, "plot");
        plot.resize(270, 270);
        QVERIFY(plot.addDataLine("l", {10, 20}, {-100, 100}));
        QSignalSpy nx(&plot, &CZOSXYPlot::normalizedPosXChanged);
        QSignalSpy ax(&plot, &CZOSXYPlot::actualPlotXValueChanged);
        QSignalSpy ay(&plot, &CZOSXYPlot::actualPlotYValueChanged);
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(85, 185));
        QCOMPARE(nx.count(), 1);
        QCOMPARE((V{nx.at(0).at(0).toDouble(), ax.at(0).at(0).toDouble(), ay.at(0).at(0).toDouble()}),
                 (V{0.25, 12.5, -50.0}));
        send(&plot, QEvent::MouseMove, Qt::LeftButton, QPoint(135, 135));
        QCOMPARE(ax.count(), 2);
        QCOMPARE(ax.at(1).at(0).toDouble(), 15.0);
        send(&plot, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(135, 135));
        send(&plot, QEvent::MouseMove, Qt::NoButton, QPoint(150, 150));
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(5, 5)); // outside the plot area
        send(&plot, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(150, 150), Qt::ShiftModifier); // a band
        QCOMPARE(plot.findChild<QRubberBand *>()->geometry(), QRect(150, 150, 0, 0)); // starting empty
        QCOMPARE(ax.count(), 2);
        // The grid submenu and its API agree, from the start (no grid).
        QMenu *grid = nullptr;
        for (QMenu *menu : plot.findChildren<QMenu *>())
            grid = menu->title() == QLatin1String("Display Grid Lines") ? menu : grid;
        QVERIFY(grid->actions().at(0)->isChecked());
        grid->actions().at(2)->trigger();
        QCOMPARE(plot.getGridType(), int(EGT_HORIZONTAL));
        grid->actions().at(0)->trigger();
        QCOMPARE(plot.getGridType(), int(EGT_NONE));
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

QTEST_MAIN(TestPlots)
#include "tst_plots.moc"
