// Runs through a picture's rows side by side, each a little behind the one above.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "codecs/common/task_team.h"

namespace codecs {

/// One run at a time, from the thread that gives the team its jobs.
class Wavefront {
  public:
    explicit Wavefront(TaskTeam& team) : team_(team) {}

    /// Calls `visit(x, y)` for each place, with all places to the left in the row and those of the
    /// row above up to x + 1 visited before. `visit` must not throw.
    void Run(int columns, int rows, const std::function<void(int x, int y)>& visit);

  private:
    // Threads that work on two rows would take a shared cache line from each other.
    struct alignas(64) Row {
        std::atomic<int> places = 0;  // visited
    };
    void VisitRows();
    int AwaitAbove(int y, int places);

    TaskTeam& team_;
    int columns_ = 0;
    int rows_ = 0;
    int step_ = 1;  // places of a row that who waits for it waits for
    const std::function<void(int, int)>* visit_ = nullptr;
    std::atomic<int> next_row_ = 0;
    std::vector<Row> visited_;
};

}  // namespace codecs
