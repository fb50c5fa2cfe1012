#include "unit/engine/pipeline/session.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

#include "engine/outputs/make_output.h"
#include "engine/sources/files/media_probe.h"

namespace session {

using namespace engine;

namespace {

std::string_view AvName(const platform::CodecMaker& maker) {
    using Kind = platform::CodecMaker::Kind;
    switch (maker.kind) {
        case Kind::Library:
            return maker.name;
        case Kind::Wmv9:
            return "wmv3";
        case Kind::Screen:
            return "mss2";
        case Kind::Wma:
            return "wmav2";
        case Kind::FullFrames:
            return "rawvideo";
        case Kind::Pcm:
            return "pcm_s16le";
        case Kind::Professional:
            return "wmapro";
        case Kind::Lossless:
            return "wmalossless";
        case Kind::Voice:
            return "wmavoice";
    }
    return "";
}

template <typename Rows>
const auto& RowOf(const Rows& rows, std::string_view av_name) {
    for (const auto& row : rows)
        if (AvName(row.maker) == av_name) return row;
    throw std::runtime_error("no such codec row");
}

}  // namespace

const platform::VideoCodecRow& VideoCodec(std::string_view av_name) {
    return RowOf(platform::kVideoCodecs, av_name);
}
const platform::AudioCodecRow& AudioCodec(std::string_view av_name) {
    return RowOf(platform::kAudioCodecs, av_name);
}

VideoPlan Video(const std::string& path) {
    const MediaFileInfo info = ProbeMediaFile(path);
    VideoPlan video;
    video.input.path = path;
    video.input.still = info.video->still;
    video.codec = &VideoCodec("wmv2");
    video.width = info.video->width;
    video.height = info.video->height;
    video.rate_ceiling = 30000;
    video.expected_rate = 30000;
    if (info.video->frame_rate.numerator > 0)
        video.expected_rate =
            std::min(30000, static_cast<int>(info.video->frame_rate.numerator * 1000 /
                                             info.video->frame_rate.denominator));
    video.bit_rate_bps = 400'000;
    video.buffer_ms = 3000;
    video.key_frame_distance_ms = 8000;
    return video;
}

VideoPlan Screen() {
    VideoPlan video;
    video.input.capture = CapturePlan{DeviceKind::Screen, "x11", "the screen", {}, 10'000};
    video.codec = &VideoCodec("wmv2");
    video.width = 320;
    video.height = 240;
    video.rate_ceiling = 100'000;
    video.expected_rate = 10'000;
    video.bit_rate_bps = 400'000;
    video.buffer_ms = 3000;
    video.encoder_threads = 1;
    return video;
}

AudioPlan Microphone() {
    AudioPlan audio = Audio({});
    audio.input.capture = CapturePlan{DeviceKind::PulseSource, "mic", "Microphone", {}, 0};
    return audio;
}

AudioPlan Audio(const std::string& path) {
    AudioPlan audio;
    audio.input.path = path;
    audio.codec = &AudioCodec("wmav2");
    audio.format = {64000, 44100, 2, 16};
    return audio;
}

EncodePlan Plan(const std::string& output) {
    EncodePlan plan;
    plan.outputs = {FileOutput{output}};
    return plan;
}

EncodePlan OfVideo(const std::string& source, const std::string& output, std::string_view encoder) {
    EncodePlan plan = Plan(output);
    plan.video = Video(source);
    plan.video->codec = &VideoCodec(encoder);
    return plan;
}

EncodePlan OfAudio(const std::string& source, const std::string& output) {
    EncodePlan plan = Plan(output);
    plan.audio = Audio(source);
    return plan;
}

EncodePlan OfBoth(const std::string& source, const std::string& output) {
    EncodePlan plan = OfVideo(source, output);
    plan.audio = Audio(source);
    return plan;
}

RunParts Parts() { return {MakeOutput}; }

WatchedRun::WatchedRun(EncodePlan plan, const RunParts& parts) {
    RunCallbacks callbacks;
    callbacks.on_state = [this](platform::EncoderState state) {
        const std::lock_guard lock(mutex_);
        EXPECT_FALSE(IsIn(platform::EncoderState::Stopped)) << "a state after Stopped";
        said_.states.push_back(state);
        changed_.notify_all();
    };
    callbacks.on_error = [this](std::int32_t number, const std::string& description) {
        const std::lock_guard lock(mutex_);
        said_.errors.push_back(static_cast<std::uint32_t>(number));
        said_.error_text = description;
    };
    run_ = std::make_unique<EncodingRun>(std::move(plan), std::move(callbacks), parts);
    run_->Start();
}

void WatchedRun::Until(platform::EncoderState state) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return IsIn(state); });
}

Outcome WatchedRun::Said() {
    const std::lock_guard lock(mutex_);
    return said_;
}

Outcome Run(EncodePlan plan, const std::function<void(EncodingRun&)>& meanwhile,
            const RunParts& parts) {
    WatchedRun run(std::move(plan), parts);
    if (meanwhile) meanwhile(*run);
    run.Until(platform::EncoderState::Stopped);
    Outcome outcome = run.Said();
    outcome.audio = (*run).Figures().Of(MediaKind::Audio);
    outcome.video = (*run).Figures().Of(MediaKind::Video);
    outcome.total = (*run).Figures().Total();
    outcome.file = (*run).Figures().File();
    return outcome;
}

Outcome RunCleanly(EncodePlan plan) {
    Outcome outcome = Run(std::move(plan));
    EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
    return outcome;
}

}  // namespace session
