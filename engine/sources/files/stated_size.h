// How large a file is by its own header, for containers that say so: a copy that was cut off is
// smaller.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace engine {

/// Bytes that the header of a RIFF (AVI, WAV), an AIFF or an ASF file states, none where it states
/// nothing: other containers, what was recorded to a pipe, what cannot be read. Of an AVI of
/// several RIFF chunks (OpenDML) those of the first. Layouts: "Multimedia Programming Interface and
/// Data Specifications 1.0" (RIFF), AIFF 1.3, "Advanced Systems Format (ASF) Specification" 3.1
/// and 3.2.
std::optional<std::uint64_t> StatedBytes(const std::string& path);

}  // namespace engine
