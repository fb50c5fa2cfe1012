#include "platform/host/host_factory.h"

#include <utility>

#include "platform/host/media_info_reader.h"
#include "platform/host/posix_file_system.h"
#include "platform/host/posix_shell.h"

namespace platform::host {

HostFactory::HostFactory(EventLoop& loop, EngineMakers makers, std::function<bool()> stopped)
    : loop_(loop), makers_(std::move(makers)), stopped_(std::move(stopped)) {}

std::shared_ptr<WMEncoder> HostFactory::MakeEncoder() {
    return makers_.encoder(loop_, MakeFileSystem());
}

std::shared_ptr<WMEncProfile2> HostFactory::MakeProfile() {
    return makers_.profile(MakeFileSystem());
}

std::shared_ptr<FileSystem> HostFactory::MakeFileSystem() { return host::MakeFileSystem(); }

std::shared_ptr<MediaInfo> HostFactory::MakeMediaInfo() {
    return std::make_shared<MediaInfoReader>(PathNames::OfUser(), stopped_);
}

std::shared_ptr<Shell> HostFactory::MakeShell() {
    return std::make_shared<PosixShell>(PathNames::OfUser());
}

}  // namespace platform::host
