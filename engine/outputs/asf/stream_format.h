// Whether the description of a stream in a container's header is one that players open.
#pragma once

#include <cstdint>
#include <span>

namespace engine::asf {

/// What is wrong with the body of a Stream Properties Object, nullptr when nothing is. Of kinds
/// other than audio and video only the lengths are looked at.
const char* FaultOfStream(std::span<const std::uint8_t> body);

/// The same of a Metadata Object's body: records that do not fit into it.
const char* FaultOfMetadata(std::span<const std::uint8_t> body);

}  // namespace engine::asf
