// Shares a stream's bits out over its GOPs, once a first pass has found what they hold.
#pragma once

#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/rate_settings.h"

namespace codecs {

struct FirstPassGop {
    double seconds = 0;
    std::vector<FoundPicture> pictures;  // as they are shown; the first one is the I picture
};

struct PlannedGop {
    double bits = 0;
    std::vector<FoundPicture> pictures;
};

/// GOPs that are harder to code get more bits, as long as the VBV (when the
/// settings name one) is not overdrawn; together they take what the rate gives, or what the finest
/// quantiser makes of them when that is less.
std::vector<PlannedGop> PlanGops(const RateSettings& settings, std::vector<FirstPassGop> gops);

}  // namespace codecs
