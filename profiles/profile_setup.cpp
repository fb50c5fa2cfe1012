#include "profiles/profile_setup.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <string>

#include "profiles/custom_audio.h"
#include "profiles/custom_video.h"
#include "profiles/predefined_profiles.h"
#include "profiles/profile_defaults.h"
#include "profiles/whole_number.h"

namespace profiles {

namespace {

using platform::ErrorTrap;
using platform::SourceType;
using platform::VbrMode;
using platform::WMEncAudience;

constexpr float kDefaultFrameRate = 30000;           // thousandths of a frame per second
constexpr double kUnknownFrameRate = 100000;         // the same
constexpr std::int32_t kFirstInterlacedFilter = 16;  // of "-v_preproc"
constexpr std::int32_t kLastInterlacedFilter = 18;

/// Puts a setting back at the end of a scope, however that ends.
class Restored {
  public:
    explicit Restored(std::optional<float>& setting) : setting_(setting), value_(setting) {}
    ~Restored() { setting_ = value_; }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;

  private:
    std::optional<float>& setting_;
    std::optional<float> value_;
};

/// Rate controls that need a first pass over the source.
bool TakesTwoPasses(VbrMode mode) { return mode == VbrMode::Peak || mode == VbrMode::BitRate; }

}  // namespace

ProfileSetup::ProfileSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                           platform::OutputPane& pane, platform::Factory& factory)
    : state_(state), settings_(settings), pane_(pane), factory_(factory) {}

bool ProfileSetup::SetupProfile() {
    ErrorTrap trap;
    if (!BuildProfile(trap)) return false;
    if (!trap.HasError() && !settings_.saveprofile.empty()) trap([&] { SaveFile(); });
    if (!trap.HasError()) return true;
    pane_.OutputError(
        fmt::format("Invalid profile: 0x{:X} {}", trap.UnsignedNumber(), trap.Description()),
        trap.Report());
    return false;
}

/// False where a step refused after its own line; errors are left in the trap.
bool ProfileSetup::BuildProfile(ErrorTrap& trap) {
    // The steps work on a rate raised to the input's, which is not the user's for the next command.
    const Restored frame_rate(settings_.v_framerate);

    Audience audience;
    trap([&] { audience = OpenProfile(); });
    if (!audience) return true;

    RaiseFrameRate(trap);
    if (!settings_.profile.empty() && !ApplyPredefined(trap, *audience)) return false;
    if (!settings_.loadprofile.empty()) LoadFile(trap, audience);
    if (!ApplyOptions(trap, *audience)) return false;
    SetPictureModes(trap);
    Attach(trap);
    LeaveOutSources();
    return true;
}

/// Under the name as it was given, which the profile reads as every other; but never over the
/// input.
void ProfileSetup::SaveFile() {
    if (!settings_.input.empty() && state_.g_objFSO->IsSame(settings_.saveprofile, settings_.input))
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("The profile cannot be saved as {}, which is the input: give "
                        "-saveprofile another name",
                        settings_.saveprofile));
    state_.g_objProfile->SaveToFile(settings_.saveprofile);
}

/// The audience to fill. A new profile becomes the session's only when it is whole.
ProfileSetup::Audience ProfileSetup::OpenProfile() {
    if (state_.g_objProfile) {
        state_.g_objProfile->SetContentType(state_.g_nContentType);
        return state_.g_objProfile->Audience(0);
    }
    const auto profile = factory_.MakeProfile();
    profile->SetContentType(state_.g_nContentType);
    profile->SetProfileName("BVRXQProfile");
    Audience audience = profile->AddAudience(kAudienceBitRate);
    state_.g_objProfile = profile;
    return audience;
}

void ProfileSetup::RaiseFrameRate(ErrorTrap& trap) {
    // Nothing beside the session file says anything of frame rates, so its own stands.
    const bool has_other = !settings_.input.empty() || !settings_.profile.empty() ||
                           !settings_.loadprofile.empty() || settings_.v_framerate;
    if (!settings_.wme.empty() && !has_other) return;
    if (!settings_.v_framerate) settings_.v_framerate = kDefaultFrameRate;
    trap([&] {
        const double probed = ProbedFrameRate();
        if (settings_.v_framerate < probed) settings_.v_framerate = static_cast<float>(probed);
    });
}

double ProfileSetup::ProbedFrameRate() {
    const std::string path = state_.g_objFSO->GetAbsolutePathName(settings_.input);
    const auto media_info = factory_.MakeMediaInfo();
    media_info->SetFileName(path);
    const double probed = 1000 * media_info->FrameRate();
    return probed == 0 ? kUnknownFrameRate : probed;
}

