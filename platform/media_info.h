// What is asked about a media file before and beside encoding it.
#pragma once

#include <string>

namespace platform {

class MediaInfo {
  public:
    virtual ~MediaInfo() = default;
    virtual void SetFileName(const std::string& path) = 0;
    /// Frames per second of the first video stream; 0 when unknown, also for a missing file.
    /// Throws Error (unspecified), as Description does, when what reads the file is not installed.
    virtual double FrameRate() = 0;
    /// The file's description as one printable text of several lines.
    /// Throws Error (file not found, invalid data) for a file that cannot be described.
    virtual std::string Description() = 0;
};

}  // namespace platform
