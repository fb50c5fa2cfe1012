// What browsers and programs are told of a broadcast.
#pragma once

#include <string>

#include "engine/outputs/http/server_status.h"

namespace engine::http {

/// @param host  as the browser calls the server, with the port; "" = not known
std::string PageText(const StatusText& status, const std::string& host);
std::string JsonText(const StatusText& status);

}  // namespace engine::http
