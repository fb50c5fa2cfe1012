#include "engine/outputs/push/push_session.h"

#include <algorithm>
#include <array>
#include <random>
#include <utility>

#include <fmt/format.h>

#include "platform/error.h"

namespace engine::push {
namespace {

namespace asio = boost::asio;
using std::chrono::seconds;

constexpr auto kConnectTime = seconds(10);
constexpr auto kSendTime = seconds(15);
constexpr int kMostRedirections = 5;
constexpr int kMostQuestions = 3;
constexpr std::size_t kFrameBytes = 4;
constexpr std::size_t kMostFilled = 65'531;  // as the protocol limits it
constexpr std::size_t kEndBytes = kFrameBytes + 4;

using FrameHead = std::array<std::uint8_t, kFrameBytes>;

FrameHead Frame(char kind, std::size_t bytes) {
    return {'$', static_cast<std::uint8_t>(kind), static_cast<std::uint8_t>(bytes),
            static_cast<std::uint8_t>(bytes >> 8U)};
}

std::string Unforeseen() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}", random(), random());
}

// What the server means, and what can be done.
std::string Meaning(const PushAnswer& answer) {
    switch (answer.status) {
        case 403:
            return "does not let anybody push to this publishing point";
        case 404:
            return "has no such publishing point: give another, or one to make it after as the "
                   "third value of -push";
        case 408:
            return "has ended the session because nothing came";
        case 409:
            return "says that the publishing point receives a stream already";
        case 503:
            return "is busy: try again later";
        default:
            return fmt::format("refuses the stream: {} {}", answer.status, answer.reason);
    }
}

}  // namespace

PushSession::PushSession(const PushOutput& output, std::vector<std::uint8_t> header)
    : output_(output),
      address_(ParseAddress(output.server, output.publishing_point)),
      header_(std::move(header)),
      authentication_(output.credentials) {
    if (header_.size() > kMostFilled)
        throw platform::Error(platform::kInvalidArgument,
                              fmt::format("The header has {} bytes, and a push at most {}: shorten "
                                          "title, author, copyright and description",
                                          header_.size(), kMostFilled));
}

std::string PushSession::Name() const {
    return fmt::format("{}/{}", output_.server, output_.publishing_point);
}

// With what is being done, for people.
template <typename Step>
auto PushSession::Named(Step&& step) {
    try {
        return step();
    } catch (const platform::Error& error) {
        if (error.unsigned_number() != platform::kDeviceNotConnected) throw;
        throw platform::Error(platform::kDeviceNotConnected,
                              fmt::format("Cannot push to {}: {}", Name(), error.description()));
    }
}

std::string PushSession::Unwelcome() const {
    const std::string variables = "TESSIVO_PUSH_USER and TESSIVO_PUSH_PASSWORD";
    if (!authentication_.HasCredentials())
        return "wants a user name and a password: set " + variables;
    const std::string refusal = "refuses the user name or the password";
    return questions_ > 0 ? refusal : refusal + " of " + variables;
}

void PushSession::Refuse(const PushAnswer& answer) const {
    const bool unwelcome = answer.status == 401 || answer.status == 407;
    throw platform::Error(
        unwelcome || answer.status == 403 ? platform::kAccessDenied : platform::kUnspecified,
        fmt::format("Cannot push to {}: the server {}", Name(),
                    unwelcome ? Unwelcome() : Meaning(answer)));
}

std::string PushSession::Head(const char* type, std::uint64_t length, const std::string& cookies) {
    const std::string signature = authentication_.FieldFor(address_.path, Unforeseen());
    return fmt::format(
        "POST {} HTTP/1.1\r\nHost: {}\r\nUser-Agent: {}\r\nContent-Type: {}\r\n"
        "Content-Length: {}\r\nCache-Control: no-cache\r\n"
        "X-Accept-Authentication: Digest, Basic\r\nCookie: {}\r\n{}\r\n",
        address_.path, address_.HostText(), output_.agent, type, length, cookies,
        signature.empty() ? "" : "Authorization: " + signature + "\r\n");
}

PushAnswer PushSession::SetUp() {
    std::string body;
    if (!output_.template_name.empty())
        body = fmt::format("Template-URL: \"{}\"\r\n", EscapedPath(output_.template_name));
    body += "AutoDestroy: 0\r\n";
    if (!connection_.IsOpen()) connection_.Connect(address_, kConnectTime);
    const std::string cookies = cookies_.empty() ? "push-id=" + push_id_ : cookies_;
    connection_.Send(Head("application/x-wms-pushsetup", body.size(), cookies) + body, kSendTime);
    return connection_.Receive(output_.answer_time);
}

