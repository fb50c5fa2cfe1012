#include "engine/sources/camera/v4l2_camera.h"

#include <fmt/format.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/sources/camera/camera_device.h"
#include "engine/sources/camera/camera_frames.h"
#include "platform/error.h"
#include "platform/posix/event_fd.h"

namespace engine {
namespace {

// What a busy machine may be late by, in frames.
constexpr std::uint32_t kBuffers = 8;
constexpr std::uint32_t kLeastBuffers = 2;
// Cameras that adapt to the dark take seconds for their first frame.
constexpr Ticks kPatience = Ticks::FromMilliseconds(10'000);
// No driver's clock is as wrong as that by being late or early only.
constexpr Ticks kLatest = Ticks::FromMilliseconds(5'000);
constexpr Ticks kEarliest = Ticks::FromMilliseconds(100);

struct Unmap {
    std::size_t length = 0;
    void operator()(std::uint8_t* bytes) const { munmap(bytes, length); }
};
using MappedBytes = std::unique_ptr<std::uint8_t, Unmap>;

class V4l2Camera : public LiveSource {
  public:
    V4l2Camera(const std::string& node, const std::string& name, const CameraFormat& format,
               FramePool& frames);
    ~V4l2Camera() override;

    bool Read(FrameHandle& frame) override;
    void Wake() override;
    std::int64_t TakeMissed() override { return missed_.exchange(0); }

  private:
    void SetFormat(const CameraFormat& format, FramePool& frames);
    void SetInterval(const CameraInterval& interval);
    void MapBuffers();
    template <typename Argument>
    void Require(unsigned long request, Argument& argument) const;

    bool Dequeue(v4l2_buffer& buffer) const;
    void DropStale();
    bool Take(FrameHandle& frame);
    void CountMissed(const v4l2_buffer& buffer);
    Ticks TimeOf(const v4l2_buffer& buffer) const;
    bool WaitFails() const;
    platform::Error Lost(const std::string& reason) const;
    platform::Error Lost(int error) const;

    const CameraDevice device_;
    const platform::EventFd wake_up_;
    std::atomic<bool> woken_{false};
    std::unique_ptr<CameraFrameMaker> maker_;
    std::vector<MappedBytes> buffers_;
    bool reading_ = false;
    std::optional<std::uint32_t> sequence_;  // of the last frame
    Ticks last_pts_;
    Ticks waits_since_;
    std::atomic<std::int64_t> missed_{0};
};

v4l2_buffer NewBuffer() {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    return buffer;
}

V4l2Camera::V4l2Camera(const std::string& node, const std::string& name, const CameraFormat& format,
                       FramePool& frames)
    : device_(node, name) {
    if (wake_up_.Descriptor() < 0)
        throw CannotRecordCamera(name, "the program has too many files open");
    SetFormat(format, frames);
    SetInterval(format.interval);
    MapBuffers();
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    Require(VIDIOC_STREAMON, type);
}

V4l2Camera::~V4l2Camera() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    device_.Request(VIDIOC_STREAMOFF, type);
}

template <typename Argument>
void V4l2Camera::Require(unsigned long request, Argument& argument) const {
    const int error = device_.Request(request, argument);
    if (error != 0) throw CannotRecordCamera(device_.name(), error);
}

void V4l2Camera::SetFormat(const CameraFormat& format, FramePool& frames) {
    v4l2_format set{};
    set.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    set.fmt.pix.pixelformat = format.pixels;
    set.fmt.pix.width = static_cast<std::uint32_t>(format.width);
    set.fmt.pix.height = static_cast<std::uint32_t>(format.height);
    set.fmt.pix.field = V4L2_FIELD_ANY;
    Require(VIDIOC_S_FMT, set);
    if (set.fmt.pix.pixelformat != format.pixels)
        throw CannotRecordCamera(device_.name(),
                                 "it no longer has the pictures that it had; try again");
    maker_ = MakeCameraFrameMaker(set.fmt.pix, frames);
}

// A camera that cannot be told has a rate of its own.
void V4l2Camera::SetInterval(const CameraInterval& interval) {
    if (interval.numerator == 0) return;
    v4l2_streamparm set{};
    set.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    set.parm.capture.timeperframe = {interval.numerator, interval.denominator};
    const int error = device_.Request(VIDIOC_S_PARM, set);
    if (error == EBUSY || error == ENODEV) throw CannotRecordCamera(device_.name(), error);
}

void V4l2Camera::MapBuffers() {
    v4l2_requestbuffers wanted{};
    wanted.count = kBuffers;
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    wanted.memory = V4L2_MEMORY_MMAP;
    const int error = device_.Request(VIDIOC_REQBUFS, wanted);
    if (error == EINVAL || (error == 0 && wanted.count < kLeastBuffers))
        throw CannotRecordCamera(device_.name(),
                                 "its driver cannot give one picture after the other");
    if (error != 0) throw CannotRecordCamera(device_.name(), error);
    for (std::uint32_t i = 0; i < wanted.count; ++i) {
        v4l2_buffer buffer = NewBuffer();
        buffer.index = i;
        Require(VIDIOC_QUERYBUF, buffer);
        void* bytes = mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED,
                           device_.descriptor(), buffer.m.offset);
        if (bytes == MAP_FAILED) throw CannotRecordCamera(device_.name(), errno);
        buffers_.emplace_back(static_cast<std::uint8_t*>(bytes), Unmap{buffer.length});
        Require(VIDIOC_QBUF, buffer);
    }
}

platform::Error V4l2Camera::Lost(const std::string& reason) const {
    return {platform::kDeviceNotConnected,
            fmt::format("The camera {} cannot be recorded any more: {}.", device_.name(), reason)};
}

platform::Error V4l2Camera::Lost(int error) const {
    return Lost(error == ENODEV ? "it was unplugged" : std::generic_category().message(error));
}

// False when no frame is there.
bool V4l2Camera::Dequeue(v4l2_buffer& buffer) const {
    buffer = NewBuffer();
    const int error = device_.Request(VIDIOC_DQBUF, buffer);
    if (error == EAGAIN) return false;
    if (error != 0) throw Lost(error);
    return true;
}

// The camera runs since it was opened, and nobody has waited for what it gave.
void V4l2Camera::DropStale() {
    v4l2_buffer buffer{};
    for (std::size_t i = 0; i < buffers_.size() && Dequeue(buffer); ++i)
        if (const int error = device_.Request(VIDIOC_QBUF, buffer); error != 0) throw Lost(error);
}

bool V4l2Camera::Read(FrameHandle& frame) {
    if (!std::exchange(reading_, true)) DropStale();
    waits_since_ = CaptureNow();
    bool failed = false;
    while (!woken_) {
        if (Take(frame)) return true;
        if (failed) throw Lost("its driver reports a fault");
        if (CaptureNow() - waits_since_ >= kPatience) throw Lost("it gives no pictures");
        failed = WaitFails();
    }
    return false;
}

void V4l2Camera::Wake() {
    woken_ = true;
    wake_up_.Write();
}

// Broken frames are passed over.
bool V4l2Camera::Take(FrameHandle& frame) {
    v4l2_buffer buffer{};
    FrameHandle taken;
    while (!taken && !woken_ && Dequeue(buffer)) {
        CountMissed(buffer);
        const Ticks time = TimeOf(buffer);
        const MappedBytes& bytes = buffers_.at(buffer.index);
        if ((buffer.flags & V4L2_BUF_FLAG_ERROR) == 0)
            taken = maker_->Make(
                {bytes.get(), std::min<std::size_t>(buffer.bytesused, bytes.get_deleter().length)});
        if (const int error = device_.Request(VIDIOC_QBUF, buffer); error != 0) throw Lost(error);
        if (!taken) {
            ++missed_;
            continue;
        }
        last_pts_ = std::max(last_pts_, time);
        taken->pts = last_pts_.count;
    }
    if (!taken) return false;
    frame = std::move(taken);
    return true;
}

// A number that goes back is a driver's that starts anew, or does not count.
void V4l2Camera::CountMissed(const v4l2_buffer& buffer) {
    if (sequence_ && buffer.sequence > *sequence_) missed_ += buffer.sequence - *sequence_ - 1;
    sequence_ = buffer.sequence;
}

Ticks V4l2Camera::TimeOf(const v4l2_buffer& buffer) const {
    const Ticks now = CaptureNow();
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) != V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        return now;
    const Ticks stamped{buffer.timestamp.tv_sec * Ticks::kPerSecond +
                        buffer.timestamp.tv_usec * (Ticks::kPerSecond / 1'000'000)};
    const bool sane = stamped > now - kLatest && stamped < now + kEarliest;
    return sane ? stamped : now;
}

// Waits for a frame. True when the device says that none will come.
bool V4l2Camera::WaitFails() const {
    std::array<pollfd, 2> waited{pollfd{device_.descriptor(), POLLIN, 0},
                                 pollfd{wake_up_.Descriptor(), POLLIN, 0}};
    poll(waited.data(), waited.size(), static_cast<int>(kPatience.Milliseconds()));
    return (waited[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

}  // namespace

std::unique_ptr<LiveSource> OpenV4l2Camera(const std::string& node, const std::string& name,
                                           const CameraFormat& format, FramePool& frames) {
    return std::make_unique<V4l2Camera>(node, name, format, frames);
}

}  // namespace engine
