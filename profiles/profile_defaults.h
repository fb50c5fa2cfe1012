// The defaults of a custom profile.
#pragma once

#include "cli/encode_settings.h"

namespace profiles {

/// Replaces every audio and video setting that was not given by its default; some depend on the
/// mode and the codec. A format of four fields makes the codec "WMA9PRO", also against one that was
/// typed, unless it is a lossless one ("Q100").
void LoadProfileDefaults(cli::EncodeSettings& settings);

}  // namespace profiles
