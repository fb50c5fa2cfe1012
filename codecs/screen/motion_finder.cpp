#include "codecs/screen/motion_finder.h"

#include <algorithm>

#include "codecs/screen/films.h"

namespace codecs::screen {
namespace {

// Motion is looked for where so many cells have changed, and used where so many have moved.
constexpr int kMotionCells = 48;
constexpr int kMovedCells = 24;
constexpr int kBesideCells = 4;
constexpr int kLeastMotionPart = 24;  // of the area around them, one in so many

bool MovedHere(const Grid& grid, PixelView source, PixelView before, Vector vector,
               const Rect& rect) {
    const int x = rect.x + vector.x;
    const int y = rect.y + vector.y;
    if (x < 0 || y < 0 || x + rect.width > grid.width || y + rect.height > grid.height)
        return false;
    for (int row = 0; row < rect.height; ++row) {
        const std::uint32_t* const a = source.Row(rect.y + row) + rect.x;
        const std::uint32_t* const b = before.Row(y + row) + x;
        std::uint32_t differing = 0;
        for (int i = 0; i < rect.width; ++i) differing |= a[i] ^ b[i];
        if ((differing & 0xFFFFFF) != 0) return false;
    }
    return true;
}

}  // namespace

// A film is no place to look for what scrolls.
std::optional<Vector> MotionFinder::Find(PixelView source, PixelView before,
                                         const MovedCells& cells, const ScreenState& state) {
    Rect area;
    int left = grid_.cell_columns;
    int right = -1;
    int bottom = -1;
    int top = -1;
    std::int64_t count = 0;
    for (int y = 0; y < grid_.cell_rows; ++y)
        for (int x = 0; x < grid_.cell_columns; ++x) {
            if (cells.changed[grid_.CellPlace(x, y)] == 0) continue;
            const TileState& tile = state.tiles[grid_.TilePlace(x / 2, y / 2)];
            if (tile.film || (tile.photo && tile.changes >= kFilmChanges)) continue;
            ++count;
            left = std::min(left, x);
            right = std::max(right, x);
            if (bottom < 0) bottom = y;
            top = y;
        }
    if (count < kMotionCells) return std::nullopt;
    // Where few columns have changed, as those of numbers, what stands beside them tells rows
    // apart.
    area.x = std::max(left - kBesideCells, 0) * kCell;
    area.y = bottom * kCell;
    area.width = std::min((right + 1 + kBesideCells) * kCell, grid_.width) - area.x;
    area.height = std::min((top + 1) * kCell, grid_.height) - area.y;
    const std::int64_t around = std::int64_t{right - left + 1} * (top - bottom + 1);
    if (kLeastMotionPart * count < around) return std::nullopt;
    const std::optional<Vector> vector =
        vote_.Find(source, before, area, cells.changed, grid_.cell_columns);
    if (!vector) return std::nullopt;
    int moved = 0;
    for (int y = bottom; y <= top; ++y)
        for (int x = left; x <= right; ++x) {
            const std::size_t place = grid_.CellPlace(x, y);
            if (!MovedHere(grid_, source, before, *vector, grid_.Cell(x, y))) continue;
            cells.moved[place] = 1;
            moved += cells.changed[place];
        }
    if (moved >= kMovedCells) return vector;
    std::ranges::fill(cells.moved, std::uint8_t{0});
    return std::nullopt;
}

}  // namespace codecs::screen
