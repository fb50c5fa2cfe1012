#include "codecs/screen/frame_analysis.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>

#include "codecs/screen/films.h"

namespace codecs::screen {
namespace {

constexpr std::size_t kFreeEntries = 255;  // that a key frame may set; entry 0 is black

// A tile with so many colours is a photo; text with smoothed edges has fewer.
constexpr int kPhotoColours = 80;
// A tile is a photo where so many of its 256 pixels have no place in the palette, and stays one for
// a while.
constexpr int kPhotoMissing = 112;
constexpr double kPhotoSeconds = 2;
// Of the bits for what rests, for films that have come to rest.
constexpr double kSettlingShare = 0.5;
// A cell of text has no more colours.
constexpr int kNoiseColours = 24;

// New content that misses the palette by so much of the picture asks for a new one, if the last one
// is so old.
constexpr double kNewPalettePart = 0.02;
constexpr double kNewPaletteSeconds = 1;

}  // namespace

FrameAnalysis::FrameAnalysis(int width, int height, int tolerance)
    : grid_(width, height),
      tolerance_(tolerance),
      finder_(grid_),
      cuts_(width, height),
      indices_(Index(width) * Index(height)),
      next_(indices_.size()),
      masks_(indices_.size(), kKept),
      changed_(grid_.Cells()),
      moved_(grid_.Cells()),
      cells_(grid_.Cells()),
      paint_(grid_.Tiles()) {}

void FrameAnalysis::Keep() {
    for (const Rect& rect : touched_)
        for (int y = rect.y; y < rect.y + rect.height; ++y)
            std::copy_n(&next_[grid_.Pixel(rect.x, y)], rect.width,
                        &indices_[grid_.Pixel(rect.x, y)]);
    touched_.clear();
}

void FrameAnalysis::Forget() {
    for (const Rect& rect : touched_)
        for (int y = rect.y; y < rect.y + rect.height; ++y)
            std::copy_n(&indices_[grid_.Pixel(rect.x, y)], rect.width,
                        &next_[grid_.Pixel(rect.x, y)]);
    touched_.clear();
}

void FrameAnalysis::UsePalette(const ScreenState& state) {
    table_.Set(state.palette, state.colours, state.exact ? 0 : tolerance_);
}

void FrameAnalysis::AnalyseKey(PixelView source, double seconds, ScreenState& state) {
    any_change_ = true;
    motion_.reset();
    counts_.Clear();
    std::vector<int> colours(grid_.Tiles());
    state.tiles.resize(grid_.Tiles());
    for (int y = 0; y < grid_.tile_rows; ++y)
        for (int x = 0; x < grid_.tile_columns; ++x)
            colours[grid_.TilePlace(x, y)] = counts_.AddTile(source, grid_.Tile(x, y));
    bool all = false;
    std::vector<Colour> chosen = counts_.Choose(kFreeEntries, tolerance_, all);
    if (!all) {
        // Photos and films vote for nothing: all of them is painted.
        counts_.Clear();
        for (int y = 0; y < grid_.tile_rows; ++y)
            for (int x = 0; x < grid_.tile_columns; ++x)
                if (colours[grid_.TilePlace(x, y)] < kPhotoColours &&
                    !state.tiles[grid_.TilePlace(x, y)].film)
                    counts_.AddTile(source, grid_.Tile(x, y));
        bool rest = false;
        chosen = counts_.Choose(kFreeEntries - 1, tolerance_, rest);
    }
    exact_ = state.exact = all;
    state.palette.fill(0);
    std::ranges::copy(chosen, state.palette.begin() + 1);
    state.colours = static_cast<int>(chosen.size()) + 1;
    state.mask.reset();
    if (state.colours < static_cast<int>(state.palette.size())) {
        state.mask = state.colours;
        state.palette[Index(state.colours)] = 0x808080;
    }
    UsePalette(state);

    state.painted_pixels.assign(grid_.Cells(), 0);
    state.key_at = seconds;
    newly_missed_ = 0;
    std::ranges::fill(paint_, std::uint8_t{0});
    std::ranges::fill(changed_, std::uint8_t{1});
    std::ranges::fill(moved_, std::uint8_t{0});
    for (int y = 0; y < grid_.tile_rows; ++y)
        for (int x = 0; x < grid_.tile_columns; ++x) {
            TileState& tile = state.tiles[grid_.TilePlace(x, y)];
            tile.photo = !all && colours[grid_.TilePlace(x, y)] >= kPhotoColours;
            tile.photo_at = seconds;
            tile.painted = 0;
            if (all || seconds - tile.changed_at >= kFilmSeconds) tile.film = false;
            tile.changes = 0;
            tile.changed_at = seconds;
            MapTile(source, x, y, seconds, state);
        }
    state.missed_at_key = newly_missed_;
    touched_.assign(1, {0, 0, grid_.width, grid_.height});
    tree_.assign(1, {RegionKind::Pixels});
}

bool FrameAnalysis::HasFewColours(PixelView source) {
    counts_.Clear();
    for (int y = 0; y < grid_.tile_rows; ++y)
        for (int x = 0; x < grid_.tile_columns; ++x) {
            counts_.AddTile(source, grid_.Tile(x, y));
            if (counts_.Colours() > kFreeEntries) return false;
        }
    return true;
}

bool FrameAnalysis::AnalyseChanges(PixelView source, PixelView before, const FrameRequest& request,
                                   ScreenState& state) {
    const double seconds = request.seconds;
    exact_ = false;
    newly_missed_ = 0;
    motion_.reset();
    std::ranges::fill(paint_, std::uint8_t{0});
    FindChanges(source, before, request.changed.value_or(Rect{0, 0, grid_.width, grid_.height}));
    if (SettleFilms(grid_, seconds, kSettlingShare * request.resting_bits, {changed_, moved_},
                    state))
        any_change_ = true;
    if (!any_change_) return true;
    motion_ = finder_.Find(source, before, {changed_, moved_}, state);
    FindFilms(grid_, source, before, {changed_, moved_}, seconds, state);
    for (int y = 0; y < grid_.tile_rows; ++y)
        for (int x = 0; x < grid_.tile_columns; ++x)
            if (!MapTile(source, x, y, seconds, state)) return false;
    if (state.exact && seconds - state.key_at >= kNewPaletteSeconds) {
        if (std::ranges::all_of(state.painted_pixels, [](auto pixels) { return pixels == 0; }))
            return true;
        // A palette may do that has the new colours too.
        if (HasFewColours(source)) return false;
        state.exact = false;
        UsePalette(state);
    }
    const double pixels = double{1} * grid_.width * grid_.height;
    return static_cast<double>(newly_missed_) < kNewPalettePart * pixels ||
           seconds - state.key_at < kNewPaletteSeconds;
}

void FrameAnalysis::FindChanges(PixelView source, PixelView before, const Rect& where) {
    std::ranges::fill(moved_, std::uint8_t{0});
    std::ranges::fill(changed_, std::uint8_t{0});
    any_change_ = false;
    if (source.pixels == before.pixels || where.Empty()) return;
    const int first = where.x / kCell;  // column of cells
    const int left = first * kCell;
    const int right = std::min((where.x + where.width + kCell - 1) / kCell * kCell, grid_.width);
    for (int y = where.y / kCell; kCell * y < where.y + where.height; ++y) {
        const Rect row = grid_.Cell(0, y);
        CompareCells(source.Row(row.y) + left, source.stride, before.Row(row.y) + left,
                     before.stride, right - left, row.height, &changed_[grid_.CellPlace(first, y)]);
    }
    any_change_ = std::ranges::find(changed_, 1) != changed_.end();
}

void FrameAnalysis::TakeMoved(const Rect& cell, ScreenState& state) {
    const auto from_x = cell.x + motion_->x;
    const auto from_y = cell.y + motion_->y;
    int painted = 0;
    for (int y = 0; y < cell.height; ++y)
        for (int x = 0; x < cell.width; ++x) {
            const std::uint8_t index = indices_[grid_.Pixel(from_x + x, from_y + y)];
            next_[grid_.Pixel(cell.x + x, cell.y + y)] = index;
            painted += state.mask == index ? 1 : 0;
        }
    state.painted_pixels[grid_.CellPlace(cell.x / kCell, cell.y / kCell)] =
        static_cast<std::uint8_t>(painted);
    touched_.push_back(cell);
    if (painted == 0) return;
    // As coarse as the coarsest that it may come from.
    TileState& tile = state.tiles[grid_.TilePlace(cell.x / kTile, cell.y / kTile)];
    for (const int x : {from_x, from_x + cell.width - 1})
        for (const int y : {from_y, from_y + cell.height - 1})
            tile.painted =
                std::max(tile.painted, state.tiles[grid_.TilePlace(x / kTile, y / kTile)].painted);
}

void FrameAnalysis::MaskCell(const Rect& cell, int mask) {
    for (int y = cell.y; y < cell.y + cell.height; ++y)
        std::fill_n(&next_[grid_.Pixel(cell.x, y)], cell.width, static_cast<std::uint8_t>(mask));
    touched_.push_back(cell);
}

FrameAnalysis::Mapped FrameAnalysis::MapCell(PixelView source, const Rect& cell, int mask) {
    Mapped mapped;
    std::bitset<256> used;
    Colour last = ~Colour{0};
    int place = 0;
    for (int y = cell.y; y < cell.y + cell.height; ++y) {
        const std::uint32_t* const row = source.Row(y) + cell.x;
        std::uint8_t* const out = &next_[grid_.Pixel(cell.x, y)];
        for (int x = 0; x < cell.width; ++x) {
            const Colour colour = row[x] & 0xFFFFFF;
            if (colour != last) {
                last = colour;
                place = table_.Find(colour);
                if (place != PaletteTable::kMissing) used.set(Index(place));
            }
            if (place == PaletteTable::kMissing) ++mapped.missing;
            out[x] = static_cast<std::uint8_t>(place == PaletteTable::kMissing ? mask : place);
        }
    }
    mapped.colours = static_cast<int>(used.count());
    touched_.push_back(cell);
    return mapped;
}

// Whether all of a cell's pixels are. Where a photo has many of the palette's colours it has them
// by chance, and a film's come and go.
bool FrameAnalysis::IsPainted(const Mapped& mapped, int pixels, bool photo, bool film) {
    if (film) return 16 * mapped.missing >= pixels || mapped.colours > kNoiseColours;
    return 4 * mapped.missing >= 3 * pixels || (photo && mapped.colours > kNoiseColours);
}

// False when a pixel has no place and cannot be painted either.
bool FrameAnalysis::MapTile(PixelView source, int x, int y, double seconds, ScreenState& state) {
    const Rect area = grid_.Tile(x, y);
    struct Part {
        Rect cell;
        std::size_t place;
    };
    std::array<Part, 4> parts;
    int count = 0;
    bool changed = false;
    for (int cell_y = 2 * y; cell_y < std::min(2 * y + 2, grid_.cell_rows); ++cell_y)
        for (int cell_x = 2 * x; cell_x < std::min(2 * x + 2, grid_.cell_columns); ++cell_x) {
            const std::size_t place = grid_.CellPlace(cell_x, cell_y);
            parts[Index(count++)] = {grid_.Cell(cell_x, cell_y), place};
            changed = changed || changed_[place] != 0;
        }
    if (!changed) return true;
    TileState& tile = state.tiles[grid_.TilePlace(x, y)];
    std::uint8_t& paint = paint_[grid_.TilePlace(x, y)];
    const std::span<const Part> cells = std::span(parts).first(Index(count));
    for (const Part& part : cells)
        if (changed_[part.place] != 0 && moved_[part.place] != 0) TakeMoved(part.cell, state);
    if (!HasNewContent(grid_, {changed_, moved_}, x, y)) return true;

    const bool film = tile.film || (tile.photo && tile.changes >= kFilmChanges);
    int painted = 0;
    bool paints = false;
    for (const Part& part : cells) {
        std::uint8_t& here = state.painted_pixels[part.place];
        if (changed_[part.place] != 0 && moved_[part.place] == 0) {
            const Mapped mapped = MapCell(source, part.cell, state.mask.value_or(0));
            if (mapped.missing > 0 && !state.mask) return false;
            newly_missed_ += tile.photo || tile.film ? 0 : std::max(mapped.missing - here, 0);
            here = static_cast<std::uint8_t>(mapped.missing);
            if (tile.film ||
                IsPainted(mapped, static_cast<int>(part.cell.Area()), tile.photo, film)) {
                MaskCell(part.cell, *state.mask);
                here = static_cast<std::uint8_t>(part.cell.Area());
            }
            paints = paints || here > 0;
        }
        painted += here;
    }
    if (painted == 0) tile.painted = 0;
    if (!tile.film) {
        const bool is_photo = std::int64_t{painted} * 256 >= kPhotoMissing * area.Area();
        if (is_photo && !tile.photo) tile.photo_at = seconds;
        tile.photo = is_photo || (tile.photo && seconds - tile.photo_at < kPhotoSeconds);
    }
    const bool moves = tile.photo || tile.film || tile.changes >= kFilmChanges;
    if (paints) paint = moves ? kMoving : kDetail;
    return true;
}

std::uint8_t FrameAnalysis::StateOf(int x, int y) const {
    const std::size_t place = grid_.CellPlace(x, y);
    if (moved_[place] != 0)
        return static_cast<std::uint8_t>(kCanBeMoved | (changed_[place] != 0 ? 0 : kCanBeKept));
    const Rect cell = grid_.Cell(x, y);
    for (int row = cell.y; row < cell.y + cell.height; ++row)
        if (std::memcmp(&next_[grid_.Pixel(cell.x, row)], &indices_[grid_.Pixel(cell.x, row)],
                        Index(cell.width)) != 0)
            return 0;
    return kCanBeKept;
}

void FrameAnalysis::CutRegions(std::span<const std::uint8_t> paint, ScreenState& state,
                               bool all_masks) {
    std::ranges::fill(cells_, std::uint8_t{kCanBeKept});
    for (const Rect& rect : touched_)
        cells_[grid_.CellPlace(rect.x / kCell, rect.y / kCell)] =
            StateOf(rect.x / kCell, rect.y / kCell);
    for (std::size_t i = 0; i < moved_.size(); ++i)
        if (moved_[i] != 0 && changed_[i] == 0) cells_[i] = kCanBeMoved | kCanBeKept;
    cuts_.Cut(cells_, tree_, leaves_);
    if (all_masks) std::ranges::fill(masks_, std::uint8_t{kKept});
    for (const Leaf& leaf : leaves_) {
        RegionNode& node = tree_[Index(leaf.node)];
        if (node.kind == RegionKind::MovedWhole)
            MoveLeaf(leaf.rect, state);
        else
            node.kind = MixLeaf(leaf.rect, paint, state);
        if (!all_masks || node.kind == RegionKind::MixedPixels) continue;
        FillMasks(leaf.rect, node.kind == RegionKind::MovedWhole ? kMoved : kNew);
    }
}

// What was the same before is taken from where the rest comes from.
void FrameAnalysis::MoveLeaf(const Rect& leaf, ScreenState& state) {
    for (int y = leaf.y; y < leaf.y + leaf.height; y += kCell)
        for (int x = leaf.x; x < leaf.x + leaf.width; x += kCell)
            if (changed_[grid_.CellPlace(x / kCell, y / kCell)] == 0)
                TakeMoved(grid_.Cell(x / kCell, y / kCell), state);
}

RegionKind FrameAnalysis::MixLeaf(const Rect& leaf, std::span<const std::uint8_t> paint,
                                  const ScreenState& state) {
    std::int64_t fresh = 0;
    bool must_keep = false;
    bool one = true;
    const std::uint8_t first = next_[grid_.Pixel(leaf.x, leaf.y)];
    for (int y = leaf.y; y < leaf.y + leaf.height; ++y)
        for (int x = leaf.x; x < leaf.x + leaf.width; ++x) {
            const std::size_t pixel = grid_.Pixel(x, y);
            const std::size_t cell = grid_.CellPlace(x / kCell, y / kCell);
            one = one && next_[pixel] == first;
            if (changed_[cell] != 0 && moved_[cell] != 0) {
                masks_[pixel] = kMoved;
                must_keep = true;
                continue;
            }
            const bool is_new = next_[pixel] != indices_[pixel];
            masks_[pixel] = is_new ? kNew : kKept;
            fresh += is_new ? 1 : 0;
            // The palette's colour would take the place of what is painted.
            if (state.mask == next_[pixel] && paint[grid_.TilePlace(x / kTile, y / kTile)] == 0)
                must_keep = true;
        }
    if (must_keep || 2 * fresh < leaf.Area()) return RegionKind::MixedPixels;
    return one ? RegionKind::OneColour : RegionKind::Pixels;
}

void FrameAnalysis::FillMasks(const Rect& region, PixelMask mask) {
    for (int y = region.y; y < region.y + region.height; ++y)
        std::fill_n(&masks_[grid_.Pixel(region.x, y)], region.width, std::uint8_t{mask});
}

}  // namespace codecs::screen
