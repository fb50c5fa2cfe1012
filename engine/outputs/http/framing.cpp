#include "engine/outputs/http/framing.h"

#include <algorithm>
#include <cassert>

namespace engine::http {
namespace {

constexpr std::size_t kInnerBytes = 8;
constexpr std::size_t kMostBytes = 0xFFFF - kInnerBytes;

std::uint8_t Byte(std::uint64_t value, unsigned index) {
    return static_cast<std::uint8_t>(value >> (8 * index));
}

// The length stands twice: players take one or the other.
DataFrame Frame(char kind, std::uint64_t location, std::uint8_t flags, std::size_t bytes) {
    assert(bytes <= kMostBytes);
    const std::size_t length = bytes + kInnerBytes;
    return {'$',
            static_cast<std::uint8_t>(kind),
            Byte(length, 0),
            Byte(length, 1),
            Byte(location, 0),
            Byte(location, 1),
            Byte(location, 2),
            Byte(location, 3),
            0,
            flags,
            Byte(length, 0),
            Byte(length, 1)};
}

}  // namespace

std::vector<std::uint8_t> FramedHeader(std::span<const std::uint8_t> header) {
    constexpr std::uint8_t kFirst = 0x04;
    constexpr std::uint8_t kLast = 0x08;
    std::vector<std::uint8_t> framed;
    for (std::uint64_t piece = 0; piece == 0 || !header.empty(); ++piece) {
        const std::size_t bytes = std::min(header.size(), kMostBytes);
        const auto flags = static_cast<std::uint8_t>((piece == 0 ? kFirst : 0) |
                                                     (bytes == header.size() ? kLast : 0));
        const DataFrame frame = Frame('H', piece, flags, bytes);
        framed.insert(framed.end(), frame.begin(), frame.end());
        framed.insert(framed.end(), header.begin(),
                      header.begin() + static_cast<std::ptrdiff_t>(bytes));
        header = header.subspan(bytes);
    }
    return framed;
}

DataFrame FrameOfData(std::uint64_t number, std::uint8_t counter, std::size_t bytes) {
    return Frame('D', number, counter, bytes);
}

}  // namespace engine::http
