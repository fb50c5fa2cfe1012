#include "engine/plan/audio_formats.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "engine/plan/audio_format_lists.h"
#include "engine/plan/codec_names.h"
#include "platform/text.h"

namespace engine {

namespace {

using platform::VbrMode;

std::int32_t Kilobits(std::int32_t bps) {
    return static_cast<std::int32_t>(platform::RoundHalfToEven(bps / 1000.0));
}

bool SameAudio(const AudioFormat& a, const AudioFormat& b) {
    return a.sampling_rate == b.sampling_rate && a.channels == b.channels &&
           a.bits_per_sample == b.bits_per_sample;
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
    gather([&](const AudioFormat& format) { return SameAudio(format, wanted); });
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

// Sampling rates as arguments carry them: whole kilohertz, cut for the 11025 family.
std::int32_t ArgumentKilohertz(std::int32_t sampling_rate) {
    if (sampling_rate % 11025 == 0) return sampling_rate / 1000;
    return Kilobits(sampling_rate);
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
        return SameAudio(format, wanted) && Kilobits(format.value) == Kilobits(wanted.value);
    });
    if (nearly == listed.end()) return std::nullopt;
    return *nearly;
}

std::string FormatArgument(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const bool quality = mode == VbrMode::Quality;
    std::string argument = fmt::format("{}{}_{}_{}", quality ? "Q" : "",
                                       quality ? format.value : Kilobits(format.value),
                                       ArgumentKilohertz(format.sampling_rate), format.channels);
    if (row.several_depths) argument += fmt::format("_{}", format.bits_per_sample);
    return argument;
}

AudioFormat RequireAudioFormat(const AudioCodecRow& row, VbrMode mode, const AudioFormat& wanted) {
    const std::optional<AudioFormat> found = FindAudioFormat(row, mode, wanted);
    if (found) return *found;
    if (AudioFormats(row, mode).empty())
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format(
                "{} has no {} mode: give -a_mode {} or another -a_codec", row.name, ModeName(mode),
                row.modes.Has(VbrMode::Quality) ? "2" : "1, start afresh without -a_mode,"));
    throw platform::Error(
        platform::kInvalidArgument,
        fmt::format("{} has no format with {}, {} Hz, {}, {} bits per sample in {} mode: its "
                    "settings are {}",
                    row.name, RateText(mode, wanted.value), wanted.sampling_rate,
                    ChannelText(wanted.channels), wanted.bits_per_sample, ModeName(mode),
                    FormatOffer(row, mode, wanted)));
}

}  // namespace engine
