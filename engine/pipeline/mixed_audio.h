// Two sound devices heard as one.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "engine/base/av/live_source.h"
#include "engine/filters/audio_resampler.h"
#include "platform/error.h"

namespace engine {

/// The sum of what two devices give, 48 kHz stereo, each made to follow the capture clock by
/// itself; what is louder than full scale is cut there. A device that gives nothing for a second
/// is left out until it gives something again; one that fails ends the source.
class MixedAudio : public LiveSource {
  public:
    /// The pool must outlive it.
    MixedAudio(std::unique_ptr<LiveSource> first, std::unique_ptr<LiveSource> second,
               FramePool& frames);
    ~MixedAudio() override;

    bool Read(FrameHandle& frame) override;
    void Wake() override;

  private:
    struct Lane {
        Lane(std::unique_ptr<LiveSource> from, const std::atomic<bool>& woken, FramePool& frames);

        std::unique_ptr<LiveSource> source;
        AudioResampler resampler;
        std::deque<FrameHandle> frames;
        std::thread thread;
    };

    void Listen(Lane& lane);
    Ticks SinceOrigin(const AVFrame& frame);
    bool Take(FrameHandle& frame);

    std::atomic<bool> woken_{false};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Ticks> origin_;  // when the first sample of both was heard
    std::optional<platform::Error> failure_;
    std::int64_t position_ = 0;  // samples since the origin that have been given
    std::array<Lane, 2> lanes_;
};

}  // namespace engine
