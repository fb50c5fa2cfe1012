// The header of a container, and the 50 bytes that open its data: same length in every state, so
// that it is written again in place when the numbers are known.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"
#include "engine/outputs/asf/byte_writer.h"

namespace engine::asf {

/// What is fixed before the first packet.
struct HeaderFacts {
    Guid file_id;
    std::uint64_t creation_date = 0;  // 100 ns since 1601-01-01 UTC
    std::uint32_t packet_bytes = 0;
    std::uint32_t preroll_ms = 0;
};

/// What only the end knows. The default is the state of a recording: read as a broadcast, to its
/// end, wherever it is cut.
struct HeaderNumbers {
    bool complete = false;        // seekable, and the numbers hold; else a broadcast
    std::uint64_t packets = 0;    // 0xFFFFFFFF in a live broadcast
    std::uint64_t file_size = 0;  // bytes
    Ticks play_duration;          // preroll included
    Ticks send_duration;
    std::vector<std::uint32_t> largest_objects;  // bytes, by stream; empty = unknown
    std::vector<std::uint32_t> measured_rates;   // bits/s, by stream, for those that name none
};

/// A new file ID (random, version 4).
Guid RandomFileId();

/// The time now as the header counts it.
std::uint64_t CreationDateNow();

/// What players collect before they start, in milliseconds: the largest buffer window of the
/// streams; 3000 when no stream has one or the window is unknown (0xFFFFFFFF).
std::uint32_t PrerollMs(const OutputHeader& header);

/// Stream numbers follow the order of the streams, from 1.
std::uint8_t StreamNumber(std::size_t stream_index);

/// Header Object and the fixed part of the Data Object. Texts are cut at 65534 bytes. Throws
/// platform::Error (invalid argument) for no stream, more than 127, a frame without size, extra
/// data or a number of attributes that its 16-bit count cannot hold.
std::vector<std::uint8_t> BuildHeader(const OutputHeader& header, const HeaderFacts& facts,
                                      const HeaderNumbers& numbers);

}  // namespace engine::asf
