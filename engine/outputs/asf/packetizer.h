// Cuts coded frames into data packets of one fixed size; file, broadcast and push all send these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "engine/base/ticks.h"
#include "engine/outputs/asf/byte_writer.h"

namespace engine::asf {

/// One coded frame (the container's "media object"). Times are never negative.
struct MediaObject {
    std::uint8_t stream_number = 1;  // 1..127
    bool video = false;
    bool key = false;
    Ticks pts{};
    Ticks dts{};
    Ticks duration{};
    std::span<const std::uint8_t> bytes{};
    Ticks ahead{};  // of the presentation: what is written is that much earlier
};

/// A whole video key frame and the packets that hold it.
struct KeyFrameSpan {
    std::uint8_t stream_number = 0;
    std::int64_t pts_ms = 0;  // preroll included
    std::uint64_t first_packet = 0;
    std::uint32_t packets = 1;
};

/// A full packet and what it completes. `bytes` is valid during the call only.
struct ClosedPacket {
    std::span<const std::uint8_t> bytes;
    std::uint64_t number = 0;  // from 0
    std::int64_t send_ms = 0;  // never decreases
    std::uint16_t duration_ms = 0;
    std::uint8_t key_stream = 0;  // number of the stream whose key frame it begins with, 0 = none
    int frames = 0;               // that begin in it
    // Over all packets so far, this one included:
    std::int64_t last_pts_ms = 0;           // the largest presentation field, preroll included
    Ticks media_end;                        // end of the last frame that is complete
    std::optional<KeyFrameSpan> key_frame;  // the key frame that ends here
};

/// The layout is the multiple-payload form of the ASF specification. A video key frame always
/// starts a packet, an audio frame is split only when no packet could hold it, and no packet waits
/// for more than a second of media. Allocates on construction only; one thread an object.
class Packetizer {
  public:
    using Receiver = std::function<void(const ClosedPacket&)>;

    /// @param packet_bytes  100..65536, asserted
    /// @param preroll_ms    added to every pts, above 0
    /// An exception of the receiver passes through Add and Flush; the packetizer is then done with.
    Packetizer(std::uint32_t packet_bytes, std::uint32_t preroll_ms, Receiver receiver);

    /// Frames come in order of dts over all streams. An empty frame is left out. Throws
    /// platform::Error (invalid argument) for a frame of 4 GiB or more, and for one whose time
    /// does not fit the file's 32 bits of milliseconds.
    void Add(const MediaObject& object);
    /// Closes the packet that is open, if any.
    void Flush();

  private:
    std::size_t Room() const;
    void AppendPayload(const MediaObject& object, std::uint32_t offset, std::size_t count);
    void Close();
    std::int64_t PtsField(const MediaObject& object) const;

    const std::uint32_t packet_bytes_;
    const std::uint32_t preroll_ms_;
    Receiver receiver_;
    ByteWriter packet_;  // room for the longest packet header, then the payloads
    ByteWriter header_;
    int payloads_ = 0;
    Ticks first_dts_;            // of the open packet
    std::int64_t media_ms_ = 0;  // where in decode time the open packet's data end
    std::uint64_t first_packet_of_object_ = 0;
    std::array<std::uint8_t, 128> object_numbers_{};  // next one, by stream number
    ClosedPacket state_;                              // of the open packet
};

}  // namespace engine::asf
