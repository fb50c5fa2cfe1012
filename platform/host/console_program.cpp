#include "platform/host/console_program.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "platform/host/console_lines.h"
#include "platform/host/console_output.h"
#include "platform/host/console_window.h"
#include "platform/host/json_report.h"
#include "platform/host/locale_text.h"
#include "platform/host/stop_signals.h"
#include "platform/posix/file_descriptor.h"
#include "platform/text.h"

namespace platform::host {

namespace {

/// What the process's words say of the program itself, and the rest of them.
struct ConsoleCall {
    explicit ConsoleCall(const std::vector<std::string>& all) : words(all) {
        json = !words.empty() && words.front() == "--json";
        if (json) words.erase(words.begin());
        read_input = !words.empty() && words.back() == "-" &&
                     (words.size() == 1 || (words.size() == 2 && words.front() == "--explain"));
        if (read_input) words.pop_back();
    }

    bool json = false;
    bool read_input = false;         // commands come from the standard input, a line each
    std::vector<std::string> words;  // one command; of several, the words before each
};

class ConsoleRun : private RunListener {
  public:
    ConsoleRun(const ConsoleCall& call, EngineMakers makers, const FormMaker& make_form,
               const ConsoleStreams& streams)
        : call_(call),
          streams_(streams),
          output_(call.json ? streams.notes : streams.output, streams.notes),
          json_output_(streams.output, streams.notes),
          json_(json_output_),
          window_(output_, JoinWords(call.words)),
          signals_(window_.Loop(), [this] { Stop(); }),
          factory_(window_.Loop(), std::move(makers), [this] { return signals_.Received(); }),
          form_(make_form(window_, factory_)) {
        Results().OnReaderGone([this] {
            stopped_unread_ = true;
            // Later, not at once: the line is written in the middle of the form's work.
            window_.Loop().Post([this] { Stop(); });
        });
        window_.SetForm(*form_);
        window_.SetInput(streams_.input);
        form_->Form_Load();
        // The first tick would run a command by itself; here commands come from words only.
        window_.Timer1().SetEnabled(false);
        form_->SetRunListener(this);
        if (call_.json) ReportAsJson();
    }

    ExitStatus RunWords() {
        Run(call_.words);
        return Finish();
    }

    ExitStatus RunLines() {
        LineReader lines(window_.Console(), streams_.input);
        const bool prompts = !call_.read_input;
        const auto stopped = [this] { return IsStopped() || Results().TextLost(); };
        while (!stopped()) {
            if (prompts) output_.WritePrompt("> ");
            const std::optional<std::string> line = lines.Next(stopped);
            if (!line) {
                if (prompts) output_.WriteNote("");  // the shell's prompt gets its own line
                break;
            }
            if (*line == "exit" || *line == "quit") break;
            const std::string text = TrimBlanks(*line);
            if (text.empty() || text.front() == '#') continue;
            std::vector<std::string> words = call_.words;
            for (std::string& word : Split(*line, ' ')) words.push_back(std::move(word));
            Run(words);
        }
        return Finish();
    }

  private:
    /// Where a program that runs this one reads what came of its commands.
    ConsoleOutput& Results() { return call_.json ? json_output_ : output_; }

    void OnFileEnd(const FileReport& report) override {
        if (call_.json) json_.OnFileEnd(report);
    }
    void OnNotice(const std::string& text) override { output_.WriteNote(text); }

    void Run(const std::vector<std::string>& words) {
        if (call_.json) json_.BeginCommand();
        form_->RunCommand(words);
        window_.Loop().RunUntil([this] { return !form_->IsBusy(); });
        output_.FlushText();
        output_.ShowProgress("");
        // A prompt's user has seen how the others ended.
        const bool is_script = call_.read_input;
        status_ = is_script ? std::max(status_, form_->Status()) : form_->Status();
        if (call_.json) WriteReport(IsStopped() ? ExitStatus::StoppedBySignal : form_->Status());
    }

    void ReportAsJson() {
        output_.HideProgress();
        window_.OnIdle([this](bool ticked) {
            if (!form_->IsBusy()) return;
            const RunProgress progress = form_->Progress();
            if (ticked)
                json_.WriteProgress(progress);
            else
                json_.WriteState(progress);
        });
    }

    void WriteReport(ExitStatus status) {
        CommandReport report = form_->Report();
        // Stopped while it waited for a command: nothing was shown either.
        if (status == ExitStatus::StoppedBySignal && report.last.end == CommandEnd::Shown)
            report.last.end = CommandEnd::Stopped;
        json_.WriteReport(report, status);
        reported_status_ = status;
    }

    void Stop() {
        if (form_->IsBusy()) form_->cmdStop_Click();
    }

    bool IsStopped() const { return signals_.Received() || stopped_unread_; }

    ExitStatus Finish() {
        form_->Form_Unload();
        const ExitStatus status = IsStopped() ? ExitStatus::StoppedBySignal : status_;
        // A signal between two commands, or no command at all, has no report yet.
        const bool untold = !reported_status_ || (IsStopped() && *reported_status_ != status);
        if (call_.json && untold) WriteReport(status);
        return status == ExitStatus::Done && Results().TextLost() ? ExitStatus::Failed : status;
    }

    const ConsoleCall& call_;
    ConsoleStreams streams_;
    bool stopped_unread_ = false;
    ExitStatus status_ = ExitStatus::Done;
    std::optional<ExitStatus> reported_status_;
    ConsoleOutput output_;
    ConsoleOutput json_output_;
    JsonReport json_;
    ConsoleWindow window_;
    StopSignals signals_;
    HostFactory factory_;
    std::unique_ptr<FormEvents> form_;
};

}  // namespace

int RunConsole(const std::vector<std::string>& words, const ProgramInfo& program,
               EngineMakers makers, const FormMaker& make_form, ConsoleStreams streams) {
    OccupyStandardDescriptors();
    ConsoleOutput about(streams.output, streams.notes);
    if (const auto answer = AnswerAboutProgram(program, words)) {
        about.WriteText(*answer);
        return Number(about.TextLost() ? ExitStatus::Failed : ExitStatus::Done);
    }
    const ConsoleCall call(words);
    const bool on_terminal = ::isatty(streams.input) == 1 && ::isatty(streams.notes) == 1;
    if (call.words.empty() && !call.read_input && !on_terminal) {
        about.WritePrompt(UsageText(program));
        if (call.json) WriteJsonFailure(about, "There is no command.", ExitStatus::Refused);
        return Number(ExitStatus::Refused);
    }
    UseLocale();
    try {
        ConsoleRun run(call, std::move(makers), make_form, streams);
        return Number(call.words.empty() || call.read_input ? run.RunLines() : run.RunWords());
    } catch (const std::exception& error) {
        about.WriteNote(program.name + ": " + error.what());
        if (call.json) WriteJsonFailure(about, error.what(), ExitStatus::Failed);
        return Number(ExitStatus::Failed);
    }
}

}  // namespace platform::host
