// What is known of the screen after the frames so far.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/screen/pixel_kernels.h"
#include "codecs/screen/plane_view.h"
#include "codecs/screen/stream_header.h"
#include "codecs/screen/tile_clusters.h"

namespace codecs::screen {

/// Cells and tiles of a picture, from the bottom left corner.
struct Grid {
    Grid(int picture_width, int picture_height)
        : width(picture_width),
          height(picture_height),
          cell_columns((width + kCell - 1) / kCell),
          cell_rows((height + kCell - 1) / kCell),
          tile_columns((width + kTile - 1) / kTile),
          tile_rows((height + kTile - 1) / kTile) {}

    Rect Cell(int x, int y) const { return Clipped(x * kCell, y * kCell, kCell); }
    Rect Tile(int x, int y) const { return Clipped(x * kTile, y * kTile, kTile); }
    std::size_t CellPlace(int x, int y) const { return Index(y) * Index(cell_columns) + Index(x); }
    std::size_t TilePlace(int x, int y) const { return Index(y) * Index(tile_columns) + Index(x); }
    std::size_t Pixel(int x, int y) const { return Index(y) * Index(width) + Index(x); }
    std::size_t Cells() const { return Index(cell_columns) * Index(cell_rows); }
    std::size_t Tiles() const { return Index(tile_columns) * Index(tile_rows); }

    int width;
    int height;
    int cell_columns;
    int cell_rows;
    int tile_columns;
    int tile_rows;

  private:
    Rect Clipped(int x, int y, int side) const {
        return {x, y, std::min(side, width - x), std::min(side, height - y)};
    }
};

struct TileState {
    bool photo = false;         // all its pixels are painted, whatever the palette has
    std::uint8_t painted = 0;   // the quantiser that it was painted with; 0 = nothing is
    std::uint8_t changes = 0;   // soon one after the other
    std::uint8_t flickers = 0;  // of those, such as a film's
    bool film = false;          // changes like one, whatever its colours, and is painted meanwhile
    double changed_at = 0;      // seconds
    double photo_at = 0;        // since when it is a photo
};

struct ScreenState {
    Palette palette{};
    int colours = 0;          // of it that are in use, from entry 0 on
    bool exact = false;       // it had all colours of the picture when it was chosen
    std::optional<int> mask;  // the index of pixels that are painted
    std::vector<TileState> tiles;
    std::vector<std::uint8_t> painted_pixels;  // of each cell
    double key_at = -1e9;                      // seconds
    std::int64_t missed_at_key = 0;  // pixels outside photos that the palette had no colour for
};

}  // namespace codecs::screen
