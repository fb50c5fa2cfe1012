// Any bytes as what a server answers to a push: parsed, its challenge signed, its address followed.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "engine/outputs/push/authentication.h"
#include "engine/outputs/push/push_address.h"
#include "engine/outputs/push/push_answer.h"
#include "fuzz/http_message.h"
#include "platform/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace http = boost::beast::http;
    http::response_parser<http::string_body> parser;
    if (!fuzz::Parse(parser, data, size)) return 0;
    const engine::push::PushAnswer answer = engine::push::ReadAnswer(parser.get());
    engine::push::Authentication authentication({"anna", "secret"});
    authentication.Accept(answer.challenge);
    const std::string field = authentication.FieldFor("/live", "0");
    // What goes into a request must not be able to begin another line of it.
    for (const std::string& text : {field, answer.cookies, answer.push_id})
        if (text.find_first_of("\r\n") != std::string::npos) std::abort();
    try {
        const auto address = engine::push::ParseLocation(answer.location);
        if (address.path.find_first_of("\r\n ") != std::string::npos) std::abort();
    } catch (const platform::Error&) {
        // refused
    }
    return 0;
}
