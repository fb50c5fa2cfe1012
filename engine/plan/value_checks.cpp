#include "engine/plan/value_checks.h"

#include <fmt/format.h>

namespace engine {

void RefuseArgument(const std::string& description) {
    throw platform::Error(platform::kInvalidArgument, description);
}

void RefuseUnbuilt(const std::string& description) {
    throw platform::Error(platform::kNotImplemented, description);
}

std::int32_t InRange(const char* property, std::int32_t value, std::int32_t least,
                     std::int32_t most) {
    if (value >= least && value <= most) return value;
    RefuseArgument(most == kNoUpperLimit
                       ? fmt::format("{} cannot be {}: give at least {}", property, value, least)
                       : fmt::format("{} cannot be {}: give a value from {} to {}", property, value,
                                     least, most));
}

void CheckStream(int stream) {
    if (stream != 0)
        RefuseArgument(
            fmt::format("There is no stream {}: the only stream of a kind is 0", stream));
}

void CheckAudioOrVideo(platform::SourceType type) {
    if (type != platform::SourceType::Audio && type != platform::SourceType::Video)
        RefuseArgument(
            fmt::format("Streams of type {} are not encoded: give audio (1) or video (2)",
                        static_cast<std::int32_t>(type)));
}

}  // namespace engine
