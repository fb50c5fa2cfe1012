// Gathers tiles that are to be painted in few rectangles.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/screen/plane_view.h"

namespace codecs::screen {

constexpr int kTile = 16;  // pixels along each side

struct TileCluster {
    Rect tiles;
    std::uint8_t kind = 0;
};

/// Rectangles that cover all tiles which are not 0, at most `most` of them, by their left edges.
/// Tiles of unlike values share a rectangle only where there are more than `most` values.
/// @param tiles    rows of `columns`
/// @param painted  what is not 0 is painted wherever a rectangle covers it
std::vector<TileCluster> ClusterTiles(std::span<const std::uint8_t> tiles,
                                      std::span<const std::uint8_t> painted, int columns,
                                      std::size_t most);

}  // namespace codecs::screen
