// A program of our own that does for this one what may fail badly.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform::host {

struct HelperOutput {
    enum class End {
        ByItself,
        TooLong,  // in time or output; it was killed
        Stopped,  // so it was here
    };

    std::string text;
    End end = End::ByItself;
};

struct HelperLimits {
    std::chrono::milliseconds time{};  // by the clock
    std::size_t bytes = 0;             // of output
};

/// Runs a program to its end and reads its standard output. It gets no other descriptor of this
/// process, an empty input, and nobody sees what it complains of. Any thread.
/// @param words    the program's file and its arguments
/// @param stopped  asked ten times a second; true ends the program
/// Throws Error (unspecified) when the program cannot be started.
HelperOutput RunHelper(std::vector<std::string> words, HelperLimits limits,
                       const std::function<bool()>& stopped);

}  // namespace platform::host
