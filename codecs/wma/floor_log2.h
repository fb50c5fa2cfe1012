// Whole logarithms.
#pragma once

#include <bit>

namespace codecs::wma {

/// `value` is above 0.
constexpr int FloorLog2(int value) {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(value))) - 1;
}

}  // namespace codecs::wma
