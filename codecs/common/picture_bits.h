// How many bits a picture takes at a quantiser.
#pragma once

#include <algorithm>
#include <cstdint>

namespace codecs {

/// An I picture refers to no other; a P picture to the I or P picture coded before it; a B picture
/// to the two of them that stand around it, and none refers to it.
enum class PictureKind : std::uint8_t { kI, kP, kB };

/// The quantiser of a B picture as a part of that of the P pictures around it: what it loses, no
/// other picture inherits. Chosen by hand on the clips of bench/quality.
inline constexpr double kBQuantiserPart = 1.4;

/// A model of a block transform coder: what the coefficients take falls with the quantiser, a
/// little less than in proportion where it is fine; vectors, types and headers cost the same with
/// each. The offset is what fits footage coded at quantisers from 1 to 31 best.
struct PictureBits {
    static constexpr double kOffset = 1.5;

    double texture = 0;  // bits of the coefficients times (quantiser + offset)
    double fixed = 0;    // bits that no quantiser changes

    static PictureBits Taken(double coefficient_bits, double other_bits, double quantiser) {
        return {coefficient_bits * (quantiser + kOffset), other_bits};
    }
    double At(double quantiser) const { return texture / (quantiser + kOffset) + fixed; }
    /// At which it takes `bits`, which are more than `fixed`; may be below every real one.
    double QuantiserFor(double bits) const { return texture / (bits - fixed) - kOffset; }

    PictureBits& operator+=(const PictureBits& other) {
        texture += other.texture;
        fixed += other.fixed;
        return *this;
    }
    PictureBits operator*(double factor) const { return {texture * factor, fixed * factor}; }
};

/// A picture as a first pass has found it.
struct FoundPicture {
    PictureBits bits;
    PictureKind kind = PictureKind::kP;

    /// In terms of the quantiser that P pictures have while this one is coded.
    PictureBits ByP() const {
        return {kind == PictureKind::kB ? bits.texture / kBQuantiserPart : bits.texture,
                bits.fixed};
    }
};

/// The quantiser of an I picture as a part of the one that the pictures after it have. The more
/// of those there are and the less they add to it, the longer its quality lasts, and the more bits
/// it is worth. Chosen by hand on the clips of bench/quality.
/// @param delta_texture  of a picture after it, as a part of the I picture's
/// @param deltas         pictures after it
inline double IQuantiserPart(double delta_texture, double deltas) {
    return std::clamp(0.25 + delta_texture + 4 / std::max(1.0, deltas), 0.4, 0.8);
}

}  // namespace codecs
