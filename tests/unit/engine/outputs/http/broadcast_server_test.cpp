// The server as its clients meet it, over loopback.
#include "engine/outputs/http/broadcast_server.h"

#include <numeric>

#include "platform/error.h"
#include "support/error_of.h"
#include "support/row_name.h"
#include "support/tcp_client.h"
#include "unit/engine/outputs/http/framed_stream.h"
#include "unit/engine/outputs/http/live_packets.h"

namespace {

using engine::http::BroadcastServer;
using engine::http::ServerSettings;
using engine::http::ServerStatus;
using framed_stream::Frame;
using framed_stream::HearFrame;
using framed_stream::kEndOfHead;
using framed_stream::kPlay;
using framed_stream::PortOf;
using live_packets::Packet;
using test_support::TcpClient;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDescribe = "GET / HTTP/1.0\r\nUser-Agent: NSPlayer/9\r\n\r\n";
constexpr const char* kRaw = "GET / HTTP/1.0\r\n\r\n";
constexpr std::size_t kPacketBytes = 100;

class Server : public testing::Test {
  protected:
    TcpClient Client(const char* request, int receive_bytes = 0) const {
        TcpClient client(port_, receive_bytes);
        EXPECT_TRUE(client.IsConnected());
        client.Say(request);
        return client;
    }
    // One that has been let in, its head read.
    TcpClient Listener(const char* request, int receive_bytes = 0) const {
        TcpClient client = Client(request, receive_bytes);
        EXPECT_THAT(client.HearUntil(kEndOfHead), StartsWith("HTTP/1.0 200 OK\r\n"));
        return client;
    }
    void Send(std::uint64_t from, std::uint64_t to, std::size_t bytes = kPacketBytes) {
        for (std::uint64_t i = from; i <= to; ++i) server_->Send(Packet(i, 10, bytes));
    }
    // Returns once the server's thread has dealt with all that was sent before.
    void Settle() const {
        EXPECT_THAT(Client("GET /x HTTP/1.0\r\n\r\n").HearAll(), HasSubstr("404"));
    }

