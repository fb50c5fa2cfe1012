// Codecs by the words of the command language. Positions in the encoder's own
// lists differ from machine to machine; words do not.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/codec_table.h"
#include "platform/encoder.h"

namespace profiles {

/// What the listings print above the codecs of a rate-control mode.
std::string_view ModeCaption(platform::VbrMode mode);

/// The codec's index in the encoder's list. An unknown name means "WMA9STD", "WMV9". Throws
/// platform::Error when `profile` does not list the codec.
std::int32_t GetAudioCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);
std::int32_t GetVideoCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);

}  // namespace profiles
