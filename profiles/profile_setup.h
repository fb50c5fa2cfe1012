// Gives the session its profile: predefined, from a file, or made from the options.
#pragma once

#include <memory>

#include "cli/encode_settings.h"
#include "platform/encoder.h"
#include "platform/error.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace profiles {

/// Needs the session's file system, source group, sources and content kind. Keeps references only;
/// what it is given must outlive it.
class ProfileSetup {
  public:
    ProfileSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                 platform::OutputPane& pane, platform::Factory& factory);

    /// Makes or reuses the session's profile, fills it, attaches it to the source group and saves
    /// it where that is asked for. Errors of the encoder are collected: the steps go on and the
    /// first error is reported. False after one line. "-v_framerate" is as before afterwards; the
    /// other settings of a custom profile keep the defaults that they got.
    bool SetupProfile();

    /// Applies the audio and video options to the streams that have a source. False after one
    /// line. Errors of the encoder go to the caller.
    bool SetupCustomProfile(platform::WMEncAudience& audience);

  private:
    using Audience = std::shared_ptr<platform::WMEncAudience>;

    bool BuildProfile(platform::ErrorTrap& trap);
    Audience OpenProfile();
    void RaiseFrameRate(platform::ErrorTrap& trap);
    double ProbedFrameRate();
    bool ApplyPredefined(platform::ErrorTrap& trap, platform::WMEncAudience& audience);
    void LoadFile(platform::ErrorTrap& trap, Audience& audience);
    bool ApplyOptions(platform::ErrorTrap& trap, platform::WMEncAudience& audience);
    void SetPictureModes(platform::ErrorTrap& trap);
    void Attach(platform::ErrorTrap& trap);
    void LeaveOutSources();
    void SaveFile();

    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
    platform::Factory& factory_;
};

}  // namespace profiles
