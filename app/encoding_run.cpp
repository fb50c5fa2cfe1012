#include "app/encoding_run.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/text.h"
#include "session/error_line.h"

namespace app {

namespace {

constexpr const char* kScreenScheme = "screencap";

/// Whether the session's sources are devices or a screen: files have no scheme.
bool IsRecording(const platform::SessionState& session) {
    const auto is_live = [](const platform::WMEncSource* source) {
        return source != nullptr && !source->Scheme().empty();
    };
    return is_live(session.g_objSrcAud.get()) || is_live(session.g_objSrcVid.get());
}

}  // namespace

/// Hears one encoder for as long as it is the session's.
class EncodingRun::Events final : public platform::WMEncoderEvents {
  public:
    Events(EncodingRun& run, std::shared_ptr<platform::WMEncoder> encoder)
        : run_(run), encoder_(std::move(encoder)) {
        encoder_->SetEvents(this);
    }
    ~Events() override { encoder_->SetEvents(nullptr); }
    Events(const Events&) = delete;
    Events& operator=(const Events&) = delete;

    // A message box of the report lets the user press Go, which replaces this very object: nothing
    // of it may be touched after the call.
    void OnStateChange(platform::EncoderState state) override {
        run_.g_objEncoder_OnStateChange(state);
    }
    void OnError(std::int32_t number, const std::string& description) override {
        run_.g_objEncoder_OnError(number, description);
    }
    void OnNotice(const std::string& text) override {
        if (run_.on_notice_) run_.on_notice_(text);
    }
    platform::CredentialsAnswer OnCredentials(
        const platform::CredentialsQuestion& question) override {
        return run_.AskCredentials(question);
    }

