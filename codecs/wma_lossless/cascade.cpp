#include "codecs/wma_lossless/cascade.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <utility>

#include "codecs/common/index.h"
#include "codecs/wma_lossless/stage_kernels.h"

namespace codecs::wma_lossless {
namespace {

constexpr int kFastStep = 16;
constexpr int kStep = 8;

using Steps = std::array<std::int16_t, kLargestOrder>;

// The newest sixteenth of the values weighs whole, the next one a quarter, the rest an eighth.
Steps StepsOf(int order, int step) {
    Steps steps = {};
    for (int i = 0; i < order; ++i)
        steps[Index(i)] = static_cast<std::int16_t>(i < order / 16  ? step
                                                    : i < order / 8 ? step / 4
                                                                    : step / 8);
    return steps;
}

const Steps& StepsFor(int order, bool fast) {
    static const auto all = [] {
        std::array<std::array<Steps, 2>, kLargestOrder / kOrderStep> made = {};
        for (int i = 0; i < kLargestOrder / kOrderStep; ++i)
            made[Index(i)] = {StepsOf((i + 1) * kOrderStep, kStep),
                              StepsOf((i + 1) * kOrderStep, kFastStep)};
        return made;
    }();
    return all[Index(order / kOrderStep - 1)][fast ? 1 : 0];
}

std::size_t PlacesFor(int most_samples) { return Index(most_samples + kLargestOrder + 2 * kBlock); }

}  // namespace

CascadeScratch::CascadeScratch(int most_samples)
    : signs_(PlacesFor(most_samples)),
      narrow_(PlacesFor(most_samples)),
      wide_(PlacesFor(most_samples)),
      narrow_moved_(Index((kBlock - 1) * MovedPlaces(most_samples, kLargestOrder))),
      wide_moved_(narrow_moved_.size()) {}

Cascade::Cascade(const std::vector<FilterShape>& stages, int bits_per_sample)
    : most_((1 << (bits_per_sample - 1)) - 1) {
    for (const FilterShape& shape : stages) {
        assert(shape.order % kOrderStep == 0 && shape.order <= kLargestOrder);
        stages_.push_back({shape, std::vector<std::int16_t>(Index(shape.order)),
                           std::vector<std::int32_t>(Index(shape.order))});
    }
}

void Cascade::Restart() {
    for (Stage& stage : stages_) {
        std::ranges::fill(stage.weights, std::int16_t{0});
        std::ranges::fill(stage.history, 0);
    }
}

bool Cascade::Run(std::span<std::int32_t> values, bool fast, CascadeScratch& scratch) {
    bool safe = true;
    for (Stage& stage : stages_) safe = RunStage(stage, values, fast, scratch) && safe;
    return safe;
}

bool Cascade::RunStage(Stage& stage, std::span<std::int32_t> values, bool fast,
                       CascadeScratch& scratch) const {
    const std::size_t count = values.size();
    assert(count % kBlock == 0);
    const std::span<std::int32_t> all = std::span(scratch.wide_).subspan(kBlock);
    for (std::size_t i = 0; i < count; ++i)
        all[count - 1 - i] = std::clamp(values[i], -most_ - 1, most_);
    std::ranges::copy(stage.history, all.begin() + static_cast<std::ptrdiff_t>(count));
    std::copy_n(all.begin(), stage.history.size(), stage.history.begin());
    const std::size_t laid_out = count + stage.history.size();
    for (std::size_t i = 0; i < laid_out; ++i)
        scratch.signs_[kBlock + i] =
            static_cast<std::int16_t>((all[i] > 0 ? 1 : 0) - (all[i] < 0 ? 1 : 0));

    const auto run = [&](const auto* predicts_from, auto* moved, auto kernel) {
        return kernel({stage.weights.data(), StepsFor(stage.shape.order, fast).data(),
                       scratch.signs_.data() + kBlock, predicts_from, values.data(), moved,
                       static_cast<int>(count), stage.shape.order, stage.shape.scaling});
    };
    constexpr std::int32_t kNarrow = 0x7FFF;
    if (most_ > kNarrow)
        return run(std::as_const(all).data(), scratch.wide_moved_.data(), RunWideStage);
    for (std::size_t i = 0; i < laid_out; ++i)
        scratch.narrow_[kBlock + i] = static_cast<std::int16_t>(all[i]);
    return run(scratch.narrow_.data() + kBlock, scratch.narrow_moved_.data(), RunNarrowStage);
}

}  // namespace codecs::wma_lossless
