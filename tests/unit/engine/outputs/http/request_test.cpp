// What clients of all kinds ask for.
#include "engine/outputs/http/request.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include "support/row_name.h"

namespace {

using engine::http::Asked;
using What = Asked::What;

struct RequestCase {
    const char* why;
    const char* line;
    const char* fields;  // each with its end of line
    What what;
    unsigned status = 400;
};

constexpr const char* kPlayer = "User-Agent: NSPlayer/4.1.0.3856\r\n";

// clang-format off
const RequestCase kRequests[] = {
    {"a player asks what there is", "GET / HTTP/1.1",
     "User-Agent: NSPlayer/4.1.0.3856\r\nAccept: */*\r\nRange: bytes=0-\r\nIcy-MetaData: 1\r\n"
     "Pragma: no-cache,rate=1.000000,stream-time=0,stream-offset=0:0,request-context=1\r\n"
     "Pragma: xClientGUID={c77e7400-738a-11d2-9add-0020af0a3278}\r\nConnection: Close\r\n", What::Describe},
    {"a player plays, and runs two of its lines together", "GET / HTTP/1.1",
     "User-Agent: NSPlayer/4.1.0.3856\r\nPragma: no-cache,rate=1.000000,request-context=2\r\n"
     "Pragma: xPlayStrm=1\r\nPragma: stream-switch-entry=ffff:1:0 ffff:2:0\r\n"
     "Pragma: no-cache,rate=1.000000,stream-time=0Connection: Close\r\n", What::Play},
    {"one of an older kind", "GET / HTTP/1.0", "user-agent: nsplayer/7.10\r\npragma: xplaystrm=1\r\n", What::Play},
    {"a server that takes the stream on", "GET / HTTP/1.0", "User-Agent: NSServer/4.1\r\nPragma: xPlayStrm=1\r\n", What::Play},
    {"a player of another name", "GET /?x=1 HTTP/1.0", "User-Agent: x\r\nPragma: xClientGUID={1}\r\n", What::Describe},
    {"playing asked for with 0", "GET / HTTP/1.0", "User-Agent: NSPlayer/9\r\nPragma: xPlayStrm=0\r\n", What::Describe},
    {"stop, with nothing to stop", "GET / HTTP/1.0", "User-Agent: NSPlayer/9\r\nPragma: xStopStrm=1\r\n", What::Noted},
    {"any other player", "GET / HTTP/1.1", "User-Agent: Lavf/59\r\nAccept: */*\r\nRange: bytes=0-\r\n", What::Stream},
    {"one that says nothing of itself", "GET / HTTP/1.0", "", What::Stream},
    {"a whole address as target", "GET HTTP://host:8080 HTTP/1.1", "", What::Stream},
    {"a browser", "GET / HTTP/1.1", "Accept: text/html,application/xhtml+xml,*/*;q=0.8\r\n", What::Page},
    {"a program", "GET /status.json?now HTTP/1.1", "", What::Status},
    {"a report on what was played", "POST / HTTP/1.0", kPlayer, What::Noted},
    {"a file", "GET /etc/passwd HTTP/1.0", kPlayer, What::Refusal, 404},
    {"a file by a detour", "GET /../status.json HTTP/1.0", "", What::Refusal, 404},
    {"something to keep", "PUT / HTTP/1.0", "", What::Refusal, 501},
    {"a word that is no method", "PLAY / HTTP/1.0", "", What::Refusal, 501},
};
// clang-format on

class Requests : public testing::TestWithParam<RequestCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Requests, testing::ValuesIn(kRequests), test_support::NameOfRow());

Asked Parsed(const std::string& text) {
    boost::beast::http::request_parser<boost::beast::http::empty_body> parser;
    boost::system::error_code error;
    parser.put(boost::asio::buffer(text), error);
    EXPECT_FALSE(error) << error.message();
    return engine::http::WhatIsAsked(parser.get());
}

TEST_P(Requests, AreUnderstood) {
    const RequestCase& c = GetParam();
    const Asked asked = Parsed(std::string(c.line) + "\r\n" + c.fields + "\r\n");
    EXPECT_EQ(asked.what, c.what);
    EXPECT_EQ(asked.status, c.status);
}

TEST(Requests, DetailsAreRead) {
    const Asked kept = Parsed(
        "GET / HTTP/1.0\r\nUser-Agent: NSPlayer/9\r\nConnection: Keep-Alive\r\nHost: "
        "[::1]:80\r\n\r\n");
    EXPECT_TRUE(kept.keep_alive);
    EXPECT_EQ(kept.host, "[::1]:80");
    EXPECT_FALSE(kept.whole_packets);
    const Asked server =
        Parsed("HEAD / HTTP/1.0\r\nUser-Agent: NSServer/4.1\r\nHost: a\"><b>\r\n\r\n");
    EXPECT_TRUE(server.head_only);
    EXPECT_TRUE(server.whole_packets);
    EXPECT_EQ(server.host, "") << "nothing that a page would have to fear";
}

}  // namespace
