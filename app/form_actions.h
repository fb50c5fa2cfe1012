// What a command can set off beside an encoding: the parser's calls, led to the rooms that answer.
#pragma once

#include <string>

#include "app/statistics_report.h"
#include "cli/command_actions.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"
#include "session/capture_devices.h"

namespace app {

/// Everything handed over must outlive the object.
class FormActions final : public cli::CommandActions {
  public:
    FormActions(platform::Factory& factory, platform::SessionState& session,
                platform::OutputPane& pane, StatisticsReport& report)
        : factory_(factory),
          session_(session),
          pane_(pane),
          report_(report),
          devices_(session, pane) {}

    void ListDevices() override { devices_.ListDevices(); }
    void ListAudioCodecs() override;
    void ListAudioFormats() override;
    void ListVideoCodecs() override;
    void ShowHelp() override;
    void ShowHelpChm() override;
    void PrintFileInfo() override { report_.PrintFileInfo(); }
    void CreateOutputFolder(const std::string& path) override;

  private:
    platform::Factory& factory_;
    platform::SessionState& session_;
    platform::OutputPane& pane_;
    StatisticsReport& report_;
    session::CaptureDevices devices_;
};

}  // namespace app
