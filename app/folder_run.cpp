#include "app/folder_run.h"

#include <memory>

namespace app {

session::FileRunEnd FolderRun::RunToEnd() {
    const auto session = run_.SessionNumber();
    if (run_.Transcode() != TranscodeResult::Started) return session::FileRunEnd::NotStarted;
    loop_.RunUntil([&] { return run_.SessionNumber() != session || !run_.IsRunning(); });
    return run_.HasFailed() ? session::FileRunEnd::Failed : session::FileRunEnd::Completed;
}

void FolderRun::HandleEvents() {
    const auto handled = std::make_shared<bool>(false);
    loop_.Post([handled] { *handled = true; });
    loop_.RunUntil([&handled] { return *handled; });
}

}  // namespace app
