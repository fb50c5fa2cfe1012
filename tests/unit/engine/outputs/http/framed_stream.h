// A broadcast as players of the streaming protocol take it apart.
#pragma once

#include <cstdint>
#include <string>

#include "platform/encoder.h"
#include "support/tcp_client.h"

namespace framed_stream {

inline constexpr const char* kPlay =
    "GET / HTTP/1.0\r\nUser-Agent: NSPlayer/9\r\nPragma: xPlayStrm=1\r\n\r\n";
inline constexpr const char* kEndOfHead = "\r\n\r\n";

inline std::uint16_t PortOf(const platform::BroadcastStats& stats) {
    const std::string& address = stats.addresses.front();
    return static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
}

// A framed data packet, or the end of the stream.
struct Frame {
    char kind = 0;
    unsigned number = 0;
    std::uint8_t counter = 0;
    std::string bytes;
};

inline unsigned Number(const std::string& bytes, std::size_t at, std::size_t count) {
    unsigned value = 0;
    for (std::size_t i = count; i > 0; --i)
        value = value << 8U | static_cast<std::uint8_t>(bytes[at + i - 1]);
    return value;
}

inline Frame HearFrame(test_support::TcpClient& client) {
    const std::string head = client.Hear(4);
    if (head.size() < 4) return {};
    const std::string body = client.Hear(Number(head, 2, 2));
    EXPECT_EQ(head[0], '$');
    if (head[1] == 'E') return {'E', Number(body, 0, 4), 0, {}};
    EXPECT_EQ(Number(body, 6, 2), body.size()) << "the length stands twice";
    return {head[1], Number(body, 0, 4), static_cast<std::uint8_t>(body[5]), body.substr(8)};
}

}  // namespace framed_stream
