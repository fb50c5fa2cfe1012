#include "profiles/predefined_profiles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"
#include "profiles/audience_setup.h"
#include "profiles/whole_number.h"

namespace profiles {

namespace {

using platform::SourceType;
using platform::VbrMode;

/// What a profile asks for beside its two streams.
struct Extras {
    std::optional<VbrMode> video_rate_control = std::nullopt;  // none = the profile's own
    bool video_peak = false;
    bool audio_two_passes = false;
    bool video_two_passes = false;
    bool inverse_telecine = false;
};

struct Audio {
    std::int32_t channels;  // 0 = the profile has no audio
    std::int32_t sampling_rate;
    std::int32_t bit_rate;
};

struct PredefinedProfile {
    std::string_view code;
    Audio audio;
    VideoAudience video;  // no codec = the profile has no video
    Extras extras = {};
};

constexpr Audio kNoAudio = {0, 0, 0};
constexpr VideoAudience kNoVideo = {"", 0, 0, 0, 0, 0, 0, 0};

constexpr Extras kTwoPass = {.audio_two_passes = true, .video_two_passes = true};
constexpr Extras kPeakVbr = {.video_rate_control = VbrMode::Peak,
                             .video_peak = true,
                             .video_two_passes = true,
                             .inverse_telecine = true};
constexpr Extras kQualityVbr = {.video_rate_control = VbrMode::Quality, .inverse_telecine = true};

// The audio rates are the exact ones of the encoder's formats, not rounded figures.
// clang-format off
constexpr auto kPredefinedProfiles = std::to_array<PredefinedProfile>({
    // code        channels  Hz     bps      codec    bps   width height  fps*1000 buffer quality key frames
    {"av20",      {1,  8000,   5000}, {"WMV9",   15000, 160, 120, 15000, 5000, 75, 10000}},
    {"av32",      {1, 11025,  10168}, {"WMV9",   22000, 176, 144, 15000, 5000, 75, 10000}},
    {"av100",     {1, 16000,  16000}, {"WMV9",   84000, 320, 240, 15000, 5000, 75, 10000}},
    {"av225",     {2, 32000,  40000}, {"WMV9",  185000, 320, 240, 30000, 5000, 75, 10000}},
    {"av350",     {2, 32000,  48000}, {"WMV9",  302000, 320, 240, 30000, 5000, 75, 10000}},
    {"av450",     {2, 44100,  64040}, {"WMV9",  386000, 320, 240, 30000, 5000, 75, 10000}},
    {"av700",     {2, 44100,  64040}, {"WMV9",  636000, 320, 240, 30000, 5000, 75, 10000}},
    {"av1400",    {2, 44100, 128040}, {"WMV9", 1272000, 320, 240, 30000, 5000, 75, 10000}},
    {"av350pal",  {2, 32000,  48000}, {"WMV9",  302000, 384, 288, 25000, 5000, 75, 10000}},
    {"av700pal",  {2, 44100,  64040}, {"WMV9",  636000, 384, 288, 25000, 5000, 75, 10000}},
    {"av100_2p",  {1, 16000,  16000}, {"WMV9",   84000, 320, 240, 15000, 5000, 75, 10000}, kTwoPass},
    {"av350_2p",  {2, 32000,  48000}, {"WMV9",  302000, 320, 240, 30000, 5000, 75, 10000}, kTwoPass},
    {"av600vbr",  {2, 44100,  64040}, {"WMV9",  536000, 320, 240, 24000, 5000, 75, 10000}, kPeakVbr},
    {"avq97vbr",  {2, 44100,  64040}, {"WMV9",  536000, 320, 240, 24000, 5000, 97, 10000}, kQualityVbr},
    {"scrn",      kNoAudio,           {"WMS9", 2048000,   0,   0,  5000, 5000, 50, 10000}},
    {"scrna",     {2, 32000,  48024}, {"WMS9", 2000000,   0,   0,  5000, 5000, 50, 10000}},
    {"scrnab",    {2, 32000,  32000}, {"WMS9", 2016000,   0,   0,  5000, 5000, 50, 10000}},
    {"scrn10a",   {2, 32000,  48024}, {"WMS9", 2000000,   0,   0, 10000, 5000, 50, 10000}},
    {"scrn15a",   {2, 32000,  48024}, {"WMS9", 2000000,   0,   0, 15000, 5000, 50, 10000}},
    {"scrn24a",   {2, 32000,  48024}, {"WMS9", 2000000,   0,   0, 24000, 5000, 50, 10000}},
    {"scrn30a",   {2, 32000,  48024}, {"WMS9", 2000000,   0,   0, 30000, 5000, 50, 10000}},
    {"scrn10",    kNoAudio,           {"WMS9", 2048000,   0,   0, 10000, 5000, 50, 10000}},
    {"scrn15",    kNoAudio,           {"WMS9", 2048000,   0,   0, 15000, 5000, 50, 10000}},
    {"scrn24",    kNoAudio,           {"WMS9", 2048000,   0,   0, 24000, 5000, 50, 10000}},
    {"scrn30",    kNoAudio,           {"WMS9", 2048000,   0,   0, 30000, 5000, 50, 10000}},
    {"a20_1",     {1, 22050,  20008}, kNoVideo},
    {"a20_2",     {2, 22050,  20008}, kNoVideo},
    {"a32",       {2, 32000,  32000}, kNoVideo},
    {"a48",       {2, 32000,  48024}, kNoVideo},
    {"a64",       {2, 44100,  64016}, kNoVideo},
    {"a96",       {2, 44100,  96024}, kNoVideo},
    {"a128",      {2, 44100, 128016}, kNoVideo},
    {"v20",       kNoAudio,           {"WMV9",   20000, 176, 144, 15000, 5000, 75, 10000}},
    {"v32",       kNoAudio,           {"WMV9",   32000, 240, 176, 15000, 5000, 75, 10000}},
});
// clang-format on

constexpr std::int32_t kInverseTelecine = 3;  // the video source's Optimization
constexpr std::int32_t kPeakBuffer = 5000;    // milliseconds

void SetPeak(platform::WMEncAudience& audience) {
    audience.SetVideoPeakBitrate(
        0, WholeNumber(DefaultPeak(audience.VideoBitrate(0)), "video peak bit rate"));
    audience.SetVideoBufferMax(0, kPeakBuffer);
}

void SetSources(const Extras& extras, const platform::SessionState& state) {
    if (state.g_objSrcAud && extras.audio_two_passes) state.g_objSrcAud->SetPreProcessPass(1);
    if (!state.g_objSrcVid) return;
    if (extras.inverse_telecine) state.g_objSrcVid->SetOptimization(kInverseTelecine);
    if (extras.video_two_passes) state.g_objSrcVid->SetPreProcessPass(1);
}

}  // namespace

std::vector<ProfileSummary> PredefinedProfiles() {
    std::vector<ProfileSummary> summaries;
    summaries.reserve(kPredefinedProfiles.size());
    for (const PredefinedProfile& row : kPredefinedProfiles)
        summaries.push_back(
            {row.code, row.video.width, row.video.height, row.video.bit_rate, row.audio.bit_rate});
    return summaries;
}

bool SetupPredefinedProfile(platform::SessionState& state, cli::EncodeSettings& settings,
                            platform::OutputPane& pane, platform::WMEncAudience& audience) {
    const std::string code = platform::LowerCase(settings.profile);
    const auto row = std::ranges::find(kPredefinedProfiles, code, &PredefinedProfile::code);
    if (row == kPredefinedProfiles.end()) {
        pane.OutputError("No predefined profile found.");
        return false;
    }

    // Where the quality goes depends on the rate control, so that comes first.
    if (row->extras.video_rate_control)
        state.g_objProfile->SetVBRMode(SourceType::Video, 0, *row->extras.video_rate_control);
    if (row->audio.channels != 0)
        SetupAudioAudience(state, audience,
                           {.codec = "WMA9STD",
                            .channels = row->audio.channels,
                            .sampling_rate = row->audio.sampling_rate,
                            .bit_rate = row->audio.bit_rate,
                            .bits_per_sample = 16});
    if (!row->video.codec.empty()) SetupVideoAudience(state, settings, audience, row->video);
    if (row->extras.video_peak) SetPeak(audience);
    SetSources(row->extras, state);
    return true;
}

}  // namespace profiles
