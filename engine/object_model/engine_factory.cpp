#include "engine/object_model/engine_factory.h"

#include <utility>

#include "engine/object_model/encoder.h"
#include "engine/object_model/profile.h"
#include "engine/sources/device_discovery.h"

namespace engine {

namespace {

class PipelineRun : public SessionRun {
  public:
    PipelineRun(EncodePlan plan, RunCallbacks callbacks)
        : run_(std::move(plan), std::move(callbacks)) {}

    void Start() override { run_.Start(); }
    void Stop() override { run_.Stop(); }
    platform::Currency EncodingTime() const override { return run_.EncodingTime(); }
    platform::OutputStats AudioStats() const override { return run_.AudioStats(); }
    platform::OutputStats VideoStats() const override { return run_.VideoStats(); }
    platform::OutputStats TotalStats() const override { return run_.TotalStats(); }
    platform::FileArchiveStats FileStats() const override { return run_.FileStats(); }

  private:
    EncodingRun run_;
};

}  // namespace

std::shared_ptr<platform::WMEncoder> MakeEncoder(platform::EventLoop& loop,
                                                 std::shared_ptr<platform::FileSystem> files) {
    EngineParts parts;
    parts.probe = ProbeMediaFile;
    parts.make_run = [](EncodePlan plan, RunCallbacks callbacks) {
        return std::make_unique<PipelineRun>(std::move(plan), std::move(callbacks));
    };
    parts.files = std::move(files);
    parts.devices = DiscoverDevices;
    return std::make_shared<Encoder>(loop, std::move(parts));
}

std::shared_ptr<platform::WMEncProfile2> MakeProfile() { return std::make_shared<Profile>(); }

}  // namespace engine
