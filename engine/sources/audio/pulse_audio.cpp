#include "engine/sources/audio/pulse_audio.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "engine/sources/audio/audio_frames.h"
#include "engine/sources/audio/pulse_connection.h"
#include "engine/sources/audio/sample_clock.h"
#include "platform/error.h"

namespace engine {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kOpeningPatience{5000};
// Also what times of a monitor may be late by: the server keeps back as much as its output could
// still take back, and does not count it.
constexpr milliseconds kFragment{10};
// Silence stays behind, so that audio that comes back finds its place free.
constexpr Ticks kSilenceDelay = Ticks::FromMilliseconds(60);
constexpr Ticks kTimingInterval = Ticks::FromMilliseconds(50);
constexpr Ticks kFirstTimingInterval = Ticks::FromMilliseconds(10);
constexpr int kMostChannels = 8;

struct PositionRow {
    pa_channel_position_t position;
    std::uint64_t channel;
};

// In the order in which FFmpeg's frames have them.
// clang-format off
constexpr PositionRow kPositions[] = {
    // the server's                           FFmpeg's
    {PA_CHANNEL_POSITION_FRONT_LEFT,            AV_CH_FRONT_LEFT},
    {PA_CHANNEL_POSITION_FRONT_RIGHT,           AV_CH_FRONT_RIGHT},
    {PA_CHANNEL_POSITION_MONO,                  AV_CH_FRONT_CENTER},
    {PA_CHANNEL_POSITION_FRONT_CENTER,          AV_CH_FRONT_CENTER},
    {PA_CHANNEL_POSITION_LFE,                   AV_CH_LOW_FREQUENCY},
    {PA_CHANNEL_POSITION_REAR_LEFT,             AV_CH_BACK_LEFT},
    {PA_CHANNEL_POSITION_REAR_RIGHT,            AV_CH_BACK_RIGHT},
    {PA_CHANNEL_POSITION_FRONT_LEFT_OF_CENTER,  AV_CH_FRONT_LEFT_OF_CENTER},
    {PA_CHANNEL_POSITION_FRONT_RIGHT_OF_CENTER, AV_CH_FRONT_RIGHT_OF_CENTER},
    {PA_CHANNEL_POSITION_REAR_CENTER,           AV_CH_BACK_CENTER},
    {PA_CHANNEL_POSITION_SIDE_LEFT,             AV_CH_SIDE_LEFT},
    {PA_CHANNEL_POSITION_SIDE_RIGHT,            AV_CH_SIDE_RIGHT},
};
// clang-format on

struct SourceFacts {
    std::string name;
    std::string description;
    pa_sample_spec samples{};
    pa_channel_map channels{};
};

struct StreamFormat {
    pa_sample_spec samples{};
    pa_channel_map channels{};
    CapturedFormat captured;
};

bool IsCoarse(pa_sample_format_t format) {
    return format == PA_SAMPLE_U8 || format == PA_SAMPLE_ALAW || format == PA_SAMPLE_ULAW ||
           format == PA_SAMPLE_S16LE || format == PA_SAMPLE_S16BE;
}

// The server puts the channels into the order that is asked for, which costs it nothing. Channels
// without a known place stay as they are.
StreamFormat FormatFor(const SourceFacts& source) {
    StreamFormat format;
    format.channels = source.channels;
    const auto channels = std::min<std::uint8_t>(source.channels.channels, kMostChannels);
    format.channels.channels = channels;
    pa_channel_map ordered = format.channels;
    std::uint8_t placed = 0;
    std::uint64_t mask = 0;
    for (const PositionRow& row : kPositions)
        for (std::uint8_t i = 0; i < channels; ++i)
            if (format.channels.map[i] == row.position && (mask & row.channel) == 0) {
                ordered.map[placed++] = row.position;
                mask |= row.channel;
            }
    if (placed == channels)
        format.channels = ordered;
    else
        mask = 0;

    const bool coarse = IsCoarse(source.samples.format);
    format.samples = {coarse ? PA_SAMPLE_S16NE : PA_SAMPLE_FLOAT32NE, source.samples.rate,
                      channels};
    format.captured = {coarse ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLT,
                       static_cast<int>(source.samples.rate), channels, mask};
    return format;
}

void TakeSource(pa_context*, const pa_source_info* info, int end, void* facts) {
    if (end != 0 || info == nullptr) return;
    const bool described = info->description != nullptr && *info->description != '\0';
    static_cast<std::optional<SourceFacts>*>(facts)->emplace(
        SourceFacts{info->name, described ? info->description : info->name, info->sample_spec,
                    info->channel_map});
}

Ticks SystemNow() {
    return {std::chrono::duration_cast<std::chrono::nanoseconds>(
                std::chrono::system_clock::now().time_since_epoch())
                .count() /
            100};
}

constexpr Ticks FromMicroseconds(std::uint64_t count) {
    return {static_cast<std::int64_t>(count) * 10};
}

class PulseAudioSource : public LiveSource {
  public:
    PulseAudioSource(const std::string& source_name, FramePool& frames) {
        if (!library_.IsComplete())
            throw CannotOpen(source_name,
                             "the client library of the sound server, libpulse.so.0, is not "
                             "installed");
        const auto deadline = PulseConnection::Clock::now() + kOpeningPatience;
        connection_.emplace(library_);
        if (!connection_->Connect(deadline))
            throw CannotOpen(source_name,
                             fmt::format("the sound server cannot be reached ({})", Reason()));
        const SourceFacts source = FindSource(source_name, deadline);
        name_ = source.description;
        const StreamFormat format = FormatFor(source);
        frames_.emplace(format.captured, frames);
        clock_.emplace(format.captured.sampling_rate);
        OpenStream(source.name, format, deadline);
    }

