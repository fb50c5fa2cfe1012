#include "engine/filters/sample_range.h"

#include <algorithm>
#include <span>

#include "codecs/wma/sample_range.h"
#include "engine/base/av/av_error.h"

namespace engine {
namespace {

template <typename Sample>
void HoldToRange(AVFrame& frame) {
    const bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
    const int channels = frame.ch_layout.nb_channels;
    const auto values = static_cast<std::size_t>(frame.nb_samples) *
                        static_cast<std::size_t>(planar ? 1 : channels);
    for (int plane = 0; plane < (planar ? channels : 1); ++plane) {
        const auto samples = [&] {
            return std::span(reinterpret_cast<Sample*>(frame.extended_data[plane]), values);
        };
        if (std::ranges::all_of(samples(), codecs::wma::IsInRange<Sample>)) continue;
        // A decoder may still predict from what it has given out.
        CheckAv(av_frame_make_writable(&frame), "A frame of sound cannot be changed");
        std::ranges::transform(samples(), samples().begin(), codecs::wma::InRange<Sample>);
    }
}

}  // namespace

void HoldSamplesToRange(AVFrame& frame) {
    const AVSampleFormat packed =
        av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format));
    if (packed == AV_SAMPLE_FMT_FLT) HoldToRange<float>(frame);
    if (packed == AV_SAMPLE_FMT_DBL) HoldToRange<double>(frame);
}

}  // namespace engine
