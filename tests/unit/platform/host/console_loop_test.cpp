#include "platform/host/console_loop.h"

#include <thread>

namespace {

using platform::host::ConsoleLoop;
using platform::host::ConsoleTimer;
using testing::ElementsAre;

TEST(ConsoleLoop, RunsTasksInOrderAndAsksAfterEach) {
    ConsoleLoop loop;
    std::vector<int> order;
    for (int i = 0; i < 4; ++i) loop.Post([&order, i] { order.push_back(i); });
    loop.RunUntil([&] { return order.size() == 2; });
    EXPECT_THAT(order, ElementsAre(0, 1));
    loop.RunUntil([&] { return order.size() == 4; });
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3));
    loop.RunUntil([] { return true; });  // asked first: nothing is waited for
}

TEST(ConsoleLoop, TakesTasksFromManyThreads) {
    ConsoleLoop loop;
    constexpr int kThreads = 4;
    constexpr int kTasks = 500;
    std::vector<int> last(kThreads, -1);
    int count = 0;
    bool in_order = true;
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kTasks; ++i)
                loop.Post([&, t, i] {
                    in_order = in_order && last[t] == i - 1;
                    last[t] = i;
                    ++count;
                });
        });
    loop.RunUntil([&] { return count == kThreads * kTasks; });
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(in_order);
}

TEST(ConsoleLoop, TicksArriveBetweenTasksAndInsideTicks) {
    ConsoleLoop loop;
    int ticks = 0;
    int depth = 0;
    bool nested = false;
    loop.OnTick([&] {
        ++ticks;
        ++depth;
        if (depth == 1) loop.RunUntil([&] { return ticks >= 3; });
        nested = nested || depth > 1;
        --depth;
    });
    // Tasks that never run out must not keep the timer from ticking.
    std::function<void()> again = [&] { loop.Post(again); };
    again();
    loop.Timer1().SetInterval(1);
    loop.Timer1().SetEnabled(true);
    loop.RunUntil([&] { return ticks >= 3; });
    EXPECT_TRUE(nested);
}

TEST(ConsoleLoop, ADisabledTimerIsSilent) {
    ConsoleLoop loop;
    int ticks = 0;
    loop.OnTick([&] {
        ++ticks;
        loop.Timer1().SetEnabled(false);
    });
    loop.Timer1().SetInterval(1);
    loop.Timer1().SetEnabled(true);
    loop.RunUntil([&] { return ticks == 1; });
    EXPECT_FALSE(loop.Timer1().NextTick());
    loop.Timer1().SetEnabled(true);
    EXPECT_TRUE(loop.Timer1().NextTick());
    loop.Timer1().SetInterval(0);
    EXPECT_FALSE(loop.Timer1().NextTick());
}

TEST(ConsoleTimer, MissedTicksAreDroppedAndTheGridKept) {
    ConsoleTimer timer;
    timer.SetInterval(1000);
    timer.SetEnabled(true);
    const auto first = timer.NextTick().value();
    using std::chrono::milliseconds;
    EXPECT_FALSE(timer.TakeTick(first - milliseconds(1)));
    EXPECT_TRUE(timer.TakeTick(first + milliseconds(20)));
    EXPECT_EQ(timer.NextTick(), first + milliseconds(1000));
    EXPECT_TRUE(timer.TakeTick(first + milliseconds(4500)));
    EXPECT_EQ(timer.NextTick(), first + milliseconds(5000));
    EXPECT_FALSE(timer.TakeTick(first + milliseconds(4600)));
}

}  // namespace
