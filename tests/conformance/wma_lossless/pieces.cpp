#include "conformance/wma_lossless/pieces.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "codecs/common/index.h"

namespace lossless_conformance {

using codecs::Index;

namespace {

constexpr const char* kKindNames[] = {
    "music",     "speech",           "noise",    "square", "silence", "same", "one silent",
    "low zeros", "silent then loud", "impulses", "drifts"};

/// One channel from sample to sample, full scale +-1.
class Player {
  public:
    Player(const Piece& piece, int channel)
        : piece_(piece),
          channel_(channel),
          random_(piece.seed + 31U * static_cast<unsigned>(channel)) {}

    double At(std::int64_t sample) {
        const double seconds = static_cast<double>(sample) / piece_.sampling_rate;
        const bool second_half = 2 * sample >= piece_.samples;
        switch (piece_.kind) {
            case Kind::Speech:
                return std::sin(seconds * 9) > 0 ? 0.8 * Tones(seconds) : 0.0005 * White();
            case Kind::Noise:
                return White();
            case Kind::Square:
                return std::fmod(seconds * (200 + 50 * channel_), 1) < 0.5 ? 1 : -1;
            case Kind::Silence:
                return 0;
            case Kind::OneSilent:
                return channel_ + 1 == piece_.channels ? 0 : Tones(seconds);
            case Kind::SilentThenLoud:
                return second_half ? White() : 0;
            case Kind::Impulses:
                return sample % 997 == 100 ? White() : 0;
            case Kind::Drifts:
                return std::sin(seconds * seconds * 9000 + channel_);
            default:
                return Tones(seconds);
        }
    }

  private:
    double White() { return std::uniform_real_distribution<double>(-1, 1)(random_); }
    double Tones(double seconds) {
        const double in_note = std::fmod(seconds, 0.35);
        const double pitch = 110 * std::exp2(std::fmod(std::floor(seconds / 0.35) * 7, 24) / 12);
        double sum = 0;
        for (int partial = 1; partial < 6; ++partial)
            sum += std::sin(2 * std::numbers::pi * pitch * partial * seconds + channel_) / partial;
        return 0.3 * sum * std::exp(-4 * in_note) + 0.003 * White();
    }

    const Piece& piece_;
    int channel_;
    std::mt19937 random_;
};

std::int32_t Quantised(double value, const Piece& piece, std::int64_t sample) {
    const int most = 1 << (piece.bits - 1);
    const auto level = static_cast<std::int32_t>(
        std::clamp<double>(std::nearbyint(value * most), -most, most - 1));
    const bool empty_bits = piece.kind == Kind::LowZeros && 2 * sample < piece.samples;
    return empty_bits ? level & ~31 : level;
}

}  // namespace

std::string Piece::Name() const {
    return fmt::format("{} Hz, {} channels, {} bits, {}, {} samples, seed {}", sampling_rate,
                       channels, bits, kKindNames[Index(static_cast<int>(kind))], samples, seed);
}

std::vector<std::int32_t> Generate(const Piece& piece) {
    std::vector<std::int32_t> all(static_cast<std::size_t>(piece.samples) * Index(piece.channels));
    for (int channel = 0; channel < piece.channels; ++channel) {
        Player player(piece, piece.kind == Kind::Same ? 0 : channel);
        for (std::int64_t i = 0; i < piece.samples; ++i)
            all[static_cast<std::size_t>(i) * Index(piece.channels) + Index(channel)] =
                Quantised(player.At(i), piece, i);
    }
    return all;
}

}  // namespace lossless_conformance
