// How loud it is at the devices that a recording of the screen would take.
#pragma once

#include <memory>
#include <string>

#include "platform/sound_meter.h"

namespace engine {

/// Takes a sound server: a device of ALSA is for one program alone, so it is not listened to.
std::unique_ptr<platform::SoundMeter> OpenSoundMeter(const std::string& choice);

}  // namespace engine
