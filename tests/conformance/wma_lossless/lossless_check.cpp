#include "conformance/wma_lossless/lossless_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "codecs/common/index.h"
#include "engine/base/av/av_ptr.h"

namespace lossless_conformance {

using codecs::Index;

namespace {

// The library has one place for the messages of all its decoders.
std::string& Messages() {
    thread_local std::string messages;
    return messages;
}

void Collect(void* /*source*/, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) return;
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    Messages() += line;
}

void Append(const AVFrame& frame, int bits, std::vector<std::int32_t>& samples) {
    for (int i = 0; i < frame.nb_samples; ++i)
        for (int channel = 0; channel < frame.ch_layout.nb_channels; ++channel) {
            const std::uint8_t* const plane = frame.extended_data[channel];
            if (bits == 16) {
                std::int16_t sample = 0;
                std::memcpy(&sample, plane + std::ptrdiff_t{2} * i, sizeof sample);
                samples.push_back(sample);
            } else {
                std::int32_t sample = 0;
                std::memcpy(&sample, plane + std::ptrdiff_t{4} * i, sizeof sample);
                samples.push_back(sample >> 8);
            }
        }
}

}  // namespace

std::vector<StoredPacket> EncodePiece(const Piece& piece, std::span<const std::int32_t> samples,
                                      int threads, bool low_delay) {
    codecs::wma_lossless::EncoderSettings settings{piece.Format()};
    settings.threads = threads;
    settings.low_delay = low_delay;
    codecs::wma_lossless::Encoder encoder(settings);
    std::vector<StoredPacket> packets;
    const auto sink = [&](const codecs::wma_lossless::Packet& packet) {
        packets.push_back({{packet.data.begin(), packet.data.end()},
                           packet.first_sample,
                           packet.samples,
                           packet.key});
    };
    // In portions that have nothing to do with frames.
    const std::size_t portion = Index(1001 * piece.channels);
    for (std::size_t i = 0; i < samples.size(); i += portion)
        encoder.Encode(samples.subspan(i, std::min(portion, samples.size() - i)), sink);
    encoder.Finish(sink);
    return packets;
}

Decoded Decode(const Piece& piece, std::span<const StoredPacket> packets) {
    av_log_set_callback(Collect);
    Messages().clear();
    const codecs::wma_lossless::StreamFormat format = piece.Format();
    const AVCodec* const decoder = avcodec_find_decoder(AV_CODEC_ID_WMALOSSLESS);
    const engine::AvPtr<AVCodecContext> codec(avcodec_alloc_context3(decoder));
    const engine::AvPtr<AVPacket> packet(av_packet_alloc());
    const engine::AvPtr<AVFrame> frame(av_frame_alloc());
    codec->sample_rate = piece.sampling_rate;
    av_channel_layout_default(&codec->ch_layout, piece.channels);
    codec->block_align = format.PacketBytes();
    codec->err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    const std::vector<std::uint8_t> header = format.ExtraData();
    codec->extradata_size = static_cast<int>(header.size());
    codec->extradata =
        static_cast<std::uint8_t*>(av_mallocz(header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::ranges::copy(header, codec->extradata);
    Decoded decoded;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0) Messages() += "the stream is refused";
    const auto receive = [&] {
        while (avcodec_receive_frame(codec.get(), frame.get()) >= 0)
            Append(*frame, piece.bits, decoded.samples);
        decoded.after.push_back(static_cast<std::int64_t>(decoded.samples.size()) / piece.channels);
    };
    for (const StoredPacket& stored : packets) {
        av_new_packet(packet.get(), static_cast<int>(stored.data.size()));
        std::ranges::copy(stored.data, packet->data);
        if (avcodec_send_packet(codec.get(), packet.get()) < 0) Messages() += "a packet is refused";
        av_packet_unref(packet.get());
        receive();
    }
    avcodec_send_packet(codec.get(), nullptr);
    receive();
    decoded.messages = Messages();
    return decoded;
}

std::string Difference(std::span<const std::int32_t> want, std::span<const std::int32_t> got) {
    const auto [at, at_got] = std::ranges::mismatch(want, got);
    if (at != want.end() && at_got != got.end())
        return fmt::format("value {} is {} instead of {}", at - want.begin(), *at_got, *at);
    if (want.size() != got.size())
        return fmt::format("{} values instead of {}", got.size(), want.size());
    return {};
}

}  // namespace lossless_conformance
