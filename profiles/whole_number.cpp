#include "profiles/whole_number.h"

#include <fmt/format.h>

#include <limits>

#include "platform/error.h"
#include "platform/text.h"

namespace profiles {

std::int32_t WholeNumber(double value, std::string_view what) {
    using Limits = std::numeric_limits<std::int32_t>;
    // Written so that a value that is no number fails too.
    if (!(value >= Limits::min() && value <= Limits::max()))
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("The {} is out of range: give one up to {}.", what, Limits::max()));
    return static_cast<std::int32_t>(platform::RoundHalfToEven(value));
}

}  // namespace profiles
