#include "engine/object_model/session_tree.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/plan/value_ranges.h"

namespace engine {

namespace {

void CheckProtocol(platform::BroadcastProtocol protocol) {
    if (protocol != platform::BroadcastProtocol::Http)
        RefuseArgument(fmt::format("Broadcast protocol {} is not known: give HTTP (1)",
                                   static_cast<std::int32_t>(protocol)));
}

}  // namespace

std::int32_t Broadcast::PortNumber(platform::BroadcastProtocol protocol) const {
    CheckProtocol(protocol);
    return state_.http_port;
}

void Broadcast::SetPortNumber(platform::BroadcastProtocol protocol, std::int32_t port) {
    CheckProtocol(protocol);
    state_.http_port = InRange(ranges::kPortNumber, port);
}

void Attributes::Add(const std::string& name, const platform::AttributeValue& value) {
    if (name.empty()) RefuseArgument("An attribute needs a name");
    const auto same = std::find_if(items_.begin(), items_.end(),
                                   [&](const auto& item) { return item.first == name; });
    if (same != items_.end())
        same->second = value;
    else
        items_.emplace_back(name, value);
}

std::pair<std::string, platform::AttributeValue> Attributes::Item(int index) const {
    if (index < 0 || index >= Count())
        RefuseArgument(fmt::format("There is no attribute {}", index));
    return items_[static_cast<std::size_t>(index)];
}

SessionRecord SessionTree::Record() const {
    return {groups.Records(),  file.LocalFileName(), broadcast.State(),
            display.Content(), attributes.Items(),   auto_stop,
            video_performance};
}

void SessionTree::TakeOver(const SessionRecord& session) {
    groups.TakeOver(session.groups);
    // What is not there yet is refused when the session is prepared.
    platform::ErrorTrap trap;
    trap([&] { groups.OpenNamed(); });
    file.SetLocalFileName(session.output);
    broadcast.TakeOver(session.broadcast);
    display.TakeOver(session.content);
    attributes.TakeOver(session.attributes);
    auto_stop = session.auto_stop;
    video_performance = session.video_performance;
}

}  // namespace engine
