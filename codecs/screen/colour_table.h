// Which colours a frame has, which of them the palette gets, and where it has them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "codecs/screen/plane_view.h"
#include "codecs/screen/rectangle_coder.h"
#include "codecs/screen/stream_header.h"

namespace codecs::screen {

/// Counts the colours of a picture, each tile of it with a limit, so that a photo does not outvote
/// the text beside it.
class ColourCount {
  public:
    ColourCount();
    void Clear();
    std::size_t Colours() const { return entries_.size(); }
    /// Returns how many colours the tile has.
    int AddTile(PixelView source, const Rect& tile);
    /// As many colours as `most`, those that are missed most first. `all` is set when there are
    /// no others in the picture.
    std::vector<Colour> Choose(std::size_t most, int tolerance, bool& all) const;

  private:
    struct Entry {
        Colour colour;
        std::uint32_t votes;
        std::uint32_t tile;  // that it was seen in last
        std::uint32_t in_tile;
    };
    Entry* Find(Colour colour);

    std::vector<std::uint32_t> slots_;  // entry + 1; 0 = free
    std::vector<Entry> entries_;
    std::uint32_t tile_ = 0;
    bool overflowed_ = false;
};

/// From colours to places in the palette.
class PaletteTable {
  public:
    static constexpr int kMissing = -1;

    /// @param count      entries of the palette that are in use
    /// @param tolerance  how far each channel may be from the colour that stands for it
    void Set(const Palette& palette, int count, int tolerance);

    int Find(Colour colour) {
        Slot& slot = slots_[Hash(colour)];
        if (slot.colour != colour) Fill(slot, colour);
        return slot.place;
    }

    static constexpr std::uint32_t Hash(Colour colour) {
        return (colour * 0x9E3779B1U) >> (32 - kSlotBits);
    }

  private:
    static constexpr int kSlotBits = 13;
    static constexpr int kCellBits = 5;  // of each channel
    static std::size_t CellOf(int red, int green, int blue);
    struct Slot {
        Colour colour = ~std::uint32_t{0};
        std::int32_t place = kMissing;
    };
    void Fill(Slot& slot, Colour colour) const;

    Palette palette_{};
    int tolerance_ = 0;
    // Entries of the palette by the cells of colours that they are near enough to: the first of
    // each cell, and the one after each.
    struct Near {
        std::int16_t entry;
        std::int16_t next;
    };
    std::vector<std::int16_t> first_near_;  // -1 = none
    std::vector<Near> near_;
    std::vector<Slot> slots_ = std::vector<Slot>(std::size_t{1} << kSlotBits);
};

}  // namespace codecs::screen
