#include "codecs/wmv9/bitplane.h"

#include <array>
#include <limits>
#include <span>

#include "codecs/common/index.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {
namespace {

constexpr Code kModeCodes[kPlaneModes] = {
    {0, 4}, {2, 2}, {1, 3}, {3, 2}, {1, 4}, {2, 3}, {3, 3},
};

// Takes the bits of a plane and only counts them.
struct Counter {
    int bits = 0;
    void Put(std::uint32_t /*value*/, int count) { bits += count; }
    void Put(Code code) { bits += code.length; }
};

bool IsOfChange(PlaneMode mode) {
    return mode == PlaneMode::PairsOfChange || mode == PlaneMode::TilesOfChange;
}

// What is written: the plane, inverted or not, or its differences from what the neighbours let
// expect.
BitPlane Written(const BitPlane& plane, PlaneCoding coding) {
    BitPlane written = plane;
    const std::uint8_t invert = coding.invert ? 1 : 0;
    if (!IsOfChange(coding.mode)) {
        for (std::uint8_t& bit : written.Bits()) bit ^= invert;
        return written;
    }
    const std::uint8_t* bit = plane.Bits().data();
    std::uint8_t* out = written.Bits().data();
    const int width = plane.Width();
    for (int y = 0; y < plane.Height(); ++y, bit += width, out += width) {
        const std::uint8_t* const above = bit - width;
        out[0] = bit[0] ^ (y == 0 ? invert : above[0]);
        for (int x = 1; y == 0 && x < width; ++x) out[x] = bit[x] ^ bit[x - 1];
        for (int x = 1; y > 0 && x < width; ++x) {
            const int differ = bit[x - 1] ^ above[x];
            out[x] =
                static_cast<std::uint8_t>(bit[x] ^ (differ & invert) ^ (bit[x - 1] & above[x]));
        }
    }
    return written;
}

template <typename Sink>
void PutPairs(Sink& out, const BitPlane& plane) {
    const std::span<const std::uint8_t> bits = plane.Bits();
    std::size_t i = bits.size() % 2;
    if (i == 1) out.Put(bits[0], 1);
    for (; i < bits.size(); i += 2) out.Put(kPairs[Index(bits[i] + 2 * bits[i + 1])]);
}

template <typename Sink>
void PutColumn(Sink& out, const BitPlane& plane, int x) {
    std::uint32_t any = 0;
    for (int y = 0; y < plane.Height(); ++y) any |= plane.At(x, y);
    out.Put(any, 1);
    if (any == 0) return;
    for (int y = 0; y < plane.Height(); ++y) out.Put(plane.At(x, y), 1);
}

template <typename Sink>
void PutRow(Sink& out, const BitPlane& plane, int y, int from) {
    std::uint32_t any = 0;
    for (int x = from; x < plane.Width(); ++x) any |= plane.At(x, y);
    out.Put(any, 1);
    if (any == 0) return;
    for (int x = from; x < plane.Width(); ++x) out.Put(plane.At(x, y), 1);
}

template <typename Sink>
void PutTiles(Sink& out, const BitPlane& plane) {
    const int width = plane.Width();
    const int height = plane.Height();
    const bool upright = height % 3 == 0 && width % 3 != 0;
    const int tile_width = upright ? 2 : 3;
    const int tile_height = upright ? 3 : 2;
    const int left = width % tile_width;
    const int top = height % tile_height;
    for (int y = top; y < height; y += tile_height) {
        for (int x = left; x < width; x += tile_width) {
            std::uint32_t tile = 0;
            int place = 0;
            for (int row = 0; row < tile_height; ++row)
                for (int column = 0; column < tile_width; ++column)
                    tile |= (plane.At(x + column, y + row) ? 1U : 0U) << place++;
            out.Put(kTiles[tile]);
        }
    }
    for (int x = 0; x < left; ++x) PutColumn(out, plane, x);
    if (top > 0) PutRow(out, plane, 0, left);
}

// `plane` as it is written.
template <typename Sink>
void PutPlane(Sink& out, const BitPlane& plane, PlaneCoding coding) {
    out.Put(coding.invert ? 1 : 0, 1);
    out.Put(kModeCodes[static_cast<int>(coding.mode)]);
    switch (coding.mode) {
        case PlaneMode::Raw:
            break;
        case PlaneMode::Pairs:
        case PlaneMode::PairsOfChange:
            PutPairs(out, plane);
            break;
        case PlaneMode::Tiles:
        case PlaneMode::TilesOfChange:
            PutTiles(out, plane);
            break;
        case PlaneMode::Rows:
            for (int y = 0; y < plane.Height(); ++y) PutRow(out, plane, y, 0);
            break;
        case PlaneMode::Columns:
            for (int x = 0; x < plane.Width(); ++x) PutColumn(out, plane, x);
            break;
    }
}

}  // namespace

PlaneCoding CheapestCoding(const BitPlane& plane) {
    PlaneCoding cheapest;
    int least = std::numeric_limits<int>::max();
    const std::array<BitPlane, 2> same = {Written(plane, {PlaneMode::Pairs, false}),
                                          Written(plane, {PlaneMode::Pairs, true})};
    const std::array<BitPlane, 2> change = {Written(plane, {PlaneMode::PairsOfChange, false}),
                                            Written(plane, {PlaneMode::PairsOfChange, true})};
    for (int mode = 1; mode < kPlaneModes; ++mode) {
        for (const bool invert : {false, true}) {
            const PlaneCoding coding{static_cast<PlaneMode>(mode), invert};
            Counter counter;
            PutPlane(counter, (IsOfChange(coding.mode) ? change : same)[invert ? 1 : 0], coding);
            if (counter.bits >= least) continue;
            least = counter.bits;
            cheapest = coding;
        }
    }
    return cheapest;
}

void WritePlane(BitWriter& out, const BitPlane& plane, PlaneCoding coding) {
    PutPlane(out, Written(plane, coding), coding);
}

}  // namespace codecs::wmv9
