#include "codecs/screen/region_cuts.h"

#include <algorithm>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/screen/pixel_kernels.h"

namespace codecs::screen {
namespace {

// A cut must leave this much less than there was: contexts begin anew in each part.
constexpr double kWorthwhile = 15.0 / 16;
constexpr std::int64_t kLeastGain = 2;  // cells

}  // namespace

struct RegionCuts::Choice {
    std::int64_t area = 0;  // that is left of unlike cells' rectangles
    std::int64_t uncut = 0;
    bool across = false;
    int pivot = 0;  // cells; 0 = none
};

RegionCuts::RegionCuts(int width, int height)
    : width_(width), height_(height), columns_((width + kCell - 1) / kCell) {}

void RegionCuts::Cut(std::span<const std::uint8_t> cells, RegionTree& tree,
                     std::vector<Leaf>& leaves) {
    cells_ = cells;
    tree_ = &tree;
    leaves_ = &leaves;
    tree.clear();
    leaves.clear();
    CutCells({0, 0, columns_, (height_ + kCell - 1) / kCell});
}

Rect RegionCuts::Pixels(const Rect& cells) const {
    const int x = cells.x * kCell;
    const int y = cells.y * kCell;
    return {x, y, std::min(cells.width * kCell, width_ - x),
            std::min(cells.height * kCell, height_ - y)};
}

int RegionCuts::AddLeaf(RegionKind kind, const Rect& cells) {
    const auto node = static_cast<int>(tree_->size());
    tree_->push_back({kind});
    if (kind != RegionKind::KeptWhole) leaves_->push_back({node, Pixels(cells)});
    return node;
}

int RegionCuts::CutCells(const Rect& cells) {
    std::uint8_t common = kCanBeKept | kCanBeMoved;
    bool moved = false;
    for (int y = cells.y; y < cells.y + cells.height; ++y)
        for (int x = cells.x; x < cells.x + cells.width; ++x) {
            const std::uint8_t cell = cells_[Index(y) * Index(columns_) + Index(x)];
            common &= cell;
            moved = moved || (cell & kCanBeMoved) != 0;
        }
    if ((common & kCanBeKept) != 0) return AddLeaf(RegionKind::KeptWhole, cells);
    if ((common & kCanBeMoved) != 0) return AddLeaf(RegionKind::MovedWhole, cells);
    Choice choice = BestCut(cells, kCanBeKept);
    if (moved) {
        const Choice other = BestCut(cells, kCanBeMoved);
        if (other.pivot != 0 && (choice.pivot == 0 || other.area < choice.area)) choice = other;
    }
    if (choice.pivot == 0) return AddLeaf(RegionKind::MixedPixels, cells);

    const auto node = static_cast<int>(tree_->size());
    tree_->emplace_back();
    Rect first = cells;
    Rect second = cells;
    RegionNode made;
    made.pivot = choice.pivot * kCell;
    if (choice.across) {
        made.kind = RegionKind::CutAcross;
        first.height = choice.pivot;
        second.y += choice.pivot;
        second.height -= choice.pivot;
    } else {
        made.kind = RegionKind::CutDown;
        first.width = choice.pivot;
        second.x += choice.pivot;
        second.width -= choice.pivot;
    }
    made.first = CutCells(first);
    made.second = CutCells(second);
    (*tree_)[Index(node)] = made;
    return node;
}

// Where a cut leaves the smallest rectangles around what has not the state `wanted`.
RegionCuts::Choice RegionCuts::BestCut(const Rect& cells, std::uint8_t wanted) {
    std::vector<Extent>& rows = extents_of_rows_;
    std::vector<Extent>& columns = extents_of_columns_;
    rows.assign(Index(cells.height), Extent());
    columns.assign(Index(cells.width), Extent());
    for (int y = 0; y < cells.height; ++y) {
        const std::uint8_t* const row =
            cells_.data() + Index(cells.y + y) * Index(columns_) + Index(cells.x);
        int left = 0;
        while (left < cells.width && (row[left] & wanted) != 0) ++left;
        if (left == cells.width) continue;
        int right = cells.width - 1;
        while ((row[right] & wanted) != 0) --right;
        rows[Index(y)] = {left, right, y, y};
        for (int x = left; x <= right; ++x) {
            if ((row[x] & wanted) != 0) continue;
            Extent& column = columns[Index(x)];
            if (column.right < 0) column = {x, x, y, y};
            column.top = y;
        }
    }
    Choice best;
    best.uncut = std::int64_t{cells.width} * cells.height;
    best.area = best.uncut;
    const auto try_cuts = [&](const std::vector<Extent>& lines, bool across) {
        after_.assign(lines.size(), 0);
        Extent extent;
        for (std::size_t i = lines.size(); i-- > 1;) {
            extent.Add(lines[i]);
            after_[i] = extent.Area();
        }
        extent = Extent();
        for (std::size_t i = 1; i < lines.size(); ++i) {
            extent.Add(lines[i - 1]);
            const std::int64_t area = extent.Area() + after_[i];
            if (area >= best.area) continue;
            best.area = area;
            best.across = across;
            best.pivot = static_cast<int>(i);
        }
    };
    try_cuts(rows, true);
    try_cuts(columns, false);
    const bool worthwhile =
        static_cast<double>(best.area) <= kWorthwhile * static_cast<double>(best.uncut) &&
        best.uncut - best.area >= kLeastGain;
    if (!worthwhile) best.pivot = 0;
    return best;
}

}  // namespace codecs::screen
