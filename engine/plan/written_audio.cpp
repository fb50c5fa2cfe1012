#include "engine/plan/written_audio.h"

#include <algorithm>

#include <fmt/format.h>

namespace engine {

namespace {

using platform::CodecMaker;
using platform::VbrMode;

constexpr std::uint16_t kWavePcmTag = 1;  // uncompressed, as files know it

// clang-format off
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

std::int32_t RateForQuality(std::int32_t quality) {
    for (const QualityRate& row : kQualityRates)
        if (quality <= row.quality_up_to) return row.bps;
    return kStandardMostBps;
}

}  // namespace

WrittenAudio WrittenFor(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const AudioCodecRow& codec = Written(row);
    AudioFormat written = format;
    if (codec.maker.kind == CodecMaker::Kind::Pcm) {
        written.value = format.sampling_rate * format.channels * format.bits_per_sample;
        return {codec.maker, kWavePcmTag, written};
    }
    if (codec.maker.kind == CodecMaker::Kind::Lossless) return {codec.maker, codec.tag, format};
    written.channels = std::min(format.channels, kStandardMostChannels);
    written.bits_per_sample = 16;
    if (format.sampling_rate > 48000) written.sampling_rate = format.sampling_rate / 2;
    written.value =
        std::clamp(mode == VbrMode::Quality ? RateForQuality(format.value) : format.value,
                   kStandardLeastBps, kStandardMostBps);
    return {codec.maker, codec.tag, written};
}

std::string AudioDescription(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const AudioFormat written = WrittenFor(row, mode, format).format;
    const bool lossless = Written(row).maker.kind == CodecMaker::Kind::Lossless;
    std::string text =
        fmt::format("{}, {} kHz, {}", RateText(lossless ? mode : VbrMode::Constant, written.value),
                    ArgumentKilohertz(written.sampling_rate), ChannelText(written.channels));
    if (written.bits_per_sample != 16) text += fmt::format(", {} bit", written.bits_per_sample);
    if (lossless) return text + " VBR";
    if (Written(row).maker.kind != CodecMaker::Kind::Pcm) text += " CBR";
    const bool as_asked = mode != VbrMode::Quality && written == format;
    if (as_asked) return text;
    text += fmt::format(" (asked: {}, {} kHz, {}", RateText(mode, format.value),
                        ArgumentKilohertz(format.sampling_rate), ChannelText(format.channels));
    if (format.bits_per_sample != 16) text += fmt::format(", {} bit", format.bits_per_sample);
    return text + ")";
}

}  // namespace engine
