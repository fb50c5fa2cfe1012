// Stops at any moment, broken sources, outputs that cannot be written: what was written is whole,
// and what went wrong is said once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "engine/sources/files/media_probe.h"
#include "support/clips.h"
#include "support/error_of.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;
using platform::EncoderState;
using test_support::ErrorNumber;

class Failure : public clips::WithSource<Failure> {
  public:
    static constexpr char kSource[] =
        "-f lavfi -i testsrc2=s=320x240:r=25 -f lavfi -i sine=440:r=44100 -t 20 -c:v mpeg4 -q:v 5 "
        "-g 25 -c:a pcm_s16le";

  protected:
    static EncodePlan Both(const std::string& source) {
        EncodePlan plan = session::OfBoth(source, folder_->Path("out.wmv"));
        return plan;
    }
};

// The moment is a media time: the stop comes once so much has been written.
struct StopCase {
    const char* why;
    int passes;
    int after_ms;
    bool in_second_pass;
};

TEST_F(Failure, AStopLeavesAWholeFile) {
    const StopCase rows[] = {
        // why                     passes  after  in the second pass
        {"at once", 1, 0, false},
        {"in the middle", 1, 2000, false},
        {"in the first of two", 2, 2000, false},
        {"in the second of two", 2, 2000, true},
    };
    for (const StopCase& row : rows) {
        SCOPED_TRACE(row.why);
        EncodePlan plan = Both(source_);
        plan.passes = row.passes;
        // Once the second pass runs, time counts from 0 again: it was higher before.
        const session::Outcome outcome = session::Run(plan, [&](EncodingRun& run) {
            std::int64_t last = 0;
            bool second = !row.in_second_pass;
            for (;;) {
                const std::int64_t now = run.Figures().EncodingTime().Raw();
                if (now < last) second = true;
                last = now;
                if (second && now >= row.after_ms) break;
                std::this_thread::yield();
            }
            run.Stop();
            run.Stop();
        });
        EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
        EXPECT_EQ(outcome.states.back(), EncoderState::Stopped);
        EXPECT_EQ(std::count(outcome.states.begin(), outcome.states.end(), EncoderState::Stopping),
                  1);
        if (row.after_ms == 0) continue;
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        const clips::Contents contents = clips::Decode(plan.FilePath());
        EXPECT_NEAR(contents.duration,
                    static_cast<double>(outcome.file.file_duration.Raw()) / 1000.0, 0.005);
        EXPECT_EQ(static_cast<std::int64_t>(contents.frames.size()),
                  outcome.video.sample_count.Raw());
        EXPECT_GE(contents.duration, 1.9);
    }
}

TEST_F(Failure, ARunThatIsThrownAwayEndsByItself) {
    EncodePlan plan = Both(source_);
    {
        EncodingRun run(plan, {}, session::Parts());
        run.Start();
    }
    const clips::Contents contents = clips::Decode(plan.FilePath());
    EXPECT_EQ(contents.width, 320);
    { const EncodingRun never_started(plan, {}, session::Parts()); }
}

// Damage in the middle costs what it hits; the rest is kept in its place.
TEST_F(Failure, ABrokenMiddleIsPassedOver) {
    for (const char* name : {"broken.avi", "broken.ts"}) {
        SCOPED_TRACE(name);
        const std::string broken = clips::Ffmpeg(
            "-i " + source_ + " -c:v mpeg4 -g 25 -q:v 5 -c:a mp2", folder_->Path(name));
        const auto size = static_cast<std::streamoff>(std::filesystem::file_size(broken));
        {
            std::fstream file(broken, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(size / 2);
            for (int i = 0; i < 20'000; ++i) file.put(static_cast<char>(i * 7919 >> 4));
        }
        EncodePlan plan = Both(broken);
        session::RunCleanly(plan);
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        const clips::Contents contents = clips::Decode(plan.FilePath());
        EXPECT_GT(contents.frames.size(), 400U);
        EXPECT_NEAR(contents.duration, 20.0, 0.3);
    }
}

TEST_F(Failure, ACutFileGivesWhatItHas) {
    const std::string cut = folder_->Path("cut.avi");
    std::filesystem::copy_file(source_, cut);
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) / 2);
    EncodePlan plan = Both(cut);
    const session::Outcome outcome = session::Run(plan);
    EXPECT_THAT(outcome.error_text, testing::HasSubstr("it is cut off"));
    EXPECT_NEAR(clips::Decode(plan.FilePath()).duration, 10.0, 1.0);
}

TEST_F(Failure, WhatIsNoMediaIsRefusedByName) {
    std::ofstream(folder_->Path("words.txt")) << std::string(5000, 'a') << "\n";
    std::ofstream(folder_->Path("words.avi")) << std::string(5000, 'a') << "\n";
    std::ofstream(folder_->Path("empty.avi"));
    const struct {
        const char* why;
        std::string path;
        std::uint32_t number;
    } rows[] = {
        {"absent", folder_->Path("absent.avi"), platform::kFileNotFound},
        {"in no folder", folder_->Path("none/absent.avi"), platform::kFileNotFound},
        {"a text file", folder_->Path("words.txt"), platform::kInvalidData},
        {"text with another name", folder_->Path("words.avi"), platform::kInvalidData},
        {"empty", folder_->Path("empty.avi"), platform::kInvalidData},
        {"a folder", folder_->Path("."), platform::kAccessDenied},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ErrorNumber([&] { ProbeMediaFile(row.path); }, {row.path}), row.number);
    }
}

TEST_F(Failure, AnOutputThatCannotBeMadeThrowsAndLeavesNothing) {
    EncodePlan plan = Both(source_);
    plan.outputs = {FileOutput{folder_->Path("no/such/folder.wmv")}};
    EXPECT_THROW(EncodingRun(plan, {}, session::Parts()), platform::Error);
    plan = Both(source_);
    plan.outputs = {FileOutput{folder_->Path("never.wmv")}};
    plan.audio->input.path = folder_->Path("absent.wav");
    EXPECT_THROW(EncodingRun(plan, {}, session::Parts()), platform::Error);
    EXPECT_FALSE(std::filesystem::exists(plan.FilePath()));
    EXPECT_FALSE(std::filesystem::exists(plan.FilePath() + ".part"));
}

TEST_F(Failure, MarksBeyondEverythingAreSaid) {
    EncodePlan plan = Both(source_);
    for (InputPlan* input : {&plan.audio->input, &plan.video->input})
        input->mark_in = Ticks::FromMilliseconds(60'000);
    const session::Outcome outcome = session::Run(plan);
    ASSERT_EQ(outcome.errors.size(), 1U);
    EXPECT_EQ(outcome.errors[0], platform::kInvalidData);
    EXPECT_EQ(outcome.states.back(), EncoderState::Stopped);
}

}  // namespace
