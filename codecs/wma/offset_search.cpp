#include "codecs/wma/offset_search.h"

#include <algorithm>
#include <cmath>

#include "codecs/wma/rate_control.h"

namespace codecs::wma {
namespace {

constexpr double kOffsetStepDb = 1;
// Within which part of the wanted bits the search ends.
constexpr double kNearEnough = 0.06;
constexpr int kMostTries = 12;

}  // namespace

double FairOffset(double wanted, double start, const std::function<int(double offset_db)>& code) {
    double low = kLeastOffsetDb;
    double high = kMostOffsetDb;
    double offset = start;
    for (int tries = 0; tries < kMostTries && high - low > kOffsetStepDb; ++tries) {
        const double bits = code(offset);
        (bits > wanted ? low : high) = offset;
        const double parts = bits / wanted;
        if (std::abs(parts - 1) < kNearEnough) break;
        offset = std::clamp(offset + kDbByHalving * std::log2(parts), low + kOffsetStepDb / 2,
                            high - kOffsetStepDb / 2);
    }
    if (high - kLeastOffsetDb <= kOffsetStepDb) return kLeastOffsetDb;
    return high - low > kOffsetStepDb ? offset : high;
}

}  // namespace codecs::wma
