#include "engine/outputs/push/push.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "platform/error.h"

namespace engine::push {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kEndTime = 5s;
constexpr auto kNewsEvery = 200ms;

}  // namespace

Push::Push(PushOutput output, OutputNotices notices)
    : output_(std::move(output)), notices_(std::move(notices)) {}

Push::~Push() { End(); }

void Push::Begin(const OutputHeader& header) {
    stream_ = std::make_unique<LiveStream>(
        header, [this](LivePacketPtr packet) { Take(std::move(packet)); });
    session_ = std::make_unique<PushSession>(output_, stream_->Header());
    session_->Open(output_.ask);
    stats_.server = session_->Name();
    stats_.connected = true;
    thread_ = std::thread([this] { Run(); });
    notices_(fmt::format("Pushing to {}.", session_->Name()));
}

void Push::Write(const CodedFrame& frame) { stream_->Write(frame); }

void Push::Flush() { stream_->Flush(); }

void Push::Take(LivePacketPtr packet) {
    const std::lock_guard lock(mutex_);
    queue_.Push(std::move(packet));
    stats_.frames_dropped += static_cast<std::int64_t>(queue_.TakeWithheld());
    changed_.notify_all();
}

void Push::End() {
    if (!thread_.joinable()) return;
    stream_->Flush();
    {
        std::unique_lock lock(mutex_);
        ending_ = true;
        changed_.notify_all();
        changed_.wait_for(lock, kEndTime, [this] { return done_; });
    }
    session_->Cancel();
    thread_.join();
}

void Push::Run() {
    for (bool going_on = true; going_on;) {
        try {
            going_on = Stream();
        } catch (const platform::Error& error) {
            {
                const std::lock_guard lock(mutex_);
                stats_.connected = false;
                going_on = !ending_;
            }
            if (!going_on) break;
            notices_(
                fmt::format("{}; it is tried again, and all else goes on.", error.description()));
            going_on = Reconnect();
        }
    }
    const std::lock_guard lock(mutex_);
    done_ = true;
    changed_.notify_all();
}

// False when the stream has ended.
bool Push::Stream() {
    session_->Start();
    for (;;) {
        LivePacketPtr packet;
        {
            std::unique_lock lock(mutex_);
            changed_.wait_for(lock, kNewsEvery, [this] { return ending_ || !queue_.IsEmpty(); });
            packet = queue_.Pop();
            if (!packet && ending_) break;
            stats_.bytes_sent = static_cast<std::int64_t>(session_->BytesSent());
        }
        session_->CheckNews();
        if (packet) session_->Send(*packet);
    }
    session_->End();
    const std::lock_guard lock(mutex_);
    stats_.bytes_sent = static_cast<std::int64_t>(session_->BytesSent());
    stats_.connected = false;
    return false;
}

// False when the stream has ended meanwhile.
bool Push::Reconnect() {
    const auto since = Clock::now();
    for (auto pause = output_.first_pause;; pause = std::min(pause * 2, output_.longest_pause)) {
        if (AwaitEnd(pause)) return false;
        try {
            session_->Open();
        } catch (const platform::Error&) {
            continue;  // the person knows
        }
        std::int64_t dropped = 0;
        {
            const std::lock_guard lock(mutex_);
            queue_.BeginAnew();
            stats_.frames_dropped += static_cast<std::int64_t>(queue_.TakeWithheld());
            ++stats_.reconnections;
            stats_.connected = true;
            dropped = stats_.frames_dropped;
        }
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - since).count();
        notices_(fmt::format("Pushing to {} again after {} s; {} frames have been left out so far.",
                             session_->Name(), seconds, dropped));
        return true;
    }
}

bool Push::AwaitEnd(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, time, [this] { return ending_; });
}

void Push::AddTo(platform::NetworkStats& stats) const {
    const std::lock_guard lock(mutex_);
    stats.push = stats_;
}

}  // namespace engine::push
