// Puts superframes into packets of one size. One may end in the packet after the one in which it
// begins.
#pragma once

#include <cstdint>

#include "codecs/common/bit_writer.h"
#include "codecs/wma/packetiser.h"
#include "codecs/wma_voice/stream_format.h"

namespace codecs::wma_voice {

using wma::Packet;
using wma::PacketSink;

/// A packet has the samples that a decoder gives out when it gets it: all but those of the last
/// superframe that has begun. The format outlives it. One thread.
class Packetiser {
  public:
    explicit Packetiser(const StreamFormat& format);

    void Add(const BitWriter& superframe, const PacketSink& sink);
    /// Leaves the rest of the packet empty. Where CanPad says so.
    void Pad(const PacketSink& sink) { Close(false, sink); }
    /// Whether a decoder can keep back the packet's last superframe with all that is empty.
    bool CanPad() const;
    /// After the last superframe. @param dummy  a superframe of no samples
    void Finish(const BitWriter& dummy, const PacketSink& sink);

    /// All that packets hold up to here, with what is told about them.
    std::int64_t Bits() const { return packets_ * capacity_ + used_; }
    /// What is left of the packet that is being written.
    int Room() const { return capacity_ - used_; }

  private:
    void Begin();
    void Close(bool last, const PacketSink& sink);

    const StreamFormat& format_;
    int capacity_;  // bits
    BitWriter body_, whole_;
    std::int64_t packets_ = 0;
    std::int64_t begun_before_ = 0;  // superframes, in the packets before
    int begun_ = 0;                  // in this one
    int last_bits_ = 0;              // of the last that has begun, as far as it stands here
    int used_ = 0;
    int spill_ = 0;  // bits of the superframe begun in the packet before
};

}  // namespace codecs::wma_voice
