#include "platform/host/qt_run_watch.h"

namespace platform::host {

namespace {

RunPhase PhaseOf(EncoderState state) {
    switch (state) {
        case EncoderState::Starting:
        case EncoderState::Running:
        case EncoderState::EndPreprocess:
            return RunPhase::Running;
        case EncoderState::Paused:
            return RunPhase::Paused;
        case EncoderState::Stopping:
            return RunPhase::Stopping;
        case EncoderState::Stopped:
            break;
    }
    return RunPhase::Idle;
}

}  // namespace

void RunWatch::SetForm(FormEvents& form) {
    form_ = &form;
    form.SetRunListener(this);
}

std::int64_t RunWatch::EncodedMs() const {
    return form_ == nullptr ? 0 : form_->Progress().encoded_ms;
}

void RunWatch::OnStateChange(EncoderState state) {
    const RunPhase before = phase_;
    phase_ = PhaseOf(state);
    if (before == phase_) return;
    if (before == RunPhase::Idle) {
        is_capture_ = form_ != nullptr && form_->Progress().input.empty();
        for (const auto& handler : on_begin_) handler();
    }
    for (const auto& handler : on_phase_) handler();
}

void RunWatch::OnNotice(const std::string& /*text*/) {
    for (const auto& handler : on_notices_) handler();
}

void RunWatch::OnCommandEnd(const CommandReport& report) {
    for (const auto& handler : on_end_) handler(report);
}

void RunWatch::OnCommandRefused(const CommandReport& report) {
    for (const auto& handler : on_refused_) handler(report);
}

}  // namespace platform::host
