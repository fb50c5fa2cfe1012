// What is known of a media file before it is encoded.
#pragma once

#include <optional>
#include <string>

#include "engine/base/ticks.h"
#include "engine/plan/encode_plan.h"

namespace engine {

struct AudioInfo {
    int sampling_rate = 0;
    int channels = 0;
    Ticks duration;  // 0 = unknown
};

struct VideoInfo {
    int width = 0;
    int height = 0;
    Ratio frame_rate;  // 0/1 = unknown
    Ratio pixel_aspect{1, 1};
    Ticks duration;        // 0 = unknown
    bool still = false;    // a single image (bmp, jpg, png)
    std::string hdr = {};  // how brightness beyond the usual is coded; "" = there is none
};

struct MediaFileInfo {
    std::optional<AudioInfo> audio;  // of the stream that is encoded
    std::optional<VideoInfo> video;
};

}  // namespace engine
