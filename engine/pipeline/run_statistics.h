// What a run has written so far: counted by the writer, read by anyone.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>

#include "engine/base/av/encoder.h"
#include "engine/base/coded_frame.h"
#include "engine/base/output_sink.h"
#include "engine/base/session_run.h"
#include "engine/plan/encode_plan.h"
#include "platform/encoder.h"

namespace engine {

/// Any thread. A stream's sample is a video frame or an audio packet; rates of the
/// audio's samples are in Hz. What is counted is the streams' own bytes, without the container's.
class RunStatistics final : public RunFigures {
  public:
    explicit RunStatistics(const EncodePlan& plan);

    /// Counts from 0 again.
    void BeginPass();
    void Written(MediaKind kind, const CodedFrame& frame);
    /// By the encoder, to keep the rate.
    void Dropped(const DroppedFrames& dropped);
    /// Frames of a live source; `why` is the count that they belong to.
    void Missed(std::int64_t platform::DropCounts::*why, std::int64_t frames);
    void FileIs(const OutputResult& file);
    /// Asked whenever somebody wants to know; outlives this object, or is not asked any more.
    void NetworkIs(std::function<platform::NetworkStats()> network);

    platform::Currency EncodingTime() const override;
    platform::OutputStats Of(MediaKind kind) const override;
    platform::OutputStats Total() const override;
    platform::FileArchiveStats File() const override;
    platform::NetworkStats Network() const override;

    /// Where the streams of the running pass, or one of them, end.
    Ticks End() const;
    Ticks End(MediaKind kind) const;

  private:
    // The last second's bytes by tenths of a second.
    static constexpr std::int64_t kSlot = Ticks::kPerSecond / 10;
    static constexpr std::size_t kSlots = 10;

    struct Counters {
        std::int64_t bytes = 0;
        std::int64_t samples = 0;
        std::int64_t audio_samples = 0;
        platform::DropCounts drops;
        std::int64_t dropped_bytes = 0;
        Ticks end;
        std::array<std::int64_t, kSlots> recent{};
        std::int64_t newest_slot = 0;

        void AddRecent(Ticks time, std::int64_t count);
        std::int64_t CurrentRate() const;
    };
    struct Expected {
        std::int32_t bit_rate_bps = 0;
        std::int32_t sample_rate = 0;
    };

    platform::OutputStats Report(MediaKind kind) const;
    static std::size_t Index(MediaKind kind) { return kind == MediaKind::Audio ? 0 : 1; }

    mutable std::mutex mutex_;
    std::array<Expected, 2> expected_;
    std::array<Counters, 2> counters_;
    OutputResult file_;
    std::function<platform::NetworkStats()> network_;
};

}  // namespace engine
