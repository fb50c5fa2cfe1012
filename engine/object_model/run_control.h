// The encoder's run: starts and stops it, and carries its events over to the user-interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/object_model/engine_parts.h"
#include "platform/event_loop.h"

namespace engine {

/// Used on the user-interface thread only; must be held by a shared_ptr. The state changes when its
/// event is delivered, not before, so who waits for a state has also seen the event.
class RunControl : public std::enable_shared_from_this<RunControl> {
  public:
    /// The loop must outlive this object.
    explicit RunControl(platform::EventLoop& loop) : loop_(loop) {}

    bool IsRunning() const { return state_ != platform::EncoderState::Stopped; }
    platform::EncoderState State() const { return state_; }
    void SetEvents(platform::WMEncoderEvents* events) { events_ = events; }
    void DeliverNotice(const std::string& text);
    platform::CredentialsAnswer AskCredentials(const platform::CredentialsQuestion& question) {
        return events_ == nullptr ? std::nullopt : events_->OnCredentials(question);
    }

    /// Forgets the run before and makes one of the plan, which opens its inputs and its output.
    /// Throws what making it throws.
    void Make(const EngineParts& parts, EncodePlan plan);
    /// A run that has been made gives back what it has opened.
    void Forget() { run_.reset(); }
    /// Starts the run that was made last. Throws what starting it throws; then it is forgotten.
    void Start();
    void Stop();   // graceful, returns at once; harmless when nothing runs
    void Pause();  // harmless when nothing runs
    /// False when the run is not paused.
    bool Resume();
    /// No event comes any more; a run is stopped gracefully and waited for.
    void Close();

    /// Lines about what the run has met, each once.
    std::vector<std::string> TakeNotes();

    /// The run that goes on or was the last; null before the first.
    const SessionRun* Run() const { return run_.get(); }
    bool RunHas(platform::SourceType type) const {
        return type == platform::SourceType::Audio ? has_audio_ : has_video_;
    }

  private:
    template <typename Event>
    auto Posting(Event event);
    void Deliver(platform::EncoderState state);
    void DeliverError(std::int32_t number, const std::string& description);

    platform::EventLoop& loop_;
    platform::WMEncoderEvents* events_ = nullptr;
    std::unique_ptr<SessionRun> run_;
    platform::EncoderState state_ = platform::EncoderState::Stopped;
    bool paused_ = false;  // asked for; the state follows
    bool has_audio_ = false;
    bool has_video_ = false;
    int run_number_ = 0;  // events of an abandoned run are dropped by it
};

}  // namespace engine
