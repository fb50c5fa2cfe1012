#include "conformance/screen/screen_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "codecs/common/index.h"
#include "engine/base/av/av_ptr.h"

namespace screen_conformance {

using codecs::Index;

namespace {

// What the library says; it has one place for the messages of all its decoders.
std::string& Messages() {
    thread_local std::string messages;
    return messages;
}

void Collect(void* /*source*/, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) return;
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    // It says so of every rectangle that is smaller than the picture.
    if (std::strstr(line, "block count mismatch") == nullptr) Messages() += line;
}

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
    av_log_set_callback(Collect);
    Messages().clear();
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
    if (avcodec_open2(&context, codec, nullptr) < 0) Messages() += "the stream is refused";
}

ScreenCheck::~ScreenCheck() = default;

std::string ScreenCheck::Take(std::span<const std::uint8_t> data,
                              std::span<const std::uint32_t> shown) {
    if (!Messages().empty()) return "the decoder says " + Messages();
    AVPacket& packet = *decoder_->packet;
    av_new_packet(&packet, static_cast<int>(data.size()));
    std::ranges::copy(data, packet.data);
    const int sent = avcodec_send_packet(decoder_->codec.get(), &packet);
    av_packet_unref(&packet);
    if (sent < 0) return "is refused: " + Messages();
    AVFrame& frame = *decoder_->frame;
    if (avcodec_receive_frame(decoder_->codec.get(), &frame) < 0) return "shows nothing";
    if (!Messages().empty()) return "the decoder says " + Messages();
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
