// The window's executable, from its arguments to its exit status.
#pragma once

#include "platform/host/console_program.h"
#include "platform/host/qt_menu_commands.h"
#include "platform/screen_parts.h"
#include "platform/sound_meter.h"

namespace platform::host {

/// Opens the window and runs it until it is closed. The words are the first command, which the
/// form runs by itself. Returns 0; 1 where no window can be opened; 130 after a signal.
int RunWindow(const std::vector<std::string>& words, const ProgramInfo& program,
              EngineMakers makers, const FormMaker& make_form, FileRepair repair,
              ScreenPartsFinder screen_parts, SoundMeterMaker sound_meter);

}  // namespace platform::host
