// Any bytes as what a server answers to a push: parsed, its challenge signed, its address followed.
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "engine/outputs/push/authentication.h"
#include "engine/outputs/push/push_address.h"
#include "engine/outputs/push/push_answer.h"
#include "platform/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace beast_http = boost::beast::http;
    beast_http::response_parser<beast_http::string_body> parser;
    parser.header_limit(16U << 10U);
    parser.body_limit(32U << 10U);
    parser.eager(true);
    boost::system::error_code error;
    std::size_t used = 0;
    while (used < size && !error && !parser.is_done()) {
        const std::size_t taken = parser.put(boost::asio::buffer(data + used, size - used), error);
        if (taken == 0) break;
        used += taken;
    }
    if (!parser.is_header_done()) return 0;
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
