#include "platform/host/console_program.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <deque>
#include <exception>
#include <optional>
#include <utility>

#include "platform/host/console_output.h"
#include "platform/host/console_window.h"
#include "platform/host/file_descriptor.h"
#include "platform/host/locale_text.h"
#include "platform/host/stop_signals.h"
#include "platform/text.h"

namespace platform::host {

namespace {

constexpr int kRefused = 1;
constexpr int kFailed = 2;

/// Lines of a terminal, read while the loop runs.
class LineReader {
  public:
    LineReader(ConsoleLoop& loop, int descriptor) : loop_(loop), descriptor_(descriptor) {}

    /// The next line without its end; nothing at the end of the input or once `stopped` is true.
    std::optional<std::string> Next(const std::function<bool()>& stopped) {
        loop_.Watch(descriptor_, [this] { Read(); });
        loop_.RunUntil([&] { return HasLine() || at_end_ || stopped(); });
        loop_.Watch(-1, {});
        if (stopped() || text_.empty()) return std::nullopt;
        const std::size_t end = text_.find('\n');
        std::string line = text_.substr(0, end);
        text_.erase(0, end == std::string::npos ? end : end + 1);
        return line;
    }

  private:
    bool HasLine() const { return text_.find('\n') != std::string::npos; }

    void Read() {
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count > 0) {
            text_.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            at_end_ = true;
        }
    }

    ConsoleLoop& loop_;
    int descriptor_;
    std::string text_;
    bool at_end_ = false;
};

class ConsoleRun {
  public:
    ConsoleRun(const std::vector<std::string>& words, EngineMakers makers,
               const FormMaker& make_form, const ConsoleStreams& streams)
        : streams_(streams),
          output_(streams.output, streams.notes),
          window_(output_, JoinWords(words)),
          signals_(window_.Loop(), [this] { Stop(); }),
          factory_(window_.Loop(), std::move(makers)),
          form_(make_form(window_, factory_)) {
        output_.OnReaderGone([this] {
            stopped_unread_ = true;
            // Later, not at once: the line is written in the middle of the form's work.
            window_.Loop().Post([this] { Stop(); });
        });
        window_.SetForm(*form_);
        form_->Form_Load();
        // The first tick would run a command by itself; here commands come from words only.
        window_.Timer1().SetEnabled(false);
    }

    int RunWords(const std::vector<std::string>& words) {
        Run(words);
        return Finish();
    }

    int RunLines() {
        LineReader lines(window_.Console(), streams_.input);
        const auto stopped = [this] { return IsStopped() || output_.TextLost(); };
        for (;;) {
            output_.WritePrompt("> ");
            const std::optional<std::string> line = lines.Next(stopped);
            if (!line) {
                output_.WriteNote("");  // the shell's prompt comes on a line of its own
                break;
            }
            if (*line == "exit" || *line == "quit") break;
            if (!TrimBlanks(*line).empty()) Run(Split(*line, ' '));
        }
        return Finish();
    }

  private:
    void Run(const std::vector<std::string>& words) {
        form_->RunCommand(words);
        window_.Loop().RunUntil([this] { return !form_->IsBusy(); });
        output_.FlushText();
        output_.ShowProgress("");
    }

    void Stop() {
        if (form_->IsBusy()) form_->cmdStop_Click();
    }

    bool IsStopped() const { return signals_.Received() || stopped_unread_; }

    int Finish() {
        form_->Form_Unload();
        if (IsStopped()) return kStoppedBySignal;
        const int status = form_->ExitStatus();
        return status == 0 && output_.TextLost() ? kFailed : status;
    }

    ConsoleStreams streams_;
    bool stopped_unread_ = false;
    ConsoleOutput output_;
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
        return about.TextLost() ? kFailed : 0;
    }
    const bool on_terminal = ::isatty(streams.input) == 1 && ::isatty(streams.notes) == 1;
    if (words.empty() && !on_terminal) {
        about.WritePrompt(UsageText(program));
        return kRefused;
    }
    UseLocale();
    try {
        ConsoleRun run(words, std::move(makers), make_form, streams);
        return words.empty() ? run.RunLines() : run.RunWords(words);
    } catch (const std::exception& error) {
        about.WriteNote(program.name + ": " + error.what());
        return kFailed;
    }
}

}  // namespace platform::host
