// Any bytes as what a client says to a broadcast: parsed and understood as the server does it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "engine/outputs/http/request.h"
#include "fuzz/http_message.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace http = boost::beast::http;
    http::request_parser<http::string_body> parser;
    if (!fuzz::Parse(parser, data, size)) return 0;
    const engine::http::Asked asked = engine::http::WhatIsAsked(parser.get());
    // What a page shows must not be able to leave its place.
    if (asked.host.find_first_of("<>\"'& ") != std::string::npos) std::abort();
    return 0;
}
