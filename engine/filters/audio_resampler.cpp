#include "engine/filters/audio_resampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "engine/base/av/av_error.h"
#include "engine/filters/downmix.h"
#include "engine/filters/sample_range.h"

namespace engine {
namespace {

constexpr int kMediaJitterPerSecond = 50;    // a fiftieth of a second
constexpr int kCaptureJitterPerSecond = 20;  // a server's buffers come and go in steps
constexpr int kCorrectionSamples = 1 << 24;  // over which a correction is spread: its resolution
constexpr std::size_t kMaxInputPlanes = 64;  // of libswresample
constexpr std::size_t kMaxChannels = AV_NUM_DATA_POINTERS;
constexpr const char* kSubject = "Conversion of the sound failed";

}  // namespace

AudioResampler::AudioResampler(const AudioFrameFormat& format, const Downmix& downmix,
                               AudioClock clock, Ticks end, const std::atomic<bool>& stop,
                               FramePool& frames)
    : format_(format), downmix_(downmix), clock_(clock), end_(end), stop_(stop), frames_(frames) {
    const int bytes = av_samples_get_buffer_size(nullptr, format.channels, format.frame_samples,
                                                 format.samples, 0);
    CheckAv(bytes, kSubject);
    buffers_.reset(CheckAllocated(av_buffer_pool_init(static_cast<std::size_t>(bytes), nullptr)));
}

AudioResampler::Shape AudioResampler::ShapeOf(const AVFrame& frame) {
    const bool native = frame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE;
    return {frame.sample_rate, frame.format, frame.ch_layout.nb_channels,
            native ? frame.ch_layout.u.mask : 0};
}

bool AudioResampler::Open(const AVFrame& frame, const FrameSink& next) {
    if (resampler_ && !Drain(next)) return false;
    const Shape shape = ShapeOf(frame);
    AVChannelLayout from{};
    AVChannelLayout to{};
    if (shape.mask != 0)
        CheckAv(av_channel_layout_from_mask(&from, shape.mask), kSubject);
    else
        av_channel_layout_default(&from, shape.channels);
    av_channel_layout_default(&to, format_.channels);
    SwrContext* raw = nullptr;
    const int made = swr_alloc_set_opts2(&raw, &to, format_.samples, format_.sampling_rate, &from,
                                         static_cast<AVSampleFormat>(shape.format),
                                         shape.sampling_rate, 0, nullptr);
    resampler_.reset(raw);
    CheckAv(made, kSubject);
    if (shape.channels == 1) {
        // One channel is heard from all as loud as it is; the resampler would share it out.
        const std::vector<double> whole(static_cast<std::size_t>(format_.channels), 1.0);
        CheckAv(swr_set_matrix(resampler_.get(), whole.data(), 1), kSubject);
    }
    if (shape.channels > 2 && format_.channels == 2) {
        const std::vector<double> gains = DownmixGains(from, downmix_);
        if (!gains.empty())
            CheckAv(swr_set_matrix(resampler_.get(), gains.data(), shape.channels), kSubject);
    }
    if (clock_ == AudioClock::Capture) {
        // Resamples also where the rates are the same, at a ratio that may change at any time.
        CheckAv(av_opt_set_int(resampler_.get(), "flags", SWR_FLAG_RESAMPLE, 0), kSubject);
        CheckAv(av_opt_set_int(resampler_.get(), "exact_rational", 0, 0), kSubject);
    }
    CheckAv(swr_init(resampler_.get()), kSubject);
    if (shape_.sampling_rate > 0)
        fed_ = av_rescale(fed_, shape.sampling_rate, shape_.sampling_rate);
    shape_ = shape;
    return true;
}

// Where the next sample comes in the session, in samples of the input's rate.
std::int64_t AudioResampler::Reached() const {
    if (clock_ == AudioClock::Media || !started_) return fed_;
    const std::int64_t written = emitted_ + (output_ ? output_->nb_samples : 0);
    return av_rescale(written, shape_.sampling_rate, format_.sampling_rate) +
           swr_get_delay(resampler_.get(), shape_.sampling_rate);
}

void AudioResampler::FollowDevice(const AVFrame& frame) {
    const double rate = shape_.sampling_rate;
    const double late_s = Ticks{frame.pts}.Seconds() - static_cast<double>(Reached()) / rate;
    const double correction = drift_.Update(late_s, frame.nb_samples / rate);
    CheckAv(swr_set_compensation(resampler_.get(),
                                 static_cast<int>(std::lround(correction * kCorrectionSamples)),
                                 kCorrectionSamples),
            kSubject);
}

bool AudioResampler::Push(FrameHandle frame, const FrameSink& next) {
    if (frame->sample_rate <= 0 || frame->ch_layout.nb_channels <= 0) return true;
    if (ShapeOf(*frame) != shape_ && !Open(*frame, next)) return false;
    HoldSamplesToRange(*frame);

    const int rate = shape_.sampling_rate;
    const bool captured = clock_ == AudioClock::Capture;
    const std::int64_t place = av_rescale(frame->pts, rate, Ticks::kPerSecond);
    const std::int64_t jitter =
        started_ ? rate / (captured ? kCaptureJitterPerSecond : kMediaJitterPerSecond) : 0;
    const std::int64_t reached = Reached();
    std::int64_t skip = 0;
    if (place > reached + jitter) {
        if (!FeedSilence(place - reached, next)) return false;
    } else if (place < reached - jitter) {
        skip = std::min<std::int64_t>(reached - place, frame->nb_samples);
    } else if (captured && started_) {
        FollowDevice(*frame);
    }
    std::int64_t count = frame->nb_samples - skip;
    bool at_end = false;
    if (end_.count > 0) {
        const std::int64_t room = av_rescale(end_.count, rate, Ticks::kPerSecond) - Reached();
        at_end = count >= room;
        count = std::clamp<std::int64_t>(room, 0, count);
    }
    if (count > 0) {
        started_ = true;
        const auto format = static_cast<AVSampleFormat>(frame->format);
        const bool planar = av_sample_fmt_is_planar(format) != 0;
        const std::int64_t step = static_cast<std::int64_t>(av_get_bytes_per_sample(format)) *
                                  (planar ? 1 : shape_.channels);
        std::array<const std::uint8_t*, kMaxInputPlanes> data{};
        const int planes = planar ? shape_.channels : 1;
        if (planes > static_cast<int>(data.size())) throw AvError(AVERROR(EINVAL), kSubject);
        for (int i = 0; i < planes; ++i)
            data[static_cast<std::size_t>(i)] = frame->extended_data[i] + skip * step;
        fed_ += count;
        if (!Convert(data.data(), static_cast<int>(count), next)) return false;
    }
    if (!at_end) return true;
    Finish(next);
    return false;
}

bool AudioResampler::FeedSilence(std::int64_t samples, const FrameSink& next) {
    if (end_.count > 0)
        samples = std::min(
            samples, av_rescale(end_.count, shape_.sampling_rate, Ticks::kPerSecond) - Reached());
    while (samples > 0) {
        if (stop_ && clock_ == AudioClock::Media) return false;
        const int count = static_cast<int>(std::min<std::int64_t>(samples, shape_.sampling_rate));
        CheckAv(swr_inject_silence(resampler_.get(), count), kSubject);
        fed_ += count;
        samples -= count;
        if (!Fetch(next)) return false;
    }
    started_ = true;
    return true;
}

void AudioResampler::NewOutput() {
    output_ = frames_.Get();
    output_->buf[0] = CheckAllocated(av_buffer_pool_get(buffers_.get()));
    output_->format = format_.samples;
    output_->sample_rate = format_.sampling_rate;
    av_channel_layout_default(&output_->ch_layout, format_.channels);
    CheckAv(av_samples_fill_arrays(output_->data, output_->linesize, output_->buf[0]->data,
                                   format_.channels, format_.frame_samples, format_.samples, 0),
            kSubject);
    output_->extended_data = output_->data;
    output_->nb_samples = 0;
    output_->pts = emitted_;
}

bool AudioResampler::Convert(const std::uint8_t** data, int samples, const FrameSink& next) {
    const bool planar = av_sample_fmt_is_planar(format_.samples) != 0;
    const int step = av_get_bytes_per_sample(format_.samples) * (planar ? 1 : format_.channels);
    for (;;) {
        if (!output_) NewOutput();
        std::array<std::uint8_t*, kMaxChannels> to{};
        const std::size_t planes = planar ? static_cast<std::size_t>(format_.channels) : 1;
        for (std::size_t i = 0; i < planes; ++i)
            to[i] = output_->data[i] + static_cast<std::ptrdiff_t>(output_->nb_samples) * step;
        const int room = format_.frame_samples - output_->nb_samples;
        const int got =
            CheckAv(swr_convert(resampler_.get(), to.data(), room, data, samples), kSubject);
        samples = 0;  // the resampler keeps what there was no room for
        output_->nb_samples += got;
        if (output_->nb_samples < format_.frame_samples) return true;
        emitted_ += output_->nb_samples;
        if (!next(std::move(output_))) return false;
    }
}

// To the resampler no samples are one thing, the end of all samples (null) another.
bool AudioResampler::Fetch(const FrameSink& next) {
    static constexpr std::uint8_t kNothing[AV_INPUT_BUFFER_PADDING_SIZE] = {};
    std::array<const std::uint8_t*, kMaxInputPlanes> none{};
    none.fill(kNothing);
    return Convert(none.data(), 0, next);
}

bool AudioResampler::Drain(const FrameSink& next) { return Convert(nullptr, 0, next); }

bool AudioResampler::Finish(const FrameSink& next) {
    if (!resampler_) return true;
    if (!Drain(next)) return false;
    if (!output_ || output_->nb_samples == 0) return true;
    emitted_ += output_->nb_samples;
    return next(std::move(output_));
}

}  // namespace engine
