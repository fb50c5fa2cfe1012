#include "codecs/wma_standard/stream_format.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <span>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"

namespace codecs::wma_standard {
namespace {

// Options of the extra data.
constexpr int kExponentCodes = 1;
constexpr int kBitReservoir = 2;
constexpr int kBlockSizes = 4;
constexpr int kMoreSizesShift = 3;
constexpr int kMoreSizes = 3;  // the most that the field holds
constexpr int kOptions =
    kExponentCodes | kBitReservoir | kBlockSizes | (kMoreSizes << kMoreSizesShift);

constexpr int kLeastBlock = 128;

// clang-format off
constexpr int kBandEdgesHz[] = {
    100, 200, 300, 400, 510, 630, 770, 920, 1080, 1270, 1480, 1720, 2000, 2320, 2700, 3150, 3700,
    4400, 5300, 6400, 7700, 9500, 12000, 15500, 24500,
};

// Widths of the bands of small blocks, for streams of at least a sampling rate.
struct FixedBands {
    int sampling_rate;
    int block;
    std::array<int, 23> widths;  // a zero ends them
};
constexpr FixedBands kFixedBands[] = {
    {44100, 128, {4, 4, 4, 4, 4, 8, 8, 8, 12, 16, 20, 36}},
    {44100, 256, {4, 8, 4, 8, 8, 4, 8, 8, 12, 12, 12, 24, 28, 40, 76}},
    {44100, 512, {4, 8, 8, 4, 12, 12, 8, 8, 24, 16, 20, 24, 32, 40, 60, 80, 152}},
    {32000, 128, {4, 4, 8, 4, 4, 12, 16, 24, 20, 28, 4}},
    {32000, 256, {4, 8, 4, 4, 8, 8, 16, 20, 12, 20, 20, 28, 40, 56, 8}},
    {32000, 512, {8, 4, 8, 8, 12, 16, 20, 24, 40, 32, 32, 44, 56, 80, 112, 16}},
    {22050, 128, {4, 8, 4, 8, 8, 12, 20, 24, 24, 16}},
    {22050, 256, {4, 8, 8, 4, 12, 12, 16, 24, 16, 20, 24, 32, 40, 36}},
    {22050, 512, {4, 4, 4, 8, 4, 4, 8, 8, 8, 8, 8, 12, 12, 16, 16, 24, 24, 32, 44, 48, 60, 84, 72}},
};

// clang-format on

int FrameSamples(int sampling_rate) {
    if (sampling_rate <= 16000) return 512;
    return sampling_rate <= 22050 ? 1024 : 2048;
}

// As decoders calculate it: in single precision.
float BitsPerSample(int bytes_per_second, int channels, int sampling_rate) {
    return static_cast<float>(8 * bytes_per_second) / static_cast<float>(channels * sampling_rate);
}

// From where on coefficients may be noise, as a part of half the sampling rate; 1 = nowhere.
double NoiseFrom(int sampling_rate, float bits, float both_bits) {
    if (sampling_rate >= 44100) return both_bits >= 0.61F ? 1 : 0.4;
    if (sampling_rate >= 22050) return both_bits >= 1.16F ? 1 : both_bits >= 0.72F ? 0.7 : 0.6;
    if (sampling_rate >= 16000) return bits > 0.5F ? 0.5 : 0.3;
    if (sampling_rate >= 11025) return 0.7;
    if (sampling_rate >= 8000) return bits <= 0.625F ? 0.5 : bits > 0.75F ? 1 : 0.65;
    return bits >= 0.8F ? 0.75 : bits >= 0.6F ? 0.6 : 0.5;
}

const CoefficientTables& TablesFor(int sampling_rate, float both_bits) {
    if (sampling_rate < 32000 || both_bits >= 1.16F) return HighRateTables();
    return both_bits >= 0.72F ? MiddleRateTables() : LowRateTables();
}

std::vector<Band> BandsOf(int sampling_rate, int block) {
    std::vector<Band> bands;
    const auto add_up_to = [&](int end) {
        bands.push_back({bands.empty() ? 0 : bands.back().end, end});
    };
    for (const FixedBands& row : kFixedBands) {
        if (sampling_rate < row.sampling_rate || block != row.block) continue;
        for (const int width : row.widths)
            if (width > 0) add_up_to((bands.empty() ? 0 : bands.back().end) + width);
        return bands;
    }
    for (const int edge : kBandEdgesHz) {
        const std::int64_t twice = std::int64_t{2} * block * edge + std::int64_t{2} * sampling_rate;
        const int end =
            std::min(static_cast<int>(twice / (std::int64_t{4} * sampling_rate)) * 4, block);
        if (end > (bands.empty() ? 0 : bands.back().end)) add_up_to(end);
        if (end == block) break;
    }
    return bands;
}

void AddHighBands(BlockFormat& format, int from) {
    for (std::size_t i = 0; i < format.bands.size(); ++i) {
        const Band cut{std::max(format.bands[i].begin, from),
                       std::min(format.bands[i].end, format.coded)};
        if (cut.Size() <= 0) continue;
        format.high_bands.push_back(cut);
        format.high_exponents.push_back(static_cast<int>(i));
    }
}

}  // namespace

StreamFormat::StreamFormat(int sampling_rate_hz, int channel_count, int average_bytes,
                           int frames_per_packet)
    : sampling_rate(sampling_rate_hz),
      channels(channel_count),
      bytes_per_second(average_bytes),
      frame_samples(FrameSamples(sampling_rate_hz)),
      samples_per_packet(frames_per_packet * frame_samples) {
    assert(sampling_rate > 0 && sampling_rate <= 50000 && (channels == 1 || channels == 2));
    packet_bytes =
        static_cast<int>(std::int64_t{bytes_per_second} * samples_per_packet / sampling_rate);
    const float bits = BitsPerSample(bytes_per_second, channels, sampling_rate);
    const float both_bits = channels == 2 ? static_cast<float>(bits * 1.6) : bits;
    const int frame_bytes =
        static_cast<int>(std::lround(bits * static_cast<float>(frame_samples) / 8.0F));
    completion_bits = wma::FloorLog2(std::max(frame_bytes, 1)) + 2 + 3;
    coefficient_tables = TablesFor(sampling_rate, both_bits);

    int halvings = kMoreSizes + 1;
    if (8 * bytes_per_second / channels >= 32000) halvings += 2;
    halvings = std::min(halvings, wma::FloorLog2(frame_samples / kLeastBlock));
    size_bits = wma::FloorLog2(halvings) + 1;
    const double noise_from = NoiseFrom(sampling_rate, bits, both_bits);
    noise_filling = noise_from < 1;
    for (int k = 0; k <= halvings; ++k) {
        BlockFormat& block = blocks.emplace_back();
        block.size = frame_samples >> k;
        block.coded = (frame_samples - frame_samples * 9 / 100) >> k;
        block.bands = BandsOf(sampling_rate, block.size);
        // 2 L f / R with f as a part of R / 2
        if (noise_filling)
            AddHighBands(block, static_cast<int>(std::lround(block.size * noise_from)));
    }
}

std::array<std::uint8_t, 10> StreamFormat::ExtraData() const {
    const auto byte = [](int value, int shift) {
        return static_cast<std::uint8_t>((value >> shift) & 0xFF);
    };
    const auto samples = samples_per_packet;
    return {byte(samples, 0),
            byte(samples, 8),
            byte(samples, 16),
            byte(samples, 24),
            byte(kOptions, 0),
            byte(kOptions, 8),
            byte(packet_bytes, 0),
            byte(packet_bytes, 8),
            0,
            0};
}

}  // namespace codecs::wma_standard
