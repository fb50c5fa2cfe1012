// Tells films from text by how tiles change.
#pragma once

#include <cstdint>
#include <span>

#include "codecs/screen/screen_state.h"

namespace codecs::screen {

/// Changes that come soon one after the other are a film's once there are so many.
constexpr int kFilmChanges = 3;
/// Soon is within so long.
constexpr double kFilmSeconds = 0.5;

struct CellChanges {
    std::span<std::uint8_t> changed;      // not 0 where a cell is not what it was
    std::span<const std::uint8_t> moved;  // where it is what stood elsewhere
};

/// Whether any of a tile's cells shows what was not there before.
bool HasNewContent(const Grid& grid, const CellChanges& cells, int x, int y);

/// Counts the changes of all tiles of the state, and finds those that are parts of films whatever
/// their colours. What changes beside a film belongs to it.
void FindFilms(const Grid& grid, PixelView source, PixelView before, const CellChanges& cells,
               double seconds, ScreenState& state);

/// Tiles of films that have come to rest are films no more, as many as there are bits for, and
/// count as changed, so that they are coded as what else is. True when there are any.
bool SettleFilms(const Grid& grid, double seconds, double bits, const CellChanges& cells,
                 ScreenState& state);

}  // namespace codecs::screen
