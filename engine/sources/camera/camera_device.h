// A camera of the kernel's video interface: its device node, and what it says that it can do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/sources/camera/camera_format.h"
#include "platform/error.h"
#include "platform/posix/file_descriptor.h"

struct v4l2_pix_format;

namespace engine {

/// Why a camera that is there cannot be recorded, in a sentence that names it.
/// @param error  what the kernel answered, an errno value
platform::Error CannotRecordCamera(const std::string& name, int error);
platform::Error CannotRecordCamera(const std::string& name, const std::string& reason);

/// One thread. Several may be open for the same camera; one of them can record.
class CameraDevice : public CameraOffers {
  public:
    /// @param node  such as "/dev/video0"
    /// @param name  for people
    /// Throws platform::Error that says why the camera cannot be had.
    CameraDevice(const std::string& node, std::string name);

    const std::string& name() const { return name_; }
    int descriptor() const { return descriptor_.Number(); }

    /// One of the interface's VIDIOC_ requests, repeated when a signal comes in between.
    /// 0, or what errno says.
    template <typename Argument>
    int Request(unsigned long request, Argument& argument) const {
        return RequestWith(request, &argument);
    }

    std::vector<std::uint32_t> PixelFormats() const override;
    std::vector<CameraSizes> Sizes(std::uint32_t pixels) const override;
    std::vector<CameraIntervals> Intervals(std::uint32_t pixels, std::int32_t width,
                                           std::int32_t height) const override;

    /// The best format for the request, with the size that the driver makes of it. Changes nothing.
    /// Throws platform::Error when the camera has none that can be recorded.
    CameraFormat Choose(const CameraRequest& request) const;

  private:
    int RequestWith(unsigned long request, void* argument) const;
    std::optional<v4l2_pix_format> Tried(std::uint32_t pixels, std::int32_t width,
                                         std::int32_t height) const;

    const std::string name_;
    const platform::FileDescriptor descriptor_;
};

/// What CameraDevice::Choose says about the camera now.
CameraFormat CameraFormatFor(const std::string& node, const std::string& name,
                             const CameraRequest& request);

}  // namespace engine
