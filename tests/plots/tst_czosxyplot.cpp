#include "czosxyplot.h"
#include "czoslog.h"

#include <QAction>
#include <QActionGroup>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <functional>
#include <limits>

namespace {
const double NaN = std::numeric_limits<double>::quiet_NaN();
const double Inf = std::numeric_limits<double>::infinity();
const QRgb Blue = qRgb(0, 0, 255);

// Exposes the protected pieces a user cannot reach but a test must see.
class ProbePlot : public CZOSXYPlot
{
public:
    using CZOSXYPlot::CZOSXYPlot;
    using CZOSXYPlot::convertObjectToNormalizedCoords;
    using CZOSXYPlot::convertWindowToNormalizedCoords;
    using CZOSXYPlot::getPlotValueString;
};

int countWhere(const QImage &image, const QRect &area, const std::function<bool(QRgb)> &test)
{
    int n = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            n += test(image.pixel(x, y));
    return n;
}

int countColour(const QImage &image, QRgb colour, const QRect &area)
{
    return countWhere(image, area, [colour](QRgb c) { return (c & 0xFFFFFF) == (colour & 0xFFFFFF); });
}

// The column of the lowest pixel of `colour` (largest y): where a rising curve starts.
int columnOfLowest(const QImage &image, QRgb colour)
{
    for (int y = image.height() - 1; y >= 0; --y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xFFFFFF) == (colour & 0xFFFFFF))
                return x;
    return -1;
}
} // namespace

