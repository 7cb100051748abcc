// The CSV editor's tidy-line scan 64 bytes a step, for processors with AVX2.
// A change scans the whole file, so this pass sets its cost beside the read
// and the write; it uses nothing inline from shared headers, whose code the
// linker could otherwise take from this file.
#include "czoscsvparser_p.h"

#ifdef __AVX2__
#include <immintrin.h>

#include <cstdint>

namespace {

// One bit per byte of data[0, 64) that equals the byte of `match`.
inline std::uint64_t bytesEqual(const char *data, __m256i match)
{
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(data));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(data + 32));
    return std::uint64_t(std::uint32_t(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, match))))
        | std::uint64_t(std::uint32_t(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, match)))) << 32;
}

} // namespace

int ZoCsvScan::tidyBlocksAvx2(const char *data, int size, int watch, int wanted, int &lines, int &lineStart)
{
    const __m256i newline = _mm256_set1_epi8('\n');
    const __m256i carriageReturn = _mm256_set1_epi8('\r');
    const __m256i watched = _mm256_set1_epi8(char(watch));
    // The bits of the block before, as seen from bit 0: the data's start is a
    // line start, as if two line ends came just before it.
    std::uint64_t newlinesBefore = std::uint64_t(3) << 62;
    std::uint64_t returnsBefore = 0;
    int passed = 0;
    int i = 0;
    for (; i + 64 <= size; i += 64) {
        const std::uint64_t newlines = bytesEqual(data + i, newline);
        const std::uint64_t returns = bytesEqual(data + i, carriageReturn);
        // A line end without its '\r', or with a line end two bytes before it: not tidy.
        std::uint64_t untidy = (newlines & ~((returns << 1) | (returnsBefore >> 63)))
            | (newlines & ((newlines << 2) | (newlinesBefore >> 62)));
        if (watch >= 0)
            untidy |= ((newlines << 1) | (newlinesBefore >> 63)) & bytesEqual(data + i, watched);
        const int ended = __builtin_popcountll(newlines);
        if (untidy || ended > wanted - passed)
            break;
        if (newlines) {
            passed += ended;
            lineStart = i + 64 - __builtin_clzll(newlines);
        }
        newlinesBefore = newlines;
        returnsBefore = returns;
    }
    lines += passed;
    return i;
}
#endif
