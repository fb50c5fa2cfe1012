#include "codecs/common/wavefront.h"

#include <algorithm>

#include "codecs/common/spin.h"

namespace codecs {
namespace {

// A thread that catches up with the row above waits until that is so many places further: who asks,
// or is woken, for each of them costs a tenth of the time. Fewer where that would leave threads
// without a row.
constexpr int kLongestStep = 8;

}  // namespace

void Wavefront::Run(int columns, int rows, const std::function<void(int x, int y)>& visit) {
    if (team_.Threads() == 1 || rows == 1) {
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) visit(x, y);
        return;
    }
    if (visited_.size() != static_cast<std::size_t>(rows))
        visited_ = std::vector<Row>(static_cast<std::size_t>(rows));
    for (Row& row : visited_) row.places = 0;
    columns_ = columns;
    rows_ = rows;
    step_ = std::clamp(columns / (2 * team_.Threads()), 1, kLongestStep);
    visit_ = &visit;
    next_row_ = 0;
    team_.Run(team_.Threads(), [this](int /*thread*/) { VisitRows(); });
}

// Returns how many places the row above `y` has come to, at least so many.
int Wavefront::AwaitAbove(int y, int places) {
    const std::atomic<int>& above = visited_[static_cast<std::size_t>(y - 1)].places;
    int seen = 0;
    if (!SpinUntil([&] { return (seen = above) >= places; }))
        for (; seen < places; seen = above) above.wait(seen);
    return seen;
}

void Wavefront::VisitRows() {
    for (int y = next_row_++; y < rows_; y = next_row_++) {
        std::atomic<int>& own = visited_[static_cast<std::size_t>(y)].places;
        int above = y == 0 ? columns_ : 0;  // at least
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
