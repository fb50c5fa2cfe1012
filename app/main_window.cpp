#include "app/main_window.h"

#include <cmath>
#include <utility>

#include "app/explain_command.h"
#include "app/save_session_command.h"
#include "cli/help.h"
#include "platform/error.h"
#include "platform/text.h"
#include "session/error_line.h"

namespace app {

namespace {

using platform::ExitStatus;

constexpr const char* kStarting = "Initializing Codecs...";
constexpr int kProgressInterval = 1000;  // milliseconds

bool IsSaveSession(const std::vector<std::string>& words) {
    return !words.empty() && words.front() == kSaveSessionWord;
}

}  // namespace

frmMain::frmMain(platform::FormWindow& window, platform::Factory& factory, WallClock clock)
    : window_(window),
      factory_(factory),
      pane_(window.txtInfo()),
      progress_(window, session_, settings_),
      report_(window, factory, session_, settings_, pane_),
      run_log_(session_, settings_),
      run_(window, factory, session_, settings_, pane_, progress_, report_, std::move(clock)),
      folder_run_(window.Loop(), run_, run_log_),
      encoder_setup_(session_, settings_, pane_, factory),
      directory_mode_(session_, settings_, pane_, encoder_setup_, folder_run_),
      actions_(factory, session_, pane_, report_),
      readers_(pane_),
      parser_(settings_, readers_, pane_, actions_, session_) {
    pane_.OnError([this](const platform::ErrorReport& error) { run_log_.NoteError(error); });
    run_.OnState([this](platform::EncoderState state) { run_log_.TellState(state); });
    run_.OnNotice([this](const std::string& text) { run_log_.TellNotice(text); });
    run_.OnEnd([this](const RunEnd& end) {
        run_log_.EndRun(end);
        if (!folder_run_.IsWalking()) run_log_.EndCommand(Status());
    });
    Form_Initialize();
}

void frmMain::Form_Initialize() {
    window_.SetCaption("Orlavane Tessivo");
    window_.cmdGo().SetCaption("&Go");
    window_.cmdStop().SetCaption("&Stop");
}

void frmMain::Form_Load() {
    g_strInstallDrive.assign(1, 'C');
    window_.Timer1().SetInterval(kProgressInterval);
    window_.Timer1().SetEnabled(true);
}

void frmMain::Form_Unload() { window_.SetMousePointer(platform::MousePointer::Default); }

void frmMain::cmdGo_Click() {
    platform::TextBox& command = window_.txtCmd();
    if (command.Text().empty()) command.SetText(window_.Arguments());
    const std::vector<std::string> words = platform::Split(command.Text(), ' ');
    window_.lblStatus().SetCaption(kStarting);
    if (words.size() < 2)
        OfferDefaultCommand();
    else
        RunWords(words);
}

void frmMain::RunCommand(const std::vector<std::string>& words) {
    g_bAutoStarted = 1;
    window_.lblStatus().SetCaption(kStarting);
    if (words.empty())
        OfferDefaultCommand();
    else
        RunWords(words);
}

void frmMain::RunListing(const std::vector<std::string>& words) {
    if (!IsBusy()) {
        RunWords(words);
        if (g_bAutoStarted == 0) listed_first_ = window_.txtInfo().Text();
        return;
    }
    // A new session would end the run, and a run reads its settings to its end.
    const cli::EncodeSettings settings_of_run = settings_;
    platform::ErrorTrap trap;
    trap([&] {
        if (IsSaveSession(words))
            SaveSessionOf(words);
        else
            parser_.ParseParameters(words);
    });
    settings_ = settings_of_run;
    if (trap.HasError()) session::OutputErrorLine(pane_, trap.Report());
}

bool frmMain::NewSession() {
    if (IsBusy()) return false;
    run_.EndSession();
    settings_ = cli::EncodeSettings();
    session_ = platform::SessionState();
    typed_words_.Forget();
    progress_.Clear();
    window_.lblStatus().SetCaption("New session: nothing is given yet.");
    return true;
}

void frmMain::cmdStop_Click() {
    if (!session_.g_objEncoder && !folder_run_.IsWalking()) return;
    run_log_.NoteStop();
    folder_run_.CancelWalks();
    if (session_.g_objEncoder) run_.Stop();
    window_.Timer1().SetEnabled(false);
    window_.lblStatus().SetCaption("Stopped by user.");
}

void frmMain::PauseOrResume() { run_.PauseOrResume(); }

void frmMain::txtCmd_KeyPress(std::int16_t key) {
    if (key == platform::kEnterKey) cmdGo_Click();
}

void frmMain::Timer1_Timer() {
    if (g_bAutoStarted == 0) {
        // Set first: a first run that walks a folder lets ticks in before it returns.
        g_bAutoStarted = 1;
        cmdGo_Click();
        return;
    }
    run_.Purge();
    progress_.Tick();
}

bool frmMain::IsBusy() const {
    return run_.IsRunning() || run_.IsFinishingOthers() || folder_run_.IsWalking();
}

ExitStatus frmMain::Status() const {
    if (g_nExitStatus != ExitStatus::Done) return g_nExitStatus;
    return run_.HasFailed() ? ExitStatus::Failed : ExitStatus::Done;
}

platform::RunProgress frmMain::Progress() const {
    platform::RunProgress progress;
    progress.input = settings_.input;
    if (!settings_.input.empty() && settings_.duration > 0)
        progress.length_ms = std::llround(*settings_.duration * 1000);
    progress.percent = window_.pb1().Value();
    progress.pass = progress_.CurrentPass();
    progress.passes = progress_.TotalPasses();
    if (!session_.g_objEncoder) return progress;
    progress.state = session_.g_objEncoder->RunState();
    progress.output = run_log_.OutputPath();
    platform::ErrorTrap trap;  // a run that is really broken says so by its events
    platform::WMEncStatistics& statistics = session_.g_objEncoder->Statistics();
    trap([&] { progress.encoded_ms = statistics.EncodingTime().Raw(); });
    trap([&] { progress.total = statistics.WMFOutputStats(); });
    trap([&] { progress.network = statistics.NetworkStats(); });
    if (session_.g_objSrcVid)
        trap([&] {
            const auto video = statistics.StreamOutputStats(platform::SourceType::Video, 0, 0);
            progress.dropped_frames = video.dropped_sample_count.Raw();
            progress.dropped_bytes = video.dropped_byte_count.Raw();
        });
    return progress;
}

platform::FollowingWords frmMain::WordsAfter(const std::string& option) const {
    return app::WordsAfter(option, factory_);
}

platform::CommandReport frmMain::Report() const { return run_log_.Report(Status()); }

void frmMain::SetRunListener(platform::RunListener* listener) { run_log_.SetListener(listener); }

void frmMain::OfferDefaultCommand() {
    g_nExitStatus = ExitStatus::Done;
    run_.ForgetFailure();
    run_log_.BeginCommand();
    window_.Beep();
    window_.lblStatus().SetCaption("Change parameters, then press Go.  (Help is above)");
    window_.txtInfo().SetText("");
    cli::ShowHelp(pane_);
    if (!listed_first_.empty()) {
        window_.txtInfo().AppendText(std::exchange(listed_first_, {}));
        pane_.scrollDisplay();
    }
    window_.txtCmd().SetText("-profile scrna -output " + g_strInstallDrive +
                             ":\\ZELMO\\cap1.wmv -duration 90000");
}

void frmMain::RunWords(const std::vector<std::string>& words) {
    const std::uint64_t command = ++commands_begun_;
    listed_first_.clear();
    g_nExitStatus = ExitStatus::Done;
    run_.ForgetFailure();
    run_log_.BeginCommand();
    ExitStatus status = ExitStatus::Refused;
    try {
        status = RunSession(words);
    } catch (const platform::Error& error) {
        session::OutputErrorLine(pane_, error.report());
    }
    // A command that was given meanwhile has its own status.
    if (command != commands_begun_) return;
    g_nExitStatus = status;
    if (run_log_.IsOfFolder()) {
        if (status != ExitStatus::Refused) run_log_.EndWalk(directory_mode_.Skipped());
        run_log_.EndCommand(status);
    } else if (status != ExitStatus::Done)
        run_log_.RefuseCommand(status);
}

ExitStatus frmMain::RunSession(const std::vector<std::string>& words) {
    if (!words.empty() && words.front() == kExplainWord) {
        ExplainCommand command(window_, factory_, pane_, folder_run_, settings_, session_);
        return command.Explain({words.begin() + 1, words.end()}) ? ExitStatus::Done
                                                                 : ExitStatus::Refused;
    }
    if (IsSaveSession(words)) return SaveSessionOf(words) ? ExitStatus::Done : ExitStatus::Refused;
    run_.NewSession();
    folder_run_.CancelWalks();
    session_.g_objFSO = factory_.MakeFileSystem();
    const bool goes_on = parser_.ParseParameters(words);
    typed_words_.Read(words, parser_.TypedOptions());
    run_log_.NoteCarriedOver(typed_words_.StillInForce(settings_));
    if (!goes_on && parser_.Refused()) run_log_.NoteHint(DidYouMean(words));
    if (!goes_on) return parser_.Refused() ? ExitStatus::Refused : ExitStatus::Done;
    if (!settings_.input.empty() && session_.g_objFSO->FolderExists(settings_.input))
        return RunFolder();
    if (!encoder_setup_.SetupEncoder()) return ExitStatus::Refused;
    settings_.silent = false;  // only a folder's runs go without their reports
    switch (run_.Transcode()) {
        case TranscodeResult::NotPrepared:
            return ExitStatus::Refused;
        case TranscodeResult::NotStarted:
            return ExitStatus::Failed;
        case TranscodeResult::Started:
            break;
    }
    return ExitStatus::Done;  // so far: the stopped state says the rest
}

bool frmMain::SaveSessionOf(const std::vector<std::string>& words) {
    return SaveSession({words.begin() + 1, words.end()}, window_, factory_, pane_, settings_,
                       session_);
}

ExitStatus frmMain::RunFolder() {
    const FolderRun::Walk walk(folder_run_);
    run_log_.BeginFolder();
    const bool walked = directory_mode_.DoDirectoryModeEncoding();
    if (!walked) return ExitStatus::Refused;
    return directory_mode_.AnyFailed() ? ExitStatus::Failed : ExitStatus::Done;
}

}  // namespace app
