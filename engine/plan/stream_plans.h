// The plans of the single streams: what a source and an audience say about them.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/object_model/profile_state.h"
#include "engine/object_model/source.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The stream without its input. Throws Error (invalid argument, not implemented).
AudioPlan PlanAudio(const AudioSource& source, const ProfileState& profile);

/// The levels that the attributes SurroundMix, CenterMix and LFEMix give, as numbers from -144 to
/// 0; an attribute that is absent leaves the usual one. Throws Error (invalid argument).
FoldDown PlanFoldDown(
    const std::vector<std::pair<std::string, platform::AttributeValue>>& attributes);

/// What a camera had best give for the profile's picture: what is clipped comes in addition.
CameraWish PlanCameraWish(const VideoSource& source, const ProfileState& profile);

/// The stream without its input. Throws Error (invalid argument, not implemented).
/// @param camera  how the source gives its pictures when it is a camera
///
/// Size: 0 x 0 is that of what clipping leaves of the source, pixels keeping their shape; of one 0,
/// that side follows from the other and the shape of the picture that is left; an encoder that
/// takes no odd side gets the even one below. Pixels of an asked size are square unless the
/// profile's pixels may be otherwise: then they have the shape that shows the whole picture
/// undistorted. Of a screen that the desktop has not handed out yet, the size stays 0 x 0.
VideoPlan PlanVideo(const VideoSource& source, const ProfileState& profile,
                    std::int32_t performance, const std::optional<CameraFormat>& camera);

}  // namespace engine
