// The video stream of a profile file.
#pragma once

#include <pugixml.hpp>
#include <string>

#include "engine/files/xml_values.h"
#include "engine/plan/profile_record.h"

namespace engine::files {

struct VideoStream {
    platform::VbrMode mode = platform::VbrMode::Constant;
    VideoSettings settings;
    bool non_square_pixels = false;
    bool interlaced = false;
    std::string conformance;  // "" = none asked for
};

/// Throws Error: invalid data for what is missing or no number, not implemented for a codec that is
/// not in the catalogue.
VideoStream ReadVideoStream(const pugi::xml_node& stream, const ValueReader& reader);

void WriteVideoStream(pugi::xml_node stream, const VideoStream& video);

}  // namespace engine::files
