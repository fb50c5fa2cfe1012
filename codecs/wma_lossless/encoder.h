// Encodes Windows Media Audio 9 Lossless.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "codecs/wma/packetiser.h"
#include "codecs/wma_lossless/stream_format.h"

namespace codecs::wma_lossless {

using wma::Packet;
using wma::PacketSink;

struct EncoderSettings {
    StreamFormat format;
    int threads = 1;  // that work side by side; changes no output
    /// No frame waits for later ones, which costs some bits.
    bool low_delay = false;
};

/// One thread at a time. Decoders give back every sample, from the first to the last one.
class Encoder {
  public:
    explicit Encoder(const EncoderSettings& settings);
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// @param samples  of all channels, interleaved, within the format's bits
    void Encode(std::span<const std::int32_t> samples, const PacketSink& sink);
    /// Hands on what is left; nothing when there was no sample.
    void Finish(const PacketSink& sink);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wma_lossless
