#include "codecs/wma_voice/codebook.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numbers>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kSurvivors = 12;  // sums of entries that a stage hands to the next

}  // namespace

Codebook::Codebook(const CodebookTable& table) : values_(table.values) {
    std::size_t from = 0;
    for (const CodebookStage& stage : table.stages) {
        Stage& to = stages_.emplace_back();
        to.entries = stage.entries;
        for (int i = 0; i < stage.entries * values_; ++i)
            to.values.push_back(static_cast<float>(stage.lowest_pi * std::numbers::pi +
                                                   stage.step * table.bytes[from++]));
    }
}

int Codebook::StageBits(int stage) const {
    return static_cast<int>(
        std::bit_width(static_cast<unsigned>(stages_[Index(stage)].entries - 1)));
}

CodebookChoice Codebook::Search(std::span<const float> target,
                                std::span<const float> weights) const {
    std::array<CodebookChoice, kSurvivors> survivors;
    int count = 1;
    struct Extension {
        float error;
        std::int16_t survivor;
        std::int16_t entry;
    };
    for (std::size_t s = 0; s < stages_.size(); ++s) {
        const Stage& stage = stages_[s];
        std::array<Extension, kSurvivors> best;
        int found = 0;
        for (int survivor = 0; survivor < count; ++survivor) {
            std::array<float, kMostValues> left;
            for (std::size_t i = 0; i < Index(values_); ++i)
                left[i] = target[i] - survivors[Index(survivor)].vector[i];
            const float* entry = stage.values.data();
            for (int e = 0; e < stage.entries; ++e, entry += values_) {
                float error = 0;
                for (std::size_t i = 0; i < Index(values_); ++i) {
                    const float off = left[i] - entry[i];
                    error += weights[i] * off * off;
                }
                if (found == kSurvivors && error >= best[kSurvivors - 1].error) continue;
                int place = found < kSurvivors ? found++ : kSurvivors - 1;
                for (; place > 0 && best[Index(place - 1)].error > error; --place)
                    best[Index(place)] = best[Index(place - 1)];
                best[Index(place)] = {error, static_cast<std::int16_t>(survivor),
                                      static_cast<std::int16_t>(e)};
            }
        }
        const auto before = survivors;
        for (int k = 0; k < found; ++k) {
            const Extension& from = best[Index(k)];
            CodebookChoice& to = survivors[Index(k)];
            to = before[Index(from.survivor)];
            to.error = from.error;
            to.entries[s] = static_cast<std::uint8_t>(from.entry);
            const float* const entry = stage.values.data() + Index(from.entry * values_);
            for (std::size_t i = 0; i < Index(values_); ++i) to.vector[i] += entry[i];
        }
        count = found;
    }
    return survivors.front();
}

}  // namespace codecs::wma_voice
