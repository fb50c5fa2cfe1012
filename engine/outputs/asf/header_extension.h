// The header's extension: buffer windows and peak rates of the streams, and their attributes.
#pragma once

#include "engine/outputs/asf/byte_writer.h"
#include "engine/outputs/asf/header.h"

namespace engine::asf {

/// The rate that the header states for a stream: its own, else the measured one.
std::uint32_t AverageRate(const OutputHeader& header, const HeaderNumbers& numbers,
                          std::size_t stream_index);

void AppendHeaderExtension(ByteWriter& out, const OutputHeader& header, const HeaderFacts& facts,
                           const HeaderNumbers& numbers);

}  // namespace engine::asf
