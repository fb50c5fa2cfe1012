// The stream that broadcast and push send: a header without an end, and packets that are stored
// once for all who get them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "engine/base/coded_frame.h"
#include "engine/base/stream_header.h"
#include "engine/outputs/asf/frame_packetizer.h"
#include "engine/outputs/asf/packet_padding.h"

namespace engine {

/// Never changed once it is shared.
struct LivePacket {
    std::vector<std::uint8_t> bytes;  // in full, padded
    asf::UnpaddedPacket unpadded;
    std::uint64_t number = 0;  // from 0
    std::int64_t send_ms = 0;  // never decreases
    int frames = 0;            // that begin in it
    /// Begins with a key frame of the video, or with any frame where there is none: who starts here
    /// can show all that follows.
    bool join_point = false;
};
using LivePacketPtr = std::shared_ptr<const LivePacket>;

/// The largest packet and header that the frames of the network protocols hold.
inline constexpr std::uint32_t kMostLivePacketBytes = 65'527;

/// A packet goes out when it is full, and half full rather than late. One thread an object.
class LiveStream {
  public:
    using Receiver = std::function<void(LivePacketPtr packet)>;

    /// Throws platform::Error (invalid argument) as the container's header and packets do.
    LiveStream(OutputHeader header, Receiver receiver);

    /// Header and the fixed part of the data.
    const std::vector<std::uint8_t>& Header() const { return header_; }
    std::uint32_t PacketBytes() const { return packetizer_->Facts().packet_bytes; }
    LiveStream(const LiveStream&) = delete;
    LiveStream& operator=(const LiveStream&) = delete;

    void Write(const CodedFrame& frame);
    /// The packet that is open goes out as it is.
    void Flush() { packetizer_->Flush(); }

  private:
    std::unique_ptr<asf::FramePacketizer> packetizer_;
    std::vector<std::uint8_t> header_;
    bool sent_ = false;  // a packet, during the last write
    Ticks sent_at_;
};

}  // namespace engine
