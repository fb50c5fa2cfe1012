#include "engine/encoders/full_frame_encoder.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "engine/encoders/packet_buffer.h"
#include "engine/encoders/video_header.h"
#include "platform/error.h"

namespace engine {
namespace {

constexpr std::size_t kPixelBytes = 3;
// The mark by which FFmpeg's container formats tell their decoder that rows run upward; readers
// that go by the picture's positive height do not look at it.
constexpr std::string_view kBottomUpMark("BottomUp\0", 9);

std::size_t RowBytes(int width) {
    return (static_cast<std::size_t>(width) * kPixelBytes + 3) / 4 * 4;
}

}  // namespace

FullFrameEncoder::FullFrameEncoder(const VideoPlan& plan, PacketPool& packets)
    : plan_(plan), packets_(packets), row_bytes_(RowBytes(plan.width)) {
    if (PictureBytes() > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 2)
        throw platform::Error(platform::kInvalidArgument,
                              "The picture is too large to be written uncompressed; choose a "
                              "smaller size");
    buffers_.reset(CheckAllocated(
        av_buffer_pool_init(PictureBytes() + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

std::size_t FullFrameEncoder::PictureBytes() const {
    return row_bytes_ * static_cast<std::size_t>(plan_.height);
}

PictureFormat FullFrameEncoder::Format() const {
    return {AV_PIX_FMT_BGR24, plan_.width, plan_.height};
}

StreamHeader FullFrameEncoder::Header() const {
    StreamHeader header = VideoStreamHeader(plan_);
    header.extra_data.assign(kBottomUpMark.begin(), kBottomUpMark.end());
    header.variable_rate = false;
    header.codec_description = "24 bits a pixel";
    // Nothing is left out to meet a rate: it is what the pictures take.
    header.average_rate_bps = static_cast<std::uint32_t>(std::min<std::uint64_t>(
        PictureBytes() * 8 * static_cast<std::uint64_t>(CodedFrameRate(plan_)) / 1000,
        std::numeric_limits<std::uint32_t>::max()));
    return header;
}

bool FullFrameEncoder::Encode(AVFrame& frame, const PacketTaker& take) {
    CodedPacket packet;
    packet.data = PacketFromPool(packets_, *buffers_, PictureBytes());
    std::uint8_t* to = packet.data->data;
    const std::size_t pixel_bytes = static_cast<std::size_t>(plan_.width) * kPixelBytes;
    for (int row = plan_.height - 1; row >= 0; --row, to += row_bytes_) {
        const std::uint8_t* from =
            frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
        std::copy_n(from, pixel_bytes, to);
        std::fill(to + pixel_bytes, to + row_bytes_, std::uint8_t{0});
    }
    packet.presentation = packet.decode = {frame.pts};
    packet.duration = {frame.pkt_duration};
    packet.key = true;
    return take(std::move(packet));
}

}  // namespace engine
