// The file output: a .wmv, .wma or .asf file that plays at every moment of its making, and takes
// its name when it is whole.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/base/output_sink.h"
#include "engine/outputs/asf/frame_packetizer.h"
#include "engine/outputs/asf/part_file.h"
#include "engine/outputs/asf/simple_index.h"
#include "platform/error.h"

namespace engine::asf {

/// While it records, the header describes a broadcast, which players read to wherever it ends, and
/// every packet reaches the system as it is closed: a killed process leaves all but the last second
/// of media. Finish writes the last packet, then the index, then the header's numbers, so that an
/// end between any two of these leaves a file that still plays. Until then the file is a part
/// (see PartFile); the name comes last, and what had it before stays until then.
///
/// After a failed Write every further Write fails with the same error. Finish and Abandon then drop
/// what is cut off, leave out the last open packet, write the index if there is room for it, and
/// the header in place (which needs no room): the part is whole up to the last packet before the
/// failure. It keeps its part's name. A part without a packet is not kept.
class AsfFile final : public OutputSink {
  public:
    /// @param path  the host's own; its part is made at Begin
    /// @param keeps_existing  a file that has the name in the end is renamed, not replaced
    explicit AsfFile(std::string path, bool keeps_existing = false);
    /// Without Finish or Abandon the part is left as a killed process leaves it.
    ~AsfFile() override;
    AsfFile(const AsfFile&) = delete;
    AsfFile& operator=(const AsfFile&) = delete;

    void Begin(const OutputHeader& header) override;
    void Write(const CodedFrame& frame) override;
    void Flush() override;
    /// Throws what failed in itself only, after it has done all that could be done.
    void Finish() override;
    /// Completes the part as far as that is possible, and leaves it a part.
    void Abandon() override;
    std::string NoticeText() const override;
    std::string RemainsText() const override;
    OutputResult Result() const override;

  private:
    struct StreamTotals {
        std::uint32_t largest_object = 0;
        std::uint64_t bytes = 0;
    };
    void TakePacket(const ClosedPacket& packet);
    void Complete(platform::ErrorTrap& trap);
    void AppendIndexes();
    HeaderNumbers FinalNumbers() const;
    std::uint64_t DataEnd() const;

    std::string path_;
    bool keeps_existing_;
    std::string set_aside_;  // the new name of a file that had ours, "" = there was none
    std::optional<PartFile> part_;
    std::optional<FramePacketizer> packetizer_;
    std::vector<StreamTotals> totals_;   // by stream
    std::vector<SimpleIndex> indexes_;   // by video stream
    std::vector<std::size_t> index_of_;  // by stream number: which of indexes_
    std::optional<platform::Error> failure_;
    std::uint64_t data_begin_ = 0;  // bytes of header and of the data's fixed part
    std::uint64_t index_bytes_ = 0;
    ClosedPacket last_;  // the last one in the file; its bytes are gone
    std::uint64_t packets_ = 0;
    bool whole_ = false;  // the part, with index and numbers
    bool done_ = false;   // finished or abandoned
};

}  // namespace engine::asf
