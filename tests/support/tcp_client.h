// A client that says and hears bytes, as players that cannot be had here would.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace test_support {

/// A port of loopback that nobody listens at.
inline std::uint16_t FreePort() {
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(probe, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size), 0);
    close(probe);
    return ntohs(address.sin_port);
}

/// Waits for a minute at most for what it expects, which is then not there.
class TcpClient {
  public:
    /// @param receive_bytes  of its buffer; 0 = the system's own
    explicit TcpClient(std::uint16_t port, int receive_bytes = 0) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (receive_bytes > 0)
            setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receive_bytes, sizeof receive_bytes);
        connected_ =
            connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~TcpClient() { close(socket_); }
    TcpClient(TcpClient&& other) noexcept
        : socket_(std::exchange(other.socket_, -1)), connected_(other.connected_) {}
    TcpClient(const TcpClient&) = delete;
    TcpClient& operator=(const TcpClient&) = delete;
    TcpClient& operator=(TcpClient&&) = delete;

    bool IsConnected() const { return connected_; }
    void Say(std::string_view text) const {
        EXPECT_EQ(send(socket_, text.data(), text.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(text.size()));
    }
    /// What comes next, `count` bytes of it or all up to the end.
    std::string Hear(std::size_t count) {
        std::string text;
        char some[4096];
        while (text.size() < count && Awaits()) {
            const ssize_t got = recv(socket_, some, std::min(sizeof some, count - text.size()), 0);
            if (got <= 0) break;
            text.append(some, static_cast<std::size_t>(got));
        }
        return text;
    }
    std::string HearAll() { return Hear(std::string::npos); }
    /// Up to and with `mark`.
    std::string HearUntil(std::string_view mark) {
        std::string text;
        while (!text.ends_with(mark)) {
            const std::string next = Hear(1);
            if (next.empty()) break;
            text += next;
        }
        return text;
    }

  private:
    bool Awaits() const {
        pollfd asked{socket_, POLLIN, 0};
        return poll(&asked, 1, 60'000) > 0;
    }

    int socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool connected_ = false;
};

}  // namespace test_support
