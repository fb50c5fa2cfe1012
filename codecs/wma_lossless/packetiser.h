// Packs frames into packets of one size, which frames do not heed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_lossless/stream_format.h"

namespace codecs::wma_lossless {

struct Packet {
    std::span<const std::uint8_t> data;  // valid during the call that hands it on
    std::int64_t first_sample = 0;       // of the first frame that ends in it, else that comes next
    std::int64_t samples = 0;            // for each channel, of the frames that end in it
    bool key = false;                    // the first frame that starts in it can be decoded at once
};
using PacketSink = std::function<void(const Packet& packet)>;

class Packetiser {
  public:
    explicit Packetiser(const StreamFormat& format);

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
    void Finish(const PacketSink& sink);

  private:
    std::size_t Size(const Frame& frame) const;
    void PutFrame(const Frame& frame, bool another, const PacketSink& sink);
    void PutBits(std::uint32_t value, int bits, const PacketSink& sink);
    void PutFiller(const PacketSink& sink);
    void PadPacket(const PacketSink& sink);
    void BeginPacket();
    void HandOn(const PacketSink& sink);
    std::size_t Room() const { return packet_bits_ - packet_.Size(); }

    StreamFormat format_;
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

}  // namespace codecs::wma_lossless
