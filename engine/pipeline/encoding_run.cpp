#include "engine/pipeline/encoding_run.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace engine {

using platform::EncoderState;

EncodingRun::EncodingRun(EncodePlan plan, RunCallbacks callbacks, RunParts parts)
    : plan_(std::move(plan)),
      callbacks_(std::move(callbacks)),
      parts_(std::move(parts)),
      statistics_(plan_),
      outputs_(plan_, parts_, statistics_, NoticesOfOutputs()) {
    OpenPass({1, plan_.passes, plan_.media_length, {}, {}}, {});
    OutputHeader header;
    header.streams = pass_->Headers();
    header.content = plan_.content;
    header.attributes = plan_.attributes;
    header.min_packet_bytes = plan_.min_packet_bytes;
    header.max_packet_bytes = plan_.max_packet_bytes;
    outputs_.Begin(header);
}

EncodingRun::~EncodingRun() {
    Stop();
    if (control_.joinable()) control_.join();
}

void EncodingRun::Start() {
    control_ = std::thread([this] { Control(); });
}

void EncodingRun::Stop() {
    const std::lock_guard lock(mutex_);
    ++stops_asked_;
    pause_asked_ = false;
    changed_.notify_all();
}

std::vector<std::string> EncodingRun::TakeNotes() {
    const std::lock_guard lock(mutex_);
    return std::exchange(notes_, {});
}

void EncodingRun::SetPaused(bool paused) {
    const std::lock_guard lock(mutex_);
    if (stops_asked_ > 0) return;
    pause_asked_ = paused;
    changed_.notify_all();
}

OutputNotices EncodingRun::NoticesOfOutputs() {
    return [this](const std::string& text) {
        const std::lock_guard lock(mutex_);
        notices_.push_back(text);
        changed_.notify_all();
    };
}

void EncodingRun::TellNotices() {
    std::vector<std::string> notices;
    {
        const std::lock_guard lock(mutex_);
        notices.swap(notices_);
    }
    if (callbacks_.on_notice)
        for (const std::string& notice : notices) callbacks_.on_notice(notice);
}

void EncodingRun::OpenPass(const EncoderPass& pass, Ticks end) {
    Pass::Events events;
    events.failed = [this](const platform::Error& error) {
        const std::lock_guard lock(mutex_);
        if (!failure_) failure_ = error;
    };
    events.lost = [this](const platform::Error& error) {
        const std::lock_guard lock(mutex_);
        if (!loss_) loss_ = error;
    };
    events.noted = [this](const std::string& note) {
        const std::lock_guard lock(mutex_);
        if (noted_.insert(note).second) notes_.push_back(note);  // each pass says it
    };
    events.ended = [this] {
        const std::lock_guard lock(mutex_);
        pass_ended_ = true;
        changed_.notify_all();
    };
    pass_ended_ = false;
    pass_.reset();  // its memory is not wanted twice
    pass_ =
        std::make_unique<Pass>(plan_, pass, end, parts_, packets_, statistics_, std::move(events));
}

void EncodingRun::Control() {
    Announce(EncoderState::Starting);
    TellNotices();
    Trap([&] {
        for (int number = 1; number <= plan_.passes && !cause_; ++number) RunPass(number);
    });
    pass_.reset();  // gives devices back: the run may be kept for its figures
    if (cause_) {
        outputs_.Abandon();
        Report(*cause_, outputs_.RemainsText());
        AnnounceStopping();
    } else {
        if (!loss_) AnnounceStopping();
        Trap([&] { outputs_.Finish(); });
        TellNotices();
        if (callbacks_.on_notice)
            for (const std::string& notice : outputs_.Notices()) callbacks_.on_notice(notice);
        if (cause_)
            Report(*cause_, outputs_.RemainsText());
        else if (loss_)
            Report(*loss_, LossText());
        AnnounceStopping();
    }
    Announce(EncoderState::Stopped);
}

