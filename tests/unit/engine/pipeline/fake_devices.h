// Live sources that give what a test hands them, at the times that it says.
#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "engine/pipeline/run_parts.h"
#include "platform/error.h"
#include "unit/engine/filters/audio_frames.h"

namespace fake_devices {

using audio_frames::FillAudio;
using audio_frames::kRate;

/// A grey frame; `time` is its pts.
inline void FillFrame(AVFrame& frame, engine::Ticks time, int width, int height, int grey) {
    frame.format = AV_PIX_FMT_BGR0;
    frame.width = width;
    frame.height = height;
    if (av_frame_get_buffer(&frame, 0) < 0) throw std::bad_alloc();
    std::fill_n(frame.data[0], static_cast<std::size_t>(frame.linesize[0] * height),
                static_cast<std::uint8_t>(grey));
    frame.pts = time.count;
}

/// What a source is to give; shared by the test and the source.
class Script {
  public:
    void Frame(std::int64_t ms, int grey = 128, int width = 320, int height = 240) {
        Add([=](AVFrame& frame) {
            FillFrame(frame, engine::Ticks::FromMilliseconds(ms), width, height, grey);
        });
    }
    /// A tenth of a second of silence, which may begin with a click.
    void Audio(std::int64_t ms, bool click = false) {
        Add([=](AVFrame& frame) {
            FillAudio(frame, engine::Ticks::FromMilliseconds(ms), kRate / 10, [=](int i) {
                return static_cast<std::int16_t>(click && i < kRate / 500 ? 29'000 : 0);
            });
        });
    }
    /// A tenth of a second that is as loud as `level`, 1 = full scale.
    void Tone(std::int64_t ms, double level) {
        Add([=](AVFrame& frame) {
            FillAudio(frame, engine::Ticks::FromMilliseconds(ms), kRate / 10, [=](int i) {
                constexpr double kTurn = 2 * 3.14159265358979 * 441 / kRate;
                return static_cast<std::int16_t>(32'767 * level * std::sin(kTurn * i));
            });
        });
    }
    void Fail(const platform::Error& error) {
        const std::lock_guard lock(mutex_);
        failure_ = error;
        changed_.notify_all();
    }
    void Miss(std::int64_t frames) {
        const std::lock_guard lock(mutex_);
        missed_ += frames;
    }
    /// Until the source was asked for more than it has been given.
    void WaitUntilTaken() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return asked_ && frames_.empty(); });
    }

    bool Read(engine::FramePool& pool, engine::FrameHandle& frame) {
        std::unique_lock lock(mutex_);
        asked_ = true;
        changed_.notify_all();
        changed_.wait(lock, [&] { return woken_ || !frames_.empty() || failure_; });
        asked_ = false;
        if (woken_) return false;
        if (frames_.empty()) throw platform::Error(*failure_);
        frame = pool.Get();
        frames_.front()(*frame);
        frames_.pop_front();
        return true;
    }
    void Wake() {
        const std::lock_guard lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }
    std::int64_t TakeMissed() {
        const std::lock_guard lock(mutex_);
        return std::exchange(missed_, 0);
    }
    std::atomic<int> open_devices = 0;

  private:
    void Add(std::function<void(AVFrame&)> frame) {
        const std::lock_guard lock(mutex_);
        frames_.push_back(std::move(frame));
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void(AVFrame&)>> frames_;
    std::optional<platform::Error> failure_;
    std::int64_t missed_ = 0;
    bool woken_ = false;
    bool asked_ = false;
};

class Device : public engine::LiveSource {
  public:
    Device(std::shared_ptr<Script> script, engine::FramePool& pool)
        : script_(std::move(script)), pool_(pool) {
        ++script_->open_devices;
    }
    ~Device() override { --script_->open_devices; }
    bool Read(engine::FrameHandle& frame) override { return script_->Read(pool_, frame); }
    void Wake() override { script_->Wake(); }
    std::int64_t TakeMissed() override { return script_->TakeMissed(); }

  private:
    std::shared_ptr<Script> script_;
    engine::FramePool& pool_;
};

/// What RunParts opens sources with.
inline auto Opening(std::shared_ptr<Script> screen, std::shared_ptr<Script> microphone) {
    return [=](const engine::CapturePlan& plan, engine::FramePool& frames) {
        const bool is_screen = plan.kind == engine::DeviceKind::Screen;
        return std::make_unique<Device>(is_screen ? screen : microphone, frames);
    };
}

}  // namespace fake_devices
