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

constexpr CameraRequest kUsual = {1280, 720, 0};
// 29.97 frames a second are as good as 30.
constexpr double kRateReached = 0.99;
constexpr double kSameShape = 0.01;

// A side that was not requested follows from the other.
CameraRequest Completed(CameraRequest request) {
    const double shape = static_cast<double>(kUsual.width) / kUsual.height;
    if (request.width == 0 && request.height == 0)
        return {kUsual.width, kUsual.height, request.rate};
    if (request.width == 0)
        request.width = static_cast<std::int32_t>(std::lround(request.height * shape));
    if (request.height == 0)
        request.height = static_cast<std::int32_t>(std::lround(request.width / shape));
    return request;
}

std::int32_t AtLeast(const CameraSide& side, double wanted) {
    if (wanted <= side.least) return side.least;
    if (wanted >= side.most) return side.most;
    const auto steps = static_cast<std::int32_t>(std::ceil((wanted - side.least) / side.step));
    return std::min(side.least + steps * side.step, side.most);
}

// What exceeds the range is made smaller in its shape.
CameraFormat SizeWithin(const CameraSizes& sizes, const CameraRequest& request) {
    const double fits = std::min({1.0, static_cast<double>(sizes.width.most) / request.width,
                                  static_cast<double>(sizes.height.most) / request.height});
    return {0,
            AtLeast(sizes.width, request.width * fits),
            AtLeast(sizes.height, request.height * fits),
            {}};
}

double Seconds(const CameraInterval& interval) {
    return static_cast<double>(interval.numerator) / interval.denominator;
}

CameraInterval IntervalWithin(const CameraIntervals& intervals, std::int32_t rate) {
    const CameraInterval requested = {1000, static_cast<std::uint32_t>(rate)};
    if (Seconds(requested) <= Seconds(intervals.shortest)) return intervals.shortest;
    if (Seconds(requested) >= Seconds(intervals.longest)) return intervals.longest;
    return requested;
}

// How much of what was requested there is, at most all.
double Share(double there, double requested) { return std::min(1.0, there / requested); }

double RateShare(std::int32_t rate, std::int32_t requested) {
    return rate == 0 || rate >= kRateReached * requested ? 1.0 : Share(rate, requested);
}

enum class Likeness { Same, SameShape, Other };

Likeness LikenessOf(const CameraFormat& format, const CameraRequest& request) {
    if (format.width == request.width && format.height == request.height) return Likeness::Same;
    const double shape = static_cast<double>(format.width) / format.height;
    const double requested = static_cast<double>(request.width) / request.height;
    return std::abs(shape / requested - 1) <= kSameShape ? Likeness::SameShape : Likeness::Other;
}

// The lowest is the best.
auto RankOf(const CameraFormat& format, const CameraPixelRow& row, const CameraRequest& request) {
    const std::int32_t rate = RateOf(format.interval);
    const double given = Share(format.width, request.width) * Share(format.height, request.height) *
                         RateShare(rate, request.rate);
    return std::tuple(row.kind == Kind::Greys, -given, LikenessOf(format, request), row.kind,
                      std::int64_t{format.width} * format.height, rate);
}

}  // namespace

std::span<const CameraPixelRow> CameraPixels() { return kPixels; }

const CameraPixelRow* FindCameraPixels(std::uint32_t code) {
    const auto* row = std::find_if(std::begin(kPixels), std::end(kPixels),
                                   [&](const CameraPixelRow& each) { return each.code == code; });
    return row == std::end(kPixels) ? nullptr : row;
}

std::optional<CameraFormat> ChooseCameraFormat(const CameraOffers& offers, CameraRequest request) {
    request = Completed(request);
    using Rank = decltype(RankOf(CameraFormat{}, kPixels[0], request));
    std::optional<CameraFormat> best;
    std::optional<Rank> best_rank;
    const auto consider = [&](const CameraFormat& format, const CameraPixelRow& row) {
        const Rank rank = RankOf(format, row, request);
        if (best_rank && *best_rank <= rank) return;
        best = format;
        best_rank = rank;
    };
    const std::vector<std::uint32_t> offered = offers.PixelFormats();
    for (const CameraPixelRow& row : kPixels) {
        if (std::find(offered.begin(), offered.end(), row.code) == offered.end()) continue;
        for (const CameraSizes& sizes : offers.Sizes(row.code)) {
            CameraFormat format = SizeWithin(sizes, request);
            format.pixels = row.code;
            const auto intervals = offers.Intervals(row.code, format.width, format.height);
            if (intervals.empty()) consider(format, row);
            for (const CameraIntervals& each : intervals) {
                format.interval = IntervalWithin(each, request.rate);
                consider(format, row);
            }
        }
    }
    return best;
}

}  // namespace engine
