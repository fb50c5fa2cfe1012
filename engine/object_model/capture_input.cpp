#include "engine/object_model/capture_input.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include "engine/sources/device_list.h"
#include "engine/sources/screen/named_area.h"
#include "engine/sources/sound_choice.h"
#include "platform/text.h"

namespace engine {

namespace {

using platform::SourceType;

// The name that commands use and the one that session files have.
constexpr const char* kScreenNames[] = {"screencap1", "screencapture1"};
constexpr const char* kWholeScreenId = "x11";

[[noreturn]] void RefuseMissing(const std::string& description) {
    throw platform::Error(platform::kFileNotFound, description);
}

ScreenAccess CheckedAccess(const EngineParts& parts) {
    const ScreenAccess access = parts.screens ? parts.screens().access : ScreenAccess::None;
    if (access == ScreenAccess::None)
        RefuseMissing(
            "There is no screen to record: start the program in a desktop session, or set "
            "DISPLAY to that of an X server");
    return access;
}

// The mouse pointer goes with a screen, however that is named.
ScreenArea WithPointer(const EngineParts& parts, ScreenArea area) {
    area.pointer = !parts.shows_pointer || parts.shows_pointer();
    return area;
}

CaptureInput X11Input(const EngineParts& parts, Device device, ScreenArea area) {
    const ScreenSize size = parts.screen_size(area);
    device.name = Describe(area);
    return {std::move(device), std::move(area), size};
}

// Its size is known once the person has answered the desktop's question.
CaptureInput PortalInput(ScreenArea area) {
    if (area.kind == ScreenArea::Kind::Monitor || area.kind == ScreenArea::Kind::Window)
        RefuseArgument(
            fmt::format("A Wayland desktop asks by itself which monitor or window is recorded, and "
                        "{} cannot be chosen before: leave TESSIVO_SCREEN out",
                        Describe(area)));
    const std::string name = Describe(area);
    return {{DeviceKind::Screen, kPortalDevice, name, false, false}, std::move(area), {}};
}

ScreenArea AreaNamed(const EngineParts& parts, const std::string& input,
                     const std::string& chosen) {
    const std::string name = platform::LowerCase(input);
    const bool is_screen =
        std::find(std::begin(kScreenNames), std::end(kScreenNames), name) != std::end(kScreenNames);
    if (!is_screen) return ParseScreenArea(input);
    if (!chosen.empty()) return ParseScreenArea(chosen);
    return ParseScreenArea(parts.screen_choice ? parts.screen_choice() : std::string());
}

Device DeviceNamed(const EngineParts& parts, SourceType type, const std::string& name) {
    const DeviceList devices = parts.devices ? parts.devices() : DeviceList();
    if (type == SourceType::Audio && name == kDefaultAudioDevice)
        return ChosenSound(devices, parts.sound_choice ? parts.sound_choice() : std::string());
    if (const Device* device = FindDevice(devices, type, name)) return *device;
    RefuseMissing(fmt::format("There is no {} device \"{}\": choose one that -devices lists",
                              type == SourceType::Audio ? "audio" : "video", name));
}

}  // namespace

CaptureInput CaptureOf(const EngineParts& parts, SourceType type, const std::string& input,
                       const std::string& scheme, const std::string& area_chosen) {
    if (scheme == "screencap") {
        if (type != SourceType::Video)
            RefuseArgument(fmt::format("The screen ({}) is no audio source", input));
        const ScreenAccess access = CheckedAccess(parts);
        ScreenArea area = WithPointer(parts, AreaNamed(parts, input, area_chosen));
        if (access == ScreenAccess::Portal) return PortalInput(std::move(area));
        return X11Input(parts, {DeviceKind::Screen, kWholeScreenId, {}, false, false},
                        std::move(area));
    }
    const Device device = DeviceNamed(parts, type, input);
    if (device.kind != DeviceKind::Screen) return {device, {}, {}};
    if (CheckedAccess(parts) == ScreenAccess::Portal) return PortalInput(WithPointer(parts, {}));
    return X11Input(parts, device, WithPointer(parts, AreaOfDevice(device.id)));
}

EngineParts WithDevicesKept(EngineParts parts) {
    struct Kept {
        std::once_flag asked;
        DeviceList devices;
    };
    if (!parts.devices) return parts;
    parts.devices = [ask = std::move(parts.devices), kept = std::make_shared<Kept>()] {
        std::call_once(kept->asked, [&] { kept->devices = ask(); });
        return kept->devices;
    };
    return parts;
}

}  // namespace engine
