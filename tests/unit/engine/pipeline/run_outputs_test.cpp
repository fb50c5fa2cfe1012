// Several outputs of one run.
#include "engine/pipeline/run_outputs.h"

#include <string>
#include <vector>

#include "engine/base/av/coded_frame_pool.h"
#include "platform/error.h"

namespace {

using namespace engine;

constexpr const char* kBroken = "broken";

// What outputs of any kind were called with, each call with the output's name.
struct Record {
    std::vector<std::string> calls;
    std::vector<CodedFrame> kept;
};

class FakeOutput : public OutputSink {
  public:
    FakeOutput(std::string name, Record& record) : name_(std::move(name)), record_(record) {}
    void Begin(const OutputHeader& /*header*/) override {
        Called("begins");
        if (name_ == kBroken) throw platform::Error(platform::kDiskFull, name_);
    }
    void Write(const CodedFrame& frame) override {
        Called("writes");
        record_.kept.push_back(frame);
    }
    void Finish() override {
        Called("finishes");
        if (name_ == "unfinished") throw platform::Error(platform::kDiskFull, name_);
    }
    void Abandon() override { Called("abandons"); }
    OutputResult Result() const override { return {record_.kept.size(), {}}; }
    std::string RemainsText() const override { return "some of " + name_; }

  private:
    void Called(const char* what) const { record_.calls.push_back(name_ + " " + what); }

    std::string name_;
    Record& record_;
};

class Outputs : public testing::Test {
  protected:
    RunOutputs Of(const std::vector<std::string>& names) {
        for (const std::string& name : names) plan_.outputs.emplace_back(FileOutput{name});
        const RunParts parts{[this](const OutputPlan& output, const OutputNotices&) {
            return std::make_unique<FakeOutput>(std::get<FileOutput>(output).path, record_);
        }};
        return {plan_, parts, statistics_, {}};
    }

    EncodePlan plan_;
    RunStatistics statistics_{plan_};
    CodedFramePool pool_;
    Record record_;
};

TEST_F(Outputs, EachGetsTheSameFrames) {
    RunOutputs outputs = Of({"a", "b"});
    outputs.Begin({});
    {
        PacketHandle packet = pool_.Get();
        ASSERT_EQ(av_new_packet(packet.get(), 10), 0);
        CodedFrame frame;
        frame.bytes = pool_.Share(std::move(packet));
        outputs.Write(frame);
    }
    EXPECT_EQ(statistics_.File().file_size.Raw(), 2) << "what the first file holds";
    outputs.Finish();
    EXPECT_EQ(record_.calls, (std::vector<std::string>{"a begins", "b begins", "a writes",
                                                       "b writes", "a finishes", "b finishes"}));
    ASSERT_EQ(record_.kept.size(), 2U);
    EXPECT_EQ(std::span<const std::uint8_t>(record_.kept[0].bytes).data(),
              std::span<const std::uint8_t>(record_.kept[1].bytes).data())
        << "nothing is copied for the second";
    EXPECT_EQ(outputs.RemainsText(), "some of a. some of b");
}

TEST_F(Outputs, OneThatCannotBeginLetsNoneGoOn) {
    RunOutputs outputs = Of({"a", kBroken});
    EXPECT_THROW(outputs.Begin({}), platform::Error);
    EXPECT_EQ(record_.calls, (std::vector<std::string>{"a begins", "broken begins", "a abandons",
                                                       "broken abandons"}));
}

TEST_F(Outputs, OneThatCannotFinishLeavesTheOthersWhole) {
    RunOutputs outputs = Of({"unfinished", "b"});
    outputs.Begin({});
    EXPECT_THROW(outputs.Finish(), platform::Error);
    EXPECT_EQ(record_.calls.back(), "b finishes");
}

}  // namespace
