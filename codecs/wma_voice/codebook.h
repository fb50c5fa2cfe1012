// A codebook whose vectors are sums of one entry a stage, and the search in it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wma_voice/spectrum_tables.h"

namespace codecs::wma_voice {

constexpr int kMostStages = 4;
constexpr int kMostValues = 20;  // of an entry

/// How a codebook's vector was chosen.
struct CodebookChoice {
    std::array<std::uint8_t, kMostStages> entries{};
    std::array<float, kMostValues> vector{};
    float error = 0;  // weighted squares
};

/// Allocates on construction only.
class Codebook {
  public:
    explicit Codebook(const CodebookTable& table);

    int Values() const { return values_; }
    int Stages() const { return static_cast<int>(stages_.size()); }
    int StageBits(int stage) const;
    /// Both spans hold Values().
    CodebookChoice Search(std::span<const float> target, std::span<const float> weights) const;

  private:
    struct Stage {
        int entries;
        std::vector<float> values;  // the first of all entries, then the second of all ...
    };
    int values_;
    std::vector<Stage> stages_;
};

}  // namespace codecs::wma_voice
