// Numbers as the encoder takes them.
#pragma once

#include <cstdint>
#include <string_view>

namespace profiles {

/// `value` rounded to the nearest whole number, halves to the even neighbour. Throws
/// platform::Error (invalid argument), which calls the value `what`, beyond 32 bits.
std::int32_t WholeNumber(double value, std::string_view what);

/// One and a half times a rate: the peak where none is given.
constexpr double DefaultPeak(double rate) { return rate * 1.5; }

}  // namespace profiles
