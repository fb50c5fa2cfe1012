// The inner loops of the adaptive filters, in vectors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs::wma_lossless {

/// Orders are multiples of this one, up to the largest.
constexpr int kOrderStep = 16;
constexpr int kLargestOrder = 256;
/// Samples that are predicted with the same weights, each with what the errors before it have moved
/// them by.
constexpr int kBlock = 4;

/// With room for vectors that reach beyond the last one.
constexpr int MovedPlaces(int count, int order) { return count + order + kOrderStep; }

/// A sign-LMS filter on a run of samples. What it predicts from is laid out newest first: the
/// `order` values before sample n begin at place `count` - n. Before and behind all of them are
/// kBlock more that can be read.
template <typename Value, typename Sum>
struct StageRun {
    std::int16_t* weights;
    /// How far an error moves the weight of a value that is so many samples old.
    const std::int16_t* steps;
    const std::int16_t* signs;  // of the values: -1, 0 or 1
    const Value* values;
    std::int32_t* samples;  // become what is left over
    Sum* moved;             // memory: MovedPlaces(`count`, `order`) * (kBlock - 1)
    int count;              // a multiple of kBlock
    int order;
    int scaling;
};
using NarrowStageRun = StageRun<std::int16_t, std::int32_t>;
using WideStageRun = StageRun<std::int32_t, std::int64_t>;

/// Weights wrap as those of decoders do. False when a sum has wrapped in 32 bits, or has come near
/// to it, so that a decoder with wider sums could differ. Any thread; cannot fail.
bool RunNarrowStage(const NarrowStageRun& run);
bool RunWideStage(const WideStageRun& run);

}  // namespace codecs::wma_lossless
