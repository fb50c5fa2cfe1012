#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "codecs/wma_standard/encoder.h"
#include "conformance/wma/encoded_sound.h"
#include "engine/plan/written_audio.h"

namespace wma_conformance {
namespace {

using codecs::wma_standard::EncoderSettings;
using codecs::wma_standard::RateMode;
using engine::AudioFormat;
using platform::VbrMode;

EncodedSound Encode(const EncoderSettings& settings, const Sound& sound) {
    codecs::wma_standard::Encoder encoder(settings);
    const auto extra = encoder.ExtraData();
    PacketCheck check({0x0161,
                       settings.sampling_rate,
                       settings.channels,
                       16,
                       encoder.BytesPerSecond(),
                       encoder.PacketBytes(),
                       {extra.begin(), extra.end()}});
    EncodeInPieces(encoder, sound, [&](const codecs::wma_standard::Packet& packet) {
        check.Take(packet.data, packet.first_sample, packet.samples);
    });
    EncodedSound encoded = check.Finish();
    encoded.first_pass = encoder.TakeFirstPass();
    return encoded;
}

EncoderSettings SettingsFor(const AudioFormat& format) {
    return {format.sampling_rate, format.channels, format.value};
}

// What chords keep at the least, by bits per sample and channel.
double SignalToNoiseFloor(const AudioFormat& format) {
    struct Floor {
        double bits;  // up to
        double db;
    };
    constexpr Floor kFloors[] = {{0.5, 9}, {0.65, 15}, {0.8, 17}, {1.1, 21}, {2, 23}, {9, 32}};
    const double bits =
        static_cast<double>(format.value) / (format.sampling_rate * format.channels);
    return std::find_if(std::begin(kFloors), std::end(kFloors),
                        [&](const Floor& row) { return bits <= row.bits; })
        ->db;
}

TEST(WmaStandardEncoder, WritesEveryRateThatTheListingLeadsTo) {
    std::vector<AudioFormat> formats;
    const auto& codec = *platform::FindAudioCodec("WMA9STD");
    for (const auto list : {engine::AudioFormats(codec, VbrMode::Constant),
                            engine::UnlistedAudioFormats(codec, VbrMode::Constant)})
        formats.insert(formats.end(), list.begin(), list.end());
    ASSERT_GT(formats.size(), 40U);
    for (const AudioFormat& format : formats) {
        SCOPED_TRACE(testing::Message() << format.value << " bit/s, " << format.sampling_rate
                                        << " Hz, " << format.channels << " channels");
        constexpr double kSeconds = 8;
        const Sound sound = Chords(format.sampling_rate, format.channels, kSeconds);
        const EncodedSound encoded = Encode(SettingsFor(format), sound);
        EXPECT_EQ(encoded.messages, "");
        EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(sound.front().size()));
        EXPECT_GE(encoded.decoded.front().size(), sound.front().size());
        const double floor = SignalToNoiseFloor(format);
        EXPECT_GT(SignalToNoise(sound, encoded), floor);
        EXPECT_GT(Correlation(sound, encoded, 0), floor < 20 ? 0.95 : 0.99);
        for (const int lag : {-2, -1, 1, 2})
            EXPECT_LT(Correlation(sound, encoded, lag), Correlation(sound, encoded, 0)) << lag;
        // Whole packets at the rate, but for the last one, and a fiftieth.
        const double packets = kSeconds * format.value / 8 / encoded.packet_bytes;
        EXPECT_GE(static_cast<double>(encoded.firsts.size()), 0.98 * packets);
        EXPECT_LE(static_cast<double>(encoded.firsts.size()), 1.02 * packets + 1);
    }
}

struct HardCase {
    const char* why;
    EncoderSettings settings;
    Sound sound;
};

TEST(WmaStandardEncoder, WritesWhatIsHardToWrite) {
    const HardCase cases[] = {
        {"silence, then attacks", {44100, 2, 128040}, Bursts(44100, 2, 20, 22)},
        {"attacks at the lowest rate", {8000, 1, 5000}, Bursts(8000, 1, 2, 8)},
        {"attacks in large blocks", {22050, 2, 20008}, Bursts(22050, 2, 0, 3)},
        {"magnitudes beyond escapes", {44100, 2, 320000}, LoudSine(44100, 2, 60, 3)},
        {"a high tone", {44100, 1, 96000}, LoudSine(44100, 1, 15000, 3)},
        {"noise takes most bits", {8000, 1, 5000}, WhiteNoise(8000, 1, 8)},
        {"noise at a high rate", {48000, 2, 320000}, WhiteNoise(48000, 2, 3)},
        {"one channel silent", {44100, 2, 64040}, WithSecond(Chords(44100, 2, 3), 0)},
        {"channels opposed", {44100, 2, 64040}, WithSecond(Chords(44100, 2, 3), -1)},
        {"channels equal", {32000, 2, 32000}, WithSecond(Chords(32000, 2, 3), 1)},
        {"nothing but silence", {44100, 2, 64040}, Silence(44100, 2, 9)},
        {"one sample", {16000, 1, 16000}, Sound(1, std::vector<float>(1, 0.5F))},
        {"a frame", {44100, 1, 32000}, Sound(1, std::vector<float>(2048, 0.25F))},
        {"beyond full scale", {44100, 1, 64000}, Sound(1, std::vector<float>(30000, 4.0F))},
    };
    for (const HardCase& c : cases) {
        const EncodedSound encoded = Encode(c.settings, c.sound);
        EXPECT_EQ(encoded.messages, "") << c.why;
        EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(c.sound.front().size())) << c.why;
        EXPECT_GE(encoded.decoded.front().size(), c.sound.front().size()) << c.why;
    }
}

