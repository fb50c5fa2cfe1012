#include "codecs/wmv9/bitplane.h"

#include <limits>

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

// A plane as it is written: inverted, or as differences from what the neighbours let expect.
class Written {
  public:
    Written(const BitPlane& plane, PlaneCoding coding)
        : plane_(plane), invert_(coding.invert), change_(IsOfChange(coding.mode)) {}

    std::uint32_t At(int x, int y) const {
        const bool expected = change_ ? Expected(x, y) : invert_;
        return plane_.At(x, y) != expected ? 1 : 0;
    }
    int Width() const { return plane_.Width(); }
    int Height() const { return plane_.Height(); }

  private:
    bool Expected(int x, int y) const {
        if (x == 0 && y == 0) return invert_;
        if (y == 0) return plane_.At(x - 1, 0);
        if (x == 0) return plane_.At(0, y - 1);
        const bool left = plane_.At(x - 1, y);
        return left == plane_.At(x, y - 1) ? left : invert_;
    }

    const BitPlane& plane_;
    bool invert_;
    bool change_;
};

template <typename Sink>
void PutPairs(Sink& out, const Written& plane) {
    const int width = plane.Width();
    const int count = width * plane.Height();
    const auto bit = [&](int i) { return plane.At(i % width, i / width); };
    int i = count % 2;
    if (i == 1) out.Put(bit(0), 1);
    for (; i < count; i += 2) out.Put(kPairs[bit(i) + 2 * bit(i + 1)]);
}

template <typename Sink>
void PutColumn(Sink& out, const Written& plane, int x) {
    std::uint32_t any = 0;
    for (int y = 0; y < plane.Height(); ++y) any |= plane.At(x, y);
    out.Put(any, 1);
    if (any == 0) return;
    for (int y = 0; y < plane.Height(); ++y) out.Put(plane.At(x, y), 1);
}

template <typename Sink>
void PutRow(Sink& out, const Written& plane, int y, int from) {
    std::uint32_t any = 0;
    for (int x = from; x < plane.Width(); ++x) any |= plane.At(x, y);
    out.Put(any, 1);
    if (any == 0) return;
    for (int x = from; x < plane.Width(); ++x) out.Put(plane.At(x, y), 1);
}

template <typename Sink>
void PutTiles(Sink& out, const Written& plane) {
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
                    tile |= plane.At(x + column, y + row) << place++;
            out.Put(kTiles[tile]);
        }
    }
    for (int x = 0; x < left; ++x) PutColumn(out, plane, x);
    if (top > 0) PutRow(out, plane, 0, left);
}

template <typename Sink>
void PutPlane(Sink& out, const BitPlane& bits, PlaneCoding coding) {
    out.Put(coding.invert ? 1 : 0, 1);
    out.Put(kModeCodes[static_cast<int>(coding.mode)]);
    const Written plane(bits, coding);
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

int PlaneBits(const BitPlane& plane, PlaneCoding coding) {
    Counter counter;
    PutPlane(counter, plane, coding);
    return counter.bits;
}

PlaneCoding CheapestCoding(const BitPlane& plane) {
    PlaneCoding cheapest;
    int least = std::numeric_limits<int>::max();
    for (int mode = 1; mode < kPlaneModes; ++mode) {
        for (const bool invert : {false, true}) {
            const PlaneCoding coding{static_cast<PlaneMode>(mode), invert};
            const int bits = PlaneBits(plane, coding);
            if (bits >= least) continue;
            least = bits;
            cheapest = coding;
        }
    }
    return cheapest;
}

void WritePlane(BitWriter& out, const BitPlane& plane, PlaneCoding coding) {
    PutPlane(out, plane, coding);
}

}  // namespace codecs::wmv9
