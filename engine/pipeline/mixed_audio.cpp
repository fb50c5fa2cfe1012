#include "engine/pipeline/mixed_audio.h"

#include <algorithm>
#include <exception>
#include <span>
#include <utility>

namespace engine {
namespace {

constexpr AudioFrameFormat kFormat = {AV_SAMPLE_FMT_FLT, 48'000, 2, 480};
// A second: silence of a suspended device comes by far sooner.
constexpr std::size_t kMostWaiting = 100;

std::span<float> Samples(const AVFrame& frame) {
    return {reinterpret_cast<float*>(frame.data[0]),
            static_cast<std::size_t>(frame.nb_samples) * kFormat.channels};
}

void Add(const AVFrame& other, AVFrame& to) {
    const std::span<float> sum = Samples(to);
    const std::span<const float> more = Samples(other);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] = std::clamp(sum[i] + more[i], -1.0F, 1.0F);
}

}  // namespace

MixedAudio::Lane::Lane(std::unique_ptr<LiveSource> from, const std::atomic<bool>& woken,
                       FramePool& pool)
    : source(std::move(from)),
      resampler(kFormat, Downmix{}, AudioClock::Capture, Ticks{}, woken, pool) {}

MixedAudio::MixedAudio(std::unique_ptr<LiveSource> first, std::unique_ptr<LiveSource> second,
                       FramePool& frames)
    : lanes_{Lane(std::move(first), woken_, frames), Lane(std::move(second), woken_, frames)} {
    for (Lane& lane : lanes_) lane.thread = std::thread([this, &lane] { Listen(lane); });
}

MixedAudio::~MixedAudio() {
    Wake();
    for (Lane& lane : lanes_) lane.thread.join();
}

void MixedAudio::Wake() {
    {
        const std::lock_guard lock(mutex_);
        woken_ = true;
    }
    changed_.notify_all();
    for (const Lane& lane : lanes_) lane.source->Wake();
}

Ticks MixedAudio::SinceOrigin(const AVFrame& frame) {
    const std::lock_guard lock(mutex_);
    if (!origin_) origin_ = Ticks{frame.pts};
    return Ticks{frame.pts} - *origin_;
}

void MixedAudio::Listen(Lane& lane) {
    const FrameSink keep = [&](FrameHandle frame) {
        const std::lock_guard lock(mutex_);
        lane.frames.push_back(std::move(frame));
        changed_.notify_all();
        return !woken_;
    };
    const auto fail = [this](const platform::Error& error) {
        const std::lock_guard lock(mutex_);
        if (!failure_) failure_ = error;
        changed_.notify_all();
    };
    try {
        FrameHandle frame;
        while (lane.source->Read(frame)) {
            frame->pts = SinceOrigin(*frame).count;
            if (!lane.resampler.Push(std::move(frame), keep)) return;
        }
    } catch (const platform::Error& error) {
        fail(error);
    } catch (const std::exception& error) {
        fail({platform::kUnspecified, error.what()});
    }
}

bool MixedAudio::Read(FrameHandle& frame) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (woken_) return false;
        if (Take(frame)) return true;
        if (failure_) throw platform::Error(*failure_);
        changed_.wait(lock);
    }
}

// Frames of both begin at the same multiples of their length; those of a device that was left out
// may come too late.
bool MixedAudio::Take(FrameHandle& frame) {
    auto& first = lanes_[0].frames;
    auto& second = lanes_[1].frames;
    for (Lane& lane : lanes_)
        while (!lane.frames.empty() && lane.frames.front()->pts < position_)
            lane.frames.pop_front();
    const bool both = !first.empty() && !second.empty();
    if (!both && std::max(first.size(), second.size()) < kMostWaiting) return false;
    auto& from = first.empty() ? second : first;
    frame = std::move(from.front());
    from.pop_front();
    if (both) {
        Add(*second.front(), *frame);
        second.pop_front();
    }
    position_ = frame->pts + frame->nb_samples;
    frame->pts = origin_->count + av_rescale(frame->pts, Ticks::kPerSecond, kFormat.sampling_rate);
    return true;
}

}  // namespace engine
