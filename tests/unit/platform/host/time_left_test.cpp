// How long a run will still take.
#include "platform/host/time_left.h"

#include <gtest/gtest.h>

namespace platform::host {
namespace {

using std::chrono::seconds;

class TimeLeftTest : public testing::Test {
  protected:
    TimeLeftTest() {
        progress.state = EncoderState::Running;
        progress.length_ms = 100'000;
    }
    /// A second later the run has come that much further.
    std::string Second(std::int64_t encoded_ms) {
        now += seconds(1);
        progress.encoded_ms += encoded_ms;
        return left.TextOf(progress, now);
    }

    TimeLeft left;
    RunProgress progress;
    TimeLeft::Clock::time_point now;
};

TEST_F(TimeLeftTest, FollowsThePaceAfterTheFirstSeconds) {
    EXPECT_EQ(Second(0), "");
    EXPECT_EQ(Second(2'000), "") << "too early to tell";
    EXPECT_EQ(Second(2'000), "") << "too early to tell";
    EXPECT_EQ(Second(2'000), "0:00:47 left");
    std::string text;
    for (int i = 0; i < 60; ++i) text = Second(500);
    EXPECT_EQ(text, "0:02:07 left") << "what was fast is forgotten";
    progress.encoded_ms = 120'000;
    EXPECT_EQ(Second(0), "0:00:00 left") << "past the end";
}

TEST_F(TimeLeftTest, APauseIsNoPace) {
    for (int i = 0; i < 5; ++i) Second(1'000);
    progress.state = EncoderState::Paused;
    for (int i = 0; i < 100; ++i) EXPECT_EQ(Second(0), "");
    progress.state = EncoderState::Running;
    EXPECT_EQ(Second(0), "0:01:35 left");
}

TEST_F(TimeLeftTest, TheSecondPassCountsFromTheBeginning) {
    progress.passes = 2;
    progress.encoded_ms = 90'000;
    for (int i = 0; i < 4; ++i) Second(1'000);
    EXPECT_EQ(Second(1'000), "0:01:45 left");
    progress.pass = 2;
    progress.encoded_ms = 0;
    EXPECT_EQ(Second(0).substr(0, 3), "0:0") << "a tick at the border of the passes";
    for (int i = 0; i < 90; ++i) Second(500);
    EXPECT_EQ(Second(500), "0:01:49 left");
}

TEST_F(TimeLeftTest, ARecordingHasNone) {
    progress.length_ms = 0;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Second(1'000), "");
}

}  // namespace
}  // namespace platform::host
