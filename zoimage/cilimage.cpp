#include "cilimage.h"

#include "czosavefile.h"

#include <QFile>
#include <QFileInfo>

#include <tiffio.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace {

// libtiff reads and writes through a QIODevice, so paths need no local 8-bit
// encoding and a save replaces the old file only once the new one is complete.
tmsize_t deviceRead(thandle_t h, void *buf, tmsize_t size)
{
    return static_cast<QIODevice *>(h)->read(static_cast<char *>(buf), size);
}

tmsize_t deviceWrite(thandle_t h, void *buf, tmsize_t size)
{
    return static_cast<QIODevice *>(h)->write(static_cast<const char *>(buf), size);
}

toff_t deviceSeek(thandle_t h, toff_t offset, int whence)
{
    auto *dev = static_cast<QIODevice *>(h);
    qint64 base = 0;
    if (whence == SEEK_CUR) {
        base = dev->pos();
    } else if (whence == SEEK_END) {
        base = dev->size();
    }
    const qint64 target = base + qint64(offset);
    if (target < 0 || !dev->seek(target)) {
        return toff_t(-1);
    }
    return toff_t(target);
}

int deviceClose(thandle_t) { return 0; }

toff_t deviceSize(thandle_t h) { return toff_t(static_cast<QIODevice *>(h)->size()); }

int noMap(thandle_t, void **, toff_t *) { return 0; }

void noUnmap(thandle_t, void *, toff_t) {}

// Collects libtiff's messages for one handle instead of letting them reach stderr.
int collectMessage(TIFF *, void *userData, const char *module, const char *fmt, va_list ap)
{
    auto *text = static_cast<QString *>(userData);
    if (text->isEmpty()) { // the first message is the cause; later ones are fallout
        *text = QString::vasprintf(fmt, ap);
        if (module && *module) {
            *text = QString::fromUtf8(module) + QStringLiteral(": ") + *text;
        }
    }
    return 1; // handled: keep libtiff's global handlers quiet
}

int ignoreMessage(TIFF *, void *, const char *, const char *, va_list) { return 1; }

