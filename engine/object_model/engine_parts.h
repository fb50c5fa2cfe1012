// What the object tree asks of the rooms that do media work; tests put their own in.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "engine/pipeline/encoding_run.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/device_list.h"
#include "engine/sources/media_probe.h"
#include "platform/encoder.h"
#include "platform/file_system.h"

namespace engine {

/// A run as the encoder object drives it; the contract is EncodingRun's. Destruction stops
/// gracefully and waits.
class SessionRun {
  public:
    virtual ~SessionRun() = default;
    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual platform::Currency EncodingTime() const = 0;
    virtual platform::OutputStats AudioStats() const = 0;
    virtual platform::OutputStats VideoStats() const = 0;
    virtual platform::OutputStats TotalStats() const = 0;
    virtual platform::FileArchiveStats FileStats() const = 0;
};

struct EngineParts {
    std::function<MediaFileInfo(const std::string& host_path)> probe;
    /// Opens inputs, encoders and the output; throws platform::Error.
    std::function<std::unique_ptr<SessionRun>(EncodePlan plan, RunCallbacks callbacks)> make_run;
    std::shared_ptr<platform::FileSystem> files;
    /// The machine's capture devices, now; may take a second. None when it is empty.
    std::function<DeviceList()> devices = {};
};

}  // namespace engine
