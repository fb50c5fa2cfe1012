// The frames in which players get a stream over HTTP (the Windows Media HTTP Streaming Protocol,
// MS-WMSP, section 2.2.3).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace engine::http {

/// The container's header in as many pieces as it takes.
std::vector<std::uint8_t> FramedHeader(std::span<const std::uint8_t> header);

/// What stands before a data packet.
using DataFrame = std::array<std::uint8_t, 12>;
/// @param number   of the packet in the stream
/// @param counter  of the client's data packets
/// @param bytes    of the packet, at most 65527, asserted
DataFrame FrameOfData(std::uint64_t number, std::uint8_t counter, std::size_t bytes);

/// The stream has ended, and none follows.
inline constexpr std::array<std::uint8_t, 8> kEndOfStream = {'$', 'E', 4, 0, 0, 0, 0, 0};

}  // namespace engine::http