class TestXYPlot : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    ProbePlot *m_plot = nullptr;

    void moveMouse(const QPoint &pos)
    {
        QMouseEvent move(QEvent::MouseMove, pos, m_plot->mapToGlobal(pos), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(m_plot, &move);
    }

    void rising()
    {
        QVector<double> x, y;
        for (int i = 0; i <= 94; ++i) {
            x << 0.3 + i * 0.1;
            y << 0.3 + i * 0.1;
        }
        QVERIFY(m_plot->addDataLine(QStringLiteral("rising"), x, y));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        qputenv("ZO_DATA_ROOT", m_dir.path().toUtf8());
        QStandardPaths::setTestModeEnabled(true);
    }

    void init()
    {
        m_plot = new ProbePlot(nullptr, "plot");
        m_plot->resize(270, 270);
    }

    void cleanup()
    {
        delete m_plot;
        m_plot = nullptr;
    }

    void emptyPlotSaysNoData()
    {
        const QImage image = m_plot->getPrintImage();
        QCOMPARE(image.size(), QSize(270, 270));
        // Text may be antialiased: count clearly red pixels.
        auto reddish = [](QRgb c) { return qRed(c) > 150 && qGreen(c) < 120 && qBlue(c) < 120; };
        QVERIFY(countWhere(image, QRect(60, 110, 150, 50), reddish) > 20);
        QCOMPARE(countWhere(image, QRect(0, 0, 270, 100), reddish), 0);
        QCOMPARE(countColour(image, qRgb(0, 0, 0), image.rect()), 0); // no axes
    }

    void axesSit35PixelsIn()
    {
        rising();
        const QImage image = m_plot->getPrintImage();
        const int h = image.height();
        const int w = image.width();
        for (int y = 36; y < h - 36; ++y)
            QCOMPARE(image.pixel(35, y) & 0xFFFFFF, 0u);
        for (int x = 36; x < w - 36; ++x)
            QCOMPARE(image.pixel(x, h - 35) & 0xFFFFFF, 0u);
        // Nothing of the axes inside the plot area, and the curve is there.
        QCOMPARE(countColour(image, qRgb(0, 0, 0), QRect(40, 60, w - 80, h - 100)), 0);
        QVERIFY(countColour(image, Blue, image.rect()) > 150);
    }

    void reversedAxisFlipsCurve()
    {
        rising();
        const int normal = columnOfLowest(m_plot->getPrintImage(), Blue);
        QVERIFY(normal >= 35 && normal < 60);
        m_plot->setXAxisReversed(true);
        const int reversed = columnOfLowest(m_plot->getPrintImage(), Blue);
        QVERIFY(reversed > 270 - 60 && reversed <= 270 - 35);
        m_plot->setXAxisReversed(false);
        m_plot->setYAxisReversed(true); // the lowest point is now the end at x max
        QVERIFY(columnOfLowest(m_plot->getPrintImage(), Blue) > 270 - 60);
    }

    void displayRanges()
    {
        QVERIFY(m_plot->addDataLine("high", {7, 7, 7}, {900, 950, 1000}));
        QCOMPARE(m_plot->getXDisplayMin(), 0.0); // every X the same
        QVERIFY(m_plot->getXDisplayMax() >= 7 && m_plot->getYDisplayMin() >= 800);
        m_plot->setYAxisFloor(true);
        QCOMPARE(m_plot->getYDisplayMin(), 0.0);
        QVERIFY(m_plot->getYDisplayMax() >= 1000);
        m_plot->clear();
        m_plot->setYAxisFloor(false);
        QVERIFY(m_plot->addDataLine("e", {10, 20}, {10, 20}, {0, 5}, {3})); // errors widen the ranges
        QCOMPARE(m_plot->getXDisplayMax(), 25.0);
        QCOMPARE(m_plot->getYDisplayMin(), 7.0);
        QVERIFY(m_plot->removeXErrorData("e"));
        QCOMPARE(m_plot->getXDisplayMax(), 20.0);
        QVERIFY(!m_plot->removeYErrorData("nope"));
    }

    void referenceLineAtItsFraction()
    {
        rising();
        m_plot->setXAxisLabel("Angle");
        m_plot->setReferenceLineX(true);
        m_plot->setReferenceLinePosX(0.25);
        const QImage image = m_plot->getPrintImage();
        const int x = 35 + int(0.25 * 200);
        for (int y = 36; y < 270 - 36; ++y)
            QCOMPARE(image.pixel(x, y) & 0xFFFFFF, qRgb(255, 0, 0) & 0xFFFFFFu);
        QCOMPARE(m_plot->getPlotValueString(), QStringLiteral("Angle: 2.50"));
        m_plot->setYAxisLabel("Counts");
        m_plot->setReferenceLineY(true);
        m_plot->setReferenceLinePosY(0.5);
        QCOMPARE(m_plot->getPlotValueString(), QStringLiteral("Angle: 2.50   Counts: 5.00"));
        m_plot->setReferenceLinePosX(1.5); // outside the area: no line
        const QImage moved = m_plot->getPrintImage();
        QVERIFY((moved.pixel(x, 50) & 0xFFFFFF) != (qRgb(255, 0, 0) & 0xFFFFFFu));
    }

    void exponentLabels()
    {
        QVERIFY(m_plot->addDataLine("big", {0, 20000}, {1, 2}));
        QCOMPARE(m_plot->getXRange().exponent, 4);
        const QStringList labels = m_plot->getXTickLabels();
        QVERIFY(labels.size() >= 2);
        QCOMPARE(labels.first(), QStringLiteral("0.0"));
        QCOMPARE(labels.last(), QStringLiteral("2.0"));
        // The factor is drawn right of the X axis end: pixels there only with it.
        const QImage with = m_plot->getPrintImage();
        QVERIFY(countColour(with, qRgb(0, 0, 0), QRect(270 - 33, 270 - 45, 32, 16)) > 5);
        m_plot->clear();
        QVERIFY(m_plot->addDataLine("small", {0, 20}, {1, 2}));
        QCOMPARE(countColour(m_plot->getPrintImage(), qRgb(0, 0, 0), QRect(270 - 33, 270 - 45, 32, 16)), 0);
    }

    void coordinateConversions()
    {
        // Data 10 .. 20 and 0 .. 100 on 270 x 270: plot area 35 .. 235.
        QVERIFY(m_plot->addDataLine("l", {10, 20}, {0, 100}));
        for (const QVector<double> &p : {QVector<double>{10, 0, 35, 235}, {15, 50, 135, 135}, {20, 100, 235, 35}}) {
            int wx = 0, wy = 0;
            m_plot->convertObjectToWindowCoords(p[0], p[1], wx, wy);
            double ox = 0, oy = 0;
            m_plot->convertWindowToObjectCoords(p[2], p[3], ox, oy);
            QCOMPARE((QVector<double>{ox, oy, double(wx), double(wy)}), p);
        }
        QCOMPARE(m_plot->convertObjectToWindowWidth(5), 100);
        QCOMPARE(m_plot->convertObjectToWindowHeight(50), 100);
        QCOMPARE(m_plot->convertWindowToObjectWidth(20), 1.0);
        QCOMPARE(m_plot->convertWindowToObjectHeight(20), 10.0);
        double xr = 0, yr = 0;
        m_plot->getXYRatios(xr, yr);
        QCOMPARE(xr, 0.05);
        QCOMPARE(yr, 0.5);
        double nx = 0, ny = 0;
        m_plot->convertObjectToNormalizedCoords(12.5, 25, nx, ny);
        QCOMPARE(nx, 0.25);
        QCOMPARE(ny, 0.25);
        m_plot->convertWindowToNormalizedCoords(85, 185, nx, ny);
        QCOMPARE(nx, 0.25);
        QCOMPARE(ny, 0.25);
    }

    void saveDataBytes()
    {
        QVERIFY(m_plot->addDataLine("Profile", {1, 2, 3}, {10, 20.5, 30}, {}, {0.5, 0.25}));
        const QString file = m_dir.filePath("plot.csv");
        QVERIFY(m_plot->saveData(QFile::encodeName(file).constData()));
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), QByteArray("Profile, \n"
                                         "X Values, Y Values, Y Errors, \n"
                                         "1, 10, 0.5, \n"
                                         "2, 20.5, 0.25, \n"
                                         "3, 30, \n"
                                         "\n"));
    }

    void saveDataToUnwritablePathLogs()
    {
        QVERIFY(CZOSLogEventHandler::install());
        QCOMPARE(beginLog(QStringLiteral("plots")), 1);
        QVERIFY(m_plot->addDataLine("l", {1, 2}, {1, 2}));
        const QByteArray bad = QFile::encodeName(m_dir.filePath("no/such/folder/plot.csv"));
        QVERIFY(!m_plot->saveData(bad.constData()));
        QVERIFY(!m_plot->saveData(nullptr));
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QFile log(getLogObject()->fileName());
        closeLog();
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        QVERIFY2(text.contains("Unable to open file\n File:" + bad + "\n for saving plot data."), text.constData());
    }

    void toolTipLookup()
    {
        // X 10 .. 20, Y 0 .. 10 on 270 x 270. The cursor at x = 135 is looked up
        // at X = 20 (scaled by the maximum alone), not at the middle 15.
        QVERIFY(m_plot->addDataLine("mv", {10, 15, 20}, {0, 5, 5}, {}, {}, {"left", "middle", "right"},
                                    {"0", "45", "90"}, {"n0", "n1", "n2"}));
        QVERIFY(m_plot->addDataLine("unlabelled", {10, 20}, {5, 10}));
        m_plot->setQuvelPlotYAxisUnitType("Counts");
        const int yAt5 = 270 - 35 - 100;
        QCOMPARE(m_plot->toolTipTextAt(QPoint(135, yAt5)),
                 QStringLiteral("right\nQVL-2 Angle: 90\nCounts: 5\nn2"));
        QCOMPARE(m_plot->toolTipTextAt(QPoint(85, yAt5)),
                 QStringLiteral("middle\nQVL-2 Angle: 45\nCounts: 5\nn1")); // 10 + 20 / 200 * 50 = 15
        QCOMPARE(m_plot->toolTipTextAt(QPoint(135, 200)), QString()); // Y too far off
        QVERIFY(m_plot->removeDataLine("mv"));
        QCOMPARE(m_plot->toolTipTextAt(QPoint(135, yAt5)), QString());
    }

    void areaReadOut()
    {
        // The area's arithmetic is pinned by the scale functions' test; here its text and when it shows.
        const double k = ZOS_DEGREES_TO_RADIANS;
        QVERIFY(m_plot->addDataLine("mv", {0, 10, 30}, {1, 3, 5}));
        m_plot->setQuvelPlotYAxisUnitType("W");
        m_plot->setQuvelPlotArea("on");
        m_plot->getPrintImage();
        QCOMPARE(m_plot->getQuvelPlotArea(), "Total Area: " + QString::number(100 * k / (30 * k), 'g', 6) + " W");
        QVERIFY(m_plot->addDataLine("second", {0, 10}, {1, 3}));
        m_plot->getPrintImage();
        QCOMPARE(m_plot->getQuvelPlotArea(), QStringLiteral("Total Area: "));
        m_plot->clear();
        QVERIFY(m_plot->getQuvelPlotArea().isEmpty());
    }

    void badInput_data()
    {
        QTest::addColumn<QVector<double>>("x");
        QTest::addColumn<QVector<double>>("y");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<bool>("drawable");
        QTest::newRow("NaN among points") << QVector<double>{1, NaN, 3} << QVector<double>{1, 2, NaN} << true << true;
        QTest::newRow("infinite among points") << QVector<double>{1, Inf, 3} << QVector<double>{1, 2, -Inf} << true
                                               << true;
        QTest::newRow("only NaN") << QVector<double>{NaN} << QVector<double>{NaN} << true << false;
        QTest::newRow("single point") << QVector<double>{5} << QVector<double>{3} << true << true;
        QTest::newRow("all points equal") << QVector<double>{2, 2, 2} << QVector<double>{4, 4, 4} << true << true;
        QTest::newRow("X and Y counts differ") << QVector<double>{1, 2, 3} << QVector<double>{1, 2} << false << false;
        QTest::newRow("no points") << QVector<double>{} << QVector<double>{} << false << false;
    }

    void badInput()
    {
        QFETCH(QVector<double>, x);
        QFETCH(QVector<double>, y);
        QFETCH(bool, accepted);
        QFETCH(bool, drawable);
        QCOMPARE(m_plot->addDataLine("bad", x, y, {1}, {}), accepted);
        QCOMPARE(m_plot->isEmpty(), !accepted);
        const QImage image = m_plot->getPrintImage();
        QCOMPARE(countColour(image, qRgb(0, 0, 0), QRect(35, 100, 1, 50)) == 50, drawable);
        for (const QSize &size : {QSize(0, 0), QSize(50, 20), QSize(71, 71)}) {
            m_plot->resize(size);
            QVERIFY(!m_plot->getPrintImage().isNull());
        }
        QTemporaryDir dir;
        QVERIFY(m_plot->saveData(QFile::encodeName(dir.filePath("bad.csv")).constData()));
    }

    void noRangeStillDrawsReferenceLinesAndMarkers()
    {
        QVERIFY(m_plot->addDataLine("nothing finite", {NaN, Inf}, {1, NaN}));
        m_plot->setReferenceLineY(true);
        m_plot->setReferenceLinePosY(0.5);
        m_plot->addMarkerX("m", 3, Qt::green);
        const QImage image = m_plot->getPrintImage();
        QCOMPARE(countColour(image, qRgb(0, 0, 0), QRect(36, 36, 1, 198)), 0); // no Y axis
        QCOMPARE(countColour(image, qRgb(0, 0, 0), QRect(36, 235, 198, 1)), 0); // no X axis
        QVERIFY(countColour(image, qRgb(255, 0, 0), QRect(35, 135, 200, 1)) > 190);
        QVERIFY(countColour(image, QColor(Qt::green).rgb(), image.rect()) > 50);
    }

    void removalAndSettings()
    {
        QVERIFY(m_plot->addDataLine("a", {1, 2}, {1, 2}));
        QVERIFY(m_plot->addDataLine("b", {1, 2}, {3, 4}));
        DISPLAY_SETTINGS s;
        QVERIFY(m_plot->getDisplaySettings("a", s));
        QCOMPARE(s.displayMode, int(EDM_LINES));
        s.lineColor = Qt::green;
        QVERIFY(m_plot->setDisplaySettings("a", s));
        QVERIFY(!m_plot->setDisplaySettings("zz", s));
        QVERIFY(!m_plot->getDisplaySettings("zz", s));
        // Replacing a line keeps one line of that name and its settings.
        QVERIFY(m_plot->addDataLine("a", {5, 6, 7}, {1, 1, 1}));
        QCOMPARE(m_plot->getNumberOfPlots(), 2);
        QCOMPARE(m_plot->getPlotList().value("a")->nPoints, 3);
        QVERIFY(m_plot->getDisplaySettings("a", s));
        QCOMPARE(s.lineColor, QColor(Qt::green));
        QVERIFY(!m_plot->removeDataLine("zz"));
        QVERIFY(m_plot->removeDataLine("a"));
        QCOMPARE(m_plot->getNamesOfPlots(), QStringList{"b"});
        m_plot->addMarkerX("m", 1.5, Qt::red);
        m_plot->clear();
        QVERIFY(m_plot->isEmpty());
        QVERIFY(m_plot->removeMarkerX("m")); // markers survive clear()
        QVERIFY(!m_plot->removeMarkerX("m"));
    }

    void popupMenu()
    {
        auto *group = m_plot->findChild<QActionGroup *>();
        QVERIFY(group);
        QVERIFY(group->isExclusive());
        auto texts = [](const QList<QAction *> &actions) {
            QStringList out;
            for (QAction *a : actions)
                out << a->text();
            return out;
        };
        QCOMPARE(texts(group->actions()), (QStringList{"Points", "Lines", "Points and Lines"}));
        QVERIFY(group->actions().at(1)->isChecked());
        QMenu *grid = nullptr;
        for (QMenu *menu : m_plot->findChildren<QMenu *>())
            grid = menu->title() == QLatin1String("Display Grid Lines") ? menu : grid;
        QVERIFY(grid);
        QCOMPARE(texts(grid->actions()), (QStringList{"None", "Vertical", "Horizontal", "Both"}));
        for (QAction *a : grid->actions())
            QVERIFY(a->isCheckable() && !a->icon().isNull());

        QVERIFY(m_plot->addDataLine("a", {1, 2}, {1, 2}));
        group->actions().at(0)->trigger();
        QCOMPARE(m_plot->getCurrentDisplayMode(), int(EDM_POINTS));
        DISPLAY_SETTINGS s;
        QVERIFY(m_plot->getDisplaySettings("a", s));
        QCOMPARE(s.displayMode, int(EDM_POINTS));
        group->actions().at(2)->trigger();
        QCOMPARE(m_plot->getCurrentDisplayMode(), int(EDM_POINTS_AND_LINES));
        QAction other(QStringLiteral("Something else"));
        m_plot->onDisplayPopupActivated(&other);
        QCOMPARE(m_plot->getCurrentDisplayMode(), int(EDM_POINTS));
        grid->actions().at(3)->trigger();
        QCOMPARE(m_plot->getGridType(), int(EGT_BOTH));
    }

    void gridLinesDrawn()
    {
        rising();
        const QRect inside(40, 40, 190, 190);
        const int before = countColour(m_plot->getPrintImage(), qRgb(192, 192, 192), inside);
        m_plot->setGridType(EGT_BOTH);
        QVERIFY(countColour(m_plot->getPrintImage(), qRgb(192, 192, 192), inside) > before + 300);
    }

    void dragEmitsPositions()
    {
        QVERIFY(m_plot->addDataLine("l", {10, 20}, {0, 100}));
        QSignalSpy nx(m_plot, &CZOSXYPlot::normalizedPosXChanged);
        QSignalSpy ax(m_plot, &CZOSXYPlot::actualPlotXValueChanged);
        QSignalSpy ay(m_plot, &CZOSXYPlot::actualPlotYValueChanged);
        QTest::mousePress(m_plot, Qt::LeftButton, Qt::NoModifier, QPoint(85, 185));
        QCOMPARE(nx.count(), 1);
        QCOMPARE(nx.at(0).at(0).toDouble(), 0.25);
        QCOMPARE(ax.at(0).at(0).toDouble(), 12.5);
        QCOMPARE(ay.at(0).at(0).toDouble(), 25.0);
        moveMouse(QPoint(135, 135));
        QCOMPARE(ax.count(), 2);
        QCOMPARE(ax.at(1).at(0).toDouble(), 15.0);
        QTest::mouseRelease(m_plot, Qt::LeftButton, Qt::NoModifier, QPoint(135, 135));
        moveMouse(QPoint(150, 150));
        QCOMPARE(ax.count(), 2); // no drag after release
        QTest::mousePress(m_plot, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5)); // outside the plot area
        QCOMPARE(ax.count(), 2);
    }

    void reducedCurveLooksTheSame()
    {
        // A noisy trace of many points, far more than pixel columns.
        const int n = 200000;
        QVector<double> x(n), y(n);
        quint32 state = 1;
        for (int i = 0; i < n; ++i) {
            state = state * 1664525u + 1013904223u;
            x[i] = i;
            y[i] = std::sin(i * 2e-4) * 50 + (state >> 24) * 0.05;
        }
        m_plot->resize(800, 400);
        QVERIFY(m_plot->addDataLine("trace", x, y));
        const QImage reduced = m_plot->getPrintImage();
        m_plot->setCurveReduction(false);
        const QImage full = m_plot->getPrintImage();
        int differing = 0;
        for (int r = 0; r < full.height(); ++r)
            for (int c = 0; c < full.width(); ++c)
                differing += reduced.pixel(c, r) != full.pixel(c, r);
        QVERIFY2(differing <= 8, qPrintable(QString::number(differing)));
        QVERIFY(countColour(full, Blue, full.rect()) > 5000);
    }
};

QTEST_MAIN(TestXYPlot)
#include "tst_czosxyplot.moc"
