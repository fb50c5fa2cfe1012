// Codecs and modes as people read them.
#pragma once

#include <string>

#include "platform/codec_table.h"

namespace engine {

using platform::AudioCodecRow;

/// "constant rate", "peak rate", "quality", "bit rate VBR".
const char* ModeName(platform::VbrMode mode);

/// The name in a listing and a report: the codec's own, with the mode that it needs where the mode
/// lists it without formats.
std::string AudioDisplayName(const AudioCodecRow& row, platform::VbrMode mode);

}  // namespace engine
