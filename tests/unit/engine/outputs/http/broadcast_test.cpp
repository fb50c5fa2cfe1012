// The broadcast while it is written from one thread, watched from another, and clients come and go.
#include "engine/outputs/http/broadcast.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "unit/engine/outputs/http/framed_stream.h"
#include "unit/engine/outputs/live_frames.h"

namespace {

using engine::http::Broadcast;
using framed_stream::Frame;
using framed_stream::HearFrame;
using framed_stream::kEndOfHead;
using framed_stream::kPlay;
using test_support::TcpClient;

platform::BroadcastStats StatsOf(const Broadcast& broadcast) {
    platform::NetworkStats stats;
    broadcast.AddTo(stats);
    return *stats.broadcast;
}

/// Writes frames, each a packet, as far as it is let.
class Writer {
  public:
    explicit Writer(Broadcast& broadcast) : broadcast_(broadcast) {}
    ~Writer() { Stop(); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void LetWrite(int frames) {
        const std::lock_guard lock(mutex_);
        allowed_ += frames;
        changed_.notify_all();
    }
    void AwaitRest() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return allowed_ == 0; });
    }
    void Stop() {
        {
            const std::lock_guard lock(mutex_);
            stops_ = true;
            changed_.notify_all();
        }
        if (thread_.joinable()) thread_.join();
    }

  private:
    void Run() {
        std::unique_lock lock(mutex_);
        for (std::int64_t ms = 0;; ms += 100) {
            changed_.wait(lock, [this] { return stops_ || allowed_ > 0; });
            if (stops_) return;
            lock.unlock();
            broadcast_.Write(frames_.Make(1, ms, ms % 1000 == 0, 2000));
            broadcast_.Flush();
            lock.lock();
            --allowed_;
            changed_.notify_all();
        }
    }

    Broadcast& broadcast_;
    live_frames::Frames frames_;
    std::mutex mutex_;
    std::condition_variable changed_;
    int allowed_ = 0;
    bool stops_ = false;
    std::thread thread_{[this] { Run(); }};
};

class OnAir : public testing::Test {
  protected:
    OnAir() {
        broadcast_.Begin(live_frames::Header());
        watcher_ = std::thread([this] {
            while (watched_) EXPECT_GE(StatsOf(broadcast_).bytes_sent, 0);
        });
    }
    ~OnAir() override {
        watched_ = false;
        watcher_.join();
    }

    TcpClient Joined(int receive_bytes = 0) const {
        TcpClient client(framed_stream::PortOf(StatsOf(broadcast_)), receive_bytes);
        client.Say(kPlay);
        EXPECT_THAT(client.HearUntil(kEndOfHead), testing::StartsWith("HTTP/1.0 200 OK"));
        EXPECT_EQ(HearFrame(client).kind, 'H');
        return client;
    }

    Broadcast broadcast_{{0, "127.0.0.1"}, [](const std::string&) {}};
    std::atomic<bool> watched_ = true;
    std::thread watcher_;
};

TEST_F(OnAir, ReadersLoseNothingWhileOthersJoinStallAndHangUp) {
    Writer writer(broadcast_);
    writer.LetWrite(50);
    TcpClient reader = Joined();
    unsigned number = HearFrame(reader).number;
    std::vector<TcpClient> stalled;
    for (int i = 0; i < 20; ++i) {
        stalled.push_back(Joined(4096));
        TcpClient hangs_up = Joined();
        hangs_up.Hear(100);  // in the middle of a packet
        for (int packets = 0; packets < 20; ++packets) {
            writer.LetWrite(1);
            const Frame frame = HearFrame(reader);
            ASSERT_EQ(frame.kind, 'D');
            ASSERT_EQ(frame.number, ++number);
        }
    }
    writer.Stop();
    broadcast_.Finish();
    Frame last = HearFrame(reader);
    for (; last.kind == 'D'; last = HearFrame(reader)) EXPECT_EQ(last.number, ++number);
    EXPECT_EQ(last.kind, 'E');
    EXPECT_EQ(StatsOf(broadcast_).clients_served, 41);
}

TEST_F(OnAir, APauseKeepsClientsAndLetsOthersJoin) {
    Writer writer(broadcast_);
    writer.LetWrite(25);
    TcpClient before = Joined();
    unsigned number = HearFrame(before).number;
    while (number < 24) ASSERT_EQ(HearFrame(before).number, ++number);
    writer.AwaitRest();
    TcpClient meanwhile = Joined();
    EXPECT_EQ(HearFrame(meanwhile).number, 20U) << "what was shown last";
    EXPECT_EQ(StatsOf(broadcast_).clients, 2);
    writer.LetWrite(30);
    for (unsigned next = 21; next < 55; ++next) ASSERT_EQ(HearFrame(meanwhile).number, next);
    while (number < 54) ASSERT_EQ(HearFrame(before).number, ++number);
    writer.Stop();
    broadcast_.Abandon();
    for (TcpClient* client : {&before, &meanwhile})
        EXPECT_EQ(client->HearAll(), std::string("$E\x04\0\0\0\0\0", 8));
}

}  // namespace
