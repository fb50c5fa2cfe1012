// Packets whose bytes come from a pool.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "engine/base/av/coded_frame_pool.h"

namespace engine {

/// `bytes` plus libavcodec's padding must fit into the pool's buffers.
inline PacketHandle PacketFromPool(CodedFramePool& packets, AVBufferPool& buffers,
                                   std::size_t bytes) {
    PacketHandle packet = packets.Get();
    packet->buf = CheckAllocated(av_buffer_pool_get(&buffers));
    packet->data = packet->buf->data;
    packet->size = static_cast<int>(bytes);
    std::fill_n(packet->data + bytes, AV_INPUT_BUFFER_PADDING_SIZE, std::uint8_t{0});
    return packet;
}

}  // namespace engine
