// The runs of a folder's files, one after the other, while the window stays usable.
#pragma once

#include <string>

#include "app/encoding_run.h"
#include "app/run_log.h"
#include "platform/event_loop.h"
#include "session/file_run.h"

namespace app {

/// Walks may be nested: a command that is given while a folder is walked takes over, and the walk
/// around it ends when it gets its turn again. User-interface thread; what is handed over must
/// outlive the object.
class FolderRun final : public session::FileRun {
  public:
    FolderRun(platform::EventLoop& loop, EncodingRun& run, RunLog& log)
        : loop_(loop), run_(run), log_(log) {}

    /// A walk for as long as it lives. Those around it end with their files.
    class Walk {
      public:
        explicit Walk(FolderRun& folder_run) : folder_run_(folder_run) {
            folder_run_.CancelWalks();
            ++folder_run_.walks_;
        }
        ~Walk() { --folder_run_.walks_; }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;

      private:
        FolderRun& folder_run_;
    };

    bool IsWalking() const { return walks_ > 0; }
    /// Ends every walk that has begun, each at the end of its file.
    void CancelWalks() { cancelled_walks_ = walks_; }

    void PrepareSession() override {
        log_.BeginFile();
        run_.NewSession();
    }
    void FinishFile() override { log_.EndFile(); }
    /// What it returns means nothing when another command has taken the session over.
    session::FileRunEnd RunToEnd() override;
    void HandleEvents() override;
    bool WalkCancelled() const override { return walks_ <= cancelled_walks_; }

  private:
    platform::EventLoop& loop_;
    EncodingRun& run_;
    RunLog& log_;
    int walks_ = 0;            // nested in one another
    int cancelled_walks_ = 0;  // the outermost so many of them
};

}  // namespace app
