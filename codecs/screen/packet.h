// A frame's parts, and the packet that they become.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/screen/plane_view.h"
#include "codecs/screen/region_coder.h"
#include "codecs/screen/stream_header.h"

namespace codecs::screen {

/// How the palette indices of a frame are coded.
enum class IndexCoding : std::uint8_t { Regions, Runs };

struct CodedRectangle {
    Rect rect;
    std::span<const std::uint8_t> picture;  // empty = grey
};

constexpr std::size_t kMostRectangles = 20;

/// Pictures that are painted over the palette's colours.
struct Rectangles {
    /// One that covers the picture; where it has no mask, no indices are coded, and all become 0.
    bool whole = false;
    std::optional<int> mask;           // the index of the pixels that are painted; none = all
    std::vector<CodedRectangle> list;  // by their left edges, at most kMostRectangles

    bool ReplaceIndices() const { return whole && !mask; }
};

struct FrameParts {
    bool key = false;
    std::span<const Colour> colours;  // of a key frame: entries of the palette from 1 on
    std::optional<Vector> vector;     // of an inter frame of regions that cover the picture
    IndexCoding coding = IndexCoding::Regions;
    std::optional<Rectangles> rectangles;
    int slice_row = 0;              // where each frame tells it
    PlaneView indices;              // of the frame as a decoder will have them
    PlaneView masks;                // of an inter frame
    std::vector<RegionTree> trees;  // one a slice
    std::vector<Rect> areas;        // of runs in an inter frame, one a slice
};

/// What has been learnt of the stream so far, one a slice. A copy is a snapshot.
using Statistics = std::vector<RegionCoder>;

/// One slice or two, from the bottom.
std::vector<Rect> SlicesOf(const StreamFormat& format, int slice_row);

/// `out` becomes the packet. Key frames begin the statistics anew.
void WritePacket(std::vector<std::uint8_t>& out, const StreamFormat& format,
                 const FrameParts& frame, Statistics& statistics);

/// Of a stream of 15 bits a pixel; both as in fifteen_bits.h.
void WriteFifteenBitPacket(std::vector<std::uint8_t>& out, const StreamFormat& format,
                           const Rect& area, std::span<const std::uint16_t> pixels,
                           std::span<const std::uint16_t> before);

}  // namespace codecs::screen
