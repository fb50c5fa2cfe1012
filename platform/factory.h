// Makes the objects that a session is built of.
#pragma once

#include <memory>

#include "platform/encoder.h"
#include "platform/file_system.h"
#include "platform/media_info.h"
#include "platform/shell.h"

namespace platform {

class Factory {
  public:
    virtual ~Factory() = default;
    virtual std::shared_ptr<WMEncoder> MakeEncoder() = 0;
    virtual std::shared_ptr<WMEncProfile2> MakeProfile() = 0;
    virtual std::shared_ptr<FileSystem> MakeFileSystem() = 0;
    virtual std::shared_ptr<MediaInfo> MakeMediaInfo() = 0;
    virtual std::shared_ptr<Shell> MakeShell() = 0;
};

}  // namespace platform
