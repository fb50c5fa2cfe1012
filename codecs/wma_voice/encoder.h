// Encodes speech as Windows Media Audio 9 Voice, format tag 0x000A.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace codecs::wma_voice {

struct EncoderSettings {
    int sampling_rate = 8000;  // 8000 to 22050
    int bit_rate = 8000;       // bits per second
    bool low_delay = false;    // packets are small
};

/// One thread. Samples first to last are what packets complete: `first` counts from the start of
/// the sound.
struct CodedPacket {
    std::span<const std::uint8_t> bytes;  // until the sink returns
    std::int64_t first = 0;
    std::int64_t samples = 0;
};
using CodedPacketSink = std::function<void(const CodedPacket& packet)>;
/// What decoders give out, in order.
using DecodedSink = std::function<void(std::span<const float> samples)>;

class Encoder {
  public:
    explicit Encoder(const EncoderSettings& settings, DecodedSink decoded = {});
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// What the stream's header says.
    int PacketBytes() const;
    std::array<std::uint8_t, 46> ExtraData() const;

    /// One channel, full scale +-1.0, of any length.
    void Encode(std::span<const float> samples, const CodedPacketSink& sink);
    /// Once, after the last sample.
    void Finish(const CodedPacketSink& sink);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wma_voice
