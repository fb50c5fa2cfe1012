// The media library's side of the seam: the rooms that work with media behind its one symbol.
#include <utility>

#include "engine/base/av/av_ptr.h"
#include "engine/media/media_parts.h"
#include "engine/outputs/make_output.h"
#include "engine/pipeline/encoding_run.h"
#include "engine/sources/files/media_probe.h"
#include "engine/sources/open_live.h"
#include "engine/sources/screen/portal_screen.h"

namespace engine {
namespace {

// When the library is loaded: what matters is thrown, and no terminal is filled with more.
[[maybe_unused]] const bool kQuiet = [] {
    av_log_set_level(AV_LOG_QUIET);
    return true;
}();

std::unique_ptr<SessionRun> MakeRun(EncodePlan plan, RunCallbacks callbacks) {
    return std::make_unique<EncodingRun>(std::move(plan), std::move(callbacks),
                                         RunParts{MakeOutput, OpenLiveSource});
}

}  // namespace
}  // namespace engine

extern "C" const engine::MediaParts tessivo_media_parts;
const engine::MediaParts tessivo_media_parts = {TESSIVO_VERSION, engine::ProbeMediaFile,
                                                engine::MakeRun, engine::MakePortalShare};
