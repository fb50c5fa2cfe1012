// The run of one file as directory mode sees it; the form stands behind it.
#pragma once

namespace session {

enum class FileRunEnd {
    Completed,   // to the input's end, or to a stop that the user asked for
    NotStarted,  // preparing or starting failed: nothing was written
    Failed,      // ended in an error while running: the output holds what came before it
};

/// User-interface thread only.
class FileRun {
  public:
    virtual ~FileRun() = default;

    /// A file begins: puts a fresh encoder, its events connected, into the session's state and
    /// clears the source group and the sources, as the start of a command does.
    virtual void PrepareSession() = 0;

    /// Encodes the session that was set up and returns when it has stopped; the window stays
    /// usable meanwhile. Whatever it has to say has been said when it returns: the line of a
    /// failure, the report of a success.
    virtual FileRunEnd RunToEnd() = 0;

    /// The file at hand is over, whatever came of it.
    virtual void FinishFile() {}

    /// Lets in what has happened to the window meanwhile: the walk may be over after it.
    virtual void HandleEvents() = 0;

    /// Whether the walk is over: Stop was pressed, or another command took the session over.
    /// Directory mode then leaves the session and the settings as they are, since they may belong
    /// to that other command already.
    virtual bool WalkCancelled() const = 0;
};

}  // namespace session
