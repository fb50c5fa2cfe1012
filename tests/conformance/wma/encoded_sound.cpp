#include "conformance/wma/encoded_sound.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace wma_conformance {

PacketCheck::PacketCheck(const test_support::AudioStream& stream) : decoder_(stream) {
    result_.packet_bytes = stream.block_align;
}

void PacketCheck::Take(std::span<const std::uint8_t> bytes, std::int64_t first,
                       std::int64_t samples) {
    EXPECT_EQ(static_cast<int>(bytes.size()), result_.packet_bytes);
    EXPECT_EQ(first, result_.samples);
    result_.firsts.push_back(first);
    result_.samples += samples;
    decoder_.Decode(bytes);
}

EncodedSound PacketCheck::Finish() {
    test_support::DecodedAudio decoded = decoder_.Finish();
    result_.decoded = std::move(decoded.samples);
    result_.messages = std::move(decoded.messages);
    return std::move(result_);
}

namespace {

struct Energies {
    double signal = 0;
    double noise = 0;
    double Decibels() const { return 10 * std::log10(signal / noise); }
};

void AddChannel(const Sound& sound, const EncodedSound& encoded, std::size_t c, Energies& to) {
    for (std::size_t i = 0; i < sound[c].size(); ++i) {
        const double wanted = sound[c][i];
        const double heard = i < encoded.decoded[c].size() ? encoded.decoded[c][i] : 0;
        to.signal += wanted * wanted;
        to.noise += (wanted - heard) * (wanted - heard);
    }
}

}  // namespace

double SignalToNoise(const Sound& sound, const EncodedSound& encoded) {
    Energies energies;
    for (std::size_t c = 0; c < sound.size(); ++c) AddChannel(sound, encoded, c, energies);
    return energies.Decibels();
}

double SignalToNoise(const Sound& sound, const EncodedSound& encoded, std::size_t channel) {
    Energies energies;
    AddChannel(sound, encoded, channel, energies);
    return energies.Decibels();
}

double Correlation(const Sound& sound, const EncodedSound& encoded, int lag) {
    const std::vector<float>& wanted = sound.front();
    const std::vector<double>& heard = encoded.decoded.front();
    double product = 0;
    double wanted_power = 0;
    double heard_power = 0;
    const auto count = static_cast<std::ptrdiff_t>(std::min(wanted.size(), heard.size()));
    for (std::ptrdiff_t i = std::max(0, -lag); i < count - std::max(0, lag); ++i) {
        const double a = wanted[static_cast<std::size_t>(i)];
        const double b = heard[static_cast<std::size_t>(i + lag)];
        product += a * b;
        wanted_power += a * a;
        heard_power += b * b;
    }
    return product / std::sqrt(wanted_power * heard_power);
}

VariableRate MeasureRate(const EncodedSound& encoded, int sampling_rate, int peak_rate) {
    VariableRate found{};
    double level = 0;
    std::int64_t last = 0;
    for (const std::int64_t first : encoded.firsts) {
        const double drained = static_cast<double>(first - last) / sampling_rate * peak_rate;
        level = std::max(0.0, level - drained) + 8.0 * encoded.packet_bytes;
        found.fullest = std::max(found.fullest, level);
        last = first;
    }
    found.bits_per_second = 8.0 * encoded.packet_bytes *
                            static_cast<double>(encoded.firsts.size()) /
                            encoded.Seconds(sampling_rate);
    return found;
}

}  // namespace wma_conformance
