#include "zosplotscale.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <tuple>

namespace {
const double NaN = std::numeric_limits<double>::quiet_NaN();
const double Inf = std::numeric_limits<double>::infinity();

ZOSPlotLineView view(const QVector<double> &x, const QVector<double> &y, const QVector<double> &ex = {},
                     const QVector<double> &ey = {})
{
    ZOSPlotLineView v;
    v.x = x.constData();
    v.y = y.constData();
    v.count = std::min(x.size(), y.size());
    v.xErrors = ex.isEmpty() ? nullptr : ex.constData();
    v.xErrorCount = ex.size();
    v.yErrors = ey.isEmpty() ? nullptr : ey.constData();
    v.yErrorCount = ey.size();
    return v;
}
} // namespace

class TestPlotScale : public QObject
{
    Q_OBJECT

private slots:
    void extent_data()
    {
        QTest::addColumn<QVector<double>>("x");
        QTest::addColumn<QVector<double>>("y");
        QTest::addColumn<QVector<double>>("ex");
        QTest::addColumn<QVector<double>>("ey");
        QTest::addColumn<QVector<double>>("expected"); // xMin, yMin, xMax, yMax
        using V = QVector<double>;
        QTest::newRow("plain") << V{1, 2, 3} << V{5, -1, 4} << V{} << V{} << V{1, -1, 3, 5};
        QTest::newRow("errors widen") << V{1, 2, 3} << V{5, -1, 4} << V{0.5, 0, 2} << V{1, 1, 1}
                                      << V{0.5, -2, 5, 6};
        QTest::newRow("short error array applies to first points only")
            << V{1, 2, 3} << V{0, 0, 0} << V{} << V{10} << V{1, -10, 3, 10};
        QTest::newRow("NaN and infinite points left out")
            << V{1, NaN, 3, Inf, 2} << V{1, 100, NaN, 5, 4} << V{} << V{} << V{1, 1, 2, 4};
        QTest::newRow("non-finite error counts as 0") << V{1, 2} << V{1, 2} << V{NaN, Inf} << V{} << V{1, 1, 2, 2};
        QTest::newRow("single point") << V{7} << V{3} << V{} << V{} << V{7, 3, 7, 3};
    }

    void extent()
    {
        QFETCH(QVector<double>, x);
        QFETCH(QVector<double>, y);
        QFETCH(QVector<double>, ex);
        QFETCH(QVector<double>, ey);
        const ZOSPlotExtent e = zosLineExtent(view(x, y, ex, ey));
        QVERIFY(e.valid);
        QTEST((QVector<double>{e.xMin, e.yMin, e.xMax, e.yMax}), "expected");
    }

    void extentOfNothing()
    {
        const QVector<double> bad{NaN, Inf};
        QVERIFY(!zosLineExtent(view(bad, bad)).valid);
        QVERIFY(!zosLineExtent(view({}, {})).valid);
        QVERIFY(!zosDetermineRanges(ZOSPlotExtent(), false).drawable);
        ZOSPlotExtent a = zosLineExtent(view({1, 2}, {3, 4}));
        QCOMPARE(zosMergeExtents(ZOSPlotExtent(), a).xMax, 2.0);
        const ZOSPlotExtent m = zosMergeExtents(a, zosLineExtent(view({-5}, {10})));
        QCOMPARE((QVector<double>{m.xMin, m.yMax}), (QVector<double>{-5, 10}));
    }

    void ranges_data()
    {
        QTest::addColumn<QVector<double>>("extent");
        QTest::addColumn<bool>("floor");
        QTest::addColumn<QVector<double>>("display"); // x min, x max, y min, y max
        QTest::addColumn<bool>("drawable");
        using V = QVector<double>;
        QTest::newRow("every X the same starts X at 0") << V{7, 1, 7, 3} << false << V{0, 7, 1, 3} << true;
        QTest::newRow("floor forces Y from 0") << V{0, 900, 10, 1000} << true << V{0, 10, 0, 1000} << true;
        QTest::newRow("without floor Y hugs the data") << V{0, 900, 10, 1000} << false << V{0, 10, 900, 1000} << true;
        QTest::newRow("all points equal") << V{0, 0, 0, 0} << false << V{0, 0.1, 0, 0.1} << true;
    }

