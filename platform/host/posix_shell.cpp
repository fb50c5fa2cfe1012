#include "platform/host/posix_shell.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <utility>

#include "platform/error.h"
#include "platform/host/start_attributes.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

void WaitForEnd(pid_t process) {
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

std::vector<std::string> SplitCommand(const std::string& command) {
    std::vector<std::string> words;
    bool quoted = false;
    bool in_word = false;
    for (const char c : command) {
        if (c == ' ' && !quoted) {
            in_word = false;
            continue;
        }
        if (!std::exchange(in_word, true)) words.emplace_back();
        if (c == '"') {
            quoted = !quoted;
        } else {
            words.back().push_back(c);
        }
    }
    return words;
}

PosixShell::PosixShell(PathNames names) : names_(std::move(names)) {}

void PosixShell::Run(const std::string& command, WindowStyle /*style*/, bool wait) {
    std::vector<std::string> words = SplitCommand(command);
    if (words.empty() || words.front().empty())
        throw Error(kInvalidArgument, "No program to start was given. Name one.");

    const bool searched = words.front().find_first_of("/\\:") == std::string::npos;
    const std::string program = searched ? words.front() : names_.AbsolutePath(words.front());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    const StartAttributes attributes;
    pid_t process = 0;
    const auto start = searched ? &::posix_spawnp : &::posix_spawn;
    const int code =
        start(&process, program.c_str(), nullptr, attributes.Get(), arguments.data(), environ);
    if (code != 0) throw SystemError("Cannot start the program " + program, code);

    if (wait) {
        WaitForEnd(process);
    } else {
        std::thread(WaitForEnd, process).detach();
    }
}

}  // namespace platform::host
