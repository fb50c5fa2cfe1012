// A media file's description and frame rate, read by libmediainfo.
#pragma once

#include <string>

#include "platform/host/path_names.h"
#include "platform/media_info.h"

namespace platform::host {

class MediaInfoReader : public MediaInfo {
  public:
    explicit MediaInfoReader(PathNames names);

    void SetFileName(const std::string& path) override;
    double FrameRate() override;
    /// Lines end in "\r\n", the last one in none.
    std::string Description() override;

  private:
    PathNames names_;
    std::string path_;
};

}  // namespace platform::host
