// Encodes every media file of a folder tree, one session a file, into a tree that mirrors it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/encode_settings.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"
#include "session/encoder_setup.h"
#include "session/file_run.h"

namespace session {

class DirectoryMode {
  public:
    DirectoryMode(platform::SessionState& state, cli::EncodeSettings& settings,
                  platform::OutputPane& pane, EncoderSetup& encoder_setup, FileRun& run);

    /// Walks the folder of the -input setting into that of -output and returns when the walk has
    /// ended. What there is to read is listed before anything is written: no input of the walk is
    /// written over, and no output is read. A folder that several links lead to is walked once.
    /// False when there is no -output; files that fail are said line by line and do not end the
    /// walk. The two settings hold the last file's names afterwards. May be entered again from
    /// within FileRun::RunToEnd and HandleEvents by a command that takes over.
    bool DoDirectoryModeEncoding();

    /// Whether a file or a folder of the walk that was started last could not be encoded.
    bool AnyFailed() const { return any_failed_; }
    /// Files of that walk that were not taken, by their extension in lower case, ".txt"; "" =
    /// without one.
    const std::map<std::string, int>& Skipped() const { return skipped_; }

  private:
    struct Input {
        std::string name;                      // in its folder
        std::optional<std::string> base_name;  // none: it is skipped
    };
    /// One folder on the way, in the order of the walk.
    struct ListedFolder {
        std::string skipped_name;  // empty: it is walked, and the rest says how
        std::string input;
        std::string output;
        std::vector<Input> files;
        std::optional<platform::Error> error;  // instead of files
    };
    struct Walk {
        std::shared_ptr<platform::FileSystem> files;
        std::string output_root;
        std::vector<ListedFolder> folders;
        std::set<platform::FileIdentity> listed;  // of `folders`
        std::set<platform::FileIdentity> inputs;
        std::set<platform::FileIdentity> written;  // outputs, also incomplete ones
    };

    /// Both return early once the walk is cancelled.
    void ListFolder(Walk& walk, const std::string& input_folder, const std::string& output_folder);
    void EncodeFilesInFolder(Walk& walk, const ListedFolder& folder);

    void EncodeFile(Walk& walk, const std::string& file);
    void RunFile(Walk& walk, const std::string& file);
    void TearDownSession();
    void Fail(const platform::Error& error);

    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
    EncoderSetup& encoder_setup_;
    FileRun& run_;
    bool any_failed_ = false;
    std::map<std::string, int> skipped_;
};

}  // namespace session
