#include "conformance/wma_lossless/lossless_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "support/audio_decoder.h"

namespace lossless_conformance {

using codecs::Index;

std::vector<StoredPacket> EncodePiece(const Piece& piece, std::span<const std::int32_t> samples,
                                      int threads, bool low_delay) {
    codecs::wma_lossless::EncoderSettings settings{piece.Format()};
    settings.threads = threads;
    settings.low_delay = low_delay;
    codecs::wma_lossless::Encoder encoder(settings);
    std::vector<StoredPacket> packets;
    const auto sink = [&](const codecs::wma_lossless::Packet& packet) {
        packets.push_back({{packet.data.begin(), packet.data.end()},
                           packet.first_sample,
                           packet.samples,
                           packet.key});
    };
    // In portions that have nothing to do with frames.
    const std::size_t portion = Index(1001 * piece.channels);
    for (std::size_t i = 0; i < samples.size(); i += portion)
        encoder.Encode(samples.subspan(i, std::min(portion, samples.size() - i)), sink);
    encoder.Finish(sink);
    return packets;
}

Decoded Decode(const Piece& piece, std::span<const StoredPacket> packets) {
    const codecs::wma_lossless::StreamFormat format = piece.Format();
    test_support::AudioDecoder decoder({.format_tag = 0x0163,
                                        .sampling_rate = piece.sampling_rate,
                                        .channels = piece.channels,
                                        .bits_per_sample = piece.bits,
                                        .block_align = format.PacketBytes(),
                                        .extra_data = format.ExtraData()});
    Decoded decoded;
    for (const StoredPacket& packet : packets) {
        decoder.Decode(packet.data);
        decoded.after.push_back(decoder.Samples());
    }
    const test_support::DecodedAudio audio = decoder.Finish();
    decoded.messages = audio.messages;
    for (std::size_t i = 0; i < audio.samples[0].size(); ++i)
        for (const std::vector<double>& channel : audio.samples)
            decoded.samples.push_back(
                static_cast<std::int32_t>(std::ldexp(channel[i], piece.bits - 1)));
    return decoded;
}

std::string Difference(std::span<const std::int32_t> want, std::span<const std::int32_t> got) {
    const auto [at, at_got] = std::ranges::mismatch(want, got);
    if (at != want.end() && at_got != got.end())
        return fmt::format("value {} is {} instead of {}", at - want.begin(), *at_got, *at);
    if (want.size() != got.size())
        return fmt::format("{} values instead of {}", got.size(), want.size());
    return {};
}

}  // namespace lossless_conformance
