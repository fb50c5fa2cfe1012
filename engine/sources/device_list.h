// The capture devices in the order in which they are numbered, and how a name finds its device.
//
// Audio comes first, then cameras, then screens. Within audio: the default device, then the real
// inputs, then the monitors of outputs (that of the default output first), each by its id, so that
// neither plugging in nor a restart of the server reorders the rest. Where no sound server answers,
// ALSA's default and then the cards' devices in the cards' order. Cameras stand by the number of
// their node, the whole screen before its monitors. The first device of each medium is its default,
// so that device 0 is what a command means that gives no number.
#pragma once

#include <string>

#include "engine/plan/device.h"
#include "engine/plan/device_facts.h"
#include "platform/encoder.h"

namespace engine {

/// The name that stands for the default audio device, whichever that is.
inline constexpr const char* kDefaultAudioDevice = "Default_Audio_Device";
inline constexpr const char* kDefaultVideoDevice = "Default_Video_Device";

/// Nodes that cannot capture a frame are left out.
DeviceList MakeDeviceList(const DeviceFacts& facts);

platform::SourceType MediumOf(DeviceKind kind);

/// The device of a medium that a source's input names, else in another case, else in a part of its
/// name; null when there is none. Points into `list`.
const Device* FindDevice(const DeviceList& list, platform::SourceType medium,
                         const std::string& name);

}  // namespace engine
