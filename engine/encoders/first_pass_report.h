// What libavcodec's encoders report of a first pass, as far as the second one is planned by it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace engine {

class FirstPassReport {
  public:
    FirstPassReport() = default;
    /// @param text  the encoder's statistics, one entry a frame
    explicit FirstPassReport(std::string text);

    std::int64_t Frames() const { return frames_; }
    /// Whether all frames together take clearly less than `bits` when each is coded with the
    /// quantiser `coarsest`. The encoder refuses to plan for less.
    bool Fits(double bits, int coarsest) const;
    /// The encoder takes the text apart as it reads it.
    char* Text() { return text_.data(); }

  private:
    std::string text_;
    std::int64_t frames_ = 0;
    double texture_ = 0;  // bits times quantiser
    double fixed_ = 0;    // bits that no quantiser changes
};

}  // namespace engine
