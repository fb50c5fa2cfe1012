// What a client asks of the broadcast.
#pragma once

#include <cstdint>
#include <string>

#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/message.hpp>

namespace engine::http {

struct Asked {
    enum class What : std::uint8_t {
        Describe,  // the container's header, framed
        Play,      // header and packets, framed
        Stream,    // header and packets as they are
        Page,
        Status,   // of the broadcast, as JSON
        Noted,    // a report or a word in between that needs no answer
        Refusal,  // `status` says why
    };
    What what = What::Refusal;
    unsigned status = 400;
    bool head_only = false;
    bool keep_alive = false;     // after a description
    bool whole_packets = false;  // padding stays: another server reads
    std::string host;            // as the client calls this one; "" where that is no plain name
};

/// Lenient: what is not known does not matter.
Asked WhatIsAsked(const boost::beast::http::request_header<>& request);

}  // namespace engine::http
