#ifndef CCDCORRECTIONS_P_H
#define CCDCORRECTIONS_P_H

// The read-noise accumulation behind createReadSigmaImage(): one pass writes
// the mask, sum and count images and gathers the statistics of all four
// images on the way. Private to the library (and its tests).

#include "cilimage.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZO_READ_SIGMA_SSE2
#endif

namespace ZoReadSigma {

// The inclusive integer range of 16-bit values v with lower < v < upper.
// False when no value qualifies (NaN limits included).
inline bool strictIntegerRange(float lower, float upper, quint16 &first, quint16 &last)
{
    if (std::isnan(lower) || std::isnan(upper))
        return false;
    const double lo = std::max(std::floor(double(lower)) + 1.0, 0.0);
    const double hi = std::min(std::ceil(double(upper)) - 1.0, 65535.0);
    if (lo > hi)
        return false;
    first = quint16(lo);
    last = quint16(hi);
    return true;
}

// Minimum, maximum and exact sum of one image's pixels, gathered while the
// accumulation writes them, so that no image needs a second pass.
struct PixelStats {
    quint16 lo = 0xFFFF;
    quint16 hi = 0;
    quint64 total = 0;

    void add(quint16 v)
    {
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
        total += v;
    }
};

struct FrameStats {
    PixelStats source, sum, count;
    quint64 inRange = 0; // mask pixels set; the mask holds only 0 and 1
};

// One pixel of the accumulation; in range means first <= v <= first + span.
// Sum and count wrap in 16 bits on purpose. `Fresh`: sum and count start at 0.
template <bool Fresh>
inline void accumulatePixel(const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask, qint64 i,
                            quint16 first, quint16 span, FrameStats &stats)
{
    const quint16 v = source[i];
    const quint16 in = quint16(quint16(v - first) <= span);
    const quint16 s = quint16((Fresh ? 0 : sum[i]) + (in ? v : 0));
    const quint16 c = quint16((Fresh ? 0 : count[i]) + in);
    mask[i] = in;
    sum[i] = s;
    count[i] = c;
    stats.source.add(v);
    stats.sum.add(s);
    stats.count.add(c);
    stats.inRange += in;
}

#ifdef ZO_READ_SIGMA_SSE2
// SSE2 compares and orders signed 16-bit lanes only, so values are biased by
// 0x8000 into the signed range, where their order is that of the unsigned
// values. madd against ones sums biased pixel pairs into 32-bit lanes; each
// vector adds at most 2 * 32768 in magnitude to a lane, so the lanes are
// widened to 64 bits every VectorsPerFlush vectors (8192 * 65536 < 2^31). The
// in-range count per 16-bit lane grows by at most 1 a vector.
constexpr qint64 VectorsPerFlush = 8192;

struct VectorStats {
    __m128i lo = _mm_set1_epi16(0x7FFF);
    __m128i hi = _mm_set1_epi16(short(0x8000));
    __m128i pairs = _mm_setzero_si128(); // 32-bit partial sums of biased values
    qint64 biasedTotal = 0;

