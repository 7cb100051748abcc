#include "zosdisplayrange.h"

#include <algorithm>
#include <cmath>

namespace {

// A tick step held as mantissa (1, 2 or 5) and power of ten, so that multiples
// of it are formed as k * mantissa (an exact integer) scaled by one correctly
// rounded multiplication or division: 0.1 * 3 would give 0.30000000000000004.
struct Step {
    int mantissa;
    int power;

    double scaled(double multiple) const
    {
        const double m = multiple * mantissa;
        return power >= 0 ? m * std::pow(10.0, power) : m / std::pow(10.0, -power);
    }
    double value() const { return scaled(1.0); }
    void grow()
    {
        if (mantissa == 1) {
            mantissa = 2;
        } else if (mantissa == 2) {
            mantissa = 5;
        } else {
            mantissa = 1;
            ++power;
        }
    }
};

// The smallest 1-2-5 step not below `raw` (raw > 0 and finite).
Step stepAtLeast(double raw)
{
    Step s{1, int(std::floor(std::log10(raw)))};
    // log10 may land one off near exact powers of ten; the loop settles it.
    while (s.value() > raw && s.mantissa == 1 && s.power > -400) {
        --s.power;
    }
    while (s.value() < raw) {
        s.grow();
    }
    return s;
}

} // namespace

bool getNiceRangeForDisplay(double min, double max, int maxTicks, tagZOSDisplayRange *range)
{
    if (!range) {
        return false;
    }
    *range = tagZOSDisplayRange();
    if (!std::isfinite(min) || !std::isfinite(max)) {
        return false;
    }
    if (min > max) {
        std::swap(min, max);
    }
    range->minimum = min;
    range->maximum = max;
    const double span = max - min;
    if (!std::isfinite(span)) {
        *range = tagZOSDisplayRange();
        return false;
    }
    maxTicks = std::max(maxTicks, 2);

    const double magnitude = std::max(std::fabs(min), std::fabs(max));
    double basis = span;
    // A span lost in the rounding of its bounds is treated as a single value, so
    // the tick multiples below stay exact integers.
    if (span <= magnitude * 1e-13) {
        basis = magnitude > 0.0 ? magnitude : 1.0;
    }

    Step step = stepAtLeast(basis / (maxTicks - 1));
    double kMin = 0.0;
    double kMax = 0.0;
    for (;;) {
        const double s = step.value();
        kMin = std::floor(min / s);
        kMax = std::ceil(max / s);
        // The division may round across an integer; step back over the bound.
        if (step.scaled(kMin) > min) {
            kMin -= 1.0;
        }
        if (step.scaled(kMax) < max) {
            kMax += 1.0;
        }
        if (kMax <= kMin) {
            kMax = kMin + 1.0;
        }
        if (kMax - kMin + 1.0 <= maxTicks) {
            break;
        }
        step.grow();
    }

    range->tickStep = step.value();
    range->niceMinimum = step.scaled(kMin);
    range->niceMaximum = step.scaled(kMax);
    range->tickCount = int(kMax - kMin) + 1;
    if (!std::isfinite(range->niceMinimum) || !std::isfinite(range->niceMaximum)) {
        *range = tagZOSDisplayRange(); // rounding outwards left the doubles
        return false;
    }

    const double shown = std::max(std::fabs(range->niceMinimum), std::fabs(range->niceMaximum));
    const int magnitudeExponent = int(std::floor(std::log10(shown)));
    range->exponent = std::min(magnitudeExponent, step.power + 1);
    return true;
}
