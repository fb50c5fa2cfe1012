#include "codecs/screen/colour_table.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

constexpr int kSlotBits = 16;
constexpr std::size_t kMostColours = std::size_t{1} << (kSlotBits - 1);
constexpr std::uint32_t kMostVotes = 24;  // of a tile for a colour
constexpr std::size_t kCandidates = 4096;
constexpr int kSaturated = 80;

int Channel(Colour colour, int shift) { return static_cast<int>(colour >> shift & 0xFF); }

int Distance(Colour a, Colour b) {
    int most = 0;
    for (const int shift : {0, 8, 16})
        most = std::max(most, std::abs(Channel(a, shift) - Channel(b, shift)));
    return most;
}

bool IsSaturated(Colour colour) {
    const auto [least, most] =
        std::minmax({Channel(colour, 0), Channel(colour, 8), Channel(colour, 16)});
    return most - least >= kSaturated;
}

}  // namespace

ColourCount::ColourCount() : slots_(std::size_t{1} << kSlotBits) {}

void ColourCount::Clear() {
    std::ranges::fill(slots_, 0U);
    entries_.clear();
    tile_ = 0;
    overflowed_ = false;
}

ColourCount::Entry* ColourCount::Find(Colour colour) {
    constexpr std::size_t kMask = (std::size_t{1} << kSlotBits) - 1;
    std::size_t at = (colour * 0x9E3779B1U) >> (32 - kSlotBits);
    for (; slots_[at] != 0; at = (at + 1) & kMask)
        if (entries_[slots_[at] - 1].colour == colour) return &entries_[slots_[at] - 1];
    if (entries_.size() == kMostColours) {
        overflowed_ = true;
        return nullptr;
    }
    entries_.push_back({colour, 0, 0, 0});
    slots_[at] = static_cast<std::uint32_t>(entries_.size());
    return &entries_.back();
}

int ColourCount::AddTile(PixelView source, const Rect& tile) {
    ++tile_;
    int colours = 0;
    Colour last = ~Colour{0};
    Entry* entry = nullptr;
    for (int y = tile.y; y < tile.y + tile.height; ++y) {
        const std::uint32_t* const row = source.Row(y);
        for (int x = tile.x; x < tile.x + tile.width; ++x) {
            const Colour colour = row[x] & 0xFFFFFF;
            if (colour != last) {
                last = colour;
                entry = Find(colour);
                if (entry == nullptr || entry->tile != tile_) ++colours;
                if (entry != nullptr && entry->tile != tile_) {
                    entry->tile = tile_;
                    entry->in_tile = 0;
                }
            }
            if (entry == nullptr || entry->in_tile == kMostVotes) continue;
            ++entry->in_tile;
            // What WMV9 would spoil most: small details of a strong colour.
            entry->votes += IsSaturated(colour) ? 2U : 1U;
        }
    }
    return colours;
}

std::vector<Colour> ColourCount::Choose(std::size_t most, int tolerance, bool& all) const {
    std::vector<Entry> candidates = entries_;
    all = !overflowed_ && candidates.size() <= most;
    const auto by_votes = [](const Entry& a, const Entry& b) {
        return a.votes != b.votes ? a.votes > b.votes : a.colour < b.colour;
    };
    if (candidates.size() > kCandidates) {
        std::ranges::nth_element(candidates, candidates.begin() + kCandidates, by_votes);
        candidates.resize(kCandidates);
    }
    std::ranges::sort(candidates, by_votes);
    // First those that no other can stand for; the others where there are places left.
    std::vector<Colour> chosen;
    std::vector<Colour> others;
    for (const Entry& entry : candidates) {
        if (chosen.size() == most) break;
        const auto near = [&](Colour other) { return Distance(other, entry.colour) <= tolerance; };
        const bool is_other = !all && std::ranges::any_of(chosen, near);
        (is_other ? others : chosen).push_back(entry.colour);
    }
    const std::size_t left = std::min(most - chosen.size(), others.size());
    chosen.insert(chosen.end(), others.begin(), others.begin() + static_cast<std::ptrdiff_t>(left));
    return chosen;
}

void PaletteTable::Set(const Palette& palette, int count, int tolerance) {
    palette_ = palette;
    tolerance_ = tolerance;
    std::ranges::fill(slots_, Slot());
    first_near_.assign(std::size_t{1} << (3 * kCellBits), -1);
    near_.clear();
    for (int entry = count - 1; entry >= 0; --entry)
        for (int corner = 0; corner < 8; ++corner) {
            const auto shifted = [&](int bit) {
                const int by = (corner >> bit & 1) != 0 ? tolerance : -tolerance;
                return std::clamp(Channel(palette[Index(entry)], 8 * bit) + by, 0, 255);
            };
            std::int16_t& first = first_near_[CellOf(shifted(2), shifted(1), shifted(0))];
            if (first >= 0 && near_[Index(first)].entry == entry) continue;
            near_.push_back({static_cast<std::int16_t>(entry), first});
            first = static_cast<std::int16_t>(near_.size() - 1);
        }
}

std::size_t PaletteTable::CellOf(int red, int green, int blue) {
    constexpr int kShift = 8 - kCellBits;
    return Index((red >> kShift) << (2 * kCellBits) | (green >> kShift) << kCellBits |
                 blue >> kShift);
}

void PaletteTable::Fill(Slot& slot, Colour colour) const {
    int nearest = tolerance_ + 1;
    slot = {colour, kMissing};
    const std::size_t cell = CellOf(Channel(colour, 16), Channel(colour, 8), Channel(colour, 0));
    for (int i = first_near_[cell]; i >= 0; i = near_[Index(i)].next) {
        const int entry = near_[Index(i)].entry;
        const int distance = Distance(palette_[Index(entry)], colour);
        if (distance >= nearest) continue;
        nearest = distance;
        slot.place = entry;
        if (distance == 0) return;
    }
}

}  // namespace codecs::screen
