#include "engine/encoders/pcm_encoder.h"

#include <algorithm>
#include <utility>

#include "engine/encoders/audio_header.h"
#include "engine/encoders/packet_buffer.h"

namespace engine {
namespace {

constexpr int kPacketsPerSecond = 20;  // small against a packet of the container

}  // namespace

PcmEncoder::PcmEncoder(const AudioPlan& plan, CodedFramePool& packets)
    : plan_(plan),
      format_(WrittenFor(*plan.codec, plan.mode, plan.format).format),
      packets_(packets),
      block_bytes_(static_cast<std::size_t>(format_.channels * format_.bits_per_sample / 8)) {
    const std::size_t samples = static_cast<std::size_t>(Format().frame_samples);
    buffers_.reset(CheckAllocated(
        av_buffer_pool_init(samples * block_bytes_ + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

AudioFrameFormat PcmEncoder::Format() const {
    AVSampleFormat samples = AV_SAMPLE_FMT_S16;
    if (format_.bits_per_sample == 8) samples = AV_SAMPLE_FMT_U8;
    if (format_.bits_per_sample > 16) samples = AV_SAMPLE_FMT_S32;
    return {samples, format_.sampling_rate, format_.channels,
            format_.sampling_rate / kPacketsPerSecond};
}

StreamHeader PcmEncoder::Header() const {
    StreamHeader header = AudioStreamHeader(plan_);
    AudioHeader& audio = std::get<AudioHeader>(header.format);
    audio.block_align = static_cast<std::uint16_t>(block_bytes_);
    audio.average_bytes_per_second = audio.sampling_rate * audio.block_align;
    header.average_rate_bps = audio.average_bytes_per_second * 8;
    return header;
}

bool PcmEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    const std::size_t values =
        static_cast<std::size_t>(frame.nb_samples) * static_cast<std::size_t>(format_.channels);
    PacketHandle packet = PacketFromPool(packets_, *buffers_,
                                         static_cast<std::size_t>(frame.nb_samples) * block_bytes_);
    std::uint8_t* to = packet->data;
    if (format_.bits_per_sample == 24) {
        // The upper three of four bytes of each sample.
        for (const std::uint8_t* from = frame.data[0]; from != frame.data[0] + 4 * values;
             from += 4)
            to = std::copy_n(from + 1, 3, to);
    } else {
        std::copy_n(frame.data[0], packet->size, to);
    }
    CodedFrame coded;
    coded.pts = coded.dts = SampleTime(frame.pts, format_.sampling_rate);
    coded.duration = SampleTime(frame.pts + frame.nb_samples, format_.sampling_rate) - coded.pts;
    coded.key = true;
    coded.audio_samples = frame.nb_samples;
    coded.bytes = packets_.Share(std::move(packet));
    return sink(std::move(coded));
}

}  // namespace engine
