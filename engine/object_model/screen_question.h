// Waits for the person to hand out a screen, while the program's windows stay alive.
#pragma once

#include "engine/plan/screen_share.h"
#include "platform/event_loop.h"

namespace engine {

/// Used on the user-interface thread. Loop and share must outlive it.
class ScreenQuestion {
  public:
    ScreenQuestion(platform::EventLoop& loop, ScreenShare& share) : loop_(loop), share_(share) {}

    /// Asks for the screen on a thread of its own and runs the loop until the answer is there.
    /// Throws what asking throws.
    ScreenSize Answer(const ScreenArea& area, std::int32_t rate_thousandths);
    /// By what the loop runs meanwhile: the answer is then an error.
    void Cancel() { share_.Cancel(); }

  private:
    platform::EventLoop& loop_;
    ScreenShare& share_;
};

}  // namespace engine
