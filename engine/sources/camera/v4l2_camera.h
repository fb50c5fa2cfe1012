// A camera of the kernel's video interface as a source of frames.
#pragma once

#include <memory>
#include <string>

#include "engine/base/av/live_source.h"
#include "engine/plan/camera_format.h"

namespace engine {

/// Gives every frame that the camera takes, in the format that it was asked for or what its
/// driver makes of that. Times are the driver's where it counts them on the captures' clock, else
/// those at which frames arrived. TakeMissed counts the frames that the driver had to leave out
/// and those that came broken.
/// Throws platform::Error that names the camera and says why it cannot be had. Read throws when it
/// was unplugged, fails, or gives no frame for ten seconds.
/// @param node    such as "/dev/video0"
/// @param name    for people
/// @param frames  outlives the source and its frames
std::unique_ptr<LiveSource> OpenV4l2Camera(const std::string& node, const std::string& name,
                                           const CameraFormat& format, FramePool& frames);

}  // namespace engine