    bool Read(FrameHandle& frame) override {
        while (!woken_) {
            CheckAlive();
            FollowSuspension();
            AskForTiming();
            if (Take(frame) || (suspended_ && TakeSilence(frame))) return true;
            const milliseconds patience =
                suspended_ || !clock_->IsSet() ? kFragment / 2 : milliseconds(-1);
            if (!connection_->Turn(patience) && !woken_)
                throw Lost("the connection to the sound server broke");
        }
        return false;
    }

    void Wake() override {
        woken_ = true;
        connection_->Wake();
    }

  private:
    static platform::Error CannotOpen(const std::string& name, const std::string& reason) {
        return {platform::kUnspecified,
                fmt::format("Cannot record from the sound device {}: {}.",
                            name.empty() ? "that is the default" : name, reason)};
    }

    platform::Error Lost(const std::string& reason) const {
        return {platform::kDeviceNotConnected,
                fmt::format("The sound device {} cannot be recorded any more: {}.", name_, reason)};
    }

    // What the server or the connection says.
    std::string Reason() const { return connection_->LastError(); }

    SourceFacts FindSource(const std::string& name, PulseConnection::Clock::time_point deadline) {
        std::optional<SourceFacts> source;
        const bool answered = connection_->Wait(
            library_.context_get_source_info_by_name(
                connection_->Context(), name.empty() ? "@DEFAULT_SOURCE@" : name.c_str(),
                TakeSource, &source),
            deadline);
        if (source) return *source;
        throw CannotOpen(name,
                         answered ? "there is no such device now; connect it, or choose "
                                    "another of the list of devices"
                                  : fmt::format("the sound server does not answer ({})", Reason()));
    }

    void OpenStream(const std::string& source, const StreamFormat& format,
                    PulseConnection::Clock::time_point deadline) {
        stream_.reset(library_.stream_new(connection_->Context(), "Recording", &format.samples,
                                          &format.channels));
        if (!stream_) throw CannotOpen(name_, Reason());
        pa_buffer_attr sizes{};
        sizes.maxlength = static_cast<std::uint32_t>(-1);  // the most that there can be
        sizes.fragsize =
            static_cast<std::uint32_t>(kFragment.count() * format.captured.sampling_rate / 1000 *
                                       format.captured.BytesPerSample());
        constexpr auto kFlags =
            static_cast<pa_stream_flags_t>(static_cast<unsigned>(PA_STREAM_DONT_MOVE) |
                                           static_cast<unsigned>(PA_STREAM_ADJUST_LATENCY));
        if (library_.stream_connect_record(stream_.get(), source.c_str(), &sizes, kFlags) < 0)
            throw CannotOpen(name_, Reason());
        for (;;) {
            const pa_stream_state_t state = library_.stream_get_state(stream_.get());
            if (state == PA_STREAM_READY) return;
            if (state != PA_STREAM_CREATING) throw CannotOpen(name_, Reason());
            if (!connection_->TurnUntil(deadline))
                throw CannotOpen(name_, "the sound server does not answer");
        }
    }