std::string EncodingRun::LossText() const {
    const std::string path = plan_.FilePath();
    if (path.empty()) return {};
    return fmt::format("What was {} until then is in \"{}\", which is whole.",
                       plan_.IsLive() ? "recorded" : "encoded", path);
}

// A pass that is stopped is still followed by the next one over what it has read.
void EncodingRun::RunPass(int number) {
    if (number > 1) {
        Announce(EncoderState::EndPreprocess);
        HonourLateStops();
        const Ticks end = stops_honoured_ > 0 ? statistics_.End() : Ticks{};
        if (stops_honoured_ > 0 && end.count == 0) return;
        OpenPass({number, plan_.passes, statistics_.End(MediaKind::Video), pass_->FirstReport(),
                  pass_->FirstAudio()},
                 end);
        statistics_.BeginPass();
    }
    Announce(EncoderState::Running);
    pass_->Start(number == plan_.passes ? &outputs_ : nullptr);
    Watch();
    pass_->Join();
    {
        // Only now: a stage may fail after the writer has seen its end.
        const std::lock_guard lock(mutex_);
        if (failure_) Note(*failure_);
        if (loss_ && pass_->YieldedNothing()) Note(*loss_);
    }
    if (pass_->YieldedNothing() && stops_honoured_ == 0 && !cause_)
        throw platform::Error(platform::kInvalidData,
                              InputNames() +
                                  ": nothing in the part that is encoded can be decoded; "
                                  "choose another file or other marks");
}

std::string EncodingRun::InputNames() const {
    return plan_.video ? plan_.video->input.Name() : plan_.audio->input.Name();
}

// Stops that came too late for a pass must not cut the next one to nothing.
void EncodingRun::HonourLateStops() {
    {
        const std::lock_guard lock(mutex_);
        if (stops_honoured_ == stops_asked_) return;
        stops_honoured_ = stops_asked_;
    }
    AnnounceStopping();
}

// Until the pass has ended: hands stops and pauses to it and tells of them.
void EncodingRun::Watch() {
    bool paused = false;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] {
            return pass_ended_ || stops_asked_ > stops_honoured_ || pause_asked_ != paused ||
                   !notices_.empty();
        });
        if (!notices_.empty()) {
            lock.unlock();
            TellNotices();
            lock.lock();
            continue;
        }
        if (stops_asked_ > stops_honoured_) {
            ++stops_honoured_;
            paused = false;
            lock.unlock();
            pass_->Stop();
            AnnounceStopping();
            lock.lock();
        } else if (pause_asked_ != paused && !pass_ended_) {
            paused = !paused;
            lock.unlock();
            pass_->SetPaused(paused);
            Announce(paused ? EncoderState::Paused : EncoderState::Running);
            lock.lock();
        } else {
            return;  // a pass that has failed comes to its end by itself
        }
    }
}

template <typename Body>
void EncodingRun::Trap(Body&& body) {
    try {
        body();
    } catch (const platform::Error& error) {
        Note(error);
    } catch (const std::exception& error) {
        Note({platform::kUnspecified, error.what()});
    }
}

// The first failure is the cause; what follows from it is not told.
void EncodingRun::Note(const platform::Error& error) {
    if (!cause_) cause_ = error;
}

// Once the file is closed: only then it is known what is left of it.
void EncodingRun::Report(const platform::Error& error, const std::string& remains) {
    std::string text = error.description();
    if (!remains.empty()) {
        if (!text.ends_with('.')) text += '.';
        text += " " + remains;
    }
    if (callbacks_.on_error) callbacks_.on_error(error.number(), text);
}

// Once a run is stopping, only Stopped is news.
void EncodingRun::Announce(EncoderState state) {
    if (stopping_ && state != EncoderState::Stopped) return;
    if (callbacks_.on_state) callbacks_.on_state(state);
}
void EncodingRun::AnnounceStopping() {
    Announce(EncoderState::Stopping);
    stopping_ = true;
}

}  // namespace engine
