// Two sound devices that become one.
#include "engine/pipeline/mixed_audio.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/error_of.h"
#include "unit/engine/pipeline/fake_devices.h"

namespace {

using namespace engine;
using fake_devices::Device;
using fake_devices::Script;

constexpr int kMixedRate = 48'000;

class Mix : public testing::Test {
  protected:
    void Open() {
        mix_ = std::make_unique<MixedAudio>(std::make_unique<Device>(microphone_, frames_),
                                            std::make_unique<Device>(desktop_, frames_), frames_);
    }
    // The loudest sample of each tenth of a second; checks that times have no gap.
    std::vector<double> Tenths(int count) {
        std::vector<double> tenths;
        for (int i = 0; i < count; ++i) {
            double loudest = 0;
            for (int part = 0; part < 10; ++part) {
                FrameHandle frame;
                if (!mix_->Read(frame)) return tenths;
                EXPECT_EQ(frame->sample_rate, kMixedRate);
                EXPECT_EQ(frame->ch_layout.nb_channels, 2);
                EXPECT_LE(std::abs(frame->pts - reached_.value_or(frame->pts)), 1);
                reached_ = frame->pts + frame->nb_samples * Ticks::kPerSecond / kMixedRate;
                const auto* samples = reinterpret_cast<const float*>(frame->data[0]);
                for (int s = 0; s < 2 * frame->nb_samples; ++s)
                    loudest = std::max(loudest, std::abs(double{samples[s]}));
            }
            tenths.push_back(std::round(100 * loudest) / 100);
        }
        return tenths;
    }

    FramePool frames_;
    std::shared_ptr<Script> microphone_ = std::make_shared<Script>();
    std::shared_ptr<Script> desktop_ = std::make_shared<Script>();
    std::unique_ptr<MixedAudio> mix_;
    std::optional<std::int64_t> reached_;
};

using Levels = std::vector<double>;

TEST_F(Mix, IsTheSumAtEachMoment) {
    for (int tenth = 0; tenth < 8; ++tenth) {
        microphone_->Tone(1000 + 100 * tenth, tenth % 2 == 0 ? 0.25 : 0);
        desktop_->Tone(1000 + 100 * tenth, tenth % 4 < 2 ? 0.5 : 0);
    }
    Open();
    EXPECT_EQ(Tenths(6), (Levels{0.75, 0.5, 0.25, 0, 0.75, 0.5}));
}

TEST_F(Mix, IsCutAtFullScale) {
    for (int tenth = 0; tenth < 4; ++tenth) {
        microphone_->Tone(100 * tenth, 0.9);
        desktop_->Tone(100 * tenth, 0.8);
    }
    Open();
    EXPECT_EQ(Tenths(2), (Levels{1, 1}));
}

TEST_F(Mix, GoesOnWithoutADeviceThatGivesNothing) {
    for (int tenth = 0; tenth < 15; ++tenth) microphone_->Tone(100 * tenth, 0.25);
    Open();
    EXPECT_EQ(Tenths(2), (Levels{0.25, 0.25}));
    for (int tenth = 15; tenth < 30; ++tenth) microphone_->Tone(100 * tenth, 0.25);
    for (int tenth = 0; tenth < 30; ++tenth) desktop_->Tone(100 * tenth, 0.5);
    Levels last;
    while (last != Levels{0.75}) last = Tenths(1);
}

TEST_F(Mix, FailsWithTheDeviceThatFails) {
    microphone_->Tone(0, 0.25);
    microphone_->Tone(100, 0.25);
    desktop_->Tone(0, 0.5);
    desktop_->Tone(100, 0.5);
    Open();
    microphone_->WaitUntilTaken();
    desktop_->WaitUntilTaken();
    desktop_->Fail({platform::kDeviceNotConnected, "the boxes are gone"});
    const platform::Error error = test_support::ErrorOf([&] { Tenths(100); });
    EXPECT_EQ(error.description(), "the boxes are gone");
    EXPECT_TRUE(reached_) << "what came before is given first";
}

TEST_F(Mix, EndsAReadThatWaits) {
    Open();
    std::thread waker([this] {
        desktop_->WaitUntilTaken();
        mix_->Wake();
    });
    FrameHandle frame;
    EXPECT_FALSE(mix_->Read(frame));
    waker.join();
    mix_.reset();
    EXPECT_EQ(microphone_->open_devices + desktop_->open_devices, 0);
}

}  // namespace
