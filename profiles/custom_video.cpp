#include "profiles/custom_video.h"

#include <cstdint>
#include <optional>

#include "profiles/audience_setup.h"
#include "profiles/encoding_mode.h"
#include "profiles/whole_number.h"

namespace profiles {

namespace {

using platform::SourceType;
using platform::WMEncAudience;

/// A setting that goes as it stands to one property of the audience.
struct Assignment {
    std::optional<std::int32_t> cli::EncodeSettings::*setting;
    void (WMEncAudience::*set)(int stream, std::int32_t value);
};

void Assign(const Assignment& assignment, const cli::EncodeSettings& settings,
            WMEncAudience& audience) {
    if (const auto value = settings.*assignment.setting) (audience.*assignment.set)(0, *value);
}

constexpr Assignment kBitRate = {&cli::EncodeSettings::v_bitrate, &WMEncAudience::SetVideoBitrate};
constexpr Assignment kWidth = {&cli::EncodeSettings::v_width, &WMEncAudience::SetVideoWidth};
constexpr Assignment kHeight = {&cli::EncodeSettings::v_height, &WMEncAudience::SetVideoHeight};
constexpr Assignment kKeyFrames = {&cli::EncodeSettings::v_keydist,
                                   &WMEncAudience::SetVideoKeyFrameDistance};
constexpr Assignment kBuffer = {&cli::EncodeSettings::v_buffer, &WMEncAudience::SetVideoBufferSize};
constexpr Assignment kPeakBuffer = {&cli::EncodeSettings::v_peakbuffer,
                                    &WMEncAudience::SetVideoBufferMax};

void SetStream(const cli::EncodeSettings& settings, WMEncAudience& audience) {
    Assign(kBitRate, settings, audience);
    Assign(kWidth, settings, audience);
    Assign(kHeight, settings, audience);
    if (settings.v_framerate)
        audience.SetVideoFPS(0, WholeNumber(*settings.v_framerate, "video frame rate"));
    Assign(kKeyFrames, settings, audience);
    Assign(kBuffer, settings, audience);
}

void SetPeak(const cli::EncodeSettings& settings, WMEncAudience& audience) {
    Assign(kPeakBuffer, settings, audience);
    if (!settings.v_peakbitrate) return;
    const std::int32_t peak = WholeNumber(*settings.v_peakbitrate, "video peak bit rate");
    // The bit rate is raised to a higher peak, not the peak lowered.
    if (*settings.v_peakbitrate > audience.VideoBitrate(0)) audience.SetVideoBitrate(0, peak);
    audience.SetVideoPeakBitrate(0, peak);
}

}  // namespace

bool SetupCustomVideoProfile(platform::SessionState& state, const cli::EncodeSettings& settings,
                             platform::OutputPane& pane, WMEncAudience& audience) {
    const platform::WMEncProfile2& profile = *state.g_objProfile;
    if (!ApplyEncodingMode(settings.v_mode, *state.g_objProfile, *state.g_objSrcVid)) {
        pane.OutputError("Invalid -v_mode <mode_number>");
        return false;
    }
    if (!settings.v_codec.empty()) SetVideoCodec(state, audience, settings.v_codec);
    SetStream(settings, audience);
    if (settings.v_quality) SetVideoQuality(profile, audience, *settings.v_quality);
    if (profile.VBRMode(SourceType::Video, 0) == platform::VbrMode::Peak)
        SetPeak(settings, audience);
    if (!settings.v_profile.empty())
        audience.SetProperty(SourceType::Video, 0, "DeviceConformanceTarget", settings.v_profile);
    return true;
}

}  // namespace profiles
