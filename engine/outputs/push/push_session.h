// The requests of a push: a set-up, then the stream as the body of a start.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/outputs/live/live_stream.h"
#include "engine/outputs/push/authentication.h"
#include "engine/outputs/push/push_connection.h"
#include "engine/plan/encode_plan.h"

namespace engine::push {

/// One thread at a time; Cancel from any. What fails throws platform::Error that names the server.
class PushSession {
  public:
    /// Throws platform::Error (invalid argument) for a server that is none.
    PushSession(const PushOutput& output, std::vector<std::uint8_t> header);

    /// Connects and sets the session up; goes on with the one before where the server allows it.
    /// @param ask  for who pushes, where the server wants to know it; may be empty
    void Open(const AskCredentials& ask = {});
    /// Begins to send: the stream's header.
    void Start();
    void Send(const LivePacket& packet);
    /// Says that the stream has ended, and closes.
    void End();
    /// Throws what the server has said in the middle of it, or that it has gone.
    void CheckNews();
    void Cancel() { connection_.Cancel(); }

    std::uint64_t BytesSent() const { return bytes_sent_; }
    /// For people.
    std::string Name() const;

  private:
    PushAnswer SetUp();
    bool Ask(const AskCredentials& ask);
    std::string Head(const char* type, std::uint64_t length, const std::string& cookies);
    void SendBody(std::span<const boost::asio::const_buffer> buffers);
    void MakeRoom(std::size_t bytes);
    void BeginBody();
    std::string Unwelcome() const;
    [[noreturn]] void Refuse(const PushAnswer& answer) const;
    template <typename Step>
    auto Named(Step&& step);

    PushOutput output_;
    PushAddress address_;
    std::vector<std::uint8_t> header_;
    Authentication authentication_;
    PushConnection connection_;
    std::string push_id_ = "0";
    std::string cookies_;
    int questions_ = 0;       // that were answered
    std::uint64_t room_ = 0;  // in the body that is being sent
    std::atomic<std::uint64_t> bytes_sent_{0};
};

}  // namespace engine::push
