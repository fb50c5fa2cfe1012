#include "codecs/screen/stream_header.h"

#include <bit>
#include <cmath>

namespace codecs::screen {
namespace {

constexpr std::uint32_t kMajorVersion = 2;
constexpr std::uint32_t kMinorVersion = 0;
constexpr std::uint32_t kFifteenBits = 127;  // in place of a number of colours
constexpr std::uint32_t kColours = 256;

}  // namespace

std::vector<std::uint8_t> StreamHeader(const StreamFormat& format) {
    std::vector<std::uint8_t> out;
    out.reserve(kStreamHeaderBytes);
    const auto put = [&](std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8)
            out.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    const auto put_float = [&](double value) {
        put(std::bit_cast<std::uint32_t>(static_cast<float>(value)));
    };
    const auto put_size = [&] {
        put(static_cast<std::uint32_t>(format.width));
        put(static_cast<std::uint32_t>(format.height));
    };
    put(kStreamHeaderBytes);
    put(kMajorVersion);
    put(kMinorVersion);
    put_size();  // that is shown ...
    put_size();  // ... and coded
    put_float(format.frames_per_second);
    put(static_cast<std::uint32_t>(std::llround(format.rate_bps)));
    for (int time = 0; time < 3; ++time) put_float(0);  // lead, lag and seek time
    put(format.fifteen_bits ? kFifteenBits : std::uint32_t{kFreeColours});
    put(format.slices == SliceCut::None    ? 0
        : format.slices == SliceCut::Fixed ? static_cast<std::uint32_t>(format.slice_row)
                                           : ~std::uint32_t{0});
    put(kColours);
    for (const Colour colour : format.palette)
        for (int shift = 16; shift >= 0; shift -= 8)
            out.push_back(static_cast<std::uint8_t>(colour >> shift));
    return out;
}

}  // namespace codecs::screen
