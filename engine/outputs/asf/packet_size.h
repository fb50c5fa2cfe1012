// The size of the data packets, and what a stream's rate grows by when it travels in them.
#pragma once

#include <cstdint>

namespace engine::asf {

inline constexpr std::uint32_t kMinPacketBytes = 100;
inline constexpr std::uint32_t kMaxPacketBytes = 65536;
inline constexpr std::uint32_t kPacketOverheadBytes = 12;   // a packet's own header
inline constexpr std::uint32_t kPayloadOverheadBytes = 17;  // each payload's header

/// The packet size in bytes, kMinPacketBytes..kMaxPacketBytes: about ten packets a second of
/// `total_bps` (bits per second of all streams, 0 = unknown), never below `min_bytes` nor above
/// `max_bytes` (0 = not asked for). Throws platform::Error (invalid argument) when the minimum is
/// above the maximum or a limit leaves no legal size.
std::uint32_t ChoosePacketSize(std::uint64_t total_bps, std::uint32_t min_bytes,
                               std::uint32_t max_bytes);

/// `rate_bps` with the headers of packets that carry one payload each; at most 0xFFFFFFFF.
std::uint32_t RateInPackets(std::uint64_t rate_bps, std::uint32_t packet_bytes);

}  // namespace engine::asf
