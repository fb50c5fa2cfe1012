#include "engine/plan/written_audio.h"

#include <iterator>

#include <fmt/format.h>

namespace engine {
namespace {

using platform::CodecMaker;
using platform::VbrMode;

constexpr std::uint16_t kWavePcmTag = 1;  // uncompressed, as files know it

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
    return std::end(kQualityRates)[-1].bps;
}

}  // namespace

WrittenAudio WrittenFor(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    AudioFormat written = format;
    if (mode == VbrMode::Quality && row.maker.kind != CodecMaker::Kind::Lossless)
        written.value = RateForQuality(format.value) * format.channels / 2;
    return {row.maker, row.tag != 0 ? row.tag : kWavePcmTag, written};
}

std::string AudioDescription(const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
    std::string text =
        fmt::format("{}, {} kHz, {}", RateText(mode, format.value),
                    ArgumentKilohertz(format.sampling_rate), ChannelText(format.channels));
    if (format.bits_per_sample != 16) text += fmt::format(", {} bit", format.bits_per_sample);
    if (row.tag != 0) text += mode == VbrMode::Constant ? " CBR" : " VBR";
    return text;
}

}  // namespace engine
