// Opens a media file and chooses the streams that a session encodes.
#pragma once

#include <string>

#include "engine/base/av/av_ptr.h"
#include "engine/base/stream_header.h"
#include "engine/plan/encode_plan.h"

namespace engine {

struct OpenMedia {
    AvPtr<AVFormatContext> format;
    AVStream* audio = nullptr;  // null = the file has none that can be decoded
    AVStream* video = nullptr;  // cover art is no video
    bool still = false;         // the video is a single image
    /// The first timestamp of the chosen streams, from which marks and session times count.
    Ticks origin;

    /// How long the file is, as its container states it or its size lets expect; 0 = unknown.
    Ticks Length() const;
    /// How long a stream is, or all of them together, as the container states it; 0 = it does not.
    Ticks StatedLength(const AVStream& stream) const;
};

/// `stop`, when given, ends blocking reads once it is true. Throws platform::Error (file not found,
/// access denied, invalid data: no media file, or one with neither audio nor video).
OpenMedia OpenMediaFile(const std::string& path, const AVIOInterruptCB* stop = nullptr);

/// Nominal frame rate of a video stream; 0/1 = unknown.
Ratio NominalFrameRate(const AVStream& stream);

}  // namespace engine
