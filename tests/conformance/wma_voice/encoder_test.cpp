#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "codecs/wma_voice/encoder.h"
#include "conformance/wma_voice/speech.h"
#include "engine/plan/audio_formats.h"
#include "support/audio_decoder.h"

namespace voice_conformance {
namespace {

using codecs::wma_voice::Encoder;
using codecs::wma_voice::EncoderSettings;
using codecs::wma_voice::Packet;

struct EncodedSpeech {
    int packet_bytes = 0;
    int packets = 0;
    std::vector<float> own;  // what the encoder says that decoders give
    std::vector<double> decoded;
    std::string messages;
};

EncodedSpeech Encode(const EncoderSettings& settings, const Sound& sound) {
    EncodedSpeech result;
    Encoder encoder(settings, [&](std::span<const float> samples) {
        result.own.insert(result.own.end(), samples.begin(), samples.end());
    });
    const codecs::wma_voice::StreamFormat format = FormatFor(settings);
    const auto extra = format.ExtraData();
    test_support::AudioDecoder decoder({0x000A,
                                        settings.sampling_rate,
                                        1,
                                        16,
                                        settings.bit_rate / 8,
                                        format.PacketBytes(),
                                        {extra.begin(), extra.end()}});
    result.packet_bytes = format.PacketBytes();
    std::int64_t samples = 0;
    const auto sink = [&](const Packet& packet) {
        EXPECT_EQ(static_cast<int>(packet.data.size()), result.packet_bytes);
        // Times are those of what a decoder gives out with the packet.
        EXPECT_EQ(packet.first_sample, decoder.Samples());
        EXPECT_EQ(packet.first_sample, samples);
        samples += packet.samples;
        ++result.packets;
        decoder.Decode(packet.data);
    };
    // Pieces of any length.
    const std::span whole(sound);
    for (std::size_t from = 0, piece = 1; from < sound.size();
         from += piece, piece = piece * 7 % 5003) {
        const auto part = whole.subspan(from, std::min(piece, sound.size() - from));
        encoder.Encode({&part, 1}, sink);
    }
    encoder.Finish(sink);
    EXPECT_EQ(samples, static_cast<std::int64_t>(sound.size()));
    test_support::DecodedAudio decoded = decoder.Finish();
    result.decoded = std::move(decoded.samples.front());
    result.messages = std::move(decoded.messages);
    return result;
}

// Decibels of `from` over what `of` is off it.
template <typename From, typename Of>
double SignalToNoise(const From& from, const Of& of) {
    double signal = 1e-12;
    double noise = 1e-21;
    for (std::size_t i = 0; i < std::min(from.size(), of.size()); ++i) {
        const auto wanted = static_cast<double>(from[i]);
        const double off = wanted - static_cast<double>(of[i]);
        signal += wanted * wanted;
        noise += off * off;
    }
    return 10 * std::log10(signal / noise);
}

// Both compute with floats, in another order, and predict from what they have computed.
constexpr double kSameDb = 80;

void ExpectTheSame(const EncodedSpeech& encoded, const Sound& sound) {
    EXPECT_EQ(encoded.messages, "");
    EXPECT_EQ(encoded.decoded.size(), sound.size());
    ASSERT_EQ(encoded.own.size(), sound.size());
    EXPECT_GT(SignalToNoise(encoded.own, encoded.decoded), kSameDb);
}

// Whole packets, and what a stream may be off its rate after so many seconds.
void ExpectRate(const EncodedSpeech& encoded, double seconds, double bit_rate) {
    const double bits = 8.0 * encoded.packet_bytes * encoded.packets;
    const double off = bit_rate * (0.2 + 0.015 * seconds) + 8.0 * encoded.packet_bytes;
    EXPECT_NEAR(bits, bit_rate * seconds, off);
}

// What generated speech keeps at the least, by bits per sample.
double SignalToNoiseFloor(const engine::AudioFormat& format) {
    const double bits = static_cast<double>(format.value) / format.sampling_rate;
    return bits < 0.6 ? 7 : bits < 0.8 ? 9 : 11;
}

TEST(WmaVoiceEncoder, WritesWhatItDecodesAtEveryRateOfTheListing) {
    const auto formats =
        engine::AudioFormats(*platform::FindAudioCodec("WMSP9"), platform::VbrMode::Constant);
    ASSERT_GE(formats.size(), 10U);
    bool low_delay = false;
    for (const engine::AudioFormat& format : formats) {
        SCOPED_TRACE(testing::Message() << format.value << " bit/s, " << format.sampling_rate
                                        << " Hz, low delay " << low_delay);
        constexpr double kSeconds = 1.2;
        const Sound sound = Speech(format.sampling_rate, kSeconds);
        const EncodedSpeech encoded =
            Encode({format.sampling_rate, format.value, low_delay}, sound);
        ExpectTheSame(encoded, sound);
        EXPECT_GT(SignalToNoise(sound, encoded.decoded), SignalToNoiseFloor(format));
        ExpectRate(encoded, kSeconds, format.value);
        low_delay = !low_delay;
    }
}

struct HardCase {
    const char* why;
    EncoderSettings settings;
    Sound sound;
};

TEST(WmaVoiceEncoder, WritesWhatIsHardToWrite) {
    const HardCase cases[] = {
        {"one sample", {8000, 8000}, Sound(1, 0.5F)},
        {"nearly a superframe", {8000, 4000}, Speech(8000, 479.0 / 8000)},
        {"a superframe", {16000, 16000}, Speech(16000, 480.0 / 16000)},
        {"a sample more", {22050, 20000}, Sound(481, 0.25F)},
        {"nothing but silence", {8000, 8000}, Silence(8000, 2)},
        {"silence at the highest rate", {16000, 16000}, Silence(16000, 1)},
        {"silence, then speech", {11025, 8000}, Joined(Silence(11025, 0.5), Speech(11025, 0.7))},
        {"noise", {8000, 4000}, WhiteNoise(8000, 1)},
        {"noise at the highest rate", {22050, 20000}, WhiteNoise(22050, 0.3)},
        {"a low tone", {8000, 5000}, Sine(8000, 60, 1)},
        {"a tone above all voices", {16000, 12000}, Sine(16000, 7000, 0.4)},
        {"chords", {8000, 6000}, Chords(8000, 1)},
        {"beyond full scale", {8000, 8000}, Louder(Speech(8000, 1), 20)},
    };
    for (const HardCase& c : cases) {
        SCOPED_TRACE(c.why);
        const EncodedSpeech encoded = Encode(c.settings, c.sound);
        ExpectTheSame(encoded, c.sound);
        for (const double sample : encoded.decoded) ASSERT_LT(std::abs(sample), 3);
    }
}

TEST(WmaVoiceEncoder, HearsMusicThatLasts) {
    const struct {
        const char* why;
        Sound sound;
        double least, most;  // seconds of music
    } cases[] = {
        {"speech", Speech(16000, 6), 0, 0},
        {"silence", Silence(16000, 6), 0, 0},
        {"music", Chords(16000, 6), 4.5, 5.2},
        {"speech, then music", Joined(Speech(16000, 5), Chords(16000, 6)), 2.5, 5},
    };
    for (const auto& c : cases) {
        Encoder encoder({16000, 12000});
        const std::span<const float> whole(c.sound);
        encoder.Encode({&whole, 1}, [](const Packet& /*packet*/) {});
        const double seconds = static_cast<double>(encoder.MusicSamples()) / 16000;
        EXPECT_GE(seconds, c.least) << c.why;
        EXPECT_LE(seconds, c.most) << c.why;
    }
}

TEST(WmaVoiceEncoder, WritesNothingOfNothing) { EXPECT_EQ(Encode({8000, 8000}, {}).packets, 0); }

TEST(WmaVoiceEncoder, KeepsItsRateInSilenceAndInWhatNeverPauses) {
    constexpr double kSeconds = 5;
    for (const Sound& sound : {Silence(8000, kSeconds), Chords(8000, kSeconds)})
        ExpectRate(Encode({8000, 6000}, sound), kSeconds, 6000);
}

}  // namespace
}  // namespace voice_conformance
