// Takes a data packet apart, in every form that the ASF specification allows.
#pragma once

#include <bitset>
#include <cstdint>
#include <span>
#include <vector>

namespace engine::asf {

/// A media object's fragment in a packet; of a compressed payload one whole object.
struct PayloadFacts {
    std::uint8_t stream = 0;  // number, 1..127
    bool key = false;
    std::uint32_t object = 0;        // its number, as wide as the writer made it
    std::uint32_t offset = 0;        // into the object
    std::uint32_t bytes = 0;         // of this fragment
    std::uint32_t object_bytes = 0;  // of the whole object, 0 = not said
    std::uint32_t pts_ms = 0;        // preroll included; 0 when not said
};

struct PacketFacts {
    std::uint32_t send_ms = 0;
    std::uint16_t duration_ms = 0;
    std::vector<PayloadFacts> payloads;
};

/// False when the bytes, one packet's size, are no packet: lengths that do not meet its end, a
/// payload of a stream that is not among `streams` (by number) or outside of its object. `facts` is
/// then undefined. Its memory is used again.
bool ReadPacket(std::span<const std::uint8_t> bytes, const std::bitset<128>& streams,
                PacketFacts& facts);

}  // namespace engine::asf
