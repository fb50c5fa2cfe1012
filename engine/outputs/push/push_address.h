// Where a push goes, taken apart.
#pragma once

#include <cstdint>
#include <string>

namespace engine::push {

struct PushAddress {
    std::string host;
    std::uint16_t port = 80;
    std::string path;  // of the publishing point: begins with "/", blanks and the like are escaped

    /// As a request names it: without the usual port.
    std::string HostText() const;
};

/// @param server  "media.example", "media.example:8081" or "http://media.example/"
/// Throws platform::Error (invalid argument) for what is none.
PushAddress ParseAddress(const std::string& server, const std::string& publishing_point);

/// An absolute address that an answer names. Throws the same.
PushAddress ParseLocation(const std::string& location);

/// What a path may hold stays, the rest is escaped; "/" is put before it.
std::string EscapedPath(const std::string& text);

}  // namespace engine::push
