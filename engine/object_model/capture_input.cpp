#include "engine/object_model/capture_input.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include "platform/text.h"

namespace engine {

namespace {

using platform::SourceType;

// The name that commands use and the one that session files have.
constexpr const char* kScreenNames[] = {"screencap1", "screencapture1"};
constexpr const char* kWholeScreenId = "x11";

[[noreturn]] void RefuseUnbuilt(const std::string& description) {
    throw platform::Error(platform::kNotImplemented, description);
}

[[noreturn]] void RefuseMissing(const std::string& description) {
    throw platform::Error(platform::kFileNotFound, description);
}

void CheckScreenAccess(const EngineParts& parts) {
    switch (parts.screens ? parts.screens().access : ScreenAccess::None) {
        case ScreenAccess::X11:
            return;
        case ScreenAccess::Portal:
            RefuseUnbuilt(
                "The screen of a Wayland session cannot be recorded yet: log in to an X11 session");
        case ScreenAccess::None:
            RefuseMissing(
                "There is no screen to record: start the program in a desktop session, or set "
                "DISPLAY to that of an X server");
    }
}

CaptureInput ScreenInput(const EngineParts& parts, Device device, ScreenArea area) {
    const ScreenSize size = parts.screen_size(area);
    device.name = Describe(area);
    return {std::move(device), std::move(area), size};
}

ScreenArea AreaNamed(const EngineParts& parts, const std::string& input) {
    const std::string name = platform::LowerCase(input);
    const bool is_screen =
        std::find(std::begin(kScreenNames), std::end(kScreenNames), name) != std::end(kScreenNames);
    if (!is_screen) return ParseScreenArea(input);
    return ParseScreenArea(parts.screen_choice ? parts.screen_choice() : std::string());
}

Device DeviceNamed(const EngineParts& parts, SourceType type, const std::string& name) {
    const DeviceList devices = parts.devices ? parts.devices() : DeviceList();
    if (const Device* device = FindDevice(devices, type, name)) return *device;
    if (name == kDefaultAudioDevice)
        RefuseMissing(
            "There is no sound device to record from: start the desktop's sound server or connect "
            "a microphone, or choose a profile without sound");
    RefuseMissing(fmt::format("There is no {} device \"{}\": choose one that -devices lists",
                              type == SourceType::Audio ? "audio" : "video", name));
}

}  // namespace

CaptureInput CaptureOf(const EngineParts& parts, SourceType type, const std::string& input,
                       const std::string& scheme) {
    if (scheme == "screencap") {
        if (type != SourceType::Video)
            RefuseArgument(fmt::format("The screen ({}) is no audio source", input));
        CheckScreenAccess(parts);
        return ScreenInput(parts, {DeviceKind::Screen, kWholeScreenId, {}, false, false},
                           AreaNamed(parts, input));
    }
    const Device device = DeviceNamed(parts, type, input);
    if (device.kind == DeviceKind::Camera)
        RefuseUnbuilt(
            fmt::format("The camera {} cannot be recorded yet: leave -vdevice out, or "
                        "give it the number of a screen",
                        device.name));
    if (device.kind != DeviceKind::Screen) return {device, {}, {}};
    CheckScreenAccess(parts);
    return ScreenInput(parts, device, AreaOfDevice(device.id));
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
