// Judges by small copies of pictures which of them are best coded as B pictures.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

/// Keeps scratch memory for pictures of one size, in samples of luma. One thread at a time.
class Lookahead {
  public:
    /// @param rounds  of the motion search; 0 = nothing is taken to move
    Lookahead(int width, int height, int rounds);

    /// See Encoder::ChooseBPictures.
    int Choose(const PictureView& before, std::span<const PictureView> next);

  private:
    // Luma at half the size, in whole blocks, with a margin.
    struct Small {
        std::vector<std::uint8_t> memory;
        const std::uint8_t* At(int x, int y, std::ptrdiff_t stride) const;
    };
    struct Move {
        int x = 0;
        int y = 0;
        std::uint32_t cost = 0;
    };

    void Load(const PictureView& picture, Small& small) const;
    std::int64_t OwnCost(const Small& picture) const;
    std::int64_t MovedCost(const Small& picture, const Small& reference,
                           std::vector<Move>& moves) const;
    std::int64_t BCost(const Small& picture, const Small& earlier, const Small& later);
    Move FindMove(const Small& picture, const Small& reference, int column, int row,
                  const std::vector<Move>& found) const;
    std::uint32_t OwnBlockCost(const Small& picture, int column, int row) const;
    std::size_t Place(int column, int row) const;

    const Kernels& kernels_;
    const int width_;  // of the pictures
    const int height_;
    const int columns_;  // blocks
    const int rows_;
    const std::ptrdiff_t stride_;
    const int rounds_;
    std::vector<Small> pictures_;  // the one before, then the next ones
    std::vector<Move> to_earlier_;
    std::vector<Move> to_later_;
};

}  // namespace codecs::wmv9
