// Frames of sound that a test writes sample by sample.
#pragma once

#include <cstdint>
#include <new>
#include <vector>

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

/// The same values in both channels.
template <typename Value>
void FillStereo(AVFrame& frame, AVSampleFormat format, const std::vector<Value>& samples) {
    frame.format = format;
    frame.sample_rate = kRate;
    frame.nb_samples = static_cast<int>(samples.size());
    av_channel_layout_default(&frame.ch_layout, 2);
    if (av_frame_get_buffer(&frame, 0) < 0) throw std::bad_alloc();
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        for (std::size_t c = 0; c < 2; ++c)
            reinterpret_cast<Value*>(frame.data[planar ? c : 0])[planar ? i : 2 * i + c] =
                samples[i];
    frame.pts = 0;
}

}  // namespace audio_frames
