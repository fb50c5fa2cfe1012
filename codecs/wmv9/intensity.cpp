#include "codecs/wmv9/intensity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kOne = 64;  // a scale that changes nothing
constexpr int kLeastScale = 33;
constexpr int kLargestScale = 95;
constexpr int kLeastShift = -32;
constexpr int kLargestShift = 31;
constexpr int kMiddle = 128;
// Of the difference without a mapping, at most. Chosen by hand on bench/quality fades.
constexpr double kClearly = 0.85;

using Map = std::array<std::uint8_t, 256>;

std::uint8_t Clipped(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

// What the header's two numbers stand for.
struct Line {
    int scale;  // by 64
    int offset;
};

Line LineOf(const Intensity& intensity) {
    const int shift = intensity.shift > kLargestShift ? intensity.shift - 64 : intensity.shift;
    if (intensity.scale == 0)
        return {-kOne, (255 - 2 * intensity.shift) * kOne +
                           (intensity.shift > kLargestShift ? 128 * kOne : 0)};
    return {intensity.scale + 32, shift * kOne};
}

Map LumaMap(const Intensity& intensity) {
    const Line line = LineOf(intensity);
    Map map;
    for (int value = 0; value < 256; ++value)
        map[Index(value)] = Clipped((line.scale * value + line.offset + 32) >> 6);
    return map;
}

Map ChromaMap(const Intensity& intensity) {
    const Line line = LineOf(intensity);
    Map map;
    for (int value = 0; value < 256; ++value)
        map[Index(value)] = Clipped((line.scale * (value - kMiddle) + kMiddle * kOne + 32) >> 6);
    return map;
}

// Of every fourth row, with the reference mapped.
std::int64_t Distance(const LumaPlane& source, const Plane& reference, const Map& map) {
    std::int64_t sum = 0;
    for (int y = 0; y < source.height; y += 4) {
        const std::uint8_t* const a = source.samples + y * source.stride;
        const std::uint8_t* const b = reference.At(0, y);
        for (int x = 0; x < source.width; ++x) sum += std::abs(a[x] - map[b[x]]);
    }
    return sum;
}

}  // namespace

std::optional<Intensity> FindIntensity(const LumaPlane& source, const Brightness& now,
                                       const Frame& reference, const Brightness& before,
                                       TaskTeam& team) {
    constexpr double kLeastMean = 1;          // of a change worth a look, in samples
    constexpr double kLeastDeviation = 0.02;  // as a part
    if (before.deviation < 1) return std::nullopt;
    const double ratio = now.deviation / before.deviation;
    if (std::abs(now.mean - before.mean) < kLeastMean && std::abs(ratio - 1) < kLeastDeviation)
        return std::nullopt;
    const int scale =
        std::clamp(static_cast<int>(std::lround(ratio * kOne)), kLeastScale, kLargestScale);
    const int shift =
        std::clamp(static_cast<int>(std::lround(now.mean - before.mean * scale / kOne)),
                   kLeastShift, kLargestShift);
    const Intensity found{scale - 32, shift < 0 ? shift + 64 : shift};
    if (found == Intensity()) return std::nullopt;
    std::int64_t plain = 0;
    std::int64_t mapped = 0;
    team.Run(2, [&](int task) {
        (task == 0 ? plain : mapped) =
            Distance(source, reference[0], LumaMap(task == 0 ? Intensity() : found));
    });
    if (static_cast<double>(mapped) > kClearly * static_cast<double>(plain)) return std::nullopt;
    return found;
}

void MapIntensity(const Intensity& intensity, const Frame& reference, Frame& mapped) {
    const Map luma = LumaMap(intensity);
    const Map chroma = ChromaMap(intensity);
    for (int i = 0; i < 3; ++i) {
        const Plane& from = reference[i];
        const Plane& to = mapped[i];
        const Map& map = i == 0 ? luma : chroma;
        const int margin = i == 0 ? Frame::kMargin : Frame::kMargin / 2;
        for (int y = -margin; y < from.height + margin; ++y) {
            const std::uint8_t* const in = from.At(-margin, y);
            std::uint8_t* const out = to.At(-margin, y);
            for (int x = 0; x < from.width + 2 * margin; ++x) out[x] = map[in[x]];
        }
    }
}

}  // namespace codecs::wmv9
