#include "engine/sources/audio/pulse_meter.h"

#include <algorithm>
#include <cmath>

namespace engine {
namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr pa_sample_spec kPeaks = {PA_SAMPLE_FLOAT32NE, 25, 1};

}  // namespace

PulseMeter::PulseMeter(const std::vector<std::string>& sources) {
    for (const std::string& source : sources) {
        listeners_.push_back(std::make_unique<Listener>());
        listeners_.back()->source = source;
    }
    if (library_.IsComplete()) connection_.emplace(library_);
}

bool PulseMeter::Open(Listener& listener) {
    listener.stream = {library_.stream_new(connection_->Context(), "Level meter", &kPeaks, nullptr),
                       library_.stream_unref};
    if (!listener.stream) return false;
    pa_buffer_attr sizes{};
    sizes.maxlength = static_cast<std::uint32_t>(-1);
    sizes.fragsize = sizeof(float);
    constexpr auto kFlags = static_cast<pa_stream_flags_t>(
        static_cast<unsigned>(PA_STREAM_DONT_MOVE) | static_cast<unsigned>(PA_STREAM_PEAK_DETECT) |
        static_cast<unsigned>(PA_STREAM_ADJUST_LATENCY));
    return library_.stream_connect_record(listener.stream.get(), listener.source.c_str(), &sizes,
                                          kFlags) >= 0;
}

bool PulseMeter::Hear(Listener& listener) {
    const pa_stream_state_t state = library_.stream_get_state(listener.stream.get());
    if (state == PA_STREAM_CREATING) return true;
    if (state != PA_STREAM_READY) return false;
    for (;;) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (library_.stream_peek(listener.stream.get(), &data, &bytes) < 0) return false;
        if (bytes == 0) return true;
        const auto* const peaks = static_cast<const float*>(data);
        if (peaks != nullptr)
            for (std::size_t i = 0; i < bytes / sizeof(float); ++i) {
                const float peak = std::abs(peaks[i]);
                float highest = listener.peak;
                while (peak > highest && !listener.peak.compare_exchange_weak(highest, peak)) {
                }
            }
        library_.stream_drop(listener.stream.get());
    }
}

bool PulseMeter::Run() {
    if (!connection_ || !connection_->Connect(PulseConnection::Clock::now() + kPatience))
        return false;
    for (const auto& listener : listeners_)
        if (!Open(*listener)) return false;
    while (connection_->Turn(std::chrono::microseconds(-1))) {
        if (!connection_->IsUp()) return false;
        for (const auto& listener : listeners_)
            if (!Hear(*listener)) return false;
    }
    return woken_;
}

void PulseMeter::Wake() {
    woken_ = true;
    if (connection_) connection_->Wake();
}

std::vector<double> PulseMeter::TakePeaks() {
    std::vector<double> peaks;
    for (const auto& listener : listeners_) peaks.push_back(listener->peak.exchange(0));
    return peaks;
}

}  // namespace engine