struct TiffCloser {
    void operator()(TIFF *tif) const { TIFFClose(tif); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

TiffHandle openTiff(QIODevice *dev, const char *mode, const QString &name, QString *error)
{
    TIFFOpenOptions *opts = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(opts, collectMessage, error);
    TIFFOpenOptionsSetWarningHandlerExtR(opts, ignoreMessage, nullptr);
    // No single allocation beyond what the largest image needs.
    TIFFOpenOptionsSetMaxSingleMemAlloc(opts, tmsize_t(CILImage::MaxPixelCount * 2));
    TIFF *tif = TIFFClientOpenExt(QFile::encodeName(name).constData(), mode, dev, deviceRead,
                                  deviceWrite, deviceSeek, deviceClose, deviceSize, noMap,
                                  noUnmap, opts);
    TIFFOpenOptionsFree(opts);
    return TiffHandle(tif);
}

} // namespace

void CILImage::FreeDeleter::operator()(quint16 *p) const { std::free(p); }

CILImage::PixelBuffer CILImage::allocateBuffer(qint64 count, bool zeroed)
{
    if (count < 1 || count > MaxPixelCount) {
        return PixelBuffer();
    }
    const size_t bytes = size_t(count) * sizeof(quint16);
    void *p = zeroed ? std::calloc(size_t(count), sizeof(quint16)) : std::malloc(bytes);
    return PixelBuffer(static_cast<quint16 *>(p));
}

CILImage::CILImage(int width, int height) { allocate(width, height); }

CILImage::CILImage(const CILImage &other) { *this = other; }

CILImage &CILImage::operator=(const CILImage &other)
{
    if (this == &other) {
        return *this;
    }
    PixelBuffer copy;
    if (!other.isNull()) {
        copy = allocateBuffer(other.getPixelCount(), false);
        if (!copy) {
            clear(); // out of memory: a null image rather than a half copy
            return *this;
        }
        std::memcpy(copy.get(), other.m_pPixels.get(), size_t(other.getPixelCount()) * sizeof(quint16));
    }
    m_pPixels = std::move(copy);
    m_nWidth = other.m_nWidth;
    m_nHeight = other.m_nHeight;
    m_nMinimum = other.m_nMinimum;
    m_nMaximum = other.m_nMaximum;
    m_dMean = other.m_dMean;
    m_sLastError = other.m_sLastError;
    return *this;
}

CILImage::CILImage(CILImage &&other) noexcept { *this = std::move(other); }

CILImage &CILImage::operator=(CILImage &&other) noexcept
{
    if (this != &other) {
        m_pPixels = std::move(other.m_pPixels);
        m_nWidth = std::exchange(other.m_nWidth, 0);
        m_nHeight = std::exchange(other.m_nHeight, 0);
        m_nMinimum = std::exchange(other.m_nMinimum, 0);
        m_nMaximum = std::exchange(other.m_nMaximum, 0);
        m_dMean = std::exchange(other.m_dMean, 0.0);
        m_sLastError = std::move(other.m_sLastError);
    }
    return *this;
}

CILImage::~CILImage() = default;

bool CILImage::allocate(int width, int height)
{
    clear();
    if (width < 1 || height < 1) {
        return false;
    }
    PixelBuffer pixels = allocateBuffer(qint64(width) * height, true);
    if (!pixels) {
        return false;
    }
    adopt(std::move(pixels), width, height);
    return true;
}

void CILImage::clear()
{
    m_pPixels.reset();
    m_nWidth = m_nHeight = 0;
    m_nMinimum = m_nMaximum = 0;
    m_dMean = 0.0;
}

void CILImage::adopt(PixelBuffer pixels, int width, int height)
{
    m_pPixels = std::move(pixels);
    m_nWidth = width;
    m_nHeight = height;
    RefreshImageStats();
}

quint16 CILImage::pixel(int x, int y) const
{
    Q_ASSERT(x >= 0 && x < m_nWidth && y >= 0 && y < m_nHeight);
    return m_pPixels.get()[qint64(y) * m_nWidth + x];
}

void CILImage::setPixel(int x, int y, quint16 value)
{
    Q_ASSERT(x >= 0 && x < m_nWidth && y >= 0 && y < m_nHeight);
    m_pPixels.get()[qint64(y) * m_nWidth + x] = value;
}

void CILImage::fill(quint16 value)
{
    if (isNull()) {
        return;
    }
    std::fill_n(m_pPixels.get(), getPixelCount(), value);
    RefreshImageStats();
}

namespace {

#if defined(__SSE2__) || defined(_M_X64)
// SSE2 has only signed 16-bit min/max, so pixels are biased by 0x8000 into
// the signed range, where the order is the same. madd against ones sums pixel
// pairs into 32-bit lanes; each step adds at most 2 * 32768 in magnitude to a
// lane, so the lanes are widened to 64 bits every VectorsPerFlush steps
// (8192 * 65536 < 2^31).
void scanSse2(const quint16 *p, qint64 count, quint16 &lo, quint16 &hi, quint64 &total, qint64 &done)
{
    constexpr qint64 VectorsPerFlush = 8192;
    const __m128i bias = _mm_set1_epi16(short(0x8000));
    const __m128i ones = _mm_set1_epi16(1);
    __m128i vmin = _mm_set1_epi16(0x7FFF);
    __m128i vmax = _mm_set1_epi16(short(0x8000));
    qint64 biasedTotal = 0; // sum of (v - 32768)
    const qint64 vectors = count / 16;
    qint64 v = 0;
    while (v < vectors) {
        const qint64 stop = std::min(vectors, v + VectorsPerFlush);
        __m128i acc0 = _mm_setzero_si128();
        __m128i acc1 = _mm_setzero_si128();
        for (; v < stop; ++v) {
            const __m128i a = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + v * 16)), bias);
            const __m128i b = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + v * 16 + 8)), bias);
            vmin = _mm_min_epi16(vmin, _mm_min_epi16(a, b));
            vmax = _mm_max_epi16(vmax, _mm_max_epi16(a, b));
            acc0 = _mm_add_epi32(acc0, _mm_madd_epi16(a, ones));
            acc1 = _mm_add_epi32(acc1, _mm_madd_epi16(b, ones));
        }
        alignas(16) qint32 lanes[8];
        _mm_store_si128(reinterpret_cast<__m128i *>(lanes), acc0);
        _mm_store_si128(reinterpret_cast<__m128i *>(lanes + 4), acc1);
        for (const qint32 lane : lanes)
            biasedTotal += lane;
    }
    done = vectors * 16;
    if (done == 0)
        return;
    alignas(16) qint16 mins[8];
    alignas(16) qint16 maxs[8];
    _mm_store_si128(reinterpret_cast<__m128i *>(mins), vmin);
    _mm_store_si128(reinterpret_cast<__m128i *>(maxs), vmax);
    for (int k = 0; k < 8; ++k) {
        lo = std::min(lo, quint16(quint16(mins[k]) ^ 0x8000));
        hi = std::max(hi, quint16(quint16(maxs[k]) ^ 0x8000));
    }
    total += quint64(biasedTotal + done * 32768);
}
#endif

