// Parts of the screen that can be recorded by themselves.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace platform {

struct ScreenPart {
    std::string name;    // as people call it
    std::string choice;  // as the variable TESSIVO_SCREEN takes it
};

struct ScreenParts {
    bool chosen_by_desktop = false;    // it asks for each recording; there is nothing else then
    std::vector<ScreenPart> monitors;  // none when there is only one
    std::vector<ScreenPart> windows;   // open ones of other programs, foremost first
};

/// Looks for them now. Throws Error when the screen's server does not answer.
using ScreenPartsFinder = std::function<ScreenParts()>;

}  // namespace platform
