// How many bits a picture takes at a quantiser.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace codecs {

/// An I picture refers to no other; a P picture to the I or P picture coded before it; a B picture
/// to the two of them that stand around it, and none refers to it.
enum class PictureKind : std::uint8_t { kI, kP, kB };

/// The quantiser of a B picture as a part of that of the P pictures around it: what it loses, no
/// other picture inherits. Chosen by hand on the clips of bench/quality.
inline constexpr double kBQuantiserPart = 1.4;

/// A model of a block transform coder. What the coefficients of intra macroblocks take falls with
/// the quantiser, a little less than in proportion where it is fine; those of predicted ones, which
/// are small beside it, fall below it altogether, about with its square; vectors, types and headers
/// cost the same with each. The offset is what fits footage coded at quantisers from 1 to 31 best.
struct PictureBits {
    static constexpr double kOffset = 1.5;
    /// Where what falls differently with the quantiser is compared.
    static constexpr double kUsualQuantiser = 8;
    static constexpr double kUsualStep = kUsualQuantiser + kOffset;

    double texture = 0;  // bits of intra coefficients times (quantiser + offset)
    double residue = 0;  // bits of the others times its square
    double fixed = 0;    // bits that no quantiser changes

    static PictureBits Taken(double intra_bits, double predicted_bits, double other_bits,
                             double quantiser) {
        const double step = quantiser + kOffset;
        return {intra_bits * step, predicted_bits * step * step, other_bits};
    }
    /// Bits of the coefficients.
    double Coefficients(double quantiser) const {
        const double step = quantiser + kOffset;
        return (texture + residue / step) / step;
    }
    double Usually() const { return Coefficients(kUsualQuantiser); }
    double At(double quantiser) const { return Coefficients(quantiser) + fixed; }
    /// At which it takes `bits`, which are more than `fixed`; may be below every real one.
    double QuantiserFor(double bits) const {
        const double left = bits - fixed;
        return (texture + std::sqrt(texture * texture + 4 * residue * left)) / (2 * left) - kOffset;
    }

    PictureBits& operator+=(const PictureBits& other) {
        texture += other.texture;
        residue += other.residue;
        fixed += other.fixed;
        return *this;
    }
    PictureBits operator*(double factor) const {
        return {texture * factor, residue * factor, fixed * factor};
    }
    /// With so many times the coefficients.
    PictureBits Scaled(double factor) const { return {texture * factor, residue * factor, fixed}; }
};

/// A picture as a first pass has found it.
struct FoundPicture {
    PictureBits bits;
    PictureKind kind = PictureKind::kP;

    /// In terms of the quantiser that P pictures have while this one is coded.
    PictureBits ByP() const {
        if (kind != PictureKind::kB) return bits;
        return {bits.texture / kBQuantiserPart, bits.residue / (kBQuantiserPart * kBQuantiserPart),
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
