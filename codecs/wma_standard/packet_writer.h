// Puts frames into packets of one size: a bit reservoir, since a frame may end in the packet after
// the one in which it begins.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

/// `first_frame` is the first that a decoder completes with the packet, `frames` how many it does.
struct FramePacket {
    std::span<const std::uint8_t> bytes;
    std::int64_t first_frame = 0;
    int frames = 0;
};
using FramePacketSink = std::function<void(const FramePacket& packet)>;

struct FrameBits {
    std::span<const std::uint8_t> bytes;
    int bits = 0;
    int previous_index = 0;  // size of the block before it
    int first_index = 0;     // size of its first block
};

/// The format outlives it. Allocates on construction. One thread.
class PacketWriter {
  public:
    explicit PacketWriter(const StreamFormat& format);

    /// Whether a frame of so many bits can be the next one. It can be when it is smaller.
    bool CanTake(int bits) const { return PlaceFor(bits) != Place::Nowhere; }
    /// @param bits  what CanTake takes
    void Add(const FrameBits& frame, const FramePacketSink& sink);
    /// Fills the packet that is being written with zeros. There must be a whole frame in it that
    /// was begun in it.
    void Pad(const FramePacketSink& sink);
    bool CanPad() const { return whole_frames_ > 0; }
    /// After the last frame.
    void Finish(const FramePacketSink& sink);

    /// All that packets hold up to here, with what is told about them.
    std::int64_t Bits() const { return packets_ * format_.packet_bytes * std::int64_t{8} + used_; }
    /// What is left of the packet that is being written.
    int Room() const { return capacity_ - used_; }

  private:
    enum class Place { Here, Split, AfterPadding, Nowhere };

    void Begin(int completion_bits);
    Place PlaceFor(int bits) const;
    void Put(std::span<const std::uint8_t> bytes, int from, int count, BitWriter& to);
    void Close(int completed, const FramePacketSink& sink);

    const StreamFormat& format_;
    int capacity_;  // bits of a packet
    int most_completion_;
    BitWriter body_, frame_;
    std::vector<std::uint8_t> bytes_;
    std::int64_t packets_ = 0;
    std::int64_t next_frame_ = 0;  // the first that no packet before has completed
    int used_ = 0;
    int completion_ = 0;      // bits of the frame begun in the packet before
    bool left_over_ = false;  // whether the packet before left something
    bool begun_ = false;      // whether a frame began in this packet
    int completed_ = 0;       // frames that end in this packet, or did in the padded one before
    int whole_frames_ = 0;    // of them, those that began in it
};

}  // namespace codecs::wma_standard
