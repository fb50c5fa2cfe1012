#include "engine/prepare/frame_size.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "platform/text.h"

namespace engine {
namespace {

constexpr std::int32_t kLeastSide = 2;
constexpr std::int64_t kMostAspect = 65'535;  // some players keep 16 bits of either number

Ratio Reduced(std::int64_t numerator, std::int64_t denominator) {
    const std::int64_t divisor = std::gcd(numerator, denominator);
    Ratio ratio = {numerator / divisor, denominator / divisor};
    while (std::max(ratio.numerator, ratio.denominator) > kMostAspect)
        ratio = {std::max<std::int64_t>(ratio.numerator / 2, 1),
                 std::max<std::int64_t>(ratio.denominator / 2, 1)};
    return ratio;
}

Ratio SourcePixelAspect(const VideoSourceRecord& source, const VideoInfo& info) {
    const std::int32_t x = source.pixel_aspect_x;
    const std::int32_t y = source.pixel_aspect_y;
    if (x != 0 || y != 0) return Reduced(std::max(x, 1), std::max(y, 1));
    if (info.pixel_aspect.numerator <= 0 || info.pixel_aspect.denominator <= 0) return {1, 1};
    return info.pixel_aspect;
}

std::int32_t Scaled(std::int32_t side, double factor) {
    return static_cast<std::int32_t>(platform::RoundHalfToEven(side * factor));
}

// What is left of a side once its margins are cut off.
std::int32_t Clipped(const char* sides, std::int32_t side, std::int32_t before,
                     std::int32_t after) {
    if (before < side - after) return side - before - after;
    RefuseArgument(
        fmt::format("The {} margins {} and {} leave nothing of the source's {} pixels: lower "
                    "-v_clip",
                    sides, before, after, side));
}

// What rounding to whole or even pixels takes off a size that has the shape is none of the pixels'.
bool HasShape(const VideoPlan& plan, double shape) {
    return std::abs(plan.width - shape * plan.height) < 2;
}

// A size that follows from the source loses a column or row; one that was asked for, a pixel.
void EvenSides(bool source_size, VideoPlan& plan) {
    const auto even = [source_size](bool wanted, std::int32_t& side, std::int32_t& margin) {
        if (!wanted || side % 2 == 0 || side < kLeastSide) return;
        --side;
        if (source_size) ++margin;
    };
    even(plan.codec->even_width, plan.width, plan.crop.right);
    even(plan.codec->even_height, plan.height, plan.crop.bottom);
}

}  // namespace

void PlanSize(const VideoSourceRecord& source, const VideoInfo& info, const ProfileRecord& profile,
              VideoPlan& plan) {
    const VideoSettings& video = profile.audiences.front().video;
    if (source.input.capture && info.width == 0) return;  // its desktop has not been asked yet
    if (info.width <= 0 || info.height <= 0)
        throw platform::Error(platform::kInvalidData,
                              fmt::format("The picture of {} has no size", source.input.input));
    plan.crop = {source.left_margin, source.right_margin, source.top_margin, source.bottom_margin};
    const std::int32_t width =
        Clipped("left and right", info.width, plan.crop.left, plan.crop.right);
    const std::int32_t height =
        Clipped("top and bottom", info.height, plan.crop.top, plan.crop.bottom);
    const Ratio aspect = SourcePixelAspect(source, info);
    const bool source_size = video.width == 0 && video.height == 0;
    const bool square = !source_size && !profile.non_square_pixels;
    const bool follows = video.width == 0 || video.height == 0;
    const double stretch =
        square ? static_cast<double>(aspect.numerator) / static_cast<double>(aspect.denominator)
               : 1.0;
    const double shape = stretch * width / height;
    plan.width = source_size ? width : video.width == 0 ? Scaled(video.height, shape) : video.width;
    plan.height = source_size         ? height
                  : video.height == 0 ? Scaled(video.width, 1 / shape)
                                      : video.height;
    EvenSides(source_size, plan);
    plan.width = std::max(plan.width, kLeastSide);
    plan.height = std::max(plan.height, kLeastSide);
    if (source_size)
        plan.pixel_aspect = aspect;
    else if (!square || !(follows || HasShape(plan, shape)))
        plan.pixel_aspect = Reduced(aspect.numerator * width * plan.height,
                                    aspect.denominator * height * plan.width);
}

std::string PixelShapeNotice(const VideoSourceRecord& source, const ProfileRecord& profile,
                             const VideoPlan& plan) {
    const VideoSettings& video = profile.audiences.front().video;
    const bool asked_shape = source.pixel_aspect_x != 0 || source.pixel_aspect_y != 0;
    const bool asked_size = video.width != 0 && video.height != 0;
    const bool square = plan.pixel_aspect.numerator == plan.pixel_aspect.denominator;
    if (square || asked_shape || !asked_size) return {};
    return fmt::format(
        "The picture keeps its shape in {}x{} by pixels that are not square; -v_height 0 gives "
        "square ones.",
        plan.width, plan.height);
}

}  // namespace engine
