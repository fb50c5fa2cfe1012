// What the media library gives to the program that loads it.
#pragma once

#include <memory>
#include <string>

#include "engine/pipeline/encoding_run.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/media_probe.h"
#include "platform/encoder.h"

namespace engine {

/// A run as the encoder object drives it; the contract is EncodingRun's. Destruction stops
/// gracefully and waits.
class SessionRun {
  public:
    virtual ~SessionRun() = default;
    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void Pause() = 0;
    virtual void Resume() = 0;
    virtual platform::Currency EncodingTime() const = 0;
    virtual platform::OutputStats AudioStats() const = 0;
    virtual platform::OutputStats VideoStats() const = 0;
    virtual platform::OutputStats TotalStats() const = 0;
    virtual platform::FileArchiveStats FileStats() const = 0;
};

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
