// What the object tree asks of the rooms that do media work; tests put their own in.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "engine/media/media_parts.h"
#include "engine/pipeline/encoding_run.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/device_list.h"
#include "engine/sources/media_probe.h"
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
};

}  // namespace engine
