// Plots of many points: the whole paint of each plot against drawing every
// mapped point, on a 1000 x 600 surface with a 1-pixel pen and no antialiasing.
// The painted plot runs anywhere (offscreen without a display); the GL plot
// needs an X display (run under xvfb-run -a) and is skipped without one.
#include "czosglxyplot.h"
#include "czosxyplot.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPainter>

#include <cmath>

namespace {

const int Width = 1000;
const int Height = 600;

void makeTrace(int n, QVector<double> &x, QVector<double> &y)
{
    x.resize(n);
    y.resize(n);
    quint32 state = 7;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        x[i] = i;
        y[i] = std::sin(i * 6.0 / n * 3.14159) * 100.0 + (state >> 24) * 0.02; // a few pixels of noise
    }
}

// The points mapped into the plot area as the plot maps them.
QPolygonF mapped(const QVector<double> &x, const QVector<double> &y)
{
    QPolygonF p(x.size());
    const double xs = (Width - 70) / (x.last() - x.first());
    for (int i = 0; i < x.size(); ++i) {
        p[i] = QPointF(35 + (x[i] - x.first()) * xs, Height - 35 - (y[i] + 110) * (Height - 70) / 220.0);
    }
    return p;
}

void BM_PlainDrawPolyline(benchmark::State &state)
{
    QVector<double> x, y;
    makeTrace(int(state.range(0)), x, y);
    const QPolygonF points = mapped(x, y);
    QImage image(Width, Height, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter p(&image);
        p.setPen(QPen(Qt::blue, 1));
        p.drawPolyline(points);
    }
}
BENCHMARK(BM_PlainDrawPolyline)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_DrawLinePerSegment(benchmark::State &state)
{
    QVector<double> x, y;
    makeTrace(int(state.range(0)), x, y);
    const QPolygonF points = mapped(x, y);
    QImage image(Width, Height, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter p(&image);
        p.setPen(QPen(Qt::blue, 1));
        for (int i = 1; i < points.size(); ++i) {
            p.drawLine(points[i - 1], points[i]);
        }
    }
}
BENCHMARK(BM_DrawLinePerSegment)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// Ranges, axes, labels and curves: everything a repaint does.
void BM_XYPlotWholePaint(benchmark::State &state)
{
    QVector<double> x, y;
    makeTrace(int(state.range(0)), x, y);
    CZOSXYPlot plot;
    plot.resize(Width, Height);
    plot.setTitle(QStringLiteral("Trace"));
    plot.setXAxisLabel(QStringLiteral("Sample"));
    plot.setYAxisLabel(QStringLiteral("Counts"));
    plot.addDataLine(QStringLiteral("trace"), x, y);
    QImage image(Width, Height, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        plot.render(&image);
    }
}
BENCHMARK(BM_XYPlotWholePaint)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_XYPlotEverySegment(benchmark::State &state)
{
    QVector<double> x, y;
    makeTrace(int(state.range(0)), x, y);
    CZOSXYPlot plot;
    plot.resize(Width, Height);
    plot.setCurveReduction(false);
    plot.addDataLine(QStringLiteral("trace"), x, y);
    QImage image(Width, Height, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        plot.render(&image);
    }
}
BENCHMARK(BM_XYPlotEverySegment)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The column reduction alone: the general loop (any X order) and the search
// over sorted X that the plots use when the data allow it.
void BM_ReducePolyline(benchmark::State &state)
{
    QVector<double> x, y;
    makeTrace(1000000, x, y);
    const bool sorted = state.range(0) != 0;
    const ZOSAxisMap map(0, x.last(), false, 35, Width - 70);
    QVector<int> indices;
    for (auto _ : state) {
        indices.clear();
        benchmark::DoNotOptimize(
            zosReducePolyline(x.constData(), y.constData(), x.size(), map, false, true, indices, sorted));
    }
    state.SetItemsProcessed(state.iterations() * x.size());
}
BENCHMARK(BM_ReducePolyline)->ArgName("sorted")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// paintGL timed directly, finished with glFinish so that the software
// renderer's work is counted, after one swap (Mesa keeps its first 640 x 480
// surface until then).
class BenchGLPlot : public CZOSGLXYPlot
{
public:
    void paintOnce()
    {
        makeCurrent();
        paintGL();
        QOpenGLContext::currentContext()->functions()->glFinish();
    }
};

void glPlotPaint(benchmark::State &state, bool reduce)
{
    QVector<double> x, y;
    makeTrace(int(state.range(0)), x, y);
    BenchGLPlot plot;
    plot.resize(Width, Height);
    plot.show();
    QElapsedTimer wait;
    wait.start();
    while (wait.elapsed() < 500) {
        QCoreApplication::processEvents();
    }
    if (!plot.isValid()) {
        state.SkipWithError("no OpenGL context");
        return;
    }
    plot.setTitle(QStringLiteral("Trace"));
    plot.setXAxisLabel(QStringLiteral("Sample"));
    plot.setYAxisLabel(QStringLiteral("Counts"));
    plot.setCurveReduction(reduce);
    plot.addDataLine(QStringLiteral("trace"), x, y);
    plot.updateGL();
    for (auto _ : state) {
        plot.paintOnce();
    }
}

void BM_GLPlotWholePaint(benchmark::State &state) { glPlotPaint(state, true); }
void BM_GLPlotEveryVertex(benchmark::State &state) { glPlotPaint(state, false); }

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) {
        for (auto *b : {benchmark::RegisterBenchmark("BM_GLPlotEveryVertex", BM_GLPlotEveryVertex),
                        benchmark::RegisterBenchmark("BM_GLPlotWholePaint", BM_GLPlotWholePaint)}) {
            b->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
