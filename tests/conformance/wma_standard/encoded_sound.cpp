#include "conformance/wma_standard/encoded_sound.h"

#include <algorithm>
#include <cmath>

#include "support/audio_decoder.h"

namespace wma_conformance {

using codecs::wma_standard::CodedPacket;

EncodedSound Encode(const codecs::wma_standard::EncoderSettings& settings, const Sound& sound) {
    codecs::wma_standard::Encoder encoder(settings);
    const auto extra = encoder.ExtraData();
    test_support::AudioDecoder decoder({0x0161,
                                        settings.sampling_rate,
                                        settings.channels,
                                        16,
                                        encoder.BytesPerSecond(),
                                        encoder.PacketBytes(),
                                        {extra.begin(), extra.end()}});
    EncodedSound result;
    result.packet_bytes = encoder.PacketBytes();
    const auto sink = [&](const CodedPacket& packet) {
        EXPECT_EQ(static_cast<int>(packet.bytes.size()), result.packet_bytes);
        EXPECT_EQ(packet.first, result.samples);
        result.firsts.push_back(packet.first);
        result.samples += packet.samples;
        decoder.Decode(packet.bytes);
    };
    // Pieces of any length.
    const std::size_t length = sound.front().size();
    for (std::size_t from = 0, piece = 1; from < length; from += piece, piece = piece * 7 % 5003) {
        std::vector<std::span<const float>> channels;
        for (const std::vector<float>& channel : sound)
            channels.emplace_back(channel.data() + from, std::min(piece, length - from));
        encoder.Encode(channels, sink);
    }
    encoder.Finish(sink);
    result.first_pass = encoder.TakeFirstPass();
    test_support::DecodedAudio decoded = decoder.Finish();
    result.decoded = std::move(decoded.samples);
    result.messages = std::move(decoded.messages);
    return result;
}

double SignalToNoise(const Sound& sound, const EncodedSound& encoded) {
    double signal = 0;
    double noise = 0;
    for (std::size_t c = 0; c < sound.size(); ++c) {
        for (std::size_t i = 0; i < sound[c].size(); ++i) {
            const double wanted = sound[c][i];
            const double heard = i < encoded.decoded[c].size() ? encoded.decoded[c][i] : 0;
            signal += wanted * wanted;
            noise += (wanted - heard) * (wanted - heard);
        }
    }
    return 10 * std::log10(signal / noise);
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

}  // namespace wma_conformance
