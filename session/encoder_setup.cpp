#include "session/encoder_setup.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

#include "platform/text.h"
#include "profiles/whole_number.h"
#include "session/error_line.h"

namespace session {
namespace {

using platform::ErrorTrap;
using platform::SourceType;

constexpr const char* kDeviceScheme = "device";
constexpr const char* kDefaultAudioDevice = "Default_Audio_Device";
constexpr const char* kScreenScheme = "screencap";
constexpr const char* kScreenInput = "screencap1";

struct KeyRule {
    std::string_view text;
    bool whole;  // the key equals the text; else it begins with it
};

// Profile keys that record the sound of the default device along with the screen.
// clang-format off
constexpr KeyRule kScreenWithAudio[] = {
    // text      whole
    {"scrnab",   false},
    {"scrn10a",  true},
    {"scrn15a",  true},
    {"scrn24a",  true},
    {"scrn30a",  true},
    {"scrna",    false},
};
// clang-format on

bool Matches(const KeyRule& rule, std::string_view key) {
    return rule.whole ? key == rule.text : platform::StartsWith(key, rule.text);
}

constexpr std::string_view kScreenKey = "scrn";
constexpr std::int32_t kUsualCaptureRate = 30'000;

// How often a picture is taken, in thousandths per second: the rate that was asked for (0 asks for
// none, as with a file), else that in a screen profile's code ("scrn15a"), else the usual one.
std::int32_t CaptureRate(const cli::EncodeSettings& settings, std::string_view profile_key) {
    if (settings.v_framerate && *settings.v_framerate > 0)
        return profiles::WholeNumber(*settings.v_framerate, "video frame rate");
    std::int32_t of_code = 0;
    if (platform::StartsWith(profile_key, kScreenKey))
        std::from_chars(profile_key.data() + kScreenKey.size(),
                        profile_key.data() + profile_key.size(), of_code);
    return of_code > 0 && of_code <= 1000 ? of_code * 1000 : kUsualCaptureRate;
}

// Keys of audio profiles begin with "a", of video profiles with "v", of both with "av".
bool IsAudioProfile(std::string_view key) {
    return platform::StartsWith(key, "a") && !platform::StartsWith(key, "av");
}

}  // namespace

EncoderSetup::EncoderSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                           platform::OutputPane& pane, platform::Factory& factory)
    : state_(state),
      settings_(settings),
      pane_(pane),
      capture_devices_(state, pane),
      source_setup_(state, settings, pane, factory),
      profile_setup_(state, settings, pane, factory),
      output_setup_(state, settings, pane) {}

bool EncoderSetup::SetupEncoder() {
    // The profile needs the content kind and the only-audio and only-video settings that the input
    // fixes; the output's extension needs its sources.
    if (!source_setup_.CreateSourceGroup()) return false;
    if (!SetupInput()) return false;
    if (!profile_setup_.SetupProfile()) return false;
    if (!output_setup_.SetupOutput()) return false;
    if (!output_setup_.SetupTime()) return false;
    if (!output_setup_.SetupDisplayInfo()) return false;
    state_.g_objEncoder->SetAutoStop(true);
    return true;
}

bool EncoderSetup::SetupInput() {
    ErrorTrap trap;
    const std::string profile_key = platform::LowerCase(settings_.profile);

    if (!settings_.input.empty()) {
        OpenFile(state_.g_objFSO->GetAbsolutePathName(settings_.input), profile_key, trap);
    } else {
        if (settings_.adevice && !OpenDevice(SourceType::Audio, *settings_.adevice, trap))
            return false;
        if (settings_.vdevice && !OpenDevice(SourceType::Video, *settings_.vdevice, trap))
            return false;
    }
    if (platform::StartsWith(profile_key, kScreenKey)) OpenScreen(profile_key, trap);
    const bool captures_picture = state_.g_objSrcVid && !state_.g_objSrcVid->Scheme().empty();
    // A loaded session has a rate of its own.
    const bool asks_for_rate = settings_.wme.empty() || settings_.v_framerate ||
                               platform::StartsWith(profile_key, kScreenKey);
    if (captures_picture && asks_for_rate)
        trap([&] { state_.g_objSrcVid->SetCaptureRate(CaptureRate(settings_, profile_key)); });
    trap([&] { FixContentType(); });

    if (state_.g_objSrcAud) trap([&] { source_setup_.SetupAudioSource(); });
    if (state_.g_objSrcVid) trap([&] { source_setup_.SetupVideoSource(); });
    if (!trap.HasError()) return true;
    OutputErrorLine(pane_, trap.Report());
    return false;
}

