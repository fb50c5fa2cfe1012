// Demuxes one input file for the streams that a session takes from it.
#pragma once

#include <atomic>
#include <vector>

#include "engine/base/av/av_ptr.h"
#include "engine/base/stream_header.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/files/open_media.h"
#include "engine/sources/files/packet_router.h"

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

  private:
    void Open();
    bool SeekBeforeStart(Ticks lead_in);
    bool CanDecodeStart();
    bool ReadPacket(PacketHandle& packet);
    void RepairTimes(AVPacket& packet);
    void Route(PacketHandle packet, PacketRouter& router);

    struct StreamClock {
        bool started = false;
        Ticks next;  // where the next packet is expected
    };

    InputPlan input_;
    bool want_audio_;
    bool want_video_;
    PacketPool& packets_;
    std::atomic<bool> stop_{false};
    AVIOInterruptCB interrupt_;
    OpenMedia media_;
    std::vector<PacketHandle> read_ahead_;
    StreamClock audio_clock_, video_clock_;
    Ticks shift_;  // added to all times since the last jump
};

}  // namespace engine
