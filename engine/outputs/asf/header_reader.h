// What a repair needs of a container's header: its numbers, their places, and the streams.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/outputs/asf/byte_writer.h"

namespace engine::asf {

inline constexpr std::size_t kObjectHeaderBytes = 24;  // GUID and size
inline constexpr std::size_t kDataHeaderBytes = 50;    // the fixed part of the Data Object

/// Places of numbers in the body of the File Properties.
struct PropertiesPlace {
    static constexpr std::size_t kFileId = 0, kFileSize = 16, kPackets = 32, kPlayDuration = 40,
                                 kSendDuration = 48, kPreroll = 56, kFlags = 64,
                                 kMinPacketBytes = 68, kMaxPacketBytes = 72, kEnd = 80;
};

inline constexpr std::uint32_t kBroadcastFlag = 1;
inline constexpr std::uint32_t kSeekableFlag = 2;

struct HeaderView {
    std::vector<std::uint8_t> bytes;  // Header Object and the fixed part of the Data Object
    std::size_t properties = 0;       // place of the File Properties' body
    std::bitset<128> streams;         // numbers that exist
    std::bitset<128> videos;          // those of them that are video
    Guid file_id;
    std::uint64_t file_size = 0, packets = 0, play_duration = 0, preroll_ms = 0;
    std::uint32_t flags = 0, packet_bytes = 0;
    std::uint64_t data_size = 0, data_packets = 0;

    std::size_t DataObject() const { return bytes.size() - kDataHeaderBytes; }
};

/// The size that a file's first kObjectHeaderBytes bytes give its header; 0 when they are no
/// container's.
std::uint64_t HeaderObjectBytes(std::span<const std::uint8_t> first);

/// Takes the header apart. `bytes` are the Header Object's and kDataHeaderBytes more. Throws
/// platform::Error (invalid data) with a reason as its description when the parts do not fit
/// together, or the packets have no single size.
HeaderView ReadHeaderView(std::vector<std::uint8_t> bytes);

}  // namespace engine::asf
