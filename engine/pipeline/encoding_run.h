// One run of a plan, from the first thread to the finished file.
#pragma once

#include <memory>

#include "engine/base/session_run.h"
#include "engine/plan/encode_plan.h"
#include "platform/encoder.h"

namespace engine {

struct LiveParts;

/// Any thread may ask for statistics, stop, pause and resume; the rest belongs to one thread.
class EncodingRun {
  public:
    /// Opens inputs, encoders and the output. Throws platform::Error; then nothing is left behind.
    EncodingRun(EncodePlan plan, RunCallbacks callbacks);
    EncodingRun(EncodePlan plan, RunCallbacks callbacks, LiveParts live);
    /// Stops gracefully and waits until the file is whole.
    ~EncodingRun();
    EncodingRun(const EncodingRun&) = delete;
    EncodingRun& operator=(const EncodingRun&) = delete;

    void Start();
    /// Graceful: what has been read is encoded and written. Returns at once. Twice is harmless.
    /// Stopped in the first of two passes, the second still goes over what the first has read (a
    /// file without content would help nobody); a stop during the second ends that one too.
    void Stop();
    /// Until Resume or Stop nothing is taken in: a file waits, and what a device gives is left out
    /// of the session, whose time stands still. Both return at once; the state says when it is so.
    void Pause();
    void Resume();

    platform::Currency EncodingTime() const;
    platform::OutputStats AudioStats() const;
    platform::OutputStats VideoStats() const;
    platform::OutputStats TotalStats() const;
    platform::FileArchiveStats FileStats() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace engine
