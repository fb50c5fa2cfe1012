#include "engine/sources/camera/camera_format.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace engine {
namespace {

using Kind = CameraPixelRow::Kind;

// clang-format off
constexpr CameraPixelRow kPixels[] = {
    // code               libavutil's   kind           swapped
    {V4L2_PIX_FMT_YUV420, "yuv420p",    Kind::Colours},
    {V4L2_PIX_FMT_YVU420, "yuv420p",    Kind::Colours, true},
    {V4L2_PIX_FMT_NV12,   "nv12",       Kind::Colours},
    {V4L2_PIX_FMT_NV21,   "nv21",       Kind::Colours},
    {V4L2_PIX_FMT_YUYV,   "yuyv422",    Kind::Colours},
    {V4L2_PIX_FMT_UYVY,   "uyvy422",    Kind::Colours},
    {V4L2_PIX_FMT_YVYU,   "yvyu422",    Kind::Colours},
    {V4L2_PIX_FMT_YUV422P, "yuv422p",   Kind::Colours},
    {V4L2_PIX_FMT_BGR24,  "bgr24",      Kind::Colours},
    {V4L2_PIX_FMT_RGB24,  "rgb24",      Kind::Colours},
    {V4L2_PIX_FMT_XBGR32, "bgr0",       Kind::Colours},
    {V4L2_PIX_FMT_ABGR32, "bgr0",       Kind::Colours},
    {V4L2_PIX_FMT_BGR32,  "bgr0",       Kind::Colours},
    {V4L2_PIX_FMT_RGB565, "rgb565le",   Kind::Colours},
    {V4L2_PIX_FMT_MJPEG,  "",           Kind::Jpeg},
    {V4L2_PIX_FMT_JPEG,   "",           Kind::Jpeg},
    {V4L2_PIX_FMT_GREY,   "gray",       Kind::Greys},
};
// clang-format on

constexpr CameraWish kUsual = {1280, 720, 0};
// 29.97 pictures a second are as good as 30.
constexpr double kRateReached = 0.99;
constexpr double kSameShape = 0.01;

// A side that was not wished follows from the other.
CameraWish Completed(CameraWish wish) {
    const double shape = static_cast<double>(kUsual.width) / kUsual.height;
    if (wish.width == 0 && wish.height == 0) return {kUsual.width, kUsual.height, wish.rate};
    if (wish.width == 0) wish.width = static_cast<std::int32_t>(std::lround(wish.height * shape));
    if (wish.height == 0) wish.height = static_cast<std::int32_t>(std::lround(wish.width / shape));
    return wish;
}

std::int32_t AtLeast(const CameraSide& side, double wanted) {
    if (wanted <= side.least) return side.least;
    if (wanted >= side.most) return side.most;
    const auto steps = static_cast<std::int32_t>(std::ceil((wanted - side.least) / side.step));
    return std::min(side.least + steps * side.step, side.most);
}

// What exceeds the range is made smaller in its shape.
CameraFormat SizeWithin(const CameraSizes& sizes, const CameraWish& wish) {
    const double fits = std::min({1.0, static_cast<double>(sizes.width.most) / wish.width,
                                  static_cast<double>(sizes.height.most) / wish.height});
    return {
        0, AtLeast(sizes.width, wish.width * fits), AtLeast(sizes.height, wish.height * fits), {}};
}

double Seconds(const CameraInterval& interval) {
    return static_cast<double>(interval.numerator) / interval.denominator;
}

CameraInterval IntervalWithin(const CameraIntervals& intervals, std::int32_t rate) {
    const CameraInterval wished = {1000, static_cast<std::uint32_t>(rate)};
    if (Seconds(wished) <= Seconds(intervals.shortest)) return intervals.shortest;
    if (Seconds(wished) >= Seconds(intervals.longest)) return intervals.longest;
    return wished;
}

// How much of what was wished there is, at most all.
double Share(double there, double wished) { return std::min(1.0, there / wished); }

double RateShare(std::int32_t rate, std::int32_t wished) {
    return rate == 0 || rate >= kRateReached * wished ? 1.0 : Share(rate, wished);
}

enum class Likeness { Same, SameShape, Other };

Likeness LikenessOf(const CameraFormat& format, const CameraWish& wish) {
    if (format.width == wish.width && format.height == wish.height) return Likeness::Same;
    const double shape = static_cast<double>(format.width) / format.height;
    const double wished = static_cast<double>(wish.width) / wish.height;
    return std::abs(shape / wished - 1) <= kSameShape ? Likeness::SameShape : Likeness::Other;
}

// The lowest is the best.
auto RankOf(const CameraFormat& format, const CameraPixelRow& row, const CameraWish& wish) {
    const std::int32_t rate = RateOf(format.interval);
    const double given = Share(format.width, wish.width) * Share(format.height, wish.height) *
                         RateShare(rate, wish.rate);
    return std::tuple(row.kind == Kind::Greys, -given, LikenessOf(format, wish), row.kind,
                      std::int64_t{format.width} * format.height, rate);
}

}  // namespace

std::span<const CameraPixelRow> CameraPixels() { return kPixels; }

const CameraPixelRow* FindCameraPixels(std::uint32_t code) {
    const auto* row = std::find_if(std::begin(kPixels), std::end(kPixels),
                                   [&](const CameraPixelRow& each) { return each.code == code; });
    return row == std::end(kPixels) ? nullptr : row;
}

std::optional<CameraFormat> ChooseCameraFormat(const CameraOffers& offers, CameraWish wish) {
    wish = Completed(wish);
    using Rank = decltype(RankOf(CameraFormat{}, kPixels[0], wish));
    std::optional<CameraFormat> best;
    std::optional<Rank> best_rank;
    const auto consider = [&](const CameraFormat& format, const CameraPixelRow& row) {
        const Rank rank = RankOf(format, row, wish);
        if (best_rank && *best_rank <= rank) return;
        best = format;
        best_rank = rank;
    };
    const std::vector<std::uint32_t> offered = offers.PixelFormats();
    for (const CameraPixelRow& row : kPixels) {
        if (std::find(offered.begin(), offered.end(), row.code) == offered.end()) continue;
        for (const CameraSizes& sizes : offers.Sizes(row.code)) {
            CameraFormat format = SizeWithin(sizes, wish);
            format.pixels = row.code;
            const auto intervals = offers.Intervals(row.code, format.width, format.height);
            if (intervals.empty()) consider(format, row);
            for (const CameraIntervals& each : intervals) {
                format.interval = IntervalWithin(each, wish.rate);
                consider(format, row);
            }
        }
    }
    return best;
}

}  // namespace engine
