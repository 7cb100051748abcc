#include "cilimage.h"
#include "testfiles.h"
#include "zosdisplayrange.h"

#include <QtTest>

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

static quint16 foreignPixel(int x, int y) { return quint16(x * 3 + y * 1000); }

// A TIFF written straight through libtiff, for layouts the image never writes.
static bool writeRawTiff(const QString &file, const char *mode, int bits, int samples, int format, int tile = 0,
                         int compression = COMPRESSION_NONE, int width = 40, int height = 50,
                         int planar = PLANARCONFIG_CONTIG)
{
    TIFF *t = TIFFOpen(QFile::encodeName(file).constData(), mode);
    const int fields[][2] = {{TIFFTAG_IMAGEWIDTH, width}, {TIFFTAG_IMAGELENGTH, height}, {TIFFTAG_BITSPERSAMPLE, bits},
                             {TIFFTAG_SAMPLESPERPIXEL, samples}, {TIFFTAG_SAMPLEFORMAT, format},
                             {TIFFTAG_PHOTOMETRIC, samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK},
                             {TIFFTAG_COMPRESSION, compression}, {TIFFTAG_PLANARCONFIG, planar},
                             {TIFFTAG_TILEWIDTH, tile}, {TIFFTAG_TILELENGTH, tile}};
    for (int i = 0; i < (tile ? 10 : 8); ++i) // the two tile fields only in a tiled file
        TIFFSetField(t, uint32_t(fields[i][0]), fields[i][1]);
    bool ok = true;
    std::vector<quint16> buf(size_t(tile ? TIFFTileSize(t) : TIFFScanlineSize(t)) / 2 + 1);
    for (int y = 0; y < height; y += (tile ? tile : 1))
        for (int x = 0; x < width; x += (tile ? tile : width)) {
            for (size_t i = 0; bits == 16 && i + 1 < buf.size(); ++i)
                buf[i] = tile ? foreignPixel(x + int(i) % tile, y + int(i) / tile) : foreignPixel(int(i), y);
            ok = ok && (tile ? TIFFWriteTile(t, buf.data(), x, y, 0, 0) >= 0 : TIFFWriteScanline(t, buf.data(), y, 0) == 1);
        }
    TIFFClose(t);
    return ok;
}

static CILImage pattern(int width, int height)
{
    CILImage image(width, height);
    for (int i = 0; i < image.getPixelCount(); ++i)
        image.getPixels()[i] = quint16(i * 7919 + 13);
    image.RefreshImageStats();
    return image;
}

static bool same(const CILImage &a, const CILImage &b)
{
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight() && a.getMinimum() == b.getMinimum()
           && a.getMaximum() == b.getMaximum() && a.getMean() == b.getMean()
           && std::equal(a.getPixels(), a.getPixels() + a.getPixelCount(), b.getPixels());
}

class TestCILImage : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    QString path(const char *name) const { return m_dir.filePath(QString::fromUtf8(name)); }

