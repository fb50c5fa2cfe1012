// Decodes streams with an independent decoder.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codecs/wma_lossless/encoder.h"
#include "conformance/wma_lossless/pieces.h"

namespace lossless_conformance {

struct StoredPacket {
    std::vector<std::uint8_t> data;
    std::int64_t first_sample = 0;
    std::int64_t samples = 0;
    bool key = false;
};

std::vector<StoredPacket> EncodePiece(const Piece& piece, std::span<const std::int32_t> samples,
                                      int threads = 1, bool low_delay = false);

struct Decoded {
    std::vector<std::int32_t> samples;  // interleaved
    std::string messages;               // what the decoder had to say
    /// By packet, how many samples for each channel had come out after it.
    std::vector<std::int64_t> after;
};
Decoded Decode(const Piece& piece, std::span<const StoredPacket> packets);

/// Where two pieces of sound first differ; "" = nowhere.
std::string Difference(std::span<const std::int32_t> want, std::span<const std::int32_t> got);

}  // namespace lossless_conformance
