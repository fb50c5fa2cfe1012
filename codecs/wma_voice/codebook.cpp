#include "codecs/wma_voice/codebook.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numbers>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kMostEntries = 256;  // of a stage
constexpr int kSurvivors = 12;     // sums of entries that a stage hands to the next

}  // namespace

Codebook::Codebook(const CodebookTable& table) : values_(table.values) {
    std::size_t from = 0;
    for (const CodebookStage& stage : table.stages) {
        Stage& to = stages_.emplace_back();
        to.entries = stage.entries;
        to.values.resize(Index(stage.entries * values_));
        for (int entry = 0; entry < stage.entries; ++entry)
            for (int i = 0; i < values_; ++i)
                to.values[Index(i * stage.entries + entry)] = static_cast<float>(
                    stage.lowest_pi * std::numbers::pi + stage.step * table.bytes[from++]);
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
        const std::size_t entries = Index(stage.entries);
        std::array<Extension, kSurvivors> best;
        int found = 0;
        for (int survivor = 0; survivor < count; ++survivor) {
            std::array<float, kMostEntries> errors{};
            for (std::size_t i = 0; i < Index(values_); ++i) {
                const float left = target[i] - survivors[Index(survivor)].vector[i];
                const float weight = weights[i];
                const float* const values = stage.values.data() + i * entries;
                for (std::size_t e = 0; e < entries; ++e) {
                    const float off = left - values[e];
                    errors[e] += weight * off * off;
                }
            }
            for (int e = 0; e < stage.entries; ++e) {
                const float error = errors[Index(e)];
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
            for (std::size_t i = 0; i < Index(values_); ++i)
                to.vector[i] += stage.values[i * entries + Index(from.entry)];
        }
        count = found;
    }
    return survivors.front();
}

}  // namespace codecs::wma_voice
