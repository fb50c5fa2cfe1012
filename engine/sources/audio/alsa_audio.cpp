#include "engine/sources/audio/alsa_audio.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <optional>
#include <vector>

#include "engine/sources/audio/alsa_errors.h"
#include "engine/sources/audio/audio_frames.h"
#include "engine/sources/audio/sample_clock.h"
#include "platform/error.h"
#include "platform/posix/event_fd.h"

namespace engine {
namespace {

constexpr unsigned kBufferMicroseconds = 500'000;  // what a busy machine may be late by
constexpr unsigned kPeriodMicroseconds = 10'000;
constexpr int kFramesPerSecond = 50;

struct FormatRow {
    snd_pcm_format_t device;
    AVSampleFormat frame;
};

// In the order in which they are wanted.
constexpr FormatRow kFormats[] = {
    {SND_PCM_FORMAT_S16, AV_SAMPLE_FMT_S16},
    {SND_PCM_FORMAT_S32, AV_SAMPLE_FMT_S32},
    {SND_PCM_FORMAT_FLOAT, AV_SAMPLE_FMT_FLT},
    {SND_PCM_FORMAT_U8, AV_SAMPLE_FMT_U8},
};

constexpr unsigned kRates[] = {48000, 44100};

using PcmPtr = std::unique_ptr<snd_pcm_t, int (*)(snd_pcm_t*)>;

platform::Error CannotOpen(const std::string& pcm, const std::string& reason) {
    return {platform::kUnspecified,
            fmt::format("Cannot record from the sound device {}: {}.", pcm, reason)};
}

PcmPtr OpenPcm(const std::string& pcm) {
    snd_pcm_t* opened = nullptr;
    const int result = snd_pcm_open(&opened, pcm.c_str(), SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK);
    if (result == -EBUSY) throw CannotOpen(pcm, "another program uses it");
    if (result == -ENOENT || result == -ENODEV)
        throw CannotOpen(pcm,
                         "there is no such device now; connect it, or choose another of the list "
                         "of devices");
    if (result < 0) throw CannotOpen(pcm, snd_strerror(result));
    return {opened, snd_pcm_close};
}

// The device's own format; absent when it has none that a frame can hold.
std::optional<CapturedFormat> Negotiate(const PcmPtr& device, const std::string& pcm) {
    const auto check = [&](int result) {
        if (result < 0) throw CannotOpen(pcm, snd_strerror(result));
    };
    snd_pcm_hw_params_t* allocated = nullptr;
    check(snd_pcm_hw_params_malloc(&allocated));
    const std::unique_ptr<snd_pcm_hw_params_t, void (*)(snd_pcm_hw_params_t*)> wanted(
        allocated, snd_pcm_hw_params_free);
    check(snd_pcm_hw_params_any(device.get(), wanted.get()));
    check(snd_pcm_hw_params_set_access(device.get(), wanted.get(), SND_PCM_ACCESS_RW_INTERLEAVED));
    const auto* format =
        std::find_if(std::begin(kFormats), std::end(kFormats), [&](const FormatRow& row) {
            return snd_pcm_hw_params_set_format(device.get(), wanted.get(), row.device) == 0;
        });
    if (format == std::end(kFormats)) return std::nullopt;

    snd_pcm_hw_params_set_rate_resample(device.get(), wanted.get(), 0);  // done better elsewhere
    unsigned rate = kRates[0];
    if (std::none_of(std::begin(kRates), std::end(kRates), [&](unsigned each) {
            rate = each;
            return snd_pcm_hw_params_set_rate(device.get(), wanted.get(), each, 0) == 0;
        })) {
        rate = kRates[0];
        check(snd_pcm_hw_params_set_rate_near(device.get(), wanted.get(), &rate, nullptr));
    }
    unsigned channels = 2;
    check(snd_pcm_hw_params_set_channels_near(device.get(), wanted.get(), &channels));
    unsigned buffer = kBufferMicroseconds;
    unsigned period = kPeriodMicroseconds;
    snd_pcm_hw_params_set_period_time_near(device.get(), wanted.get(), &period, nullptr);
    snd_pcm_hw_params_set_buffer_time_near(device.get(), wanted.get(), &buffer, nullptr);
    check(snd_pcm_hw_params(device.get(), wanted.get()));
    return CapturedFormat{format->frame, static_cast<int>(rate), static_cast<int>(channels)};
}

// Times on the captures' clock; a device that has none leaves them out.
void AskForTimes(const PcmPtr& device) {
    snd_pcm_sw_params_t* allocated = nullptr;
    if (snd_pcm_sw_params_malloc(&allocated) < 0) return;
    const std::unique_ptr<snd_pcm_sw_params_t, void (*)(snd_pcm_sw_params_t*)> wanted(
        allocated, snd_pcm_sw_params_free);
    snd_pcm_sw_params_current(device.get(), wanted.get());
    snd_pcm_sw_params_set_tstamp_mode(device.get(), wanted.get(), SND_PCM_TSTAMP_ENABLE);
    snd_pcm_sw_params_set_tstamp_type(device.get(), wanted.get(), SND_PCM_TSTAMP_TYPE_MONOTONIC);
    snd_pcm_sw_params(device.get(), wanted.get());
}

class AlsaAudioSource : public LiveSource {
  public:
    AlsaAudioSource(const std::string& pcm, FramePool& frames) : pcm_(pcm), device_(OpenPcm(pcm)) {
        std::optional<CapturedFormat> format = Negotiate(device_, pcm_);
        if (!format) {  // ALSA then converts
            device_.reset();
            device_ = OpenPcm(fmt::format("plug:\"{}\"", pcm));
            format = Negotiate(device_, pcm_);
        }
        if (!format) throw CannotOpen(pcm_, "it has no format that can be recorded");
        AskForTimes(device_);
        frames_.emplace(*format, frames);
        clock_.emplace(format->sampling_rate);
        if (wake_up_.Descriptor() < 0)
            throw CannotOpen(pcm_, "the program has too many files open");
        if (const int result = snd_pcm_start(device_.get()); result < 0)
            throw CannotOpen(pcm_, snd_strerror(result));
    }

