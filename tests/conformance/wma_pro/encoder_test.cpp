#include "codecs/wma_pro/encoder.h"

#include <algorithm>
#include <cmath>

#include "conformance/wma/encoded_sound.h"
#include "engine/plan/audio_formats.h"

namespace wma_conformance {
namespace {

using codecs::wma_pro::EncoderSettings;
using codecs::wma_pro::RateMode;
using engine::AudioFormat;
using platform::VbrMode;

constexpr int kLowFrequencyChannel = 3;

EncodedSound Encode(const EncoderSettings& settings, const Sound& sound) {
    codecs::wma_pro::Encoder encoder(settings);
    const auto extra = encoder.Format().ExtraData();
    PacketCheck check({0x0162,
                       settings.sampling_rate,
                       settings.channels,
                       settings.bits_per_sample,
                       settings.bit_rate / 8,
                       encoder.Format().packet_bytes,
                       {extra.begin(), extra.end()}});
    EncodeInPieces(encoder, sound, [&](const codecs::wma_pro::Packet& packet) {
        check.Take(packet.data, packet.first_sample, packet.samples);
    });
    EncodedSound encoded = check.Finish();
    encoded.first_pass = encoder.TakeFirstPass();
    return encoded;
}

// All that must hold of any sound.
void ExpectWhole(const Sound& sound, const EncodedSound& encoded) {
    EXPECT_EQ(encoded.messages, "");
    EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(sound.front().size()));
    EXPECT_EQ(encoded.decoded.front().size(), sound.front().size());
}

EncoderSettings SettingsFor(const AudioFormat& format) {
    return {format.sampling_rate, format.channels, format.bits_per_sample, format.value};
}

std::span<const AudioFormat> Listed(VbrMode mode) {
    return engine::AudioFormats(*platform::FindAudioCodec("WMA9PRO"), mode);
}

// The channel of low frequencies has none but those.
Sound Music(int sampling_rate, int channels, double seconds) {
    Sound sound = Chords(sampling_rate, channels, seconds);
    if (channels >= 6)
        sound[kLowFrequencyChannel] = LoudSine(sampling_rate, 1, 60, seconds).front();
    return sound;
}

// What chords keep at the least, by bits per sample and channel.
double SignalToNoiseFloor(const AudioFormat& format) {
    struct Floor {
        double bits;  // up to
        double db;
    };
    constexpr Floor kFloors[] = {{0.6, 14}, {0.8, 18}, {1.1, 21}, {1.5, 25}, {2, 29}, {9, 33}};
    const double bits =
        static_cast<double>(format.value) / (format.sampling_rate * format.channels);
    return std::find_if(std::begin(kFloors), std::end(kFloors),
                        [&](const Floor& row) { return bits <= row.bits; })
        ->db;
}

testing::Message NameOf(const AudioFormat& format) {
    return testing::Message() << format.value << " bit/s, " << format.sampling_rate << " Hz, "
                              << format.channels << " channels of " << format.bits_per_sample
                              << " bits";
}

TEST(WmaProEncoder, WritesEveryFormatOfTheListing) {
    ASSERT_GT(Listed(VbrMode::Constant).size(), 60U);
    for (const AudioFormat& format : Listed(VbrMode::Constant)) {
        SCOPED_TRACE(NameOf(format));
        const double seconds = format.channels > 2 ? 1 : 2;
        const Sound sound = Music(format.sampling_rate, format.channels, seconds);
        const EncodedSound encoded = Encode(SettingsFor(format), sound);
        ExpectWhole(sound, encoded);
        EXPECT_GT(SignalToNoise(sound, encoded), SignalToNoiseFloor(format));
        for (const int lag : {-2, -1, 1, 2})
            EXPECT_LT(Correlation(sound, encoded, lag), Correlation(sound, encoded, 0)) << lag;
        EXPECT_GT(Correlation(sound, encoded, 0), 0.98);
        // Whole packets at the rate, but for the last one, and a fiftieth.
        const double packets = seconds * format.value / 8 / encoded.packet_bytes;
        EXPECT_GE(static_cast<double>(encoded.firsts.size()), 0.98 * packets);
        EXPECT_LE(static_cast<double>(encoded.firsts.size()), 1.02 * packets + 1);
    }
}

struct HardCase {
    const char* why;
    EncoderSettings settings;
    Sound sound;
};

TEST(WmaProEncoder, WritesWhatIsHardToWrite) {
    const HardCase cases[] = {
        {"silence, then attacks", {44100, 2, 16, 128000}, Bursts(44100, 2, 4, 6)},
        {"attacks at a low rate", {44100, 2, 16, 48000}, Bursts(44100, 2, 0, 4)},
        {"attacks at the lowest sampling rate", {8000, 1, 16, 16000}, Bursts(8000, 1, 0, 4)},
        {"attacks in many channels", {96000, 8, 24, 640000}, Bursts(96000, 8, 0, 2)},
        {"a loud tone takes large numbers", {44100, 2, 16, 320000}, LoudSine(44100, 2, 60, 3)},
        {"a high tone", {44100, 1, 16, 96000}, LoudSine(44100, 1, 15000, 3)},
        {"noise takes most bits", {44100, 2, 16, 48000}, WhiteNoise(44100, 2, 4)},
        {"noise in many channels", {96000, 8, 24, 768000}, WhiteNoise(96000, 8, 2)},
        {"noise at a high rate", {48000, 2, 16, 1500000}, WhiteNoise(48000, 2, 2)},
        {"one channel silent", {44100, 2, 16, 64000}, WithSecond(Chords(44100, 2, 3), 0)},
        {"channels opposed", {44100, 2, 16, 64000}, WithSecond(Chords(44100, 2, 3), -1)},
        {"channels equal", {32000, 2, 16, 32000}, WithSecond(Chords(32000, 2, 3), 1)},
        {"three channels", {44100, 3, 16, 128000}, Chords(44100, 3, 2)},
        {"four channels", {44100, 4, 16, 192000}, Chords(44100, 4, 2)},
        {"five channels", {44100, 5, 16, 192000}, Chords(44100, 5, 2)},
        {"seven channels", {44100, 7, 16, 256000}, Chords(44100, 7, 2)},
        {"the highest sampling rate", {192000, 2, 24, 640000}, Chords(192000, 2, 1)},
        {"nothing but silence", {44100, 2, 16, 64000}, Silence(44100, 2, 4)},
        {"one sample", {16000, 1, 16, 16000}, {{0.5F}}},
        {"a frame", {44100, 1, 16, 32000}, Sound(1, std::vector<float>(2048, 0.25F))},
        {"beyond full scale", {44100, 1, 16, 64000}, Sound(1, std::vector<float>(30000, 4.0F))},
    };
    for (const HardCase& c : cases) {
        SCOPED_TRACE(c.why);
        ExpectWhole(c.sound, Encode(c.settings, c.sound));
    }
}

TEST(WmaProEncoder, WritesNothingOfNothing) { EXPECT_TRUE(Encode({}, Sound(2)).firsts.empty()); }

TEST(WmaProEncoder, KeepsChannelsApart) {
    struct Case {
        int channels;
        int bit_rate;
    };
    for (const Case& c : {Case{2, 128000}, Case{6, 384000}, Case{8, 440000}}) {
        for (int sounding = 0; sounding < c.channels; ++sounding) {
            SCOPED_TRACE(testing::Message() << "channel " << sounding << " of " << c.channels);
            const auto alone = static_cast<std::size_t>(sounding);
            Sound sound = Silence(48000, c.channels, 0.5);
            sound[alone] = Music(48000, c.channels, 0.5)[alone];
            const EncodedSound encoded = Encode({48000, c.channels, 16, c.bit_rate}, sound);
            ExpectWhole(sound, encoded);
            EXPECT_GT(SignalToNoise(sound, encoded), 28);
            for (std::size_t other = 0; other < sound.size(); ++other) {
                if (other == alone) continue;
                const auto& heard = encoded.decoded[other];
                EXPECT_LT(std::ranges::max(heard), 1e-4) << other;
                EXPECT_GT(std::ranges::min(heard), -1e-4) << other;
            }
        }
    }
}

TEST(WmaProEncoder, ComesAsNearAsBitsAllow) {
    const Sound sound = Chords(48000, 2, 2);
    for (const int bits : {16, 20, 24}) {
        const EncodedSound encoded = Encode({48000, 2, bits, 1500000}, sound);
        ExpectWhole(sound, encoded);
        EXPECT_GT(SignalToNoise(sound, encoded), 70) << bits;
    }
}

TEST(WmaProEncoder, KeepsRateAndPeakInTwoPasses) {
    wma_conformance::ExpectRateAndPeakInTwoPasses<EncoderSettings>(
        [](const EncoderSettings& settings, const Sound& sound) {
            EncodedSound encoded = Encode(settings, sound);
            ExpectWhole(sound, encoded);
            return encoded;
        });
}

TEST(WmaProEncoder, EachQualityIsBetterAndLargerThanTheOneBelow) {
    AudioFormat last{};
    double last_rate = 0;
    double last_db = 0;
    for (const AudioFormat& format : Listed(VbrMode::Quality)) {
        if (format.bits_per_sample == 16 && format.sampling_rate == 48000) continue;
        SCOPED_TRACE(NameOf(format));
        EncoderSettings settings = SettingsFor(format);
        settings.bit_rate = 64000 * format.channels;
        settings.mode = RateMode::Quality;
        settings.quality = format.value;
        const Sound sound = Music(format.sampling_rate, format.channels, 0.7);
        const EncodedSound encoded = Encode(settings, sound);
        ExpectWhole(sound, encoded);
        const double rate = MeasureRate(encoded, format.sampling_rate, 1).bits_per_second;
        const double db = SignalToNoise(sound, encoded);
        if (format.value > last.value) {
            EXPECT_GE(rate, last_rate);
            EXPECT_GT(db, last_db);
        }
        last = format;
        last_rate = rate;
        last_db = db;
    }
}

TEST(WmaProEncoder, WritesTheSameOnAnyNumberOfThreads) {
    const Sound sound = Bursts(48000, 6, 0.5, 2);
    EncoderSettings settings{48000, 6, 24, 440000};
    const EncodedSound alone = Encode(settings, sound);
    settings.threads = 4;
    EXPECT_EQ(Encode(settings, sound).decoded, alone.decoded);
}

}  // namespace
}  // namespace wma_conformance
