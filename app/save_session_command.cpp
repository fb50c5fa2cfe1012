#include "app/save_session_command.h"

#include <fmt/format.h>

#include "app/command_copy.h"
#include "platform/error.h"
#include "session/encoder_setup.h"
#include "session/error_line.h"

namespace app {

namespace {

[[noreturn]] void Refuse(const std::string& reason) {
    throw platform::Error(platform::kInvalidArgument, reason);
}

void Save(const std::string& file, CommandCopy& copy) {
    if (copy.files->IsSame(file, copy.settings.input))
        Refuse(
            fmt::format("The session cannot be saved as {}, which is the input: give "
                        "--save-session another name",
                        file));
    copy.session.g_objEncoder->Save(file);
}

}  // namespace

bool SaveSession(const std::vector<std::string>& words, platform::FormWindow& window,
                 platform::Factory& factory, InfoPane& pane, const cli::EncodeSettings& settings,
                 const platform::SessionState& session) {
    if (words.size() < 2)
        Refuse("--save-session takes the name of a session file and the words of a command");
    CommandCopy copy(window, factory, pane, settings, session);
    if (!copy.Parse({words.begin() + 1, words.end()})) {
        if (!copy.parser.Refused()) Refuse("What only lists or shows has no session to save");
        return false;
    }
    if (!copy.settings.input.empty() && copy.files->FolderExists(copy.settings.input))
        Refuse(fmt::format("The input {} is a folder, and a session has one file: name a file",
                           copy.settings.input));
    copy.settings.saveprofile.clear();  // the profile goes into the session
    session::EncoderSetup setup(copy.session, copy.settings, pane, factory);
    if (!setup.SetupEncoder()) return false;
    platform::ErrorTrap trap;
    trap([&] { Save(words.front(), copy); });
    if (trap.HasError()) {
        session::OutputErrorLine(pane, trap.Report());
        return false;
    }
    pane.OutputInfo("Session saved as " + copy.files->GetAbsolutePathName(words.front()));
    return true;
}

}  // namespace app
