// The broadcast as an output: a stream that any number of players can join at any time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "engine/base/output_sink.h"
#include "engine/outputs/http/server_status.h"
#include "engine/outputs/live/live_stream.h"
#include "engine/plan/encode_plan.h"

namespace engine::http {

class BroadcastServer;

class Broadcast final : public OutputSink {
  public:
    Broadcast(BroadcastOutput output, OutputNotices notices);
    ~Broadcast() override;
    Broadcast(const Broadcast&) = delete;
    Broadcast& operator=(const Broadcast&) = delete;

    /// The port is open from here on, and the addresses are a notice.
    void Begin(const OutputHeader& header) override;
    void Write(const CodedFrame& frame) override;
    void Flush() override;
    void Finish() override;
    void Abandon() override;
    OutputResult Result() const override { return {}; }
    void AddTo(platform::NetworkStats& stats) const override;

  private:
    void SayAddresses() const;

    BroadcastOutput output_;
    OutputNotices notices_;
    std::unique_ptr<LiveStream> stream_;
    std::unique_ptr<ServerStatus> status_;
    std::unique_ptr<BroadcastServer> server_;
};

}  // namespace engine::http
