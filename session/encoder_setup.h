// From the settings to a session that is ready to run: sources, profile, output, time, titles.
#pragma once

#include <cstdint>
#include <string>

#include "cli/encode_settings.h"
#include "platform/error.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"
#include "profiles/profile_setup.h"
#include "session/capture_devices.h"
#include "session/output_setup.h"
#include "session/source_setup.h"

namespace session {

/// Works on the encoder and the file system in `state`, which must be there; the source group and
/// the sources must be null at the start of each session.
class EncoderSetup {
  public:
    EncoderSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                 platform::OutputPane& pane, platform::Factory& factory);

    /// Runs the set-up procedures in their order and stops at the first that refuses: false, its
    /// one line written. Throws platform::Error where a procedure lets one pass.
    bool SetupEncoder();

    /// Decides what the input is (file, devices, screen), makes the sources and applies their
    /// options. Errors of the encoder are collected and give one line at the end.
    bool SetupInput();

  private:
    void OpenFile(const std::string& path, const std::string& profile_key,
                  platform::ErrorTrap& trap);
    bool OpenDevice(platform::SourceType type, std::int32_t number, platform::ErrorTrap& trap);
    void OpenScreen(const std::string& profile_key, platform::ErrorTrap& trap);
    void AddSource(platform::SourceType type, const std::string& input, const std::string& scheme,
                   platform::ErrorTrap& trap);
    void TakeFirstSources();
    void FixContentType();

    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
    CaptureDevices capture_devices_;
    SourceSetup source_setup_;
    profiles::ProfileSetup profile_setup_;
    OutputSetup output_setup_;
};

}  // namespace session
