// Any bytes as a message of HTTP.
#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstddef>
#include <cstdint>

namespace fuzz {

/// Feeds a parser as a connection would. False when the message has no whole header.
template <bool is_request>
bool Parse(boost::beast::http::parser<is_request, boost::beast::http::string_body>& parser,
           const std::uint8_t* data, std::size_t size) {
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
    return parser.is_header_done();
}

}  // namespace fuzz
