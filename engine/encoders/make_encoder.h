// Makes the encoder that a stream of a plan asks for.
#pragma once

#include <memory>
#include <vector>

#include "codecs/common/two_pass_plan.h"
#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Which pass over the input an encoder serves.
struct EncoderPass {
    int number = 1;
    int count = 1;
    Ticks length;  // of the picture, as far as it is known; 0 = unknown
    // What the first pass found, for the second.
    std::vector<codecs::FirstPassGop> first_report;
    std::vector<float> first_audio;
};

/// The pool must outlive the encoder. Throw platform::Error (invalid argument, not implemented)
/// with the codec named.
std::unique_ptr<VideoEncoder> MakeVideoEncoder(const VideoPlan& plan, const EncoderPass& pass,
                                               CodedFramePool& packets);
std::unique_ptr<AudioEncoder> MakeAudioEncoder(const AudioPlan& plan, const EncoderPass& pass,
                                               CodedFramePool& packets);

}  // namespace engine
