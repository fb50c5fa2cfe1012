#include "engine/sources/device_list.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "platform/text.h"

namespace engine {
namespace {

using platform::SourceType;

// Drivers and users choose the texts; a listing gives each device one line.
std::string OneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7F'; }, ' ');
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

Device MakeDevice(DeviceKind kind, std::string id, const std::string& description) {
    std::string name = OneLine(description);
    if (name.empty()) name = id;
    return {kind, std::move(id), std::move(name), false, false};
}

DeviceList PulseDevices(const PulseFacts& facts) {
    std::vector<PulseSource> sources = facts.sources;
    const auto place = [&](const PulseSource& source) {
        const bool monitor = !source.monitored_sink.empty();
        return std::tuple(source.name != facts.default_source, monitor,
                          monitor && source.monitored_sink != facts.default_sink, source.name);
    };
    std::sort(sources.begin(), sources.end(),
              [&](const auto& a, const auto& b) { return place(a) < place(b); });
    DeviceList devices;
    for (const PulseSource& source : sources) {
        devices.push_back(MakeDevice(DeviceKind::PulseSource, source.name, source.description));
        devices.back().is_monitor = !source.monitored_sink.empty();
    }
    return devices;
}

DeviceList AlsaDevices(const std::vector<AlsaCapture>& captures) {
    DeviceList devices;
    if (captures.empty()) return devices;  // then "default" cannot be opened either
    devices.push_back(MakeDevice(DeviceKind::AlsaCapture, "default", "Default ALSA device"));
    for (const AlsaCapture& each : captures)
        devices.push_back(MakeDevice(DeviceKind::AlsaCapture,
                                     fmt::format("hw:CARD={},DEV={}", each.card_id, each.device),
                                     each.card_name + ", " + each.device_name));
    return devices;
}

bool CapturesVideo(const VideoNode& node) {
    const bool own_caps = (node.capabilities & V4L2_CAP_DEVICE_CAPS) != 0;
    return ((own_caps ? node.device_caps : node.capabilities) & V4L2_CAP_VIDEO_CAPTURE) != 0;
}

DeviceList VideoDevices(const std::vector<VideoNode>& nodes, const ScreenFacts& screens) {
    DeviceList devices;
    for (const VideoNode& node : nodes)
        if (CapturesVideo(node))
            devices.push_back(MakeDevice(DeviceKind::Camera, node.path, node.card));
    if (screens.access == ScreenAccess::None) return devices;
    const bool portal = screens.access == ScreenAccess::Portal;
    devices.push_back(MakeDevice(DeviceKind::Screen, portal ? kPortalDevice : "x11", "Screen"));
    if (screens.monitors.size() < 2) return devices;  // a single one is the whole screen
    for (const std::string& monitor : screens.monitors)
        devices.push_back(
            MakeDevice(DeviceKind::Screen, "x11:monitor:" + monitor, "Screen, monitor " + monitor));
    return devices;
}

void MakeNamesUnique(DeviceList& devices) {
    std::map<std::string, int> uses;
    for (const Device& device : devices) ++uses[device.name];
    std::set<std::string> taken = {kDefaultAudioDevice};
    for (Device& device : devices) {
        const std::string suffix = " (" + device.id + ")";
        if (uses[device.name] > 1) device.name += suffix;
        while (!taken.insert(device.name).second) device.name += suffix;
    }
}

void Finish(DeviceList& devices) {
    MakeNamesUnique(devices);
    if (!devices.empty()) devices.front().is_default = true;
}

}  // namespace

DeviceList MakeDeviceList(const DeviceFacts& facts) {
    DeviceList list = facts.pulse ? PulseDevices(*facts.pulse) : AlsaDevices(facts.captures);
    Finish(list);
    DeviceList video = VideoDevices(facts.nodes, facts.screens);
    Finish(video);
    std::move(video.begin(), video.end(), std::back_inserter(list));
    return list;
}

SourceType MediumOf(DeviceKind kind) {
    return kind == DeviceKind::PulseSource || kind == DeviceKind::AlsaCapture ? SourceType::Audio
                                                                              : SourceType::Video;
}

const Device* FindDevice(const DeviceList& list, SourceType medium, const std::string& name) {
    const bool any_default =
        name == (medium == SourceType::Audio ? kDefaultAudioDevice : kDefaultVideoDevice);
    const std::string lower = platform::LowerCase(name);
    const auto first = [&](const auto& fits) -> const Device* {
        const auto found = std::find_if(list.begin(), list.end(), [&](const Device& device) {
            return MediumOf(device.kind) == medium && fits(device);
        });
        return found == list.end() ? nullptr : &*found;
    };
    if (any_default) return first([](const Device& device) { return device.is_default; });
    if (const Device* const same = first([&](const Device& d) { return d.name == name; }))
        return same;
    // Other machines and systems spell the same device in another way.
    if (const Device* const nearly =
            first([&](const Device& d) { return platform::LowerCase(d.name) == lower; }))
        return nearly;
    if (name.empty()) return nullptr;
    return first([&](const Device& d) {
        return platform::LowerCase(d.name).find(lower) != std::string::npos;
    });
}

}  // namespace engine
