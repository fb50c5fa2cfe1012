// The lines in front of what a client gets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace engine::http {

/// @param client_id  a number other than 0 by which a player knows its session
std::string DescribeAnswer(std::size_t bytes, std::uint32_t client_id, bool keep_alive);
std::string PlayAnswer(std::uint32_t client_id);
std::string StreamAnswer();
/// A whole text, with its lines in front.
std::string TextAnswer(std::string_view type, const std::string& text, bool head_only);
/// Without content: 204, 400, 404, 408, 413, 501 or 503.
std::string ShortAnswer(unsigned status);

}  // namespace engine::http
