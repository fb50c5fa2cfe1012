// What a server answers to a push (the Windows Media HTTP Push Distribution Protocol, MS-WMHTTP).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/message.hpp>

namespace engine::push {

struct PushAnswer {
    unsigned status = 0;
    std::string reason;
    std::string server;     // its product
    std::string push_id;    // of the session; "" = none was given
    std::string cookies;    // all of them, as they are sent back
    std::string challenge;  // the one that can be met; "" = none
    std::string location;   // where to go instead

    bool IsOk() const { return status == 200 || status == 204; }
    bool LeadsElsewhere() const { return status >= 300 && status < 305 && !location.empty(); }
    /// An ordinary web server takes no streams.
    bool IsOfMediaServer() const;
};

PushAnswer ReadAnswer(const boost::beast::http::response_header<>& header);

}  // namespace engine::push
