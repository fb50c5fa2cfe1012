#include "codecs/screen/films.h"

#include <algorithm>

#include "codecs/screen/pixel_kernels.h"

namespace codecs::screen {
namespace {

constexpr int kSlight = 24;      // in each channel, at most
constexpr int kManyPart = 16;    // one in so many pixels, at least
constexpr int kMostOfText = 60;  // percent
constexpr int kLeastFlickers = 2;
constexpr int kMostFlickers = 8;
constexpr int kFilmNeighbours = 2;

constexpr double kSettlingSeconds = 0.25;
constexpr double kSettlingBits = 400;  // of a tile

// Whether so many of a rectangle's pixels have changed as text never has, whose paper stays the
// same; or many, and most of them slightly, as a camera's or a decoder's noise has it, where text
// changes by its contrast.
bool Flickers(PixelView source, PixelView before, const Rect& rect) {
    const PixelChanges changes =
        CountChanges(source.Row(rect.y) + rect.x, source.stride, before.Row(rect.y) + rect.x,
                     before.stride, rect.width, rect.height, kSlight);
    return 100 * changes.all > kMostOfText * rect.Area() ||
           (kManyPart * changes.all >= rect.Area() && 2 * changes.slight > changes.all);
}

}  // namespace

bool HasNewContent(const Grid& grid, const CellChanges& cells, int x, int y) {
    for (int cell_y = 2 * y; cell_y < std::min(2 * y + 2, grid.cell_rows); ++cell_y)
        for (int cell_x = 2 * x; cell_x < std::min(2 * x + 2, grid.cell_columns); ++cell_x) {
            const std::size_t place = grid.CellPlace(cell_x, cell_y);
            if (cells.changed[place] != 0 && cells.moved[place] == 0) return true;
        }
    return false;
}

void FindFilms(const Grid& grid, PixelView source, PixelView before, const CellChanges& cells,
               double seconds, ScreenState& state) {
    // A picture of few colours stays exact whatever moves in it.
    const bool may_paint = !state.exact && state.mask;
    const auto flickers = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < grid.tile_columns && y < grid.tile_rows &&
               state.tiles[grid.TilePlace(x, y)].flickers >= kLeastFlickers;
    };
    for (int y = 0; y < grid.tile_rows; ++y)
        for (int x = 0; x < grid.tile_columns; ++x) {
            TileState& tile = state.tiles[grid.TilePlace(x, y)];
            // A frame that is coded a second time is no second change.
            if (!HasNewContent(grid, cells, x, y) || tile.changed_at == seconds) continue;
            const bool goes_on = seconds - tile.changed_at < kFilmSeconds;
            tile.changes = static_cast<std::uint8_t>(goes_on ? std::min(tile.changes + 1, 255) : 1);
            tile.changed_at = seconds;
            if (!may_paint || !goes_on) tile.flickers = 0;
            if (!may_paint) continue;
            const bool flickering = Flickers(source, before, grid.Tile(x, y));
            tile.flickers = static_cast<std::uint8_t>(
                flickering ? std::min(tile.flickers + 1, kMostFlickers) : tile.flickers / 2);
        }
    for (int y = 0; y < grid.tile_rows; ++y)
        for (int x = 0; x < grid.tile_columns; ++x) {
            if (!HasNewContent(grid, cells, x, y)) continue;
            int beside = 0;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) beside += flickers(x + dx, y + dy) ? 1 : 0;
            state.tiles[grid.TilePlace(x, y)].film = flickers(x, y) || beside >= kFilmNeighbours;
        }
}

bool SettleFilms(const Grid& grid, double seconds, double bits, const CellChanges& cells,
                 ScreenState& state) {
    bool any = false;
    for (int y = 0; y < grid.tile_rows; ++y)
        for (int x = 0; x < grid.tile_columns; ++x) {
            TileState& tile = state.tiles[grid.TilePlace(x, y)];
            if (!tile.film || tile.photo || seconds - tile.changed_at < kSettlingSeconds) continue;
            if (bits < kSettlingBits) return any;
            bits -= kSettlingBits;
            tile.film = false;
            any = true;
            for (int cell_y = 2 * y; cell_y < std::min(2 * y + 2, grid.cell_rows); ++cell_y)
                for (int cell_x = 2 * x; cell_x < std::min(2 * x + 2, grid.cell_columns); ++cell_x)
                    cells.changed[grid.CellPlace(cell_x, cell_y)] = 1;
        }
    return any;
}

}  // namespace codecs::screen
