#include "czosglxyplot.h"

#include <QAction>
#include <QActionGroup>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {
const double NaN = std::numeric_limits<double>::quiet_NaN();

int countWhere(const QImage &image, const QRect &area, bool (*test)(const QColor &))
{
    int n = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            n += test(image.pixelColor(x, y));
    return n;
}
bool isRed(const QColor &c) { return c.red() > 200 && c.green() < 80 && c.blue() < 80; }
bool isBlue(const QColor &c) { return c.blue() > 200 && c.red() < 80 && c.green() < 80; }
bool isDark(const QColor &c) { return c.red() < 60 && c.green() < 60 && c.blue() < 60; }

QVector<double> strip(const QVector<QPointF> &points)
{
    QVector<double> xs;
    for (const QPointF &p : points)
        xs << p.x();
    return xs;
}
} // namespace

class TestGLXYPlot : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    CZOSGLXYPlot *m_plot = nullptr;

    // Layout, strips and files need no GL; pictures do. Tests skip from the
    // first picture on where no context can be made (the offscreen platform).
#define REQUIRE_GL()                                                                                                   \
    do {                                                                                                               \
        if (!m_plot->isValid())                                                                                        \
            QSKIP("No OpenGL context on this display");                                                                \
    } while (0)

    QImage render() { return m_plot->getPrintImage(); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        qputenv("ZO_DATA_ROOT", m_dir.path().toUtf8());
        QStandardPaths::setTestModeEnabled(true);
    }

    void init()
    {
        m_plot = new CZOSGLXYPlot(nullptr, "gl");
        m_plot->resize(400, 300);
        m_plot->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_plot));
    }

    void cleanup()
    {
        delete m_plot;
        m_plot = nullptr;
    }

    void emptyPlotSaysNoData()
    {
        REQUIRE_GL();
        const QImage image = render();
        QCOMPARE(image.size(), QSize(400, 300));
        QVERIFY(countWhere(image, QRect(100, 120, 200, 60), isRed) > 20);
        QCOMPARE(countWhere(image, QRect(0, 0, 400, 100), isRed), 0);
        QCOMPARE(m_plot->getOrthoWindow(), QRectF(0, 0, 400, 300));
    }

    void layoutMargins()
    {
        // The margins themselves are pinned by the layout function's own test; here, that the widget uses them.
        QVERIFY(m_plot->addDataLine("l", {0, 10}, {0, 100}));
        QCOMPARE(m_plot->getMargins().left, 50);
        m_plot->setLowMarginPadding(true);
        m_plot->setXAxisLabel("Time");
        const ZOSPlotMargins m = m_plot->getMargins();
        QCOMPARE((QVector<int>{m.left, m.right, m.bottom, m.top}), (QVector<int>{35, 15, 30, 50}));
        // The window extends the displayed range by the margins in data units.
        const QRectF w = m_plot->getOrthoWindow();
        const double plotWidth = 400 - m.left - m.right;
        QCOMPARE(w.left(), 0 - m.left * 10 / plotWidth);
        QCOMPARE(w.right(), 10 + m.right * 10 / plotWidth);
        const double plotHeight = 300 - m.bottom - m.top;
        QCOMPARE(w.top(), 0 - m.bottom * 100 / plotHeight); // QRectF: top() is the smaller y, the bottom
        // The plot area's corners land on the margins.
        int wx = 0, wy = 0;
        m_plot->convertObjectToWindowCoords(0, 0, wx, wy);
        QCOMPARE(wx, m.left);
        QCOMPARE(wy, 300 - m.bottom);
        double x = 0, y = 0;
        m_plot->convertWindowToObjectCoords(wx, wy, x, y);
        QVERIFY(std::fabs(x) < 1e-9 && std::fabs(y) < 1e-9);
    }

    void stripsBreakWhereXTurnsBack()
    {
        QVERIFY(m_plot->addDataLine("back", {1, 2, 3, 2, 3}, {1, 2, 3, 4, 5}));
        auto strips = m_plot->lineStrips("back");
        QCOMPARE(strips.size(), 1);
        QCOMPARE(strip(strips.at(0)), (QVector<double>{1, 2, 3, 2, 3}));
        m_plot->setBackwards(false);
        strips = m_plot->lineStrips("back");
        QCOMPARE(strips.size(), 2);
        QCOMPARE(strip(strips.at(0)), (QVector<double>{1, 2, 3}));
        QCOMPARE(strip(strips.at(1)), (QVector<double>{2, 3}));
        REQUIRE_GL();
        render();
        QCOMPARE(m_plot->lastStripSizes(), (QVector<int>{3, 2}));
    }

    void staircase()
    {
        DISPLAY_SETTINGS s;
        s.displayMode = EDM_STAIRCASE;
        QVERIFY(m_plot->addDataLine("steps", {1, 2, 3}, {10, 20, 30}, {}, {}, &s));
        const auto strips = m_plot->lineStrips("steps");
        QCOMPARE(strips.size(), 1);
        QCOMPARE(strips.at(0), (QVector<QPointF>{{1, 10}, {2, 10}, {2, 20}, {3, 20}, {3, 30}}));
        REQUIRE_GL();
        render();
        QCOMPARE(m_plot->lastStripSizes(), QVector<int>{5});
    }

    void saveDataAppends()
    {
        m_plot->setTitle("Run");
        QVERIFY(m_plot->addDataLine("A", {1, 2}, {3, 4.5}, {0.5}, {}));
        const QByteArray path = QFile::encodeName(m_dir.filePath("gl.txt"));
        QVERIFY(m_plot->saveData(path.constData(), false, '\t'));
        QVERIFY(m_plot->saveData(path.constData(), true, '\t'));
        QFile f(QFile::decodeName(path));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray block("Run: A\nX Values\tY Values\tX Errors\n1\t3\t0.5\n2\t4.5\n\n\n");
        QCOMPARE(f.readAll(), block + block);
        QVERIFY(m_plot->saveData(path.constData(), false, ','));
        f.seek(0);
        QCOMPARE(f.readAll(), QByteArray("Run: A\nX Values,Y Values,X Errors\n1,3,0.5\n2,4.5\n\n\n"));
        QVERIFY(!m_plot->saveData(QFile::encodeName(m_dir.filePath("no/dir/x.txt")).constData(), false, ','));
        QVERIFY(!m_plot->writeDataToFile(nullptr, ','));
    }

    void picture()
    {
        QVector<double> x, y;
        for (int i = 0; i <= 100; ++i) {
            x << i * 0.1;
            y << i * 0.1;
        }
        QVERIFY(m_plot->addDataLine("rising", x, y, {}, {0.5}));
        m_plot->showLegend(false);
        REQUIRE_GL();
        const QImage image = render();
        QVERIFY(!image.isNull());
        int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        m_plot->convertObjectToWindowCoords(0, 0, x0, y0);
        m_plot->convertObjectToWindowCoords(10, 10, x1, y1);
        // Axes along the plot area's left and bottom edges (the Y range starts
        // at -1 to hold the error bar; away from the curve's start and the bar).
        int xAxisLeft = 0, xAxisY = 0;
        m_plot->convertObjectToWindowCoords(0, m_plot->getYDisplayMin(), xAxisLeft, xAxisY);
        QVERIFY(countWhere(image, QRect(x0 - 1, y1 + 5, 3, y0 - y1 - 20), isDark) >= y0 - y1 - 20);
        QVERIFY(countWhere(image, QRect(x0 + 5, xAxisY - 1, x1 - x0 - 10, 3), isDark) >= x1 - x0 - 10);
        // The curve rises from the bottom left; the first point carries a red error bar.
        QVERIFY(countWhere(image, QRect(x0 + 1, y0 - 20, 20, 19), isBlue) > 3);
        QCOMPARE(countWhere(image, QRect(x1 - 20, y0 - 20, 19, 19), isBlue), 0);
        QVERIFY(countWhere(image, QRect(x0 - 2, y0 - 20, 5, 19), isRed) > 5);
        m_plot->setXAxisReversed(true);
        const QImage flipped = render();
        QCOMPARE(countWhere(flipped, QRect(x0 + 1, y0 - 20, 20, 19), isBlue), 0);
        QVERIFY(countWhere(flipped, QRect(400 - x0 - 21, y0 - 20, 20, 19), isBlue) > 3);
    }

    void reducedCurveLooksTheSame()
    {
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
        REQUIRE_GL();
        const QImage reduced = render();
        const int reducedVertices = m_plot->lastStripSizes().value(0);
        QVERIFY(reducedVertices < 4 * 800);
        m_plot->setCurveReduction(false);
        const QImage full = render();
        QCOMPARE(m_plot->lastStripSizes().value(0), n);
        int differing = 0;
        for (int r = 0; r < full.height(); ++r)
            for (int c = 0; c < full.width(); ++c)
                differing += reduced.pixel(c, r) != full.pixel(c, r);
        QVERIFY2(differing <= 8, qPrintable(QString::number(differing)));
        QVERIFY(countWhere(full, full.rect(), isBlue) > 5000);
    }

    void displayModeMenu()
    {
        QVERIFY(m_plot->addDataLine("a", {1, 2}, {1, 2}));
        auto *group = m_plot->findChild<QActionGroup *>();
        QVERIFY(group && group->isExclusive());
        QCOMPARE(group->actions().size(), 3);
        group->actions().at(2)->trigger();
        QCOMPARE(m_plot->getCurrentDisplayMode(), int(EDM_POINTS_AND_LINES));
        DISPLAY_SETTINGS s;
        QVERIFY(m_plot->getDisplaySettings("a", s));
        QCOMPARE(s.displayMode, int(EDM_POINTS_AND_LINES));
        QVERIFY(!m_plot->setDisplaySettings("b", s));
        for (int style : {EPS_PLUS, EPS_CROSS, EPS_ROUND, EPS_SQUARE}) {
            s.pointStyle = style;
            s.pointSize = 6;
            QVERIFY(m_plot->setDisplaySettings("a", s));
            REQUIRE_GL();
            QVERIFY(countWhere(render(), QRect(0, 0, 400, 300), isBlue) > 0);
        }
    }

    void neverShownWidgetPrints()
    {
        CZOSGLXYPlot hidden(nullptr, "hidden");
        hidden.resize(200, 100);
        QVERIFY(hidden.addDataLine("l", {0, 1}, {0, 1}));
        const QImage image = hidden.getPrintImage(); // a picture or a null image, never a crash
        if (!image.isNull())
            QCOMPARE(image.size(), QSize(200, 100));
    }

    void badInput()
    {
        QVERIFY(!m_plot->addDataLine("mismatch", {1, 2, 3}, {1, 2}));
        QVERIFY(m_plot->isEmpty());
        QVERIFY(m_plot->addDataLine("nan", {1, NaN, 3, 4}, {1, 2, NaN, 4}, {1}, {1, 2, 3, 4, 5, 6}));
        QCOMPARE(m_plot->getPlotList().value("nan")->nYErrors, 4);
        REQUIRE_GL();
        QVERIFY(!render().isNull());
        QCOMPARE(m_plot->lineStrips("nan").size(), 2);
        QVERIFY(m_plot->addDataLine("single", {5}, {5}));
        QVERIFY(m_plot->addDataLine("flat", {2, 2, 2}, {7, 7, 7}));
        QVERIFY(!render().isNull());
        m_plot->resize(0, 0);
        QVERIFY(m_plot->getPrintImage().isNull());
        m_plot->resize(30, 20); // smaller than the margins
        render();
        QVERIFY(!m_plot->removeDataLine("zz"));
        QVERIFY(m_plot->removeXErrorData("nan"));
        QVERIFY(!m_plot->removeYErrorData("zz"));
        m_plot->clear();
        QVERIFY(m_plot->isEmpty());
    }
};

QTEST_MAIN(TestGLXYPlot)
#include "tst_czosglxyplot.moc"
