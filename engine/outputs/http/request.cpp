#include "engine/outputs/http/request.h"

#include <algorithm>
#include <string_view>

#include "platform/text.h"

namespace engine::http {
namespace {

namespace beast_http = boost::beast::http;
using beast_http::field;
using beast_http::verb;
using Header = beast_http::request_header<>;
using What = Asked::What;

constexpr std::size_t kLongestHost = 255;

std::string Lower(boost::beast::string_view text) { return platform::LowerCase(std::string(text)); }

bool Contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// Over all lines of the name.
bool AnyContains(const Header& request, field name, std::string_view part) {
    const auto [begin, end] = request.equal_range(name);
    return std::any_of(begin, end,
                       [&](const auto& line) { return Contains(Lower(line.value()), part); });
}

// Without host and query.
std::string PathOf(boost::beast::string_view target) {
    std::string path(target);
    constexpr std::string_view kScheme = "http://";
    if (platform::StartsWith(platform::LowerCase(path), kScheme)) {
        const std::size_t slash = path.find('/', kScheme.size());
        path = slash == std::string::npos ? "/" : path.substr(slash);
    }
    return path.substr(0, path.find('?'));
}

std::string HostOf(const Header& request) {
    const std::string host(request[field::host]);
    const auto is_plain = [](unsigned char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '.' || c == '-' || c == ':' || c == '[' || c == ']';
    };
    const bool plain =
        host.size() <= kLongestHost && std::all_of(host.begin(), host.end(), is_plain);
    return plain ? host : std::string();
}

What WhatAPlayerAsks(const Header& request) {
    if (AnyContains(request, field::pragma, "xstopstrm=1") ||
        AnyContains(request, field::pragma, "xkeepaliveinpause=1"))
        return What::Noted;
    return AnyContains(request, field::pragma, "xplaystrm=1") ? What::Play : What::Describe;
}

}  // namespace

Asked WhatIsAsked(const Header& request) {
    Asked asked;
    asked.head_only = request.method() == verb::head;
    asked.host = HostOf(request);
    if (request.method() == verb::post) {
        asked.what = What::Noted;
        return asked;
    }
    if (request.method() != verb::get && request.method() != verb::head) {
        asked.status = 501;
        return asked;
    }
    const std::string path = PathOf(request.target());
    if (path == "/status.json") {
        asked.what = What::Status;
        return asked;
    }
    if (path != "/") {
        asked.status = 404;
        return asked;
    }
    const std::string agent = Lower(request[field::user_agent]);
    if (Contains(agent, "nsplayer") || Contains(agent, "nsserver") ||
        AnyContains(request, field::pragma, "xclientguid")) {
        asked.what = WhatAPlayerAsks(request);
        asked.keep_alive = Lower(request[field::connection]) == "keep-alive";
        asked.whole_packets = Contains(agent, "nsserver");
        return asked;
    }
    // Browsers ask for it by name; players take anything.
    asked.what = AnyContains(request, field::accept, "text/html") ? What::Page : What::Stream;
    return asked;
}

}  // namespace engine::http
