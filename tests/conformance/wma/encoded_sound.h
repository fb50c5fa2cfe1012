// A sound encoded and decoded, and what is known of it then.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codecs/wma/rate_control.h"
#include "conformance/wma/sounds.h"
#include "support/audio_decoder.h"

namespace wma_conformance {

struct EncodedSound {
    int packet_bytes = 0;
    std::vector<std::int64_t> firsts;  // sample, of each packet
    std::int64_t samples = 0;          // that packets say they complete
    std::vector<std::vector<double>> decoded;
    std::string messages;
    std::vector<float> first_pass;

    double Seconds(int sampling_rate) const { return static_cast<double>(samples) / sampling_rate; }
};

/// Has packets decoded as they come.
class PacketCheck {
  public:
    explicit PacketCheck(const test_support::AudioStream& stream);

    /// Expects it to be of the stream's size, and to follow the one before.
    void Take(std::span<const std::uint8_t> bytes, std::int64_t first, std::int64_t samples);
    /// After the last packet.
    EncodedSound Finish();

  private:
    test_support::AudioDecoder decoder_;
    EncodedSound result_;
};

/// Gives an encoder the sound in pieces of any length, and has it finish.
template <typename Encoder, typename Sink>
void EncodeInPieces(Encoder& encoder, const Sound& sound, const Sink& sink) {
    const std::size_t length = sound.front().size();
    for (std::size_t from = 0, piece = 1; from < length; from += piece, piece = piece * 7 % 5003) {
        std::vector<std::span<const float>> channels;
        for (const std::vector<float>& channel : sound)
            channels.emplace_back(channel.data() + from, std::min(piece, length - from));
        encoder.Encode(channels, sink);
    }
    encoder.Finish(sink);
}

/// Decibels over all channels and samples of `sound`.
double SignalToNoise(const Sound& sound, const EncodedSound& encoded);
/// Of one channel.
double SignalToNoise(const Sound& sound, const EncodedSound& encoded, std::size_t channel);
/// Of the first channel, from -1 to 1, when what is decoded is `lag` samples later.
double Correlation(const Sound& sound, const EncodedSound& encoded, int lag);

struct VariableRate {
    double bits_per_second;
    double fullest;  // bits, of a bucket that drains by the peak rate
};

/// Reads nothing but packets' sizes and times.
VariableRate MeasureRate(const EncodedSound& encoded, int sampling_rate, int peak_rate);

/// The modes that look at the sound twice keep their rate, and their peak where they have one.
/// @param encode  from Settings and a Sound to an EncodedSound
template <typename Settings, typename Encode>
void ExpectRateAndPeakInTwoPasses(const Encode& encode) {
    using codecs::wma::RateMode;
    constexpr int kRate = 96000;
    constexpr int kPeak = 144000;
    constexpr double kBuffer = 1.5;
    struct Case {
        const char* why;
        RateMode mode;
        double most_fullest;  // bits; 0 = any
        Sound sound;
    };
    const Case cases[] = {
        {"constant", RateMode::Constant, 0, Uneven(44100)},
        {"the end needs little", RateMode::BitRate, 0, Uneven(44100, 2, 12)},
        {"on average", RateMode::BitRate, 0, Uneven(44100)},
        {"with a peak", RateMode::Peak, kPeak * kBuffer, Uneven(44100)},
    };
    double free_fullest = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Settings settings;
        settings.bit_rate = kRate;
        settings.mode = c.mode;
        settings.peak_rate = kPeak;
        settings.peak_seconds = kBuffer;
        settings.first_pass = encode(settings, c.sound).first_pass;
        const EncodedSound encoded = encode(settings, c.sound);
        EXPECT_EQ(encoded.messages, "");
        EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(c.sound.front().size()));
        const VariableRate found = MeasureRate(encoded, 44100, kPeak);
        EXPECT_NEAR(found.bits_per_second, kRate, 0.03 * kRate);
        if (c.mode == RateMode::BitRate) free_fullest = found.fullest;
        if (c.most_fullest > 0) {
            EXPECT_LE(found.fullest, c.most_fullest);
            EXPECT_GT(free_fullest, c.most_fullest) << "the peak changes nothing";
        }
    }
}

}  // namespace wma_conformance
