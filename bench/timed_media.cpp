// The media library with a clock in it: says of each frame when the capture had it, with the level
// of its first byte, and when what its encoder made of it reached the outputs. A line each in the
// file that TESSIVO_BENCH_TIMES names, in seconds of the machine's steady clock.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "engine/media/media_parts.h"
#include "engine/outputs/make_output.h"
#include "engine/pipeline/encoding_run.h"
#include "engine/sources/files/media_probe.h"
#include "engine/sources/open_live.h"
#include "engine/sources/screen/portal_screen.h"

namespace engine {
namespace {

double Now() { return static_cast<double>(CaptureNow().count) / Ticks::kPerSecond; }

void Tell(const char* what, int level) {
    static std::FILE* const times = std::fopen(std::getenv("TESSIVO_BENCH_TIMES"), "w");
    if (times == nullptr) std::abort();
    std::fprintf(times, "%s %.6f %d\n", what, Now(), level);
    std::fflush(times);
}

class TimedSource final : public LiveSource {
  public:
    explicit TimedSource(std::unique_ptr<LiveSource> source) : source_(std::move(source)) {}
    bool Read(FrameHandle& frame) override {
        const bool has_frame = source_->Read(frame);
        if (has_frame) Tell("captured", frame->data[0][0]);
        return has_frame;
    }
    void Wake() override { source_->Wake(); }
    std::int64_t TakeMissed() override { return source_->TakeMissed(); }

  private:
    std::unique_ptr<LiveSource> source_;
};

class TimedSink final : public OutputSink {
  public:
    explicit TimedSink(std::unique_ptr<OutputSink> sink) : sink_(std::move(sink)) {}
    void Begin(const OutputHeader& header) override { sink_->Begin(header); }
    void Write(const CodedFrame& frame) override {
        Tell("coded", 0);
        sink_->Write(frame);
    }
    void Flush() override { sink_->Flush(); }
    void Finish() override { sink_->Finish(); }
    void Abandon() override { sink_->Abandon(); }
    OutputResult Result() const override { return sink_->Result(); }
    void AddTo(platform::NetworkStats& stats) const override { sink_->AddTo(stats); }

  private:
    std::unique_ptr<OutputSink> sink_;
};

std::unique_ptr<SessionRun> MakeRun(EncodePlan plan, RunCallbacks callbacks) {
    RunParts parts;
    parts.make_output = [](const OutputPlan& output, const OutputNotices& notices) {
        return std::make_unique<TimedSink>(MakeOutput(output, notices));
    };
    parts.open_live = [](const CapturePlan& capture, FramePool& frames) {
        return std::make_unique<TimedSource>(OpenLiveSource(capture, frames));
    };
    return std::make_unique<EncodingRun>(std::move(plan), std::move(callbacks), std::move(parts));
}

}  // namespace
}  // namespace engine

extern "C" const engine::MediaParts tessivo_media_parts;
const engine::MediaParts tessivo_media_parts = {TESSIVO_VERSION, engine::ProbeMediaFile,
                                                engine::MakeRun, engine::MakePortalShare};