    void add(__m128i biased, __m128i ones)
    {
        lo = _mm_min_epi16(lo, biased);
        hi = _mm_max_epi16(hi, biased);
        pairs = _mm_add_epi32(pairs, _mm_madd_epi16(biased, ones));
    }
    void flush()
    {
        biasedTotal += lanesSum(pairs);
        pairs = _mm_setzero_si128();
    }
    // Folds what the vectors saw (`pixels` of them) into `stats`.
    void foldInto(PixelStats &stats, qint64 pixels) const
    {
        alignas(16) qint16 mins[8];
        alignas(16) qint16 maxs[8];
        _mm_store_si128(reinterpret_cast<__m128i *>(mins), lo);
        _mm_store_si128(reinterpret_cast<__m128i *>(maxs), hi);
        for (int k = 0; k < 8; ++k) {
            stats.lo = std::min(stats.lo, quint16(quint16(mins[k]) ^ 0x8000));
            stats.hi = std::max(stats.hi, quint16(quint16(maxs[k]) ^ 0x8000));
        }
        stats.total += quint64(biasedTotal + pixels * 32768);
    }
    static qint64 lanesSum(__m128i lanes32)
    {
        alignas(16) qint32 lanes[4];
        _mm_store_si128(reinterpret_cast<__m128i *>(lanes), lanes32);
        return qint64(lanes[0]) + lanes[1] + lanes[2] + lanes[3];
    }
};

// The accumulation over whole vectors of 8 pixels; returns how many pixels it did.
template <bool Fresh>
qint64 accumulateSse2(const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask, qint64 n,
                      quint16 first, quint16 span, FrameStats &stats)
{
    const __m128i bias = _mm_set1_epi16(short(0x8000));
    const __m128i ones = _mm_set1_epi16(1);
    const __m128i firstBiased = _mm_set1_epi16(short(first ^ 0x8000));
    const __m128i spanBiased = _mm_set1_epi16(short(span ^ 0x8000));
    VectorStats vSource, vSum, vCount;
    const qint64 vectors = n / 8;
    for (qint64 v = 0; v < vectors;) {
        const qint64 stop = std::min(vectors, v + VectorsPerFlush);
        __m128i inLanes = _mm_setzero_si128();
        for (; v < stop; ++v) {
            const qint64 i = v * 8;
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source + i));
            const __m128i xBiased = _mm_xor_si128(x, bias);
            // (x - first) ^ 0x8000 == x - (first ^ 0x8000) in 16 bits
            const __m128i out = _mm_cmpgt_epi16(_mm_sub_epi16(x, firstBiased), spanBiased);
            const __m128i in = _mm_andnot_si128(out, ones);
            __m128i s = _mm_andnot_si128(out, x);
            __m128i c = in;
            if constexpr (!Fresh) {
                s = _mm_add_epi16(s, _mm_loadu_si128(reinterpret_cast<const __m128i *>(sum + i)));
                c = _mm_add_epi16(c, _mm_loadu_si128(reinterpret_cast<const __m128i *>(count + i)));
            }
            _mm_storeu_si128(reinterpret_cast<__m128i *>(mask + i), in);
            _mm_storeu_si128(reinterpret_cast<__m128i *>(sum + i), s);
            _mm_storeu_si128(reinterpret_cast<__m128i *>(count + i), c);
            inLanes = _mm_add_epi16(inLanes, in);
            vSource.add(xBiased, ones);
            vSum.add(_mm_xor_si128(s, bias), ones);
            if constexpr (!Fresh) // a fresh count equals the mask, whose statistics come from inRange
                vCount.add(_mm_xor_si128(c, bias), ones);
        }
        vSource.flush();
        vSum.flush();
        vCount.flush();
        stats.inRange += quint64(VectorStats::lanesSum(_mm_madd_epi16(inLanes, ones)));
    }
    const qint64 done = vectors * 8;
    if (done > 0) {
        vSource.foldInto(stats.source, done);
        vSum.foldInto(stats.sum, done);
        if constexpr (!Fresh)
            vCount.foldInto(stats.count, done);
    }
    return done;
}
#endif

// Where the build has it (ZO_AVX2), the same loop as accumulateSse2()
// on 16 pixels a step, in ccdcorrections_avx2.cpp, the one file built for AVX2.
// It only writes fields of `stats`, so that no inline code of this header is
// emitted there with AVX2 instructions. Call it only when zoHasAvx2().
qint64 accumulateAvx2(bool fresh, const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask, qint64 n,
                      quint16 first, quint16 span, FrameStats &stats);

// The vector kernels by the pixels they take a step: 0 is the portable
// per-pixel loop, 8 SSE2, 16 AVX2 (the tests compare each with a reference).
#ifdef ZO_READ_SIGMA_SSE2
constexpr int BaselineWidth = 8;
#else
constexpr int BaselineWidth = 0;
#endif

// Accumulates one whole frame and gathers the statistics of all four images.
template <bool Fresh, int Width>
FrameStats accumulateFrame(const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask, qint64 n,
                           quint16 first, quint16 last)
{
    const quint16 span = quint16(last - first);
    FrameStats stats;
    qint64 i = 0;
    if constexpr (Width == 16)
        i = accumulateAvx2(Fresh, source, sum, count, mask, n, first, span, stats);
#ifdef ZO_READ_SIGMA_SSE2
    if constexpr (Width == 8)
        i = accumulateSse2<Fresh>(source, sum, count, mask, n, first, span, stats);
#endif
    if (Fresh && i > 0) { // the vectors left the count's statistics to the mask's
        stats.count.lo = stats.inRange == quint64(i) ? 1 : 0;
        stats.count.hi = stats.inRange > 0 ? 1 : 0;
        stats.count.total = stats.inRange;
    }
    for (; i < n; ++i)
        accumulatePixel<Fresh>(source, sum, count, mask, i, first, span, stats);
    return stats;
}

template <int Width>
void accumulateImages(CILImage &source, CILImage &sum, CILImage &count, CILImage &mask, quint16 first, quint16 last,
                      bool accumulate)
{
    const qint64 n = source.getPixelCount();
    const FrameStats stats = accumulate
        ? accumulateFrame<false, Width>(source.getPixels(), sum.getPixels(), count.getPixels(), mask.getPixels(), n,
                                          first, last)
        : accumulateFrame<true, Width>(source.getPixels(), sum.getPixels(), count.getPixels(), mask.getPixels(), n,
                                         first, last);
    source.setImageStats(stats.source.lo, stats.source.hi, stats.source.total);
    mask.setImageStats(stats.inRange == quint64(n) ? 1 : 0, stats.inRange > 0 ? 1 : 0, stats.inRange);
    count.setImageStats(stats.count.lo, stats.count.hi, stats.count.total);
    sum.setImageStats(stats.sum.lo, stats.sum.hi, stats.sum.total);
}

} // namespace ZoReadSigma

#endif // CCDCORRECTIONS_P_H
