#include "engine/object_model/audience.h"

#include <fmt/format.h>

#include "engine/plan/value_ranges.h"

namespace engine {

namespace {

std::int32_t LastPlace(std::size_t rows) { return static_cast<std::int32_t>(rows) - 1; }

}  // namespace

AudienceRecord& Audience::State(int stream) const {
    CheckStream(stream);
    // The profile may have taken over another with fewer audiences since this object was made.
    if (place_ >= profile_->audiences.size())
        RefuseArgument(fmt::format("Audience {} is no longer in its profile", place_));
    return profile_->audiences[place_];
}

std::int32_t Audience::AudioCodec(int stream) const { return State(stream).audio.codec; }
void Audience::SetAudioCodec(int stream, std::int32_t index) {
    State(stream).audio.codec =
        InRange("AudioCodec", index, 0, LastPlace(platform::kAudioCodecs.size()));
}
std::int32_t Audience::AudioBufferMax(int stream) const {
    return State(stream).audio.peak_buffer_ms;
}
void Audience::SetAudioBufferMax(int stream, std::int32_t milliseconds) {
    State(stream).audio.peak_buffer_ms = milliseconds;
}
std::int32_t Audience::AudioPeakBitrate(int stream) const {
    return State(stream).audio.peak_rate_bps.value_or(0);
}
void Audience::SetAudioPeakBitrate(int stream, std::int32_t bps) {
    State(stream).audio.peak_rate_bps = bps;
}

void Audience::SetAudioConfig(int stream, std::int32_t channels, std::int32_t sampling_rate,
                              std::int32_t bit_rate, std::int32_t bits_per_sample) {
    AudioSettings& audio = State(stream).audio;
    const AudioFormat wanted = {
        InRange(ranges::kAudioBitrate, bit_rate), InRange(ranges::kSamplingRate, sampling_rate),
        InRange(ranges::kChannels, channels), InRange(ranges::kBitsPerSample, bits_per_sample)};
    audio.format = FindAudioFormat(platform::kAudioCodecs[static_cast<std::size_t>(audio.codec)],
                                   profile_->audio_mode, wanted)
                       .value_or(wanted);
    State(stream).streams |= platform::kContentAudio;
}

std::int32_t Audience::AudioBitrate(int stream) const { return State(stream).audio.format.value; }
std::int32_t Audience::AudioChannels(int stream) const {
    return State(stream).audio.format.channels;
}
std::int32_t Audience::AudioSamplingRate(int stream) const {
    return State(stream).audio.format.sampling_rate;
}
std::int32_t Audience::AudioBitsPerSample(int stream) const {
    return State(stream).audio.format.bits_per_sample;
}

std::int32_t Audience::VideoCodec(int stream) const { return State(stream).video.codec; }
void Audience::SetVideoCodec(int stream, std::int32_t index) {
    State(stream).video.codec =
        InRange("VideoCodec", index, 0, LastPlace(platform::kVideoCodecs.size()));
}
std::int32_t Audience::VideoBitrate(int stream) const { return State(stream).video.bit_rate_bps; }
void Audience::SetVideoBitrate(int stream, std::int32_t bps) {
    State(stream).video.bit_rate_bps = InRange(ranges::kVideoBitrate, bps);
    State(stream).streams |= platform::kContentVideo;
}
std::int32_t Audience::VideoWidth(int stream) const { return State(stream).video.width; }
void Audience::SetVideoWidth(int stream, std::int32_t pixels) {
    State(stream).video.width = InRange(ranges::kVideoWidth, pixels);
}
std::int32_t Audience::VideoHeight(int stream) const { return State(stream).video.height; }
void Audience::SetVideoHeight(int stream, std::int32_t pixels) {
    State(stream).video.height = InRange(ranges::kVideoHeight, pixels);
}
std::int32_t Audience::VideoFPS(int stream) const { return State(stream).video.frame_rate; }
void Audience::SetVideoFPS(int stream, std::int32_t thousandths) {
    State(stream).video.frame_rate = InRange(ranges::kVideoFps, thousandths);
}
std::int32_t Audience::VideoKeyFrameDistance(int stream) const {
    return State(stream).video.key_frame_distance_ms;
}
void Audience::SetVideoKeyFrameDistance(int stream, std::int32_t milliseconds) {
    State(stream).video.key_frame_distance_ms =
        InRange(ranges::kVideoKeyFrameDistance, milliseconds);
}
std::int32_t Audience::VideoBufferSize(int stream) const { return State(stream).video.buffer_ms; }
void Audience::SetVideoBufferSize(int stream, std::int32_t milliseconds) {
    State(stream).video.buffer_ms = InRange(ranges::kVideoBufferSize, milliseconds);
}
std::int32_t Audience::VideoImageSharpness(int stream) const {
    return State(stream).video.sharpness;
}
void Audience::SetVideoImageSharpness(int stream, std::int32_t sharpness) {
    State(stream).video.sharpness = InRange(ranges::kVideoImageSharpness, sharpness);
}
std::int32_t Audience::VideoCompressionQuality(int stream) const {
    return State(stream).video.quality;
}
void Audience::SetVideoCompressionQuality(int stream, std::int32_t quality) {
    State(stream).video.quality = InRange(ranges::kVideoQuality, quality);
}
std::int32_t Audience::VideoBufferMax(int stream) const {
    return State(stream).video.peak_buffer_ms;
}
void Audience::SetVideoBufferMax(int stream, std::int32_t milliseconds) {
    State(stream).video.peak_buffer_ms = milliseconds;
}
std::int32_t Audience::VideoPeakBitrate(int stream) const {
    return State(stream).video.peak_rate_bps.value_or(0);
}
void Audience::SetVideoPeakBitrate(int stream, std::int32_t bps) {
    State(stream).video.peak_rate_bps = bps;
}

platform::PropertyValue Audience::Property(platform::SourceType type, int stream,
                                           const std::string& name) const {
    CheckAudioOrVideo(type);
    const auto& properties = State(stream).properties;
    const auto found = properties.find({type, name});
    return found == properties.end() ? platform::PropertyValue() : found->second;
}

void Audience::SetProperty(platform::SourceType type, int stream, const std::string& name,
                           const platform::PropertyValue& value) {
    CheckAudioOrVideo(type);
    State(stream).properties[{type, name}] = value;
}

}  // namespace engine
