#include "session/source_setup.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

#include "platform/error.h"
#include "platform/pixel_format_table.h"
#include "profiles/predefined_profiles.h"
#include "session/no_pane.h"

namespace session {
namespace {

using platform::SourceType;

constexpr const char* kSourceGroupName = "SG_1";
constexpr const char* kScalingPreprocessing =
    "Preprocessing mode not supported. Use -height and -width to adjust video size.";

struct Preprocessing {
    std::int32_t optimization;
    const char* notice;
};

// The row is the value of -v_preproc. A mode without an own filter keeps the plain one's.
// clang-format off
constexpr Preprocessing kPreprocessing[] = {
    // optimization  notice
    {     1,         nullptr},                //  0
    {     2,         nullptr},                //  1
    {     2,         kScalingPreprocessing},  //  2
    {     2,         kScalingPreprocessing},  //  3
    {     2,         kScalingPreprocessing},  //  4
    {     3,         nullptr},                //  5
    {  0x23,         nullptr},                //  6
    {  0x33,         nullptr},                //  7
    {  0x43,         nullptr},                //  8
    {  0x53,         nullptr},                //  9
    {  0x63,         nullptr},                // 10
    {  0x73,         nullptr},                // 11
    {  0x83,         nullptr},                // 12
    {  0x93,         nullptr},                // 13
    {  0xA3,         nullptr},                // 14
    {  0xB3,         nullptr},                // 15
    {     4,         nullptr},                // 16
    {0x2004,         nullptr},                // 17
    {0x3004,         nullptr},                // 18
};
// clang-format on

constexpr std::int32_t kPreprocessingModes = std::size(kPreprocessing);

}  // namespace

SourceSetup::SourceSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                         platform::OutputPane& pane, platform::Factory& factory)
    : state_(state), settings_(settings), pane_(pane), factory_(factory) {}

bool SourceSetup::CreateSourceGroup() {
    if (!settings_.wme.empty()) return LoadSessionFile();
    state_.g_objSrcGrp = state_.g_objEncoder->SourceGroupCollection().Add(kSourceGroupName);
    return true;
}

// Each step goes on without what one before it could not give. What they have gathered becomes the
// session's when all of it could be had.
bool SourceSetup::LoadSessionFile() {
    platform::ErrorTrap trap;
    platform::WMEncoder& encoder = *state_.g_objEncoder;
    platform::SessionState loaded = state_;
    loaded.g_objProfile = nullptr;
    std::optional<std::int32_t> packet = settings_.maxpacket;

    trap([&] { encoder.Load(state_.g_objFSO->GetAbsolutePathName(settings_.wme)); });
    trap([&] { loaded.g_objSrcGrp = encoder.SourceGroupCollection().Item(0); });
    trap([&] { TakeProfile(loaded); });
    trap([&] { TakeSources(loaded); });
    trap([&] { FillNamedProfile(loaded); });
    trap([&] { NameCodecs(loaded); });
    trap([&] {
        if (!packet && loaded.g_objProfile) packet = loaded.g_objProfile->MaxPacketSize();
    });
    if (trap.HasError()) {
        pane_.OutputError("Loading the session (.wme) file failed: " + settings_.wme,
                          trap.Report());
        return false;
    }
    for (const std::string& note : encoder.TakeNotes()) pane_.OutputInfo(note);
    state_ = loaded;
    state_.g_bCustomProfile = false;
    settings_.maxpacket = packet;
    return true;
}

void SourceSetup::TakeProfile(platform::SessionState& loaded) {
    if (!loaded.g_objSrcGrp) return;
    const auto group_profile = loaded.g_objSrcGrp->Profile();
    if (!group_profile)
        throw platform::Error(platform::kInvalidData, "The session holds no profile.");
    const auto profile = factory_.MakeProfile();
    profile->LoadFromIWMProfile(*group_profile);
    loaded.g_objProfile = profile;
}

