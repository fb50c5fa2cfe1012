// The peak of a stream in the peak mode.
#pragma once

#include <cstdint>

namespace engine {

/// A peak that was not given (0) is half as much again as the average. Throws Error (invalid
/// argument), which names the medium and the option, for one below it.
std::int32_t PeakFor(const char* medium, const char* option, std::int32_t average,
                     std::int32_t peak);

}  // namespace engine
