#include "engine/filters/frame_converter.h"

#include <fmt/format.h>

#include <cmath>
#include <string>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/filters/colours.h"

namespace engine {
namespace {

constexpr const char* kSubject = "Conversion of the picture failed";

const char* Upright(double turn) {
    const long quarters = std::lround(turn / 90.0) % 4;
    switch ((quarters + 4) % 4) {
        case 1:
            return "transpose=clock,";
        case 2:
            return "hflip,vflip,";
        case 3:
            return "transpose=cclock,";
        default:
            return "";
    }
}

// Has no matrix.
bool IsRgb(AVPixelFormat format) {
    return (av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

}  // namespace

FrameConverter::FrameConverter(const VideoPlan& plan, const VideoFrameFormat& format, double turn,
                               FramePool& frames)
    : crop_(plan.crop),
      format_(format),
      matrix_(AssumedMatrix(format.width, format.height)),
      turn_(turn),
      frames_(frames) {
    if (plan.fields != FieldCoding::None) scaling_ = ":interl=1";
    if (plan.pixels == nullptr) return;
    const AVPixelFormat through = av_get_pix_fmt(plan.pixels->av_name);
    if (through != format.pixels)
        through_ = fmt::format("format=pix_fmts={},", plan.pixels->av_name);
}

// Only the pixels' format may differ.
bool FrameConverter::IsInPlace(const FrameShape& shape) const {
    return shape.width == format_.width && shape.height == format_.height &&
           *Upright(turn_) == '\0' && crop_ == Margins{} && through_.empty();
}

bool FrameConverter::Fits(const FrameShape& shape) const {
    if (!IsInPlace(shape) || shape.format != format_.pixels) return false;
    return IsRgb(format_.pixels) ? GamutChain(shape).empty() : HasColoursOf(shape, matrix_);
}

std::string FrameConverter::Chain(const FrameShape& shape) const {
    std::string chain = Upright(turn_);
    if (crop_ != Margins{})
        chain += fmt::format("crop=w=iw-{}:h=ih-{}:x={}:y={}:exact=1,", crop_.left + crop_.right,
                             crop_.top + crop_.bottom, crop_.left, crop_.top);
    const std::string size =
        fmt::format("scale=w={}:h={}{}:flags=bicubic", format_.width, format_.height, scaling_);
    const std::string gamut = GamutChain(shape);
    const bool smaller = shape.width > format_.width && shape.height > format_.height;
    if (!gamut.empty() && smaller) chain += size + ',';  // fewer pixels to compute
    return chain + gamut + through_ + size +
           fmt::format(":out_color_matrix={}:out_range=tv,format=pix_fmts={}", MatrixName(matrix_),
                       av_get_pix_fmt_name(format_.pixels));
}

void FrameConverter::Open(const FrameShape& shape) {
    shape_ = shape;
    filter_.reset();
    rgb_converter_.reset();
    const bool has_fields = *scaling_ != '\0';
    if (IsInPlace(shape) && format_.pixels == AV_PIX_FMT_YUV420P && !has_fields &&
        shape.range != AVCOL_RANGE_MPEG && RgbConverter::Takes(shape.format))
        rgb_converter_.emplace(shape.width, shape.height, matrix_, frames_);
    else if (!Fits(shape))
        filter_.emplace(Chain(shape), shape, kSubject);
}

FrameHandle FrameConverter::Convert(FrameHandle frame) {
    CompleteColours(*frame);
    if (const FrameShape shape = ShapeOf(*frame); shape != shape_) Open(shape);
    if (rgb_converter_) return rgb_converter_->Convert(*frame);
    if (!filter_) return frame;
    const std::int64_t pts = frame->pts;
    const std::int64_t duration = frame->pkt_duration;
    filter_->Push(frame.get());
    FrameHandle converted = frames_.Get();
    if (!filter_->Pull(*converted)) throw AvError(AVERROR(EAGAIN), kSubject);
    converted->pts = pts;
    converted->pkt_duration = duration;
    return converted;
}

}  // namespace engine
