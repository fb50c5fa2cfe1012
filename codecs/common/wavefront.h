// Runs through a picture's rows side by side, each a little behind the one above.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "codecs/common/task_team.h"

namespace codecs {

/// Its threads wait between runs. One run at a time, from one thread, which works along.
class Wavefront {
  public:
    /// @param threads  that work, the caller's among them; at least 1
    explicit Wavefront(int threads) : team_(threads) {}

    /// Calls `visit(x, y)` for each place, with all places to the left in the row and those of the
    /// row above up to x + 1 visited before. `visit` must not throw.
    void Run(int columns, int rows, const std::function<void(int x, int y)>& visit);

  private:
    void VisitRows();

    TaskTeam team_;
    int columns_ = 0;
    int rows_ = 0;
    int step_ = 1;  // places of a row after which who waits for it is woken
    const std::function<void(int, int)>* visit_ = nullptr;
    std::atomic<int> next_row_ = 0;
    std::vector<std::atomic<int>> visited_;  // places of each row
};

}  // namespace codecs
