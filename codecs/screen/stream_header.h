// The stream's header: what stands after the picture format in a file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace codecs::screen {

/// 0xRRGGBB.
using Colour = std::uint32_t;
using Palette = std::array<Colour, 256>;

constexpr int kLargestSide = 4096;

enum class SliceCut : std::int8_t { None, Fixed, PerFrame };

struct StreamFormat {
    int width = 1;  // 1 to 4096
    int height = 1;
    double frames_per_second = 5;
    double rate_bps = 0;  // informative
    bool fifteen_bits = false;
    SliceCut slices = SliceCut::None;
    int slice_row = 0;  // first row of the second slice, where it is fixed
    /// Entry 0 holds for the whole stream, the others until a key frame brings their own.
    Palette palette{};
};

constexpr std::size_t kStreamHeaderBytes = 828;
/// Entries of the palette that key frames bring: all but the first one.
constexpr int kFreeColours = 255;

std::vector<std::uint8_t> StreamHeader(const StreamFormat& format);

}  // namespace codecs::screen
