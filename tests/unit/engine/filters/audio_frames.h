// Frames of sound that a test writes sample by sample.
#pragma once

#include <cstdint>
#include <new>

#include "engine/base/av/av_ptr.h"

namespace audio_frames {

inline constexpr int kRate = 44100;

/// Samples of one channel of 16 bits.
template <typename Sample>
void FillAudio(AVFrame& frame, engine::Ticks time, int samples, Sample&& sample) {
    frame.format = AV_SAMPLE_FMT_S16;
    frame.sample_rate = kRate;
    frame.nb_samples = samples;
    av_channel_layout_default(&frame.ch_layout, 1);
    if (av_frame_get_buffer(&frame, 0) < 0) throw std::bad_alloc();
    auto* out = reinterpret_cast<std::int16_t*>(frame.data[0]);
    for (int i = 0; i < samples; ++i) out[i] = sample(i);
    frame.pts = time.count;
}

}  // namespace audio_frames
