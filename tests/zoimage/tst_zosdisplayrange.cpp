#include "zosdisplayrange.h"

#include <QtTest>

#include <cmath>
#include <limits>

static bool isMultiple(double value, double step)
{
    return std::fabs(value / step - std::round(value / step)) < 1e-6;
}

class TestDisplayRange : public QObject
{
    Q_OBJECT

private slots:
    // Every range keeps the contract; rows with a step also give the exact result.
    void contract_data()
    {
        QTest::addColumn<double>("min"); QTest::addColumn<double>("max"); QTest::addColumn<int>("maxTicks");
        QTest::addColumn<QVector<double>>("nice"); // niceMin, niceMax, step, exponent
        QTest::newRow("span 1e-12 at zero") << 0.0 << 1e-12 << 20 << QVector<double>();
        QTest::newRow("span 1e-12 at one") << 1.0 << 1.0 + 1e-12 << 20 << QVector<double>();
        QTest::newRow("span 1e12") << -4e11 << 6e11 << 20 << QVector<double>();
        QTest::newRow("few ticks") << 0.0 << 97.0 << 3 << QVector<double>{0, 100, 50, 2};
        QTest::newRow("one tick asked") << 3.0 << 97.0 << 1 << QVector<double>{0, 100, 100, 2};
        QTest::newRow("large offset small span") << 1e9 << 1e9 + 0.37 << 20 << QVector<double>();
        QTest::newRow("reversed bounds") << 10.0 << -10.0 << 20 << QVector<double>{-10, 10, 2, 1};
        QTest::newRow("0 to 20000") << 0.0 << 20000.0 << 20 << QVector<double>{0, 20000, 2000, 4};
        QTest::newRow("0.3 to 9.7") << 0.3 << 9.7 << 20 << QVector<double>{0, 10, 1, 1};
        QTest::newRow("-0.25 to 0.25") << -0.25 << 0.25 << 20 << QVector<double>{-0.25, 0.25, 0.05, -1};
        QTest::newRow("equal value") << 5.0 << 5.0 << 20 << QVector<double>{5, 5.5, 0.5, 0};
        QTest::newRow("micro volts") << 0.0 << 2e-6 << 20 << QVector<double>{0, 2e-6, 2e-7, -6};
        QTest::newRow("big offset keeps detail") << 10000.0 << 10001.0 << 20 << QVector<double>{10000, 10001, 0.1, 0};
    }

    void contract()
    {
        QFETCH(double, min); QFETCH(double, max); QFETCH(int, maxTicks); QFETCH(QVector<double>, nice);
        tagZOSDisplayRange r;
        QVERIFY(getNiceRangeForDisplay(min, max, maxTicks, &r));
        const double lo = std::min(min, max);
        const double hi = std::max(min, max);
        QVERIFY(r.minimum == lo && r.maximum == hi);
        QVERIFY(r.niceMinimum <= lo && r.niceMaximum >= hi && r.niceMaximum > r.niceMinimum);
        const double power = std::pow(10.0, std::floor(std::log10(r.tickStep)));
        QVERIFY(isMultiple(r.tickStep / power, 1) && QList<double>({1, 2, 5, 10}).contains(std::round(r.tickStep / power)));
        QVERIFY(isMultiple(r.niceMinimum, r.tickStep) && isMultiple(r.niceMaximum, r.tickStep));
        QVERIFY(r.tickCount >= 2 && r.tickCount <= std::max(maxTicks, 2));
        QCOMPARE(r.tickCount, int(std::lround((r.niceMaximum - r.niceMinimum) / r.tickStep)) + 1);
        // Not needlessly coarse: the next finer 1-2-5 step would need more ticks
        // (only meaningful when the span is not lost in rounding).
        if (hi - lo > std::max(std::fabs(lo), std::fabs(hi)) * 1e-9) {
            const double finer = std::lround(r.tickStep / power) == 5 ? r.tickStep * 0.4 : r.tickStep * 0.5;
            QVERIFY(std::ceil(hi / finer) - std::floor(lo / finer) + 1 > std::max(maxTicks, 2));
        }
        // One decimal of value / 10^exponent tells neighbouring ticks apart.
        QVERIFY(r.tickStep / std::pow(10.0, r.exponent) >= 0.1 - 1e-12);
        if (!nice.isEmpty())
            QCOMPARE(QVector<double>({r.niceMinimum, r.niceMaximum, r.tickStep, double(r.exponent)}), nice);
    }

    void badInput()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        for (const QPair<double, double> &bounds : {qMakePair(nan, 1.0), qMakePair(0.0, nan), qMakePair(0.0, inf),
                                                    qMakePair(-inf, 0.0), qMakePair(-1.7e308, 1.7e308)}) {
            tagZOSDisplayRange r;
            r.niceMaximum = r.minimum = 42;
            QVERIFY(!getNiceRangeForDisplay(bounds.first, bounds.second, 20, &r));
            QVERIFY(r.minimum == 0 && r.niceMinimum == 0 && r.niceMaximum == 0 && r.tickStep == 0 && r.tickCount == 0);
        }
        QVERIFY(!getNiceRangeForDisplay(0, 1, 20, nullptr));
    }
};

QTEST_APPLESS_MAIN(TestDisplayRange)
#include "tst_zosdisplayrange.moc"
