#include "engine/filters/rgb_converter.h"

#include <algorithm>

#include "engine/base/av/av_error.h"
#include "engine/filters/rgb_rows.h"

namespace engine {
namespace {

// What the encoders' and converters' fastest code wants.
constexpr int kRowAlignment = 64;

struct LayoutRow {
    AVPixelFormat pixels;
    RgbLayout layout;
};

// clang-format off
constexpr LayoutRow kLayouts[] = {
    // pixels           blank first, red first
    {AV_PIX_FMT_BGR0, {false, false}},
    {AV_PIX_FMT_BGRA, {false, false}},
    {AV_PIX_FMT_RGB0, {false, true}},
    {AV_PIX_FMT_RGBA, {false, true}},
    {AV_PIX_FMT_0RGB, {true,  true}},
    {AV_PIX_FMT_ARGB, {true,  true}},
    {AV_PIX_FMT_0BGR, {true,  false}},
    {AV_PIX_FMT_ABGR, {true,  false}},
};
// clang-format on

const LayoutRow* RowOf(int pixels) {
    for (const LayoutRow& row : kLayouts)
        if (row.pixels == pixels) return &row;
    return nullptr;
}

}  // namespace

RgbConverter::RgbConverter(int width, int height, AVColorSpace matrix, FramePool& frames)
    : width_(width),
      height_(height),
      matrix_(matrix),
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
    converted->colorspace = matrix_;
    std::uint8_t* luma = converted->buf[0]->data;
    std::uint8_t* blue = luma + std::ptrdiff_t{stride_} * height_;
    std::uint8_t* red = blue + std::ptrdiff_t{stride_ / 2} * ((height_ + 1) / 2);
    converted->data[0] = luma;
    converted->data[1] = blue;
    converted->data[2] = red;
    converted->linesize[0] = stride_;
    converted->linesize[1] = converted->linesize[2] = stride_ / 2;
    const RgbLayout& layout = RowOf(frame.format)->layout;
    const RgbWeights weights = matrix_ == AVCOL_SPC_BT709 ? WeightsOf(0.2126, 0.0722, layout)
                                                          : WeightsOf(0.299, 0.114, layout);
    for (int y = 0; y < height_; y += 2) {
        const int next = std::min(y + 1, height_ - 1);
        const std::ptrdiff_t chroma = std::ptrdiff_t{stride_ / 2} * (y / 2);
        ConvertRows(frame.data[0] + std::ptrdiff_t{frame.linesize[0]} * y,
                    frame.data[0] + std::ptrdiff_t{frame.linesize[0]} * next, width_, layout,
                    weights,
                    {luma + std::ptrdiff_t{stride_} * y, luma + std::ptrdiff_t{stride_} * next,
                     blue + chroma, red + chroma});
    }
    return converted;
}

}  // namespace engine