// What the environment says is not asked for. The person may take longer than the connection or
// the challenge live, so both are had anew.
bool PushSession::Ask(const AskCredentials& ask) {
    if (!ask || !output_.credentials.user.empty() || questions_ == kMostQuestions) return false;
    const platform::CredentialsAnswer answer = ask({Name(), questions_ > 0});
    if (!answer) return false;
    ++questions_;
    authentication_.Use(*answer);
    connection_.Close();
    return true;
}

void PushSession::Open(const AskCredentials& ask) {
    connection_.Close();
    bool untried = authentication_.HasCredentials();
    int redirections = 0;
    for (;;) {
        const PushAnswer answer = Named([&] { return SetUp(); });
        if (answer.IsOk()) {
            if (!output_.any_server && !answer.IsOfMediaServer())
                throw platform::Error(
                    platform::kUnspecified,
                    fmt::format("Cannot push to {}: what answers there is no media server but "
                                "\"{}\"; TESSIVO_PUSH_ANY_SERVER=1 pushes all the same",
                                Name(), answer.server));
            if (!answer.push_id.empty()) push_id_ = answer.push_id;
            cookies_ = answer.push_id.empty() ? "push-id=" + push_id_ : answer.cookies;
            return;
        }
        if (answer.LeadsElsewhere() && redirections++ < kMostRedirections) {
            address_ = ParseLocation(answer.location);
            connection_.Close();
        } else if (answer.status == 401 && !answer.challenge.empty() && untried) {
            untried = false;
            authentication_.Accept(answer.challenge);
        } else if (answer.status == 401 && !answer.challenge.empty() && Ask(ask)) {
            untried = true;
        } else if (answer.status == 400 && push_id_ != "0") {
            push_id_ = "0";  // the server has forgotten the session
            cookies_.clear();
            connection_.Close();
        } else {
            connection_.Close();
            Refuse(answer);
        }
    }
}

void PushSession::BeginBody() {
    room_ = output_.body_bytes;
    connection_.Send(Head("application/x-wms-pushstart", room_, cookies_), kSendTime);
}

void PushSession::Start() {
    Named([&] { BeginBody(); });
    const FrameHead head = Frame('H', header_.size());
    const asio::const_buffer buffers[] = {asio::buffer(head), asio::buffer(header_)};
    SendBody(buffers);
}

void PushSession::SendBody(std::span<const asio::const_buffer> buffers) {
    const std::size_t bytes = asio::buffer_size(buffers);
    MakeRoom(bytes);
    Named([&] { connection_.Send(buffers, kSendTime); });
    room_ -= bytes;
    bytes_sent_ += bytes;
}

// What does not fit goes into another body; the rest of this one is filled up, to the last byte.
void PushSession::MakeRoom(std::size_t bytes) {
    if (bytes + kFrameBytes <= room_ || bytes == room_) return;
    static constexpr std::array<std::uint8_t, kMostFilled> kNothing{};
    Named([&] {
        while (room_ > 0) {
            std::size_t filler = std::min<std::uint64_t>(room_ - kFrameBytes, kMostFilled);
            const std::uint64_t left = room_ - kFrameBytes - filler;
            if (left > 0 && left < kFrameBytes) filler -= kFrameBytes;
            const FrameHead head = Frame('F', filler);
            const asio::const_buffer buffers[] = {asio::buffer(head),
                                                  asio::buffer(kNothing.data(), filler)};
            connection_.Send(buffers, kSendTime);
            room_ -= kFrameBytes + filler;
        }
        const PushAnswer answer = connection_.Receive(output_.answer_time);
        if (!answer.IsOk()) Refuse(answer);
        BeginBody();
    });
}

void PushSession::Send(const LivePacket& packet) {
    const asf::UnpaddedPacket& unpadded = packet.unpadded;
    const FrameHead head = Frame('D', unpadded.size);
    const asio::const_buffer buffers[] = {asio::buffer(head), asio::buffer(unpadded.head),
                                          asio::buffer(packet.bytes.data() + unpadded.head.size(),
                                                       unpadded.size - unpadded.head.size())};
    SendBody(buffers);
}

void PushSession::End() {
    static constexpr std::array<std::uint8_t, kEndBytes> kEnd = {'$', 'E', 4, 0, 0, 0, 0, 0};
    const asio::const_buffer buffer = asio::buffer(kEnd);
    SendBody({&buffer, 1});
    connection_.Close();
}

void PushSession::CheckNews() {
    if (!connection_.HasNews()) return;
    const PushAnswer answer = Named([&] { return connection_.Receive(output_.answer_time); });
    connection_.Close();
    Refuse(answer);
}

}  // namespace engine::push
