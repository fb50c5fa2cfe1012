// A media file's description and frame rate, read by libmediainfo in a process of its own, which is
// held to 512 MiB, 5 seconds of processor time and 30 by the clock.
#pragma once

#include <functional>
#include <string>

#include "platform/host/path_names.h"
#include "platform/media_info.h"

namespace platform::host {

class MediaInfoReader : public MediaInfo {
  public:
    /// @param stopped  asked while a file is read; true ends that, with an unknown rate or an error
    MediaInfoReader(PathNames names, std::function<bool()> stopped);

    void SetFileName(const std::string& path) override;
    /// 0 also for a file that takes more.
    double FrameRate() override;
    /// Lines end in "\r\n", the last one in none.
    std::string Description() override;

  private:
    PathNames names_;
    std::function<bool()> stopped_;
    std::string path_;
};

}  // namespace platform::host
