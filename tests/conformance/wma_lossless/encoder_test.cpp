// The lossless encoder on generated sound: an independent decoder gives back every sample.
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstdlib>
#include <random>

#include "codecs/common/index.h"
#include "conformance/wma_lossless/lossless_check.h"

namespace lossless_conformance {
namespace {

using codecs::Index;

void ExpectExact(const Piece& piece, bool low_delay = false) {
    SCOPED_TRACE(piece.Name());
    const std::vector<std::int32_t> samples = Generate(piece);
    const std::vector<StoredPacket> packets = EncodePiece(piece, samples, 1, low_delay);
    const Decoded decoded = Decode(piece, packets);
    EXPECT_EQ(Difference(samples, decoded.samples), "");
    EXPECT_EQ(decoded.messages, "");
    std::int64_t told = 0;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        EXPECT_EQ(packets[i].data.size(), Index(piece.Format().PacketBytes()));
        EXPECT_EQ(packets[i].first_sample, told) << "packet " << i;
        told += packets[i].samples;
    }
    EXPECT_EQ(told, piece.samples);
}

constexpr int kRates[] = {8000,  11025, 16000, 22050,  32000, 44100,
                          48000, 88200, 96000, 176400, 192000};
constexpr int kChannels[] = {1, 2, 6, 8};

TEST(LosslessEncoder, EveryFormatIsExact) {
    int kind = 0;
    for (const int rate : kRates)
        for (const int channels : kChannels)
            for (const int bits : {16, 24})
                ExpectExact({rate, channels, bits,
                             static_cast<Kind>(kind++ % static_cast<int>(Kind::Count)),
                             rate / (8 * channels) + 7});
}

TEST(LosslessEncoder, EveryKindOfSoundIsExact) {
    for (int kind = 0; kind < static_cast<int>(Kind::Count); ++kind)
        for (const int channels : {1, 2})
            for (const int bits : {16, 24})
                ExpectExact({44100, channels, bits, static_cast<Kind>(kind), 40000});
}

// A packet's last bit, a frame's and a group's meet here in all ways.
TEST(LosslessEncoder, EveryLengthIsExact) {
    for (const std::int64_t samples : {0, 1, 2, 255, 256, 257, 511, 512, 513, 1023, 1024, 1025})
        for (const Kind kind : {Kind::Music, Kind::Noise, Kind::Silence})
            ExpectExact({8000, 2, 16, kind, samples});
    for (std::int64_t samples = 60'000; samples < 60'010; ++samples)
        ExpectExact({44100, 1, 16, Kind::Silence, samples});
}

// TESSIVO_PIECES sets how many.
TEST(LosslessEncoder, RandomPiecesAreExact) {
    const char* const asked = std::getenv("TESSIVO_PIECES");
    const int pieces = asked != nullptr ? std::atoi(asked) : 12;
    std::mt19937 random(20);
    const auto below = [&](std::size_t count) {
        return static_cast<int>(std::uniform_int_distribution<std::size_t>(0, count - 1)(random));
    };
    for (int i = 0; i < pieces; ++i) {
        Piece piece{kRates[below(std::size(kRates))], kChannels[below(std::size(kChannels))],
                    below(2) == 0 ? 16 : 24,
                    static_cast<Kind>(below(static_cast<std::size_t>(Kind::Count))), 0};
        piece.samples = below(Index(60000 / piece.channels));
        piece.seed = static_cast<std::uint32_t>(i);
        ExpectExact(piece, below(2) == 0);
    }
}

// Frames lie in two or three packets, and the decoder has what is said of each once it has it.
TEST(LosslessEncoder, PacketsSayWhatEndsInThem) {
    for (const Kind kind : {Kind::Noise, Kind::SilentThenLoud, Kind::Music}) {
        const Piece piece{48000, 2, 24, kind, 100'000};
        SCOPED_TRACE(piece.Name());
        const std::vector<StoredPacket> packets = EncodePiece(piece, Generate(piece));
        const Decoded decoded = Decode(piece, packets);
        ASSERT_EQ(decoded.after.size(), packets.size());
        for (std::size_t i = 0; i + 1 < packets.size(); ++i)
            EXPECT_EQ(decoded.after[i], packets[i + 1].first_sample) << "packet " << i;
    }
}

TEST(LosslessEncoder, CanBeEnteredAtKeyPackets) {
    const Piece piece{16000, 1, 16, Kind::Music, 16000 * 30};
    const std::vector<std::int32_t> samples = Generate(piece);
    const std::vector<StoredPacket> packets = EncodePiece(piece, samples);
    int entered = 0;
    for (std::size_t i = 1; i < packets.size(); ++i) {
        if (!packets[i].key) continue;
        ++entered;
        const Decoded decoded = Decode(piece, std::span(packets).subspan(i));
        ASSERT_LE(decoded.samples.size(), samples.size());
        const auto left = std::span(samples).last(decoded.samples.size());
        EXPECT_EQ(Difference(left, decoded.samples), "") << "packet " << i;
        const auto skipped = static_cast<std::int64_t>(samples.size() - decoded.samples.size());
        EXPECT_LT(skipped - packets[i].first_sample, 2 * 512) << "packet " << i;
    }
    EXPECT_EQ(entered, 4);
}

TEST(LosslessEncoder, ThreadsChangeNothing) {
    for (const int channels : {1, 2, 6}) {
        const Piece piece{44100, channels, 16, Kind::Speech, 50'000};
        const std::vector<std::int32_t> samples = Generate(piece);
        const std::vector<StoredPacket> alone = EncodePiece(piece, samples, 1);
        const std::vector<StoredPacket> together = EncodePiece(piece, samples, 3);
        ASSERT_EQ(alone.size(), together.size());
        for (std::size_t i = 0; i < alone.size(); ++i) EXPECT_EQ(alone[i].data, together[i].data);
    }
}

TEST(LosslessEncoder, EveryInstructionSetMakesTheSame) {
    for (const int bits : {16, 24}) {
        const Piece piece{44100, 2, bits, Kind::Music, 8'000};
        const std::vector<std::int32_t> samples = Generate(piece);
        const std::vector<StoredPacket> best = EncodePiece(piece, samples);
        const std::int64_t all = hwy::SupportedTargets();
        for (std::int64_t left = all; left != 0; left &= left - 1) {
            hwy::SetSupportedTargetsForTest(left & -left);
            const std::vector<StoredPacket> packets = EncodePiece(piece, samples);
            hwy::SetSupportedTargetsForTest(0);
            ASSERT_EQ(packets.size(), best.size());
            for (std::size_t i = 0; i < best.size(); ++i) EXPECT_EQ(packets[i].data, best[i].data);
        }
    }
}

// As a share of the samples; a plain difference of neighbours leaves more than half.
TEST(LosslessEncoder, IsSmall) {
    struct SizeCase {
        const char* why;
        Piece piece;
        double most;
    };
    const SizeCase cases[] = {
        // why                             piece                                          most
        {"tones are predicted", {44100, 2, 16, Kind::Music, 44100}, 0.60},
        {"a second channel costs nothing", {44100, 2, 16, Kind::Same, 44100}, 0.31},
        {"nor does a silent one", {44100, 2, 16, Kind::OneSilent, 44100}, 0.31},
        {"silence takes next to nothing", {44100, 2, 16, Kind::Silence, 44100 * 3}, 0.01},
        {"noise takes what it is", {44100, 2, 16, Kind::Noise, 44100 * 3}, 1.01},
    };
    for (const SizeCase& row : cases) {
        const std::vector<StoredPacket> packets = EncodePiece(row.piece, Generate(row.piece));
        const double bytes = static_cast<double>(packets.size()) * row.piece.Format().PacketBytes();
        const double share =
            bytes * 8 /
            (static_cast<double>(row.piece.samples) * row.piece.channels * row.piece.bits);
        EXPECT_LT(share, row.most) << row.why;
    }
}

}  // namespace
}  // namespace lossless_conformance