private slots:
    void sizes()
    {
        for (const QSize s : {QSize(1, 1), QSize(33, 7), QSize(0, 10), QSize(-1, -1), QSize(65536, 65536)}) {
            const bool valid = !s.isEmpty() && qint64(s.width()) * s.height() <= CILImage::MaxPixelCount;
            CILImage image = pattern(2, 3);
            QCOMPARE(image.allocate(s.width(), s.height()), valid);
            if (!valid)
                image.setImageStats(1, 2, 3); // ignored by a null image
            QCOMPARE(image.getPixelCount(), valid ? qint64(s.width()) * s.height() : 0);
            QVERIFY(same(CILImage(s.width(), s.height()), image) && image.isNull() == !valid && image.getMean() == 0);
        }
    }

    // The statistics pass works on vectors with a scalar tail and widens its
    // sums every 8192 * 16 pixels; every size and value range must agree with a plain loop.
    void statisticsMatchPlainLoop()
    {
        const int flush = 8192 * 16;
        for (const int count : {1, 15, 16, 17, 47, flush - 1, flush + 1, 2 * flush + 15})
            for (const QPair<int, int> &range : {qMakePair(0, 65535), qMakePair(32766, 32769), qMakePair(65535, 65535)}) {
                CILImage image(count, 1);
                QRandomGenerator random(quint32(count) + 1u);
                quint16 *p = image.getPixels();
                std::generate(p, p + count, [&] { return quint16(random.bounded(range.first, range.second + 1)); });
                const quint16 lo = *std::min_element(p, p + count), hi = *std::max_element(p, p + count);
                const quint64 total = std::accumulate(p, p + count, quint64(0));
                image.RefreshImageStats();
                QVERIFY(image.getMinimum() == lo && image.getMaximum() == hi && image.getMean() == double(total) / count);
                CILImage told(count, 1); // statistics gathered elsewhere read back as refreshed ones
                told.setImageStats(lo, hi, total);
                QVERIFY(told.getMinimum() == lo && told.getMaximum() == hi && told.getMean() == image.getMean());
                image.fill(quint16(range.first));
                QVERIFY(image.getMinimum() == range.first && image.getMaximum() == range.first && image.getMean() == range.first);
            }
    }

    void copiesAreDeepAndMovesEmpty()
    {
        const CILImage a = pattern(5, 4);
        CILImage b(a), c(7, 7);
        c = a;
        QVERIFY(same(a, b) && same(a, c) && a.getPixels() != b.getPixels());
        b.setPixel(4, 3, 1234);
        QVERIFY(b.pixel(4, 3) == 1234 && a.pixel(4, 3) != 1234);
        CILImage d(std::move(c));
        QVERIFY(same(a, d) && c.isNull() && c.getWidth() + c.getHeight() + c.getMinimum() + c.getMaximum() == 0 && c.getMean() == 0);
    }

    void tiffRoundTrip()
    {
        for (const QSize size : {QSize(1, 1), QSize(37, 11), QSize(1024, 1024)}) {
            const CILImage saved = pattern(size.width(), size.height());
            QCOMPARE(saved.saveTiff(path("round ü.tif")), ES_SUCCESS);
            CILImage loaded = pattern(2, 2);
            QCOMPARE(loaded.loadTiff(path("round ü.tif")), ES_SUCCESS);
            QVERIFY(loaded.getLastError().isEmpty() && same(saved, loaded));
        }
        // A refused save leaves the last good file in place.
        QCOMPARE(CILImage().saveTiff(path("round ü.tif")), ES_INVALID_IMAGE);
        QCOMPARE(pattern(2, 2).saveTiff(path("no/such/folder/x.tif")), ES_OPEN_FAILED);
        CILImage loaded;
        QVERIFY(loaded.loadTiff(path("round ü.tif")) == ES_SUCCESS && loaded.getWidth() == 1024);
    }

    void readsForeignLayouts()
    {
        // Big-endian strips, tiles cut at the edges in either byte order, then strips stored as planes.
        for (const int tile : {0, 16, 32, -1}) {
            QVERIFY(writeRawTiff(path("foreign.tif"), tile == 16 ? "wl" : "wb", 16, 1, SAMPLEFORMAT_UINT, std::max(tile, 0),
                                 COMPRESSION_NONE, 40, 50, tile < 0 ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG));
            CILImage image;
            QCOMPARE(image.loadTiff(path("foreign.tif")), ES_SUCCESS);
            QCOMPARE(QSize(image.getWidth(), image.getHeight()), QSize(40, 50));
            for (int i = 0; i < 40 * 50; ++i)
                QCOMPARE(image.getPixels()[i], foreignPixel(i % 40, i / 40));
        }
    }

    // Another program's 64-Mpixel image as one compressed tile: the tile buffer is as large as the image.
    void readsOneLargeCompressedTile()
    {
        const int side = 8192;
        QVERIFY(writeRawTiff(path("tile.tif"), "w", 16, 1, SAMPLEFORMAT_UINT, side, COMPRESSION_PACKBITS, side, side));
        CILImage image;
        QCOMPARE(image.loadTiff(path("tile.tif")), ES_SUCCESS);
        QVERIFY(image.getWidth() == side && image.getHeight() == side);
        for (int y = 0; y < side; y += 1361)
            for (int x = 0; x < side; x += 97)
                QCOMPARE(image.pixel(x, y), foreignPixel(x, y));
        QFile::remove(path("tile.tif"));
    }

    void failedLoadChangesNothing()
    {
        QVERIFY(writeRawTiff(path("8bit.tif"), "w", 8, 1, SAMPLEFORMAT_UINT));
        QVERIFY(writeRawTiff(path("signed.tif"), "w", 16, 1, SAMPLEFORMAT_INT));
        QVERIFY(writeRawTiff(path("rgb.tif"), "w", 16, 3, SAMPLEFORMAT_UINT));
        QVERIFY(writeRawTiff(path("corrupt.tif"), "w", 16, 1, SAMPLEFORMAT_UINT, 0, COMPRESSION_ADOBE_DEFLATE, 64, 64));
        QByteArray bytes = readFile(path("corrupt.tif"));
        for (int i = 8; i < bytes.size() / 2; ++i)
            bytes[i] = char(0xA5 ^ i); // the deflated pixels, not the directory at the end
        QVERIFY(writeFile(path("corrupt.tif"), bytes));
        QCOMPARE(pattern(200, 200).saveTiff(path("cut.tif")), ES_SUCCESS);
        QVERIFY(QFile(path("cut.tif")).resize(40000)); // the directory follows the pixels
        for (const auto &[name, status] : {std::pair("8bit.tif", ES_INVALID_DATA_TYPE),
                                           {"signed.tif", ES_INVALID_DATA_TYPE}, {"rgb.tif", ES_INVALID_DATA_TYPE},
                                           {"corrupt.tif", ES_CORRUPT_FILE}, {"cut.tif", ES_OPEN_FAILED},
                                           {"absent.tif", ES_FILE_NOT_FOUND}, {"", ES_FILE_NOT_FOUND}}) {
            CILImage image = pattern(3, 3);
            QCOMPARE(image.loadTiff(path(name)), status);
            QVERIFY(!image.getLastError().isEmpty() && same(image, pattern(3, 3)));
        }
    }

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
        auto isMultiple = [](double v, double step) { return std::fabs(v / step - std::round(v / step)) < 1e-6; };
        tagZOSDisplayRange r;
        QVERIFY(getNiceRangeForDisplay(min, max, maxTicks, &r));
        const double lo = std::min(min, max), hi = std::max(min, max);
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
        const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
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

QTEST_APPLESS_MAIN(TestCILImage)
#include "tst_cilimage.moc"
