#include "engine/encoders/wma_audio_encoder.h"

#include <algorithm>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "engine/encoders/audio_header.h"
#include "engine/encoders/packet_buffer.h"
#include "engine/plan/audio_stream_format.h"

namespace engine {
namespace {

constexpr int kSamplesAtATime = 2048;

AudioFormat WrittenFormat(const AudioPlan& plan) {
    return WrittenFor(*plan.codec, plan.mode, plan.format).format;
}

// Two channels are not worth the waiting for each other.
int ThreadsFor(int channels) {
    return channels <= 2 ? 1 : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

codecs::wma_voice::ContentMode VoiceModeOf(ContentMode mode) {
    switch (mode) {
        case ContentMode::Speech:
            return codecs::wma_voice::ContentMode::Speech;
        case ContentMode::Mixed:
            return codecs::wma_voice::ContentMode::Mixed;
        case ContentMode::Automatic:
            break;
    }
    return codecs::wma_voice::ContentMode::Automatic;
}

// Music that lasts less is not told of.
constexpr double kMusicSeconds = 5;

codecs::wma_voice::Content ContentFor(const VoiceContent& content, int sampling_rate) {
    const auto sample = [&](Ticks time) {
        return av_rescale(time.count, sampling_rate, Ticks::kPerSecond);
    };
    codecs::wma_voice::Content voice{VoiceModeOf(content.mode), {}};
    for (const ContentPart& part : content.parts)
        voice.parts.push_back({sample(part.begin), sample(part.end), VoiceModeOf(part.mode)});
    return voice;
}

template <typename Settings>
Settings SettingsFor(const AudioPlan& plan, const EncoderPass& pass) {
    const AudioFormat written = WrittenFormat(plan);
    Settings settings;
    settings.sampling_rate = written.sampling_rate;
    settings.bit_rate = written.value;
    settings.low_delay = plan.input.capture.has_value();
    if constexpr (requires { settings.mode; }) {  // more than speech at one rate
        settings.channels = written.channels;
        settings.mode = RateModeOf(plan.mode);
        settings.quality = plan.format.value;
        settings.peak_rate = plan.peak_rate_bps;
        settings.peak_seconds = plan.peak_buffer_ms / 1000.0;
        settings.first_pass = pass.first_audio;
    }
    if constexpr (requires { settings.threads; }) {
        settings.bits_per_sample = written.bits_per_sample;
        settings.threads = ThreadsFor(written.channels);
    }
    if constexpr (requires { settings.content; })
        settings.content = ContentFor(plan.content, written.sampling_rate);
    return settings;
}

template <typename Format>
int PacketBytes(const Format& format) {
    if constexpr (requires { format.packet_bytes; })
        return format.packet_bytes;
    else
        return format.PacketBytes();
}

}  // namespace

template <typename Encoder>
WmaAudioEncoder<Encoder>::WmaAudioEncoder(const AudioPlan& plan, const EncoderPass& pass,
                                          CodedFramePool& packets)
    : plan_(plan),
      format_(WrittenFormat(plan)),
      packets_(packets),
      encoder_(SettingsFor<typename Encoder::Settings>(plan, pass)),
      channels_(static_cast<std::size_t>(format_.channels)) {
    const int packet_bytes =
        PacketBytes(FormatFor(SettingsFor<typename Encoder::Settings>(plan, {})));
    buffers_.reset(CheckAllocated(av_buffer_pool_init(
        static_cast<std::size_t>(packet_bytes) + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

template <typename Encoder>
codecs::wma::PacketSink WmaAudioEncoder<Encoder>::Into(const CodedFrameSink& sink) {
    return [this, &sink](const codecs::wma::Packet& packet) {
        if (!wanted_) return;
        PacketHandle bytes = PacketFromPool(packets_, *buffers_, packet.data.size());
        std::copy(packet.data.begin(), packet.data.end(), bytes->data);
        CodedFrame coded;
        // The first packet has no sound, and the second one begins where it does: times rise all
        // the same, by as little as the container can tell.
        coded.pts = coded.dts =
            std::max(SampleTime(packet.first_sample, format_.sampling_rate), next_time_);
        next_time_ = coded.pts + Ticks::FromMilliseconds(1);
        const Ticks end = SampleTime(packet.first_sample + packet.samples, format_.sampling_rate);
        coded.duration = std::max(end, coded.pts) - coded.pts;
        coded.key = true;
        coded.audio_samples = packet.samples;
        coded.bytes = packets_.Share(std::move(bytes));
        wanted_ = sink(std::move(coded));
    };
}

template <typename Encoder>
AudioFrameFormat WmaAudioEncoder<Encoder>::Format() const {
    return {AV_SAMPLE_FMT_FLTP, format_.sampling_rate, format_.channels, kSamplesAtATime};
}

template <typename Encoder>
StreamHeader WmaAudioEncoder<Encoder>::Header() const {
    const auto format = FormatFor(SettingsFor<typename Encoder::Settings>(plan_, {}));
    StreamHeader header = AudioStreamHeader(plan_);
    AudioHeader& audio = std::get<AudioHeader>(header.format);
    audio.block_align = static_cast<std::uint16_t>(PacketBytes(format));
    audio.average_bytes_per_second = static_cast<std::uint32_t>(format_.value / 8);
    const auto extra = format.ExtraData();
    header.extra_data.assign(extra.begin(), extra.end());
    return header;
}

template <typename Encoder>
bool WmaAudioEncoder<Encoder>::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    for (std::size_t c = 0; c < channels_.size(); ++c)
        channels_[c] = {reinterpret_cast<const float*>(frame.extended_data[c]),
                        static_cast<std::size_t>(frame.nb_samples)};
    encoder_.Encode(channels_, Into(sink));
    return wanted_;
}

template <typename Encoder>
bool WmaAudioEncoder<Encoder>::Finish(const CodedFrameSink& sink) {
    encoder_.Finish(Into(sink));
    return wanted_;
}

template <typename Encoder>
std::vector<float> WmaAudioEncoder<Encoder>::TakeFirstPass() {
    if constexpr (requires { encoder_.TakeFirstPass(); })
        return encoder_.TakeFirstPass();
    else
        return {};
}

template <typename Encoder>
std::string WmaAudioEncoder<Encoder>::NoteText() const {
    if constexpr (requires { encoder_.MusicSamples(); }) {
        const double seconds = static_cast<double>(encoder_.MusicSamples()) / format_.sampling_rate;
        if (seconds >= kMusicSeconds)
            return fmt::format(
                "{} carries speech; {:.0f} seconds of {} sound like music, which -a_codec WMA9STD "
                "keeps better.",
                plan_.codec->name, seconds, plan_.input.Name());
    }
    return {};
}

template class WmaAudioEncoder<codecs::wma_standard::Encoder>;
template class WmaAudioEncoder<codecs::wma_pro::Encoder>;
template class WmaAudioEncoder<codecs::wma_voice::Encoder>;

}  // namespace engine