// Minimum, maximum and exact sum of `count` pixels, folded into lo, hi, total.
void scanPixels(const quint16 *p, qint64 count, quint16 &lo, quint16 &hi, quint64 &total)
{
    qint64 i = 0;
#if defined(__SSE2__) || defined(_M_X64)
    scanSse2(p, count, lo, hi, total, i);
#endif
    // Tail (or the whole buffer without SSE2); a plain loop is exact.
    for (; i < count; ++i) {
        const quint16 v = p[i];
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
        total += v;
    }
}

} // namespace

void CILImage::RefreshImageStats()
{
    const qint64 count = getPixelCount();
    const quint16 *p = m_pPixels.get();
    if (!p || count < 1) {
        m_nMinimum = m_nMaximum = 0;
        m_dMean = 0.0;
        return;
    }
    quint16 lo = 0xFFFF;
    quint16 hi = 0;
    quint64 total = 0;
    scanPixels(p, count, lo, hi, total);
    setImageStats(lo, hi, total);
}

void CILImage::setImageStats(quint16 minimum, quint16 maximum, quint64 sum)
{
    if (isNull())
        return;
    Q_ASSERT(minimum <= maximum && sum >= quint64(minimum) * quint64(getPixelCount()));
    m_nMinimum = minimum;
    m_nMaximum = maximum;
    m_dMean = double(sum) / double(getPixelCount());
}

