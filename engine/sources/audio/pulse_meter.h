// The loudness of sources of the PulseAudio server, or of PipeWire's in its place.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/sources/audio/pulse_connection.h"

namespace engine {

/// The server itself looks for the peaks, 25 in a second for each source.
class PulseMeter {
  public:
    /// @param sources  as the server calls them
    explicit PulseMeter(const std::vector<std::string>& sources);

    /// Listens on this thread until Wake. False when the server cannot be reached, has no such
    /// source, or goes.
    bool Run();
    /// Any thread.
    void Wake();
    /// Of each source since the last call, 1 = full scale. Any thread.
    std::vector<double> TakePeaks();

  private:
    struct Listener {
        std::string source;
        std::atomic<float> peak{0};
        std::unique_ptr<pa_stream, void (*)(pa_stream*)> stream{nullptr, nullptr};
    };

    bool Open(Listener& listener);
    bool Hear(Listener& listener);

    std::atomic<bool> woken_{false};
    const PulseLibrary library_;
    std::optional<PulseConnection> connection_;
    std::vector<std::unique_ptr<Listener>> listeners_;
};

}  // namespace engine