  private:
    EncodingRun& run_;
    const std::shared_ptr<platform::WMEncoder> encoder_;
};

EncodingRun::EncodingRun(platform::FormWindow& window, platform::Factory& factory,
                         platform::SessionState& session, const cli::EncodeSettings& settings,
                         platform::OutputPane& pane, Progress& progress, StatisticsReport& report,
                         WallClock clock)
    : window_(window),
      factory_(factory),
      session_(session),
      settings_(settings),
      pane_(pane),
      progress_(progress),
      report_(report),
      clock_(std::move(clock)) {}

EncodingRun::~EncodingRun() = default;

void EncodingRun::NewSession() {
    Purge();
    auto encoder = factory_.MakeEncoder();
    if (session_.g_objEncoder) ReleaseEncoder();
    events_ = std::make_unique<Events>(*this, encoder);
    session_.g_objEncoder = std::move(encoder);
    session_.ClearSources();
    ++session_number_;
}

void EncodingRun::EndSession() {
    if (session_.g_objEncoder) ReleaseEncoder();
    failed_ = false;
    ++session_number_;
    Purge();
}

void EncodingRun::ReleaseEncoder() {
    events_ = nullptr;
    const auto encoder = std::exchange(session_.g_objEncoder, nullptr);
    if (encoder->RunState() != platform::EncoderState::Stopped) {
        StopEncoder(*encoder);
        window_.SetMousePointer(platform::MousePointer::Default);
        window_.Timer1().SetEnabled(false);
        if (on_state_) on_state_(platform::EncoderState::Stopped);
    }
    // Also when it has stopped: it may be the one whose event is being handled.
    finishing_.push_back(encoder);
    running_ = false;
}

void EncodingRun::Purge() {
    if (event_depth_ > 0) return;
    std::erase_if(finishing_, [](const auto& encoder) {
        return encoder->RunState() == platform::EncoderState::Stopped;
    });
}

bool EncodingRun::IsFinishingOthers() const {
    return std::any_of(finishing_.begin(), finishing_.end(), [](const auto& encoder) {
        return encoder->RunState() != platform::EncoderState::Stopped;
    });
}

void EncodingRun::Stop() {
    stop_asked_ = true;
    StopEncoder(*session_.g_objEncoder);
}

void EncodingRun::PauseOrResume() {
    if (!running_) return;
    platform::WMEncoder& encoder = *session_.g_objEncoder;
    Try([&] {
        if (encoder.RunState() == platform::EncoderState::Paused)
            encoder.Start();
        else
            encoder.Pause();
    });
}

void EncodingRun::StopEncoder(platform::WMEncoder& encoder) {
    Try([&] { encoder.Stop(); });
}

template <typename Action>
void EncodingRun::Try(Action&& action) {
    platform::ErrorTrap trap;
    trap(action);
    if (trap.HasError()) session::OutputErrorLine(pane_, trap.Report());
}

TranscodeResult EncodingRun::Transcode() {
    failed_ = false;
    // Preparing may ask the person something. What they do instead of answering may stop the
    // session, or put another into its place.
    const std::shared_ptr<platform::WMEncoder> session_encoder = session_.g_objEncoder;
    platform::WMEncoder& encoder = *session_encoder;
    const std::uint64_t session = session_number_;
    platform::ErrorTrap trap;
    running_ = true;
    trap([&] { encoder.PrepareToEncode(true); });
    if (session != session_number_) return TranscodeResult::NotPrepared;
    running_ = false;
    if (trap.UnsignedNumber() == platform::kEndMarkPastEnd) {
        // The end mark of -time lies past the end of this source: encode to the end instead.
        platform::ErrorTrap retry;
        if (session_.g_objSrcAud) retry([&] { session_.g_objSrcAud->SetMarkOut(0); });
        if (session_.g_objSrcVid) retry([&] { session_.g_objSrcVid->SetMarkOut(0); });
        retry([&] { encoder.PrepareToEncode(true); });  // Start says what is still wrong
    } else if (trap.HasError()) {
        pane_.OutputError(fmt::format("Prepare to encode failed with error {} {}", trap.Number(),
                                      trap.Description()),
                          trap.Report());
        return TranscodeResult::NotPrepared;
    }
    TellNotes(encoder);
    if (IsRecording(session_) && !AwaitStart(session)) return TranscodeResult::NotPrepared;

    g_encodeError = 0;
    window_.Timer1().SetInterval(1000);
    window_.Timer1().SetEnabled(true);
    progress_.setupProgressBar();

    platform::ErrorTrap start;
    running_ = true;
    start([&] { encoder.Start(); });
    if (session != session_number_) return TranscodeResult::NotStarted;
    if (start.HasError()) {
        running_ = false;
        pane_.OutputError(fmt::format("Start encoder failed with error {} {}", start.Number(),
                                      start.Description()),
                          start.Report());
        return TranscodeResult::NotStarted;
    }
    g_dtStart = clock_();
    return TranscodeResult::Started;
}

// The same holds as for waiting for the start.
platform::CredentialsAnswer EncodingRun::AskCredentials(
    const platform::CredentialsQuestion& question) {
    platform::Timer& timer = window_.Timer1();
    const bool was_enabled = timer.Enabled();
    timer.SetEnabled(false);  // its ticks count the seconds of the run
    platform::CredentialsAnswer answer = window_.AskCredentials(question);
    if (was_enabled && question.wanted()) timer.SetEnabled(true);
    return answer;
}

// What the person does meanwhile may stop the session, or put another into its place.
bool EncodingRun::AwaitStart(std::uint64_t session) {
    stop_asked_ = false;
    running_ = true;
    window_.Timer1().SetEnabled(false);  // its ticks count the seconds that are recorded
    const bool of_screen = session_.g_objSrcVid && session_.g_objSrcVid->Scheme() == kScreenScheme;
    const bool ready = window_.BeforeRecording(
        of_screen, [&] { return session == session_number_ && !stop_asked_; });
    if (session != session_number_) return false;
    running_ = false;
    if (ready) return true;
    const std::string reason = "The recording was stopped before it began.";
    pane_.OutputError(reason, {platform::kUnspecified, reason});
    return false;
}

void EncodingRun::TellNotes(platform::WMEncoder& encoder) {
    for (const std::string& note : encoder.TakeNotes())
        if (notes_told_.insert(note).second) pane_.OutputInfo(note);
}

void EncodingRun::g_objEncoder_OnStateChange(platform::EncoderState state) {
    ++event_depth_;
    const std::uint64_t session = session_number_;
    if (state == platform::EncoderState::Running)
        OnRunning();
    else if (state == platform::EncoderState::Paused)
        window_.lblStatus().SetCaption("  Paused...");
    else if (state == platform::EncoderState::Stopped)
        OnStopped();
    if (session == session_number_ && on_state_) on_state_(state);
    --event_depth_;
}

void EncodingRun::g_objEncoder_OnError(std::int32_t number, const std::string& description) {
    g_encodeError = number;
    encode_error_text_ = description;
    session::OutputErrorLine(pane_, {static_cast<std::uint32_t>(number), description});
}

void EncodingRun::OnRunning() {
    // The tick spells its passes another way; both are meant so.
    window_.lblStatus().SetCaption(fmt::format("  Running... Pass:  {} \\ {}",
                                               progress_.CurrentPass(), progress_.TotalPasses()));
    window_.SetMousePointer(platform::MousePointer::Hourglass);
}

void EncodingRun::OnStopped() {
    running_ = false;
    g_dtEnd = clock_();
    progress_.ShowFigures();  // those of the last tick are a second old
    window_.lblStatus().SetCaption("  Done.");
    window_.SetMousePointer(platform::MousePointer::Default);
    window_.pb1().SetValue(100);
    window_.lblprgs().SetCaption(platform::NumberText(window_.pb1().Value()) + "%");
    window_.Beep();
    window_.cmdGo().SetCaption("&Go");
    window_.Timer1().SetEnabled(false);
    const std::uint64_t session = session_number_;
    if (session_.g_objEncoder) TellNotes(*session_.g_objEncoder);
    if (g_encodeError == 0) {
        pane_.OutputInfo("======== Encoding Completed ========\r\n");
        // Nobody else prints the report, so that a run has one.
        const bool reported = settings_.silent || report_.ShowStatistics(g_dtStart, g_dtEnd);
        // The report's message box may have let another session begin.
        if (session == session_number_) failed_ = !reported;
    } else {
        failed_ = true;
        const auto number = static_cast<std::uint32_t>(g_encodeError);
        pane_.OutputError(fmt::format("Error occurred in transcoding: Error Code = 0x{:X}", number),
                          {number, encode_error_text_});
    }
    window_.txtInfo().ScrollToEnd();
    if (session == session_number_ && on_end_) on_end_(HowItEnded());
}

RunEnd EncodingRun::HowItEnded() const {
    RunEnd how{g_dtStart, g_dtEnd, failed_, {}};
    if (g_encodeError != 0) {
        how.error = {static_cast<std::uint32_t>(g_encodeError), encode_error_text_};
    } else if (failed_) {
        how.error.description = "Output file could not be created.";
    }
    return how;
}

}  // namespace app
