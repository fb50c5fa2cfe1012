#include "codecs/common/wavefront.h"

#include <algorithm>

namespace codecs {

Wavefront::Wavefront(int threads) {
    for (int i = 1; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

Wavefront::~Wavefront() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void Wavefront::Run(int columns, int rows, const std::function<void(int x, int y)>& visit) {
    if (threads_.empty() || rows == 1) {
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) visit(x, y);
        return;
    }
    if (visited_.size() != static_cast<std::size_t>(rows))
        visited_ = std::vector<std::atomic<int>>(static_cast<std::size_t>(rows));
    for (std::atomic<int>& visited : visited_) visited = 0;
    columns_ = columns;
    rows_ = rows;
    visit_ = &visit;
    next_row_ = 0;
    {
        const std::lock_guard lock(mutex_);
        ++run_;
        working_ = static_cast<int>(threads_.size());
    }
    changed_.notify_all();
    VisitRows();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return working_ == 0; });
}

void Wavefront::Work() {
    int last_run = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return ended_ || run_ != last_run; });
        if (ended_) return;
        last_run = run_;
        lock.unlock();
        VisitRows();
        lock.lock();
        if (--working_ == 0) changed_.notify_all();
    }
}

void Wavefront::VisitRows() {
    for (int y = next_row_++; y < rows_; y = next_row_++) {
        std::atomic<int>& own = visited_[static_cast<std::size_t>(y)];
        for (int x = 0; x < columns_; ++x) {
            if (y > 0) {
                const std::atomic<int>& above = visited_[static_cast<std::size_t>(y - 1)];
                const int needed = std::min(x + 2, columns_);
                for (int seen = above.load(); seen < needed; seen = above.load()) above.wait(seen);
            }
            (*visit_)(x, y);
            own = x + 1;
            own.notify_all();
        }
    }
}

}  // namespace codecs
