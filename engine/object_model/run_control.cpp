#include "engine/object_model/run_control.h"

#include <utility>

namespace engine {

using platform::EncoderState;

// A function for the run's threads that posts `event` (called with this object and the function's
// arguments) to the user-interface thread. It outlives neither the object nor the run in effect.
template <typename Event>
auto RunControl::Posting(Event event) {
    return [&loop = loop_, weak = weak_from_this(), number = run_number_,
            event](const auto&... values) {
        loop.Post([weak, number, event, values...] {
            const std::shared_ptr<RunControl> self = weak.lock();
            if (self && self->run_number_ == number) event(*self, values...);
        });
    };
}

void RunControl::Make(const EngineParts& parts, EncodePlan plan) {
    run_.reset();
    ++run_number_;
    has_audio_ = plan.audio.has_value();
    has_video_ = plan.video.has_value();
    RunCallbacks callbacks;
    callbacks.on_state = Posting([](RunControl& self, EncoderState state) { self.Deliver(state); });
    callbacks.on_error =
        Posting([](RunControl& self, std::int32_t number, const std::string& description) {
            self.DeliverError(number, description);
        });
    callbacks.on_notice =
        Posting([](RunControl& self, const std::string& text) { self.DeliverNotice(text); });
    run_ = parts.make_run(std::move(plan), std::move(callbacks));
}

void RunControl::Start() {
    state_ = EncoderState::Starting;
    paused_ = false;
    try {
        run_->Start();
    } catch (const platform::Error&) {
        state_ = EncoderState::Stopped;
        ++run_number_;
        run_.reset();
        throw;
    }
}

void RunControl::Stop() {
    if (IsRunning()) run_->Stop();
    paused_ = false;
}

void RunControl::Pause() {
    if (!IsRunning() || paused_) return;
    run_->Pause();
    paused_ = true;
}

bool RunControl::Resume() {
    if (!IsRunning()) return false;
    if (!std::exchange(paused_, false)) return state_ == EncoderState::Paused;  // on its way
    run_->Resume();
    return true;
}

void RunControl::Close() {
    events_ = nullptr;
    ++run_number_;
    run_.reset();
    state_ = EncoderState::Stopped;
}

std::vector<std::string> RunControl::TakeNotes() {
    return run_ ? run_->TakeNotes() : std::vector<std::string>();
}

// The listener may do anything, also drop the encoder: nothing of it is touched after the call.
void RunControl::Deliver(EncoderState state) {
    state_ = state;
    if (events_ != nullptr) events_->OnStateChange(state);
}

void RunControl::DeliverError(std::int32_t number, const std::string& description) {
    if (events_ != nullptr) events_->OnError(number, description);
}

void RunControl::DeliverNotice(const std::string& text) {
    if (events_ != nullptr) events_->OnNotice(text);
}

}  // namespace engine
