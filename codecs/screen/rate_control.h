// Decides what a screen's frames may take, and which have to be dropped.
#pragma once

#include <vector>

#include "codecs/common/rate_settings.h"
#include "codecs/screen/encoder.h"

namespace codecs::screen {

/// Coded frames fill leaky buckets, which time drains: the receiver's buffer, which they must not
/// overrun, and one that keeps the average. A frame may
/// take the more the emptier they are: what a still screen saves is there for what moves next.
class RateControl {
  public:
    /// @param frames_per_second  that are expected
    RateControl(const RateSettings& settings, double frames_per_second);

    /// Of the next frame; fills in what it may take.
    void Ask(FrameRequest& request);
    /// Whether a frame of so many bits, at the time of the last request, must not be sent. What is
    /// larger than the receiver's whole buffer is let through once that is empty.
    bool Overruns(double bits) const;
    void Sent(const CodedFrame& frame);
    /// Of a frame that overran.
    void Dropped(const CodedFrame& frame);
    /// Whether the next frame, at the time of the last request, would surely be dropped too: one
    /// was a moment ago, and not even half of it fits by now.
    bool IsHopeless() const;

  private:
    struct Bucket {
        double rate = 0;  // bits a second
        double size = 0;
        bool strict = false;
        double level = 0;
    };

    const RateSettings settings_;
    const double interval_;  // seconds
    std::vector<Bucket> buckets_;
    double seconds_ = 0;  // of the last request
    double dropped_at_ = -1e9;
    double dropped_bits_ = 0;
    bool moves_coarsely_ = false;
    double beside_ = 0;  // bits that a frame takes beside its rectangles, of late
};

}  // namespace codecs::screen
