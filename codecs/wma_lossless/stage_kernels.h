// The inner loops of the adaptive filters, in vectors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs::wma_lossless {

/// Orders are multiples of this one, up to the largest.
constexpr int kOrderStep = 16;
constexpr int kLargestOrder = 256;

/// A sign-LMS filter on a run of samples. What it predicts from is laid out newest first: the
/// `order` values before sample n begin at place `count` - n.
template <typename Value>
struct StageRun {
    std::int16_t* weights;
    /// How far the weights move where the error is below, at and above zero, `order` each: that of
    /// a value depends on how many samples ago it was.
    const std::int16_t* steps;
    const std::int16_t* signs;  // of the values: -1, 0 or 1
    const Value* values;
    std::int32_t* samples;  // become what is left over
    int count;
    int order;
    int scaling;
};

/// Sums are modulo 2^32, as decoders have them. False when one has come near to where it wraps, so
/// that a decoder with wider sums could differ. Any thread; cannot fail.
bool RunNarrowStage(const StageRun<std::int16_t>& run);
/// False when a sum has wrapped.
bool RunWideStage(const StageRun<std::int32_t>& run);

}  // namespace codecs::wma_lossless
