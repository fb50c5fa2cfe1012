// What a media file holds, read once when a source is given its input.
#pragma once

#include <optional>
#include <string>

#include "engine/plan/encode_plan.h"
#include "engine/ticks.h"

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
    Ticks duration;      // 0 = unknown
    bool still = false;  // a single picture (bmp, jpg, png)
};

struct MediaFileInfo {
    std::optional<AudioInfo> audio;  // of the stream that is encoded
    std::optional<VideoInfo> video;
};

/// Throws platform::Error: file not found, access denied, invalid data (not a media file, or one
/// without sound and picture); the description names the file.
MediaFileInfo ProbeMediaFile(const std::string& path);

}  // namespace engine
