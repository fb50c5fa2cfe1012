#include "engine/outputs/http/broadcast_server.h"

#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>

#include "engine/outputs/http/status_page.h"
#include "platform/error.h"
#include "platform/posix/host_addresses.h"

namespace engine::http {
namespace {

namespace asio = boost::asio;
using ErrorCode = boost::system::error_code;
using platform::Error;

constexpr auto kTick = std::chrono::milliseconds(100);
constexpr auto kEndTime = std::chrono::seconds(3);
// A write costs about the same however much it writes: who serves many writes to each less often.
// A thousand clients get what has come 10 times a second, a few at once.
constexpr auto kRoundPerClient = std::chrono::microseconds(100);
constexpr std::size_t kMoreConnections = 100;  // than clients: those who ask
constexpr rlim_t kOtherDescriptors = 256;      // of the rest of the process

// Each client is a descriptor, and what a shell allows is few.
void AllowDescriptors(int clients) {
    const rlim_t wanted = static_cast<rlim_t>(clients) + kMoreConnections + kOtherDescriptors;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= wanted) return;
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
}

Error CannotListen(const ServerSettings& settings, const ErrorCode& error) {
    const int port = settings.port;
    if (error == asio::error::address_in_use)
        return {platform::kBusy,
                fmt::format("Port {} is in use by another program: give -broadcast another port",
                            port)};
    if (error == asio::error::access_denied)
        return {platform::kAccessDenied,
                fmt::format("Port {} may not be opened: give -broadcast one from 1024 on", port)};
    return {platform::kInvalidArgument,
            fmt::format("Cannot broadcast at {} port {}: {}; TESSIVO_BROADCAST_ADDRESS takes an "
                        "address of this machine",
                        settings.address.empty() ? "all addresses," : settings.address, port,
                        error.message())};
}

std::string AddressText(const std::string& host, int port) {
    const bool is_v6 = host.find(':') != std::string::npos;
    return is_v6 ? fmt::format("http://[{}]:{}/", host, port)
                 : fmt::format("http://{}:{}/", host, port);
}

}  // namespace

BroadcastServer::BroadcastServer(const ServerSettings& settings, std::vector<std::uint8_t> header,
                                 ServerStatus& status)
    : header_(std::move(header)), most_clients_(settings.most_clients), status_(status) {
    AllowDescriptors(most_clients_);
    Bind(settings);
    const bool anywhere = acceptor_.local_endpoint().address().is_unspecified();
    std::vector<std::string> addresses;
    for (const std::string& host :
         anywhere ? platform::HostAddresses() : std::vector<std::string>{settings.address})
        addresses.push_back(AddressText(host, acceptor_.local_endpoint().port()));
    status_.AddressesAre(std::move(addresses));
    Accept();
    Tick();
    thread_ = std::thread([this] { Run(); });
}

BroadcastServer::~BroadcastServer() { End(); }

void BroadcastServer::Bind(const ServerSettings& settings) {
    ErrorCode error;
    const auto listen = [&](const asio::ip::address& address) {
        acceptor_.close(error);
        const Tcp::endpoint endpoint(address, settings.port);
        acceptor_.open(endpoint.protocol(), error);
        if (!error) acceptor_.set_option(Tcp::acceptor::reuse_address(true), error);
        if (!error && address.is_v6() && address.is_unspecified())
            acceptor_.set_option(asio::ip::v6_only(false), error);
        if (!error) acceptor_.bind(endpoint, error);
        if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    };
    if (settings.address.empty()) {
        listen(asio::ip::address_v6::any());
        // A machine without the newer protocol, which the older one need not know of.
        if (error && error != asio::error::address_in_use) listen(asio::ip::address_v4::any());
    } else {
        const asio::ip::address address = asio::ip::make_address(settings.address, error);
        if (!error) listen(address);
    }
    if (error) throw CannotListen(settings, error);
}

// A fault of one client's handler must not end the others' stream.
void BroadcastServer::Run() {
    pthread_setname_np(pthread_self(), "broadcast");  // as lists of threads show it
    for (;;) {
        try {
            io_.run();
            return;
        } catch (const std::exception&) {
        }
    }
}

void BroadcastServer::Accept() {
    accepting_ = true;
    acceptor_.async_accept([this](ErrorCode error, Tcp::socket socket) {
        accepting_ = false;
        if (ending_) return;
        if (error) return;  // out of descriptors, most likely: the next tick tries again
        if (connections_.size() < static_cast<std::size_t>(most_clients_) + kMoreConnections) {
            ConnectionHost& host = *this;
            connections_.push_back(std::make_shared<Connection>(std::move(socket), host));
            connections_.back()->Start();
        }
        Accept();
    });
}

void BroadcastServer::Send(LivePacketPtr packet) {
    const std::lock_guard lock(mutex_);
    inbox_.push_back(std::move(packet));
    if (inbox_.size() == 1) asio::post(io_, [this] { AwaitRound(); });
}

void BroadcastServer::AwaitRound() {
    round_.expires_at(next_round_);
    round_.async_wait([this](ErrorCode) { Deliver(); });
}

void BroadcastServer::Deliver() {
    {
        const std::lock_guard lock(mutex_);
        delivered_.swap(inbox_);
    }
    next_round_ = Connection::Clock::now() + clients_ * kRoundPerClient;
    for (const LivePacketPtr& packet : delivered_) history_.Add(packet);
    for (const std::shared_ptr<Connection>& connection : connections_) connection->Send(delivered_);
    delivered_.clear();
}

void BroadcastServer::End() {
    if (!thread_.joinable()) return;
    asio::post(io_, [this] { BeginEnd(); });
    thread_.join();
}

void BroadcastServer::BeginEnd() {
    round_.cancel();
    Deliver();
    ending_ = true;
    end_due_ = Connection::Clock::now() + kEndTime;
    ErrorCode ignored;
    acceptor_.close(ignored);
    for (const std::shared_ptr<Connection>& connection : connections_) connection->End();
}

void BroadcastServer::Tick() {
    const auto now = Connection::Clock::now();
    for (const std::shared_ptr<Connection>& connection : connections_) connection->Check(now);
    if (ending_ && now >= end_due_)
        for (const std::shared_ptr<Connection>& connection : connections_) connection->Close();
    Sweep();
    if (ending_ && connections_.empty()) return;  // nothing is left to do for the thread
    if (!accepting_ && !ending_) Accept();
    tick_.expires_after(kTick);
    tick_.async_wait([this](ErrorCode) { Tick(); });
}

void BroadcastServer::Sweep() {
    if (!std::exchange(any_closed_, false)) return;
    std::erase_if(connections_, [](const auto& connection) { return connection->IsClosed(); });
}

bool BroadcastServer::Admit() {
    if (ending_ || clients_ >= most_clients_) return false;
    ++clients_;
    status_.ClientCame();
    return true;
}

std::string BroadcastServer::Page(const std::string& host) const {
    return PageText(status_.Text(), host);
}

std::string BroadcastServer::Status() const { return JsonText(status_.Text()); }

void BroadcastServer::Closed(bool was_listening) {
    any_closed_ = true;
    if (!was_listening) return;
    --clients_;
    status_.ClientWent();
}

}  // namespace engine::http
