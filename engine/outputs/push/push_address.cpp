#include "engine/outputs/push/push_address.h"

#include <charconv>
#include <string_view>

#include <fmt/format.h>

#include "platform/error.h"
#include "platform/text.h"

namespace engine::push {
namespace {

constexpr std::string_view kScheme = "http://";
constexpr std::uint16_t kUsualPort = 80;

[[noreturn]] void Refuse(const std::string& server) {
    throw platform::Error(platform::kInvalidArgument,
                          fmt::format("\"{}\" is no server to push to: give -push a name or an "
                                      "address, such as media.example or media.example:8080",
                                      server));
}

bool IsHost(const std::string& host) {
    constexpr std::string_view kPunctuation = ".-_:";
    for (const char c : host) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(c >= '0' && c <= '9') && kPunctuation.find(c) == std::string_view::npos)
            return false;
    }
    return !host.empty();
}

}  // namespace

std::string PushAddress::HostText() const {
    const std::string name = host.find(':') == std::string::npos ? host : "[" + host + "]";
    return port == kUsualPort ? name : fmt::format("{}:{}", name, port);
}

std::string EscapedPath(const std::string& text) {
    constexpr std::string_view kPlain = "-._~!$&'()*+,;=:@/%";
    std::string path = text.starts_with('/') ? "" : "/";
    for (const char c : text) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter || (c >= '0' && c <= '9') || kPlain.find(c) != std::string_view::npos)
            path += c;
        else
            path += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return path;
}

PushAddress ParseAddress(const std::string& server, const std::string& publishing_point) {
    std::string rest = server;
    if (platform::StartsWith(platform::LowerCase(rest), kScheme)) rest.erase(0, kScheme.size());
    if (rest.ends_with('/')) rest.pop_back();
    PushAddress address;
    address.path = EscapedPath(publishing_point);
    std::size_t end = rest.find(':');
    if (rest.starts_with('[')) {
        end = rest.find(']');
        if (end == std::string::npos) Refuse(server);
        address.host = rest.substr(1, end - 1);
        ++end;
    } else {
        address.host = rest.substr(0, end);
    }
    if (!IsHost(address.host)) Refuse(server);
    if (end == std::string::npos || end == rest.size()) return address;
    if (rest[end] != ':') Refuse(server);
    const char* const last = rest.data() + rest.size();
    const auto parsed = std::from_chars(rest.data() + end + 1, last, address.port);
    if (parsed.ec != std::errc() || parsed.ptr != last || address.port == 0) Refuse(server);
    return address;
}

PushAddress ParseLocation(const std::string& location) {
    if (!platform::StartsWith(platform::LowerCase(location), kScheme)) Refuse(location);
    const std::size_t slash = location.find('/', kScheme.size());
    if (slash == std::string::npos) return ParseAddress(location, "/");
    return ParseAddress(location.substr(0, slash), location.substr(slash));
}

}  // namespace engine::push
