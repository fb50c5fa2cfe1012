// Linear prediction and line spectral frequencies.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "codecs/wma_voice/stream_format.h"

namespace codecs::wma_voice {

/// A(z) = 1 + sum of a[i] z^-(i + 1); only the first `order` values are used.
using Prediction = std::array<float, kMostOrder>;
/// Radians, rising.
using LineSpectrum = std::array<float, kMostOrder>;

/// What stands for a stream's frame before the first.
LineSpectrum FirstSpectrum(int order);

/// A decoder's: keeps neighbours apart, and all within 0 and pi.
void Stabilise(std::span<float> spectrum);

/// A decoder's.
Prediction ToPrediction(std::span<const float> spectrum);

/// Autocorrelation method, with `window` on the samples. One object a stream.
class SpectrumAnalysis {
  public:
    explicit SpectrumAnalysis(const StreamFormat& format);

    int WindowSamples() const { return static_cast<int>(window_.size()); }
    /// @param samples  WindowSamples()
    /// Gives the last one again where none can be found.
    LineSpectrum Analyse(std::span<const float> samples);

  private:
    int order_;
    std::vector<float> window_;
    std::array<double, kMostOrder + 1> lag_window_;
    LineSpectrum last_;
};

}  // namespace codecs::wma_voice
