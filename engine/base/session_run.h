// The contract of a run between those who start it and those who make it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/base/stream_header.h"
#include "platform/encoder.h"

namespace engine {

/// Called from the run's own threads, one call at a time: Starting, Running, (EndPreprocess and
/// Running again for a second pass), Stopping, Stopped; Paused and Running as asked. An error comes
/// once the pass has come to its end and the file is closed, since it says what is left of it;
/// before Stopping, unless the run was stopping already. A live source that fails, or a file that
/// was cut off, ends the run as a stop does: the output is whole and has its name. Nothing is
/// called after Stopped.
struct RunCallbacks {
    std::function<void(platform::EncoderState)> on_state;
    std::function<void(std::int32_t number, const std::string& description)> on_error;
    std::function<void(const std::string& text)> on_notice;  // what outputs have to say
};

/// What a run has written so far. Any thread.
class RunFigures {
  public:
    virtual ~RunFigures() = default;
    virtual platform::Currency EncodingTime() const = 0;
    virtual platform::OutputStats Of(MediaKind kind) const = 0;
    virtual platform::OutputStats Total() const = 0;
    virtual platform::FileArchiveStats File() const = 0;
    virtual platform::NetworkStats Network() const { return {}; }
};

/// One run of a plan. Any thread may stop, pause, resume and ask for figures; the rest belongs to
/// one thread. Destruction stops gracefully and waits until the outputs are whole.
class SessionRun {
  public:
    virtual ~SessionRun() = default;
    virtual void Start() = 0;
    /// Graceful: what has been read is encoded and written. Returns at once. Twice is harmless.
    /// Stopped in the first of two passes, the second still goes over what the first has read (a
    /// file without content would help nobody); a stop during the second ends that one too.
    virtual void Stop() = 0;
    /// Until Resume or Stop nothing is taken in: a file waits, and what a device gives is left out
    /// of the session, whose time stands still. Both return at once; the state says when it is so.
    virtual void Pause() = 0;
    virtual void Resume() = 0;
    /// Lines about what was met on the way, each once.
    virtual std::vector<std::string> TakeNotes() { return {}; }
    virtual const RunFigures& Figures() const = 0;
};

}  // namespace engine
