#include "codecs/wma_standard/packet_writer.h"

#include <algorithm>
#include <cassert>

#include "codecs/common/index.h"

namespace codecs::wma_standard {
namespace {

constexpr int kNumberBits = 4;
constexpr int kCountBits = 4;
constexpr int kMostCounted = 15;

}  // namespace

PacketWriter::PacketWriter(const StreamFormat& format)
    : format_(format),
      capacity_(format.packet_bytes * 8),
      // Half of a packet at the most, so that there is room for another frame.
      most_completion_(std::min((1 << format.completion_bits) - 1, format.packet_bytes * 4)),
      bytes_(Index(format.packet_bytes)) {
    Begin(0);
}

void PacketWriter::Begin(int completion_bits) {
    body_.Clear();
    completion_ = completion_bits;
    begun_ = false;
    whole_frames_ = 0;
    used_ = kNumberBits + kCountBits + format_.completion_bits;
}

PacketWriter::Place PacketWriter::PlaceFor(int bits) const {
    const int taken = bits + (begun_ ? 0 : 2 * format_.size_bits);
    if (taken > Room()) return taken - Room() <= most_completion_ ? Place::Split : Place::Nowhere;
    // A frame that ends within the packet leaves something of it, and is counted.
    const int counted = completed_ + 1 + (left_over_ ? 0 : 1);
    if (taken < Room() && counted <= kMostCounted) return Place::Here;
    return CanPad() ? Place::AfterPadding : Place::Nowhere;
}

void PacketWriter::Add(const FrameBits& frame, const FramePacketSink& sink) {
    assert(CanTake(frame.bits));
    if (PlaceFor(frame.bits) == Place::AfterPadding) Pad(sink);
    frame_.Clear();
    if (!begun_) {
        frame_.Put(static_cast<std::uint32_t>(frame.previous_index), format_.size_bits);
        frame_.Put(static_cast<std::uint32_t>(frame.first_index), format_.size_bits);
    }
    Put(frame.bytes, 0, frame.bits, frame_);
    const int taken = static_cast<int>(frame_.Size());
    frame_.Align();
    begun_ = true;
    if (taken < Room()) {
        Put(frame_.Bytes(), 0, taken, body_);
        used_ += taken;
        ++completed_;
        ++whole_frames_;
        return;
    }
    const int here = Room();
    Put(frame_.Bytes(), 0, here, body_);
    Close(completed_, sink);
    left_over_ = true;
    Begin(taken - here);
    Put(frame_.Bytes(), here, taken - here, body_);
    used_ += taken - here;
    completed_ = 1;
}

void PacketWriter::Pad(const FramePacketSink& sink) {
    assert(CanPad());
    // The last frame is what the packet leaves over, so that a decoder does not take the zeros for
    // another.
    Close(completed_ - 1, sink);
    completed_ = 1;
    left_over_ = true;
    Begin(0);
}

void PacketWriter::Finish(const FramePacketSink& sink) {
    if (completed_ > 0) Close(completed_, sink);
}

void PacketWriter::Put(std::span<const std::uint8_t> bytes, int from, int count, BitWriter& to) {
    while (count > 0) {
        const int in_byte = std::min(8 - from % 8, count);
        to.Put(static_cast<std::uint32_t>(bytes[Index(from / 8)]) >> (8 - from % 8 - in_byte),
               in_byte);
        from += in_byte;
        count -= in_byte;
    }
}

void PacketWriter::Close(int completed, const FramePacketSink& sink) {
    BitWriter head;
    head.Put(static_cast<std::uint32_t>(packets_ % (1 << kNumberBits)), kNumberBits);
    head.Put(static_cast<std::uint32_t>(completed + (left_over_ ? 0 : 1)), kCountBits);
    head.Put(static_cast<std::uint32_t>(completion_), format_.completion_bits);
    body_.Align();
    for (const std::uint8_t byte : body_.Bytes()) head.Put(byte, 8);
    head.Align();
    std::fill(bytes_.begin(), bytes_.end(), std::uint8_t{0});
    std::copy_n(head.Bytes().begin(), std::min(head.Bytes().size(), bytes_.size()), bytes_.begin());
    sink({bytes_, next_frame_, completed});
    next_frame_ += completed;
    ++packets_;
}

}  // namespace codecs::wma_standard
