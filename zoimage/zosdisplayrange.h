#pragma once
// Nice axis ranges for plots and colour bars. Stateless free functions.

#include "zoimage_export.h"

// One axis range rounded to "nice" numbers, as filled by getNiceRangeForDisplay.
struct ZOIMAGE_EXPORT tagZOSDisplayRange {
    double minimum = 0.0;     // the range asked for (after ordering: minimum <= maximum)
    double maximum = 0.0;
    double niceMinimum = 0.0; // a multiple of tickStep, <= minimum
    double niceMaximum = 0.0; // a multiple of tickStep, >= maximum
    double tickStep = 0.0;    // 1, 2 or 5 times a power of ten; 0 when the range is invalid
    int tickCount = 0;        // ticks from niceMinimum to niceMaximum, both ends included
    int exponent = 0;         // power of ten for a common label factor (labels = value / 10^exponent)
};

// Rounds [min, max] outwards to a 1-2-5 tick step with at most `maxTicks`
// ticks (values below 2 count as 2). Reversed bounds are swapped. When
// min == max the range is widened by one step around the value (0 gives 0 .. 1).
// The exponent is the power of ten of the largest magnitude shown, but never more
// than one above the power of the step, so one decimal still tells ticks apart.
// Returns false, and fills `range` with an all-zero record, for a null record,
// NaN or infinite bounds, or a span that overflows a double.
ZOIMAGE_EXPORT bool getNiceRangeForDisplay(double min, double max, int maxTicks,
                                           tagZOSDisplayRange *range);
