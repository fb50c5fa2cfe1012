// What filters a group of frames is coded with.
#pragma once

#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_lossless/stream_format.h"

namespace codecs::wma_lossless {

/// An adaptive filter: how many values it predicts from, and by how many bits its sums are shifted.
struct FilterShape {
    int order;
    int scaling;
};

struct Configuration {
    bool tap;                         // takes 31/32 of the sample before off
    bool difference;                  // two channels become their middle and their difference
    FilterShape multichannel;         // predicts a channel from all; order even, 0 = none
    std::vector<FilterShape> stages;  // 1 to 8, one after the other
};

/// The configurations that are worth trying, the one that is best most often first.
std::span<const Configuration> Candidates(const StreamFormat& format);

/// @param mean_speed  of the running means that choose the lengths of codes, 0 to 7
void WriteConfiguration(const Configuration& configuration, const StreamFormat& format,
                        int mean_speed, BitWriter& out);

}  // namespace codecs::wma_lossless
