#include "engine/outputs/push/authentication.h"

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/md5.h>
}

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include <fmt/format.h>

#include "platform/text.h"

namespace engine::push {
namespace {

std::string Md5(const std::string& text) {
    std::array<std::uint8_t, 16> sum{};
    av_md5_sum(sum.data(), reinterpret_cast<const std::uint8_t*>(text.data()),
               static_cast<std::size_t>(text.size()));
    std::string hex;
    for (const std::uint8_t byte : sum) hex += fmt::format("{:02x}", byte);
    return hex;
}

std::string Base64(const std::string& text) {
    std::vector<char> coded(AV_BASE64_SIZE(text.size()));
    av_base64_encode(coded.data(), static_cast<int>(coded.size()),
                     reinterpret_cast<const std::uint8_t*>(text.data()),
                     static_cast<int>(text.size()));
    return coded.data();
}

std::string SchemeOf(const std::string& challenge) {
    return platform::LowerCase(challenge.substr(0, challenge.find(' ')));
}

// name=value or name="value", parted by commas; names in lower case.
std::map<std::string, std::string> ParametersOf(const std::string& challenge) {
    std::map<std::string, std::string> parameters;
    std::size_t at = challenge.find(' ');
    while (at < challenge.size()) {
        const std::size_t begin = challenge.find_first_not_of(" ,\t", at);
        const std::size_t equals = challenge.find('=', begin);
        if (begin == std::string::npos || equals == std::string::npos) break;
        const std::string name =
            platform::LowerCase(platform::TrimBlanks(challenge.substr(begin, equals - begin)));
        std::string value;
        at = equals + 1;
        if (at < challenge.size() && challenge[at] == '"') {
            for (++at; at < challenge.size() && challenge[at] != '"'; ++at) {
                if (challenge[at] == '\\' && at + 1 < challenge.size()) ++at;
                value += challenge[at];
            }
            ++at;
        } else {
            const std::size_t end = std::min(challenge.find(',', at), challenge.size());
            value = platform::TrimBlanks(challenge.substr(at, end - at));
            at = end;
        }
        parameters[name] = value;
    }
    return parameters;
}

// "auth" is what can be done; a list may offer more.
bool OffersAuth(const std::string& qop) {
    for (const std::string& word : platform::Split(qop, ','))
        if (platform::LowerCase(platform::TrimBlanks(word)) == "auth") return true;
    return false;
}

int Worth(const std::string& challenge) {
    const std::string scheme = SchemeOf(challenge);
    if (scheme == "basic") return 1;
    if (scheme != "digest") return 0;
    auto parameters = ParametersOf(challenge);
    const std::string algorithm = platform::LowerCase(parameters["algorithm"]);
    const bool known_qop = parameters["qop"].empty() || OffersAuth(parameters["qop"]);
    return (algorithm.empty() || algorithm == "md5") && known_qop ? 2 : 0;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

}  // namespace

bool IsBetterChallenge(const std::string& challenge, const std::string& than) {
    return Worth(challenge) > Worth(than);
}

void Authentication::Accept(const std::string& challenge) {
    challenge_ = challenge;
    count_ = 0;
}

std::string Authentication::FieldFor(const std::string& path, const std::string& client_nonce) {
    if (challenge_.empty() || !HasCredentials()) return {};
    if (SchemeOf(challenge_) == "basic")
        return "Basic " + Base64(credentials_.user + ":" + credentials_.password);
    auto parameters = ParametersOf(challenge_);
    const std::string& realm = parameters["realm"];
    const std::string& nonce = parameters["nonce"];
    const std::string who = Md5(credentials_.user + ":" + realm + ":" + credentials_.password);
    const std::string what = Md5("POST:" + path);
    std::string field =
        fmt::format("Digest username={}, realm={}, nonce={}, uri={}", Quoted(credentials_.user),
                    Quoted(realm), Quoted(nonce), Quoted(path));
    if (parameters["qop"].empty()) {
        field += fmt::format(", response=\"{}\"", Md5(who + ":" + nonce + ":" + what));
    } else {
        const std::string count = fmt::format("{:08x}", ++count_);
        const std::string response =
            Md5(fmt::format("{}:{}:{}:{}:auth:{}", who, nonce, count, client_nonce, what));
        field += fmt::format(", qop=auth, nc={}, cnonce={}, response=\"{}\"", count,
                             Quoted(client_nonce), response);
    }
    if (!parameters["algorithm"].empty())
        field += fmt::format(", algorithm={}", parameters["algorithm"]);
    if (!parameters["opaque"].empty())
        field += fmt::format(", opaque={}", Quoted(parameters["opaque"]));
    return field;
}

}  // namespace engine::push
