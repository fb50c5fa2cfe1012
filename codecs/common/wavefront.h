// Runs through a picture's rows side by side, each a little behind the one above.
#pragma once

#include <atomic>
#include <functional>
#include <span>
#include <vector>

#include "codecs/common/task_team.h"

namespace codecs {

/// One run at a time, from the thread that gives the team its jobs.
class Wavefront {
  public:
    using Visit = std::function<void(int x, int y)>;
    struct Rows {
        int first = 0;
        int end = 0;
    };

    explicit Wavefront(TaskTeam& team) : team_(team) {}

    /// Calls `visit(x, y)` for each place, with all places to the left in the row and those of the
    /// row above up to x + 1 visited before. `visit` must not throw.
    void Run(int columns, int rows, const Visit& visit);
    /// The same for some rows, from above to below, side by side: the first of a range waits for
    /// none.
    void Run(int columns, std::span<const Rows> ranges, const Visit& visit);

  private:
    // Threads that work on two rows would take a shared cache line from each other.
    struct alignas(64) Row {
        std::atomic<int> places = 0;  // visited
    };
    struct Turn {
        int y = 0;
        bool follows = false;  // the row above
    };
    void ListTurns(std::span<const Rows> ranges);
    void VisitRows();
    int AwaitAbove(int y, int places);

    TaskTeam& team_;
    int columns_ = 0;
    int step_ = 1;             // places of a row that who waits for it waits for
    std::vector<Turn> turns_;  // rows in the order in which they are begun
    const Visit* visit_ = nullptr;
    std::atomic<std::size_t> next_turn_ = 0;
    std::vector<Row> visited_;
};

}  // namespace codecs
