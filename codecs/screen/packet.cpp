#include "codecs/screen/packet.h"

#include <algorithm>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/screen/fifteen_bits.h"
#include "codecs/screen/run_length.h"

namespace codecs::screen {
namespace {

void PutSliceRow(BitWriter& out, int row) {
    constexpr int kUnit = 16;
    const auto value = static_cast<std::uint32_t>(row);
    if (row % kUnit == 0 && row / kUnit < 256) {
        out.Put(2, 2);
        out.Put(value / kUnit, 8);
    } else if (row < 1 << 12) {
        out.Put(6, 3);
        out.Put(value, 12);
    } else {
        out.Put(7, 3);
        out.Put(value, 16);
    }
}

void Append(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

struct HeaderBits {
    bool key = false;
    bool rectangles = false;
    bool vector = false;
    bool runs = false;
    bool fifteen_bits = false;
};

void PutHeader(std::vector<std::uint8_t>& out, const StreamFormat& format, const HeaderBits& bits,
               int slice_row) {
    BitWriter header;
    header.Put(bits.key, 1);
    if (bits.key) header.Put(0, 7);
    header.Put(bits.rectangles, 1);
    if (!bits.key) header.Put(bits.vector, 1);
    header.Put(bits.runs, 1);
    if (bits.runs) header.Put(bits.fifteen_bits, 1);
    if (format.slices == SliceCut::PerFrame) PutSliceRow(header, slice_row);
    header.Align();
    Append(out, header.Bytes());
}

void PutRectangleList(std::vector<std::uint8_t>& out, const StreamFormat& format,
                      const Rectangles& rectangles) {
    ArithmeticCoder coder(out);
    coder.Bit(!rectangles.whole);
    if (!rectangles.whole) {
        int left = 0;
        for (const CodedRectangle& coded : rectangles.list) {
            const Rect& rect = coded.rect;
            coder.Bit(true);
            coder.Number(rect.x - left, format.width - left);
            coder.Number(rect.y, format.height);
            coder.Number(rect.width - 1, format.width - rect.x);
            coder.Number(rect.height - 1, format.height - rect.y);
            left = rect.x;
        }
    }
    coder.Bit(false);
    bool first = true;
    for (const CodedRectangle& coded : rectangles.list) {
        if (!rectangles.whole) coder.Bit(false);
        if (first) {
            coder.Bit(rectangles.mask.has_value());
            if (rectangles.mask) coder.Number(*rectangles.mask, 256);
            first = false;
        }
        coder.Number(coded.picture.empty() ? 0 : 1, 2);
    }
    coder.Finish();
}

void PutPalette(std::vector<std::uint8_t>& out, std::span<const Colour> colours) {
    out.push_back(static_cast<std::uint8_t>(colours.size()));
    for (const Colour colour : colours)
        for (int shift = 16; shift >= 0; shift -= 8)
            out.push_back(static_cast<std::uint8_t>(colour >> shift));
}

void PutVector(std::vector<std::uint8_t>& out, const StreamFormat& format, Vector vector) {
    for (const int value : {vector.x + format.width, vector.y + format.height}) {
        out.push_back(static_cast<std::uint8_t>(value >> 8));
        out.push_back(static_cast<std::uint8_t>(value));
    }
}

void PutIndices(std::vector<std::uint8_t>& out, const StreamFormat& format, const FrameParts& frame,
                Statistics& statistics) {
    const std::vector<Rect> slices = SlicesOf(format, frame.slice_row);
    for (std::size_t i = 0; i < slices.size(); ++i) {
        if (frame.coding == IndexCoding::Regions) {
            statistics[i].Code(out, frame.key, frame.trees[i], slices[i], frame.indices,
                               frame.masks);
        } else {
            BitWriter runs;
            CodeRuns(runs, frame.key, frame.key ? slices[i] : frame.areas[i], frame.indices,
                     frame.masks);
            Append(out, runs.Bytes());
        }
    }
}

void PutPictures(std::vector<std::uint8_t>& out, const Rectangles& rectangles) {
    for (const CodedRectangle& coded : rectangles.list) {
        if (coded.picture.empty()) continue;
        for (int shift = 0; shift < 24; shift += 8)
            out.push_back(static_cast<std::uint8_t>(coded.picture.size() >> shift));
        Append(out, coded.picture);
    }
}

}  // namespace

std::vector<Rect> SlicesOf(const StreamFormat& format, int slice_row) {
    if (format.slices == SliceCut::None) return {{0, 0, format.width, format.height}};
    const int row = format.slices == SliceCut::Fixed ? format.slice_row : slice_row;
    return {{0, 0, format.width, row}, {0, row, format.width, format.height - row}};
}

void WritePacket(std::vector<std::uint8_t>& out, const StreamFormat& format,
                 const FrameParts& frame, Statistics& statistics) {
    out.clear();
    if (frame.key) {
        statistics.resize(format.slices == SliceCut::None ? 1 : 2);
        for (RegionCoder& slice : statistics) slice.Reset();
    }
    PutHeader(out, format,
              {.key = frame.key,
               .rectangles = frame.rectangles.has_value(),
               .vector = frame.vector.has_value(),
               .runs = frame.coding == IndexCoding::Runs},
              frame.slice_row);
    // An arithmetic stream may carry into bytes that stand before the last one, never into those of
    // another: each begins where `out` ends.
    if (frame.rectangles) PutRectangleList(out, format, *frame.rectangles);
    if (frame.key) PutPalette(out, frame.colours);
    if (frame.vector) PutVector(out, format, *frame.vector);
    if (!frame.rectangles || !frame.rectangles->ReplaceIndices())
        PutIndices(out, format, frame, statistics);
    if (frame.rectangles) PutPictures(out, *frame.rectangles);
}

void WriteFifteenBitPacket(std::vector<std::uint8_t>& out, const StreamFormat& format,
                           const Rect& area, std::span<const std::uint16_t> pixels,
                           std::span<const std::uint16_t> before) {
    out.clear();
    PutHeader(out, format, {.key = before.empty(), .runs = true, .fifteen_bits = true}, 0);
    CodeFifteenBits(out, area, format.width, pixels, before);
}

}  // namespace codecs::screen
