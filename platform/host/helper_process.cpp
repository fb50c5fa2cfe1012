#include "platform/host/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "platform/host/start_attributes.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLook = 100;       // milliseconds between two questions whether to stop
constexpr int kNotLoaded = 127;  // the dynamic linker's exit status

Error CannotStart(const std::string& program, const std::string& reason) {
    return {kUnspecified, "Cannot start the program " + program + ": " + reason +
                              ". Install the program again, whole and with the packages that it "
                              "needs."};
}

/// The only descriptors that the program has.
class StartFiles {
  public:
    explicit StartFiles(int output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~StartFiles() { ::posix_spawn_file_actions_destroy(&actions_); }
    StartFiles(const StartFiles&) = delete;
    StartFiles& operator=(const StartFiles&) = delete;

    const posix_spawn_file_actions_t* Get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

/// Killed where it still runs in the end, and never left as a zombie.
class Child {
  public:
    Child(std::vector<std::string>& words, int output) {
        std::vector<char*> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const StartFiles files(output);
        const StartAttributes attributes;
        const int code = ::posix_spawn(&process_, arguments.front(), files.Get(), attributes.Get(),
                                       arguments.data(), environ);
        if (code != 0) throw CannotStart(words.front(), CauseOf(code).reason);
    }
    ~Child() {
        if (process_ > 0) Kill();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void Kill() {
        ::kill(process_, SIGKILL);
        Wait();
    }
    int Wait() {
        int status = 0;
        pid_t waited = 0;
        do waited = ::waitpid(process_, &status, 0);
        while (waited < 0 && errno == EINTR);
        process_ = 0;
        return waited > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t process_ = 0;
};

}  // namespace

HelperOutput RunHelper(std::vector<std::string> words, HelperLimits limits,
                       const std::function<bool()>& stopped) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw SystemError("Cannot make a pipe", errno);
    const FileDescriptor output(ends[0]);
    FileDescriptor input(ends[1]);
    const std::string program = words.at(0);
    Child child(words, input.Number());
    input = FileDescriptor();  // or the output would never end

    HelperOutput result;
    const auto last_moment = Clock::now() + limits.time;
    for (;;) {
        pollfd readable{output.Number(), POLLIN, 0};
        const int ready = ::poll(&readable, 1, kLook);
        if (stopped()) {
            result.end = HelperOutput::End::Stopped;
            return result;
        }
        if (Clock::now() >= last_moment || result.text.size() > limits.bytes) {
            result.end = HelperOutput::End::TooLong;
            return result;
        }
        if (ready <= 0) continue;
        std::array<char, 65536> buffer{};
        const ssize_t count = ::read(output.Number(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        result.text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    if (child.Wait() == kNotLoaded) throw CannotStart(program, "it lacks a library");
    return result;
}

}  // namespace platform::host
