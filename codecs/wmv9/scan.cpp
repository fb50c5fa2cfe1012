#include "codecs/wmv9/scan.h"

#include <algorithm>

#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {
namespace {

Scan WithoutDc(std::span<const std::uint8_t> places) { return Scan(places.subspan(1)); }

}  // namespace

Scan::Scan(std::span<const std::uint8_t> places) : size_(places.size()) {
    std::copy(places.begin(), places.end(), places_.begin());
    for (std::size_t i = 0; i < size_; ++i) {
        const std::size_t place = places_[i];
        for (std::size_t four = 0; four < 16; ++four)
            if ((four >> place % 4 & 1U) != 0) ordered_[place / 4][four] |= std::uint64_t{1} << i;
    }
}

const std::array<Scan, 4> kPartScans = {Scan(kScan8x8), Scan(kScan8x4), Scan(kScan4x8),
                                        Scan(kScan4x4)};
const IntraScans kIntraScans = {WithoutDc(kScan8x8), WithoutDc(kScanI), WithoutDc(kScanIAbove),
                                WithoutDc(kScanILeft)};

}  // namespace codecs::wmv9
