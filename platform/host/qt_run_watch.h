// What the window knows of the run, for all that shows or steers it.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "platform/form_events.h"

namespace platform::host {

enum class RunPhase { Idle, Running, Paused, Stopping };

/// User-interface thread. Handlers are called in the order in which they were added.
class RunWatch : public RunListener {
  public:
    /// The form tells it of its runs from now on, for as long as both live.
    void SetForm(FormEvents& form);

    RunPhase phase() const { return phase_; }
    bool CanPause() const { return phase_ == RunPhase::Running || phase_ == RunPhase::Paused; }
    /// Whether what runs, or ran last, records devices or the screen.
    bool IsCapture() const { return is_capture_; }
    /// Playing time of what runs: pauses are not in it.
    std::int64_t EncodedMs() const;

    void OnBegin(std::function<void()> handler) { on_begin_.push_back(std::move(handler)); }
    void OnPhase(std::function<void()> handler) { on_phase_.push_back(std::move(handler)); }
    /// A command that encoded something has ended.
    void OnEnd(std::function<void(const CommandReport&)> handler) {
        on_end_.push_back(std::move(handler));
    }

    /// A command has ended in an error before anything was encoded.
    void OnRefused(std::function<void(const CommandReport&)> handler) {
        on_refused_.push_back(std::move(handler));
    }

    /// The running command has one more notice.
    void OnNotices(std::function<void()> handler) { on_notices_.push_back(std::move(handler)); }

    void OnFileEnd(const FileReport& /*report*/) override {}
    void OnStateChange(EncoderState state) override;
    void OnNotice(const std::string& text) override;
    void OnCommandEnd(const CommandReport& report) override;
    void OnCommandRefused(const CommandReport& report) override;

  private:
    FormEvents* form_ = nullptr;
    RunPhase phase_ = RunPhase::Idle;
    bool is_capture_ = false;
    std::vector<std::function<void()>> on_begin_;
    std::vector<std::function<void()>> on_phase_;
    std::vector<std::function<void()>> on_notices_;
    std::vector<std::function<void(const CommandReport&)>> on_end_;
    std::vector<std::function<void(const CommandReport&)>> on_refused_;
};

}  // namespace platform::host