    bool Read(FrameHandle& frame) override {
        const SilentAlsaErrors silent;
        while (!woken_) {
            CheckState();
            if (Take(frame)) return true;
            Wait();
        }
        return false;
    }

    void Wake() override {
        woken_ = true;
        wake_up_.Write();
    }

  private:
    void CheckState() {
        switch (snd_pcm_state(device_.get())) {
            case SND_PCM_STATE_XRUN:
                return Recover(-EPIPE);
            case SND_PCM_STATE_SUSPENDED:
                return Recover(-ESTRPIPE);
            case SND_PCM_STATE_DISCONNECTED:
                return Recover(-ENODEV);
            default:
                return;
        }
    }

    // Goes on after samples were lost; what cannot be gone on from is thrown.
    void Recover(int error) {
        if (error == -EPIPE || error == -ESTRPIPE) {
            clock_->Restart();
            error = snd_pcm_recover(device_.get(), error, 1);
            if (error == 0) error = snd_pcm_start(device_.get());
            if (error == 0) return;
        }
        throw platform::Error(
            platform::kDeviceNotConnected,
            fmt::format("The sound device {} cannot be recorded any more: {}.", pcm_,
                        error == -ENODEV ? "it was removed" : snd_strerror(error)));
    }

    bool Take(FrameHandle& frame) {
        const snd_pcm_sframes_t updated = snd_pcm_avail_update(device_.get());
        snd_pcm_uframes_t available = 0;
        snd_htimestamp_t stamp{};
        if (updated == 0) return false;
        const int result = updated < 0 ? static_cast<int>(updated)
                                       : snd_pcm_htimestamp(device_.get(), &available, &stamp);
        if (result < 0) {
            Recover(result);
            return false;
        }
        if (available == 0) return false;
        const std::int64_t end = position_ + static_cast<std::int64_t>(available);
        if (end > observed_ || !clock_->IsSet()) {
            const Ticks stamped{stamp.tv_sec * Ticks::kPerSecond + stamp.tv_nsec / 100};
            clock_->Observe(end, stamped == Ticks{} ? CaptureNow() : stamped);
            observed_ = end;
        }

        const int wanted = static_cast<int>(std::min<snd_pcm_uframes_t>(
            available,
            static_cast<snd_pcm_uframes_t>(frames_->Format().sampling_rate / kFramesPerSecond)));
        const Ticks pts = std::max(last_pts_, clock_->TimeOf(position_));
        FrameHandle taken = frames_->New(wanted, pts);
        const snd_pcm_sframes_t count =
            snd_pcm_readi(device_.get(), taken->data[0], static_cast<snd_pcm_uframes_t>(wanted));
        if (count == -EAGAIN || count == 0) return false;
        if (count < 0) {
            Recover(static_cast<int>(count));
            return false;
        }
        taken->nb_samples = static_cast<int>(count);
        position_ += count;
        last_pts_ = pts;
        frame = std::move(taken);
        return true;
    }

    void Wait() {
        const auto count =
            static_cast<std::size_t>(std::max(snd_pcm_poll_descriptors_count(device_.get()), 0));
        waited_.resize(count + 1);
        snd_pcm_poll_descriptors(device_.get(), waited_.data(), static_cast<unsigned>(count));
        waited_.back() = {wake_up_.Descriptor(), POLLIN, 0};
        poll(waited_.data(), waited_.size(), -1);
        unsigned short happened = 0;  // some plug-ins do their work here
        snd_pcm_poll_descriptors_revents(device_.get(), waited_.data(),
                                         static_cast<unsigned>(count), &happened);
    }

    std::string pcm_;
    PcmPtr device_;
    std::optional<AudioFrames> frames_;
    std::optional<SampleClock> clock_;
    const platform::EventFd wake_up_;
    std::atomic<bool> woken_{false};
    std::int64_t position_ = 0;  // samples read
    std::int64_t observed_ = 0;
    Ticks last_pts_;
    std::vector<pollfd> waited_;
};

}  // namespace

std::unique_ptr<LiveSource> OpenAlsaAudio(const std::string& pcm, FramePool& frames) {
    const SilentAlsaErrors silent;
    return std::make_unique<AlsaAudioSource>(pcm, frames);
}

}  // namespace engine
