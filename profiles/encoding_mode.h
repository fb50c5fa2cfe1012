// The encoding modes of the options "-a_mode" and "-v_mode", on a profile and a source.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/encoder.h"

namespace profiles {

/// Sets the rate control of the source's kind of stream, then the source's passes, as the mode
/// asks. None and 0 (one pass, constant bit rate) change nothing. False for an unknown
/// mode, which changes nothing either.
bool ApplyEncodingMode(std::optional<std::int32_t> mode, platform::WMEncProfile2& profile,
                       platform::WMEncSource& source);

}  // namespace profiles
