// Workers side by side when something goes wrong.
#include "engine/encoders/gop_video_encoder.h"

#include <atomic>
#include <future>

#include "engine/encoders/video_header.h"
#include "engine/encoders/video_rate.h"
#include "platform/codec_table.h"
#include "support/error_of.h"

namespace {

using namespace engine;

// Two workers that fail one after the other: the second once the first one's failure is noted.
struct TwoFailures {
    std::atomic<int> made{0};
    std::promise<void> second_at_work, first_noted, second_noted;
};

class FailingCoder : public GopCoder {
  public:
    explicit FailingCoder(TwoFailures& failures)
        : failures_(failures), is_first_(failures.made++ == 0) {}
    // With the worker's last look at its GOP, behind the note of why it ends.
    ~FailingCoder() override {
        (is_first_ ? failures_.first_noted : failures_.second_noted).set_value();
    }
    CodedPicture Encode(AVFrame& /*frame*/, const PictureRequest& /*request*/) override {
        if (is_first_) {
            failures_.second_at_work.get_future().wait();
            throw platform::Error(platform::kUnspecified, "the first failure");
        }
        failures_.second_at_work.set_value();
        failures_.first_noted.get_future().wait();
        throw platform::Error(platform::kUnspecified, "what follows from it");
    }

  private:
    TwoFailures& failures_;
    const bool is_first_;
};

VideoPlan TwoWorkers() {
    VideoPlan plan;
    for (const platform::VideoCodecRow& row : platform::kVideoCodecs)
        if (row.name == "Windows Media Video 8") plan.codec = &row;
    plan.mode = platform::VbrMode::Quality;  // one quantiser: nothing is coded on trial
    plan.width = plan.height = 32;
    plan.expected_rate = 10'000;
    plan.key_frame_distance_ms = 300;
    plan.encoder_threads = 2;
    return plan;
}

TEST(GopVideoEncoder, TheFirstFailureIsTheOneThatIsSaid) {
    TwoFailures failures;
    const VideoPlan plan = TwoWorkers();
    const EncoderPass pass;
    GopVideoEncoder encoder(
        plan, VideoRate(plan, pass), pass, {AV_PIX_FMT_YUV420P, plan.width, plan.height},
        VideoStreamHeader(plan),
        [&](double /*vbv_room_bits*/) { return std::make_unique<FailingCoder>(failures); });
    const CodedFrameSink sink = [](const CodedFrame& /*frame*/) { return true; };
    FramePool frames;
    try {
        for (int i = 0; i < 6; ++i) {
            FrameHandle frame = frames.Get();
            frame->format = AV_PIX_FMT_YUV420P;
            frame->width = plan.width;
            frame->height = plan.height;
            ASSERT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
            frame->pts = Ticks::FromMilliseconds(100 * i).count;
            frame->pkt_duration = Ticks::FromMilliseconds(100).count;
            encoder.Encode(*frame, sink);
        }
        encoder.Finish(sink);
    } catch (const platform::Error& error) {
        EXPECT_EQ(error.description(), "the first failure");
    }
    failures.second_noted.get_future().wait();
    EXPECT_EQ(test_support::ErrorOf([&] { encoder.Finish(sink); }).description(),
              "the first failure");
}

}  // namespace
