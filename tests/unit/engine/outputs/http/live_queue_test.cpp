// What clients of all speeds get, and who comes between two key frames.
#include "engine/outputs/live/live_queue.h"

#include "engine/outputs/http/history.h"
#include "support/row_name.h"
#include "unit/engine/outputs/http/live_packets.h"

namespace {

using engine::LiveQueue;
using live_packets::Packet;

// Packets from..to are pushed, then all that waits is popped.
struct QueueCase {
    const char* why;
    std::uint64_t from, to;
    LiveQueue::Limits limits;
    std::uint64_t first, last;  // of what waits; last < first: nothing
    std::uint64_t withheld;
};

// clang-format off
const QueueCase kQueueCases[] = {
    // why                                        from to   limits: bytes, ms, times   first last  withheld
    {"begins where it can be joined",              3,  25,  {10'000, 10'000, 3},       10,   25,   0},
    {"nothing before one can join",                3,   9,  {10'000, 10'000, 3},       1,    0,    0},
    {"too long in time: whole groups go",          0,  21,  {10'000, 2'000, 3},        20,   21,   20},
    {"too many bytes: the same",                   0,  21,  {2'100, 99'000, 3},        20,   21,   20},
    {"one group is too long: all up to the next",  0,  12,  {10'000, 500, 3},          10,   12,   10},
    {"and nothing while there is no next",         0,   8,  {10'000, 500, 3},          1,    0,    9},
};
// clang-format on

class Queues : public testing::TestWithParam<QueueCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Queues, testing::ValuesIn(kQueueCases), test_support::NameOfRow());

TEST_P(Queues, KeepWholeGroups) {
    const QueueCase& c = GetParam();
    LiveQueue queue(c.limits);
    for (std::uint64_t i = c.from; i <= c.to; ++i) queue.Push(Packet(i));
    for (std::uint64_t i = c.first; i <= c.last && c.last != 0; ++i) {
        const engine::LivePacketPtr packet = queue.Pop();
        ASSERT_TRUE(packet);
        EXPECT_EQ(packet->number, i);
    }
    EXPECT_EQ(queue.Pop(), nullptr);
    EXPECT_EQ(queue.TakeWithheld(), c.withheld);
}

TEST(LiveQueue, IsHopelessWhenItNeverGetsEmpty) {
    LiveQueue stalled({10'000, 1'000, 3});
    LiveQueue slow({10'000, 1'000, 3});
    for (std::uint64_t i = 0; i < 50; ++i) {
        stalled.Push(Packet(i));
        slow.Push(Packet(i));
        if (i % 20 == 19)
            while (slow.Pop()) {
            }
    }
    EXPECT_TRUE(stalled.IsHopeless());
    EXPECT_FALSE(slow.IsHopeless()) << "it caught up each time";
}

TEST(History, HoldsTheGroupThatRuns) {
    engine::http::History history;
    history.Add(Packet(9));
    EXPECT_TRUE(history.Packets().empty()) << "nobody can join here";
    for (std::uint64_t i = 10; i < 25; ++i) history.Add(Packet(i));
    ASSERT_EQ(history.Packets().size(), 5U);
    EXPECT_EQ(history.Packets().front()->number, 20U);
    for (std::uint64_t i = 25; i < 29; ++i) history.Add(Packet(i, 10, 3U << 20U));
    EXPECT_TRUE(history.Packets().empty()) << "too much to keep";
}

}  // namespace
