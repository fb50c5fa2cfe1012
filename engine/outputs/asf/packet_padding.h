// Data packets as they travel over a network: without the padding that fills them up.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace engine::asf {

/// What is sent of a packet: `head`, which says that there is no padding, in place of its first
/// bytes, then its own up to `size`. Who receives it fills it up with zeros.
struct UnpaddedPacket {
    std::array<std::uint8_t, 7> head{};
    std::size_t size = 0;
};

/// Of little padding nothing is left out.
/// @param packet  as Packetizer makes them
UnpaddedPacket WithoutPadding(std::span<const std::uint8_t> packet);

}  // namespace engine::asf
