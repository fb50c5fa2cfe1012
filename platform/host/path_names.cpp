#include "platform/host/path_names.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace platform::host {

namespace {

using Pieces = std::vector<std::string>;

bool ExistsAsSpelt(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool StartsWithDrive(std::string_view name) {
    if (name.size() < 2 || name[1] != ':') return false;
    const char letter = LowerCase(name.substr(0, 1))[0];
    return letter >= 'a' && letter <= 'z';
}

/// Resolves "." and ".." and joins. A root swallows ".."; a relative name keeps it in front.
std::string Join(const Pieces& pieces, bool from_root) {
    Pieces kept;
    for (const std::string& piece : pieces) {
        if (piece.empty() || piece == ".") continue;
        if (piece != ".." || (!from_root && (kept.empty() || kept.back() == ".."))) {
            kept.push_back(piece);
        } else if (!kept.empty()) {
            kept.pop_back();
        }
    }
    std::string joined = from_root ? "/" : "";
    for (std::size_t i = 0; i < kept.size(); ++i) joined.append(i > 0 ? "/" : "").append(kept[i]);
    if (joined.empty()) return ".";
    return joined;
}

Pieces SplitAtBoth(std::string_view name) {
    std::string slashes(name);
    for (char& c : slashes)
        if (c == '\\') c = '/';
    return Split(slashes, '/');
}

/// Splits at slashes, and at the backslashes of every piece that does not exist as it is spelt.
Pieces SplitHostName(std::string_view name) {
    Pieces pieces;
    std::string so_far = StartsWith(name, "/") ? "/" : "";
    for (const std::string& piece : Split(name, '/')) {
        const bool literal = piece.find('\\') == std::string::npos || ExistsAsSpelt(so_far + piece);
        for (std::string& part : literal ? Pieces{piece} : SplitAtBoth(piece)) {
            so_far.append(part).append("/");
            pieces.push_back(std::move(part));
        }
    }
    return pieces;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// RFC 3986, 2.1. What is no escape, and an escaped zero byte, stays as it stands.
std::string DecodeEscapes(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0 || high * 16 + low == 0) {
            decoded.push_back(text[i]);
        } else {
            decoded.push_back(static_cast<char>(high * 16 + low));
            i += 2;
        }
    }
    return decoded;
}

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && *found->pw_dir == '/')
        return found->pw_dir;
    return "/";
}

}  // namespace

PathNames::PathNames(std::string_view drive_root)
    : drive_root_(Join(Split(drive_root, '/'), true)) {}

PathNames PathNames::OfUser() {
    const char* root = std::getenv("TESSIVO_DRIVE_ROOT");
    if (root == nullptr || *root == '\0') return PathNames(HomeFolder());
    // Seen from the working folder of now, should the variable hold a relative name.
    return PathNames(PathNames("/").AbsolutePath(root));
}

std::string PathNames::BelowDriveRoot(std::string_view rest) const {
    const std::string below = Join(SplitAtBoth(rest), true);
    if (below == "/") return drive_root_;
    return drive_root_ == "/" ? below : drive_root_ + below;
}

std::string PathNames::HostName(std::string_view name) const {
    if (name.empty()) return {};

    constexpr std::string_view kUri = "file:/";
    if (LowerCase(name.substr(0, kUri.size())) == kUri) {
        std::string_view rest = name.substr(kUri.size() - 1);
        std::string server;
        if (StartsWith(rest, "//")) {
            rest.remove_prefix(2);
            const std::size_t end = std::min(rest.find('/'), rest.size());
            server = LowerCase(rest.substr(0, end));
            rest.remove_prefix(end);
        }
        const std::string path = DecodeEscapes(rest);
        // "file://C:/a.avi" has the drive where the server should stand.
        if (StartsWithDrive(server)) return BelowDriveRoot(server.substr(2) + path);
        if (!server.empty() && server != "localhost") return BelowDriveRoot(server + path);
        if (StartsWithDrive(std::string_view(path).substr(std::min<std::size_t>(path.size(), 1))))
            return BelowDriveRoot(path.substr(3));
        return Join(Split(path, '/'), true);
    }

    std::string_view rest = name;
    if (StartsWith(rest, "\\\\?\\")) rest.remove_prefix(4);
    const std::string first_piece(rest.substr(0, rest.find('/')));
    if (StartsWithDrive(rest) && !ExistsAsSpelt(first_piece)) return BelowDriveRoot(rest.substr(2));
    if (StartsWith(rest, "\\\\")) return BelowDriveRoot(rest);

    const bool from_root =
        StartsWith(rest, "/") || (StartsWith(rest, "\\") && !ExistsAsSpelt(first_piece));
    return Join(SplitHostName(rest), from_root);
}

std::string PathNames::AbsolutePath(std::string_view name) const {
    std::string path = HostName(name);
    if (StartsWith(path, "/")) return path;
    std::array<char, PATH_MAX> folder{};
    if (::getcwd(folder.data(), folder.size()) == nullptr) return path;
    Pieces pieces = Split(folder.data(), '/');
    for (std::string& piece : Split(path, '/')) pieces.push_back(std::move(piece));
    return Join(pieces, true);
}

}  // namespace platform::host
