#include "platform/host/console_credentials.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "platform/host/console_lines.h"
#include "platform/posix/file_descriptor.h"
#include "platform/text.h"

namespace platform::host {

namespace {

/// The terminal shows line ends alone while it lives.
class SilentTyping {
  public:
    explicit SilentTyping(int terminal) : terminal_(terminal) {
        changed_ = ::tcgetattr(terminal_, &usual_) == 0;
        if (!changed_) return;
        termios silent = usual_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ECHONL;
        changed_ = ::tcsetattr(terminal_, TCSAFLUSH, &silent) == 0;
    }
    ~SilentTyping() {
        if (changed_) ::tcsetattr(terminal_, TCSAFLUSH, &usual_);
    }
    SilentTyping(const SilentTyping&) = delete;
    SilentTyping& operator=(const SilentTyping&) = delete;

    bool IsSilent() const { return changed_; }

  private:
    int terminal_;
    termios usual_{};
    bool changed_ = false;
};

void Show(int terminal, const std::string& text) {
    std::string_view left(text);
    while (!left.empty()) {
        const ssize_t count = ::write(terminal, left.data(), left.size());
        if (count <= 0) return;
        left.remove_prefix(static_cast<std::size_t>(count));
    }
}

// By its own name: the input may be open for reading only.
FileDescriptor OpenTerminal(int input) {
    std::array<char, 256> name{};
    if (::ttyname_r(input, name.data(), name.size()) != 0) return {};
    return FileDescriptor(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
}

}  // namespace

CredentialsAnswer AskOnTerminal(ConsoleLoop& loop, int input, const CredentialsQuestion& question) {
    const FileDescriptor terminal = OpenTerminal(input);
    if (!terminal.IsOpen()) return {};
    LineReader lines(loop, terminal.Number());
    const auto stopped = [&] { return !question.wanted(); };
    Show(terminal.Number(), question.refused
                                ? "The user name or the password is wrong.\n"
                                : "The server " + question.server + " wants to know who pushes.\n");
    Show(terminal.Number(), "User name: ");
    const std::optional<std::string> user = lines.Next(stopped);
    if (!user || TrimBlanks(*user).empty()) return {};
    // Before the question, or who answers quickly would be seen.
    const SilentTyping silence(terminal.Number());
    if (!silence.IsSilent()) return {};
    Show(terminal.Number(), "Password: ");
    const std::optional<std::string> password = lines.Next(stopped);
    if (!password) return {};
    return Credentials{TrimBlanks(*user), *password};
}

}  // namespace platform::host
