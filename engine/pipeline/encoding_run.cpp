#include "engine/pipeline/encoding_run.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "engine/outputs/asf/asf_file.h"
#include "engine/pipeline/live_parts.h"
#include "engine/pipeline/pass.h"
#include "engine/pipeline/run_statistics.h"
#include "engine/sources/open_live.h"

namespace engine {
namespace {

using platform::EncoderState;

// Errors of one stream's every frame would otherwise fill the terminal; what matters is thrown.
void SilenceFfmpeg() { av_log_set_level(AV_LOG_QUIET); }

// Reports what the file holds after each packet.
class CountedFile final : public PacketSink {
  public:
    CountedFile(const std::string& path, RunStatistics& statistics)
        : file_(path), statistics_(statistics) {}

    void Begin(const OutputHeader& header) override { file_.Begin(header); }
    void Write(const EncodedPacket& packet) override {
        file_.Write(packet);
        statistics_.FileIs(file_.Result());
    }
    void Finish() override {
        file_.Finish();
        statistics_.FileIs(file_.Result());
    }
    void Abandon() {
        file_.Abandon();
        statistics_.FileIs(file_.Result());
    }
    std::string RemainsText() const { return file_.RemainsText(); }

  private:
    asf::AsfFile file_;
    RunStatistics& statistics_;
};

}  // namespace

/// The control thread owns the passes and makes all callbacks; the passes' threads and callers
/// only leave it word.
class EncodingRun::Impl {
  public:
    Impl(EncodePlan plan, RunCallbacks callbacks, LiveParts live)
        : plan_(std::move(plan)),
          callbacks_(std::move(callbacks)),
          live_(std::move(live)),
          statistics_(plan_),
          sink_(plan_.output_path, statistics_) {
        SilenceFfmpeg();
        OpenPass({1, plan_.passes, plan_.media_length, {}}, {});
        OutputHeader header;
        header.streams = pass_->Headers();
        header.content = plan_.content;
        header.attributes = plan_.attributes;
        header.min_packet_bytes = plan_.min_packet_bytes;
        header.max_packet_bytes = plan_.max_packet_bytes;
        sink_.Begin(header);
    }

    ~Impl() {
        Stop();
        if (control_.joinable()) control_.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void Start() {
        control_ = std::thread([this] { Control(); });
    }

    void Stop() {
        const std::lock_guard lock(mutex_);
        ++stops_asked_;
        pause_asked_ = false;
        changed_.notify_all();
    }

    void SetPaused(bool paused) {
        const std::lock_guard lock(mutex_);
        if (stops_asked_ > 0) return;
        pause_asked_ = paused;
        changed_.notify_all();
    }

    const RunStatistics& Statistics() const { return statistics_; }

  private:
    void OpenPass(const EncoderPass& pass, Ticks end) {
        Pass::Events events;
        events.failed = [this](const platform::Error& error) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = error;
        };
        events.lost = [this](const platform::Error& error) {
            const std::lock_guard lock(mutex_);
            if (!loss_) loss_ = error;
        };
        events.ended = [this] {
            const std::lock_guard lock(mutex_);
            pass_ended_ = true;
            changed_.notify_all();
        };
        pass_ended_ = false;
        pass_.reset();  // its memory is not wanted twice
        pass_ = std::make_unique<Pass>(plan_, pass, end, live_, statistics_, std::move(events));
    }

    void Control() {
        Announce(EncoderState::Starting);
        Trap([&] {
            for (int number = 1; number <= plan_.passes && !cause_; ++number) RunPass(number);
        });
        pass_.reset();  // gives devices back: the run may be kept for its figures
        if (cause_) {
            sink_.Abandon();
            Report(*cause_, sink_.RemainsText());
            AnnounceStopping();
        } else {
            if (!loss_) AnnounceStopping();
            Trap([&] { sink_.Finish(); });
            if (cause_)
                Report(*cause_, sink_.RemainsText());
            else if (loss_)
                Report(*loss_, fmt::format("What was recorded until then is in \"{}\", which is "
                                           "whole.",
                                           plan_.output_path));
            AnnounceStopping();
        }
        Announce(EncoderState::Stopped);
    }

