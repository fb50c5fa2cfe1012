#include "engine/prepare/audio_plan.h"

#include <variant>

#include <fmt/format.h>

#include "engine/plan/codec_names.h"
#include "engine/plan/value_checks.h"
#include "engine/prepare/content_parts.h"
#include "engine/prepare/peak_plan.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr PeakNames kPeakNames = {"audio", "AudioPeakBitrate", "AudioBufferMax", "-a_peakbitrate",
                                  3000};

// Real definitions have some lines.
constexpr std::size_t kMostDefinitionBytes = std::size_t{1} << 20U;

VoiceContent ContentOf(const AudioSourceRecord& source, platform::FileSystem& files) {
    VoiceContent content{static_cast<ContentMode>(source.content_mode), {}};
    if (source.content_edl.empty()) return content;
    content.parts = ReadContentParts(files.ReadBytes(source.content_edl, kMostDefinitionBytes),
                                     source.content_edl);
    // Its times are the source's, which begins at its mark.
    const Ticks start = Ticks::FromMilliseconds(source.mark_in_ms);
    for (ContentPart& part : content.parts) {
        part.begin = part.begin - start;
        part.end = part.end - start;
    }
    return content;
}

}  // namespace

AudioPlan PlanAudio(const AudioSourceRecord& source, const ProfileRecord& profile,
                    platform::FileSystem& files) {
    const AudioSettings& audio = profile.audiences.front().audio;
    if (audio.format.sampling_rate == 0)
        RefuseArgument("The profile has no audio format: give -a_setting or a profile code");
    AudioPlan plan;
    plan.codec = &platform::kAudioCodecs[static_cast<std::size_t>(audio.codec)];
    plan.mode = profile.audio_mode;
    // Codec and mode may have been changed after the format was chosen.
    plan.format = RequireAudioFormat(*plan.codec, plan.mode, audio.format);
    plan.written = WrittenFor(*plan.codec, plan.mode, plan.format);
    plan.codec_name = AudioDisplayName(*plan.codec, plan.mode);
    plan.codec_description = AudioDescription(*plan.codec, plan.mode, plan.format);
    if (plan.mode == VbrMode::Peak) {
        const Peak peak =
            PlanPeak(kPeakNames, plan.format.value, audio.peak_rate_bps, audio.peak_buffer_ms);
        plan.peak_rate_bps = peak.rate_bps;
        plan.peak_buffer_ms = peak.buffer_ms;
    }
    if (plan.codec->maker.kind == platform::CodecMaker::Kind::Voice)
        plan.content = ContentOf(source, files);
    return plan;
}

Downmix PlanDownmix(
    const std::vector<std::pair<std::string, platform::AttributeValue>>& attributes) {
    Downmix levels;
    const auto take = [&](const char* name, std::int32_t& level) {
        for (const auto& [attribute, value] : attributes) {
            const std::int32_t* number = std::get_if<std::int32_t>(&value);
            if (attribute != name || number == nullptr) continue;
            if (*number > 0 || *number < -Downmix::kSilence)
                RefuseArgument(
                    fmt::format("{} {} is no attenuation: give -a_folddown6to2 numbers from 0 to "
                                "{} decibels",
                                name, -std::int64_t{*number}, Downmix::kSilence));
            level = -*number;
        }
    };
    take("SurroundMix", levels.surround);
    take("CenterMix", levels.center);
    take("LFEMix", levels.lfe);
    return levels;
}

}  // namespace engine
