// What the media library gives to the program that loads it.
#pragma once

#include <memory>
#include <string>

#include "engine/base/session_run.h"
#include "engine/plan/encode_plan.h"
#include "engine/plan/media_file_info.h"

namespace engine {

/// The library's one symbol. Whatever changes, the version stays first: a program that was replaced
/// while it ran finds the library of another by it.
struct MediaParts {
    const char* version;
    MediaFileInfo (*probe)(const std::string& host_path);
    /// Opens inputs, encoders and the output; throws platform::Error.
    std::unique_ptr<SessionRun> (*make_run)(EncodePlan plan, RunCallbacks callbacks);
    /// For the screen of a desktop that hands it out.
    std::unique_ptr<ScreenShare> (*make_share)();
};

inline constexpr const char* kMediaPartsSymbol = "tessivo_media_parts";

}  // namespace engine
