#pragma once

#include "zoimage_export.h"
#include "zoenums.h"

#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <memory>

// A 16-bit grayscale image: width x height pixels in row order, owned by the
// image, with cached statistics (minimum, maximum, mean).
//
// The statistics are computed when the image is allocated, filled or loaded,
// and by RefreshImageStats(); after writing pixels through getPixels() the
// caller refreshes them. Copies are deep.
class ZOIMAGE_EXPORT CILImage
{
public:
    // Largest pixel count an image may hold (2^28, 512 MiB of pixels); larger
    // sizes, whether asked for or read from a file header, are refused.
    static constexpr qint64 MaxPixelCount = qint64(1) << 28;

    CILImage() = default;
    // An image of the given size with every pixel 0; a null image when either
    // side is below 1, the size exceeds MaxPixelCount or memory runs out.
    CILImage(int width, int height);
    CILImage(const CILImage &other);
    CILImage &operator=(const CILImage &other);
    CILImage(CILImage &&other) noexcept;
    CILImage &operator=(CILImage &&other) noexcept;
    ~CILImage();

    // Reallocates to the given size with every pixel 0. Returns false (and
    // leaves a null image) for a size that cannot be held.
    bool allocate(int width, int height);
    void clear(); // back to a null image
    bool isNull() const { return !m_pPixels; }

    int getWidth() const { return m_nWidth; }
    int getHeight() const { return m_nHeight; }
    qint64 getPixelCount() const { return qint64(m_nWidth) * m_nHeight; }
    // Row-order pixel buffer, getPixelCount() values; null for a null image.
    // Owned by the image and valid until it is reallocated, cleared or loaded.
    quint16 *getPixels() { return m_pPixels.get(); }
    const quint16 *getPixels() const { return m_pPixels.get(); }
    // No bounds check beyond a debug assertion.
    quint16 pixel(int x, int y) const;
    void setPixel(int x, int y, quint16 value);
    // Sets every pixel and refreshes the statistics.
    void fill(quint16 value);

    // Statistics as of the last refresh; all 0 for a null image.
    quint16 getMinimum() const { return m_nMinimum; }
    quint16 getMaximum() const { return m_nMaximum; }
    double getMean() const { return m_dMean; }
    // Recomputes minimum, maximum and mean from the pixels, in one pass.
    void RefreshImageStats();
    // Sets the statistics from the pixels' minimum, maximum and exact sum,
    // for a caller that has just gathered them in a pass of its own over the
    // pixels; the result is what RefreshImageStats() would give (the mean is
    // `sum` / getPixelCount()), without the second pass. The caller vouches
    // for the values. Ignored for a null image.
    void setImageStats(quint16 minimum, quint16 maximum, quint64 sum);

    // Writes an uncompressed 16-bit single-sample grayscale TIFF. Returns
    // ES_SUCCESS; ES_INVALID_IMAGE for a null image; ES_OPEN_FAILED or
    // ES_WRITE_FAILED when the file cannot be created or written.
    tag_estatus saveTiff(const QString &path) const;
    // Reads a 16-bit single-sample grayscale TIFF (first directory, stripped or
    // tiled, any compression libtiff decodes) and refreshes the statistics.
    // Returns ES_SUCCESS; ES_FILE_NOT_FOUND; ES_OPEN_FAILED for a file that is
    // not a readable TIFF; ES_INVALID_DATA_TYPE for other bit depths, sample
    // counts or sample formats; ES_INVALID_IMAGE for an absent or too large size;
    // ES_CORRUPT_FILE when pixel data cannot be decoded. On failure the image is
    // left unchanged and getLastError() says why.
    tag_estatus loadTiff(const QString &path);
    // The reason of the last failed save or load, empty after a success.
    QString getLastError() const { return m_sLastError; }

private:
    struct FreeDeleter {
        void operator()(quint16 *p) const;
    };
    using PixelBuffer = std::unique_ptr<quint16, FreeDeleter>;

    static PixelBuffer allocateBuffer(qint64 count, bool zeroed);
    void adopt(PixelBuffer pixels, int width, int height);

    PixelBuffer m_pPixels;
    int m_nWidth = 0;
    int m_nHeight = 0;
    quint16 m_nMinimum = 0;
    quint16 m_nMaximum = 0;
    double m_dMean = 0.0;
    mutable QString m_sLastError;
};
