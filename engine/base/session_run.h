// The contract of a run between those who start it and those who make it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/encoder.h"

namespace engine {

/// Called from the run's own threads, one call at a time: Starting, Running, (EndPreprocess and
/// Running again for a second pass), Stopping, Stopped; Paused and Running as asked. An error comes
/// once the pass has come to its end and the file is closed, since it says what is left of it;
/// before Stopping, unless the run was stopping already. A live source that fails ends the run as a
/// stop does: the file is whole and has its name. Nothing is called after Stopped.
struct RunCallbacks {
    std::function<void(platform::EncoderState)> on_state;
    std::function<void(std::int32_t number, const std::string& description)> on_error;
};

/// A run as the encoder object drives it; the contract is EncodingRun's. Destruction stops
/// gracefully and waits.
class SessionRun {
  public:
    virtual ~SessionRun() = default;
    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void Pause() = 0;
    virtual void Resume() = 0;
    virtual platform::Currency EncodingTime() const = 0;
    virtual platform::OutputStats AudioStats() const = 0;
    virtual platform::OutputStats VideoStats() const = 0;
    virtual platform::OutputStats TotalStats() const = 0;
    virtual platform::FileArchiveStats FileStats() const = 0;
};

}  // namespace engine
