// Whole numbers as places in arrays.
#pragma once

#include <cstddef>

namespace codecs {

/// `place` is not negative.
constexpr std::size_t Index(int place) { return static_cast<std::size_t>(place); }

}  // namespace codecs
