// Any bytes as what a client says to a broadcast: parsed and understood as the server does it.
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "engine/outputs/http/request.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace beast_http = boost::beast::http;
    beast_http::request_parser<beast_http::string_body> parser;
    parser.header_limit(16U << 10U);
    parser.body_limit(64U << 10U);
    parser.eager(true);
    boost::system::error_code error;
    std::size_t used = 0;
    while (used < size && !error && !parser.is_done()) {
        const std::size_t taken = parser.put(boost::asio::buffer(data + used, size - used), error);
        if (taken == 0) break;
        used += taken;
    }
    if (!parser.is_header_done()) return 0;
    const engine::http::Asked asked = engine::http::WhatIsAsked(parser.get());
    // What a page shows must not be able to leave its place.
    if (asked.host.find_first_of("<>\"'& ") != std::string::npos) std::abort();
    return 0;
}
