#include "engine/sources/camera/camera_device.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/posix/system_error.h"

namespace engine {
namespace {

// A driver that never says that its list is over is not listened to for ever.
constexpr std::uint32_t kMostEntries = 500;
constexpr std::uint32_t kMostPixels = 16384;  // of a side

constexpr const char* kUnplugged = "it is not connected any more";
constexpr const char* kPlugIn = "connect it, or choose another of the list of devices";
constexpr const char* kForbidden = "this user may not use it";
constexpr const char* kJoin = "add the user to the group \"video\" and log in anew";

// clang-format off
constexpr platform::SystemErrorRow kOfACamera[] = {
    // errno  number                         reason                                                    advice
    {EBUSY,   platform::kBusy,               "another program uses it",                                "close that program"},
    {EACCES,  platform::kAccessDenied,       kForbidden,                                               kJoin},
    {EPERM,   platform::kAccessDenied,       kForbidden,                                               kJoin},
    {ENODEV,  platform::kDeviceNotConnected, kUnplugged,                                               kPlugIn},
    {ENOENT,  platform::kDeviceNotConnected, kUnplugged,                                               kPlugIn},
    {ENXIO,   platform::kDeviceNotConnected, kUnplugged,                                               kPlugIn},
    {ENOSPC,  platform::kBusy,               "its USB connection has too little room for its pictures", "connect it elsewhere, or take other cameras off"},
};
// clang-format on

CameraSide SideOf(std::uint32_t least, std::uint32_t most, std::uint32_t step) {
    const std::uint32_t top = std::clamp(most, 1U, kMostPixels);
    return {static_cast<std::int32_t>(std::clamp(least, 1U, top)), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(std::clamp(step, 1U, kMostPixels))};
}

CameraInterval IntervalOf(const v4l2_fract& seconds) {
    if (seconds.numerator == 0 || seconds.denominator == 0) return {};
    return {seconds.numerator, seconds.denominator};
}

std::string Letters(std::uint32_t code) {
    std::string letters;
    for (int shift = 0; shift < 32; shift += 8)
        letters += static_cast<char>((code >> shift) & 0x7FU);
    return letters;
}

}  // namespace

platform::Error CannotRecordCamera(const std::string& name, const std::string& reason) {
    return {platform::kUnspecified,
            fmt::format("Cannot record from the camera {}: {}.", name, reason)};
}

platform::Error CannotRecordCamera(const std::string& name, int error) {
    const platform::SystemCause cause = platform::CauseOf(error, kOfACamera);
    return {cause.number, CannotRecordCamera(name, cause.Text()).description()};
}

CameraDevice::CameraDevice(const std::string& node, std::string name)
    : name_(std::move(name)), descriptor_(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (!descriptor_.IsOpen()) throw CannotRecordCamera(name_, errno);
}

int CameraDevice::RequestWith(unsigned long request, void* argument) const {
    for (;;) {
        if (ioctl(descriptor_.Number(), request, argument) >= 0) return 0;
        if (errno != EINTR) return errno;
    }
}

std::vector<std::uint32_t> CameraDevice::PixelFormats() const {
    std::vector<std::uint32_t> formats;
    v4l2_fmtdesc entry{};
    entry.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    for (; entry.index < kMostEntries && Request(VIDIOC_ENUM_FMT, entry) == 0; ++entry.index)
        formats.push_back(entry.pixelformat);
    return formats;
}

std::vector<CameraSizes> CameraDevice::Sizes(std::uint32_t pixels) const {
    std::vector<CameraSizes> sizes;
    v4l2_frmsizeenum entry{};
    entry.pixel_format = pixels;
    for (; entry.index < kMostEntries && Request(VIDIOC_ENUM_FRAMESIZES, entry) == 0;
         ++entry.index) {
        if (entry.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            const auto& size = entry.discrete;
            sizes.push_back(
                {SideOf(size.width, size.width, 1), SideOf(size.height, size.height, 1)});
        } else {
            const auto& range = entry.stepwise;
            sizes.push_back({SideOf(range.min_width, range.max_width, range.step_width),
                             SideOf(range.min_height, range.max_height, range.step_height)});
            break;
        }
    }
    if (!sizes.empty()) return sizes;
    // An old driver, or one of a television card: it changes what it is given to what it has.
    const auto least = Tried(pixels, 1, 1);
    const auto most = Tried(pixels, kMostPixels, kMostPixels);
    if (least && most)
        sizes.push_back(
            {SideOf(least->width, most->width, 2), SideOf(least->height, most->height, 2)});
    return sizes;
}

std::vector<CameraIntervals> CameraDevice::Intervals(std::uint32_t pixels, std::int32_t width,
                                                     std::int32_t height) const {
    std::vector<CameraIntervals> intervals;
    v4l2_frmivalenum entry{};
    entry.pixel_format = pixels;
    entry.width = static_cast<std::uint32_t>(width);
    entry.height = static_cast<std::uint32_t>(height);
    for (; entry.index < kMostEntries && Request(VIDIOC_ENUM_FRAMEINTERVALS, entry) == 0;
         ++entry.index) {
        const bool single = entry.type == V4L2_FRMIVAL_TYPE_DISCRETE;
        const CameraIntervals each = {IntervalOf(single ? entry.discrete : entry.stepwise.min),
                                      IntervalOf(single ? entry.discrete : entry.stepwise.max)};
        if (each.shortest.numerator != 0) intervals.push_back(each);
        if (!single) break;
    }
    return intervals;
}

std::optional<v4l2_pix_format> CameraDevice::Tried(std::uint32_t pixels, std::int32_t width,
                                                   std::int32_t height) const {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.pixelformat = pixels;
    format.fmt.pix.width = static_cast<std::uint32_t>(width);
    format.fmt.pix.height = static_cast<std::uint32_t>(height);
    if (Request(VIDIOC_TRY_FMT, format) != 0) return std::nullopt;
    const v4l2_pix_format& tried = format.fmt.pix;
    if (tried.pixelformat != pixels || tried.width == 0 || tried.height == 0) return std::nullopt;
    return tried;
}

CameraFormat CameraDevice::Choose(const CameraRequest& request) const {
    std::optional<CameraFormat> chosen = ChooseCameraFormat(*this, request);
    if (!chosen) {
        std::string names;
        for (const std::uint32_t code : PixelFormats())
            names += (names.empty() ? "" : ", ") + Letters(code);
        throw CannotRecordCamera(
            name_, names.empty() ? "it is connected, but has no pictures to give; connect it anew"
                                 : fmt::format("it has no pictures but {} ones, which cannot be "
                                               "read; choose another of the list of devices",
                                               names));
    }
    if (const auto tried = Tried(chosen->pixels, chosen->width, chosen->height)) {
        chosen->width = static_cast<std::int32_t>(tried->width);
        chosen->height = static_cast<std::int32_t>(tried->height);
    }
    return *chosen;
}

CameraFormat CameraFormatFor(const std::string& node, const std::string& name,
                             const CameraRequest& request) {
    return CameraDevice(node, name).Choose(request);
}

}  // namespace engine
