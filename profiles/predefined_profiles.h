// The ready-made encoding configurations of the "-profile" option.
#pragma once

#include "cli/encode_settings.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace profiles {

/// Fills `audience`, and for some codes the rate control of the profile and the pre-processing of
/// the sources that exist, as the "-profile" setting names it (in any case). False, after one line,
/// for an unknown code. Errors of the encoder go to the caller.
bool SetupPredefinedProfile(platform::SessionState& state, cli::EncodeSettings& settings,
                            platform::OutputPane& pane, platform::WMEncAudience& audience);

}  // namespace profiles
