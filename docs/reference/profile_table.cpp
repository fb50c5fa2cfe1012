#include "docs/reference/profile_table.h"

#include <fmt/format.h>

#include <memory>
#include <stdexcept>

#include "docs/reference/help_entries.h"
#include "engine/object_model/engine_factory.h"
#include "platform/codec_table.h"
#include "platform/text.h"
#include "profiles/predefined_profiles.h"

namespace reference {
namespace {

using platform::SourceType;
using platform::VbrMode;

constexpr std::int32_t kRemoveTelecine = 3;  // the video source's Optimization

/// Nothing runs here, so nothing is posted.
class NoLoop : public platform::EventLoop {
  public:
    void Post(std::function<void()> /*task*/) override {}
    void RunUntil(const std::function<bool()>& /*done*/) override {}
};

class NoPane : public platform::OutputPane {
  public:
    void OutputInfo(const std::string& /*line*/) override {}
};

std::string Thousandths(std::int32_t number) {
    return platform::NumberText(static_cast<double>(number) / 1000);
}

std::string AudioText(const platform::WMEncAudience& audience) {
    return fmt::format("{} bps, {} Hz, {}", audience.AudioBitrate(0), audience.AudioSamplingRate(0),
                       audience.AudioChannels(0) == 1 ? "mono" : "stereo");
}

std::string VideoText(const platform::WMEncAudience& audience) {
    const platform::VideoCodecRow& codec =
        platform::kVideoCodecs[static_cast<std::size_t>(audience.VideoCodec(0))];
    const std::string size =
        audience.VideoWidth(0) == 0
            ? "size of the source"
            : fmt::format("{} x {}", audience.VideoWidth(0), audience.VideoHeight(0));
    return fmt::format("{}, {} bps, {}, {} fps", codec.short_name, audience.VideoBitrate(0), size,
                       Thousandths(audience.VideoFPS(0)));
}

std::string Mode(const platform::WMEncProfile2& profile, const platform::WMEncAudience& audience,
                 const platform::SessionState& session) {
    std::string mode;
    switch (profile.VBRMode(SourceType::Video, 0)) {
        case VbrMode::Quality:
            mode = fmt::format("quality {}", audience.VideoCompressionQuality(0));
            break;
        case VbrMode::Peak:
            mode = fmt::format("peak rate {} bps", audience.VideoPeakBitrate(0));
            break;
        default:
            mode = "constant rate";
    }
    if (session.g_objSrcVid->PreProcessPass() == 1) mode += ", two passes";
    if (session.g_objSrcVid->Optimization() == kRemoveTelecine) mode += ", telecine removed";
    return mode;
}

}  // namespace

std::string ProfileTable() {
    NoLoop loop;
    NoPane pane;
    std::string table =
        "| code | the encoder's name | sound | picture | mode |\n|---|---|---|---|---|\n";
    for (const auto& [code, name] : HelpProfiles()) {
        platform::SessionState session;
        session.g_objEncoder = engine::MakeEncoder(loop, nullptr);
        session.g_objProfile = engine::MakeProfile(nullptr);
        session.g_objProfile->SetContentType(platform::kContentAudioVideo);
        const auto group = session.g_objEncoder->SourceGroupCollection().Add("group");
        session.g_objSrcAud = platform::AsAudio(group->AddSource(SourceType::Audio));
        session.g_objSrcVid = platform::AsVideo(group->AddSource(SourceType::Video));
        const auto audience = session.g_objProfile->AddAudience(profiles::kAudienceBitRate);
        cli::EncodeSettings settings;
        settings.profile = code;
        if (!profiles::SetupPredefinedProfile(session, settings, pane, *audience))
            throw std::runtime_error("no profile has the code " + code);
        const bool has_audio = audience->AudioSamplingRate(0) != 0;
        const bool has_video = audience->VideoBitrate(0) != 0;
        table += fmt::format("| `{}` | {} | {} | {} | {} |\n", code, name,
                             has_audio ? AudioText(*audience) : "none",
                             has_video ? VideoText(*audience) : "none",
                             Mode(*session.g_objProfile, *audience, session));
    }
    return table;
}

}  // namespace reference
