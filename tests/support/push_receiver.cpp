#include "support/push_receiver.h"

extern "C" {
#include <libavutil/md5.h>
}

#include <arpa/inet.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <optional>

namespace test_support {
namespace {

constexpr const char* kNonce = "0123456789abcdef";
constexpr const char* kRealm = R"(the \"media\" server)";
constexpr const char* kPlainRealm = R"(the "media" server)";

std::string Md5(const std::string& text) {
    std::array<unsigned char, 16> sum{};
    av_md5_sum(sum.data(), reinterpret_cast<const unsigned char*>(text.data()), text.size());
    std::string hex;
    for (const unsigned char byte : sum) hex += fmt::format("{:02x}", byte);
    return hex;
}

// What follows `mark`, up to a blank, a quote, a comma or the like.
std::string WordAfter(const std::string& text, const std::string& mark) {
    const std::size_t found = text.find(mark);
    if (found == std::string::npos) return {};
    const std::size_t begin = found + mark.size();
    return text.substr(begin, text.find_first_of(" \";,\r\n", begin) - begin);
}

}  // namespace

/// One connection, up to its end.
class PushReceiver::Conversation {
  public:
    Conversation(PushReceiver& receiver, int socket) : receiver_(receiver), socket_(socket) {}
    ~Conversation() { close(socket_); }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    void Run() {
        while (Request()) {
        }
        if (receiver_.humours_.forgets) ++receiver_.sessions_;
    }

  private:
    bool Request() {
        std::string head;
        while (!head.ends_with("\r\n\r\n")) {
            const auto next = Read(1);
            if (!next) return false;
            head += *next;
        }
        Note([&](PushReceived& received) { received.requests.push_back(head); });
        length_ = std::stoull("0" + WordAfter(head, "Content-Length: "));
        const bool start = head.find("x-wms-pushstart") != std::string::npos;
        if (start) return Stream(head);
        const auto body = Read(length_);
        if (!body) return false;
        Note([&](PushReceived& received) { received.set_ups.push_back(*body); });
        return SetUp(head);
    }

    bool SetUp(const std::string& head) {
        const PushHumours& humours = receiver_.humours_;
        if (humours.silent) return static_cast<bool>(Read(1));
        const std::string path = WordAfter(head, "POST ");
        if (!humours.moved_to.empty() && path != humours.moved_to)
            return Say(302, fmt::format("Location: http://127.0.0.1:{}{}\r\n", receiver_.port_,
                                        humours.moved_to));
        if (!IsSigned(head, path)) return Say(401, Challenge());
        const std::string id = WordAfter(head, "push-id=");
        const std::string known = fmt::format("s{}", receiver_.sessions_);
        if (humours.set_up_status == 204 && id != "0" && id != known) return Say(400, "");
        return Say(humours.set_up_status, fmt::format("Set-Cookie: push-id={}; path=/\r\n"
                                                      "Set-Cookie: other=1\r\n",
                                                      known));
    }

    bool Stream(const std::string& head) {
        const std::string known = fmt::format("push-id=s{}", receiver_.sessions_);
        if (head.find(known) == std::string::npos) return Say(400, "") && false;
        int packets = 0;
        while (length_ > 0) {
            const auto frame = Read(4);
            if (!frame || (*frame)[0] != '$') return false;
            const auto size =
                static_cast<std::size_t>(static_cast<unsigned char>((*frame)[2]) |
                                         static_cast<unsigned char>((*frame)[3]) << 8U);
            const auto body = Read(size);
            if (!body) return false;
            length_ -= std::min<std::uint64_t>(length_, size + 4);
            Note([&](PushReceived& received) {
                if ((*frame)[1] == 'H') received.headers.push_back(*body);
                if ((*frame)[1] == 'D') received.packets.push_back(*body);
                if ((*frame)[1] == 'F') ++received.fillers;
                if ((*frame)[1] == 'E') received.ended = true;
            });
            if ((*frame)[1] == 'E') return false;
            if ((*frame)[1] != 'D') continue;
            ++packets;
            if (packets == receiver_.humours_.hangs_up_after) {
                receiver_.humours_.hangs_up_after = -1;
                return false;
            }
            if (packets == receiver_.humours_.complains_after) {
                receiver_.humours_.complains_after = -1;
                return Say(408, "") && false;
            }
        }
        return Say(204, "");
    }

    std::string Challenge() const {
        if (!receiver_.humours_.digest) return "WWW-Authenticate: Basic realm=\"x\"\r\n";
        return fmt::format(
            "WWW-Authenticate: Negotiate\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
            "WWW-Authenticate: Digest realm=\"{}\", qop=\"auth-int,auth\", nonce={}, "
            "opaque=\"o p\", algorithm=MD5\r\n",
            kRealm, kNonce);
    }

    bool IsSigned(const std::string& head, const std::string& path) const {
        const PushHumours& humours = receiver_.humours_;
        if (humours.user.empty()) return true;
        // As any shell says it: printf 'anna:secret' | base64
        if (!humours.digest) return head.find("Basic YW5uYTpzZWNyZXQ=") != std::string::npos;
        const std::string count = WordAfter(head, " nc=");
        const std::string client = WordAfter(head, "cnonce=\"");
        const std::string who =
            Md5(fmt::format("{}:{}:{}", humours.user, kPlainRealm, humours.password));
        const std::string right = Md5(
            fmt::format("{}:{}:{}:{}:auth:{}", who, kNonce, count, client, Md5("POST:" + path)));
        return WordAfter(head, " response=\"") == right && !count.empty() &&
               head.find("opaque=\"o p\"") != std::string::npos;
    }

    bool Say(unsigned status, const std::string& fields) {
        const std::string text =
            fmt::format("HTTP/1.1 {} Word\r\nServer: {}\r\n{}Content-Length: 0\r\n\r\n", status,
                        receiver_.humours_.server, fields);
        return send(socket_, text.data(), text.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(text.size());
    }

    // None when the other side, or the receiver itself, has gone.
    std::optional<std::string> Read(std::uint64_t count) const {
        std::string text;
        char some[4096];
        while (text.size() < count) {
            pollfd asked[] = {{socket_, POLLIN, 0}, {receiver_.stop_[0], POLLIN, 0}};
            if (poll(asked, 2, -1) <= 0 || asked[1].revents != 0) return std::nullopt;
            const ssize_t got =
                recv(socket_, some, std::min<std::uint64_t>(sizeof some, count - text.size()), 0);
            if (got <= 0) return std::nullopt;
            text.append(some, static_cast<std::size_t>(got));
        }
        return text;
    }

    template <typename Noter>
    void Note(Noter&& note) const {
        const std::lock_guard lock(receiver_.mutex_);
        note(receiver_.received_);
    }

    PushReceiver& receiver_;
    const int socket_;
    std::uint64_t length_ = 0;  // left of the body
};

PushReceiver::PushReceiver(PushHumours humours)
    : humours_(std::move(humours)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(listener_, 16), 0);
    EXPECT_EQ(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    EXPECT_EQ(pipe(stop_), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
}

PushReceiver::~PushReceiver() {
    close(stop_[1]);
    thread_.join();
    close(stop_[0]);
    close(listener_);
}

PushReceived PushReceiver::Received() const {
    const std::lock_guard lock(mutex_);
    return received_;
}

void PushReceiver::Serve() {
    for (;;) {
        pollfd asked[] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
        if (poll(asked, 2, -1) <= 0 || asked[1].revents != 0) return;
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) Conversation(*this, socket).Run();
    }
}

}  // namespace test_support
