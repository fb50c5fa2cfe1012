#include "app/folder_run.h"

#include <algorithm>

namespace app {

FolderRun::Walk::~Walk() {
    --folder_run_.g_nWalks;
    folder_run_.g_nCancelledWalks = std::min(folder_run_.g_nCancelledWalks, folder_run_.g_nWalks);
}

session::FileRunEnd FolderRun::RunToEnd() {
    const auto session = run_.SessionNumber();
    if (run_.Transcode() != TranscodeResult::Started) return session::FileRunEnd::NotStarted;
    const auto taken_over = [&] { return run_.SessionNumber() != session; };
    loop_.RunUntil([&] { return taken_over() || !run_.IsRunning(); });
    const bool failed = !taken_over() && run_.HasFailed();
    return failed ? session::FileRunEnd::Failed : session::FileRunEnd::Completed;
}

}  // namespace app
