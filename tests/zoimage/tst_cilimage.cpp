#include "cilimage.h"

#include <QRandomGenerator>
#include <QtTest>

#include <tiffio.h>

#include <algorithm>
#include <vector>

static quint16 foreignPixel(int x, int y) { return quint16(x * 3 + y * 1000); }

// A TIFF written straight through libtiff, for layouts the image never writes.
static bool writeRawTiff(const QString &file, const char *mode, int bits, int samples, int format, int tile = 0,
                         int compression = COMPRESSION_NONE, int width = 40, int height = 50)
{
    TIFF *t = TIFFOpen(QFile::encodeName(file).constData(), mode);
    TIFFSetField(t, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(t, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(t, TIFFTAG_SAMPLEFORMAT, format);
    TIFFSetField(t, TIFFTAG_PHOTOMETRIC, samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(t, TIFFTAG_COMPRESSION, compression);
    bool ok = true;
    const int side = tile ? tile : 1;
    if (tile) {
        TIFFSetField(t, TIFFTAG_TILEWIDTH, tile);
        TIFFSetField(t, TIFFTAG_TILELENGTH, tile);
    }
    std::vector<quint16> buf(size_t(tile ? TIFFTileSize(t) : TIFFScanlineSize(t)) / 2 + 1);
    for (int y = 0; y < height; y += side)
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
                quint16 lo = 0xFFFF, hi = 0;
                quint64 total = 0;
                for (int i = 0; i < count; ++i) {
                    p[i] = quint16(random.bounded(range.first, range.second + 1));
                    lo = std::min(lo, p[i]);
                    hi = std::max(hi, p[i]);
                    total += p[i];
                }
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
        // Big-endian strips, then tiles cut at the edges in either byte order.
        for (const int tile : {0, 16, 32}) {
            QVERIFY(writeRawTiff(path("foreign.tif"), tile == 16 ? "wl" : "wb", 16, 1, SAMPLEFORMAT_UINT, tile));
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
        QFile corrupt(path("corrupt.tif"));
        QVERIFY(corrupt.open(QIODevice::ReadWrite));
        QByteArray bytes = corrupt.readAll();
        for (int i = 8; i < bytes.size() / 2; ++i)
            bytes[i] = char(0xA5 ^ i); // the deflated pixels, not the directory at the end
        QVERIFY(corrupt.seek(0) && corrupt.write(bytes) == bytes.size() && corrupt.flush());
        QCOMPARE(pattern(200, 200).saveTiff(path("cut.tif")), ES_SUCCESS);
        QVERIFY(QFile(path("cut.tif")).resize(40000)); // the directory follows the pixels
        const QList<QPair<const char *, tag_estatus>> cases = {
            {"8bit.tif", ES_INVALID_DATA_TYPE}, {"signed.tif", ES_INVALID_DATA_TYPE}, {"rgb.tif", ES_INVALID_DATA_TYPE},
            {"corrupt.tif", ES_CORRUPT_FILE}, {"cut.tif", ES_OPEN_FAILED}, {"absent.tif", ES_FILE_NOT_FOUND}, {"", ES_FILE_NOT_FOUND}};
        for (const auto &c : cases) {
            CILImage image = pattern(3, 3);
            QCOMPARE(image.loadTiff(path(c.first)), c.second);
            QVERIFY(!image.getLastError().isEmpty() && same(image, pattern(3, 3)));
        }
    }
};

QTEST_APPLESS_MAIN(TestCILImage)
#include "tst_cilimage.moc"
