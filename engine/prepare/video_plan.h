// The plan of the video stream: what its source and the audience say about it.
#pragma once

#include <optional>

#include "engine/plan/encode_plan.h"
#include "engine/plan/profile_record.h"
#include "engine/plan/source_record.h"

namespace engine {

/// What a camera had best give for the profile's picture: what is clipped comes in addition.
CameraRequest PlanCameraRequest(const VideoSourceRecord& source, const ProfileRecord& profile);

/// The stream without its input. Throws Error (invalid argument, not implemented).
/// @param camera  how the source gives its frames when it is a camera
VideoPlan PlanVideo(const VideoSourceRecord& source, const ProfileRecord& profile,
                    std::int32_t performance, const std::optional<CameraFormat>& camera);

}  // namespace engine
