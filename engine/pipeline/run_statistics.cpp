#include "engine/pipeline/run_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace engine {
namespace {

using platform::Currency;
using platform::VbrMode;

std::int32_t Limited(double value) {
    return static_cast<std::int32_t>(std::clamp(
        std::round(value), 0.0, static_cast<double>(std::numeric_limits<std::int32_t>::max())));
}

std::int32_t PerSecond(std::int64_t count, Ticks time) {
    return time.count > 0 ? Limited(static_cast<double>(count) / time.Seconds()) : 0;
}

}  // namespace

RunStatistics::RunStatistics(const EncodePlan& plan) {
    if (plan.audio) {
        const AudioPlan& audio = *plan.audio;
        expected_[Index(MediaKind::Audio)] = {
            audio.mode == VbrMode::Quality ? 0 : audio.format.value, audio.format.sampling_rate};
    }
    if (plan.video) {
        const VideoPlan& video = *plan.video;
        expected_[Index(MediaKind::Video)] = {
            video.mode == VbrMode::Quality ? 0 : video.bit_rate_bps, CodedFrameRate(video)};
    }
}

void RunStatistics::BeginPass() {
    const std::lock_guard lock(mutex_);
    counters_ = {};
}

void RunStatistics::Counters::AddRecent(Ticks time, std::int64_t count) {
    const std::int64_t slot = time.count / kSlot;
    // Slots that time has passed over since held another second's bytes.
    const std::int64_t stale = std::min<std::int64_t>(slot - newest_slot, kSlots);
    for (std::int64_t i = 0; i < stale; ++i)
        recent[static_cast<std::size_t>(slot - i) % kSlots] = 0;
    newest_slot = std::max(newest_slot, slot);
    if (newest_slot - slot < static_cast<std::int64_t>(kSlots))
        recent[static_cast<std::size_t>(slot) % kSlots] += count;
}

std::int64_t RunStatistics::Counters::CurrentRate() const {
    const std::int64_t bits = std::accumulate(recent.begin(), recent.end(), std::int64_t{0}) * 8;
    // In the first second less than one has passed.
    const std::int64_t length = std::min(end.count, kSlot * static_cast<std::int64_t>(kSlots));
    return length > 0 ? PerSecond(bits, {length}) : 0;
}

void RunStatistics::Written(MediaKind kind, const CodedFrame& frame) {
    const std::lock_guard lock(mutex_);
    Counters& counters = counters_[Index(kind)];
    const auto bytes = static_cast<std::int64_t>(frame.bytes.size());
    counters.bytes += bytes;
    ++counters.samples;
    counters.audio_samples += frame.audio_samples;
    counters.end = std::max(counters.end, frame.pts + frame.duration);
    counters.AddRecent(frame.pts, bytes);
}

void RunStatistics::Dropped(const DroppedFrames& dropped) {
    const std::lock_guard lock(mutex_);
    Counters& video = counters_[Index(MediaKind::Video)];
    video.drops.rate_control += dropped.frames;
    video.dropped_bytes += dropped.bytes;
}

void RunStatistics::Missed(std::int64_t platform::DropCounts::*why, std::int64_t frames) {
    const std::lock_guard lock(mutex_);
    Counters& video = counters_[Index(MediaKind::Video)];
    video.drops.*why += frames;
    // About what they would have taken.
    if (video.samples > 0) video.dropped_bytes += video.bytes / video.samples * frames;
}

void RunStatistics::FileIs(const OutputResult& file) {
    const std::lock_guard lock(mutex_);
    file_ = file;
}

void RunStatistics::NetworkIs(std::function<platform::NetworkStats()> network) {
    const std::lock_guard lock(mutex_);
    network_ = std::move(network);
}

Ticks RunStatistics::End() const {
    const std::lock_guard lock(mutex_);
    return std::max(counters_[0].end, counters_[1].end);
}

Ticks RunStatistics::End(MediaKind kind) const {
    const std::lock_guard lock(mutex_);
    return counters_[Index(kind)].end;
}

Currency RunStatistics::EncodingTime() const { return Currency::FromRaw(End().Milliseconds()); }

platform::OutputStats RunStatistics::Report(MediaKind kind) const {
    const Counters& counters = counters_[Index(kind)];
    platform::OutputStats stats;
    stats.expected_bit_rate_bps = expected_[Index(kind)].bit_rate_bps;
    stats.expected_sample_rate = expected_[Index(kind)].sample_rate;
    stats.average_bit_rate_bps = PerSecond(counters.bytes * 8, counters.end);
    stats.current_bit_rate_bps = Limited(static_cast<double>(counters.CurrentRate()));
    stats.average_sample_rate = kind == MediaKind::Audio
                                    ? PerSecond(counters.audio_samples, counters.end)
                                    : PerSecond(counters.samples * 1000, counters.end);
    const platform::DropCounts& drops = counters.drops;
    stats.drops = drops;
    stats.dropped_byte_count = Currency::FromRaw(counters.dropped_bytes);
    stats.dropped_sample_count =
        Currency::FromRaw(drops.capture_late + drops.encoder_late + drops.rate_control);
    stats.byte_count = Currency::FromRaw(counters.bytes);
    stats.sample_count = Currency::FromRaw(counters.samples);
    return stats;
}

platform::OutputStats RunStatistics::Of(MediaKind kind) const {
    const std::lock_guard lock(mutex_);
    return Report(kind);
}

platform::OutputStats RunStatistics::Total() const {
    const std::lock_guard lock(mutex_);
    const platform::OutputStats audio = Report(MediaKind::Audio);
    const platform::OutputStats video = Report(MediaKind::Video);
    const std::int64_t bytes = audio.byte_count.Raw() + video.byte_count.Raw();
    const auto sum = [](std::int32_t a, std::int32_t b) {
        return Limited(static_cast<double>(a) + b);
    };
    platform::OutputStats total;
    total.expected_bit_rate_bps = sum(audio.expected_bit_rate_bps, video.expected_bit_rate_bps);
    total.current_bit_rate_bps = sum(audio.current_bit_rate_bps, video.current_bit_rate_bps);
    total.average_bit_rate_bps = PerSecond(bytes * 8, std::max(counters_[0].end, counters_[1].end));
    total.byte_count = Currency::FromRaw(bytes);
    total.sample_count = Currency::FromRaw(audio.sample_count.Raw() + video.sample_count.Raw());
    total.dropped_byte_count = video.dropped_byte_count;
    total.dropped_sample_count = video.dropped_sample_count;
    total.drops = video.drops;
    return total;
}

platform::FileArchiveStats RunStatistics::File() const {
    const std::lock_guard lock(mutex_);
    return {Currency::FromRaw(static_cast<std::int64_t>(file_.bytes)),
            Currency::FromRaw(file_.duration.Milliseconds())};
}

platform::NetworkStats RunStatistics::Network() const {
    const std::lock_guard lock(mutex_);
    return network_ ? network_() : platform::NetworkStats();
}

}  // namespace engine
