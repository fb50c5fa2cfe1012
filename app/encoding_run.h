// One encoding from its preparation to its stopped state, with the encoder's events in between.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/progress.h"
#include "app/run_log.h"
#include "app/statistics_report.h"
#include "cli/encode_settings.h"
#include "platform/encoder.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"
#include "platform/widgets.h"

namespace app {

enum class TranscodeResult { Started, NotPrepared, NotStarted };

/// Owns the encoders that still have to finish a file. Everything handed over must outlive the
/// object. User-interface thread.
class EncodingRun {
  public:
    EncodingRun(platform::FormWindow& window, platform::Factory& factory,
                platform::SessionState& session, const cli::EncodeSettings& settings,
                platform::OutputPane& pane, Progress& progress, StatisticsReport& report,
                WallClock clock);
    ~EncodingRun();
    EncodingRun(const EncodingRun&) = delete;
    EncodingRun& operator=(const EncodingRun&) = delete;

    /// Puts a new encoder into the session, its events connected, and clears the sources. An
    /// encoder that still runs is told to stop; it finishes its file, but nobody listens to it any
    /// more. Throws Error when no encoder can be made; all stays as it was then.
    void NewSession();

    /// Takes the encoder, if there is one, out of the session, which is left without.
    void EndSession();

    /// Prepares and starts the session's encoder and returns at once; a failure has its line.
    TranscodeResult Transcode();

    /// Stops the session's encoder, which must be there, also before it was started. A failure has
    /// its line.
    void Stop();

    /// Pauses the session's encoder, or lets it go on; nothing where none runs. A failure has its
    /// line.
    void PauseOrResume();

    /// Lets go of encoders that have finished their files.
    void Purge();

    /// Whether the session's encoder was started and has not yet reported its end.
    bool IsRunning() const { return running_; }
    /// Whether an earlier encoder still finishes its file.
    bool IsFinishingOthers() const;
    /// Whether the last run ended in an error, or its report could not be written.
    bool HasFailed() const { return failed_; }
    void ForgetFailure() { failed_ = false; }
    /// Called when the session's encoder has stopped, its lines written.
    void OnEnd(std::function<void(const RunEnd&)> handler) { on_end_ = std::move(handler); }
    /// Called when the session's encoder is in another state, after all else that this leads to;
    /// with Stopped also when the session lets go of one that still runs.
    void OnState(std::function<void(platform::EncoderState)> handler) {
        on_state_ = std::move(handler);
    }
    /// Called with what the session's encoder has the person know.
    void OnNotice(std::function<void(const std::string&)> handler) {
        on_notice_ = std::move(handler);
    }
    /// Counts the sessions, so that one who waits can tell its own from the next.
    std::uint64_t SessionNumber() const { return session_number_; }

  private:
    class Events;

    void g_objEncoder_OnStateChange(platform::EncoderState state);
    void g_objEncoder_OnError(std::int32_t number, const std::string& description);
    void OnRunning();
    void OnStopped();
    bool AwaitStart(std::uint64_t session);
    platform::CredentialsAnswer AskCredentials(const platform::CredentialsQuestion& question);
    void TellNotes(platform::WMEncoder& encoder);
    RunEnd HowItEnded() const;
    void ReleaseEncoder();
    void StopEncoder(platform::WMEncoder& encoder);
    template <typename Action>
    void Try(Action&& action);

    platform::FormWindow& window_;
    platform::Factory& factory_;
    platform::SessionState& session_;
    const cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
    Progress& progress_;
    StatisticsReport& report_;
    const WallClock clock_;

    std::unique_ptr<Events> events_;  // of the session's encoder
    std::vector<std::shared_ptr<platform::WMEncoder>> finishing_;
    std::set<std::string> notes_told_;  // that were written: a walk would repeat them
    std::uint64_t session_number_ = 0;
    int event_depth_ = 0;  // events that are being handled
    std::int32_t g_encodeError = 0;
    std::string encode_error_text_;  // its description
    std::function<void(const RunEnd&)> on_end_;
    std::function<void(platform::EncoderState)> on_state_;
    std::function<void(const std::string&)> on_notice_;
    WallTime g_dtStart;
    WallTime g_dtEnd;
    bool running_ = false;
    bool stop_asked_ = false;  // since the session's encoder was prepared
    bool failed_ = false;
};

}  // namespace app
