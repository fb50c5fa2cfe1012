// Makes the encoder that a stream of a plan asks for.
#pragma once

#include <memory>
#include <string>

#include "engine/encoders/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Which pass over the input an encoder serves.
struct EncoderPass {
    int number = 1;
    int count = 1;
    std::string first_report;  // what the first pass reported, for the second
    Ticks length;              // of the picture, as the first pass found it
};

/// The pool must outlive the encoder. Throw platform::Error (invalid argument, not implemented)
/// with the codec named.
std::unique_ptr<VideoEncoder> MakeVideoEncoder(const VideoPlan& plan, const EncoderPass& pass,
                                               PacketPool& packets);
std::unique_ptr<AudioEncoder> MakeAudioEncoder(const AudioPlan& plan, PacketPool& packets);

}  // namespace engine
