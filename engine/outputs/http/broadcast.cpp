#include "engine/outputs/http/broadcast.h"

#include <utility>

#include <fmt/format.h>

#include "engine/outputs/http/broadcast_server.h"

namespace engine::http {

Broadcast::Broadcast(BroadcastOutput output, OutputNotices notices)
    : output_(std::move(output)), notices_(std::move(notices)) {}

Broadcast::~Broadcast() = default;

void Broadcast::Begin(const OutputHeader& header) {
    stream_ = std::make_unique<LiveStream>(
        header, [this](LivePacketPtr packet) { server_->Send(std::move(packet)); });
    status_ = std::make_unique<ServerStatus>(header);
    server_ = std::make_unique<BroadcastServer>(
        ServerSettings{output_.port, output_.address, output_.most_clients}, stream_->Header(),
        *status_);
    SayAddresses();
}

void Broadcast::SayAddresses() const {
    std::string text = "Broadcasting at ";
    bool first = true;
    for (const std::string& address : status_->Stats().addresses) {
        text += fmt::format("{}{}", first ? "" : ", ", address);
        first = false;
    }
    notices_(text + " (players take mmsh:// in place of http:// too).");
}

void Broadcast::Write(const CodedFrame& frame) { stream_->Write(frame); }

void Broadcast::Flush() { stream_->Flush(); }

void Broadcast::Finish() {
    if (!server_) return;
    stream_->Flush();
    server_->End();
}

void Broadcast::Abandon() {
    if (server_) server_->End();
}

void Broadcast::AddTo(platform::NetworkStats& stats) const {
    if (status_) stats.broadcast = status_->Stats();
}

}  // namespace engine::http
