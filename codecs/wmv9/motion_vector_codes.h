// How vector differences are written and what they take (SMPTE ST 421, 8.3.5.3).
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

constexpr int kVectorSymbols = 73;
constexpr int kIntraSymbol = 35;   // neither coded
constexpr int kCodedSymbols = 37;  // how much later those stand that say "coded"

/// A difference as its symbol and the bits after it.
struct VectorCode {
    int symbol = 0;
    Code extra_x;
    Code extra_y;
};

/// `difference` in quarters; zero and not coded has no code.
VectorCode CodeOf(MotionVector difference, bool coded, const PictureHeader& header);
/// Bits after the symbol.
inline int ExtraBits(const VectorCode& code) { return code.extra_x.length + code.extra_y.length; }
/// With the header's table; 0 for zero and not coded.
int VectorBits(MotionVector difference, bool coded, const PictureHeader& header);
void PutVector(BitWriter& out, MotionVector difference, bool coded, const PictureHeader& header);
void PutIntra(BitWriter& out, bool coded, const PictureHeader& header);

/// What differences take with one table, made ready for search.
class VectorCosts {
  public:
    VectorCosts() = default;
    explicit VectorCosts(const PictureHeader& header);

    /// Of a coded macroblock.
    int Of(MotionVector difference) const { return Of(difference.x, difference.y); }
    int Of(int x, int y) const {
        const int class_x = ClassOf(x);
        const int class_y = ClassOf(y);
        return bits_[Index(class_x * kClasses + class_y)];
    }

  private:
    static constexpr int kClasses = 7;
    static constexpr int kQuick = 256;
    int ClassOf(int value) const {
        const int size = std::abs(value) >> shift_;
        return size < kQuick ? classes_[Index(size)] : kClasses - 1;
    }

    std::array<std::uint8_t, kQuick> classes_{};
    std::array<std::uint8_t, std::size_t{kClasses} * kClasses> bits_{};
    int shift_ = 0;
};

}  // namespace codecs::wmv9
