// The checks of single values, and how a session is refused.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "platform/encoder.h"

namespace engine {

inline constexpr std::int32_t kNoUpperLimit = std::numeric_limits<std::int32_t>::max();

/// The values that a property may have.
struct ValueRange {
    const char* property;
    std::int32_t least;
    std::int32_t most;
};

/// Throws Error (invalid argument) that names the property and its range; else gives the value.
std::int32_t InRange(const char* property, std::int32_t value, std::int32_t least,
                     std::int32_t most);
inline std::int32_t InRange(const ValueRange& range, std::int32_t value) {
    return InRange(range.property, value, range.least, range.most);
}

/// A session has one stream of a kind: throws Error (invalid argument) for any number but 0.
void CheckStream(int stream);

/// Throws Error (invalid argument) unless the type is audio or video.
void CheckAudioOrVideo(platform::SourceType type);

/// Throws Error (invalid argument).
[[noreturn]] void RefuseArgument(const std::string& description);

/// Throws Error (not implemented): what cannot be done yet.
[[noreturn]] void RefuseUnbuilt(const std::string& description);

}  // namespace engine
