// The server that a broadcast's clients connect to: one thread for all of them.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "engine/outputs/http/connection.h"
#include "engine/outputs/http/history.h"
#include "engine/outputs/http/server_status.h"

namespace engine::http {

struct ServerSettings {
    std::uint16_t port = 0;
    std::string address;  // to listen at; "" = all of the machine
    int most_clients = 2000;
};

/// Nothing of the file system can be reached through it. Constructor, End and destructor belong to
/// one thread, Send to one at a time.
class BroadcastServer final : private ConnectionHost {
  public:
    /// Listens from now on. Throws platform::Error (busy, access denied, invalid argument) that
    /// names the port or the address. The status outlives the server.
    BroadcastServer(const ServerSettings& settings, std::vector<std::uint8_t> header,
                    ServerStatus& status);
    ~BroadcastServer() override;
    BroadcastServer(const BroadcastServer&) = delete;
    BroadcastServer& operator=(const BroadcastServer&) = delete;

    /// Never waits for a client.
    void Send(LivePacketPtr packet);
    /// Ends the stream for all clients, waiting for a few seconds at most, and closes the port.
    void End();

  private:
    using Tcp = boost::asio::ip::tcp;

    void Bind(const ServerSettings& settings);
    void Run();
    void Accept();
    void AwaitRound();
    void Deliver();
    void BeginEnd();
    void Tick();
    void Sweep();

    bool Admit() override;
    const std::vector<std::uint8_t>& Header() const override { return header_; }
    const std::vector<LivePacketPtr>& History() const override { return history_.Packets(); }
    std::string Page(const std::string& host) const override;
    std::string Status() const override;
    void Sent(std::size_t bytes) override { status_.Sent(bytes); }
    void Withheld(std::uint64_t frames) override { status_.Withheld(frames); }
    void Closed(bool was_listening) override;

    const std::vector<std::uint8_t> header_;
    const int most_clients_;
    ServerStatus& status_;

    // The thread's own, once it runs.
    boost::asio::io_context io_{1};
    Tcp::acceptor acceptor_{io_};
    boost::asio::steady_timer tick_{io_};
    boost::asio::steady_timer round_{io_};
    Connection::Clock::time_point next_round_{};
    std::vector<std::shared_ptr<Connection>> connections_;
    engine::http::History history_;
    int clients_ = 0;
    bool accepting_ = false;
    bool any_closed_ = false;
    bool ending_ = false;
    Connection::Clock::time_point end_due_;

    std::mutex mutex_;
    std::vector<LivePacketPtr> inbox_;
    std::vector<LivePacketPtr> delivered_;  // the thread's own: its memory is used again
    std::thread thread_;
};

}  // namespace engine::http
