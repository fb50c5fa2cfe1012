#include <algorithm>
#include <cmath>

#include "conformance/wma_standard/encoded_sound.h"
#include "engine/plan/audio_formats.h"

namespace wma_conformance {
namespace {

using codecs::wma_standard::EncoderSettings;
using engine::AudioFormat;
using platform::VbrMode;

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
    const double bits = double(format.value) / (format.sampling_rate * format.channels);
    return std::find_if(std::begin(kFloors), std::end(kFloors),
                        [&](const Floor& row) { return bits <= row.bits; })
        ->db;
}

TEST(WmaStandardEncoder, WritesEveryRateOfTheListing) {
    const platform::AudioCodecRow& codec = *platform::FindAudioCodec("WMA9STD");
    std::vector<AudioFormat> formats;
    for (const auto list : {engine::AudioFormats(codec, VbrMode::Constant),
                            engine::UnlistedAudioFormats(codec, VbrMode::Constant)})
        formats.insert(formats.end(), list.begin(), list.end());
    for (const AudioFormat& format : formats) {
        SCOPED_TRACE(testing::Message() << format.value << " bit/s, " << format.sampling_rate
                                        << " Hz, " << format.channels << " channels");
        constexpr double kSeconds = 8;
        const Sound sound = Chords(format.sampling_rate, format.channels, kSeconds);
        const EncodedSound encoded = Encode(SettingsFor(format), sound);
        EXPECT_EQ(encoded.messages, "");
        EXPECT_EQ(encoded.samples, static_cast<std::int64_t>(sound.front().size()));
        EXPECT_GE(encoded.decoded.front().size(), sound.front().size());
        EXPECT_GT(SignalToNoise(sound, encoded), SignalToNoiseFloor(format));
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
        {"one sample", {16000, 1, 16000}, {{0.5F}}},
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

TEST(WmaStandardEncoder, WritesNothingOfNothing) {
    EXPECT_TRUE(Encode({}, Sound(2)).firsts.empty());
}

// What a decoder says to be the first sound must not be kept from others by what it leaves out.
TEST(WmaStandardEncoder, LeavesThePacketThatDecodersDropWithoutSound) {
    const EncodedSound encoded = Encode({}, Chords(44100, 2, 3));
    ASSERT_GT(encoded.firsts.size(), 2U);
    EXPECT_EQ(encoded.firsts[0], 0);
    EXPECT_EQ(encoded.firsts[1], 0);
    EXPECT_GT(encoded.firsts[2], 0);
}

}  // namespace
}  // namespace wma_conformance
