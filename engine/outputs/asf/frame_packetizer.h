// From coded frames to data packets, and the header before them: what file, broadcast and push
// share.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/base/coded_frame.h"
#include "engine/base/stream_header.h"
#include "engine/outputs/asf/header.h"
#include "engine/outputs/asf/packetizer.h"

namespace engine::asf {

/// Of a stream that is reordered, players keep one frame back, and take an object's time for that
/// of the frame that they show when they get it. So that is what is written: a frame that
/// is shown after the ones that follow it has the time of the one that is shown for it.
/// One thread an object.
class FramePacketizer {
  public:
    /// Throws platform::Error (invalid argument) for packet sizes that contradict each other.
    FramePacketizer(OutputHeader header, Packetizer::Receiver receiver);

    const OutputHeader& Described() const { return header_; }
    const HeaderFacts& Facts() const { return facts_; }
    /// Throws what BuildHeader throws.
    std::vector<std::uint8_t> Header(const HeaderNumbers& numbers) const;

    /// Throws what Packetizer::Add and the receiver throw.
    void Add(const CodedFrame& frame);
    void Flush() { packetizer_->Flush(); }

  private:
    Ticks Ahead(std::size_t stream, Ticks pts);

    OutputHeader header_;
    HeaderFacts facts_;
    std::optional<Packetizer> packetizer_;
    std::vector<std::optional<Ticks>> kept_back_;  // by stream: pts of the frame that players hold
};

}  // namespace engine::asf
