// How a command ended, for those who run the program.
#pragma once

namespace platform {

/// In rising order: of several commands the worst counts.
enum class ExitStatus {
    Done = 0,               // done, listed or shown
    Refused = 1,            // while parsing or setting up: nothing was encoded
    Failed = 2,             // while running; of a folder: any of its files
    StoppedBySignal = 130,  // what was encoded so far is a whole file
};

/// As the process hands it to its shell.
constexpr int Number(ExitStatus status) { return static_cast<int>(status); }

}  // namespace platform
