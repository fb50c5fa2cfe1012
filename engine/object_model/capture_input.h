// The device or the screen that a source's input names.
#pragma once

#include <string>

#include "engine/object_model/source.h"

namespace engine {

/// @param scheme  "device": a device of the medium by its name in the list; "screencap": the
///                screen, which "screencap1" stands for, or a part of it in the words of
///                ParseScreenArea
/// @param area    which part "screencap1" stands for, in the same words; "" = the program's choice
/// Throws Error: file not found (no such device), invalid argument (no such part of the screen).
CaptureInput CaptureOf(const EngineParts& parts, platform::SourceType type,
                       const std::string& input, const std::string& scheme,
                       const std::string& area);

}  // namespace engine
