#include "engine/encoders/codec_table.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "engine/encoders/audio_formats.h"
#include "platform/text.h"

namespace engine {

namespace {

using platform::FourCC;
using platform::VbrMode;

constexpr std::uint16_t kStandardTag = 0x0161;
constexpr std::uint16_t kProfessionalTag = 0x0162;
constexpr std::uint16_t kLosslessTag = 0x0163;
constexpr std::uint16_t kWavePcmTag = 1;

constexpr const char* kStandardName = "Windows Media Audio 9";
constexpr const char* kVideo8Name = "Windows Media Video 8";

// clang-format off
constexpr AudioCodecRow kAudioCodecs[] = {
    // tag            name                                  av_encoder   written_tag   stand_in
    {kStandardTag,     kStandardName,                        "wmav2",     kStandardTag, nullptr},
    {kProfessionalTag, "Windows Media Audio 9 Professional", "wmav2",     kStandardTag, kStandardName},
    {kLosslessTag,     "Windows Media Audio 9 Lossless",     "pcm_s16le", kWavePcmTag,  "PCM"},
    {0x000A,           "Windows Media Audio 9 Voice",        "wmav2",     kStandardTag, kStandardName},
    {0,                "PCM",                                "pcm_s16le", kWavePcmTag,  nullptr},
};

constexpr VideoCodecRow kVideoCodecs[] = {
    // four_cc        name                             av_encoder  written_four_cc  stand_in     even_width even_height fields
    {FourCC("WMV1"), "Windows Media Video 7",          "wmv1",     FourCC("WMV1"),  nullptr,     true,      false,      false},
    {FourCC("WMV2"), kVideo8Name,                      "wmv2",     FourCC("WMV2"),  nullptr,     true,      false,      false},
    {FourCC("WMV3"), "Windows Media Video 9",          nullptr,    FourCC("WMV3"),  nullptr,     true,      true,       false},
    {FourCC("MSS2"), "Windows Media Video 9 Screen",   "wmv2",     FourCC("WMV2"),  kVideo8Name, true,      false,      false},
    {FourCC("MP4S"), "ISO MPEG-4 Video v1",            "mpeg4",    FourCC("MP4S"),  nullptr,     false,     false,      true},
    {0,              "Full frames (uncompressed)",     "rawvideo", 0,               nullptr,     false,     false,      false},
};

// The range of libavcodec's encoder of the standard codec: it refuses less, and gains nothing above.
constexpr std::int32_t kStandardLeastBps = 24000;
constexpr std::int32_t kStandardMostBps = 320000;
constexpr std::int32_t kStandardMostChannels = 2;

// That encoder has no quality mode: a quality is written at a constant rate that comes near it.
struct QualityRate { std::int32_t quality_up_to; std::int32_t bps; };
constexpr QualityRate kQualityRates[] = {
    {10, 48000}, {25, 64000}, {50, 96000}, {75, 128000}, {90, 192000}, {100, 320000},
};
// clang-format on

std::int32_t Kilobits(std::int32_t bps) {
    return static_cast<std::int32_t>(platform::RoundHalfToEven(bps / 1000.0));
}

std::int32_t RateForQuality(std::int32_t quality) {
    for (const QualityRate& row : kQualityRates)
        if (quality <= row.quality_up_to) return row.bps;
    return kStandardMostBps;
}

// Rates as arguments carry them: an argument reads 705 as 705600, so that is its spelling.
std::int32_t ArgumentKilobits(std::int32_t bps) {
    constexpr std::int32_t kPcm22Stereo = 705600;
    return bps == kPcm22Stereo ? bps / 1000 : Kilobits(bps);
}

// Sampling rates as arguments carry them: whole kilohertz, cut for the 11025 family.
std::int32_t ArgumentKilohertz(std::int32_t sampling_rate) {
    if (sampling_rate % 11025 == 0) return sampling_rate / 1000;
    return Kilobits(sampling_rate);
}

bool SameSound(const AudioFormat& a, const AudioFormat& b) {
    return a.sampling_rate == b.sampling_rate && a.channels == b.channels &&
           a.bits_per_sample == b.bits_per_sample;
}

std::string ChannelText(std::int32_t channels) {
    if (channels == 1) return "mono";
    if (channels == 2) return "stereo";
    return fmt::format("{} channels", channels);
}

std::string RateText(VbrMode mode, std::int32_t value) {
    return mode == VbrMode::Quality ? fmt::format("quality {}", value)
                                    : fmt::format("{} kbps", Kilobits(value));
}

// The settings that come near `wanted`, on one line.
std::string FormatOffer(const AudioCodecRow& row, VbrMode mode, const AudioFormat& wanted) {
    constexpr std::size_t kMost = 12;
    const std::span<const AudioFormat> formats = AudioFormats(row, mode);
    std::vector<AudioFormat> near;
    const auto gather = [&](const auto& fits) {
        if (near.empty())
            std::copy_if(formats.begin(), formats.end(), std::back_inserter(near), fits);
    };
    gather([&](const AudioFormat& format) { return SameSound(format, wanted); });
    gather([&](const AudioFormat& format) {
        return format.sampling_rate == wanted.sampling_rate && format.channels == wanted.channels;
    });
    gather([&](const AudioFormat& format) { return format.value == wanted.value; });
    gather([](const AudioFormat&) { return true; });
    std::string offer;
    for (std::size_t i = 0; i < std::min(near.size(), kMost); ++i)
        offer += (i == 0 ? "" : ", ") + FormatArgument(row, mode, near[i]);
    return near.size() < formats.size() || near.size() > kMost ? offer + " (-a_formats lists all)"
                                                               : offer;
}

}  // namespace

std::span<const AudioCodecRow> AudioCodecs() { return kAudioCodecs; }
std::span<const VideoCodecRow> VideoCodecs() { return kVideoCodecs; }

const char* ModeName(VbrMode mode) {
    switch (mode) {
        case VbrMode::Constant:
            return "constant rate";
        case VbrMode::Peak:
            return "peak rate";
        case VbrMode::Quality:
            return "quality";
        case VbrMode::BitRate:
            return "bit rate VBR";
    }
    return "unknown";
}

int AudioCodecCount(VbrMode mode) {
    switch (mode) {
        case VbrMode::Constant:
            return 5;
        case VbrMode::Quality:
            return 3;
        case VbrMode::Peak:
        case VbrMode::BitRate:
            return 2;
    }
    return 0;
}

int VideoCodecCount(VbrMode mode) { return mode == VbrMode::Constant ? 6 : 5; }

std::string AudioDisplayName(const AudioCodecRow& row, VbrMode mode) {
    if (row.tag == kLosslessTag && mode == VbrMode::Constant)
        return fmt::format("{} (needs -a_mode 2)", row.name);
    return row.stand_in == nullptr ? row.name : fmt::format("{} (as {})", row.name, row.stand_in);
}

std::string VideoDisplayName(const VideoCodecRow& row) {
    return row.stand_in == nullptr ? row.name : fmt::format("{} (as {})", row.name, row.stand_in);
}

std::span<const AudioFormat> AudioFormats(const AudioCodecRow& row, VbrMode mode) {
    return AudioFormatsOf(row.tag, mode).listed;
}

std::span<const AudioFormat> UnlistedAudioFormats(const AudioCodecRow& row, VbrMode mode) {
    return AudioFormatsOf(row.tag, mode).unlisted;
}

std::optional<AudioFormat> FindAudioFormat(const AudioCodecRow& row, VbrMode mode,
                                           const AudioFormat& wanted) {
    const auto [listed, unlisted] = AudioFormatsOf(row.tag, mode);
    for (const std::span<const AudioFormat> formats : {listed, unlisted})
        if (std::find(formats.begin(), formats.end(), wanted) != formats.end()) return wanted;
    if (mode == VbrMode::Quality) return std::nullopt;
    const auto nearly = std::find_if(listed.begin(), listed.end(), [&](const AudioFormat& format) {
        return SameSound(format, wanted) && Kilobits(format.value) == Kilobits(wanted.value);
    });
    if (nearly == listed.end()) return std::nullopt;
    return *nearly;
}

std::string FormatArgument(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const bool quality = mode == VbrMode::Quality;
    std::string argument = fmt::format("{}{}_{}_{}", quality ? "Q" : "",
                                       quality ? format.value : ArgumentKilobits(format.value),
                                       ArgumentKilohertz(format.sampling_rate), format.channels);
    if (row.tag == kProfessionalTag || row.tag == kLosslessTag)
        argument += fmt::format("_{}", format.bits_per_sample);
    return argument;
}

AudioFormat RequireAudioFormat(const AudioCodecRow& row, VbrMode mode, const AudioFormat& wanted) {
    const std::optional<AudioFormat> found = FindAudioFormat(row, mode, wanted);
    if (found) return *found;
    if (AudioFormats(row, mode).empty())
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("{} has no {} mode: give -a_mode {} or another -a_codec", row.name,
                        ModeName(mode),
                        row.tag == kLosslessTag ? "2" : "1, start afresh without -a_mode,"));
    throw platform::Error(
        platform::kInvalidArgument,
        fmt::format("{} has no format with {}, {} Hz, {}, {} bits per sample in {} mode: its "
                    "settings are {}",
                    row.name, RateText(mode, wanted.value), wanted.sampling_rate,
                    ChannelText(wanted.channels), wanted.bits_per_sample, ModeName(mode),
                    FormatOffer(row, mode, wanted)));
}

