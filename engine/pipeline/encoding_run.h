// One run of a plan, from the first thread to the finished outputs.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/session_run.h"
#include "engine/pipeline/pass.h"
#include "engine/pipeline/run_outputs.h"
#include "engine/pipeline/run_parts.h"
#include "engine/pipeline/run_statistics.h"
#include "engine/plan/encode_plan.h"
#include "platform/error.h"

namespace engine {

/// The control thread owns the passes and makes all callbacks; the passes' threads and callers
/// only leave it word.
class EncodingRun final : public SessionRun {
  public:
    /// Opens inputs, encoders and outputs. Throws platform::Error; then nothing is left behind.
    EncodingRun(EncodePlan plan, RunCallbacks callbacks, RunParts parts);
    ~EncodingRun() override;
    EncodingRun(const EncodingRun&) = delete;
    EncodingRun& operator=(const EncodingRun&) = delete;

    void Start() override;
    void Stop() override;
    void Pause() override { SetPaused(true); }
    void Resume() override { SetPaused(false); }
    std::vector<std::string> TakeNotes() override;
    const RunFigures& Figures() const override { return statistics_; }

  private:
    void SetPaused(bool paused);
    OutputNotices NoticesOfOutputs();
    void OpenPass(const EncoderPass& pass, Ticks end);
    void Control();
    void RunPass(int number);
    std::string InputNames() const;
    std::string LossText() const;
    void HonourLateStops();
    void Watch();
    void TellNotices();
    template <typename Body>
    void Trap(Body&& body);
    void Note(const platform::Error& error);
    void Report(const platform::Error& error, const std::string& remains);
    void Announce(platform::EncoderState state);
    void AnnounceStopping();

    EncodePlan plan_;
    RunCallbacks callbacks_;
    RunParts parts_;
    RunStatistics statistics_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> notices_;  // of outputs, not told yet

    CodedFramePool packets_;  // outlives the outputs, which may keep frames
    RunOutputs outputs_;
    std::unique_ptr<Pass> pass_;

    // Under the mutex.
    int stops_asked_ = 0;
    bool pause_asked_ = false;
    bool pass_ended_ = false;
    std::optional<platform::Error> failure_;
    std::optional<platform::Error> loss_;  // of a source that ended before its time
    std::vector<std::string> notes_;
    std::set<std::string> noted_;

    // The control thread's own.
    int stops_honoured_ = 0;
    std::optional<platform::Error> cause_;  // why the run ends before its time
    bool stopping_ = false;
    std::thread control_;
};

}  // namespace engine
