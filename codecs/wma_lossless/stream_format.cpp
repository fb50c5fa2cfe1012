#include "codecs/wma_lossless/stream_format.h"

#include <bit>
#include <cassert>
#include <cstddef>

namespace codecs::wma_lossless {
namespace {

// Options of the stream's header: every frame says its length; the syntax of the final version.
// One tile a frame, no change of the frame's length, no dynamic range.
constexpr std::uint16_t kOptions = 0x0140;
constexpr std::uint16_t kHalvedFrames = 0x0004;
constexpr std::uint16_t kQuarteredFrames = 0x0006;
constexpr int kLongFrame = 1024;

constexpr int kSmallestPacketBits = 10;
constexpr int kLargestPacketBits = 15;
// Of a frame beside its samples, in the configuration of any filters.
constexpr int kFrameOverheadBits = 1000;

struct FrameLength {
    int rate_up_to;
    int samples;
};
constexpr FrameLength kFrameLengths[] = {
    {16000, 512}, {22050, 1024}, {48000, 2048}, {96000, 4096}, {192000, 8192},
};

int DefaultFrameSamples(int sampling_rate) {
    for (const FrameLength& row : kFrameLengths)
        if (sampling_rate <= row.rate_up_to) return row.samples;
    return kFrameLengths[std::size(kFrameLengths) - 1].samples;
}

// Speaker bits of the usual layouts, by channels.
constexpr std::uint32_t kSpeakers[kMostChannels + 1] = {0,    0x4,  0x3,   0x7,  0x33,
                                                        0x37, 0x3F, 0x13F, 0x63F};

}  // namespace

StreamFormat::StreamFormat(int sampling_rate, int channels, int bits_per_sample)
    : sampling_rate_(sampling_rate),
      channels_(channels),
      bits_(bits_per_sample),
      frame_samples_(DefaultFrameSamples(sampling_rate)),
      flags_(kOptions) {
    assert(sampling_rate > 0 && sampling_rate <= 192000);
    assert(channels > 0 && channels <= kMostChannels);
    assert(bits_per_sample == 16 || bits_per_sample == 24);
    const auto largest = [&] { return frame_samples_ * channels_ * bits_ + kFrameOverheadBits; };
    // Shorter frames have smaller packets, so less of the last one is empty. And a frame that does
    // not fit uncompressed could not be written.
    for (const std::uint16_t shorter : {kHalvedFrames, kQuarteredFrames}) {
        if (frame_samples_ <= kLongFrame && largest() < 1 << (kLargestPacketBits + 4)) break;
        frame_samples_ /= 2;
        flags_ = kOptions | shorter;
    }
    packet_bits_ = kSmallestPacketBits;
    while (largest() >= 1 << LengthBits()) ++packet_bits_;
}

// Frames have a power of two of samples.
int StreamFormat::TrimBits() const {
    return std::countr_zero(static_cast<unsigned>(2 * frame_samples_));
}

std::vector<std::uint8_t> StreamFormat::ExtraData() const {
    std::vector<std::uint8_t> data(18, 0);
    const auto put = [&](std::size_t place, std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            data[place + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (8 * i));
    };
    put(0, static_cast<std::uint32_t>(bits_), 2);  // valid bits per sample
    put(2, kSpeakers[channels_], 4);
    put(14, flags_, 2);
    return data;
}

}  // namespace codecs::wma_lossless