WrittenAudio WrittenFor(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    AudioFormat written = format;
    if (row.written_tag == kWavePcmTag) {
        written.value = format.sampling_rate * format.channels * format.bits_per_sample;
        return {format.bits_per_sample == 24 ? "pcm_s24le" : "pcm_s16le", kWavePcmTag, written};
    }
    written.channels = std::min(format.channels, kStandardMostChannels);
    written.bits_per_sample = 16;
    if (format.sampling_rate > 48000) written.sampling_rate = format.sampling_rate / 2;
    written.value =
        std::clamp(mode == VbrMode::Quality ? RateForQuality(format.value) : format.value,
                   kStandardLeastBps, kStandardMostBps);
    return {row.av_encoder, row.written_tag, written};
}

std::string AudioDescription(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const AudioFormat written = WrittenFor(row, mode, format).format;
    std::string text =
        fmt::format("{} kbps, {} kHz, {}", Kilobits(written.value),
                    ArgumentKilohertz(written.sampling_rate), ChannelText(written.channels));
    if (written.bits_per_sample != 16) text += fmt::format(", {} bit", written.bits_per_sample);
    if (row.written_tag != kWavePcmTag) text += " CBR";
    const bool as_asked = mode != VbrMode::Quality && written == format;
    if (as_asked) return text;
    text += fmt::format(" (asked: {}, {} kHz, {}", RateText(mode, format.value),
                        ArgumentKilohertz(format.sampling_rate), ChannelText(format.channels));
    if (format.bits_per_sample != 16) text += fmt::format(", {} bit", format.bits_per_sample);
    return text + ")";
}

}  // namespace engine
