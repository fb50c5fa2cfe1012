// What a stream's rate control is asked for.
#pragma once

namespace codecs {

/// What a group leaves in the receiver's buffer for the next one, as a part of it, at most. Groups
/// that are coded side by side keep to it without knowing of each other.
inline constexpr double kHandOver = 0.25;

struct RateSettings {
    double rate_bps = 0;         // asked for on average
    double bucket_rate_bps = 0;  // at which the receiver's buffer drains; 0 = there is none
    double bucket_bits = 0;      // what that buffer holds
    double finest = 1;           // the quantisers that may be chosen
    double coarsest = 31;
    bool may_drop = false;  // pictures that do not fit with the coarsest quantiser
    /// Small changes of the quantiser only: a first pass that finds out what pictures take should
    /// not take it from each differently.
    bool steady = false;
};

}  // namespace codecs