    void CheckAlive() const {
        if (!connection_->IsUp()) throw Lost("the sound server ended or closed the connection");
        if (library_.stream_get_state(stream_.get()) != PA_STREAM_READY)
            throw Lost("it was removed, or the sound server took it away");
    }

    void FollowSuspension() {
        const bool suspended = library_.stream_is_suspended(stream_.get()) == 1;
        if (std::exchange(suspended_, suspended) == suspended) return;
        // What is known of the time held before the break, and so does an answer on its way.
        EndTimingRequest();
        clock_->Restart();
    }

    bool Take(FrameHandle& frame) {
        while (clock_->IsSet()) {
            const void* data = nullptr;
            std::size_t bytes = 0;
            if (library_.stream_peek(stream_.get(), &data, &bytes) < 0) throw Lost(Reason());
            if (bytes == 0) return false;
            const Ticks heard = clock_->TimeOf(position_);
            const auto samples =
                bytes / static_cast<std::size_t>(frames_->Format().BytesPerSample());
            position_ += static_cast<std::int64_t>(samples);
            if (data != nullptr) {  // else the server lost them
                last_pts_ = std::max(last_pts_, heard);
                frame = frames_->New(static_cast<int>(samples), last_pts_);
                std::memcpy(frame->data[0], data, bytes);
                end_ = last_pts_ + frames_->Format().Length(frame->nb_samples);
            }
            library_.stream_drop(stream_.get());
            if (data != nullptr) return true;
        }
        return false;
    }

    bool TakeSilence(FrameHandle& frame) {
        const Ticks now = CaptureNow();
        if (end_ == Ticks{}) end_ = now;
        if (now - end_ < kSilenceDelay) return false;
        last_pts_ = std::max(last_pts_, end_);
        frame = frames_->NewSilence(
            static_cast<int>(kFragment.count() * frames_->Format().sampling_rate / 1000),
            last_pts_);
        end_ = last_pts_ + frames_->Format().Length(frame->nb_samples);
        return true;
    }

    void AskForTiming() {
        const Ticks now = CaptureNow();
        if (timing_ || now - asked_ < (clock_->IsSet() ? kTimingInterval : kFirstTimingInterval))
            return;
        asked_ = now;
        timing_.reset(library_.stream_update_timing_info(
            stream_.get(),
            [](pa_stream*, int success, void* self) {
                static_cast<PulseAudioSource*>(self)->TakeTiming(success != 0);
            },
            this));
    }

    void EndTimingRequest() {
        if (timing_) library_.operation_cancel(timing_.get());
        timing_.reset();
    }

    void TakeTiming(bool success) {
        timing_.reset();
        const pa_timing_info* timing = library_.stream_get_timing_info(stream_.get());
        if (!success || timing == nullptr || timing->write_index <= 0) return;
        // The server's moment is in the system's time, which may be set at any moment; it must have
        // been between question and answer.
        const Ticks now = CaptureNow();
        const Ticks stamped =
            FromMicroseconds(static_cast<std::uint64_t>(timing->timestamp.tv_sec) * 1'000'000 +
                             static_cast<std::uint64_t>(timing->timestamp.tv_usec));
        const Ticks moment = std::clamp(now - (SystemNow() - stamped), asked_, now);
        // What an output plays is heard later than its monitor gives it, by what the output holds.
        clock_->Observe(
            timing->write_index / frames_->Format().BytesPerSample(),
            moment - FromMicroseconds(timing->source_usec) + FromMicroseconds(timing->sink_usec));
    }

    const PulseLibrary library_;
    std::string name_;
    std::optional<PulseConnection> connection_;
    std::unique_ptr<pa_stream, decltype(library_.stream_unref)> stream_{nullptr,
                                                                        library_.stream_unref};
    std::unique_ptr<pa_operation, decltype(library_.operation_unref)> timing_{
        nullptr, library_.operation_unref};
    std::optional<AudioFrames> frames_;
    std::optional<SampleClock> clock_;
    std::atomic<bool> woken_{false};
    bool suspended_ = false;
    std::int64_t position_ = 0;  // samples that the server gave or lost
    Ticks asked_;
    Ticks last_pts_;
    Ticks end_;  // of the last frame
};

}  // namespace

std::unique_ptr<LiveSource> OpenPulseAudio(const std::string& source_name, FramePool& frames) {
    return std::make_unique<PulseAudioSource>(source_name, frames);
}

}  // namespace engine
