// Encodes every media file of a folder tree, one session a file, into a tree that mirrors it.
#pragma once

#include <memory>
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
    /// ended. False when there is no -output; files that fail are said line by line and do not end
    /// the walk. The two settings hold the last file's names afterwards. May be entered again from
    /// within FileRun::RunToEnd by a command that takes over.
    bool DoDirectoryModeEncoding();

    /// Whether a file or a folder of the walk that was started last could not be encoded.
    bool AnyFailed() const { return any_failed_; }

  private:
    /// What one walk has to remember; the absolute paths of folders and files.
    struct Walk {
        std::shared_ptr<platform::FileSystem> files;
        std::string output_root;
        std::vector<std::string> open_folders;  // from the input's root to the one being walked
        std::vector<std::string> written;       // outputs, also incomplete ones
    };

    void EncodeFilesInFolder(Walk& walk, const std::string& input_folder,
                             const std::string& output_folder);
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
};

}  // namespace session
