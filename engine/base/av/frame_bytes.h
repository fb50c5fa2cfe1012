// What a frame holds of memory.
#pragma once

#include <cstddef>

#include "engine/base/av/av_ptr.h"

namespace engine {

/// Frames that refer to the same samples each count them.
inline std::size_t BytesOf(const AVFrame& frame) {
    std::size_t bytes = 0;
    for (const AVBufferRef* buffer : frame.buf)
        if (buffer != nullptr) bytes += buffer->size;
    return bytes;
}

}  // namespace engine
