#include "engine/outputs/http/answers.h"

#include <fmt/format.h>

namespace engine::http {
namespace {

// Players and servers look for one that the protocol names.
constexpr const char* kServer = "Cougar/9.01.01.3841";

// A player takes a stream with "broadcast" for one without a beginning, and does not seek in it.
std::string PlayerLines(std::uint32_t client_id) {
    return fmt::format(
        "Pragma: no-cache, client-id={}, features=\"broadcast,playlist\", timeout=60000\r\n",
        client_id);
}

std::string Lines(std::string_view type, std::string_view more) {
    return fmt::format(
        "HTTP/1.0 200 OK\r\nServer: {}\r\nContent-Type: {}\r\nCache-Control: no-cache\r\n{}\r\n",
        kServer, type, more);
}

std::string_view Reason(unsigned status) {
    switch (status) {
        case 204:
            return "No Content";
        case 404:
            return "Not Found";
        case 408:
            return "Request Timeout";
        case 413:
            return "Payload Too Large";
        case 501:
            return "Not Implemented";
        case 503:
            return "Service Unavailable";
        default:
            return "Bad Request";
    }
}

}  // namespace

std::string DescribeAnswer(std::size_t bytes, std::uint32_t client_id, bool keep_alive) {
    return Lines("application/vnd.ms.wms-hdr.asfv1",
                 fmt::format("Content-Length: {}\r\n{}Connection: {}\r\n", bytes,
                             PlayerLines(client_id), keep_alive ? "Keep-Alive" : "close"));
}

std::string PlayAnswer(std::uint32_t client_id) {
    return Lines("application/x-mms-framed", PlayerLines(client_id) + "Connection: close\r\n");
}

std::string StreamAnswer() {
    return Lines("video/x-ms-asf", "Accept-Ranges: none\r\nConnection: close\r\n");
}

std::string TextAnswer(std::string_view type, const std::string& text, bool head_only) {
    return Lines(type, fmt::format("Content-Length: {}\r\nX-Content-Type-Options: nosniff\r\n"
                                   "Content-Security-Policy: default-src 'none'; style-src "
                                   "'unsafe-inline'\r\nConnection: close\r\n",
                                   text.size())) +
           (head_only ? std::string() : text);
}

std::string ShortAnswer(unsigned status) {
    return fmt::format(
        "HTTP/1.0 {} {}\r\nServer: {}\r\nContent-Length: 0\r\nConnection: close\r\n\r\n", status,
        Reason(status), kServer);
}

}  // namespace engine::http
