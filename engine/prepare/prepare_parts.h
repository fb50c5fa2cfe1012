// What a plan's maker asks of the machine.
#pragma once

#include <functional>

#include "engine/plan/camera_format.h"
#include "engine/plan/device.h"
#include "engine/plan/network_settings.h"
#include "platform/file_system.h"

namespace engine {

struct PrepareParts {
    platform::FileSystem& files;
    /// How a camera gives frames that suit the request. Throws Error that names it.
    std::function<CameraFormat(const Device& camera, const CameraRequest& request)> camera_format;
    NetworkSettings network = {};
};

}  // namespace engine