    void ranges()
    {
        QFETCH(QVector<double>, extent);
        QFETCH(bool, floor);
        const ZOSPlotExtent e = zosLineExtent(view({extent[0], extent[2]}, {extent[1], extent[3]}));
        const ZOSPlotRanges r = zosDetermineRanges(e, floor);
        QTEST((QVector<double>{r.xDisplayMin, r.xDisplayMax, r.yDisplayMin, r.yDisplayMax}), "display");
        QTEST(r.drawable, "drawable");
    }

    void axisMap()
    {
        // 10 .. 20 over a 270-pixel widget: plot area 35 .. 235.
        const ZOSAxisMap m(10, 20, false, 35, 200), r(10, 20, true, 35, 200);
        for (auto [map, value, pixel] : {std::tuple(&m, 10.0, 35.0), {&m, 20.0, 235.0}, {&m, 15.0, 135.0},
                                         {&r, 10.0, 235.0}, {&r, 20.0, 35.0}, {&r, 12.5, 185.0}}) {
            QCOMPARE(map->toPixel(value), pixel);
            QCOMPARE(map->toData(pixel), value);
        }
        const ZOSAxisMap y(0, 100, false, 200 - 35, -(200 - 70));
        QCOMPARE(y.toPixel(0), 165.0);
        QCOMPARE(y.toPixel(100), 35.0);
        QVERIFY(!ZOSAxisMap(5, 5, false, 0, 100).isValid());
    }

