// How a frame is cut into blocks around attacks.
#pragma once

#include <vector>

namespace codecs::wma {

/// Blocks are halved towards an attack: it is in one of the smallest size, whose neighbours grow
/// with the distance.
/// @param attacks  whether there is one, by slices of the frame; as many as a power of two
/// @param sizes    of blocks, at least 1: the frame's and its halves
/// @return  of each block, in order, how often the frame was halved for it
std::vector<int> BlockLayout(const std::vector<bool>& attacks, int sizes);

}  // namespace codecs::wma
