// The media library's side of the seam: the pipeline behind its one symbol.
#include <utility>

#include "engine/media/media_parts.h"
#include "engine/pipeline/encoding_run.h"
#include "engine/sources/files/media_probe.h"
#include "engine/sources/screen/portal_screen.h"

namespace engine {
namespace {

class PipelineRun : public SessionRun {
  public:
    PipelineRun(EncodePlan plan, RunCallbacks callbacks)
        : run_(std::move(plan), std::move(callbacks)) {}

    void Start() override { run_.Start(); }
    void Stop() override { run_.Stop(); }
    void Pause() override { run_.Pause(); }
    void Resume() override { run_.Resume(); }
    platform::Currency EncodingTime() const override { return run_.EncodingTime(); }
    platform::OutputStats AudioStats() const override { return run_.AudioStats(); }
    platform::OutputStats VideoStats() const override { return run_.VideoStats(); }
    platform::OutputStats TotalStats() const override { return run_.TotalStats(); }
    platform::FileArchiveStats FileStats() const override { return run_.FileStats(); }

  private:
    EncodingRun run_;
};

std::unique_ptr<SessionRun> MakeRun(EncodePlan plan, RunCallbacks callbacks) {
    return std::make_unique<PipelineRun>(std::move(plan), std::move(callbacks));
}

}  // namespace
}  // namespace engine

extern "C" const engine::MediaParts tessivo_media_parts;
const engine::MediaParts tessivo_media_parts = {TESSIVO_VERSION, engine::ProbeMediaFile,
                                                engine::MakeRun, engine::MakePortalShare};
