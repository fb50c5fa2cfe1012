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

CaptureDevices::CaptureDevices(const platform::SessionState& state, platform::OutputPane& pane)
    : state_(state), pane_(pane) {}

void CaptureDevices::ListDevices() {
    auto& plugins = state_.g_objEncoder->SourcePluginInfoManager();
    for (const DeviceKind& kind : kKinds) {
        pane_.OutputInfo(kind.heading);
        int number = 0;
        for (int i = 0; i < plugins.Count(); ++i) {
            const auto plugin = plugins.Item(i);
            if (!Captures(*plugin, kind.type)) continue;
            for (int j = 0; j < plugin->Count(); ++j)
                pane_.OutputInfo(fmt::format("\t{} : {}", number++, plugin->Item(j)));
        }
    }
}

std::string CaptureDevices::GetDeviceNameFromIndex(SourceType type, std::int32_t number) const {
    if (number < 0) return {};
    auto& plugins = state_.g_objEncoder->SourcePluginInfoManager();
    std::int32_t rest = number;
    for (int i = 0; i < plugins.Count(); ++i) {
        const auto plugin = plugins.Item(i);
        if (!Captures(*plugin, type)) continue;
        if (rest < plugin->Count()) return plugin->Item(rest);
        rest -= plugin->Count();
    }
    return {};
}

}  // namespace session
