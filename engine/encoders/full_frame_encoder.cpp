#include "engine/encoders/full_frame_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>

#include "engine/base/av/av_error.h"
#include "engine/encoders/packet_buffer.h"
#include "engine/encoders/video_header.h"
#include "platform/error.h"
#include "platform/pixel_format_table.h"

namespace engine {
namespace {

constexpr platform::PixelFormatRow kRgb24 = *platform::FindPixelFormat(0xE436EB7D);
// The mark by which FFmpeg's container formats tell their decoder that rows run upward; readers
// that go by a positive height do not look at it.
constexpr std::string_view kBottomUpMark("BottomUp\0", 9);

// Red-green-blue rows are padded to four bytes.
std::size_t RowBytes(int width, int bits) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 31) / 32 * 4;
}

}  // namespace

FullFrameEncoder::FullFrameEncoder(const VideoPlan& plan, CodedFramePool& packets)
    : plan_(plan),
      packets_(packets),
      pixels_(plan.pixels != nullptr ? *plan.pixels : kRgb24),
      format_(av_get_pix_fmt(pixels_.av_name)),
      row_bytes_(RowBytes(plan.width, pixels_.bits)),
      frame_bytes_(row_bytes_ * static_cast<std::size_t>(plan.height)) {
    if (frame_bytes_ > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 2)
        throw platform::Error(platform::kInvalidArgument,
                              "The picture is too large to be written uncompressed; choose a "
                              "smaller size");
    if (pixels_.four_cc != 0)
        frame_bytes_ = static_cast<std::size_t>(
            CheckAv(av_image_get_buffer_size(format_, plan.width, plan.height, 1),
                    "Uncompressed pictures"));
    buffers_.reset(
        CheckAllocated(av_buffer_pool_init(frame_bytes_ + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

VideoFrameFormat FullFrameEncoder::Format() const { return {format_, plan_.width, plan_.height}; }

StreamHeader FullFrameEncoder::Header() const {
    StreamHeader header = VideoStreamHeader(plan_);
    VideoHeader& video = std::get<VideoHeader>(header.format);
    video.four_cc = pixels_.four_cc;
    video.bits_per_pixel = pixels_.bits;
    if (pixels_.four_cc == 0) header.extra_data.assign(kBottomUpMark.begin(), kBottomUpMark.end());
    header.variable_rate = false;
    header.codec_description = fmt::format("{} bits a pixel", pixels_.bits);
    // Nothing is left out to meet a rate: it is what the frames take.
    header.average_rate_bps = static_cast<std::uint32_t>(std::min<std::uint64_t>(
        frame_bytes_ * 8 * static_cast<std::uint64_t>(CodedFrameRate(plan_)) / 1000,
        std::numeric_limits<std::uint32_t>::max()));
    return header;
}

void FullFrameEncoder::WriteRows(const AVFrame& frame, std::uint8_t* to) const {
    const std::size_t pixel_bytes = static_cast<std::size_t>(plan_.width) * pixels_.bits / 8;
    for (int row = plan_.height - 1; row >= 0; --row, to += row_bytes_) {
        const std::uint8_t* from =
            frame.data[0] + static_cast<std::ptrdiff_t>(row) * frame.linesize[0];
        std::copy_n(from, pixel_bytes, to);
        std::fill(to + pixel_bytes, to + row_bytes_, std::uint8_t{0});
    }
}

// The two formats that are named V before U have the planes in that order.
void FullFrameEncoder::WritePlanes(const AVFrame& frame, std::uint8_t* to) const {
    std::array<const std::uint8_t*, 4> data{frame.data[0], frame.data[1], frame.data[2],
                                            frame.data[3]};
    if (pixels_.four_cc == platform::FourCC("YV12") || pixels_.four_cc == platform::FourCC("YVU9"))
        std::swap(data[1], data[2]);
    CheckAv(av_image_copy_to_buffer(to, static_cast<int>(frame_bytes_), data.data(), frame.linesize,
                                    format_, plan_.width, plan_.height, 1),
            "Uncompressed pictures");
}

bool FullFrameEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    PacketHandle packet = PacketFromPool(packets_, *buffers_, frame_bytes_);
    if (pixels_.four_cc == 0)
        WriteRows(frame, packet->data);
    else
        WritePlanes(frame, packet->data);
    CodedFrame coded;
    coded.pts = coded.dts = {frame.pts};
    coded.duration = {frame.pkt_duration};
    coded.key = true;
    coded.bytes = packets_.Share(std::move(packet));
    return sink(std::move(coded));
}

}  // namespace engine
