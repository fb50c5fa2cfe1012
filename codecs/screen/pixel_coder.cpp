#include "codecs/screen/pixel_coder.h"

#include <algorithm>
#include <cstddef>

namespace codecs::screen {
namespace {

constexpr int kColours = 256;
constexpr int kIndexCache = 8;

constexpr int SymbolsOfLayer(int layer) {
    return layer == 0 ? 2 : layer <= 7 ? 3 : layer <= 13 ? 4 : 5;
}

struct Around {
    std::uint8_t above_left;
    std::uint8_t above;
    std::uint8_t above_right;
    std::uint8_t left;
};

// Which of the neighbours are equal, by how many values there are among them.
int LayerOf(const Around& at, int values) {
    const bool above = at.above == at.above_left;
    const bool right = at.above_right == at.above_left;
    const bool left = at.left == at.above_left;
    if (values == 1) return 0;
    if (values == 4) return 14;
    if (values == 2) {
        if (above) return right ? 1 : left ? 2 : 3;
        if (right) return left ? 4 : 5;
        return left ? 6 : 7;
    }
    if (above) return 8;
    if (right) return 9;
    if (left) return 10;
    if (at.above_right == at.above) return 11;
    return at.above == at.left ? 12 : 13;
}

}  // namespace

PixelCoder::PixelCoder(int cached)
    : cached_(cached),
      cache_model_(cached + 1, ModelLimit::Low),
      full_model_(kColours, ModelLimit::High) {
    for (int layer = 0; layer < kLayers; ++layer)
        context_models_[Index(layer)].fill(AdaptiveModel<5>(
            SymbolsOfLayer(layer), layer == 0 ? ModelLimit::Adaptive : ModelLimit::Low));
    Reset();
}

void PixelCoder::Reset() {
    cache_model_.Reset();
    full_model_.Reset();
    for (auto& layer : context_models_)
        for (auto& model : layer) model.Reset();
    for (std::size_t i = 0; i < cache_.size(); ++i) cache_[i] = static_cast<std::uint8_t>(i);
    if (cached_ == kIndexCache) return;
    // What is never among the first three does not matter.
    cache_[0] = kNew;
    cache_[1] = kKept;
    cache_[2] = kMoved;
}

void PixelCoder::CodeExcept(ArithmeticCoder& out, int value,
                            std::span<const std::uint8_t> excluded) {
    const int held = cached_ + 4;
    int place = 0;
    int symbol = 0;  // the place among those that are not excluded
    for (; place < held && cache_[Index(place)] != value; ++place)
        if (std::ranges::find(excluded, cache_[Index(place)]) == excluded.end()) ++symbol;
    if (place < held && symbol < cached_) {
        cache_model_.Code(out, symbol);
    } else {
        cache_model_.Code(out, cached_);
        full_model_.Code(out, value);
        place = std::min(place, held - 1);
    }
    std::copy_backward(cache_.begin(), cache_.begin() + place, cache_.begin() + place + 1);
    cache_[0] = static_cast<std::uint8_t>(value);
}

void PixelCoder::CodeInContext(ArithmeticCoder& out, PlaneView plane, const Rect& region, int x,
                               int y) {
    const std::ptrdiff_t stride = plane.width;
    const std::uint8_t* const pixel = plane.Row(region.y + y) + region.x + x;
    Around at;
    if (y == 0) {
        at.left = at.above = at.above_left = at.above_right = pixel[-1];
    } else {
        at.above = pixel[-stride];
        at.above_left = at.left = at.above;
        if (x > 0) {
            at.above_left = pixel[-stride - 1];
            at.left = pixel[-1];
        }
        at.above_right = x + 1 < region.width ? pixel[1 - stride] : at.above;
    }
    const int variant = (x >= 2 && pixel[-2] == at.left ? 1 : 0) +
                        (y >= 2 && pixel[-2 * stride] == at.above ? 2 : 0);
    const std::uint8_t value = *pixel;

    std::array<std::uint8_t, 4> values;
    int count = 0;
    int symbol = -1;
    for (const std::uint8_t neighbour : {at.above_left, at.above, at.above_right, at.left}) {
        const auto end = values.begin() + count;
        if (std::find(values.begin(), end, neighbour) != end) continue;
        if (neighbour == value) symbol = count;
        values[Index(count++)] = neighbour;
    }
    AdaptiveModel<5>& model = context_models_[Index(LayerOf(at, count))][Index(variant)];
    model.Code(out, symbol < 0 ? count : symbol);
    if (symbol < 0) CodeExcept(out, value, std::span(values).first(Index(count)));
}

}  // namespace codecs::screen
