#include "engine/pipeline/pauses.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "engine/base/av/av_error.h"

namespace engine {
namespace {

constexpr Ticks kStillOpen{std::numeric_limits<std::int64_t>::max()};

}  // namespace

void Pauses::Begin(Ticks at) { pauses_.push_back({at, kStillOpen}); }

void Pauses::End(Ticks at) {
    if (IsOpen()) pauses_.back().to = std::max(at, pauses_.back().from);
}

bool Pauses::IsOpen() const { return !pauses_.empty() && pauses_.back().to == kStillOpen; }

Ticks Pauses::Recorded(Ticks time) const {
    Ticks recorded = time;
    for (const Pause& pause : pauses_)
        if (time > pause.from) recorded = recorded - (std::min(time, pause.to) - pause.from);
    return recorded;
}

bool Pauses::Covers(Ticks time) const {
    return std::any_of(pauses_.begin(), pauses_.end(),
                       [&](const Pause& pause) { return time >= pause.from && time < pause.to; });
}

bool Pauses::CutAudio(AVFrame& frame) const {
    if (pauses_.empty()) return true;
    const Ticks begin{frame.pts};
    const int rate = frame.sample_rate;
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const auto step = static_cast<std::size_t>(av_get_bytes_per_sample(format)) *
                      static_cast<std::size_t>(frame.ch_layout.nb_channels);
    // The first sample that is heard at that time or later.
    const auto sample_at = [&](Ticks time) {
        if (time <= begin) return 0;
        const Ticks whole{av_rescale_rnd(frame.nb_samples, Ticks::kPerSecond, rate, AV_ROUND_UP)};
        if (time - begin >= whole) return frame.nb_samples;
        const std::int64_t sample =
            av_rescale_rnd((time - begin).count, rate, Ticks::kPerSecond, AV_ROUND_UP);
        return static_cast<int>(std::min<std::int64_t>(sample, frame.nb_samples));
    };
    int kept = 0;
    const auto keep = [&](int from, int to) {
        if (from >= to) return;
        if (kept == 0)
            frame.pts = Recorded(begin + Ticks{av_rescale(from, Ticks::kPerSecond, rate)}).count;
        if (kept != from) {
            CheckAv(av_frame_make_writable(&frame), "Cutting the sound failed");
            std::memmove(frame.data[0] + static_cast<std::size_t>(kept) * step,
                         frame.data[0] + static_cast<std::size_t>(from) * step,
                         static_cast<std::size_t>(to - from) * step);
        }
        kept += to - from;
    };
    int next = 0;
    for (const Pause& pause : pauses_) {
        keep(next, sample_at(pause.from));
        next = std::max(next, sample_at(pause.to));
    }
    keep(next, frame.nb_samples);
    frame.nb_samples = kept;
    return kept > 0;
}

}  // namespace engine
