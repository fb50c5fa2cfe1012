#include "engine/outputs/http/server_status.h"

#include <algorithm>
#include <utility>

namespace engine::http {

ServerStatus::ServerStatus(const OutputHeader& header) {
    described_.title = header.content.title;
    for (const StreamHeader& stream : header.streams)
        described_.streams.push_back({stream.Kind() == MediaKind::Audio ? "audio" : "video",
                                      stream.codec_name, stream.codec_description,
                                      stream.average_rate_bps});
}

void ServerStatus::AddressesAre(std::vector<std::string> addresses) {
    const std::lock_guard lock(mutex_);
    stats_.addresses = std::move(addresses);
}

void ServerStatus::ClientCame() {
    const std::lock_guard lock(mutex_);
    ++stats_.clients_served;
    stats_.most_clients = std::max(stats_.most_clients, ++stats_.clients);
}

void ServerStatus::ClientWent() {
    const std::lock_guard lock(mutex_);
    --stats_.clients;
}

void ServerStatus::Sent(std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    stats_.bytes_sent += static_cast<std::int64_t>(bytes);
}

void ServerStatus::Withheld(std::uint64_t frames) {
    const std::lock_guard lock(mutex_);
    stats_.frames_withheld += static_cast<std::int64_t>(frames);
}

platform::BroadcastStats ServerStatus::Stats() const {
    const std::lock_guard lock(mutex_);
    return stats_;
}

StatusText ServerStatus::Text() const {
    StatusText text = described_;
    text.stats = Stats();
    text.uptime_s =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - began_)
            .count();
    return text;
}

}  // namespace engine::http
