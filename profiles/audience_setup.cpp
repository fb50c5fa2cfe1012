#include "profiles/audience_setup.h"

#include <algorithm>

#include "profiles/codec_catalogue.h"
#include "profiles/whole_number.h"

namespace profiles {

void SetAudioCodec(platform::SessionState& state, platform::WMEncAudience& audience,
                   std::string_view codec) {
    const std::int32_t index = GetAudioCodecIndex(*state.g_objProfile, codec);
    state.AudioCodecName = state.g_objProfile->EnumAudioCodec(index);
    audience.SetAudioCodec(0, index);
}

void SetVideoCodec(platform::SessionState& state, platform::WMEncAudience& audience,
                   std::string_view codec) {
    const std::int32_t index = GetVideoCodecIndex(*state.g_objProfile, codec);
    state.VideoCodecName = state.g_objProfile->EnumVideoCodec(index);
    audience.SetVideoCodec(0, index);
}

void SetVideoQuality(const platform::WMEncProfile2& profile, platform::WMEncAudience& audience,
                     std::int32_t quality) {
    if (profile.VBRMode(platform::SourceType::Video, 0) == platform::VbrMode::Quality)
        audience.SetVideoCompressionQuality(0, quality);
    else
        audience.SetVideoImageSharpness(0, quality);
}

void SetupAudioAudience(platform::SessionState& state, platform::WMEncAudience& audience,
                        const AudioAudience& audio) {
    SetAudioCodec(state, audience, audio.codec);
    audience.SetAudioConfig(0, audio.channels, audio.sampling_rate, audio.bit_rate,
                            audio.bits_per_sample);
}

void SetupVideoAudience(platform::SessionState& state, cli::EncodeSettings& settings,
                        platform::WMEncAudience& audience, const VideoAudience& video) {
    const auto own_rate = static_cast<float>(video.frame_rate);
    const float rate = std::max(settings.v_framerate.value_or(own_rate), own_rate);
    settings.v_framerate = rate;

    SetVideoCodec(state, audience, video.codec);
    audience.SetVideoBitrate(0, video.bit_rate);
    audience.SetVideoWidth(0, video.width);
    audience.SetVideoHeight(0, video.height);
    audience.SetVideoFPS(0, WholeNumber(rate, "video frame rate"));
    audience.SetVideoKeyFrameDistance(0, video.key_frame_distance);
    audience.SetVideoBufferSize(0, video.buffer);
    SetVideoQuality(*state.g_objProfile, audience, video.quality);
}

}  // namespace profiles
