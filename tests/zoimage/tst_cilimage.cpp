#include "cilimage.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <tiffio.h>

#include <algorithm>
#include <vector>

class TestCILImage : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    static CILImage pattern(int width, int height)
    {
        CILImage image(width, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.setPixel(x, y, quint16((x * 7919 + y * 104729) & 0xFFFF));
        image.RefreshImageStats();
        return image;
    }

    static bool samePixels(const CILImage &a, const CILImage &b)
    {
        return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight() &&
               std::equal(a.getPixels(), a.getPixels() + a.getPixelCount(), b.getPixels());
    }

    // A TIFF written straight through libtiff, for layouts the image never writes.
    static bool writeRawTiff(const QString &file, const char *mode, int width, int height, int bits,
                             int samples, int format, int tile = 0,
                             int compression = COMPRESSION_NONE)
    {
        TIFF *t = TIFFOpen(QFile::encodeName(file).constData(), mode);
        if (!t)
            return false;
        TIFFSetField(t, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(t, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(t, TIFFTAG_SAMPLEFORMAT, format);
        TIFFSetField(t, TIFFTAG_PHOTOMETRIC, samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
        TIFFSetField(t, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(t, TIFFTAG_COMPRESSION, compression);
        bool ok = true;
        if (tile) {
            TIFFSetField(t, TIFFTAG_TILEWIDTH, tile);
            TIFFSetField(t, TIFFTAG_TILELENGTH, tile);
            std::vector<quint8> buf(size_t(TIFFTileSize(t)));
            for (int ty = 0; ty < height; ty += tile)
                for (int tx = 0; tx < width; tx += tile) {
                    auto *p = reinterpret_cast<quint16 *>(buf.data());
                    for (int r = 0; r < tile; ++r)
                        for (int c = 0; c < tile; ++c)
                            p[r * tile + c] = quint16((tx + c) * 3 + (ty + r) * 1000);
                    ok = ok && TIFFWriteTile(t, buf.data(), tx, ty, 0, 0) >= 0;
                }
        } else {
            std::vector<quint8> row(size_t(TIFFScanlineSize(t)));
            for (int y = 0; y < height; ++y) {
                if (bits == 16)
                    for (int x = 0; x < width; ++x)
                        reinterpret_cast<quint16 *>(row.data())[x] = quint16(x * 3 + y * 1000);
                ok = ok && TIFFWriteScanline(t, row.data(), y, 0) == 1;
            }
        }
        TIFFClose(t);
        return ok;
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void construction_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("valid");
        QTest::newRow("1x1") << 1 << 1 << true;
        QTest::newRow("odd size") << 33 << 7 << true;
        QTest::newRow("zero width") << 0 << 10 << false;
        QTest::newRow("negative height") << 10 << -1 << false;
        QTest::newRow("beyond the pixel limit") << 65536 << 65536 << false;
    }

    void construction()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(bool, valid);
        CILImage image(width, height);
        if (!valid)
            image.setImageStats(1, 2, 3); // a null image keeps its zeros
        QCOMPARE(!image.isNull(), valid);
        QCOMPARE(image.getWidth(), valid ? width : 0);
        QCOMPARE(image.getHeight(), valid ? height : 0);
        QCOMPARE(image.getMinimum(), quint16(0));
        QCOMPARE(image.getMaximum(), quint16(0));
        QCOMPARE(image.getMean(), 0.0);
        if (valid)
            QVERIFY(std::all_of(image.getPixels(), image.getPixels() + image.getPixelCount(),
                                [](quint16 v) { return v == 0; }));
    }

    void statistics_data()
    {
        QTest::addColumn<QVector<int>>("pixels");
        QTest::addColumn<int>("minimum");
        QTest::addColumn<int>("maximum");
        QTest::addColumn<double>("mean");
        QTest::newRow("single") << QVector<int>{7} << 7 << 7 << 7.0;
        QTest::newRow("extremes") << QVector<int>{0, 65535} << 0 << 65535 << 32767.5;
        QTest::newRow("min last") << QVector<int>{9, 8, 7, 3} << 3 << 9 << 6.75;
        QTest::newRow("all max") << QVector<int>{65535, 65535, 65535} << 65535 << 65535 << 65535.0;
    }

    void statistics()
    {
        QFETCH(QVector<int>, pixels);
        CILImage image(pixels.size(), 1);
        for (int i = 0; i < pixels.size(); ++i)
            image.getPixels()[i] = quint16(pixels[i]);
        image.RefreshImageStats();
        QTEST(int(image.getMinimum()), "minimum");
        QTEST(int(image.getMaximum()), "maximum");
        QTEST(image.getMean(), "mean");
    }

    void statisticsAcrossBlocks()
    {
        // 65535 at every pixel of a frame larger than one 32-bit partial sum holds.
        CILImage image(1000, 300);
        image.fill(65535);
        image.setPixel(999, 299, 1);
        QCOMPARE(image.getMinimum(), quint16(65535)); // not refreshed by setPixel
        image.RefreshImageStats();
        QCOMPARE(image.getMinimum(), quint16(1));
        QCOMPARE(image.getMaximum(), quint16(65535));
        QCOMPARE(image.getMean(), (65535.0 * (300000 - 1) + 1) / 300000);
    }

    // The statistics pass works on vectors of pixels with a scalar tail and
    // widens its sums periodically; every size and placement here must agree
    // with a plain loop.
    void statisticsMatchPlainLoop_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("low");  // random values in [low, high]
        QTest::addColumn<int>("high");
        QTest::addColumn<int>("extremesAt"); // -1 none, else index from the end
        const int flush = 8192 * 16;  // pixels between widenings of the partial sums
        const struct { const char *name; int count; } sizes[] = {
            {"15", 15}, {"16", 16}, {"17", 17}, {"31", 31}, {"47", 47},
            {"flush-1", flush - 1}, {"flush", flush}, {"flush+1", flush + 1}, {"2flush+15", 2 * flush + 15}};
        for (const auto &size : sizes) {
            const QByteArray n(size.name);
            QTest::newRow(n + " full range") << size.count << 0 << 65535 << -1;
            QTest::newRow(n + " around sign bit") << size.count << 32766 << 32769 << -1;
            QTest::newRow(n + " extremes last") << size.count << 1000 << 2000 << 0;
            QTest::newRow(n + " extremes in tail") << size.count << 1000 << 2000 << std::min(size.count - 1, 14);
            QTest::newRow(n + " all max") << size.count << 65535 << 65535 << -1;
            QTest::newRow(n + " all zero") << size.count << 0 << 0 << -1;
        }
    }

    void statisticsMatchPlainLoop()
    {
        QFETCH(int, count);
        QFETCH(int, low);
        QFETCH(int, high);
        QFETCH(int, extremesAt);
        CILImage image(count, 1);
        QRandomGenerator random(quint32(count * 31 + low));
        quint16 *p = image.getPixels();
        for (int i = 0; i < count; ++i)
            p[i] = quint16(random.bounded(low, high + 1));
        if (extremesAt >= 0) {
            p[count - 1 - extremesAt] = 0;
            p[count - 1 - (extremesAt + 1) % count] = 65535;
        }
        quint16 lo = 0xFFFF;
        quint16 hi = 0;
        quint64 total = 0;
        for (int i = 0; i < count; ++i) {
            lo = std::min(lo, p[i]);
            hi = std::max(hi, p[i]);
            total += p[i];
        }
        image.RefreshImageStats();
        QCOMPARE(image.getMinimum(), lo);
        QCOMPARE(image.getMaximum(), hi);
        QCOMPARE(image.getMean(), double(total) / count);
        CILImage told(count, 1); // statistics gathered elsewhere read back as refreshed ones
        told.setImageStats(lo, hi, total);
        QCOMPARE(std::make_tuple(told.getMinimum(), told.getMaximum(), told.getMean()),
                 std::make_tuple(lo, hi, image.getMean()));
    }

    void copiesAreDeep()
    {
        CILImage a = pattern(5, 4);
        CILImage b(a);
        QVERIFY(samePixels(a, b));
        QVERIFY(a.getPixels() != b.getPixels());
        b.setPixel(0, 0, 1234);
        QVERIFY(a.pixel(0, 0) != 1234);
        CILImage c;
        c = a;
        QVERIFY(samePixels(a, c));
        QCOMPARE(c.getMean(), a.getMean());
        CILImage d(std::move(c));
        QVERIFY(c.isNull());
        QVERIFY(samePixels(a, d));
    }

    void tiffRoundTrip_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("1x1") << 1 << 1;
        QTest::newRow("odd") << 37 << 11;
        QTest::newRow("tall strips") << 64 << 700;
        QTest::newRow("camera frame") << 1024 << 1024;
    }

    void tiffRoundTrip()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        const CILImage saved = pattern(width, height);
        const QString file = path(QStringLiteral("round %1x%2 ü.tif").arg(width).arg(height));
        QCOMPARE(saved.saveTiff(file), ES_SUCCESS);
        CILImage loaded;
        QCOMPARE(loaded.loadTiff(file), ES_SUCCESS);
        QVERIFY(loaded.getLastError().isEmpty());
        QVERIFY(samePixels(saved, loaded));
        QCOMPARE(loaded.getMinimum(), saved.getMinimum());
        QCOMPARE(loaded.getMaximum(), saved.getMaximum());
        QCOMPARE(loaded.getMean(), saved.getMean());
    }

    void readsForeignLayouts_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<int>("tile");
        QTest::newRow("big-endian strips") << QByteArray("wb") << 0;
        QTest::newRow("little-endian tiles") << QByteArray("wl") << 16;
        QTest::newRow("big-endian tiles") << QByteArray("wb") << 32;
    }

    void readsForeignLayouts()
    {
        QFETCH(QByteArray, mode);
        QFETCH(int, tile);
        const QString file = path(QStringLiteral("foreign.tif"));
        QVERIFY(writeRawTiff(file, mode.constData(), 40, 50, 16, 1, SAMPLEFORMAT_UINT, tile));
        CILImage image;
        QCOMPARE(image.loadTiff(file), ES_SUCCESS);
        QCOMPARE(image.getWidth(), 40);
        QCOMPARE(image.getHeight(), 50);
        QCOMPARE(image.pixel(0, 0), quint16(0));
        QCOMPARE(image.pixel(39, 49), quint16(39 * 3 + 49 * 1000));
        QCOMPARE(image.pixel(17, 33), quint16(17 * 3 + 33 * 1000));
    }

    void refusesOtherFormats_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("samples");
        QTest::addColumn<int>("format");
        QTest::newRow("8-bit") << 8 << 1 << int(SAMPLEFORMAT_UINT);
        QTest::newRow("32-bit") << 32 << 1 << int(SAMPLEFORMAT_UINT);
        QTest::newRow("16-bit signed") << 16 << 1 << int(SAMPLEFORMAT_INT);
        QTest::newRow("16-bit RGB") << 16 << 3 << int(SAMPLEFORMAT_UINT);
    }

    void refusesOtherFormats()
    {
        QFETCH(int, bits);
        QFETCH(int, samples);
        QFETCH(int, format);
        const QString file = path(QStringLiteral("other.tif"));
        QVERIFY(writeRawTiff(file, "w", 8, 8, bits, samples, format));
        CILImage image = pattern(3, 3);
        const CILImage before = image;
        QCOMPARE(image.loadTiff(file), ES_INVALID_DATA_TYPE);
        QVERIFY(!image.getLastError().isEmpty());
        QVERIFY(samePixels(image, before)); // a failed load changes nothing
    }

    void badFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("status");
        QByteArray garbage(4096, '\0');
        for (int i = 0; i < garbage.size(); ++i)
            garbage[i] = char((i * 131 + 7) & 0xFF);
        QTest::newRow("empty") << QByteArray() << int(ES_OPEN_FAILED);
        QTest::newRow("text") << QByteArray("*** Image:\r\nkey:\tvalue\r\n") << int(ES_OPEN_FAILED);
        QTest::newRow("garbage") << garbage << int(ES_OPEN_FAILED);
        QTest::newRow("header only") << QByteArray("II*\0\x08\0\0\0", 8) << int(ES_OPEN_FAILED);
    }

    void badFiles()
    {
        QFETCH(QByteArray, content);
        const QString file = path(QStringLiteral("bad.tif"));
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(content);
        f.close();
        CILImage image;
        QTEST(int(image.loadTiff(file)), "status");
        QVERIFY(image.isNull());
        QVERIFY(!image.getLastError().isEmpty());
    }

    void truncatedFile()
    {
        // The directory follows the pixels, so a cut file has lost it.
        const QString file = path(QStringLiteral("truncated.tif"));
        QCOMPARE(pattern(200, 200).saveTiff(file), ES_SUCCESS);
        QFile f(file);
        QVERIFY(f.resize(f.size() / 2));
        CILImage image;
        QCOMPARE(image.loadTiff(file), ES_OPEN_FAILED);
        QVERIFY(image.isNull());
        QVERIFY(!image.getLastError().isEmpty());
    }

    void corruptPixelData()
    {
        const QString file = path(QStringLiteral("corrupt.tif"));
        QVERIFY(writeRawTiff(file, "w", 64, 64, 16, 1, SAMPLEFORMAT_UINT, 0, COMPRESSION_ADOBE_DEFLATE));
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadWrite));
        QByteArray bytes = f.readAll();
        for (int i = 8; i < bytes.size() / 2; ++i)
            bytes[i] = char(0xA5 ^ i);
        f.seek(0);
        f.write(bytes);
        f.close();
        CILImage image;
        QCOMPARE(image.loadTiff(file), ES_CORRUPT_FILE);
        QVERIFY(image.isNull());
        QVERIFY(!image.getLastError().isEmpty());
    }

    void missingAndUnwritable()
    {
        CILImage image;
        QCOMPARE(image.loadTiff(path(QStringLiteral("absent.tif"))), ES_FILE_NOT_FOUND);
        QCOMPARE(image.saveTiff(path(QStringLiteral("null.tif"))), ES_INVALID_IMAGE);
        QVERIFY(!QFile::exists(path(QStringLiteral("null.tif"))));
        const CILImage some = pattern(4, 4);
        QCOMPARE(some.saveTiff(path(QStringLiteral("no/such/folder/x.tif"))), ES_OPEN_FAILED);
        QVERIFY(!some.getLastError().isEmpty());
    }

    void failedSaveKeepsOldFile()
    {
        const QString file = path(QStringLiteral("keep.tif"));
        const CILImage first = pattern(6, 6);
        QCOMPARE(first.saveTiff(file), ES_SUCCESS);
        const CILImage empty;
        QCOMPARE(empty.saveTiff(file), ES_INVALID_IMAGE);
        CILImage loaded;
        QCOMPARE(loaded.loadTiff(file), ES_SUCCESS);
        QVERIFY(samePixels(loaded, first));
    }
};

QTEST_APPLESS_MAIN(TestCILImage)
#include "tst_cilimage.moc"
