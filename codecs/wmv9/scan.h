// The order in which the levels of a transform are coded (SMPTE ST 421, 8.1.1.12, 8.3.6.5).
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/common/index.h"

namespace codecs::wmv9 {

/// Places are those of a block in rows of 8; where a set of them is one number, place n is its bit
/// n.
class Scan {
  public:
    /// @param places  up to 64, in coding order
    explicit Scan(std::span<const std::uint8_t> places);

    std::span<const std::uint8_t> Places() const { return {places_.data(), size_}; }
    std::uint8_t operator[](int i) const { return places_[Index(i)]; }

    /// Bit i is the scan's place i; places that the scan does not reach are left out.
    std::uint64_t InOrder(std::uint64_t places) const {
        std::uint64_t ordered = 0;
        for (std::size_t four = 0; four < kFours; ++four, places >>= 4U)
            ordered |= ordered_[four][places & 15U];
        return ordered;
    }

  private:
    static constexpr std::size_t kFours = 16;

    std::array<std::uint8_t, 64> places_{};
    std::size_t size_;
    std::array<std::array<std::uint64_t, 16>, kFours> ordered_{};  // of each four places
};

/// Of what predictions from other pictures leave, by shape.
extern const std::array<Scan, 4> kPartScans;

/// Of intra blocks, whose DC is coded apart.
struct IntraScans {
    Scan among_inter;  // in P and B pictures
    Scan unpredicted;  // in I pictures, by where AC is predicted from
    Scan from_above;
    Scan from_left;
};
extern const IntraScans kIntraScans;

/// Calls `with` a number for each bit that is set, from the lowest on.
template <typename Function>
void ForEachBit(std::uint64_t bits, Function&& with) {
    for (; bits != 0; bits &= bits - 1) with(std::countr_zero(bits));
}

}  // namespace codecs::wmv9
