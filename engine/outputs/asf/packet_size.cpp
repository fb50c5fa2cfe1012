#include "engine/outputs/asf/packet_size.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr std::uint64_t kLowRateBps = 350'000;
constexpr std::uint64_t kLowRatePacketBytes = 1400;  // one Ethernet frame
constexpr std::uint64_t kUsualMaxPacketBytes = 16'000;

std::uint64_t WantedSize(std::uint64_t total_bps, bool has_maximum) {
    if (total_bps == 0) return kLowRatePacketBytes;
    const std::uint64_t tenth_of_second = total_bps / 80;
    if (!has_maximum && total_bps <= kLowRateBps)
        return std::min(tenth_of_second, kLowRatePacketBytes);
    return std::min(tenth_of_second, kUsualMaxPacketBytes);
}

}  // namespace

std::uint32_t ChoosePacketSize(std::uint64_t total_bps, std::uint32_t min_bytes,
                               std::uint32_t max_bytes) {
    const std::uint32_t lowest = std::max(min_bytes, kMinPacketBytes);
    const std::uint32_t highest =
        max_bytes == 0 ? kMaxPacketBytes : std::min(max_bytes, kMaxPacketBytes);
    if (max_bytes != 0 && max_bytes < kMinPacketBytes)
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("Maximum packet size {}: a packet has at least {} bytes; raise the maximum",
                        max_bytes, kMinPacketBytes));
    if (min_bytes > kMaxPacketBytes)
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("Minimum packet size {}: a packet has at most {} bytes; lower the minimum",
                        min_bytes, kMaxPacketBytes));
    if (lowest > highest)
        throw platform::Error(platform::kInvalidArgument,
                              fmt::format("Minimum packet size {} is above the maximum packet size "
                                          "{}; lower the one or raise the other",
                                          min_bytes, max_bytes));
    return static_cast<std::uint32_t>(
        std::clamp<std::uint64_t>(WantedSize(total_bps, max_bytes != 0), lowest, highest));
}

std::uint32_t RateInPackets(std::uint64_t rate_bps, std::uint32_t packet_bytes) {
    const std::uint64_t carried = packet_bytes - kPacketOverheadBytes - kPayloadOverheadBytes;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(
        rate_bps * packet_bytes / carried, std::numeric_limits<std::uint32_t>::max()));
}

}  // namespace engine::asf
