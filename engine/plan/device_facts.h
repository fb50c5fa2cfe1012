// What the system's own interfaces say about capture devices, before anything is made of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace engine {

/// A source of the sound server.
struct PulseSource {
    std::string name;            // unique at the server
    std::string description;     // for people, may be empty or shared by several
    std::string monitored_sink;  // "" = a real input, else the output whose audio it carries
};

struct PulseFacts {
    std::vector<PulseSource> sources;
    std::string default_source;  // "" = none
    std::string default_sink;
};

/// A capture device of a sound card's driver.
struct AlsaCapture {
    std::string card_id;  // unique, such as "PCH"
    std::string card_name;
    unsigned device = 0;  // number on the card
    std::string device_name;
};

/// A device node of the kernel's video interface; one camera may have several.
struct VideoNode {
    std::string path;
    std::string card;                // the camera's name
    std::uint32_t capabilities = 0;  // of the whole camera
    std::uint32_t device_caps =
        0;  // of this node, when V4L2_CAP_DEVICE_CAPS says that they are there
};

enum class ScreenAccess { None, X11, Portal };

struct ScreenFacts {
    ScreenAccess access = ScreenAccess::None;
    std::vector<std::string> monitors;  // names of an X11 screen's monitors
};

struct DeviceFacts {
    std::optional<PulseFacts> pulse = {};    // absent when no server answered
    std::vector<AlsaCapture> captures = {};  // in the order of the cards
    std::vector<VideoNode> nodes = {};       // in the order of their numbers
    ScreenFacts screens = {};
};

}  // namespace engine
