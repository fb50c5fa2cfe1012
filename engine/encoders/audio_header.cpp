#include "engine/encoders/audio_header.h"

#include "engine/base/av/av_ptr.h"

namespace engine {
namespace {

constexpr std::uint32_t kBufferMs = 3000;  // a player's usual window for audio

}  // namespace

StreamHeader AudioStreamHeader(const AudioPlan& plan) {
    const WrittenAudio written = WrittenFor(*plan.codec, plan.mode, plan.format);
    AudioHeader audio;
    audio.format_tag = written.tag;
    audio.channels = static_cast<std::uint16_t>(written.format.channels);
    audio.sampling_rate = static_cast<std::uint32_t>(written.format.sampling_rate);
    audio.bits_per_sample = static_cast<std::uint16_t>(written.format.bits_per_sample);
    StreamHeader header;
    header.format = audio;
    header.codec_name = plan.codec_name;
    header.codec_description = plan.codec_description;
    header.variable_rate = plan.mode != platform::VbrMode::Constant;
    header.average_rate_bps = static_cast<std::uint32_t>(written.format.value);
    header.buffer_ms = kBufferMs;
    if (plan.mode == platform::VbrMode::Peak) {
        header.peak_rate_bps = static_cast<std::uint32_t>(plan.peak_rate_bps);
        header.peak_buffer_ms = static_cast<std::uint32_t>(plan.peak_buffer_ms);
    }
    return header;
}

Ticks SampleTime(std::int64_t sample, int sampling_rate) {
    return {av_rescale(sample, Ticks::kPerSecond, sampling_rate)};
}

}  // namespace engine
