// The read-noise accumulation 16 pixels a step, for processors with AVX2. This
// file alone is built with -mavx2 and only called after a run-time check, so
// the library itself stays portable; it therefore uses nothing inline from
// the shared headers (whose code the linker could otherwise take from here).
#include "ccdcorrections_p.h"

#ifdef __AVX2__
#include <immintrin.h>

namespace {

// Unsigned 16-bit values biased by 0x8000 into the signed range, where their
// order is kept; madd against ones sums biased pairs into 32-bit lanes, which
// are widened every kFlush vectors (8192 * 65536 < 2^31).
constexpr qint64 kFlush = 8192;

struct Lanes {
    __m256i lo = _mm256_set1_epi16(0x7FFF);
    __m256i hi = _mm256_set1_epi16(short(0x8000));
    __m256i pairs = _mm256_setzero_si256();
    qint64 biasedTotal = 0;
};

qint64 sum32(__m256i lanes)
{
    alignas(32) qint32 v[8];
    _mm256_store_si256(reinterpret_cast<__m256i *>(v), lanes);
    qint64 total = 0;
    for (int k = 0; k < 8; ++k)
        total += v[k];
    return total;
}

inline void add(Lanes &l, __m256i biased, __m256i ones)
{
    l.lo = _mm256_min_epi16(l.lo, biased);
    l.hi = _mm256_max_epi16(l.hi, biased);
    l.pairs = _mm256_add_epi32(l.pairs, _mm256_madd_epi16(biased, ones));
}

void flush(Lanes &l)
{
    l.biasedTotal += sum32(l.pairs);
    l.pairs = _mm256_setzero_si256();
}

void fold(const Lanes &l, ZoReadSigma::PixelStats &stats, qint64 pixels)
{
    alignas(32) qint16 mins[16];
    alignas(32) qint16 maxs[16];
    _mm256_store_si256(reinterpret_cast<__m256i *>(mins), l.lo);
    _mm256_store_si256(reinterpret_cast<__m256i *>(maxs), l.hi);
    for (int k = 0; k < 16; ++k) {
        const quint16 lo = quint16(quint16(mins[k]) ^ 0x8000);
        const quint16 hi = quint16(quint16(maxs[k]) ^ 0x8000);
        stats.lo = lo < stats.lo ? lo : stats.lo;
        stats.hi = hi > stats.hi ? hi : stats.hi;
    }
    stats.total += quint64(l.biasedTotal + pixels * 32768);
}

template <bool Fresh>
qint64 accumulate(const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask, qint64 n, quint16 first,
                  quint16 span, ZoReadSigma::FrameStats &stats)
{
    const __m256i bias = _mm256_set1_epi16(short(0x8000));
    const __m256i ones = _mm256_set1_epi16(1);
    const __m256i firstBiased = _mm256_set1_epi16(short(first ^ 0x8000));
    const __m256i spanBiased = _mm256_set1_epi16(short(span ^ 0x8000));
    Lanes lSource, lSum, lCount;
    const qint64 vectors = n / 16;
    for (qint64 v = 0; v < vectors;) {
        const qint64 stop = vectors < v + kFlush ? vectors : v + kFlush;
        __m256i inLanes = _mm256_setzero_si256();
        for (; v < stop; ++v) {
            const qint64 i = v * 16;
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source + i));
            const __m256i out = _mm256_cmpgt_epi16(_mm256_sub_epi16(x, firstBiased), spanBiased);
            const __m256i in = _mm256_andnot_si256(out, ones);
            __m256i s = _mm256_andnot_si256(out, x);
            __m256i c = in;
            if constexpr (!Fresh) {
                s = _mm256_add_epi16(s, _mm256_loadu_si256(reinterpret_cast<const __m256i *>(sum + i)));
                c = _mm256_add_epi16(c, _mm256_loadu_si256(reinterpret_cast<const __m256i *>(count + i)));
            }
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(mask + i), in);
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(sum + i), s);
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(count + i), c);
            inLanes = _mm256_add_epi16(inLanes, in);
            add(lSource, _mm256_xor_si256(x, bias), ones);
            add(lSum, _mm256_xor_si256(s, bias), ones);
            if constexpr (!Fresh) // a fresh count equals the mask, whose statistics come from inRange
                add(lCount, _mm256_xor_si256(c, bias), ones);
        }
        flush(lSource);
        flush(lSum);
        flush(lCount);
        stats.inRange += quint64(sum32(_mm256_madd_epi16(inLanes, ones)));
    }
    const qint64 done = vectors * 16;
    if (done > 0) {
        fold(lSource, stats.source, done);
        fold(lSum, stats.sum, done);
        if constexpr (!Fresh)
            fold(lCount, stats.count, done);
    }
    return done;
}

} // namespace

qint64 ZoReadSigma::accumulateAvx2(bool fresh, const quint16 *source, quint16 *sum, quint16 *count, quint16 *mask,
                                   qint64 n, quint16 first, quint16 span, FrameStats &stats)
{
    return fresh ? accumulate<true>(source, sum, count, mask, n, first, span, stats)
                 : accumulate<false>(source, sum, count, mask, n, first, span, stats);
}
#endif
