// Encodes sound as Windows Media Audio 9 Professional, format tag 0x0162.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "codecs/wma/packetiser.h"
#include "codecs/wma/rate_control.h"
#include "codecs/wma_pro/stream_format.h"

namespace codecs::wma_pro {

using wma::FirstPass;
using wma::Packet;
using wma::PacketSink;
using wma::RateMode;

struct EncoderSettings {
    int sampling_rate = 44100;  // 8000 to 192000
    int channels = 2;           // 1 to 8
    int bits_per_sample = 16;   // 16, 20 or 24: of the source; decoders give out as many
    int bit_rate = 128000;      // bits per second; in quality mode about what is expected
    RateMode mode = RateMode::Constant;
    int quality = 75;         // 0 to 100, of that mode
    int peak_rate = 0;        // bits per second, of that mode
    double peak_seconds = 3;  // of the buffer, likewise
    FirstPass first_pass = {};
    bool low_delay = false;  // packets are small
    int threads = 1;         // that work side by side; changes no output
};

/// As the stream's header says it; first pass, peak and quality do not matter.
StreamFormat FormatFor(const EncoderSettings& settings);

/// One thread at a time. Decoders give back as many samples as there were.
class Encoder {
  public:
    using Settings = EncoderSettings;

    explicit Encoder(const EncoderSettings& settings);
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    const StreamFormat& Format() const;

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

}  // namespace codecs::wma_pro
