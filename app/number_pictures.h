// Numbers written through a picture, as the report's lines ask for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace app {

/// A number in exact decimal: `count` steps of 10^-`decimals`; 29970 with 3 decimals is 29.97.
/// `decimals` is 0 to 18.
struct Decimal {
    std::int64_t count = 0;
    int decimals = 0;
};

/// Writes `value` through a picture of "#" (a digit that may be left out), "0" (a digit that is
/// always there), "," (anywhere before the point: groups of three, however the picture spaces them)
/// and one "." (the decimal point). Digits past the picture's last place are rounded, halves away
/// from zero; a point without a digit behind it is left out, and so is the sign of a zero.
/// Cannot fail; any other character of a picture is a programmer's fault (asserted).
std::string FormatPicture(std::string_view picture, Decimal value);

}  // namespace app
