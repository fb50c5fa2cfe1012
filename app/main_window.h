// The form: takes the window's events, owns the session's state and the rooms that work on it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "app/command_words.h"
#include "app/encoding_run.h"
#include "app/folder_run.h"
#include "app/form_actions.h"
#include "app/info_pane.h"
#include "app/progress.h"
#include "app/run_log.h"
#include "app/statistics_report.h"
#include "cli/encode_settings.h"
#include "cli/parameter_parser.h"
#include "cli/value_readers.h"
#include "platform/factory.h"
#include "platform/form_events.h"
#include "platform/session_state.h"
#include "platform/widgets.h"
#include "session/directory_mode.h"
#include "session/encoder_setup.h"

namespace app {

/// Window and factory must outlive the form. A host calls Form_Load once the window stands, then
/// the events as they come; Go may come again while a command walks a folder. Throws nothing of
/// its own: what goes wrong is a line in the output pane.
class frmMain final : public platform::FormEvents {
  public:
    frmMain(platform::FormWindow& window, platform::Factory& factory,
            WallClock clock = std::chrono::system_clock::now);

    void Form_Load() override;
    void Form_Unload() override;
    void cmdGo_Click() override;
    void cmdStop_Click() override;
    void txtCmd_KeyPress(std::int16_t key) override;
    void Timer1_Timer() override;

    /// Takes the place of the automatic first run, if that has not been yet.
    void RunCommand(const std::vector<std::string>& words) override;
    void RunListing(const std::vector<std::string>& words) override;
    platform::FollowingWords WordsAfter(const std::string& option) const override;
    bool NewSession() override;
    void PauseOrResume() override;
    bool IsBusy() const override;
    platform::ExitStatus Status() const override;
    platform::RunProgress Progress() const override;
    platform::CommandReport Report() const override;
    void SetRunListener(platform::RunListener* listener) override;

  private:
    void Form_Initialize();
    void OfferDefaultCommand();
    void RunWords(const std::vector<std::string>& words);
    platform::ExitStatus RunSession(const std::vector<std::string>& words);
    platform::ExitStatus RunFolder();
    bool SaveSessionOf(const std::vector<std::string>& words);

    platform::FormWindow& window_;
    platform::Factory& factory_;

    std::string g_strInstallDrive;
    std::int16_t g_bAutoStarted = 0;
    std::string listed_first_;  // before the automatic first run, whose help goes above it
    platform::ExitStatus g_nExitStatus = platform::ExitStatus::Done;  // before the run
    std::uint64_t commands_begun_ = 0;  // tells a command whether it is still the last

    cli::EncodeSettings settings_;
    platform::SessionState session_;
    TypedWords typed_words_;
    InfoPane pane_;
    app::Progress progress_;
    StatisticsReport report_;
    RunLog run_log_;
    EncodingRun run_;
    FolderRun folder_run_;
    session::EncoderSetup encoder_setup_;
    session::DirectoryMode directory_mode_;
    FormActions actions_;
    cli::ValueReaders readers_;
    cli::ParameterParser parser_;
};

}  // namespace app
