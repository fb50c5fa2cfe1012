#include "engine/plan/written_audio.h"

#include <algorithm>

#include <fmt/format.h>

namespace engine {

namespace {

using platform::CodecMaker;
using platform::VbrMode;

constexpr std::uint16_t kWavePcmTag = 1;  // uncompressed, as files know it

// What our encoder of the standard codec takes.
constexpr std::int32_t kStandardMostBps = 320000;
constexpr std::int32_t kStandardMostChannels = 2;

// About what a quality takes of two channels: its stream's header has to name a rate.
struct QualityRate {
    std::int32_t quality_up_to;
    std::int32_t bps;
};
constexpr QualityRate kQualityRates[] = {
    {10, 48000}, {25, 64000}, {50, 96000}, {75, 128000}, {90, 192000}, {100, 320000},
};

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
    if (codec.maker.kind == CodecMaker::Kind::Professional) {
        if (mode == VbrMode::Quality)
            written.value = RateForQuality(format.value) * format.channels / 2;
        return {codec.maker, codec.tag, written};
    }
    written.channels = std::min(format.channels, kStandardMostChannels);
    written.bits_per_sample = 16;
    if (format.sampling_rate > 48000) written.sampling_rate = format.sampling_rate / 2;
    written.value = std::min(mode == VbrMode::Quality ? RateForQuality(format.value) : format.value,
                             kStandardMostBps);
    return {codec.maker, codec.tag, written};
}

std::string AudioDescription(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    const WrittenAudio audio = WrittenFor(row, mode, format);
    const bool pcm = audio.maker.kind == CodecMaker::Kind::Pcm;
    AudioFormat written = audio.format;
    const bool quality = mode == VbrMode::Quality && !pcm;
    if (quality) written.value = format.value;
    std::string text =
        fmt::format("{}, {} kHz, {}", RateText(quality ? mode : VbrMode::Constant, written.value),
                    ArgumentKilohertz(written.sampling_rate), ChannelText(written.channels));
    if (written.bits_per_sample != 16) text += fmt::format(", {} bit", written.bits_per_sample);
    if (!pcm) text += mode == VbrMode::Constant ? " CBR" : " VBR";
    if (written == format) return text;
    text += fmt::format(" (asked: {}, {} kHz, {}", RateText(mode, format.value),
                        ArgumentKilohertz(format.sampling_rate), ChannelText(format.channels));
    if (format.bits_per_sample != 16) text += fmt::format(", {} bit", format.bits_per_sample);
    return text + ")";
}

}  // namespace engine
