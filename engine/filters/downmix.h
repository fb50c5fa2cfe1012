// How many channels become two.
#pragma once

#include <vector>

#include "engine/base/av/av_ptr.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The gains of each channel of `from` in the left one, then of each in the right one: the front
/// ones whole; the centre, the low-frequency one and the surround ones (both from a single one
/// behind, 3 dB lower) by the plan's attenuations, a gain of 10^(-dB / 20); and all of them lowered
/// together so far that no audio of the source can overload a channel. Empty for a layout with
/// other channels.
std::vector<double> DownmixGains(const AVChannelLayout& from, const Downmix& levels);

}  // namespace engine
