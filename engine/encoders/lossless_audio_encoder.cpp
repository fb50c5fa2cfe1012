#include "engine/encoders/lossless_audio_encoder.h"

#include <algorithm>
#include <span>
#include <thread>
#include <utility>

#include "engine/encoders/audio_header.h"

namespace engine {
namespace {

using codecs::wma_lossless::EncoderSettings;
using codecs::wma_lossless::StreamFormat;

// What music usually takes of its samples' bits: the estimate before it is known.
constexpr std::int64_t kUsualPercent = 60;

StreamFormat FormatOf(const AudioFormat& format) {
    return {format.sampling_rate, format.channels, format.bits_per_sample};
}

EncoderSettings SettingsFor(const AudioPlan& plan) {
    EncoderSettings settings{FormatOf(plan.format)};
    settings.threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    settings.low_delay = plan.input.capture.has_value();
    return settings;
}

}  // namespace

LosslessAudioEncoder::LosslessAudioEncoder(const AudioPlan& plan, CodedFramePool& packets)
    : plan_(plan), format_(FormatOf(plan.format)), packets_(packets), encoder_(SettingsFor(plan)) {}

AudioFrameFormat LosslessAudioEncoder::Format() const {
    return {format_.Bits() > 16 ? AV_SAMPLE_FMT_S32 : AV_SAMPLE_FMT_S16, format_.SamplingRate(),
            format_.Channels(), format_.FrameSamples()};
}

StreamHeader LosslessAudioEncoder::Header() const {
    StreamHeader header = AudioStreamHeader(plan_);
    AudioHeader& audio = std::get<AudioHeader>(header.format);
    const std::int64_t rate = std::int64_t{format_.SamplingRate()} * format_.Channels() *
                              format_.Bits() * kUsualPercent / 100;
    header.average_rate_bps = static_cast<std::uint32_t>(rate);
    header.rate_is_estimate = true;
    audio.average_bytes_per_second = header.average_rate_bps / 8;
    audio.block_align = static_cast<std::uint16_t>(format_.PacketBytes());
    header.extra_data = format_.ExtraData();
    return header;
}

bool LosslessAudioEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    const std::size_t values =
        static_cast<std::size_t>(frame.nb_samples) * static_cast<std::size_t>(format_.Channels());
    samples_.resize(values);
    if (format_.Bits() > 16) {
        const auto* const from = reinterpret_cast<const std::int32_t*>(frame.data[0]);
        std::ranges::transform(std::span(from, values), samples_.begin(),
                               [](std::int32_t sample) { return sample >> 8; });
    } else {
        const auto* const from = reinterpret_cast<const std::int16_t*>(frame.data[0]);
        std::copy_n(from, values, samples_.begin());
    }
    encoder_.Encode(samples_,
                    [&](const codecs::wma_lossless::Packet& packet) { Send(packet, sink); });
    return wanted_;
}

bool LosslessAudioEncoder::Finish(const CodedFrameSink& sink) {
    encoder_.Finish([&](const codecs::wma_lossless::Packet& packet) { Send(packet, sink); });
    return wanted_;
}

void LosslessAudioEncoder::Send(const codecs::wma_lossless::Packet& packet,
                                const CodedFrameSink& sink) {
    if (!wanted_) return;
    const auto time = [&](std::int64_t sample) {
        return SampleTime(sample, format_.SamplingRate());
    };
    CodedFrame coded;
    coded.pts = time(packet.first_sample);
    // Also packets in which no frame ends have times that rise.
    if (last_time_) coded.pts = std::max(coded.pts, *last_time_ + Ticks::FromMilliseconds(1));
    coded.dts = coded.pts;
    last_time_ = coded.pts;
    const Ticks end = time(packet.first_sample + packet.samples);
    coded.duration = std::max(Ticks{}, end - coded.pts);
    coded.key = packet.key;
    coded.audio_samples = packet.samples;
    coded.bytes = packets_.Copy(packet.data);
    wanted_ = sink(std::move(coded));
}

}  // namespace engine
