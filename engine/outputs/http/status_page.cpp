#include "engine/outputs/http/status_page.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace engine::http {
namespace {

constexpr std::string_view kScheme = "http://";

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --line: #8886; --soft: #8882; }
body { font: 1rem/1.5 system-ui, sans-serif; max-width: 42rem; margin: 0 auto; padding: 1rem; }
h1 { font-size: 1.6rem; margin: .5rem 0; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; margin: 1.5rem 0 .5rem; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: .35rem .75rem .35rem 0;
         border-bottom: 1px solid var(--line); overflow-wrap: anywhere; }
th { font-weight: 600; width: 40%; }
code { display: block; padding: .5rem .75rem; margin: .4rem 0; background: var(--soft);
       border-radius: .4rem; overflow-x: auto; user-select: all; }
)";

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string Row(std::string_view name, const std::string& value) {
    return fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td></tr>\n", name, value);
}

std::string StreamText(const StatusText::Stream& stream) {
    std::string text = Escaped(stream.codec);
    if (!stream.description.empty()) text += "<br>" + Escaped(stream.description);
    // The descriptions of most modes say it.
    if (stream.bit_rate_bps > 0 && stream.description.find("bps") == std::string::npos)
        text += fmt::format("<br>{} kbit/s", (stream.bit_rate_bps + 500) / 1000);
    return text;
}

std::string Megabytes(std::int64_t bytes) {
    return fmt::format("{:.1f} MB", static_cast<double>(bytes) / 1e6);
}

std::string Duration(std::int64_t seconds) {
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string MmshOf(const std::string& address) {
    return "mmsh://" + address.substr(kScheme.size());
}

// The one that the browser has used comes first: it is known to lead here.
std::vector<std::string> Addresses(const StatusText& status, const std::string& host) {
    std::vector<std::string> addresses = status.stats.addresses;
    if (host.empty()) return addresses;
    const std::string used = fmt::format("{}{}/", kScheme, host);
    std::erase(addresses, used);
    addresses.insert(addresses.begin(), used);
    return addresses;
}

std::string Code(const std::string& text) {
    return fmt::format("<code tabindex=\"0\">{}</code>\n", Escaped(text));
}

}  // namespace

std::string PageText(const StatusText& status, const std::string& host) {
    const std::string title =
        status.title.empty() ? std::string("Live broadcast") : Escaped(status.title);
    std::string page = fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<title>{0}</title>\n<style>{1}</style>\n</head>\n<body>\n<main>\n<h1>{0}</h1>\n",
        title, kStyle);
    page +=
        "<p>A live stream for media players. Browsers do not play it themselves: give a player "
        "one of these addresses.</p>\n<h2>Addresses</h2>\n";
    const std::vector<std::string> addresses = Addresses(status, host);
    for (const std::string& address : addresses) page += Code(MmshOf(address)) + Code(address);
    if (!addresses.empty()) {
        page +=
            "<h2>How to play</h2>\n<p>In a player with a window: open a network address (often "
            "Ctrl+N) and paste one of the above. On a command line:</p>\n";
        page += Code("vlc " + MmshOf(addresses.front())) +
                Code("mpv " + MmshOf(addresses.front())) +
                Code("ffplay " + MmshOf(addresses.front()));
    }
    page += "<h2>Streams</h2>\n<table>\n";
    for (const StatusText::Stream& stream : status.streams)
        page += Row(stream.kind == "audio" ? "Sound" : "Picture", StreamText(stream));
    page += "</table>\n<h2>Now</h2>\n<table>\n";
    page += Row("Listeners", fmt::format("{}", status.stats.clients));
    page += Row("Most at once", fmt::format("{}", status.stats.most_clients));
    page += Row("In all", fmt::format("{}", status.stats.clients_served));
    page += Row("Sent", Megabytes(status.stats.bytes_sent));
    page += Row("On air for", Duration(status.uptime_s));
    page += "</table>\n</main>\n</body>\n</html>\n";
    return page;
}

std::string JsonText(const StatusText& status) {
    using Json = nlohmann::ordered_json;
    Json object;
    object["title"] = status.title;
    object["addresses"] = status.stats.addresses;
    object["streams"] = Json::array();
    for (const StatusText::Stream& stream : status.streams)
        object["streams"].push_back({{"kind", stream.kind},
                                     {"codec", stream.codec},
                                     {"description", stream.description},
                                     {"bit_rate", stream.bit_rate_bps}});
    object["clients"] = status.stats.clients;
    object["most_clients"] = status.stats.most_clients;
    object["clients_served"] = status.stats.clients_served;
    object["bytes_sent"] = status.stats.bytes_sent;
    object["frames_withheld"] = status.stats.frames_withheld;
    object["uptime_seconds"] = status.uptime_s;
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace engine::http