    // A pass that is stopped is still followed by the next one over what it has read.
    void RunPass(int number) {
        if (number > 1) {
            Announce(EncoderState::EndPreprocess);
            HonourLateStops();
            const Ticks end = stops_honoured_ > 0 ? statistics_.End() : Ticks{};
            if (stops_honoured_ > 0 && end.count == 0) return;
            OpenPass(
                {number, plan_.passes, statistics_.End(MediaKind::Video), pass_->FirstReport()},
                end);
            statistics_.BeginPass();
        }
        Announce(EncoderState::Running);
        pass_->Start(number == plan_.passes ? &sink_ : nullptr);
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

    std::string InputNames() const {
        return plan_.video ? plan_.video->input.Name() : plan_.audio->input.Name();
    }

    // Stops that came too late for a pass must not cut the next one to nothing.
    void HonourLateStops() {
        {
            const std::lock_guard lock(mutex_);
            if (stops_honoured_ == stops_asked_) return;
            stops_honoured_ = stops_asked_;
        }
        AnnounceStopping();
    }

    // Until the pass has ended: hands stops and pauses to it and tells of them.
    void Watch() {
        bool paused = false;
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [&] {
                return pass_ended_ || stops_asked_ > stops_honoured_ || pause_asked_ != paused;
            });
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
    void Trap(Body&& body) {
        try {
            body();
        } catch (const platform::Error& error) {
            Note(error);
        } catch (const std::exception& error) {
            Note({platform::kUnspecified, error.what()});
        }
    }

    // The first failure is the cause; what follows from it is not told.
    void Note(const platform::Error& error) {
        if (!cause_) cause_ = error;
    }

    // Once the file is closed: only then it is known what is left of it.
    void Report(const platform::Error& error, const std::string& remains) {
        std::string text = error.description();
        if (!remains.empty()) {
            if (!text.ends_with('.')) text += '.';
            text += " " + remains;
        }
        if (callbacks_.on_error) callbacks_.on_error(error.number(), text);
    }

    // Once a run is stopping, only Stopped is news.
    void Announce(EncoderState state) {
        if (stopping_ && state != EncoderState::Stopped) return;
        if (callbacks_.on_state) callbacks_.on_state(state);
    }
    void AnnounceStopping() {
        Announce(EncoderState::Stopping);
        stopping_ = true;
    }

    EncodePlan plan_;
    RunCallbacks callbacks_;
    LiveParts live_;
    RunStatistics statistics_;
    CountedFile sink_;
    std::unique_ptr<Pass> pass_;

    std::mutex mutex_;
    std::condition_variable changed_;
    int stops_asked_ = 0;
    bool pause_asked_ = false;
    bool pass_ended_ = false;
    std::optional<platform::Error> failure_;
    std::optional<platform::Error> loss_;  // of a live source

    // The control thread's own.
    int stops_honoured_ = 0;
    std::optional<platform::Error> cause_;  // why the run ends before its time
    bool stopping_ = false;
    std::thread control_;
};

EncodingRun::EncodingRun(EncodePlan plan, RunCallbacks callbacks)
    : EncodingRun(std::move(plan), std::move(callbacks), LiveParts{OpenLiveSource}) {}

EncodingRun::EncodingRun(EncodePlan plan, RunCallbacks callbacks, LiveParts live)
    : impl_(std::make_unique<Impl>(std::move(plan), std::move(callbacks), std::move(live))) {}

EncodingRun::~EncodingRun() = default;

void EncodingRun::Start() { impl_->Start(); }
void EncodingRun::Stop() { impl_->Stop(); }
void EncodingRun::Pause() { impl_->SetPaused(true); }
void EncodingRun::Resume() { impl_->SetPaused(false); }

platform::Currency EncodingRun::EncodingTime() const { return impl_->Statistics().EncodingTime(); }
platform::OutputStats EncodingRun::AudioStats() const {
    return impl_->Statistics().Of(MediaKind::Audio);
}
platform::OutputStats EncodingRun::VideoStats() const {
    return impl_->Statistics().Of(MediaKind::Video);
}
platform::OutputStats EncodingRun::TotalStats() const { return impl_->Statistics().Total(); }
platform::FileArchiveStats EncodingRun::FileStats() const { return impl_->Statistics().File(); }

}  // namespace engine
