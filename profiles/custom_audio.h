// The audio options of the command line, applied to an audience.
#pragma once

#include <cstdint>

#include "cli/encode_settings.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace profiles {

/// Applies "-a_mode", "-a_codec" and "-a_setting" with the audio peak options, each when given;
/// `state` must have a profile and an audio source. False after one line where the options
/// are wrong. Errors of the encoder go to the caller.
bool SetupCustomAudioProfile(platform::SessionState& state, cli::EncodeSettings& settings,
                             platform::OutputPane& pane, platform::WMEncAudience& audience);

/// Whether a value is one that "-a_setting" may ask for.
bool CheckForValidAudioBitRates(std::int64_t bits_per_second);
bool CheckForValidAudioSamplingRates(std::int64_t hertz);
bool CheckForValidAudioChannel(std::int32_t channels);
bool CheckForValidDepth(std::int32_t bits);

}  // namespace profiles
