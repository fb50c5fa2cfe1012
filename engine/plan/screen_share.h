// A screen that the desktop hands out once the person in front of it has agreed.
#pragma once

#include <cstdint>

#include "engine/plan/screen_area.h"

namespace engine {

class ScreenShare {
  public:
    virtual ~ScreenShare() = default;

    /// Lets the desktop ask which screen is recorded, and waits for the answer and the first
    /// frame, however long the person takes. Gives the size of the part that `area` names, which
    /// is all of the frame or a region of it. Once, on any thread.
    /// Throws platform::Error when no screen is handed out, the area is not there, or the wait was
    /// cancelled.
    /// @param rate_thousandths  how many frames in 1000 seconds are wanted at most, above 0
    virtual ScreenSize Ask(const ScreenArea& area, std::int32_t rate_thousandths) = 0;

    /// Ends an Ask that waits or is yet to come. Any thread.
    virtual void Cancel() = 0;
};

}  // namespace engine
