#include "session/capture_devices.h"

#include <fmt/format.h>

namespace session {
namespace {

using platform::PluginMediaType;
using platform::SourceType;

struct DeviceKind {
    SourceType type;
    const char* heading;
};

constexpr DeviceKind kKinds[] = {
    {SourceType::Audio, "audio device:"},
    {SourceType::Video, "video device:"},
};

bool Captures(const platform::WMEncSourcePluginInfo& plugin, SourceType type) {
    if (!plugin.Resources()) return false;
    const PluginMediaType media = plugin.MediaType();
    if (media == PluginMediaType::AudioVideo) return true;
    if (type == SourceType::Audio) return media == PluginMediaType::Audio;
    return media == PluginMediaType::Video || media == PluginMediaType::VideoScript;
}

}  // namespace

std::vector<std::string> DeviceNames(platform::WMEncoder& encoder, SourceType type) {
    auto& plugins = encoder.SourcePluginInfoManager();
    std::vector<std::string> names;
    for (int i = 0; i < plugins.Count(); ++i) {
        const auto plugin = plugins.Item(i);
        if (!Captures(*plugin, type)) continue;
        for (int j = 0; j < plugin->Count(); ++j) names.push_back(plugin->Item(j));
    }
    return names;
}

CaptureDevices::CaptureDevices(const platform::SessionState& state, platform::OutputPane& pane)
    : state_(state), pane_(pane) {}

void CaptureDevices::ListDevices() {
    for (const DeviceKind& kind : kKinds) {
        pane_.OutputInfo(kind.heading);
        int number = 0;
        for (const std::string& name : DeviceNames(*state_.g_objEncoder, kind.type))
            pane_.OutputInfo(fmt::format("\t{} : {}", number++, name));
    }
}

std::string CaptureDevices::GetDeviceNameFromIndex(SourceType type, std::int32_t number) const {
    if (number < 0) return {};
    const std::vector<std::string> names = DeviceNames(*state_.g_objEncoder, type);
    const auto index = static_cast<std::size_t>(number);
    return index < names.size() ? names[index] : std::string();
}

}  // namespace session
