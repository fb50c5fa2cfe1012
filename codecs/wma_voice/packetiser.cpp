#include "codecs/wma_voice/packetiser.h"

#include <algorithm>
#include <cassert>

namespace codecs::wma_voice {
namespace {

constexpr int kNumberBits = 4;
constexpr int kCountBits = 6;
constexpr int kMostCounted = 62;
constexpr int kHeadBits = kNumberBits + 1 + kCountBits;  // one bit: spectra are told together
constexpr int kMostKept = 2048;                          // bits that a decoder can keep back

}  // namespace

Packetiser::Packetiser(const StreamFormat& format)
    : format_(format), capacity_(format.PacketBytes() * 8) {
    Begin();
}

void Packetiser::Begin() {
    body_.Clear();
    begun_ = 0;
    last_bits_ = 0;
    spill_ = 0;
    used_ = kHeadBits + format_.SpillBits();
}

bool Packetiser::CanPad() const { return begun_ > 0 && last_bits_ + Room() < kMostKept; }

void Packetiser::Add(const BitWriter& superframe, const PacketSink& sink) {
    // Kept until here: it may be the last packet.
    if (Room() == 0) Close(false, sink);
    if (begun_ == kMostCounted) Pad(sink);
    const int bits = static_cast<int>(superframe.Size());
    whole_ = superframe;
    whole_.Align();
    const int here = std::min(bits, Room());
    body_.Put(whole_.Bytes(), 0, here);
    used_ += here;
    ++begun_;
    last_bits_ = here;
    if (here == bits) return;
    Close(false, sink);
    spill_ = bits - here;
    assert(spill_ < Room());
    body_.Put(whole_.Bytes(), here, spill_);
    used_ += spill_;
}

void Packetiser::Finish(const BitWriter& dummy, const PacketSink& sink) {
    if (begun_before_ + begun_ == 0) return;
    while (!CanPad()) Add(dummy, sink);
    Close(true, sink);
}

void Packetiser::Close(bool last, const PacketSink& sink) {
    BitWriter packet;
    packet.Put(static_cast<std::uint32_t>(packets_ % (1 << kNumberBits)), kNumberBits);
    packet.Put(1, 1);
    packet.Put(static_cast<std::uint32_t>(begun_), kCountBits);
    packet.Put(static_cast<std::uint32_t>(spill_), format_.SpillBits());
    const int body_bits = static_cast<int>(body_.Size());
    body_.Align();
    packet.Put(body_.Bytes(), 0, body_bits);
    while (static_cast<int>(packet.Size()) < capacity_) packet.Put(0, 1);
    const std::int64_t first = std::max<std::int64_t>(begun_before_ - 1, 0);
    const std::int64_t begun = begun_before_ + begun_;
    const std::int64_t end = last ? begun : begun - 1;
    sink({packet.Bytes(), first * kSuperframeSamples, (end - first) * kSuperframeSamples, true});
    ++packets_;
    begun_before_ = begun;
    Begin();
}

}  // namespace codecs::wma_voice
