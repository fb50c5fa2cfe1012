// What every output (file, broadcast, push) is given: the streams' headers, then the same packets.
#pragma once

#include <cstdint>
#include <span>

#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"

namespace engine {

/// One coded frame. Times count from the start of the session and are never negative. Frames of a
/// stream that is not reordered are shown in the order of their packets.
struct EncodedPacket {
    int stream = 0;
    Ticks pts;
    Ticks dts;
    Ticks duration;
    bool key = false;
    std::span<const std::uint8_t> bytes;  // valid during the call only
};

struct FileResult {
    std::uint64_t bytes = 0;
    Ticks duration;  // end of the last coded frame
};

/// Calls come from one thread, in the order Begin, Write ..., Finish. A sink that is destroyed
/// before Finish leaves what it has written playable.
class PacketSink {
  public:
    virtual ~PacketSink() = default;
    /// Throws platform::Error (access denied, path not found, disk full, invalid argument).
    virtual void Begin(const OutputHeader& header) = 0;
    /// Dts of all streams together do not decrease. Throws platform::Error.
    virtual void Write(const EncodedPacket& packet) = 0;
    /// Completes the output. Throws platform::Error.
    virtual void Finish() = 0;
};

}  // namespace engine
