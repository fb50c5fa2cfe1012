// One client's connection, from its request to the end of what it is given.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include "engine/outputs/http/framing.h"
#include "engine/outputs/http/request.h"
#include "engine/outputs/live/live_queue.h"

namespace engine::http {

class Connection;

/// What connections ask of their server.
class ConnectionHost {
  public:
    virtual ~ConnectionHost() = default;
    /// The connection wants the stream. False when there is no place for it.
    virtual bool Admit() = 0;
    virtual const std::vector<std::uint8_t>& Header() const = 0;
    virtual const std::vector<LivePacketPtr>& History() const = 0;
    virtual std::string Page(const std::string& host) const = 0;
    virtual std::string Status() const = 0;
    virtual void Sent(std::size_t bytes) = 0;
    virtual void Withheld(std::uint64_t frames) = 0;
    /// It will not be heard of again.
    virtual void Closed(bool was_listening) = 0;
};

/// All calls and handlers on the server's thread.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    using Clock = std::chrono::steady_clock;

    /// The host outlives all handlers.
    Connection(boost::asio::ip::tcp::socket socket, ConnectionHost& host);

    void Start();
    /// Nothing for those who do not listen. May close the connection.
    void Send(std::span<const LivePacketPtr> packets);
    /// What waits is sent, then the end.
    void End();
    void Close();
    /// Closes what has taken too long.
    void Check(Clock::time_point now);
    bool IsClosed() const { return stage_ == Stage::Closed; }

  private:
    enum class Stage : std::uint8_t { Reading, Answering, Listening, Leaving, Closed };
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    void ReadRequest();
    void ReadHeader();
    void ReadBody();
    void Answer(const Asked& asked);
    void Write(std::string text, bool then_read = false);
    void Listen(bool framed, bool whole_packets);
    void Pump();
    void FillBatch();
    void WriteBuffers();
    void Leave();
    void ReadAway();
    std::uint32_t ClientId();

    boost::asio::ip::tcp::socket socket_;
    ConnectionHost& host_;
    Stage stage_ = Stage::Reading;
    Clock::time_point due_ = Clock::time_point::max();
    boost::beast::flat_buffer buffer_;
    std::optional<Parser> parser_;
    std::string text_;  // on its way

    bool framed_ = false;
    bool whole_packets_ = false;
    bool was_listening_ = false;
    LiveQueue queue_;
    std::uint8_t counter_ = 0;
    bool writing_ = false;
    bool ended_ = false;
    bool end_written_ = false;
    static constexpr std::size_t kBatch = 16;
    std::array<LivePacketPtr, kBatch> batch_;  // on its way
    std::array<DataFrame, kBatch> frames_;
    std::vector<boost::asio::const_buffer> buffers_;

    std::array<char, 512> away_;
    std::size_t read_away_ = 0;
    bool reading_away_ = false;
};

}  // namespace engine::http