    void tickLabels_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("niceMin");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("exponent");
        QTest::addColumn<QString>("label");
        QTest::newRow("exponent 4 divides by 10^4") << 25000.0 << 0.0 << 5000.0 << 4 << "2.5";
        QTest::newRow("exponent 4 zero") << 0.0 << 0.0 << 5000.0 << 4 << "0.0";
        QTest::newRow("exponent -5 via doubleToString") << 3e-5 << 0.0 << 1e-6 << -5 << "3.0";
        QTest::newRow("integral axis truncates") << 7.0 << 0.0 << 1.0 << 1 << "7";
        QTest::newRow("integral negative") << -40.0 << -100.0 << 20.0 << 2 << "-40";
        QTest::newRow("fractional step") << 0.25 << 0.0 << 0.05 << -1 << "0.25";
        QTest::newRow("nice minimum between 0 and 1") << 3.0 << 0.5 << 1.0 << 0 << "3.00";
        QTest::newRow("exponent 3 stays plain") << 2000.0 << 0.0 << 200.0 << 3 << "2000";
        QTest::newRow("exponent -2 stays plain") << 0.05 << 0.0 << 0.005 << -2 << "0.05";
    }

    void tickLabels()
    {
        QFETCH(double, value);
        QFETCH(double, niceMin);
        QFETCH(double, step);
        QFETCH(int, exponent);
        tagZOSDisplayRange r;
        r.niceMinimum = niceMin;
        r.tickStep = step;
        r.exponent = exponent;
        QTEST(zosTickLabel(value, r), "label");
    }

    void labelStep_data()
    {
        QTest::addColumn<double>("span");
        QTest::addColumn<int>("pixels");
        QTest::addColumn<double>("labelPixels");
        QTest::addColumn<double>("tick");
        QTest::addColumn<double>("forced");
        QTest::addColumn<double>("step");
        QTest::newRow("wide axis labels every tick") << 10.0 << 1000 << 40.0 << 1.0 << 0.0 << 1.0;
        QTest::newRow("narrow axis skips ticks") << 10.0 << 200 << 40.0 << 1.0 << 0.0 << 2.0;
        QTest::newRow("exact multiple not rounded up") << 10.0 << 100 << 20.0 << 1.0 << 0.0 << 2.0;
        QTest::newRow("just past a multiple") << 10.0 << 100 << 20.5 << 1.0 << 0.0 << 3.0;
        QTest::newRow("forced step") << 10.0 << 1000 << 40.0 << 1.0 << 2.5 << 3.0;
        QTest::newRow("no span") << 0.0 << 1000 << 40.0 << 1.0 << 0.0 << 0.0;
        QTest::newRow("zero-size widget") << 10.0 << 0 << 40.0 << 1.0 << 0.0 << 0.0;
    }

    void labelStep()
    {
        QFETCH(double, span);
        QFETCH(int, pixels);
        QFETCH(double, labelPixels);
        QFETCH(double, tick);
        QFETCH(double, forced);
        QTEST(zosLabelStep(span, pixels, labelPixels, tick, forced), "step");
    }

    void labelValues()
    {
        QCOMPARE(zosLabelValues(-0.3, 0.3, 0.1, false),
                 (QVector<double>{-0.3, -0.2, -0.1, 0.0, 0.1, 0.2, 0.3}));
        QCOMPARE(zosLabelValues(0, 10, 4, true), (QVector<double>{10, 6, 2}));
        QCOMPARE(zosLabelValues(0, 10, 4, false), (QVector<double>{0, 4, 8}));
        QVERIFY(zosLabelValues(0, 10, 0, false).isEmpty());
        QCOMPARE(zosLabelValues(0, 1e9, 1, false).size(), 1000); // capped, no hang
    }

    void reduction_data()
    {
        QTest::addColumn<QVector<double>>("x");
        QTest::addColumn<QVector<double>>("y");
        QTest::addColumn<bool>("breakBackwards");
        QTest::addColumn<bool>("reduce");
        QTest::addColumn<QVector<int>>("indices");
        using V = QVector<double>;
        using I = QVector<int>;
        // One pixel per data unit: x 0.0 .. 0.9 share column 0.
        QTest::newRow("one column keeps first, min, max, last")
            << V{0.0, 0.1, 0.2, 0.3, 0.4, 0.5} << V{5, 9, 1, 4, 7, 6} << false << true << I{0, 1, 2, 5, -1};
        QTest::newRow("min before max keeps order")
            << V{0.0, 0.1, 0.2, 0.3} << V{5, 1, 9, 6} << false << true << I{0, 1, 2, 3, -1};
        QTest::newRow("first is the minimum") << V{0.0, 0.1, 0.2} << V{0, 9, 5} << false << true << I{0, 1, 2, -1};
        QTest::newRow("columns apart") << V{0.0, 1.0, 2.0} << V{1, 2, 3} << false << true << I{0, 1, 2, -1};
        QTest::newRow("NaN ends a piece") << V{0, 1, NaN, 3, 4} << V{1, 2, 3, 4, 5} << false << true
                                          << I{0, 1, -1, 3, 4, -1};
        QTest::newRow("infinite Y ends a piece") << V{0, 1, 2} << V{1, Inf, 3} << false << false << I{0, -1, 2, -1};
        QTest::newRow("turning back breaks when asked")
            << V{1, 2, 3, 2, 3} << V{0, 0, 0, 0, 0} << true << false << I{0, 1, 2, -1, 3, 4, -1};
        QTest::newRow("turning back kept connected otherwise")
            << V{1, 2, 3, 2, 3} << V{0, 0, 0, 0, 0} << false << false << I{0, 1, 2, 3, 4, -1};
        QTest::newRow("unreduced keeps all") << V{0.0, 0.1, 0.2} << V{3, 2, 1} << false << false << I{0, 1, 2, -1};
    }

    void reduction()
    {
        QFETCH(QVector<double>, x);
        QFETCH(QVector<double>, y);
        QFETCH(bool, breakBackwards);
        QFETCH(bool, reduce);
        QVector<int> indices;
        const ZOSAxisMap m(0, 100, false, 0, 100);
        const int n = zosReducePolyline(x.constData(), y.constData(), x.size(), m, breakBackwards, reduce, indices);
        QTEST(indices, "indices");
        QCOMPARE(n, indices.size());
    }

    void reductionBoundsPointsPerColumn()
    {
        const int n = 1000000;
        QVector<double> x(n), y(n);
        for (int i = 0; i < n; ++i) {
            x[i] = i;
            y[i] = std::sin(i * 0.001) * 100 + (i % 7);
        }
        QVector<int> indices;
        const ZOSAxisMap m(0, n, false, 35, 930);
        zosReducePolyline(x.constData(), y.constData(), n, m, false, true, indices);
        QVERIFY(indices.size() <= 4 * 931 + 1);
        QCOMPARE(indices.first(), 0);
        QCOMPARE(indices.at(indices.size() - 2), n - 1);
        // Each column's extremes survive.
        double lo = 1e9, hi = -1e9;
        for (int i : indices)
            if (i >= 0) {
                lo = std::min(lo, y[i]);
                hi = std::max(hi, y[i]);
            }
        QCOMPARE(lo, *std::min_element(y.cbegin(), y.cend()));
        QCOMPARE(hi, *std::max_element(y.cbegin(), y.cend()));
    }

    void sortedSearchPicksTheSamePoints_data()
    {
        QTest::addColumn<bool>("reversed");
        QTest::addColumn<int>("count");
        QTest::newRow("dense") << false << 200000;
        QTest::newRow("dense, reversed axis") << true << 200000;
        QTest::newRow("sparse with repeats") << false << 500;
    }

    void sortedSearchPicksTheSamePoints()
    {
        QFETCH(bool, reversed);
        QFETCH(int, count);
        QVector<double> x(count), y(count);
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
        QVector<int> general, sorted;
        zosReducePolyline(x.constData(), y.constData(), count, m, false, true, general, false);
        zosReducePolyline(x.constData(), y.constData(), count, m, false, true, sorted, true);
        QCOMPARE(sorted, general);
    }

    void sortedAndFinite()
    {
        const QVector<double> up{1, 2, 2, 3}, down{1, 3, 2}, nan{1, NaN, 3}, inf{1, 2, Inf};
        QVERIFY(zosIsSortedAndFinite(up.constData(), up.constData(), up.size()));
        for (auto [x, y] : {std::pair(&down, &up), {&nan, &up}, {&up, &inf}})
            QVERIFY(!zosIsSortedAndFinite(x->constData(), y->constData(), 3));
    }

    void area_data()
    {
        QTest::addColumn<QVector<double>>("x");
        QTest::addColumn<QVector<double>>("y");
        QTest::addColumn<bool>("even");
        QTest::addColumn<double>("area");
        using V = QVector<double>;
        const double k = ZOS_DEGREES_TO_RADIANS;
        QTest::newRow("even spacing sums Y") << V{0, 10, 20, 30} << V{1, 2, 3, 4} << true << 10 * 10 * k;
        QTest::newRow("uneven spacing trapezoid over span")
            << V{0, 10, 30} << V{1, 3, 5} << false << ((1 + 3) * 10 * k * 0.5 + (3 + 5) * 20 * k * 0.5) / (30 * k);
        QTest::newRow("two points are even") << V{5, 7} << V{2, 2} << true << 4 * 2 * k;
        QTest::newRow("single point") << V{5} << V{2} << false << 0.0;
    }

    void area()
    {
        QFETCH(QVector<double>, x);
        QFETCH(QVector<double>, y);
        QTEST(zosIsXAxisEvenlySpaced(x.constData(), x.size()), "even");
        QFETCH(double, area);
        QCOMPARE(zosQuvelArea(x.constData(), y.constData(), x.size()), area);
    }

    // The lookup itself is pinned through the plot's tool tips; here only the zero-width plot area.
    void toolTipOnZeroWidthArea() { QCOMPARE(zosToolTipPointX(10, 20, 70, 100), 10.0); }

    void glMargins_data()
    {
        QTest::addColumn<QVector<int>>("input");   // low padding, legend, X label empty, X exponent, Y exponent
        QTest::addColumn<QVector<int>>("margins"); // left, right, bottom, top
        using I = QVector<int>;
        // Font ascent 12, descent 3: text height 9.
        QTest::newRow("default with legend") << I{0, 1, 1, 0, 0} << I{50, 40, 30, 50};
        QTest::newRow("default without legend") << I{0, 0, 1, 0, 0} << I{50, 40, 30, 31};
        QTest::newRow("low, empty X label") << I{1, 0, 1, 0, 0} << I{35, 15, 20, 14};
        QTest::newRow("low, X label") << I{1, 0, 0, 0, 0} << I{35, 15, 30, 14};
        QTest::newRow("low, X exponent") << I{1, 0, 1, 5, 0} << I{35, 40, 20, 14};
        QTest::newRow("low, Y exponent") << I{1, 0, 1, 0, -4} << I{35, 15, 20, 50};
        QTest::newRow("low with legend") << I{1, 1, 1, 0, 0} << I{35, 15, 20, 50};
    }

    void glMargins()
    {
        QFETCH(QVector<int>, input);
        ZOSGLLayoutInput in;
        in.lowMarginPadding = input[0];
        in.legendShown = input[1];
        in.xLabelEmpty = input[2];
        in.xExponent = input[3];
        in.yExponent = input[4];
        in.fontAscent = 12;
        in.fontDescent = 3;
        const ZOSPlotMargins m = zosGLMargins(in);
        QTEST((QVector<int>{m.left, m.right, m.bottom, m.top}), "margins");
    }
};

QTEST_APPLESS_MAIN(TestPlotScale)
#include "tst_zosplotscale.moc"