void SourceSetup::TakeSources(platform::SessionState& loaded) {
    if (!loaded.g_objSrcGrp) return;
    platform::WMEncSourceGroup& group = *loaded.g_objSrcGrp;
    if (group.SourceCount(SourceType::Audio) > 0)
        loaded.g_objSrcAud = platform::AsAudio(group.Source(SourceType::Audio, 0));
    if (group.SourceCount(SourceType::Video) > 0)
        loaded.g_objSrcVid = platform::AsVideo(group.Source(SourceType::Video, 0));
}

// A session may name its profile by a code, as "-profile" does.
void SourceSetup::FillNamedProfile(platform::SessionState& loaded) {
    if (!loaded.g_objProfile || loaded.g_objProfile->AudienceCount() > 0) return;
    cli::EncodeSettings settings = settings_;
    settings.profile = loaded.g_objProfile->ProfileName();
    const auto audience = loaded.g_objProfile->AddAudience(profiles::kAudienceBitRate);
    NoPane pane;
    if (!profiles::SetupPredefinedProfile(loaded, settings, pane, *audience))
        throw platform::Error(platform::kInvalidData, "The session's profile " + settings.profile +
                                                          " is none of the predefined ones.");
}

void SourceSetup::NameCodecs(platform::SessionState& loaded) {
    if (!loaded.g_objProfile) return;
    const platform::WMEncProfile2& profile = *loaded.g_objProfile;
    const auto audience = loaded.g_objProfile->Audience(0);
    if (loaded.g_objSrcAud) loaded.AudioCodecName = profile.EnumAudioCodec(audience->AudioCodec(0));
    if (loaded.g_objSrcVid) loaded.VideoCodecName = profile.EnumVideoCodec(audience->VideoCodec(0));
}

bool SourceSetup::SetupAudioSource() {
    if (settings_.a_content) state_.g_objSrcAud->SetContentMode(*settings_.a_content);
    if (!settings_.a_contentedl.empty()) state_.g_objSrcAud->SetContentEDL(settings_.a_contentedl);
    return true;
}

bool SourceSetup::SetupVideoSource() {
    auto& source = *state_.g_objSrcVid;

    if (settings_.v_preproc && *settings_.v_preproc < kPreprocessingModes) {
        const Preprocessing& mode = kPreprocessing[*settings_.v_preproc];
        source.SetOptimization(mode.optimization);
        if (mode.notice != nullptr) pane_.OutputInfo(mode.notice);
    }

    if (const auto* format = platform::FindPixelFormat(settings_.pixelformat))
        source.SetPixelFormat(format->code);

    if (settings_.pixelratio.x) source.SetPixelAspectRatioX(*settings_.pixelratio.x);
    if (settings_.pixelratio.y) source.SetPixelAspectRatioY(*settings_.pixelratio.y);

    if (settings_.v_performance) state_.g_objEncoder->SetVideoPerformance(*settings_.v_performance);

    const auto& clip = settings_.v_clip;
    if (clip.left) source.SetCroppingLeftMargin(*clip.left);
    if (clip.right) source.SetCroppingRightMargin(*clip.right);
    if (clip.top) source.SetCroppingTopMargin(*clip.top);
    if (clip.bottom) source.SetCroppingBottomMargin(*clip.bottom);

    SetupStillDuration();
    return true;
}

// A duration of an earlier command is carried over, but says nothing of this one's picture.
void SourceSetup::SetupStillDuration() {
    const bool is_file = state_.g_objSrcVid->Scheme().empty();
    if (!is_file || !settings_.duration_typed || settings_.duration.value_or(0) <= 0) return;
    constexpr double kLongest = std::numeric_limits<std::int32_t>::max();
    const double milliseconds = std::min(*settings_.duration * 1000.0, kLongest);
    state_.g_objSrcVid->SetStillDuration(static_cast<std::int32_t>(milliseconds));
}

}  // namespace session
