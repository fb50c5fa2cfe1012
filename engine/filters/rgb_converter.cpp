#include "engine/filters/rgb_converter.h"

#include <libyuv/convert.h>

#include "engine/base/av/av_error.h"

namespace engine {
namespace {

// What the encoders' and converters' fastest code wants.
constexpr int kRowAlignment = 64;

using Conversion = int (*)(const std::uint8_t*, int, std::uint8_t*, int, std::uint8_t*, int,
                           std::uint8_t*, int, int, int);

struct ConversionRow {
    AVPixelFormat pixels;
    Conversion convert;
};

// The library names the bytes from the highest of a number, FFmpeg from the first in memory.
// clang-format off
constexpr ConversionRow kConversions[] = {
    // FFmpeg's           the library's
    {AV_PIX_FMT_BGR0, libyuv::ARGBToI420},
    {AV_PIX_FMT_BGRA, libyuv::ARGBToI420},
    {AV_PIX_FMT_RGB0, libyuv::ABGRToI420},
    {AV_PIX_FMT_RGBA, libyuv::ABGRToI420},
    {AV_PIX_FMT_0RGB, libyuv::BGRAToI420},
    {AV_PIX_FMT_ARGB, libyuv::BGRAToI420},
    {AV_PIX_FMT_0BGR, libyuv::RGBAToI420},
    {AV_PIX_FMT_ABGR, libyuv::RGBAToI420},
};
// clang-format on

const ConversionRow* RowOf(int pixels) {
    for (const ConversionRow& row : kConversions)
        if (row.pixels == pixels) return &row;
    return nullptr;
}

}  // namespace

RgbConverter::RgbConverter(int width, int height, FramePool& frames)
    : width_(width),
      height_(height),
      frames_(frames),
      stride_((width + kRowAlignment - 1) / kRowAlignment * kRowAlignment) {
    const auto luma = static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height);
    const auto chroma =
        static_cast<std::size_t>(stride_ / 2) * static_cast<std::size_t>((height + 1) / 2);
    buffers_.reset(CheckAllocated(
        av_buffer_pool_init(luma + 2 * chroma + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
}

bool RgbConverter::Takes(int pixels) { return RowOf(pixels) != nullptr; }

FrameHandle RgbConverter::Convert(const AVFrame& frame) {
    FrameHandle converted = frames_.Get();
    CheckAv(av_frame_copy_props(converted.get(), &frame), "Conversion of the picture failed");
    converted->buf[0] = CheckAllocated(av_buffer_pool_get(buffers_.get()));
    converted->format = AV_PIX_FMT_YUV420P;
    converted->width = width_;
    converted->height = height_;
    converted->color_range = AVCOL_RANGE_MPEG;
    converted->colorspace = AVCOL_SPC_SMPTE170M;
    std::uint8_t* luma = converted->buf[0]->data;
    std::uint8_t* blue = luma + std::ptrdiff_t{stride_} * height_;
    std::uint8_t* red = blue + std::ptrdiff_t{stride_ / 2} * ((height_ + 1) / 2);
    converted->data[0] = luma;
    converted->data[1] = blue;
    converted->data[2] = red;
    converted->linesize[0] = stride_;
    converted->linesize[1] = converted->linesize[2] = stride_ / 2;
    RowOf(frame.format)
        ->convert(frame.data[0], frame.linesize[0], luma, stride_, blue, stride_ / 2, red,
                  stride_ / 2, width_, height_);
    return converted;
}

}  // namespace engine
