#include "engine/sources/screen/portal_screen.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "engine/sources/screen/frame_pacer.h"
#include "engine/sources/screen/named_area.h"
#include "engine/sources/screen/pipewire_stream.h"
#include "engine/sources/screen/portal_session.h"
#include "engine/sources/screen/screen_formats.h"
#include "platform/error.h"

namespace engine {
namespace {

// Frames are agreed upon at once, and the first is drawn then.
constexpr Ticks kPatience = Ticks::FromMilliseconds(10'000);
constexpr Ticks kFirstFramePatience = Ticks::FromMilliseconds(1000);
// Of rows: what scales frames reads them in blocks.
constexpr std::size_t kAlignment = 64;

class PortalShare : public ScreenShare {
  public:
    ScreenSize Ask(const ScreenArea& area, std::int32_t rate_thousandths) override {
        if (!library_.IsComplete())
            throw platform::Error(platform::kUnspecified,
                                  "The screen of this Wayland session cannot be recorded: "
                                  "libpipewire-0.3.so.0 is missing, install libpipewire-0.3-0");
        session_.emplace(wake_up_);
        area_ = area;
        rate_ = rate_thousandths;
        const PortalSession::SharedScreen screen = session_->Ask(area.pointer);
        stream_.emplace(library_, screen.pipewire, screen.node, rate_);
        size_ = SizeOf(FirstPart());
        return size_;
    }

    void Cancel() override {
        woken_ = true;
        wake_up_.Write();
    }

    bool IsWoken() const { return woken_; }
    std::int32_t rate() const { return rate_; }
    const ScreenSize& size() const { return size_; }  // when it was handed out
    PipeWireStream& stream() { return *stream_; }
    PixelBox PartOf(const StreamFrame& shared) const {
        return engine::PartOf(shared.buffer, shared.shown, area_);
    }

    /// Until something comes, the time is over, or woken.
    void Wait(Ticks time) const {
        const std::int64_t left = time.count - CaptureNow().count;
        if (left <= 0) return;
        constexpr std::int64_t kTicksPerSecond = Ticks::kPerSecond;
        const timespec patience{left / kTicksPerSecond, left % kTicksPerSecond * 100};
        std::array<pollfd, 3> waited{pollfd{wake_up_.Descriptor(), POLLIN, 0},
                                     pollfd{stream_->Descriptor(), POLLIN, 0},
                                     pollfd{session_->Descriptor(), POLLIN, 0}};
        ppoll(waited.data(), waited.size(), &patience, nullptr);
    }

    /// Why no frame comes any more; nothing while some may.
    std::optional<std::string> WhyLost() {
        if (!session_->IsShared()) return "the desktop shares it no more";
        return stream_->WhyEnded();
    }

    void End() {
        stream_.reset();
        session_.reset();
    }

  private:
    // What is to be seen of a window says only a frame; yet some desktops send none before
    // something changes.
    PixelBox FirstPart() {
        Ticks deadline = CaptureNow() + kPatience;
        bool agreed = false;
        for (;;) {
            std::optional<PixelBox> part;
            stream_->Look([&](const StreamFrame& shared) { part = PartOf(shared); });
            if (part) return *part;
            const std::optional<PixelBox> size = stream_->Size();
            if (size && !agreed) deadline = CaptureNow() + kFirstFramePatience;
            agreed = size.has_value();
            CheckAwaited();
            if (CaptureNow() < deadline)
                Wait(deadline);
            else if (size)
                return engine::PartOf(*size, std::nullopt, area_);
            else
                throw platform::Error(platform::kUnspecified,
                                      "The screen was shared, but no picture of it came: look "
                                      "whether wireplumber runs, and log in again");
            stream_->TakeNews();
        }
    }

    void CheckAwaited() {
        if (const std::optional<std::string> reason = WhyLost())
            throw platform::Error(
                platform::kDeviceNotConnected,
                fmt::format("The screen of this Wayland session cannot be recorded: {}", *reason));
        if (woken_)
            throw platform::Error(
                platform::kUnspecified,
                "The screen was not shared: the recording was stopped before that");
    }

    ScreenSize SizeOf(const PixelBox& part) const {
        const bool whole = area_.kind != ScreenArea::Kind::Region || part.SameSize(area_.region);
        if (part.IsEmpty() || !whole)
            throw platform::Error(
                platform::kInvalidArgument,
                fmt::format("The shared screen is too small for {}: choose another one, or change "
                            "TESSIVO_SCREEN",
                            Describe(area_)));
        return {part.width, part.height};
    }

    const PipeWireLibrary library_;
    platform::EventFd wake_up_;
    std::atomic<bool> woken_{false};
    ScreenArea area_;
    std::int32_t rate_ = 0;
    ScreenSize size_;
    std::optional<PortalSession> session_;
    std::optional<PipeWireStream> stream_;  // ends before the session does
};

class PortalScreen : public LiveSource {
  public:
    PortalScreen(std::shared_ptr<PortalShare> share, FramePool& frames)
        : share_(std::move(share)), frames_(frames), pacer_(share_->rate()) {
        pacer_.Came(CaptureNow());  // the first frame has been on the screen since it came
    }
    ~PortalScreen() override { share_->End(); }

    bool Read(FrameHandle& frame) override {
        if (ended_) return false;
        try {
            if (!NextFrame()) {
                End();
                return false;
            }
        } catch (const platform::Error&) {
            End();
            throw;
        }
        frame = frames_.Get();
        if (av_frame_ref(frame.get(), last_.get()) < 0) throw std::bad_alloc();
        return true;
    }

    void Wake() override { share_->Cancel(); }

  private:
    void End() {
        ended_ = true;
        share_->End();
    }

    bool NextFrame() {
        while (!share_->IsWoken()) {
            if (const std::optional<Ticks> seen = share_->stream().TakeNews()) pacer_.Came(*seen);
            if (const std::optional<std::string> reason = share_->WhyLost())
                throw platform::Error(
                    platform::kDeviceNotConnected,
                    fmt::format("The screen cannot be recorded any more: {}.", *reason));
            const Ticks now = CaptureNow();
            const std::optional<Ticks> due = pacer_.Due();
            if (!due || now < *due) {
                share_->Wait(due.value_or(now + kPatience));
                continue;
            }
            if (pacer_.IsWaiting() && !TakeFrame()) {
                pacer_.Withdraw();
                if (last_) continue;
                last_ = Blank();  // a recording begins also where nothing has been drawn yet
            }
            last_->pts = pacer_.Deliver(now).count;
            return true;
        }
        return false;
    }

    // False when there is none, or nothing of the recorded part in it.
    bool TakeFrame() {
        FrameHandle frame;
        share_->stream().Take([&](const StreamFrame& shared) {
            const PixelBox part = share_->PartOf(shared);
            if (!part.IsEmpty()) frame = Copy(shared, part);
        });
        if (!frame) return false;
        last_ = std::move(frame);
        return true;
    }

    FrameHandle Copy(const StreamFrame& shared, const PixelBox& part) {
        FrameHandle frame = NewFrame(shared.format, {part.width, part.height});
        const std::ptrdiff_t corner =
            std::ptrdiff_t{part.y} * shared.stride + std::ptrdiff_t{part.x} * kScreenPixelBytes;
        av_image_copy_plane(frame->data[0], frame->linesize[0], shared.pixels + corner,
                            shared.stride, part.width * kScreenPixelBytes, part.height);
        return frame;
    }

    FrameHandle Blank() {
        FrameHandle frame = NewFrame(kScreenFormats.front().pixels, share_->size());
        std::memset(frame->data[0], 0, frame->buf[0]->size);
        return frame;
    }

    FrameHandle NewFrame(AVPixelFormat format, const ScreenSize& size) {
        const auto bytes = static_cast<std::size_t>(size.width) * kScreenPixelBytes;
        const std::size_t stride = (bytes + kAlignment - 1) / kAlignment * kAlignment;
        FrameHandle frame = frames_.Get();
        frame->format = format;
        frame->width = size.width;
        frame->height = size.height;
        frame->linesize[0] = static_cast<int>(stride);
        frame->buf[0] = Memory(stride * static_cast<std::size_t>(size.height));
        frame->data[0] = frame->buf[0]->data;
        return frame;
    }

    AVBufferRef* Memory(std::size_t bytes) {
        if (bytes != pool_bytes_) {
            pool_.reset(CheckAllocated(av_buffer_pool_init(bytes, nullptr)));
            pool_bytes_ = bytes;
        }
        return CheckAllocated(av_buffer_pool_get(pool_.get()));
    }

    const std::shared_ptr<PortalShare> share_;
    FramePool& frames_;
    FramePacer pacer_;
    AvPtr<AVBufferPool> pool_;
    std::size_t pool_bytes_ = 0;
    FrameHandle last_;
    bool ended_ = false;
};

}  // namespace

std::unique_ptr<ScreenShare> MakePortalShare() { return std::make_unique<PortalShare>(); }

std::unique_ptr<LiveSource> OpenPortalScreen(std::shared_ptr<ScreenShare> share,
                                             FramePool& frames) {
    return std::make_unique<PortalScreen>(std::static_pointer_cast<PortalShare>(std::move(share)),
                                          frames);
}

}  // namespace engine
