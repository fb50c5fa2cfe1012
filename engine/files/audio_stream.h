// The audio stream of a profile file.
#pragma once

#include <pugixml.hpp>

#include "engine/files/xml_values.h"
#include "engine/plan/profile_record.h"

namespace engine::files {

struct AudioStream {
    platform::VbrMode mode = platform::VbrMode::Constant;
    AudioSettings settings;
};

/// Throws Error: invalid data for what is missing or no number, not implemented for a codec that is
/// not in the catalogue.
AudioStream ReadAudioStream(const pugi::xml_node& stream, const ValueReader& reader);

void WriteAudioStream(pugi::xml_node stream, const AudioStream& audio);

}  // namespace engine::files
