// How large the coded picture is, and which shape its pixels have.
#pragma once

#include <string>

#include "engine/plan/encode_plan.h"
#include "engine/plan/profile_record.h"
#include "engine/plan/source_record.h"

namespace engine {

/// Size, crop and pixel aspect of the plan, whose codec is there already. Throws Error (invalid
/// argument, invalid data).
/// @param info  what is known of the source's picture
///
/// 0 x 0 is the size of what clipping leaves of the source, pixels keeping their shape; of one 0,
/// that side follows from the other and the shape of the picture that is left, for square pixels
/// unless the profile's may be otherwise; an encoder that takes no odd side gets the even one
/// below. In an asked size pixels have the shape that shows the whole picture undistorted. Of a
/// screen that the desktop has not handed out yet, the size stays 0 x 0.
void PlanSize(const VideoSourceRecord& source, const VideoInfo& info, const ProfileRecord& profile,
              VideoPlan& plan);

/// What to tell of pixels that the asked size has made other than square; "" when there is nothing.
std::string PixelShapeNotice(const VideoSourceRecord& source, const ProfileRecord& profile,
                             const VideoPlan& plan);

}  // namespace engine
