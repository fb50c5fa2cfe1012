// Audio from a source of the PulseAudio server, or of PipeWire's in its place.
#pragma once

#include <memory>
#include <string>

#include "engine/base/av/live_source.h"

namespace engine {

/// Records at the source's own rate, its samples as 16-bit numbers or, when it has finer ones, as
/// floats; of more than 8 channels the first 8. A monitor of an output is a source like others.
/// While the server has the source suspended it gives silence in time. A source that goes is a
/// failure: the server may not go on with another in its place.
/// @param source_name  as the server calls it; "" = what it calls the default now
/// Throws platform::Error that names the device by its description.
std::unique_ptr<LiveSource> OpenPulseAudio(const std::string& source_name, FramePool& frames);

}  // namespace engine
