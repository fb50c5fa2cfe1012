#include "conformance/screen/screen_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "codecs/common/index.h"
#include "engine/base/av/av_ptr.h"
#include "support/library_messages.h"

namespace screen_conformance {

using codecs::Index;
using test_support::LibraryMessages;

namespace {

std::uint32_t DecodedPixel(const AVFrame& frame, bool fifteen_bits, int x, int y) {
    const std::uint8_t* const row = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
    if (fifteen_bits) {
        std::uint16_t pixel = 0;
        std::memcpy(&pixel, row + std::ptrdiff_t{2} * x, sizeof pixel);
        return pixel;
    }
    const std::uint8_t* const pixel = row + std::ptrdiff_t{3} * x;
    return std::uint32_t{pixel[0]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[2];
}

}  // namespace

struct ScreenCheck::Decoder {
    engine::AvPtr<AVCodecContext> codec;
    engine::AvPtr<AVPacket> packet;
    engine::AvPtr<AVFrame> frame;
};

ScreenCheck::ScreenCheck(const codecs::screen::StreamFormat& format)
    : format_(format), decoder_(std::make_unique<Decoder>()) {
    // The library says so of every rectangle that is smaller than the picture.
    test_support::CollectLibraryMessages("block count mismatch");
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_MSS2);
    decoder_->codec.reset(avcodec_alloc_context3(codec));
    decoder_->packet.reset(av_packet_alloc());
    decoder_->frame.reset(av_frame_alloc());
    AVCodecContext& context = *decoder_->codec;
    context.width = format.width;
    context.height = format.height;
    context.flags |= AV_CODEC_FLAG_BITEXACT;
    context.err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    context.thread_count = 1;
    const std::vector<std::uint8_t> header = StreamHeader(format);
    context.extradata_size = static_cast<int>(header.size());
    context.extradata =
        static_cast<std::uint8_t*>(av_mallocz(header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::ranges::copy(header, context.extradata);
    if (avcodec_open2(&context, codec, nullptr) < 0) LibraryMessages() += "the stream is refused";
}

ScreenCheck::~ScreenCheck() = default;

std::string ScreenCheck::Take(std::span<const std::uint8_t> data,
                              std::span<const std::uint32_t> shown) {
    if (!LibraryMessages().empty()) return "the decoder says " + LibraryMessages();
    AVPacket& packet = *decoder_->packet;
    av_new_packet(&packet, static_cast<int>(data.size()));
    std::ranges::copy(data, packet.data);
    const int sent = avcodec_send_packet(decoder_->codec.get(), &packet);
    av_packet_unref(&packet);
    if (sent < 0) return "is refused: " + LibraryMessages();
    AVFrame& frame = *decoder_->frame;
    if (avcodec_receive_frame(decoder_->codec.get(), &frame) < 0) return "shows nothing";
    if (!LibraryMessages().empty()) return "the decoder says " + LibraryMessages();
    for (int y = 0; y < format_.height; ++y)
        for (int x = 0; x < format_.width; ++x) {
            const std::uint32_t got =
                DecodedPixel(frame, format_.fifteen_bits, x, format_.height - 1 - y);
            const std::uint32_t want = shown[Index(y) * Index(format_.width) + Index(x)] & 0xFFFFFF;
            if (got != want)
                return fmt::format("{},{} is {:06X}, the encoder says {:06X}", x, y, got, want);
        }
    return {};
}

}  // namespace screen_conformance