tag_estatus CILImage::saveTiff(const QString &path) const
{
    m_sLastError.clear();
    if (isNull()) {
        m_sLastError = QStringLiteral("The image is empty.");
        return ES_INVALID_IMAGE;
    }
    CZOSaveFile file(path);
    if (!file.open()) {
        m_sLastError = file.errorString();
        return ES_OPEN_FAILED;
    }
    QString tiffError;
    TiffHandle tif = openTiff(file.device(), "w", path, &tiffError);
    if (!tif) {
        m_sLastError = tiffError.isEmpty() ? QStringLiteral("Cannot start a TIFF file.") : tiffError;
        return ES_OPEN_FAILED;
    }
    TIFF *t = tif.get();
    TIFFSetField(t, TIFFTAG_IMAGEWIDTH, quint32(m_nWidth));
    TIFFSetField(t, TIFFTAG_IMAGELENGTH, quint32(m_nHeight));
    TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(t, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    TIFFSetField(t, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(t, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(t, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(t, 0));

    bool ok = true;
    for (int y = 0; y < m_nHeight && ok; ++y) {
        // libtiff takes a non-const row but does not change it when uncompressed.
        auto *row = const_cast<quint16 *>(m_pPixels.get() + qint64(y) * m_nWidth);
        ok = TIFFWriteScanline(t, row, quint32(y), 0) == 1;
    }
    ok = ok && TIFFFlush(t) == 1;
    tif.reset();
    if (!ok || !file.commit()) {
        m_sLastError = !tiffError.isEmpty() ? tiffError : file.errorString();
        return ES_WRITE_FAILED;
    }
    return ES_SUCCESS;
}

tag_estatus CILImage::loadTiff(const QString &path)
{
    m_sLastError.clear();
    QFile file(path);
    if (!QFileInfo(path).isFile()) {
        m_sLastError = QStringLiteral("No such file: %1").arg(path);
        return ES_FILE_NOT_FOUND;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        m_sLastError = file.errorString();
        return ES_OPEN_FAILED;
    }
    QString tiffError;
    TiffHandle tif = openTiff(&file, "r", path, &tiffError);
    if (!tif) {
        m_sLastError = tiffError.isEmpty() ? QStringLiteral("Not a TIFF file.") : tiffError;
        return ES_OPEN_FAILED;
    }
    TIFF *t = tif.get();
    quint32 width = 0;
    quint32 height = 0;
    quint16 bits = 1;
    quint16 samples = 1;
    quint16 format = SAMPLEFORMAT_UINT;
    TIFFGetField(t, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(t, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetFieldDefaulted(t, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(t, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(t, TIFFTAG_SAMPLEFORMAT, &format);
    if (bits != 16 || samples != 1 || format != SAMPLEFORMAT_UINT) {
        m_sLastError = QStringLiteral("Not a 16-bit grayscale image (%1 bits, %2 samples per pixel, sample format %3).")
                           .arg(bits)
                           .arg(samples)
                           .arg(format);
        return ES_INVALID_DATA_TYPE;
    }
    if (width < 1 || height < 1 || width > quint32(INT_MAX) || height > quint32(INT_MAX) ||
        qint64(width) * qint64(height) > MaxPixelCount) {
        m_sLastError = QStringLiteral("Unsupported image size %1 x %2.").arg(width).arg(height);
        return ES_INVALID_IMAGE;
    }
    const qint64 count = qint64(width) * height;
    PixelBuffer pixels = allocateBuffer(count, true);
    if (!pixels) {
        m_sLastError = QStringLiteral("Out of memory for %1 x %2 pixels.").arg(width).arg(height);
        return ES_OUT_OF_MEMORY;
    }

    bool ok = true;
    if (TIFFIsTiled(t)) {
        quint32 tileWidth = 0;
        quint32 tileHeight = 0;
        TIFFGetField(t, TIFFTAG_TILEWIDTH, &tileWidth);
        TIFFGetField(t, TIFFTAG_TILELENGTH, &tileHeight);
        const tmsize_t tileBytes = TIFFTileSize(t);
        if (tileWidth < 1 || tileHeight < 1 ||
            tileBytes < tmsize_t(qint64(tileWidth) * tileHeight * 2)) {
            ok = false;
        }
        PixelBuffer tile = ok ? allocateBuffer(tileBytes / 2 + 1, false) : PixelBuffer();
        ok = ok && tile;
        for (quint32 ty = 0; ok && ty < height; ty += tileHeight) {
            for (quint32 tx = 0; ok && tx < width; tx += tileWidth) {
                ok = TIFFReadTile(t, tile.get(), tx, ty, 0, 0) >= 0;
                const quint32 rows = std::min(tileHeight, height - ty);
                const quint32 cols = std::min(tileWidth, width - tx);
                for (quint32 r = 0; ok && r < rows; ++r) {
                    std::memcpy(pixels.get() + qint64(ty + r) * width + tx,
                                tile.get() + qint64(r) * tileWidth, cols * sizeof(quint16));
                }
            }
        }
    } else {
        ok = TIFFScanlineSize(t) == tmsize_t(width) * 2;
        for (quint32 y = 0; ok && y < height; ++y) {
            ok = TIFFReadScanline(t, pixels.get() + qint64(y) * width, y, 0) == 1;
        }
    }
    if (!ok) {
        m_sLastError = tiffError.isEmpty() ? QStringLiteral("The pixel data cannot be read.") : tiffError;
        return ES_CORRUPT_FILE;
    }
    adopt(std::move(pixels), int(width), int(height));
    return ES_SUCCESS;
}
