// The video options of the command line, applied to an audience.
#pragma once

#include "cli/encode_settings.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace profiles {

/// Applies the "-v_" options of codec, mode, rates, size and quality, each when given; `state`
/// must have a profile and a video source. False, after one line, for an unknown "-v_mode". Errors
/// of the encoder go to the caller.
bool SetupCustomVideoProfile(platform::SessionState& state, const cli::EncodeSettings& settings,
                             platform::OutputPane& pane, platform::WMEncAudience& audience);

}  // namespace profiles
