// Packs frames into packets of one size, which frames do not heed, as the lossless and the
// professional format do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma/floor_log2.h"

namespace codecs::wma {

/// Bits of a frame's length, and of how much of one a packet begins with. A frame has fewer bits
/// than 2 to this power.
constexpr int FrameLengthBits(int packet_bytes) { return FloorLog2(packet_bytes) + 4; }
/// Of what stands in front of each packet: a sequence number, two flags, and that length.
constexpr int PacketHeaderBits(int packet_bytes) { return 6 + FrameLengthBits(packet_bytes); }

struct Packet {
    std::span<const std::uint8_t> data;  // valid during the call that hands it on
    std::int64_t first_sample = 0;       // of the first frame that ends in it, else that comes next
    std::int64_t samples = 0;            // for each channel, of the frames that end in it
    bool key = false;                    // the first frame that starts in it can be decoded at once
};
using PacketSink = std::function<void(const Packet& packet)>;

class Packetiser {
  public:
    explicit Packetiser(int packet_bytes);

    /// What stands between the frame's length and its last bit.
    struct Frame {
        std::vector<std::uint8_t> bytes;
        std::size_t bits = 0;  // of those, of which the last may be filled up
        std::int64_t samples = 0;
        bool key = false;
    };

    /// Hands on the packets that the frames before have filled.
    void Add(Frame frame, const PacketSink& sink);
    /// Whether the frame after those so far is the first to start in its packet: a decoder that
    /// enters the stream gives up a packet at the first frame that it cannot decode.
    bool NextStartsFirst() const;
    /// Hands on the rest, if there was any frame.
    /// @param filler  what stands behind the last frame's end, if anything has to
    void Finish(std::span<const Code> filler, const PacketSink& sink);

  private:
    std::size_t Size(const Frame& frame) const;
    void PutFrame(const Frame& frame, bool another, const PacketSink& sink);
    void PutBits(std::uint32_t value, int bits, const PacketSink& sink);
    void PutFiller(std::span<const Code> filler, const PacketSink& sink);
    void PadPacket(const PacketSink& sink);
    void BeginPacket();
    void HandOn(const PacketSink& sink);
    std::size_t Room() const { return packet_bits_ - packet_.Size(); }

    int header_bits_;
    int length_bits_;
    std::size_t packet_bits_;
    BitWriter packet_;
    std::vector<std::uint8_t> bytes_;
    bool packet_started_ = false;  // a frame starts in it
    bool packet_has_key_ = false;  // one that needs none before it
    bool packet_key_ = false;      // as the first of them
    std::uint32_t sequence_ = 0;
    std::size_t frame_left_ = 0;     // bits of the frame under way that are not written yet
    std::int64_t ended_ = 0;         // samples of all frames that have ended
    std::int64_t packet_ended_ = 0;  // of those in this packet
    std::optional<Frame> last_;      // waits for whether another one follows
};

}  // namespace codecs::wma
