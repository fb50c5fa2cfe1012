#include "app/command_copy.h"

namespace app {

CommandCopy::CommandCopy(platform::FormWindow& window, platform::Factory& factory, InfoPane& pane,
                         const cli::EncodeSettings& form_settings,
                         const platform::SessionState& form_session)
    : before(form_settings),
      settings(form_settings),
      session(form_session),
      files(std::make_shared<session::ReadOnlyFiles>(factory.MakeFileSystem())),
      report_(window, factory, session, settings, pane),
      actions_(factory, session, pane, report_),
      readers_(pane),
      parser(settings, readers_, pane, actions_, session) {
    session.g_objFSO = files;
    session.g_objEncoder = factory.MakeEncoder();
    session.ClearSources();
    if (const auto kept = session.g_objProfile) {
        session.g_objProfile = factory.MakeProfile();
        session.g_objProfile->LoadFromIWMProfile(*kept);
    }
}

}  // namespace app
