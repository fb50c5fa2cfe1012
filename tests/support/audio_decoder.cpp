#include "support/audio_decoder.h"

#include <algorithm>
#include <utility>

#include "engine/base/av/av_ptr.h"
#include "support/library_messages.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace test_support {
namespace {

double Sample(const AVFrame& frame, int channel, int place) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    const std::uint8_t* const plane = frame.extended_data[planar ? channel : 0];
    const int at = planar ? place : place * channels + channel;
    switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_S16:
            return reinterpret_cast<const std::int16_t*>(plane)[at] / 32768.0;
        case AV_SAMPLE_FMT_S32:
            return reinterpret_cast<const std::int32_t*>(plane)[at] / 2147483648.0;
        default:
            return static_cast<double>(reinterpret_cast<const float*>(plane)[at]);
    }
}

}  // namespace

struct AudioDecoder::Library {
    engine::AvPtr<AVCodecContext> codec;
    engine::AvPtr<AVPacket> packet;
    engine::AvPtr<AVFrame> frame;
};

AudioDecoder::AudioDecoder(const AudioStream& stream) : library_(std::make_unique<Library>()) {
    CollectLibraryMessages();
    decoded_.samples.resize(static_cast<std::size_t>(stream.channels));
    const AVCodecTag* const tags[] = {avformat_get_riff_audio_tags(), nullptr};
    const AVCodec* const codec = avcodec_find_decoder(av_codec_get_id(tags, stream.format_tag));
    library_->codec.reset(avcodec_alloc_context3(codec));
    library_->packet.reset(av_packet_alloc());
    library_->frame.reset(av_frame_alloc());
    AVCodecContext& context = *library_->codec;
    context.sample_rate = stream.sampling_rate;
    context.bits_per_coded_sample = stream.bits_per_sample;
    context.bit_rate = std::int64_t{8} * stream.average_bytes_per_second;
    context.block_align = stream.block_align;
    context.err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    av_channel_layout_default(&context.ch_layout, stream.channels);
    context.extradata_size = static_cast<int>(stream.extra_data.size());
    context.extradata = static_cast<std::uint8_t*>(
        av_mallocz(stream.extra_data.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::copy(stream.extra_data.begin(), stream.extra_data.end(), context.extradata);
    if (avcodec_open2(&context, codec, nullptr) < 0) LibraryMessages() += "the stream is refused";
}

AudioDecoder::~AudioDecoder() = default;

void AudioDecoder::Decode(std::span<const std::uint8_t> packet) {
    AVPacket& to = *library_->packet;
    av_new_packet(&to, static_cast<int>(packet.size()));
    std::copy(packet.begin(), packet.end(), to.data);
    if (avcodec_send_packet(library_->codec.get(), &to) < 0)
        LibraryMessages() += "a packet is refused";
    av_packet_unref(&to);
    Receive();
}

DecodedAudio AudioDecoder::Finish() {
    avcodec_send_packet(library_->codec.get(), nullptr);
    Receive();
    decoded_.messages = LibraryMessages();
    return std::move(decoded_);
}

void AudioDecoder::Receive() {
    const AVFrame& frame = *library_->frame;
    int result = 0;
    while ((result = avcodec_receive_frame(library_->codec.get(), library_->frame.get())) == 0)
        for (std::size_t c = 0; c < decoded_.samples.size(); ++c)
            for (int i = 0; i < frame.nb_samples; ++i)
                decoded_.samples[c].push_back(Sample(frame, static_cast<int>(c), i));
    if (result != AVERROR(EAGAIN) && result != AVERROR_EOF)
        LibraryMessages() += "the decoder gives up";
}

}  // namespace test_support
