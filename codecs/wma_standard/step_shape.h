// Chooses how a block's steps differ from band to band, for what telling it costs.
#pragma once

#include <span>

namespace codecs::wma_standard {

/// Exponents move a step by that many dB.
constexpr double kExponentDb = 20.0 / 16;

/// Exponents of a channel's bands: near the wanted steps, smooth where that saves more bits than
/// it loses.
/// @param wanted   steps in exponents' units, beside the block's largest step: 0 or below
/// @param weights  of each band: bits that a step beside the wanted one by one unit loses
/// @param shape    as many, 0 or below, one of them 0
/// @return what is lost and what telling them takes, in bits
double ChooseShape(std::span<const float> wanted, std::span<const float> weights,
                   std::span<int> shape);

/// What a shape loses beside the wanted steps, in bits.
double ShapeLoss(std::span<const float> wanted, std::span<const float> weights,
                 std::span<const int> shape);

}  // namespace codecs::wma_standard
