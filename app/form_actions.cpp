#include "app/form_actions.h"

#include "cli/help.h"
#include "profiles/codec_listings.h"
#include "session/output_folder.h"

namespace app {

void FormActions::ListAudioCodecs() { profiles::ListAudioCodecs(factory_, pane_); }

void FormActions::ListAudioFormats() { profiles::ListAudioFormats(factory_, pane_); }

void FormActions::ListVideoCodecs() { profiles::ListVideoCodecs(factory_, pane_); }

void FormActions::ShowHelp() { cli::ShowHelp(pane_); }

void FormActions::ShowHelpChm() { cli::ShowHelpChm(*session_.g_objFSO, *factory_.MakeShell()); }

void FormActions::CreateOutputFolder(const std::string& path) {
    session::CreateOutputFolder(*session_.g_objFSO, path);
}

}  // namespace app
