// The session's source group, and the options of the sources in it.
#pragma once

#include "cli/encode_settings.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace session {

class SourceSetup {
  public:
    SourceSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                platform::OutputPane& pane, platform::Factory& factory);

    /// Adds the session's empty group to the encoder, or loads the session file that -wme names:
    /// its group, sources, profile and codec names then become the session's. A file that cannot
    /// be loaded gives one line and false.
    bool CreateSourceGroup();

    /// Applies the options of the audio or the video source, which must be there. Errors of the
    /// encoder pass through. True.
    bool SetupAudioSource();
    bool SetupVideoSource();

  private:
    bool LoadSessionFile();
    void TakeProfile(platform::SessionState& loaded);
    void TakeSources(platform::SessionState& loaded);
    void FillNamedProfile(platform::SessionState& loaded);
    void NameCodecs(platform::SessionState& loaded);
    void SetupStillDuration();

    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
    platform::Factory& factory_;
};

}  // namespace session
