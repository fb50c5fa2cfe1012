#include "codecs/wma_standard/rate_control.h"

#include <algorithm>

namespace codecs::wma_standard {
namespace {

// How much coarser frames become while the reservoir empties, in dB.
constexpr double kReservoirDb = 12;
// How long the lasting offset remembers.
constexpr double kMemorySeconds = 1;
// How far a stream is to be ahead of its rate: a part of the reservoir, and of what has been
// written, so that short streams keep their rate too.
constexpr double kMostAhead = 0.25;
constexpr double kAheadOfTime = 0.01;

}  // namespace

double ConstantRate::Offset(double fair_offset) {
    // A mean of all so far, until that is longer than the memory.
    const double memory = std::max(settings_.frame_seconds / kMemorySeconds, 1.0 / (1.0 + judged_));
    ++judged_;
    lasting_offset_ += std::min(memory, 1.0) * (fair_offset - lasting_offset_);
    const double time_bits = static_cast<double>(frames_) * settings_.frame_bits;
    const double ahead = std::min(kMostAhead * Reservoir(), kAheadOfTime * time_bits);
    return lasting_offset_ + kReservoirDb * (-Behind() - ahead) / Reservoir();
}

double ConstantRate::MostBits() const {
    return std::max(Reservoir() + Behind() + settings_.frame_bits, 0.2 * settings_.frame_bits);
}

void ConstantRate::Wrote(std::int64_t bits) {
    ++frames_;
    written_ = static_cast<double>(bits);
}

double ConstantRate::Behind() const {
    return static_cast<double>(frames_) * settings_.frame_bits - written_;
}

}  // namespace codecs::wma_standard
