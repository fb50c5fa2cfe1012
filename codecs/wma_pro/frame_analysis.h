// From samples to the coefficients of frames, with the steps that they had best be quantised by.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/task_team.h"
#include "codecs/wma/attack_detector.h"
#include "codecs/wma/lapped_transform.h"
#include "codecs/wma/masking.h"
#include "codecs/wma_pro/frame.h"
#include "codecs/wma_pro/stream_format.h"

namespace codecs::wma_pro {

/// How the stream's bits are to be spent.
struct Tuning {
    double bandwidth_hz = 20000;  // what lies above is left out
    double masking = 0.6;         // how far steps follow the ear: 0 = equal steps, 1 = wholly
    int scale_step_db = 3;        // of a scale factor
};

/// What the wanted rate, in bits per second, makes of it.
Tuning TuningFor(const StreamFormat& format, double bit_rate);

/// The format and the team outlive it. One thread.
class FrameAnalysis {
  public:
    /// @param team  works on channels side by side, which changes no output
    FrameAnalysis(const StreamFormat& format, const Tuning& tuning, TaskTeam& team);

    /// Full scale +-1.0, a span a channel, all of one length.
    void Add(std::span<const std::span<const float>> samples);
    /// Enough silence for `frames` more.
    void AddSilence(int frames);
    /// Whether what has been added is enough for the next frame.
    bool HasFrame() const;
    /// The next frame, until the next call.
    Frame& Next();

  private:
    struct Size {
        wma::LappedTransform transform;
        wma::MaskingModel masking;
    };
    // What a thread needs to work on a channel.
    struct Channel {
        std::vector<Size> sizes;
        wma::AttackDetector detector;
        std::vector<float> samples;  // from half a frame before the next frame on
        std::vector<float> spectrum, allowed;
    };

    std::vector<int> Layout(std::size_t frame_begin);
    void Analyse(Block& block, int channel, std::size_t begin, int previous_size, int next_size);
    int Kept(const BlockFormat& sizes, int channel) const;  // coefficients

    const StreamFormat& format_;
    Tuning tuning_;
    TaskTeam& team_;
    int attack_slice_;
    std::vector<Channel> channels_;
    std::vector<int> layout_;  // sizes of the next frame's blocks, by index
    bool first_ = true;        // no frame has been made
    int previous_index_ = 0;
    Frame frame_;
};

}  // namespace codecs::wma_pro
