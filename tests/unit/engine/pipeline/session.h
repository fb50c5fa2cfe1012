// A plan built in few words, run to its end, and everything that the run said.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "engine/pipeline/encoding_run.h"
#include "engine/pipeline/run_parts.h"
#include "engine/plan/encode_plan.h"

namespace session {

/// By the name that libavcodec has for the codec.
const platform::VideoCodecRow& VideoCodec(std::string_view av_name);
const platform::AudioCodecRow& AudioCodec(std::string_view av_name);

/// 30 frames a second at most, 400 kbit/s Windows Media Video 8, the source's size.
engine::VideoPlan Video(const std::string& path);
/// 64 kbit/s Windows Media Audio, 44100 Hz stereo.
engine::AudioPlan Audio(const std::string& path);
/// A screen that is recorded: 320x240, 10 frames a second, 400 kbit/s, one worker.
engine::VideoPlan Screen();
/// The same sound from a microphone.
engine::AudioPlan Microphone();
engine::EncodePlan Plan(const std::string& output);
/// Of one file.
engine::EncodePlan OfVideo(const std::string& source, const std::string& output,
                           std::string_view encoder = "wmv2");
engine::EncodePlan OfAudio(const std::string& source, const std::string& output);
engine::EncodePlan OfBoth(const std::string& source, const std::string& output);

/// Outputs as a plan asks for them, and no device.
engine::RunParts Parts();

struct Outcome {
    std::vector<platform::EncoderState> states;
    std::vector<std::uint32_t> errors;
    std::string error_text;
    platform::OutputStats audio, video, total;
    platform::FileArchiveStats file;
};

/// A run whose states can be waited for.
class WatchedRun {
  public:
    explicit WatchedRun(engine::EncodePlan plan, const engine::RunParts& parts = Parts());
    engine::EncodingRun& operator*() { return *run_; }
    void Until(platform::EncoderState state);
    /// Without the figures.
    Outcome Said();
    void Destroy() { run_.reset(); }

  private:
    bool IsIn(platform::EncoderState state) const {
        return !said_.states.empty() && said_.states.back() == state;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    Outcome said_;
    std::unique_ptr<engine::EncodingRun> run_;
};

/// Runs until Stopped. `meanwhile`, when given, is called once the run is started.
Outcome Run(engine::EncodePlan plan,
            const std::function<void(engine::EncodingRun&)>& meanwhile = {},
            const engine::RunParts& parts = Parts());
/// The same, where an error fails the test.
Outcome RunCleanly(engine::EncodePlan plan);

}  // namespace session
