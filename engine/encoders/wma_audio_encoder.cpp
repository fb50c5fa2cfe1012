#include "engine/encoders/wma_audio_encoder.h"

#include <algorithm>
#include <utility>

#include "engine/encoders/audio_header.h"
#include "engine/encoders/packet_buffer.h"

namespace engine {
namespace {

using codecs::wma_standard::CodedPacket;
using codecs::wma_standard::EncoderSettings;
using codecs::wma_standard::RateMode;

constexpr int kSamplesAtATime = 2048;

RateMode ModeOf(platform::VbrMode mode) {
    switch (mode) {
        case platform::VbrMode::Quality:
            return RateMode::Quality;
        case platform::VbrMode::BitRate:
            return RateMode::BitRate;
        case platform::VbrMode::Peak:
            return RateMode::Peak;
        case platform::VbrMode::Constant:
            break;
    }
    return RateMode::Constant;
}

AudioFormat WrittenFormat(const AudioPlan& plan) {
    return WrittenFor(*plan.codec, plan.mode, plan.format).format;
}

EncoderSettings SettingsFor(const AudioPlan& plan, const EncoderPass& pass) {
    const AudioFormat written = WrittenFormat(plan);
    EncoderSettings settings;
    settings.sampling_rate = written.sampling_rate;
    settings.channels = written.channels;
    settings.bit_rate = written.value;
    settings.mode = ModeOf(plan.mode);
    settings.quality = plan.format.value;
    settings.peak_rate = plan.peak_rate_bps;
    settings.peak_seconds = plan.peak_buffer_ms / 1000.0;
    settings.first_pass = pass.first_audio;
    settings.low_delay = plan.input.capture.has_value();
    return settings;
}

}  // namespace

WmaAudioEncoder::WmaAudioEncoder(const AudioPlan& plan, const EncoderPass& pass,
                                 CodedFramePool& packets)
    : plan_(plan),
      format_(WrittenFormat(plan)),
      packets_(packets),
      encoder_(SettingsFor(plan, pass)),
      channels_(static_cast<std::size_t>(format_.channels)) {
    buffers_.reset(CheckAllocated(av_buffer_pool_init(
        static_cast<std::size_t>(encoder_.PacketBytes()) + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

AudioFrameFormat WmaAudioEncoder::Format() const {
    return {AV_SAMPLE_FMT_FLTP, format_.sampling_rate, format_.channels, kSamplesAtATime};
}

StreamHeader WmaAudioEncoder::Header() const {
    StreamHeader header = AudioStreamHeader(plan_);
    AudioHeader& audio = std::get<AudioHeader>(header.format);
    audio.block_align = static_cast<std::uint16_t>(encoder_.PacketBytes());
    audio.average_bytes_per_second = static_cast<std::uint32_t>(encoder_.BytesPerSecond());
    const auto extra = encoder_.ExtraData();
    header.extra_data.assign(extra.begin(), extra.end());
    return header;
}

bool WmaAudioEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    for (std::size_t c = 0; c < channels_.size(); ++c)
        channels_[c] = {reinterpret_cast<const float*>(frame.extended_data[c]),
                        static_cast<std::size_t>(frame.nb_samples)};
    encoder_.Encode(channels_, Into(sink));
    return wanted_;
}

bool WmaAudioEncoder::Finish(const CodedFrameSink& sink) {
    encoder_.Finish(Into(sink));
    return wanted_;
}

codecs::wma_standard::CodedPacketSink WmaAudioEncoder::Into(const CodedFrameSink& sink) {
    return [this, &sink](const CodedPacket& packet) {
        if (!wanted_) return;
        PacketHandle bytes = PacketFromPool(packets_, *buffers_, packet.bytes.size());
        std::copy(packet.bytes.begin(), packet.bytes.end(), bytes->data);
        CodedFrame coded;
        // The first packet has no sound, and the second one begins where it does: times rise all
        // the same, by as little as the container can tell.
        coded.pts = coded.dts =
            std::max(SampleTime(packet.first, format_.sampling_rate), next_time_);
        next_time_ = coded.pts + Ticks::FromMilliseconds(1);
        const Ticks end = SampleTime(packet.first + packet.samples, format_.sampling_rate);
        coded.duration = std::max(end, coded.pts) - coded.pts;
        coded.key = true;
        coded.audio_samples = packet.samples;
        coded.bytes = packets_.Share(std::move(bytes));
        wanted_ = sink(std::move(coded));
    };
}

}  // namespace engine
