// A capture device as sources are numbered and named by it.
#pragma once

#include <string>
#include <vector>

namespace engine {

enum class DeviceKind { PulseSource, AlsaCapture, Camera, Screen };

/// Names are one line of text, and no two devices of a medium have the same: descriptions that
/// several devices share are followed by the id in parentheses.
struct Device {
    DeviceKind kind = DeviceKind::PulseSource;
    /// What opens the device: a source's name at the sound server; "default" or "hw:CARD=x,DEV=n"
    /// of ALSA; a camera's node; "x11", "x11:monitor" with the monitor's name after a colon,
    /// "portal".
    std::string id;
    std::string name;
    bool is_default = false;
    bool is_monitor = false;    // carries what an output plays
    std::string mixed_id = {};  // of a second sound device that is heard with it; "" = none
};

using DeviceList = std::vector<Device>;

/// The id of the screen of a desktop that hands it out by its portal.
inline constexpr const char* kPortalDevice = "portal";

}  // namespace engine
