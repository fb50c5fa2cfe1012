#include "engine/outputs/asf/stream_format.h"

#include <algorithm>
#include <array>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/guids.h"

namespace engine::asf {
namespace {

constexpr std::size_t kFixedBytes = 54;
constexpr std::size_t kWaveBytes = 18;
constexpr std::size_t kBitmapPlace = 11;
constexpr std::size_t kBitmapBytes = 40;
constexpr unsigned kMostChannels = 64;
constexpr std::uint32_t kMostSamplesPerSecond = 1'000'000;
constexpr std::int64_t kMostPixels = 16384;  // of a side
constexpr std::uint32_t kMostMetadataBytes = 0xFFFF;

// clang-format off
// Of other kinds that the ASF specification names: command, JFIF, degradable JPEG, file, binary.
constexpr std::array kOtherKinds = {
    Guid{0x59DACFC0, 0x59E6, 0x11D0, {0xA3, 0xAC, 0x00, 0xA0, 0xC9, 0x03, 0x48, 0xF6}},
    Guid{0xB61BE100, 0x5B4E, 0x11CF, {0xA8, 0xFD, 0x00, 0x80, 0x5F, 0x5C, 0x44, 0x2B}},
    Guid{0x35907DE0, 0xE415, 0x11CF, {0xA9, 0x17, 0x00, 0x80, 0x5F, 0x5C, 0x44, 0x2B}},
    Guid{0x91BD222C, 0xF21C, 0x497A, {0x8B, 0x6D, 0x5A, 0xA8, 0x6B, 0xFC, 0x01, 0x85}},
    Guid{0x3AFB65E2, 0x47EF, 0x40F2, {0xAC, 0x2C, 0x70, 0xA9, 0x0D, 0x71, 0xD3, 0x43}},
};
// clang-format on

const char* FaultOfAudio(ByteReader in, std::size_t bytes) {
    const unsigned tag = in.U16();
    const unsigned channels = in.U16();
    const std::uint32_t rate = in.U32();
    in.U32();  // bytes a second
    const unsigned block_align = in.U16();
    in.U16();  // bits a sample
    const std::size_t extra = in.U16();
    if (bytes < kWaveBytes || extra > bytes - kWaveBytes)
        return "its header's description of the audio is cut";
    const bool possible = tag != 0 && channels >= 1 && channels <= kMostChannels && rate >= 1 &&
                          rate <= kMostSamplesPerSecond && block_align >= 1;
    return possible ? nullptr : "its header's description of the audio is damaged";
}

/// A name of four characters, or one of the small numbers of uncompressed frames.
bool IsCodecName(std::uint32_t four_cc) {
    if (four_cc <= 3) return true;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t character = (four_cc >> shift) & 0xFFU;
        if (character < 0x20 || character > 0x7E) return false;
    }
    return true;
}

const char* FaultOfVideo(ByteReader in, std::size_t bytes) {
    in.Skip(9);  // size, which the bitmap's header repeats, and flags
    const std::size_t stated = in.U16();
    const std::size_t bitmap = in.U32();
    if (bytes < kBitmapPlace + kBitmapBytes || stated < kBitmapBytes || bitmap != stated ||
        stated > bytes - kBitmapPlace)
        return "its header's description of the video is cut";
    const std::int64_t width = static_cast<std::int32_t>(in.U32());
    const std::int64_t height = static_cast<std::int32_t>(in.U32());  // < 0: the rows run downward
    in.U32();                                                         // planes, bits a pixel
    const bool possible = width >= 1 && width <= kMostPixels && height != 0 &&
                          height >= -kMostPixels && height <= kMostPixels && IsCodecName(in.U32());
    return possible ? nullptr : "its header's description of the video is damaged";
}

}  // namespace

const char* FaultOfStream(std::span<const std::uint8_t> body) {
    ByteReader in(body);
    const Guid kind = in.Id();
    in.Id();   // error correction's kind
    in.U64();  // time offset
    const std::uint64_t format = in.U32();
    const std::uint64_t error_correction = in.U32();
    in.Skip(6);  // number, reserved
    if (in.Failed() || format + error_correction > body.size() - kFixedBytes)
        return "its header's description of a stream is cut";
    const auto format_bytes = static_cast<std::size_t>(format);
    const ByteReader described(body.subspan(kFixedBytes, format_bytes));
    if (kind == guid::kAudioStream) return FaultOfAudio(described, format_bytes);
    if (kind == guid::kVideoStream) return FaultOfVideo(described, format_bytes);
    const bool known = std::find(kOtherKinds.begin(), kOtherKinds.end(), kind) != kOtherKinds.end();
    return known ? nullptr : "its header describes a stream of a kind that there is not";
}

const char* FaultOfMetadata(std::span<const std::uint8_t> body) {
    ByteReader in(body);
    const unsigned records = in.U16();
    for (unsigned i = 0; i < records && !in.Failed(); ++i) {
        in.Skip(4);  // language, stream
        const std::uint64_t name = in.U16();
        in.U16();  // type
        const std::uint32_t value = in.U32();
        in.Skip(name);
        in.Skip(value);
        if (value > kMostMetadataBytes) return "an attribute of its header is damaged";
    }
    return in.Failed() ? "the attributes of its header do not fit into it" : nullptr;
}

}  // namespace engine::asf
