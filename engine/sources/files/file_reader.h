// Demuxes one input file for the streams that a session takes from it.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "engine/base/av/av_ptr.h"
#include "engine/base/stream_header.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/files/open_media.h"
#include "engine/sources/files/packet_router.h"
#include "engine/sources/files/source_times.h"

namespace engine {

/// Stop comes from any thread, the rest from one. After construction the streams do not change.
class FileReader {
  public:
    /// Opens the file and goes to the last place from which everything at the begin mark can be
    /// decoded. Throws platform::Error, also when the file has no stream of a wanted kind.
    FileReader(InputPlan input, bool want_audio, bool want_video, PacketPool& packets);
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    const AVStream& Stream(MediaKind kind) const;
    /// The file's time that is session time 0.
    Ticks Start() const { return media_.origin + input_.mark_in; }
    const InputPlan& Input() const { return input_; }
    bool Wants(MediaKind kind) const;

    /// Reads to the end of the file, until nobody takes packets, or until Stop; finishes the
    /// router in every case. Broken stretches are passed over. Throws platform::Error when the
    /// file cannot be read any more.
    void Run(PacketRouter& router);
    void Stop() { stop_ = true; }

    // After Run, or once the router has nothing more.
    /// @param decoded  session time up to which frames of the stream came
    /// What to say of a file that was read to its end and has come to it too early; "" = nothing.
    std::string CutOffText(MediaKind kind, Ticks decoded) const;
    /// What to say of times that leapt and were counted on; "" = nothing.
    std::string LeapText() const;

  private:
    void Open();
    bool SeekBeforeStart(Ticks lead_in);
    bool CanDecodeStart();
    bool ReadPacket(PacketHandle& packet);
    void BeginTimes(Ticks begin);
    void CorrectTimes(AVPacket& packet);
    void NoteUnwanted(const AVPacket& packet);
    void Route(PacketHandle packet, PacketRouter& router);

    InputPlan input_;
    bool want_audio_;
    bool want_video_;
    PacketPool& packets_;
    std::atomic<bool> stop_{false};
    AVIOInterruptCB interrupt_;
    OpenMedia media_;
    std::vector<PacketHandle> read_ahead_;
    std::optional<SourceTimes> times_;
    Ticks unwanted_end_;  // of the packets of other streams
    std::atomic<bool> ended_{false};
};

}  // namespace engine
