// The ready-made encoding configurations of the "-profile" option.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "cli/encode_settings.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace profiles {

/// A profile in figures. A rate of 0: without that stream; a width of 0: as large as the source.
struct ProfileSummary {
    std::string_view code;
    std::int32_t width;
    std::int32_t height;
    std::int32_t video_bps;
    std::int32_t audio_bps;
};
std::vector<ProfileSummary> PredefinedProfiles();

/// What an audience is made with, in bits per second, before its streams say what they take.
inline constexpr std::int32_t kAudienceBitRate = 10'000'000;

/// Fills `audience`, and for some codes the rate control of the profile and the pre-processing of
/// the sources that exist, as the "-profile" setting names it (in any case). False, after one line,
/// for an unknown code. Errors of the encoder go to the caller.
bool SetupPredefinedProfile(platform::SessionState& state, cli::EncodeSettings& settings,
                            platform::OutputPane& pane, platform::WMEncAudience& audience);

}  // namespace profiles
