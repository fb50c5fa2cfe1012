#include "engine/outputs/push/push_answer.h"

#include <vector>

#include "engine/outputs/push/authentication.h"
#include "platform/text.h"

namespace engine::push {
namespace {

namespace beast_http = boost::beast::http;
using beast_http::field;

constexpr std::string_view kPushId = "push-id=";
constexpr std::size_t kLongestId = 255;

void AddCookie(PushAnswer& answer, std::string cookie) {
    cookie = platform::TrimBlanks(cookie.substr(0, cookie.find(';')));
    if (cookie.empty()) return;
    if (platform::StartsWith(platform::LowerCase(cookie), kPushId))
        answer.push_id = cookie.substr(kPushId.size(), kLongestId);
    if (!answer.cookies.empty()) answer.cookies += "; ";
    answer.cookies += cookie;
}

}  // namespace

bool PushAnswer::IsOfMediaServer() const {
    const std::string product = platform::LowerCase(server);
    return platform::StartsWith(product, "cougar/") || platform::StartsWith(product, "rex/");
}

PushAnswer ReadAnswer(const beast_http::response_header<>& header) {
    PushAnswer answer;
    answer.status = header.result_int();
    answer.reason = std::string(header.reason());
    answer.server = std::string(header[field::server]);
    answer.location = std::string(header[field::location]);
    const auto [first_cookie, last_cookie] = header.equal_range(field::set_cookie);
    for (auto line = first_cookie; line != last_cookie; ++line)
        AddCookie(answer, std::string(line->value()));
    const auto [first, last] = header.equal_range(field::www_authenticate);
    for (auto line = first; line != last; ++line) {
        const std::string challenge(line->value());
        if (IsBetterChallenge(challenge, answer.challenge)) answer.challenge = challenge;
    }
    return answer;
}

}  // namespace engine::push
