// Encodes sound as Windows Media Audio, format tag 0x0161.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "codecs/wma/packetiser.h"
#include "codecs/wma/rate_control.h"
#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

using wma::FirstPass;
using wma::Packet;
using wma::PacketSink;
using wma::RateMode;

struct EncoderSettings {
    int sampling_rate = 44100;  // 8000 to 48000
    int channels = 2;           // 1 or 2
    int bit_rate = 64000;       // bits per second; in quality mode about what is expected
    RateMode mode = RateMode::Constant;
    int quality = 75;         // 0 to 100, of that mode
    int peak_rate = 0;        // bits per second, of that mode
    double peak_seconds = 3;  // of the buffer, likewise
    FirstPass first_pass = {};
    bool low_delay = false;  // packets are small
};

/// Of the stream that an encoder makes with these settings.
StreamFormat FormatFor(const EncoderSettings& settings);

/// One thread. Packets have the samples that they complete, from the start of the sound.
class Encoder {
  public:
    using Settings = EncoderSettings;

    explicit Encoder(const EncoderSettings& settings);
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// What the stream's header says.
    int PacketBytes() const;
    int BytesPerSecond() const;
    std::array<std::uint8_t, 10> ExtraData() const;

    /// Full scale +-1.0; a span a channel, all of one length, of any length.
    void Encode(std::span<const std::span<const float>> samples, const PacketSink& sink);
    /// Once, after the last sample.
    void Finish(const PacketSink& sink);
    /// For the settings of the second pass over the same sound, after Finish.
    FirstPass TakeFirstPass();

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wma_standard
