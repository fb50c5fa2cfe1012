// Packets of a stream without content.
#pragma once

#include <memory>

#include "engine/outputs/live/live_stream.h"

namespace live_packets {

/// A packet each tenth of a second, a key frame each `group` packets; one frame in each.
inline engine::LivePacketPtr Packet(std::uint64_t number, std::uint64_t group = 10,
                                    std::size_t bytes = 100) {
    auto packet = std::make_shared<engine::LivePacket>();
    packet->bytes.assign(bytes, static_cast<std::uint8_t>(number));
    packet->bytes[3] = packet->bytes[4] = 0;  // no padding
    packet->unpadded = engine::asf::WithoutPadding(packet->bytes);
    packet->number = number;
    packet->send_ms = static_cast<std::int64_t>(number) * 100;
    packet->frames = 1;
    packet->join_point = number % group == 0;
    return packet;
}

}  // namespace live_packets
