#include "codecs/common/wavefront.h"

#include <algorithm>

#include "codecs/common/index.h"
#include "codecs/common/spin.h"

namespace codecs {
namespace {

// A thread that catches up with the row above waits until that is so many places further: who asks,
// or is woken, for each of them costs a tenth of the time. Fewer where that would leave threads
// without a row.
constexpr int kLongestStep = 8;

}  // namespace

void Wavefront::Run(int columns, int rows, const Visit& visit) {
    const Rows all{0, rows};
    Run(columns, {&all, 1}, visit);
}

void Wavefront::Run(int columns, std::span<const Rows> ranges, const Visit& visit) {
    ListTurns(ranges);
    if (team_.Threads() == 1 || turns_.size() <= 1) {
        for (const Turn& turn : turns_)
            for (int x = 0; x < columns; ++x) visit(x, turn.y);
        return;
    }
    const auto rows = Index(ranges.back().end);
    if (visited_.size() < rows) visited_ = std::vector<Row>(rows);
    for (Row& row : visited_) row.places = 0;
    columns_ = columns;
    step_ = std::clamp(columns / (2 * team_.Threads()), 1, kLongestStep);
    visit_ = &visit;
    next_turn_ = 0;
    team_.Run(team_.Threads(), [this](int /*thread*/) { VisitRows(); });
}

// The first rows of all ranges, then the second ones.
void Wavefront::ListTurns(std::span<const Rows> ranges) {
    turns_.clear();
    int longest = 0;
    for (const Rows& rows : ranges) longest = std::max(longest, rows.end - rows.first);
    for (int n = 0; n < longest; ++n)
        for (const Rows& rows : ranges)
            if (rows.first + n < rows.end) turns_.push_back({rows.first + n, n > 0});
}

int Wavefront::AwaitAbove(int y, int places) {
    const std::atomic<int>& above = visited_[Index(y - 1)].places;
    int seen = 0;
    if (!SpinUntil([&] { return (seen = above) >= places; }))
        for (; seen < places; seen = above) above.wait(seen);
    return seen;
}

void Wavefront::VisitRows() {
    for (std::size_t turn = next_turn_++; turn < turns_.size(); turn = next_turn_++) {
        const auto [y, follows] = turns_[turn];
        std::atomic<int>& own = visited_[Index(y)].places;
        int above = follows ? 0 : columns_;  // at least
        for (int x = 0; x < columns_; ++x) {
            if (above < std::min(x + 2, columns_))
                above = AwaitAbove(y, std::min(x + 1 + step_, columns_));
            (*visit_)(x, y);
            own = x + 1;
            if ((x + 1) % step_ == 0 || x + 1 == columns_) own.notify_all();
        }
    }
}

}  // namespace codecs
