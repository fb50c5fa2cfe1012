#include "codecs/screen/region_cuts.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/screen/pixel_kernels.h"

namespace codecs::screen {
namespace {

// A cut must leave this much less than there was: contexts begin anew in each part.
constexpr double kWorthwhile = 15.0 / 16;
constexpr std::int64_t kLeastGain = 16;  // cells

}  // namespace

struct RegionCuts::Choice {
    std::int64_t area = 0;  // that is left of unlike cells' rectangles
    std::int64_t uncut = 0;
    bool splits = false;  // there are unlike cells on both sides of the cut
    bool across = false;
    int pivot = 0;  // cells; 0 = none
};

RegionCuts::RegionCuts(int width, int height)
    : width_(width),
      height_(height),
      columns_((width + kCell - 1) / kCell),
      rows_((height + kCell - 1) / kCell),
      words_((columns_ + kWordBits - 1) / kWordBits),
      unlike_kept_(Index(words_) * Index(rows_)),
      unlike_moved_(unlike_kept_.size()) {}

void RegionCuts::Cut(std::span<const std::uint8_t> cells, RegionTree& tree,
                     std::vector<Leaf>& leaves) {
    SetUnlike(cells);
    tree_ = &tree;
    leaves_ = &leaves;
    tree.clear();
    leaves.clear();
    CutCells({0, 0, columns_, rows_});
}

void RegionCuts::SetUnlike(std::span<const std::uint8_t> cells) {
    std::fill(unlike_kept_.begin(), unlike_kept_.end(), 0);
    std::fill(unlike_moved_.begin(), unlike_moved_.end(), 0);
    for (int y = 0; y < rows_; ++y)
        for (int x = 0; x < columns_; ++x) {
            const std::uint8_t cell = cells[Index(y) * Index(columns_) + Index(x)];
            const std::size_t place = Place(y, x / kWordBits);
            const std::uint64_t bit = std::uint64_t{1} << x % kWordBits;
            if ((cell & kCanBeKept) == 0) unlike_kept_[place] |= bit;
            if ((cell & kCanBeMoved) == 0) unlike_moved_[place] |= bit;
        }
}

// The bits of a word that stand for cells of the rectangle.
std::uint64_t RegionCuts::Inside(const Rect& cells, int word) {
    constexpr std::uint64_t kAll = ~std::uint64_t{0};
    const int from = std::max(cells.x - word * kWordBits, 0);
    const int behind = std::min(cells.x + cells.width - word * kWordBits, kWordBits);
    return kAll << from & kAll >> (kWordBits - behind);
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
    std::uint64_t unlike_kept = 0;
    std::uint64_t unlike_moved = 0;
    std::uint64_t moved = 0;
    for (int y = cells.y; y < cells.y + cells.height; ++y)
        for (int word = FirstWord(cells); word <= LastWord(cells); ++word) {
            const std::uint64_t inside = Inside(cells, word);
            const std::uint64_t not_moved = unlike_moved_[Place(y, word)];
            unlike_kept |= unlike_kept_[Place(y, word)] & inside;
            unlike_moved |= not_moved & inside;
            moved |= ~not_moved & inside;
        }
    if (unlike_kept == 0) return AddLeaf(RegionKind::KeptWhole, cells);
    if (unlike_moved == 0) return AddLeaf(RegionKind::MovedWhole, cells);
    Choice choice = BestCut(cells, unlike_kept_);
    if (moved != 0) {
        const Choice other = BestCut(cells, unlike_moved_);
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

// Where a cut leaves the smallest rectangles around what is set in `unlike`.
RegionCuts::Choice RegionCuts::BestCut(const Rect& cells,
                                       const std::vector<std::uint64_t>& unlike) {
    std::vector<Extent>& rows = extents_of_rows_;
    std::vector<Extent>& columns = extents_of_columns_;
    rows.assign(Index(cells.height), Extent());
    columns.assign(Index(cells.width), Extent());
    const int first = FirstWord(cells);
    const int last = LastWord(cells);
    // Calls `with` the numbers of word and row, from the row `from` on.
    const auto for_each_word = [&](int from, int step, auto&& with) {
        seen_.assign(Index(words_), 0);
        for (int i = 0, y = from; i < cells.height; ++i, y += step)
            for (int word = first; word <= last; ++word) {
                const std::uint64_t bits = unlike[Place(cells.y + y, word)] & Inside(cells, word);
                if (bits == 0) continue;
                with(word, y, bits, bits & ~seen_[Index(word)]);
                seen_[Index(word)] |= bits;
            }
    };
    for_each_word(0, 1, [&](int word, int y, std::uint64_t bits, std::uint64_t unseen) {
        const int left = word * kWordBits - cells.x;
        Extent& row = rows[Index(y)];
        if (row.right < 0) row = {left + std::countr_zero(bits), 0, y, y};
        row.right = left + kWordBits - 1 - std::countl_zero(bits);
        for (; unseen != 0; unseen &= unseen - 1) {
            const int x = left + std::countr_zero(unseen);
            columns[Index(x)] = {x, x, y, y};
        }
    });
    for_each_word(cells.height - 1, -1, [&](int word, int y, std::uint64_t, std::uint64_t unseen) {
        const int left = word * kWordBits - cells.x;
        for (; unseen != 0; unseen &= unseen - 1)
            columns[Index(left + std::countr_zero(unseen))].top = y;
    });
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
            if (area > best.area) continue;
            // Of cuts that leave the same, one beside all unlike cells, and the nearest to them.
            const bool splits = extent.Area() != 0 && after_[i] != 0;
            const bool closer = best.pivot != 0 && best.across == across && extent.Area() == 0;
            if (area == best.area && (splits || !(best.splits || closer))) continue;
            best.area = area;
            best.splits = splits;
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
