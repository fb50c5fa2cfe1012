// Whose sound is recorded with the screen.
#pragma once

#include <string>

#include "engine/plan/device.h"

namespace engine {

/// @param choice  what the variable TESSIVO_SOUND holds: "", the default device; "microphone", the
/// first device that is an
///                input; "desktop", what the default output plays; "both", mixed; or the number of
///                an audio device, as FindDevice's list counts them. Case does not matter.
/// Throws Error: file not found (no such device), invalid argument (no such choice).
Device ChosenSound(const DeviceList& list, const std::string& choice);

}  // namespace engine
