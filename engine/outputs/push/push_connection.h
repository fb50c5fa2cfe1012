// A connection on which every step ends in time.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <span>
#include <string>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>

#include "engine/outputs/push/push_address.h"
#include "engine/outputs/push/push_answer.h"

namespace engine::push {

/// One thread at a time; Cancel from any. What fails throws platform::Error (device not connected)
/// with the reason; the connection is closed then.
class PushConnection {
  public:
    using Seconds = std::chrono::seconds;

    void Connect(const PushAddress& address, Seconds time);
    void Send(std::span<const boost::asio::const_buffer> buffers, Seconds time);
    void Send(const std::string& text, Seconds time);
    PushAnswer Receive(Seconds time);
    /// Whether the server has said something, or has gone.
    bool HasNews();
    bool IsOpen() const { return socket_.is_open(); }
    void Close();
    /// What goes on fails soon, and all that is begun later.
    void Cancel() { cancelled_ = true; }

  private:
    using ErrorCode = boost::system::error_code;

    void Await(const bool& done, Seconds time);
    [[noreturn]] void Fail(const std::string& reason);

    boost::asio::io_context io_{1};
    boost::asio::ip::tcp::resolver resolver_{io_};
    boost::asio::ip::tcp::socket socket_{io_};
    boost::beast::flat_buffer received_{64U << 10U};
    std::atomic<bool> cancelled_{false};
};

}  // namespace engine::push
