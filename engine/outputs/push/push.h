// The push as an output: the stream goes to a server, which hands it out.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "engine/base/output_sink.h"
#include "engine/outputs/live/live_queue.h"
#include "engine/outputs/live/live_stream.h"
#include "engine/outputs/push/push_session.h"
#include "engine/plan/encode_plan.h"

namespace engine::push {

/// What is lost on the way disturbs nobody: the connection is made again and again, with growing
/// pauses, and the stream goes on at a key frame.
class Push final : public OutputSink {
  public:
    Push(PushOutput output, OutputNotices notices);
    ~Push() override;
    Push(const Push&) = delete;
    Push& operator=(const Push&) = delete;

    /// Sets the session up: who is not let in is told here.
    void Begin(const OutputHeader& header) override;
    void Write(const CodedFrame& frame) override;
    void Flush() override;
    /// Waits for what is still to be sent, for some seconds at most.
    void Finish() override { End(); }
    void Abandon() override { End(); }
    OutputResult Result() const override { return {}; }
    void AddTo(platform::NetworkStats& stats) const override;

  private:
    void Take(LivePacketPtr packet);
    void End();
    void Run();
    bool Stream();
    bool Reconnect();
    bool AwaitEnd(std::chrono::milliseconds time);

    const PushOutput output_;
    const OutputNotices notices_;
    std::unique_ptr<LiveStream> stream_;
    std::unique_ptr<PushSession> session_;  // the thread's, once it runs

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    LiveQueue queue_;
    bool ending_ = false;
    bool done_ = false;
    platform::PushStats stats_;
    std::thread thread_;
};

}  // namespace engine::push
