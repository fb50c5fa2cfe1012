// Codebooks of line spectral frequencies.
#pragma once

#include <cstdint>
#include <span>

namespace codecs::wma_voice {

/// A value of an entry is lowest_pi * pi + step * byte, in radians.
struct CodebookStage {
    int entries;
    double step;
    double lowest_pi;
};

/// A vector is a sum of one entry a stage.
struct CodebookTable {
    int values;  // of an entry
    std::span<const std::uint8_t> bytes;
    std::span<const CodebookStage> stages;
};

/// Several codebooks stand for vectors whose parts they quantise, one after the other.
struct SpectrumTables {
    std::span<const float> mean;
    std::span<const CodebookTable> spectrum;   // of a superframe's last frame, less the mean
    std::span<const float> interpolation;      // 32 pairs of rows of weights
    std::span<const CodebookTable> residuals;  // of the other two, interleaved
};

/// @param order  10 or 16
const SpectrumTables& SpectrumTablesFor(int order);

}  // namespace codecs::wma_voice
