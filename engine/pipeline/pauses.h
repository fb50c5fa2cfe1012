// The times that a recording leaves out.
#pragma once

#include <vector>

#include "engine/base/av/av_ptr.h"
#include "engine/base/ticks.h"

namespace engine {

/// Times come on the capture clock; recorded time is the same clock, standing still during pauses.
class Pauses {
  public:
    void Begin(Ticks at);
    void End(Ticks at);
    bool IsOpen() const;

    Ticks Recorded(Ticks time) const;
    bool Covers(Ticks time) const;
    /// Takes out of packed audio what was heard during pauses, to the sample; its pts becomes
    /// recorded time. False when nothing is left. Throws platform::Error.
    bool CutAudio(AVFrame& frame) const;

  private:
    struct Pause {
        Ticks from;
        Ticks to;
    };
    std::vector<Pause> pauses_;  // one after the other
};

}  // namespace engine
