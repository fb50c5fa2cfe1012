#include "platform/host/console_output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/system_error.h"
#include "platform/text.h"

namespace platform::host {

namespace {

std::string WithPlainLineEnds(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n')
            plain.push_back(text[i]);
    return plain;
}

/// 0, or the errno of the write that failed.
int WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return errno;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

/// The first `count` characters.
std::string_view CutTo(std::string_view text, std::size_t count) {
    std::size_t end = text.size();
    while (CharacterCount(text.substr(0, end)) > count) --end;
    return text.substr(0, end);
}

}  // namespace

ConsoleOutput::ConsoleOutput(int text_descriptor, int notes_descriptor)
    : text_descriptor_(text_descriptor),
      notes_descriptor_(notes_descriptor),
      text_on_terminal_(::isatty(text_descriptor) == 1),
      notes_on_terminal_(::isatty(notes_descriptor) == 1) {}

void ConsoleOutput::WriteText(std::string_view text) {
    pending_text_.append(text);
    const std::size_t end = pending_text_.rfind('\n');
    if (end == std::string::npos) return;
    const std::string lines = pending_text_.substr(0, end + 1);
    pending_text_.erase(0, end + 1);
    WriteOut(WithPlainLineEnds(lines));
}

void ConsoleOutput::FlushText() { WriteOut(WithPlainLineEnds(std::exchange(pending_text_, {}))); }

void ConsoleOutput::WriteOut(std::string_view bytes) {
    if (bytes.empty() || text_lost_) return;
    if (text_on_terminal_) ShowProgress("");
    const int code = WriteAll(text_descriptor_, bytes);
    if (code == 0) return;
    text_lost_ = true;
    if (code != EPIPE) {
        WriteNote(SystemError("Cannot write the output", code).description());
    } else if (on_reader_gone_) {
        on_reader_gone_();
    }
}

void ConsoleOutput::WriteNote(std::string_view line) {
    ShowProgress("");
    WriteNotes(WithPlainLineEnds(line) + "\n");
}

void ConsoleOutput::WritePrompt(std::string_view text) {
    ShowProgress("");
    WriteNotes(text);
}

void ConsoleOutput::Beep() {
    if (notes_on_terminal_) WriteNotes("\a");
}

void ConsoleOutput::ShowProgress(const std::string& line) {
    if (!notes_on_terminal_) return;
    // The last column stays free: writing into it makes some terminals wrap.
    const std::string shown(CutTo(line, TerminalWidth() - 1));
    if (shown == progress_) return;
    std::string bytes = "\r" + PadSpaces(shown, CharacterCount(progress_));
    if (shown.empty()) bytes.append("\r");
    WriteNotes(bytes);
    progress_ = shown;
}

void ConsoleOutput::WriteNotes(std::string_view bytes) const {
    // Notes are a courtesy: when nobody can read them any more, the work goes on.
    static_cast<void>(WriteAll(notes_descriptor_, bytes));
}

std::size_t ConsoleOutput::TerminalWidth() const {
    winsize size{};
    constexpr std::size_t kUsualWidth = 80;
    if (::ioctl(notes_descriptor_, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return kUsualWidth;
    return size.ws_col;
}

}  // namespace platform::host