bool ProfileSetup::ApplyPredefined(ErrorTrap& trap, WMEncAudience& audience) {
    bool known = true;
    trap([&] { known = SetupPredefinedProfile(state_, settings_, pane_, audience); });
    state_.g_bCustomProfile = false;
    return known;
}

void ProfileSetup::LoadFile(ErrorTrap& trap, Audience& audience) {
    platform::WMEncProfile2& profile = *state_.g_objProfile;
    trap(
        [&] { profile.LoadFromFile(state_.g_objFSO->GetAbsolutePathName(settings_.loadprofile)); });
    state_.g_bCustomProfile = false;
    trap([&] { audience = profile.Audience(0); });
    for (const std::string& note : profile.TakeNotes()) pane_.OutputInfo(note);
    trap([&] { state_.AudioCodecName = profile.EnumAudioCodec(audience->AudioCodec(0)); });
    trap([&] { state_.VideoCodecName = profile.EnumVideoCodec(audience->VideoCodec(0)); });

    if (state_.g_objSrcVid) {
        trap([&] {
            if (TakesTwoPasses(profile.VBRMode(SourceType::Video, 0)))
                state_.g_objSrcVid->SetPreProcessPass(1);
        });
        trap([&] {
            const auto loaded = static_cast<float>(audience->VideoFPS(0));
            if (settings_.v_framerate > loaded)
                audience->SetVideoFPS(0, WholeNumber(*settings_.v_framerate, "video frame rate"));
            else
                settings_.v_framerate = loaded;
        });
    }
    if (state_.g_objSrcAud)
        trap([&] {
            if (TakesTwoPasses(profile.VBRMode(SourceType::Audio, 0)))
                state_.g_objSrcAud->SetPreProcessPass(1);
        });
}

/// A custom profile takes the options twice: as given, and again with the defaults of the rest.
bool ProfileSetup::ApplyOptions(ErrorTrap& trap, WMEncAudience& audience) {
    bool go_on = true;
    const auto apply = [&] { go_on = SetupCustomProfile(audience); };
    trap(apply);
    if (!go_on) return false;
    if (!state_.g_bCustomProfile) return true;
    LoadProfileDefaults(settings_);
    trap(apply);
    return go_on;
}

bool ProfileSetup::SetupCustomProfile(WMEncAudience& audience) {
    if (!settings_.audioonly && !settings_.videoonly) {
        const bool audio_uncompressed = settings_.a_codec == "PCM";
        const bool video_uncompressed = settings_.v_codec == "UNCOMP";
        if (video_uncompressed && !audio_uncompressed) {
            pane_.OutputError(
                "Audio codec must be uncompressed when using uncompressed video codec");
            return false;
        }
        if (audio_uncompressed && !video_uncompressed) {
            pane_.OutputError(
                "Video codec must be uncompressed when using uncompressed audio codec");
            return false;
        }
    }
    if (state_.g_objSrcAud && !SetupCustomAudioProfile(state_, settings_, pane_, audience))
        return false;
    return !state_.g_objSrcVid || SetupCustomVideoProfile(state_, settings_, pane_, audience);
}

void ProfileSetup::SetPictureModes(ErrorTrap& trap) {
    platform::WMEncProfile2& profile = *state_.g_objProfile;
    if (settings_.pixelratio.x || settings_.pixelratio.y)
        trap([&] { profile.SetNonSquarePixelMode(0, true); });
    if (settings_.v_preproc >= kFirstInterlacedFilter &&
        settings_.v_preproc <= kLastInterlacedFilter)
        trap([&] { profile.SetInterlaceMode(0, true); });
}

/// The largest packet is the group's: it is set on the copy that attaching makes.
void ProfileSetup::Attach(ErrorTrap& trap) {
    if (settings_.minpacket)
        trap([&] { state_.g_objProfile->SetMinPacketSize(*settings_.minpacket); });
    bool attached = false;
    trap([&] {
        state_.g_objSrcGrp->SetProfile(*state_.g_objProfile);
        attached = true;
    });
    if (attached && settings_.maxpacket)
        trap([&] { state_.g_objSrcGrp->Profile()->SetMaxPacketSize(*settings_.maxpacket); });
}

/// A profile file may have fewer streams than the input: what it has not is no part of the session.
void ProfileSetup::LeaveOutSources() {
    const std::int32_t content = state_.g_objProfile->ContentType();
    if (content == 0) return;  // none of the sources fits, which preparing says
    if ((content & platform::kContentAudio) == 0) state_.g_objSrcAud = nullptr;
    if ((content & platform::kContentVideo) == 0) state_.g_objSrcVid = nullptr;
    state_.g_nContentType = content;
}

}  // namespace profiles
