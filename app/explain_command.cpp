#include "app/explain_command.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

#include "app/command_copy.h"
#include "platform/error.h"
#include "session/directory_mode.h"
#include "session/encoder_setup.h"
#include "session/explain.h"
#include "session/file_run.h"
#include "session/no_pane.h"
#include "session/read_only_files.h"

namespace app {

namespace {

using session::ExplainLine;
using session::ReadOnlyFiles;

/// Explains each session that is handed to it, as if it ran.
class Explanation final : public session::FileRun {
  public:
    Explanation(platform::Factory& factory, platform::SessionState& state,
                cli::EncodeSettings& settings, session::CommandOrigin origin,
                std::shared_ptr<ReadOnlyFiles> files, platform::OutputPane& pane,
                FolderRun& folder_run)
        : factory_(factory),
          state_(state),
          settings_(settings),
          origin_(std::move(origin)),
          files_(std::move(files)),
          pane_(pane),
          folder_run_(folder_run),
          had_profile_(state.g_objProfile != nullptr) {}

    void PrepareSession() override {
        state_.g_objEncoder = factory_.MakeEncoder();
        state_.ClearSources();
    }

    session::FileRunEnd RunToEnd() override {
        if (IsRefused()) return session::FileRunEnd::NotStarted;
        if (had_profile_) origin_.fresh_profile = FreshProfile();
        session::ExplainSession(state_, origin_, pane_);
        for (const ReadOnlyFiles::Write& write : files_->TakeWrites()) {
            const bool is_folder = write.kind == ReadOnlyFiles::Write::Kind::Folder;
            pane_.OutputInfo(
                ExplainLine(is_folder ? "writes.Folder" : "writes.ConfigurationFile", write.path));
        }
        if (!profile_file_.empty())
            pane_.OutputInfo(
                ExplainLine("writes.ProfileFile", files_->GetAbsolutePathName(profile_file_)));
        const std::string output = state_.g_objEncoder->File().LocalFileName();
        if (!output.empty()) {
            const std::string path = files_->GetAbsolutePathName(output);
            pane_.OutputInfo(ExplainLine("writes.OutputFile", path));
            files_->PretendFile(path);
        }
        return session::FileRunEnd::Completed;
    }

    void HandleEvents() override { folder_run_.HandleEvents(); }
    bool WalkCancelled() const override { return folder_run_.WalkCancelled(); }

    /// The set-up would save a profile by itself; here it is only named.
    void TakeProfileFile() {
        if (settings_.saveprofile.empty()) return;
        profile_file_ = std::exchange(settings_.saveprofile, {});
    }

  private:
    /// What the run would refuse, in its words.
    bool IsRefused() {
        platform::ErrorTrap trap;
        if (!profile_file_.empty())
            trap([&] { state_.g_objProfile->CheckSaveToFile(profile_file_); });
        if (trap.HasError()) {
            pane_.OutputError(fmt::format("Invalid profile: 0x{:X} {}", trap.UnsignedNumber(),
                                          trap.Description()),
                              trap.Report());
            return true;
        }
        trap([&] { state_.g_objEncoder->CheckToEncode(*files_); });
        // Past its end a file is encoded to the end.
        if (!trap.HasError() || trap.UnsignedNumber() == platform::kEndMarkPastEnd) return false;
        pane_.OutputError(fmt::format("Prepare to encode failed with error {} {}", trap.Number(),
                                      trap.Description()),
                          trap.Report());
        return true;
    }

    std::shared_ptr<platform::WMEncProfile2> FreshProfile() {
        platform::SessionState state = state_;
        state.g_objEncoder = factory_.MakeEncoder();
        state.g_objProfile = nullptr;
        state.ClearSources();
        cli::EncodeSettings settings = settings_;
        session::NoPane pane;
        session::EncoderSetup setup(state, settings, pane, factory_);
        return setup.SetupEncoder() ? state.g_objProfile : nullptr;
    }

    platform::Factory& factory_;
    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    session::CommandOrigin origin_;
    std::shared_ptr<ReadOnlyFiles> files_;
    platform::OutputPane& pane_;
    FolderRun& folder_run_;
    const bool had_profile_;    // of earlier commands
    std::string profile_file_;  // as typed
};

}  // namespace

bool ExplainCommand::Explain(const std::vector<std::string>& words) {
    CommandCopy copy(window_, factory_, pane_, settings_, session_);
    if (!copy.Parse(words)) return !copy.parser.Refused();

    Explanation explanation(factory_, copy.session, copy.settings,
                            {copy.before, copy.parser.TypedOptions()}, copy.files, pane_,
                            folder_run_);
    explanation.TakeProfileFile();
    session::EncoderSetup encoder_setup(copy.session, copy.settings, pane_, factory_);
    if (!copy.settings.input.empty() && copy.files->FolderExists(copy.settings.input)) {
        const FolderRun::Walk walk(folder_run_);
        session::DirectoryMode mode(copy.session, copy.settings, pane_, encoder_setup, explanation);
        return mode.DoDirectoryModeEncoding() && !mode.AnyFailed();
    }
    if (!encoder_setup.SetupEncoder()) return false;
    return explanation.RunToEnd() == session::FileRunEnd::Completed;
}

}  // namespace app
