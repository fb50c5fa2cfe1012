#include "engine/outputs/push/push_connection.h"

#include <poll.h>

#include <fmt/format.h>
#include <boost/asio/connect.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>

#include "platform/error.h"

namespace engine::push {
namespace {

namespace asio = boost::asio;
namespace beast_http = boost::beast::http;

constexpr auto kSlice = std::chrono::milliseconds(50);  // after which a cancel is noticed
constexpr std::uint32_t kMostHeaderBytes = 16U << 10U;
constexpr std::uint64_t kMostBodyBytes = 32U << 10U;

}  // namespace

void PushConnection::Await(const bool& done, Seconds time) {
    const auto due = std::chrono::steady_clock::now() + time;
    io_.restart();
    bool late = false;
    while (!done && !late) {
        io_.run_for(kSlice);
        late = cancelled_ || std::chrono::steady_clock::now() >= due;
    }
    if (done) return;
    resolver_.cancel();
    Close();
    io_.run();
    Fail(cancelled_ ? "the push was stopped" : "it does not answer");
}

void PushConnection::Fail(const std::string& reason) {
    Close();
    throw platform::Error(platform::kDeviceNotConnected, reason);
}

void PushConnection::Connect(const PushAddress& address, Seconds time) {
    Close();
    received_.clear();
    ErrorCode error;
    bool done = false;
    bool known = false;
    resolver_.async_resolve(
        address.host, std::to_string(address.port),
        [&](ErrorCode resolved, const asio::ip::tcp::resolver::results_type& found) {
            error = resolved;
            done = static_cast<bool>(resolved);
            if (resolved) return;
            known = true;
            asio::async_connect(socket_, found, [&](ErrorCode connected, const auto&) {
                error = connected;
                done = true;
            });
        });
    Await(done, time);
    if (error && !known) Fail("no such server is known");
    if (error) Fail(error.message());
    ErrorCode ignored;
    socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
}

void PushConnection::Send(std::span<const asio::const_buffer> buffers, Seconds time) {
    ErrorCode error;
    bool done = false;
    asio::async_write(socket_, buffers, [&](ErrorCode written, std::size_t) {
        error = written;
        done = true;
    });
    Await(done, time);
    if (error) Fail(error.message());
}

void PushConnection::Send(const std::string& text, Seconds time) {
    const asio::const_buffer buffer = asio::buffer(text);
    Send({&buffer, 1}, time);
}

PushAnswer PushConnection::Receive(Seconds time) {
    beast_http::response_parser<beast_http::string_body> parser;
    parser.header_limit(kMostHeaderBytes);
    parser.body_limit(kMostBodyBytes);
    ErrorCode error;
    bool done = false;
    beast_http::async_read(socket_, received_, parser, [&](ErrorCode read, std::size_t) {
        error = read;
        done = true;
    });
    Await(done, time);
    if (error == beast_http::error::end_of_stream) Fail("it has closed the connection");
    // A refusal's text may be cut off or long; its head says what matters.
    if (error && !parser.is_header_done()) Fail(error.message());
    if (error || parser.need_eof()) Close();
    return ReadAnswer(parser.get());
}

bool PushConnection::HasNews() {
    if (!socket_.is_open() || received_.size() > 0) return true;
    pollfd asked{socket_.native_handle(), POLLIN, 0};
    return poll(&asked, 1, 0) > 0;
}

void PushConnection::Close() {
    ErrorCode ignored;
    socket_.close(ignored);
}

}  // namespace engine::push
