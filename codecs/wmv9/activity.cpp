#include "codecs/wmv9/activity.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace codecs::wmv9 {
namespace {

constexpr double kSamples = 256;  // of a macroblock

Brightness BrightnessOf(std::int64_t sum, std::int64_t squares, double samples) {
    const double mean = static_cast<double>(sum) / samples;
    const double square = static_cast<double>(squares) / samples;
    return {mean, std::sqrt(std::max(0.0, square - mean * mean))};
}

}  // namespace

Brightness MeasureBrightness(const Kernels& kernels, const Frame& frame) {
    const Plane& luma = frame[0];
    std::int64_t sum = 0;
    std::int64_t squares = 0;
    for (int y = 0; y < luma.height; y += 16)
        for (int x = 0; x < luma.width; x += 16) {
            std::uint32_t of_block = 0;
            std::uint32_t of_squares = 0;
            kernels.moments(luma.At(x, y), luma.stride, of_block, of_squares);
            sum += of_block;
            squares += of_squares;
        }
    return BrightnessOf(sum, squares, static_cast<double>(luma.width) * luma.height);
}

bool ActivityMeter::Begin(int number) {
    current_ = Index(std::max(number, 0)) % kept_.size();
    Kept& kept = kept_[current_];
    if (number >= 0 && kept.number == number) return false;
    kept.number = number;
    kept.activity.values.resize(Index(width_) * rows_.size());
    return true;
}

void ActivityMeter::MeasureRow(const Kernels& kernels, const Frame& source, int y) {
    Row row;
    double* value = kept_[current_].activity.values.data() + Index(y) * Index(width_);
    for (int x = 0; x < width_; ++x, ++value) {
        std::uint32_t sum = 0;
        std::uint32_t squares = 0;
        kernels.moments(source[0].At(16 * x, 16 * y), source[0].stride, sum, squares);
        const double mean = sum / kSamples;
        *value = std::log2(1 + std::max(0.0, squares / kSamples - mean * mean));
        row.sum += sum;
        row.squares += squares;
    }
    rows_[Index(y)] = row;
}

void ActivityMeter::End() {
    Activity& activity = kept_[current_].activity;
    std::vector<double>& values = activity.values;
    const auto macroblocks = static_cast<double>(values.size());
    const double middle = std::accumulate(values.begin(), values.end(), 0.0) / macroblocks;
    for (double& value : values) value -= middle;
    Row whole;
    for (const Row& row : rows_) {
        whole.sum += row.sum;
        whole.squares += row.squares;
    }
    activity.brightness = BrightnessOf(whole.sum, whole.squares, kSamples * macroblocks);
}

}  // namespace codecs::wmv9
