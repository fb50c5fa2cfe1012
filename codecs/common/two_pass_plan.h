// Shares a stream's bits out over its groups, once a first pass has found what they hold.
#pragma once

#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/rate_settings.h"

namespace codecs {

struct FirstPassGroup {
    double seconds = 0;
    std::vector<FoundPicture> pictures;  // as they are shown; the first one is the I picture
};

struct PlannedGroup {
    double bits = 0;
    std::vector<FoundPicture> pictures;
};

/// Groups that are harder to code get more bits, as long as the receiver's buffer (when the
/// settings name one) is not overdrawn; together they take what the rate gives, or what the finest
/// quantiser makes of them when that is less.
std::vector<PlannedGroup> PlanGroups(const RateSettings& settings,
                                     std::vector<FirstPassGroup> groups);

}  // namespace codecs
