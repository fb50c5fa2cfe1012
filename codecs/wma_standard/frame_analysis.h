// From samples to the coefficients of frames, with the steps that they had best be quantised by.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wma/attack_detector.h"
#include "codecs/wma/lapped_transform.h"
#include "codecs/wma/masking.h"
#include "codecs/wma_standard/frame.h"
#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

/// How the stream's bits are to be spent.
struct Tuning {
    double bandwidth_hz = 20000;     // what lies above is left out
    double masking = 0.6;            // how far steps follow the ear: 0 = equal steps, 1 = wholly
    double tonality = 0.1;           // how much less tones mask than noise does: 1 = as is usual
    double exponent_weight = 0.006;  // bits that a coefficient loses with a step that is beside
                                     // the wanted one by one exponent; by the square of more
};

/// What the wanted rate makes of it.
Tuning TuningFor(const StreamFormat& format);

/// The format outlives it. One thread.
class FrameAnalysis {
  public:
    FrameAnalysis(const StreamFormat& format, const Tuning& tuning);

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
    // The two channels of a block, before and after they are mixed.
    struct Spectrum {
        std::vector<float> coefficients;
        std::vector<float> allowed;  // noise, of each band
        std::vector<float> steps;    // of each band, in exponents below the block's largest
    };

    std::vector<int> Layout(std::size_t frame_begin);
    void Analyse(Block& block, std::size_t begin, int previous_size, int next_size);
    void Transform(const Block& block, std::size_t begin, int previous_size, int next_size);
    void ChooseShapes(Block& block, const Block* before);
    float WeighSteps(const BlockFormat& sizes);
    int Kept(const BlockFormat& sizes) const;  // coefficients
    bool SumIsCheaper(const BlockFormat& sizes);
    void MixChannels(const BlockFormat& sizes);

    const StreamFormat& format_;
    Tuning tuning_;
    std::vector<Size> sizes_;
    std::vector<wma::AttackDetector> detectors_;
    std::vector<std::vector<float>>
        samples_;              // by channel, from half a frame before the next frame on
    std::vector<int> layout_;  // sizes of the next frame's blocks, by index
    int previous_index_ = 0;
    std::vector<Spectrum> spectra_;
    std::vector<float> weights_;  // of bands' steps
    Frame frame_;
};

}  // namespace codecs::wma_standard
