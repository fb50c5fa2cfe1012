// What a container file on the disk holds: its header against the packets that are really there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/outputs/asf/data_walk.h"
#include "engine/outputs/asf/header_reader.h"
#include "engine/outputs/asf/input_file.h"

namespace engine::asf {

/// Packets that follow each other in the file.
struct PacketRun {
    std::uint64_t first = 0;  // place in the data, from 0
    std::uint64_t count = 0;
};

struct Inspection {
    HeaderView header;
    std::uint64_t file_bytes = 0;
    /// The header's numbers agree with the file, and frames have an index.
    bool whole = false;
    bool indexed = false;         // something stands behind the data that the header describes
    std::vector<PacketRun> runs;  // up to the last packet of use
    std::uint64_t damaged_packets = 0;  // between them, left out
    DataWalk walk{{}};

    std::uint64_t Seconds100() const;  // length of the media in hundredths, preroll left out
};

/// Reads the file from its begin to its end. Throws platform::Error that names it: invalid data
/// (another kind of file, a header that is cut or contradicts itself), or what InputFile throws.
Inspection Inspect(const InputFile& file);

}  // namespace engine::asf
