#include "engine/object_model/engine_factory.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "engine/media/media_library.h"
#include "engine/object_model/encoder.h"
#include "engine/object_model/profile.h"
#include "engine/sources/camera/camera_device.h"
#include "engine/sources/device_discovery.h"
#include "engine/sources/screen/named_area.h"
#include "engine/sources/screen/screens.h"

namespace engine {
namespace {

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

std::shared_ptr<platform::WMEncoder> MakeEncoder(platform::EventLoop& loop,
                                                 std::shared_ptr<platform::FileSystem> files) {
    EngineParts parts;
    parts.probe = [](const std::string& host_path) { return MediaLibrary().probe(host_path); };
    parts.make_run = [](EncodePlan plan, RunCallbacks callbacks) {
        return MediaLibrary().make_run(std::move(plan), std::move(callbacks));
    };
    parts.files = std::move(files);
    parts.devices = DiscoverDevices;
    parts.screens = Screens;
    parts.screen_size = SizeNow;
    parts.camera_format = [](const Device& camera, const CameraRequest& request) {
        return CameraFormatFor(camera.id, camera.name, request);
    };
    parts.screen_choice = [] { return Variable("TESSIVO_SCREEN"); };
    parts.shows_pointer = [] { return ParsePointer(Variable("TESSIVO_POINTER")); };
    parts.sound_choice = [] { return Variable("TESSIVO_SOUND"); };
    parts.network = [] {
        return NetworkSettings{Variable("TESSIVO_BROADCAST_ADDRESS"),
                               {Variable("TESSIVO_PUSH_USER"), Variable("TESSIVO_PUSH_PASSWORD")},
                               Variable("TESSIVO_PUSH_AGENT"),
                               Variable("TESSIVO_PUSH_ANY_SERVER") == "1"};
    };
    parts.make_share = [] { return MediaLibrary().make_share(); };
    return std::make_shared<Encoder>(loop, std::move(parts));
}

std::shared_ptr<platform::WMEncProfile2> MakeProfile(std::shared_ptr<platform::FileSystem> files) {
    return std::make_shared<Profile>(std::move(files));
}

}  // namespace engine
