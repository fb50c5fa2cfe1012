#include "codecs/wma_lossless/configuration.h"

#include <array>

namespace codecs::wma_lossless {
namespace {

// The one coefficient that the tap has: 31 of 32 parts, stored less one.
constexpr std::uint32_t kTapScaling = 5;
constexpr std::uint32_t kTapCoefficient = 30;

// Whether two channels are coded by their difference, and which depths it is worth trying for.
enum class Pairs : std::uint8_t { Apart, Joined };
enum class Depth : std::uint8_t { Any, Narrow, Wide };

struct Candidate {
    Depth depth;
    Pairs pairs;
    bool tap;
    FilterShape multichannel;
    std::array<FilterShape, 5> stages;  // order 0 ends them
};

// clang-format off
// Chosen on the pieces of bench/audio_lossless, each where it leaves least of some of them.
constexpr Candidate kCandidates[] = {
    // depth        pairs          tap    multichannel  stages
    {Depth::Any,    Pairs::Joined, true,  {2, 13}, {{{64, 14}, {256, 14}, {32, 12}, {16, 10}}}},
    {Depth::Narrow, Pairs::Joined, true,  {8, 13}, {{{32, 14}, {256, 14}, {128, 13}, {32, 11}, {16, 10}}}},  // pure tones
    {Depth::Any,    Pairs::Apart,  true,  {2, 12}, {{{32, 14}, {256, 14}, {128, 12}, {32, 10}, {16, 9}}}},
    {Depth::Any,    Pairs::Joined, true,  {2, 11}, {{{32, 11}, {16, 10}}}},                  // what changes fast
    {Depth::Narrow, Pairs::Joined, true,  {16, 14}, {{{32, 13}, {16, 11}}}},                 // a tone alone
    {Depth::Narrow, Pairs::Joined, true,  {2, 14}, {{{256, 15}, {32, 14}, {16, 12}}}},       // hiss
    {Depth::Narrow, Pairs::Joined, false, {2, 13}, {{{32, 14}, {256, 15}, {16, 13}}}},
    {Depth::Narrow, Pairs::Joined, false, {0, 0},  {{{16, 15}}}},                            // white noise
    {Depth::Wide,   Pairs::Joined, true,  {2, 10}, {{{16, 10}, {128, 11}, {48, 14}, {32, 11}}}},
    {Depth::Wide,   Pairs::Apart,  true,  {2, 10}, {{{16, 10}, {128, 11}, {48, 14}, {32, 11}}}},
};
// clang-format on

std::vector<Configuration> MakeCandidates(bool wide, bool stereo) {
    std::vector<Configuration> all;
    for (const Candidate& row : kCandidates) {
        if (row.depth == (wide ? Depth::Narrow : Depth::Wide)) continue;
        Configuration made{row.tap, stereo && row.pairs == Pairs::Joined, row.multichannel, {}};
        for (const FilterShape& stage : row.stages)
            if (stage.order > 0) made.stages.push_back(stage);
        all.push_back(made);
    }
    return all;
}

}  // namespace

std::span<const Configuration> Candidates(const StreamFormat& format) {
    static const std::array<std::vector<Configuration>, 4> all = {
        MakeCandidates(false, false), MakeCandidates(false, true), MakeCandidates(true, false),
        MakeCandidates(true, true)};
    return all[(format.Bits() > 16 ? 2U : 0U) + (format.Channels() == 2 ? 1U : 0U)];
}

void WriteConfiguration(const Configuration& configuration, const StreamFormat& format,
                        int mean_speed, BitWriter& out) {
    const auto number = [&](int value, int bits) {
        out.Put(static_cast<std::uint32_t>(value), bits);
    };
    const bool multichannel = configuration.multichannel.order > 0;
    out.Put(0, 1);  // no arithmetic coding
    out.Put(configuration.tap ? 1 : 0, 1);
    out.Put(configuration.difference ? 1 : 0, 1);
    out.Put(multichannel ? 1 : 0, 1);
    if (configuration.tap) {
        out.Put(0, 4);  // order 1
        out.Put(kTapScaling, 4);
        out.Put(kTapCoefficient, kTapScaling);
    }
    if (multichannel) {
        number(configuration.multichannel.order / 2 - 1, 4);
        number(configuration.multichannel.scaling, 4);
        out.Put(0, 1);  // coefficients begin at 0
    }
    out.Put(0, 1);  // those of the stages too
    for (int channel = 0; channel < format.Channels(); ++channel) {
        number(static_cast<int>(configuration.stages.size()) - 1, 3);
        for (const FilterShape& stage : configuration.stages) number(stage.order / 8 - 1, 7);
        for (const FilterShape& stage : configuration.stages) number(stage.scaling, 4);
    }
    number(mean_speed, 3);
    out.Put(0, 8);  // quantiser step 1
}

}  // namespace codecs::wma_lossless
