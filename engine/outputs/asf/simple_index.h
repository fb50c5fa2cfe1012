// The index of one video stream: for every second the packets of the key frame to start from.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/outputs/asf/byte_writer.h"
#include "engine/outputs/asf/packetizer.h"

namespace engine::asf {

/// Holds eight bytes a second of media, however many key frames there are.
class SimpleIndex {
  public:
    SimpleIndex();

    /// Key frames come in the order of their pts.
    void Add(const KeyFrameSpan& key_frame);

    /// Appends the index object with entries up to `last_pts_ms` (preroll included; that
    /// of the last packet). A stream without a key frame has no entries.
    void AppendTo(ByteWriter& out, const Guid& file_id, std::int64_t last_pts_ms);

  private:
    struct Entry {
        std::uint32_t packet = 0;
        std::uint16_t packets = 0;
    };
    void FillBefore(std::int64_t pts_ms);

    std::vector<Entry> entries_;  // the seconds whose key frame is known for sure
    Entry latest_;
    bool has_key_frame_ = false;
};

}  // namespace engine::asf
