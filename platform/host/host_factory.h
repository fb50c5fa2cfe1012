// Makes the objects of a session on this host.
#pragma once

#include <functional>
#include <memory>

#include "platform/event_loop.h"
#include "platform/factory.h"

namespace platform::host {

/// The encoder's makers, handed in by the main files so that the host does not know the engine.
struct EngineMakers {
    std::function<std::shared_ptr<WMEncoder>(EventLoop&, std::shared_ptr<FileSystem>)> encoder;
    std::function<std::shared_ptr<WMEncProfile2>(std::shared_ptr<FileSystem>)> profile;
};

class HostFactory : public Factory {
  public:
    /// The loop must outlive the factory and all that it made.
    /// @param stopped  whether the process has been told to end; ends what the loop's thread waits
    /// for
    HostFactory(EventLoop& loop, EngineMakers makers, std::function<bool()> stopped);

    std::shared_ptr<WMEncoder> MakeEncoder() override;
    std::shared_ptr<WMEncProfile2> MakeProfile() override;
    std::shared_ptr<FileSystem> MakeFileSystem() override;
    std::shared_ptr<MediaInfo> MakeMediaInfo() override;
    std::shared_ptr<Shell> MakeShell() override;

  private:
    EventLoop& loop_;
    EngineMakers makers_;
    std::function<bool()> stopped_;
};

}  // namespace platform::host