TEST(WmaStandardEncoder, GoesOnAfterWhatIsNoSound) {
    using Limits = std::numeric_limits<float>;
    constexpr int kRate = 44100;
    const Sound chords = Chords(kRate, 2, 4);
    const EncoderSettings modes[] = {{kRate, 2, 64000}, {kRate, 2, 128000, RateMode::Quality, 90}};
    for (const float value : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e12F,
                              1e20F, Limits::max(), Limits::lowest()})
        for (const EncoderSettings& settings : modes) {
            SCOPED_TRACE(testing::Message() << value << " at " << settings.bit_rate);
            Sound sound = chords;
            sound[0][100] = value;
            std::fill_n(sound[1].begin() + kRate, kRate / 2, value);
            const EncodedSound encoded = Encode(settings, sound);
            EXPECT_EQ(encoded.messages, "");
            EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(sound.front().size()));
            // Nothing of it is left in the last second.
            const Sound wanted{{chords[0].begin() + 3 * kRate, chords[0].end()},
                               {chords[1].begin() + 3 * kRate, chords[1].end()}};
            EncodedSound end;
            for (const std::vector<double>& channel : encoded.decoded)
                end.decoded.emplace_back(channel.begin() + 3 * kRate, channel.begin() + 4 * kRate);
            EXPECT_GT(SignalToNoise(wanted, end), 15);
        }
}

TEST(WmaStandardEncoder, WritesNothingOfNothing) {
    EXPECT_TRUE(Encode({}, Sound(2)).firsts.empty());
}

TEST(WmaStandardEncoder, KeepsRateAndPeakInTwoPasses) {
    wma_conformance::ExpectRateAndPeakInTwoPasses<EncoderSettings>(Encode);
}

TEST(WmaStandardEncoder, EachQualityIsBetterAndLargerThanTheOneBelow) {
    const platform::AudioCodecRow& codec = *platform::FindAudioCodec("WMA9STD");
    int last_sampling_rate = 0;
    double last_rate = 0;
    double last_db = 0;
    Sound sound;
    std::set<int> sampling_rates;
    for (const AudioFormat& format : engine::AudioFormats(codec, VbrMode::Quality)) {
        SCOPED_TRACE(format.sampling_rate);
        if (format.sampling_rate != last_sampling_rate) {
            sound = Chords(format.sampling_rate, format.channels, 6);
            last_rate = last_db = 0;
            last_sampling_rate = format.sampling_rate;
            EXPECT_TRUE(sampling_rates.insert(format.sampling_rate).second);
        }
        EncoderSettings settings = SettingsFor(WrittenFor(codec, VbrMode::Quality, format).format);
        settings.mode = RateMode::Quality;
        settings.quality = format.value;
        const EncodedSound encoded = Encode(settings, sound);
        EXPECT_EQ(encoded.messages, "") << format.value;
        const double rate = MeasureRate(encoded, format.sampling_rate, 1).bits_per_second;
        const double db = SignalToNoise(sound, encoded);
        EXPECT_GT(rate, last_rate) << format.value;
        EXPECT_GT(db, last_db) << format.value;
        last_rate = rate;
        last_db = db;
    }
    EXPECT_EQ(sampling_rates, (std::set<int>{44100, 48000}));
}

// Some decoders move the first packet's time by what they drop, some do not.
TEST(WmaStandardEncoder, HasNoSoundInThePacketThatDecodersDrop) {
    const EncoderSettings cases[] = {
        {44100, 2, 64000},
        {44100, 2, 320000, RateMode::Quality, 98},
        {8000, 1, 5000},
        {44100, 2, 128000, RateMode::Constant, 0, 0, 0, {}, true},
    };
    for (const EncoderSettings& settings : cases) {
        SCOPED_TRACE(settings.bit_rate);
        const EncodedSound encoded =
            Encode(settings, Bursts(settings.sampling_rate, settings.channels, 0, 3));
        EXPECT_EQ(encoded.messages, "");
        ASSERT_GT(encoded.firsts.size(), 2U);
        EXPECT_EQ(encoded.firsts[0], 0);
        EXPECT_EQ(encoded.firsts[1], 0);
        EXPECT_GT(encoded.firsts[2], 0);
    }
}

}  // namespace
}  // namespace wma_conformance
