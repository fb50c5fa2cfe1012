#include "codecs/wma/packetiser.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

constexpr int kSequenceBits = 4;
constexpr int kFlagBits = 2;             // key, and one of spliced streams
constexpr std::uint8_t kKeyFlag = 0x08;  // in a packet's first byte

}  // namespace

Packetiser::Packetiser(int packet_bytes)
    : header_bits_(PacketHeaderBits(packet_bytes)),
      length_bits_(FrameLengthBits(packet_bytes)),
      packet_bits_(Index(packet_bytes) * 8) {
    BeginPacket();
}

void Packetiser::Add(Frame frame, const PacketSink& sink) {
    if (last_) PutFrame(*last_, true, sink);
    last_ = std::move(frame);
}

void Packetiser::Finish(std::span<const Code> filler, const PacketSink& sink) {
    if (!last_) return;
    PutFrame(*last_, false, sink);
    last_.reset();
    if (packet_.Size() > Index(header_bits_)) PutFiller(filler, sink);
}

bool Packetiser::NextStartsFirst() const { return last_ ? Size(*last_) >= Room() : true; }

std::size_t Packetiser::Size(const Frame& frame) const {
    return Index(length_bits_) + frame.bits + 1;
}

void Packetiser::PutFrame(const Frame& frame, bool another, const PacketSink& sink) {
    const std::size_t size = Size(frame);
    assert(size < std::size_t{1} << length_bits_);
    packet_has_key_ = packet_has_key_ || frame.key;
    packet_key_ = packet_key_ || (frame.key && !packet_started_);
    packet_started_ = true;
    frame_left_ = size;
    PutBits(static_cast<std::uint32_t>(size), length_bits_, sink);
    std::size_t left = frame.bits;
    for (const std::uint8_t byte : frame.bytes) {
        const auto bits = static_cast<int>(std::min<std::size_t>(left, 8));
        PutBits(std::uint32_t{byte} >> (8 - bits), bits, sink);
        left -= Index(bits);
    }
    ended_ += frame.samples;
    packet_ended_ += frame.samples;
    // Whether another frame begins in this very packet: after its last bit none does.
    PutBits(another && Room() > 1 ? 1 : 0, 1, sink);
}

void Packetiser::PutFiller(std::span<const Code> filler, const PacketSink& sink) {
    std::size_t bits = 0;
    for (const Code& code : filler) bits += code.length;
    if (Room() < bits) PadPacket(sink);
    for (const Code& code : filler) packet_.Put(code);
    PadPacket(sink);
}

void Packetiser::PadPacket(const PacketSink& sink) {
    while (Room() > 0) packet_.Put(0, static_cast<int>(std::min<std::size_t>(Room(), 32)));
    HandOn(sink);
}

void Packetiser::PutBits(std::uint32_t value, int bits, const PacketSink& sink) {
    while (bits > 0) {
        const auto now = static_cast<int>(std::min(Room(), Index(bits)));
        bits -= now;
        packet_.Put(value >> bits, now);
        frame_left_ -= Index(now);
        if (Room() == 0) HandOn(sink);
    }
}

void Packetiser::BeginPacket() {
    packet_.Clear();
    packet_.Put(sequence_, kSequenceBits);
    packet_.Put(0, kFlagBits);
    packet_.Put(static_cast<std::uint32_t>(frame_left_), length_bits_);
    sequence_ = (sequence_ + 1) & ((1U << kSequenceBits) - 1);
    packet_started_ = packet_has_key_ = packet_key_ = false;
    packet_ended_ = 0;
}

void Packetiser::HandOn(const PacketSink& sink) {
    bytes_.assign(packet_.Bytes().begin(), packet_.Bytes().end());
    if (packet_has_key_) bytes_[0] |= kKeyFlag;
    sink({bytes_, ended_ - packet_ended_, packet_ended_, packet_key_});
    BeginPacket();
}

}  // namespace codecs::wma
