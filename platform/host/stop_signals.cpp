#include "platform/host/stop_signals.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "platform/exit_status.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

// A run of two passes goes on with the second when its first is stopped.
constexpr int kPatience = 1000;  // milliseconds

/// A blocked signal arrives even where it was set to be ignored, so that has to be looked at here:
/// a shell starts background jobs with SIGINT ignored, nohup does so with SIGHUP.
sigset_t SignalsToTake() {
    sigset_t taken;
    ::sigemptyset(&taken);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        ::sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) ::sigaddset(&taken, number);
    }
    return taken;
}

}  // namespace

void LetWritesFail() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

StopSignals::StopSignals(EventLoop& loop, std::function<void()> on_stop)
    : loop_(loop), on_stop_(std::move(on_stop)) {
    LetWritesFail();
    const sigset_t taken = SignalsToTake();
    ::pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    signals_ = FileDescriptor(::signalfd(-1, &taken, SFD_CLOEXEC));
    quit_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC));
    if (!signals_.IsOpen() || !quit_.IsOpen()) throw SystemError("Cannot watch for signals", errno);
    watcher_ = std::thread([this] { Watch(); });
}

StopSignals::~StopSignals() {
    static_cast<void>(::eventfd_write(quit_.Number(), 1));
    watcher_.join();
    // The signals stay blocked: after the run the process is about to end by itself.
}

void StopSignals::Watch() {
    for (;;) {
        std::array<pollfd, 2> sources{
            {{signals_.Number(), POLLIN, 0}, {quit_.Number(), POLLIN, 0}}};
        if (::poll(sources.data(), sources.size(), received_ ? kPatience : -1) < 0) continue;
        if (sources[1].revents != 0) return;
        if (sources[0].revents != 0) {
            signalfd_siginfo signal{};
            if (::read(signals_.Number(), &signal, sizeof signal) != sizeof signal) continue;
            if (received_.exchange(true)) ::_exit(Number(ExitStatus::StoppedBySignal));
        }
        loop_.Post(on_stop_);
    }
}

}  // namespace platform::host