    ServerStatus status_{engine::OutputHeader{}};
    ServerSettings settings_{0, "127.0.0.1", 50};
    std::vector<std::uint8_t> header_ = std::vector<std::uint8_t>(70'000, 'h');
    std::unique_ptr<BroadcastServer> server_ =
        std::make_unique<BroadcastServer>(settings_, header_, status_);
    std::uint16_t port_ = PortOf(status_.Stats());
};

TEST_F(Server, DescribesTheStreamAndLetsGo) {
    TcpClient client = Client(kDescribe);
    const std::string head = client.HearUntil(kEndOfHead);
    EXPECT_THAT(head, HasSubstr("application/vnd.ms.wms-hdr.asfv1"));
    EXPECT_THAT(head, HasSubstr("features=\"broadcast"));
    const Frame first = HearFrame(client);
    const Frame second = HearFrame(client);
    EXPECT_EQ(first.kind, 'H');
    EXPECT_EQ(first.counter, 0x04) << "the first of several pieces";
    EXPECT_EQ(second.number, 1U);
    EXPECT_EQ(second.counter, 0x08) << "the last one";
    EXPECT_EQ(first.bytes + second.bytes, std::string(header_.begin(), header_.end()));
    EXPECT_EQ(client.HearAll(), "");
}

TEST_F(Server, DescribesTwiceOnOneConnectionThatIsKept) {
    constexpr const char* kKept =
        "GET / HTTP/1.1\r\nUser-Agent: NSPlayer/9\r\nConnection: Keep-Alive\r\n\r\n";
    TcpClient client = Client(kKept);
    for (int i = 0; i < 2; ++i) {
        if (i > 0) client.Say(kKept);
        EXPECT_THAT(client.HearUntil(kEndOfHead), HasSubstr("Keep-Alive"));
        HearFrame(client);
        HearFrame(client);
    }
}

TEST_F(Server, PlayersJoinAtTheLastKeyFrameAndAreToldTheEnd) {
    Send(0, 14);
    Settle();
    TcpClient framed = Listener(kPlay);
    TcpClient raw = Listener(kRaw);
    EXPECT_EQ(HearFrame(framed).kind, 'H');
    EXPECT_EQ(HearFrame(framed).kind, 'H');
    EXPECT_EQ(raw.Hear(header_.size()).size(), header_.size());
    Send(15, 16);
    for (unsigned i = 10; i <= 16; ++i) {
        const Frame frame = HearFrame(framed);
        EXPECT_EQ(frame.kind, 'D');
        EXPECT_EQ(frame.number, i);
        EXPECT_EQ(frame.counter, i - 10);
        EXPECT_EQ(frame.bytes, raw.Hear(kPacketBytes));
    }
    EXPECT_EQ(status_.Stats().clients, 2);
    server_->End();
    const Frame end = HearFrame(framed);
    EXPECT_EQ(end.kind, 'E');
    EXPECT_EQ(end.number, 0U);
    EXPECT_EQ(framed.HearAll(), "");
    EXPECT_EQ(raw.HearAll(), "");
    EXPECT_FALSE(TcpClient(port_).IsConnected()) << "nobody is let in any more";
    EXPECT_EQ(status_.Stats().most_clients, 2);
    EXPECT_EQ(status_.Stats().clients_served, 2);
    EXPECT_GE(status_.Stats().bytes_sent, 2 * 70'000 + 14 * 100);
    settings_.port = port_;
    EXPECT_NO_THROW(BroadcastServer(settings_, header_, status_)) << "the port is free again";
}

TEST_F(Server, OneThatStallsDelaysNobodyAndLosesWholeGroups) {
    constexpr std::size_t kBytes = 60'000;
    constexpr std::uint64_t kLast = 1999;
    TcpClient stalled = Listener(kPlay, 4096);
    TcpClient reader = Listener(kRaw);
    reader.Hear(header_.size());
    std::uint64_t wrong = 0;
    for (std::uint64_t i = 0; i <= kLast; ++i) {
        Send(i, i, kBytes);
        const std::string bytes = reader.Hear(kBytes);
        wrong += bytes.size() != kBytes || bytes.back() != static_cast<char>(i);
    }
    EXPECT_EQ(wrong, 0U) << "who keeps reading loses nothing";
    EXPECT_GT(status_.Stats().frames_withheld, 0);
    EXPECT_EQ(status_.Stats().clients, 1) << "the other was given up";
}

TEST_F(Server, LetsInNoMoreThanItMay) {
    std::vector<TcpClient> clients;
    for (int i = 0; i < settings_.most_clients; ++i) clients.push_back(Listener(kRaw));
    EXPECT_THAT(Client(kRaw).HearAll(), StartsWith("HTTP/1.0 503"));
    clients.pop_back();
    // The place is free when the server has heard of it.
    while (status_.Stats().clients == settings_.most_clients) std::this_thread::yield();
    Listener(kRaw);
}

struct AnswerCase {
    const char* why;
    std::string request;
    const char* answer;  // how it begins
};

// clang-format off
const AnswerCase kAnswers[] = {
    {"another protocol is cut off at once",  std::string("\x01\0\0\0\xCE\xFA\x0B\xB0", 8), ""},
    {"no request",                           "hello\r\n\r\n",                   "HTTP/1.0 400"},
    {"a file",                               "GET /a HTTP/1.0\r\n\r\n",          "HTTP/1.0 404"},
    {"another method",                       "DELETE / HTTP/1.0\r\n\r\n",        "HTTP/1.0 501"},
    {"a report",                             "POST / HTTP/1.0\r\nContent-Length: 3\r\n\r\nabc", "HTTP/1.0 204"},
    {"a report past all measure",            "POST / HTTP/1.0\r\nContent-Length: 99999999\r\n\r\n", "HTTP/1.0 413"},
    {"a head past all measure",              "GET / HTTP/1.0\r\nA: " + std::string(17'000, 'a'), "HTTP/1.0 400"},
    {"the page",                             "GET / HTTP/1.0\r\nAccept: text/html\r\n\r\n", "HTTP/1.0 200"},
    {"the status",                           "GET /status.json HTTP/1.0\r\n\r\n", "HTTP/1.0 200"},
    {"what the stream would be",             "HEAD / HTTP/1.0\r\n\r\n",          "HTTP/1.0 200"},
};
// clang-format on

TEST_F(Server, AnswersAndCloses) {
    for (const AnswerCase& c : kAnswers) {
        SCOPED_TRACE(c.why);
        TcpClient client(port_);
        client.Say(c.request);
        const std::string answer = client.HearAll();
        EXPECT_THAT(answer,
                    *c.answer == '\0' ? testing::Matcher<std::string>("") : StartsWith(c.answer));
    }
}

TEST_F(Server, IsRefusedWhatItCannotHave) {
    const auto open = [&] { BroadcastServer(settings_, header_, status_); };
    settings_.port = port_;
    EXPECT_EQ(test_support::ErrorNumber(open, {std::to_string(port_), "in use", "-broadcast"}),
              platform::kBusy);
    for (const char* address : {"no address", "192.0.2.1"}) {
        settings_ = {0, address};
        EXPECT_EQ(test_support::ErrorNumber(open, {address, "TESSIVO_BROADCAST_ADDRESS"}),
                  platform::kInvalidArgument);
    }
}

}  // namespace
