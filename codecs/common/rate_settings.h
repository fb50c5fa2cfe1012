// What a stream's rate control is asked for.
#pragma once

#include <algorithm>
#include <cmath>

namespace codecs {

/// What a GOP leaves in the VBV for the next one, as a part of it, at most, where a plan is made.
inline constexpr double kHandOver = 0.25;

/// The VBV (video buffering verifier) is seen from the encoder: coded pictures fill it, the channel
/// drains it, and it must never hold more than its size.
struct RateSettings {
    double rate_bps = 0;      // asked for on average
    double vbv_rate_bps = 0;  // at which the VBV drains; 0 = there is none
    double vbv_bits = 0;      // what it holds
    double finest = 1;        // the quantisers that may be chosen
    double coarsest = 31;
    bool may_drop = false;  // pictures that do not fit with the coarsest quantiser
    /// Small changes of the quantiser only: a first pass that finds out what pictures take should
    /// not take it from each differently.
    bool steady = false;
    /// The encoder itself makes I pictures finer, so they are asked for as P pictures are.
    bool weighs_i = false;
    /// Pictures that show nothing new are made sharper, with bits that the VBV has to spare.
    bool sharpens = false;
    double halves_up_to = 0;  // above it, quantisers are whole numbers
    double most_coarse = 31;  // of a picture that has to fit

    /// The nearest quantiser that a picture can be coded with.
    double Coded(double quantiser) const {
        const double halved = std::round(2 * quantiser) / 2;
        return halved <= halves_up_to ? halved : std::round(quantiser);
    }
    double NextCoarser(double quantiser) const {
        const double half = quantiser + 0.5;
        return std::min(half <= halves_up_to ? half : std::floor(quantiser + 1), most_coarse);
    }
};

}  // namespace codecs
