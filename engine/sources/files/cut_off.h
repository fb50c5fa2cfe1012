// Whether a source was cut off or is damaged to its end, and the words for it.
#pragma once

#include <cstdint>
#include <string>

#include "engine/base/ticks.h"

namespace engine {

/// A stream of a file that was read to its end; times count from the file's beginning, 0 = unknown.
struct SourceEnd {
    Ticks decoded;  // up to where frames came
    Ticks read;     // where its last packet began
    Ticks whole;    // up to where the streams came that the stated length is of
    Ticks stated;   // as the container states it
    std::uint64_t bytes = 0;
    std::uint64_t stated_bytes = 0;
};

/// "" where the end is the one that was to be expected. What is missing counts from a second on and
/// a hundredth of the whole: frame rates are rounded, and not every length has the last frame in
/// it.
std::string CutOffText(const std::string& path, const SourceEnd& end);

}  // namespace engine
