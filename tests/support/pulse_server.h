// A PulseAudio server of a test's own.
#pragma once

#include "support/commands.h"

namespace test_support {

class PulseServer {
  public:
    /// Starts pulseaudio with these lines of its command language, and waits until it answers.
    PulseServer(const TempFolder& folder, const std::string& commands);

    bool Runs() const { return runs_; }
    /// For PULSE_SERVER.
    std::string Address() const { return "unix:" + socket_; }
    /// Runs pactl on it.
    CommandResult Control(std::vector<std::string> words) const;
    /// Ends it as a crash would.
    void Kill();

  private:
    std::string socket_;
    std::unique_ptr<BackgroundCommand> server_;
    bool runs_ = false;
};

}  // namespace test_support
