#include "codecs/common/picture_cost.h"

#include <algorithm>
#include <cstdlib>

namespace codecs {
namespace {

constexpr int kRowStep = 4;

// Of `count` samples; plain enough for the compiler to make vectors of.
std::uint32_t RowDifference(const std::uint8_t* a, const std::uint8_t* b, int count) {
    std::uint32_t sum = 0;
    for (int x = 0; x < count; ++x) sum += static_cast<std::uint32_t>(std::abs(a[x] - b[x]));
    return sum;
}

}  // namespace

double IntraCost(const LumaPlane& picture) {
    double sum = 1;
    const std::uint8_t* row = picture.samples;
    for (int y = 0; y + 1 < picture.height; y += kRowStep, row += kRowStep * picture.stride) {
        sum += RowDifference(row, row + 1, picture.width - 1);
        sum += RowDifference(row, row + picture.stride, picture.width);
    }
    return sum;
}

double NewPart(double found_new) {
    constexpr double kSlope = 0.45;
    constexpr double kOtherScene = 0.5;  // from here on ...
    constexpr double kAllNew = 0.65;  // ... to here, motion search has found nothing but likeness
    const double beyond = (found_new - kOtherScene) / (kAllNew - kOtherScene);
    return kSlope * found_new + (1 - kSlope) * std::clamp(beyond, 0.0, 1.0);
}

double InterCost(const LumaPlane& picture, const LumaPlane& before) {
    double sum = 0;
    const int width = std::min(picture.width, before.width);
    const int height = std::min(picture.height, before.height);
    const std::uint8_t* row = picture.samples;
    const std::uint8_t* other = before.samples;
    for (int y = 0; y < height; y += kRowStep) {
        sum += RowDifference(row, other, width);
        row += kRowStep * picture.stride;
        other += kRowStep * before.stride;
    }
    return sum;
}

}  // namespace codecs
