// Where the files stand that belong to the running program.
#pragma once

#include <string>

namespace platform {

/// A file of the program itself: beside the executable, or in ../lib/tessivo seen from there. Where
/// it is in neither, the name that it should have beside the executable. Any thread.
std::string ProgramFile(const char* name);

}  // namespace platform
