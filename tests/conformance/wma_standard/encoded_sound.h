// A sound encoded and decoded, and what is known of it then.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codecs/wma_standard/encoder.h"
#include "conformance/wma_standard/sounds.h"

namespace wma_conformance {

struct EncodedSound {
    int packet_bytes = 0;
    std::vector<std::int64_t> firsts;  // sample, of each packet
    std::int64_t samples = 0;          // that packets say they complete
    std::vector<std::vector<double>> decoded;
    std::string messages;
    codecs::wma_standard::FirstPass first_pass;

    double Seconds(int sampling_rate) const { return static_cast<double>(samples) / sampling_rate; }
};

EncodedSound Encode(const codecs::wma_standard::EncoderSettings& settings, const Sound& sound);

/// Decibels over all channels and samples of `sound`.
double SignalToNoise(const Sound& sound, const EncodedSound& encoded);
/// Of the first channel, from -1 to 1, when what is decoded is `lag` samples later.
double Correlation(const Sound& sound, const EncodedSound& encoded, int lag);

}  // namespace wma_conformance
