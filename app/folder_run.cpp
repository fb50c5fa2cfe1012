#include "app/folder_run.h"

namespace app {

session::FileRunEnd FolderRun::RunToEnd() {
    const auto session = run_.SessionNumber();
    if (run_.Transcode() != TranscodeResult::Started) return session::FileRunEnd::NotStarted;
    loop_.RunUntil([&] { return run_.SessionNumber() != session || !run_.IsRunning(); });
    return run_.HasFailed() ? session::FileRunEnd::Failed : session::FileRunEnd::Completed;
}

}  // namespace app
