#include "engine/outputs/asf/packet_padding.h"

#include <algorithm>
#include <cassert>

namespace engine::asf {
namespace {

// Three bytes of error correction, the flags that say how wide the padding's length is, the flags
// of other widths, then the padding's length.
constexpr std::size_t kFlags = 3;
constexpr std::size_t kLength = 5;
constexpr unsigned kPaddingIsByte = 0x08;
constexpr unsigned kPaddingIsWord = 0x10;

// Some readers take so few bytes that fill a packet up for a payload that was cut off.
constexpr std::size_t kLeastPadding = 16;

std::array<std::uint8_t, 7> FirstBytes(std::span<const std::uint8_t> packet) {
    std::array<std::uint8_t, 7> bytes{};
    assert(packet.size() > bytes.size());
    std::copy_n(packet.begin(), bytes.size(), bytes.begin());
    return bytes;
}

}  // namespace

UnpaddedPacket WithoutPadding(std::span<const std::uint8_t> packet) {
    UnpaddedPacket result{FirstBytes(packet), 0};
    std::size_t padding = 0;
    if ((packet[kFlags] & kPaddingIsWord) != 0) {
        padding = packet[kLength] | static_cast<std::size_t>(packet[kLength + 1]) << 8U;
        result.head[kLength] = result.head[kLength + 1] = 0;
    } else if ((packet[kFlags] & kPaddingIsByte) != 0) {
        padding = packet[kLength];
        result.head[kLength] = 0;
    }
    assert(padding < packet.size());
    if (padding < kLeastPadding) return {FirstBytes(packet), packet.size()};
    result.size = packet.size() - padding;
    return result;
}

}  // namespace engine::asf