void EncoderSetup::OpenFile(const std::string& path, const std::string& profile_key,
                            ErrorTrap& trap) {
    if (IsAudioProfile(profile_key)) {
        settings_.audioonly = true;
    } else if (platform::StartsWith(profile_key, "v")) {
        settings_.videoonly = true;
    }

    if (settings_.audioonly) {
        AddSource(SourceType::Audio, path, std::string(), trap);
    } else if (settings_.videoonly) {
        AddSource(SourceType::Video, path, std::string(), trap);
    } else {
        trap([&] { state_.g_objSrcGrp->AutoSetFileSource(path); });
        trap([&] { TakeFirstSources(); });
    }
}

bool EncoderSetup::OpenDevice(SourceType type, std::int32_t number, ErrorTrap& trap) {
    std::optional<std::string> name;
    trap([&] { name = capture_devices_.GetDeviceNameFromIndex(type, number); });
    if (!name) return true;  // the collected error is reported with the others
    if (name->empty()) {
        pane_.OutputError(fmt::format("Error: Invalid {} device number specified",
                                      type == SourceType::Audio ? "audio" : "video"));
        return false;
    }
    AddSource(type, *name, kDeviceScheme, trap);
    return true;
}

void EncoderSetup::OpenScreen(const std::string& profile_key, ErrorTrap& trap) {
    trap([&] {
        state_.g_objSrcVid = platform::AsVideo(state_.g_objSrcGrp->AddSource(SourceType::Video));
    });
    trap([&] { TakeFirstSources(); });
    trap([&] {
        if (state_.g_objSrcVid) state_.g_objSrcVid->SetInput(kScreenInput, kScreenScheme);
    });

    const bool with_audio =
        std::any_of(std::begin(kScreenWithAudio), std::end(kScreenWithAudio),
                    [&](const KeyRule& rule) { return Matches(rule, profile_key); });
    if (with_audio) AddSource(SourceType::Audio, kDefaultAudioDevice, kDeviceScheme, trap);
}

// The source stands in the session's state even when its input cannot be opened.
void EncoderSetup::AddSource(SourceType type, const std::string& input, const std::string& scheme,
                             ErrorTrap& trap) {
    trap([&] {
        const auto source = state_.g_objSrcGrp->AddSource(type);
        if (type == SourceType::Audio) {
            state_.g_objSrcAud = platform::AsAudio(source);
        } else {
            state_.g_objSrcVid = platform::AsVideo(source);
        }
        source->SetInput(input, scheme);
    });
}

void EncoderSetup::TakeFirstSources() {
    auto& group = *state_.g_objSrcGrp;
    if (group.SourceCount(SourceType::Audio) > 0)
        state_.g_objSrcAud = platform::AsAudio(group.Source(SourceType::Audio, 0));
    if (group.SourceCount(SourceType::Video) > 0)
        state_.g_objSrcVid = platform::AsVideo(group.Source(SourceType::Video, 0));
}

void EncoderSetup::FixContentType() {
    const int audio_sources = state_.g_objSrcGrp->SourceCount(SourceType::Audio);
    const int video_sources = state_.g_objSrcGrp->SourceCount(SourceType::Video);
    // Bit by bit, as the content kinds have always been told apart: one source of one kind beside
    // two of the other counts as audio.
    const auto common = static_cast<unsigned>(audio_sources) & static_cast<unsigned>(video_sources);
    if (common != 0) {
        state_.g_nContentType = platform::kContentAudioVideo;
    } else if (audio_sources != 0) {
        state_.g_nContentType = platform::kContentAudio;
    } else if (video_sources != 0) {
        state_.g_nContentType = platform::kContentVideo;
    }
}

}  // namespace session
