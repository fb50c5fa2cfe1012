// A stream of frames from PipeWire.
#pragma once

#include <pipewire/pipewire.h>
#include <spa/param/video/raw.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "engine/base/av/av_ptr.h"
#include "engine/base/pixel_box.h"
#include "engine/base/ticks.h"
#include "engine/sources/screen/pipewire_library.h"
#include "platform/posix/event_fd.h"

namespace engine {

/// A frame as its sender wrote it, in memory that both see.
struct StreamFrame {
    const std::uint8_t* pixels = nullptr;  // of the buffer's upper left
    int stride = 0;                        // bytes
    AVPixelFormat format = AV_PIX_FMT_NONE;
    PixelBox buffer;
    std::optional<PixelBox> shown;  // the part of it that is the image
    Ticks seen;                     // on the capture clock
};

/// A thread of its own takes what comes; the rest is one thread's at a time.
class PipeWireStream {
  public:
    /// Connects to a node of a server. `library` is complete and outlives this.
    /// Throws platform::Error when it cannot.
    /// @param connection        a descriptor, which belongs to this from now on
    /// @param rate_thousandths  how many frames in 1000 seconds are wanted at most
    PipeWireStream(const PipeWireLibrary& library, int connection, std::uint32_t node,
                   std::int32_t rate_thousandths);
    ~PipeWireStream();
    PipeWireStream(const PipeWireStream&) = delete;
    PipeWireStream& operator=(const PipeWireStream&) = delete;

    /// What becomes readable when something comes, and is so until TakeNews.
    int Descriptor() const { return news_.Descriptor(); }
    /// When the newest frame was seen, if it has come since the last call.
    std::optional<Ticks> TakeNews();
    /// How large its frames are, as soon as that is agreed.
    std::optional<PixelBox> Size() const;
    /// Nothing while frames may still come.
    std::optional<std::string> WhyEnded() const;

    /// Hands out the newest frame, which is there until the call returns and stays the newest.
    /// False when there is none: taken, or withdrawn by its sender.
    bool Look(const std::function<void(const StreamFrame&)>& look) const;
    /// The same, and gives the memory back to its sender then.
    bool Take(const std::function<void(const StreamFrame&)>& take);

  private:
    void Connect(std::uint32_t node, std::int32_t rate_thousandths);
    void OnState(pw_stream_state state, const char* error);
    void OnFormat(const spa_pod* format);
    void OnBuffers();
    bool Show(const pw_buffer& buffer);
    void Release();

    static const pw_stream_events kEvents;

    class Lock;

    const PipeWireLibrary& library_;
    // Shared with the loop's thread, under its lock.
    spa_video_info_raw format_{};
    pw_buffer* held_ = nullptr;
    StreamFrame newest_;
    bool came_ = false;
    platform::EventFd news_;
    std::optional<std::string> end_;  // why the stream has ended
    spa_hook listener_{};
    // Destroyed first: they still call back then.
    std::unique_ptr<pw_thread_loop, decltype(&pw_thread_loop_destroy)> loop_;
    std::unique_ptr<pw_context, decltype(&pw_context_destroy)> context_;
    std::unique_ptr<pw_core, decltype(&pw_core_disconnect)> core_;
    std::unique_ptr<pw_stream, decltype(&pw_stream_destroy)> stream_;
};

}  // namespace engine
