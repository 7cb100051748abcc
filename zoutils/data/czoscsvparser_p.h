#pragma once
// The CSV editor's line scan for processors with AVX2, in czoscsvparser_avx2.cpp,
// the one file of the folder built for AVX2. Call it only when zoHasAvx2().

namespace ZoCsvScan {

// Passes whole 64-byte blocks from the start of data[0, size) for as long as
// every line ending in them is tidy (at least one byte before its "\r\n"),
// none starts with the byte `watch` (-1 for none) and no more than `wanted`
// lines end in them. The start of `data` is a line start. Returns the bytes
// passed, adds the lines ended there to `lines` and sets `lineStart` after
// the last of them (unchanged when none ended).
int tidyBlocksAvx2(const char *data, int size, int watch, int wanted, int &lines, int &lineStart);

} // namespace ZoCsvScan
