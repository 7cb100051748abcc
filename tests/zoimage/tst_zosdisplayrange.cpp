#include "zosdisplayrange.h"

#include <QtTest>

#include <cmath>
#include <limits>

class TestDisplayRange : public QObject
{
    Q_OBJECT

private:
    static bool isOneTwoFive(double step)
    {
        const double power = std::pow(10.0, std::floor(std::log10(step)));
        const double mantissa = step / power;
        for (double m : {1.0, 2.0, 5.0, 10.0}) {
            if (std::fabs(mantissa - m) < 1e-9 * m)
                return true;
        }
        return false;
    }
    static bool isMultiple(double value, double step)
    {
        const double k = value / step;
        return std::fabs(k - std::round(k)) < 1e-6;
    }

private slots:
    void contract_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<int>("maxTicks");
        QTest::newRow("span 1e-12 at zero") << 0.0 << 1e-12 << 20;
        QTest::newRow("span 1e-12 at one") << 1.0 << 1.0 + 1e-12 << 20;
        QTest::newRow("span 1e-6") << -3e-7 << 7e-7 << 20;
        QTest::newRow("span 1") << 0.13 << 1.13 << 20;
        QTest::newRow("span 7.3") << 2.2 << 9.5 << 20;
        QTest::newRow("span 1e3 offset") << 1234.5 << 2234.5 << 20;
        QTest::newRow("span 1e6") << 0.0 << 1e6 << 20;
        QTest::newRow("span 1e12") << -4e11 << 6e11 << 20;
        QTest::newRow("negative range") << -97.0 << -3.0 << 20;
        QTest::newRow("across zero") << -0.37 << 0.81 << 20;
        QTest::newRow("few ticks") << 0.0 << 97.0 << 3;
        QTest::newRow("one tick asked") << 3.0 << 97.0 << 1;
        QTest::newRow("many ticks") << 0.0 << 1.0 << 1000;
        QTest::newRow("large offset small span") << 1e9 << 1e9 + 0.37 << 20;
        QTest::newRow("tiny values") << 1.1e-300 << 9.7e-300 << 20;
        QTest::newRow("huge values") << -1e300 << 1e300 << 20;
        QTest::newRow("reversed bounds") << 10.0 << -10.0 << 20;
    }

    void contract()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        QFETCH(int, maxTicks);
        tagZOSDisplayRange r;
        QVERIFY(getNiceRangeForDisplay(min, max, maxTicks, &r));
        const double lo = std::min(min, max);
        const double hi = std::max(min, max);
        QCOMPARE(r.minimum, lo);
        QCOMPARE(r.maximum, hi);
        QVERIFY2(r.niceMinimum <= lo, qPrintable(QString::number(r.niceMinimum, 'g', 17)));
        QVERIFY2(r.niceMaximum >= hi, qPrintable(QString::number(r.niceMaximum, 'g', 17)));
        QVERIFY(r.niceMaximum > r.niceMinimum);
        QVERIFY(r.tickStep > 0);
        QVERIFY2(isOneTwoFive(r.tickStep), qPrintable(QString::number(r.tickStep, 'g', 17)));
        QVERIFY(isMultiple(r.niceMinimum, r.tickStep));
        QVERIFY(isMultiple(r.niceMaximum, r.tickStep));
        QVERIFY(r.tickCount >= 2);
        QVERIFY(r.tickCount <= std::max(maxTicks, 2));
        QCOMPARE(r.tickCount, int(std::lround((r.niceMaximum - r.niceMinimum) / r.tickStep)) + 1);
        // Not needlessly coarse: the next finer 1-2-5 step would need more ticks
        // (only meaningful when the span is not lost in rounding).
        if (hi - lo > std::max(std::fabs(lo), std::fabs(hi)) * 1e-9) {
            const double mantissa = r.tickStep / std::pow(10.0, std::floor(std::log10(r.tickStep)));
            const double finer = std::lround(mantissa) == 5 ? r.tickStep * 0.4 : r.tickStep * 0.5;
            const double ticks = std::ceil(hi / finer) - std::floor(lo / finer) + 1;
            QVERIFY2(ticks > std::max(maxTicks, 2), "a finer step would have fitted");
        }
        // One decimal of value / 10^exponent tells neighbouring ticks apart.
        QVERIFY(r.tickStep / std::pow(10.0, r.exponent) >= 0.1 - 1e-12);
    }

    void knownRanges_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<double>("niceMin");
        QTest::addColumn<double>("niceMax");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("exponent");
        QTest::newRow("0 to 20000") << 0.0 << 20000.0 << 0.0 << 20000.0 << 2000.0 << 4;
        QTest::newRow("0 to 10") << 0.0 << 10.0 << 0.0 << 10.0 << 1.0 << 1;
        QTest::newRow("0.3 to 9.7") << 0.3 << 9.7 << 0.0 << 10.0 << 1.0 << 1;
        QTest::newRow("-0.25 to 0.25") << -0.25 << 0.25 << -0.25 << 0.25 << 0.05 << -1;
        QTest::newRow("equal value") << 5.0 << 5.0 << 5.0 << 5.5 << 0.5 << 0;
        QTest::newRow("zero value") << 0.0 << 0.0 << 0.0 << 0.1 << 0.1 << -1;
        QTest::newRow("negative equal") << -3.0 << -3.0 << -3.0 << -2.8 << 0.2 << 0;
        QTest::newRow("micro volts") << 0.0 << 2e-6 << 0.0 << 2e-6 << 2e-7 << -6;
        QTest::newRow("big offset keeps detail") << 10000.0 << 10001.0 << 10000.0 << 10001.0 << 0.1 << 0;
    }

    void knownRanges()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        tagZOSDisplayRange r;
        QVERIFY(getNiceRangeForDisplay(min, max, 20, &r));
        QTEST(r.niceMinimum, "niceMin");
        QTEST(r.niceMaximum, "niceMax");
        QTEST(r.tickStep, "step");
        QTEST(r.exponent, "exponent");
    }

    void badInput_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        QTest::newRow("NaN min") << nan << 1.0;
        QTest::newRow("NaN max") << 0.0 << nan;
        QTest::newRow("infinite max") << 0.0 << inf;
        QTest::newRow("negative infinite min") << -inf << 0.0;
        QTest::newRow("span overflows") << -1.7e308 << 1.7e308;
    }

    void badInput()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        tagZOSDisplayRange r;
        r.niceMaximum = 42;
        QVERIFY(!getNiceRangeForDisplay(min, max, 20, &r));
        QCOMPARE(r.niceMinimum, 0.0);
        QCOMPARE(r.niceMaximum, 0.0);
        QCOMPARE(r.tickStep, 0.0);
        QCOMPARE(r.tickCount, 0);
        QVERIFY(!getNiceRangeForDisplay(0, 1, 20, nullptr));
    }
};

QTEST_APPLESS_MAIN(TestDisplayRange)
#include "tst_zosdisplayrange.moc"
