// What the object tree asks of the rooms that do media work; tests put their own in.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "engine/base/session_run.h"
#include "engine/media/media_parts.h"
#include "engine/plan/camera_format.h"
#include "engine/plan/device.h"
#include "engine/plan/device_facts.h"
#include "engine/plan/encode_plan.h"
#include "engine/plan/media_file_info.h"
#include "engine/plan/network_settings.h"
#include "engine/plan/screen_area.h"
#include "engine/plan/screen_share.h"
#include "platform/encoder.h"
#include "platform/file_system.h"

namespace engine {

struct EngineParts {
    std::function<MediaFileInfo(const std::string& host_path)> probe;
    /// Opens inputs, encoders and the output; throws platform::Error.
    std::function<std::unique_ptr<SessionRun>(EncodePlan plan, RunCallbacks callbacks)> make_run;
    std::shared_ptr<platform::FileSystem> files;
    /// The machine's capture devices, now; may take a second. None when it is empty.
    std::function<DeviceList()> devices = {};
    /// How this machine's screen can be recorded. Not at all when it is empty.
    std::function<ScreenFacts()> screens = {};
    /// Throws platform::Error.
    std::function<ScreenSize(const ScreenArea& area)> screen_size = {};
    /// Which part of the screen "the screen" is, as ParseScreenArea takes it. All when it is empty.
    std::function<std::string()> screen_choice = {};
    /// Whose sound a screen's is, as ChosenSound takes it. The default device's when it is empty.
    std::function<std::string()> sound_choice = {};
    /// For the screen of a desktop that hands it out; throws platform::Error.
    std::function<std::unique_ptr<ScreenShare>()> make_share = {};
    /// How a camera gives frames that suit the request. Throws platform::Error.
    std::function<CameraFormat(const Device& camera, const CameraRequest& request)> camera_format =
        {};
    /// Whether the mouse pointer is recorded with a screen. It is when this is empty.
    std::function<bool()> shows_pointer = {};
    /// None of them are given when it is empty.
    std::function<NetworkSettings()> network = {};
};

/// The same parts, which look for devices once: their numbers hold as long as the encoder.
EngineParts WithDevicesKept(EngineParts parts);

}  // namespace engine
