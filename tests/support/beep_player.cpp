#include "support/beep_player.h"

#include <pulse/simple.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace test_support {

namespace {

constexpr int kRate = 48000;
constexpr std::size_t kChunk = kRate / 100;  // samples
constexpr std::uint32_t kAhead = kRate * 2 / 5;
constexpr std::uint32_t kUsual = static_cast<std::uint32_t>(-1);

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

BeepPlayer::BeepPlayer(const std::string& server, const std::string& sink, int period)
    : thread_([=, this] { Play(server, sink, period); }) {}

BeepPlayer::~BeepPlayer() {
    stopped_ = true;
    thread_.join();
}

std::vector<double> BeepPlayer::Heard() const {
    const std::lock_guard lock(mutex_);
    return heard_;
}

void BeepPlayer::Play(const std::string& server, const std::string& sink, int period) {
    const pa_sample_spec format{PA_SAMPLE_S16LE, kRate, 1};
    const pa_buffer_attr sizes{kUsual, kAhead, kUsual, kUsual, 0};
    const std::unique_ptr<pa_simple, decltype(&pa_simple_free)> stream(
        pa_simple_new(server.c_str(), "beeps", PA_STREAM_PLAYBACK, sink.c_str(), "beeps", &format,
                      nullptr, &sizes, nullptr),
        pa_simple_free);
    if (!stream) return;
    const std::vector<std::int16_t> silence(kChunk);
    const std::vector<std::int16_t> beep(kChunk, 20000);
    for (int i = 1; !stopped_; ++i) {
        const bool beeps = i % period == 0;
        if (beeps) {
            const double ahead =
                static_cast<double>(pa_simple_get_latency(stream.get(), nullptr)) / 1e6;
            const std::lock_guard lock(mutex_);
            heard_.push_back(Now() + ahead);
        }
        const std::vector<std::int16_t>& chunk = beeps ? beep : silence;
        pa_simple_write(stream.get(), chunk.data(), chunk.size() * sizeof(chunk[0]), nullptr);
    }
}

}  // namespace test_support
