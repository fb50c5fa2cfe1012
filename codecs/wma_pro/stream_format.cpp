#include "codecs/wma_pro/stream_format.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"
#include "codecs/wma/packetiser.h"

namespace codecs::wma_pro {
namespace {

// Options of the stream's header: frames say their length, and have a gain.
constexpr int kOptions = 0x00C0;
constexpr int kHalvingsShift = 3;

constexpr int kMostHalvings = 4;
constexpr int kLeastBlock = 64;
constexpr int kLeastBand = 4;  // edges of bands are multiples of it
constexpr int kLowFrequencyHz = 440;

struct FrameLength {
    int rate_up_to;
    int samples;
};
constexpr FrameLength kFrameLengths[] = {
    {16000, 512}, {22050, 1024}, {48000, 2048}, {96000, 4096}, {192000, 8192},
};

// clang-format off
constexpr int kBandEdgesHz[] = {
    100, 200, 300, 400, 510, 630, 770, 920, 1080, 1270, 1480, 1720, 2000, 2320, 2700, 3150, 3700,
    4400, 5300, 6400, 7700, 9500, 12000, 15500, 20675, 28575, 41375, 63875,
};

// The usual speakers, by channels: the bits that name them, the place of the one for low
// frequencies, and pairs.
struct Speakers {
    std::uint32_t mask;
    int low_frequency;
    std::array<std::array<int, 2>, 3> pairs;  // ends with one of a channel with itself
};
constexpr Speakers kSpeakers[kMostChannels + 1] = {
    {0x000, -1, {}},
    {0x004, -1, {}},
    {0x003, -1, {{{0, 1}}}},
    {0x007, -1, {{{0, 1}}}},
    {0x033, -1, {{{0, 1}, {2, 3}}}},
    {0x037, -1, {{{0, 1}, {3, 4}}}},
    {0x03F,  3, {{{0, 1}, {4, 5}}}},
    {0x13F,  3, {{{0, 1}, {4, 5}}}},
    {0x63F,  3, {{{0, 1}, {4, 5}, {6, 7}}}},
};
// clang-format on

int Halvings(int frame_samples) {
    return std::min(kMostHalvings, wma::FloorLog2(frame_samples / kLeastBlock));
}

BlockFormat BlockFormatOf(int sampling_rate, int size) {
    BlockFormat block;
    block.size = size;
    for (const int edge : kBandEdgesHz) {
        const auto twice = std::int64_t{2} * size * edge;
        const int end = (static_cast<int>(twice / sampling_rate) + 2) / kLeastBand * kLeastBand;
        if (end > (block.band_ends.empty() ? 0 : block.band_ends.back()))
            block.band_ends.push_back(end);
        if (end >= size) break;
    }
    block.band_ends.back() = size;
    block.low_frequency_end = std::clamp(
        (kLowFrequencyHz * size + 3 * (sampling_rate / 2) - 1) / sampling_rate, kLeastBand, size);
    return block;
}

}  // namespace

int FrameSamples(int sampling_rate) {
    return std::find_if(std::begin(kFrameLengths), std::end(kFrameLengths),
                        [&](const FrameLength& row) { return sampling_rate <= row.rate_up_to; })
        ->samples;
}

StreamFormat::StreamFormat(int sampling_rate_hz, int channel_count, int bits, int bytes_of_packet)
    : sampling_rate(sampling_rate_hz),
      channels(channel_count),
      bits_per_sample(bits),
      packet_bytes(bytes_of_packet),
      frame_samples(FrameSamples(sampling_rate_hz)),
      low_frequency_channel(kSpeakers[channel_count].low_frequency) {
    assert(sampling_rate > 0 && sampling_rate <= 192000);
    assert(channels > 0 && channels <= kMostChannels);
    assert(packet_bytes >= 256 && packet_bytes < 32768);
    for (int k = 0; k <= Halvings(frame_samples); ++k)
        blocks.push_back(BlockFormatOf(sampling_rate, frame_samples >> k));
    for (const std::array<int, 2>& pair : kSpeakers[channels].pairs)
        if (pair[0] != pair[1]) pairs.push_back(pair);
}

// Frames have a power of two of samples.
int StreamFormat::TrimBits() const {
    return std::countr_zero(static_cast<unsigned>(2 * frame_samples));
}

int StreamFormat::MostFrameBits() const {
    return 8 * packet_bytes - wma::PacketHeaderBits(packet_bytes);
}

std::array<std::uint8_t, 18> StreamFormat::ExtraData() const {
    std::array<std::uint8_t, 18> data{};
    const auto put = [&](std::size_t place, std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            data[place + Index(i)] = static_cast<std::uint8_t>(value >> (8 * i));
    };
    put(0, static_cast<std::uint32_t>(bits_per_sample), 2);
    put(2, kSpeakers[channels].mask, 4);
    put(14, static_cast<std::uint32_t>(kOptions | (Halvings(frame_samples) << kHalvingsShift)), 2);
    return data;
}

}  // namespace codecs::wma_pro
