// Encodes speech as Windows Media Audio 9 Voice, format tag 0x000A.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "codecs/wma/packetiser.h"
#include "codecs/wma_voice/stream_format.h"

namespace codecs::wma_voice {

using wma::Packet;
using wma::PacketSink;

/// Mixed = music may be among speech. Automatic = as it sounds.
enum class ContentMode : std::uint8_t { Automatic, Speech, Mixed };

struct ContentPart {
    std::int64_t begin = 0;  // sample
    std::int64_t end = 0;
    ContentMode mode = ContentMode::Automatic;
};

/// What there is to be encoded.
struct Content {
    ContentMode mode = ContentMode::Automatic;  // outside the parts
    std::vector<ContentPart> parts = {};        // one after the other
};

struct EncoderSettings {
    int sampling_rate = 8000;  // 8000 to 22050
    int bit_rate = 8000;       // bits per second
    bool low_delay = false;    // packets are small
    Content content = {};
};

/// Of the stream that an encoder makes with these settings.
StreamFormat FormatFor(const EncoderSettings& settings);

/// What decoders give out, in order.
using DecodedSink = std::function<void(std::span<const float> samples)>;

/// One thread. Decoders give back as many samples as there were.
class Encoder {
  public:
    using Settings = EncoderSettings;

    explicit Encoder(const EncoderSettings& settings, DecodedSink decoded = {});
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// Full scale +-1.0, of any length; of one channel.
    void Encode(std::span<const std::span<const float>> samples, const PacketSink& sink);
    /// Once, after the last sample.
    void Finish(const PacketSink& sink);
    /// How much of the sound so far is music, or sounds like that, whatever it was said to be.
    std::int64_t MusicSamples() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wma_voice
