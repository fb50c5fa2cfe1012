// Workers side by side: what they hold, and when something goes wrong.
#include "engine/encoders/gop_video_encoder.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>

#include "engine/base/av/av_error.h"
#include "engine/encoders/video_header.h"
#include "engine/encoders/video_rate.h"
#include "platform/codec_table.h"
#include "support/error_of.h"
#include "support/row_name.h"

namespace {

using namespace engine;
using platform::VbrMode;

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
    plan.mode = VbrMode::Quality;  // one quantiser: nothing is coded on trial
    plan.width = plan.height = 32;
    plan.expected_rate = 10'000;
    plan.key_frame_distance_ms = 300;
    plan.encoder_threads = 2;
    return plan;
}

FrameHandle NewFrame(FramePool& frames, const VideoPlan& plan) {
    FrameHandle frame = frames.Get();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = plan.width;
    frame->height = plan.height;
    CheckAv(av_frame_get_buffer(frame.get(), 0), "no frame");
    for (const AVBufferRef* buffer : frame->buf)
        if (buffer != nullptr) std::fill_n(buffer->data, buffer->size, 0x80);
    return frame;
}

// Codes nothing before as many frames have come as two workers are to get.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    int fed = 0;
    int coded = 0;
    int most = 0;  // held at once
    int least = 0;

    void Feed() {
        const std::lock_guard lock(mutex);
        most = std::max(most, ++fed - coded);
        changed.notify_all();
    }
    void Code() {
        std::unique_lock lock(mutex);
        if (fed == 1) return;  // the first one is tried before workers get it
        changed.wait(lock, [this] { return fed >= least; });
        ++coded;
    }
};

class GatedCoder : public GopCoder {
  public:
    GatedCoder(Gate& gate, CodedFramePool& packets) : gate_(gate), packets_(packets) {}
    CodedPicture Encode(AVFrame& /*frame*/, const PictureRequest& request) override {
        gate_.Code();
        const std::uint8_t byte = 0;
        return {packets_.Copy({&byte, 1}), request.kind == codecs::PictureKind::kI, {}};
    }

  private:
    Gate& gate_;
    CodedFramePool& packets_;
};

struct MemoryCase {
    const char* why;
    int width, height;
    int gop;          // frames
    int least_ahead;  // frames, so that the second worker has something to do
    int most_mib;     // of all frames that wait or are coded
};

// clang-format off
const MemoryCase kMemoryCases[] = {
    // why                       size          GOP  least  MiB
    {"television",               768,  576,    100, 25,    18},
    {"high definition",          1920, 1080,   60,  10,    33},
    {"one worker",               3840, 2160,   60,  0,     72},
};
// clang-format on

class FramesHeld : public testing::TestWithParam<MemoryCase> {};
INSTANTIATE_TEST_SUITE_P(Sizes, FramesHeld, testing::ValuesIn(kMemoryCases),
                         test_support::NameOfRow());

// However slow the workers are, and however fast frames come.
TEST_P(FramesHeld, AreBoundedInBytes) {
    const MemoryCase& row = GetParam();
    VideoPlan plan = TwoWorkers();
    plan.mode = VbrMode::Constant;
    plan.bit_rate_bps = 1'000'000;
    plan.width = row.width;
    plan.height = row.height;
    plan.key_frame_distance_ms = row.gop * 100;
    Gate gate;
    gate.least = row.least_ahead;
    CodedFramePool packets;
    EncoderPass pass;
    GopVideoEncoder encoder(
        plan, VideoRate(plan, pass), pass, {AV_PIX_FMT_YUV420P, plan.width, plan.height},
        VideoStreamHeader(plan),
        [&](double /*vbv_room_bits*/) { return std::make_unique<GatedCoder>(gate, packets); });
    const CodedFrameSink sink = [](const CodedFrame& /*frame*/) { return true; };
    FramePool frames;
    const FrameHandle samples = NewFrame(frames, plan);
    for (int i = 0; i < 3 * row.gop; ++i) {
        FrameHandle frame = frames.Get();
        ASSERT_EQ(av_frame_ref(frame.get(), samples.get()), 0);
        frame->pts = Ticks::FromMilliseconds(100 * i).count;
        frame->pkt_duration = Ticks::FromMilliseconds(100).count;
        gate.Feed();
        encoder.Encode(*frame, sink);
    }
    encoder.Finish(sink);
    EXPECT_LE(gate.most * (row.width * row.height * 3 / 2 >> 10) >> 10, row.most_mib);
}

// Pictures of the stream that the coder was shown by the time each was coded.
class ShownCoder : public GopCoder {
  public:
    ShownCoder(std::vector<int>& shown, CodedFramePool& packets)
        : shown_(shown), packets_(packets) {}
    std::optional<double> LookAhead(const AVFrame& /*frame*/) override {
        ++count_;
        return {};
    }
    CodedPicture Encode(AVFrame& /*frame*/, const PictureRequest& request) override {
        shown_.push_back(count_);
        const std::uint8_t byte = 0;
        return {packets_.Copy({&byte, 1}), request.kind == codecs::PictureKind::kI, {}};
    }

  private:
    std::vector<int>& shown_;
    CodedFramePool& packets_;
    int count_ = 0;
};

TEST(GopVideoEncoder, ACoderIsShownWhatComesButForWhatIsRecorded) {
    for (const bool capture : {false, true}) {
        SCOPED_TRACE(capture ? "recorded" : "a file");
        VideoPlan plan = TwoWorkers();
        plan.encoder_threads = 1;
        plan.key_frame_distance_ms = 1000;
        if (capture) plan.input.capture.emplace();
        std::vector<int> shown;
        CodedFramePool packets;
        const EncoderPass pass;
        GopVideoEncoder encoder(
            plan, VideoRate(plan, pass), pass, {AV_PIX_FMT_YUV420P, plan.width, plan.height},
            VideoStreamHeader(plan),
            [&](double /*vbv_room_bits*/) { return std::make_unique<ShownCoder>(shown, packets); },
            0, 2);
        const CodedFrameSink sink = [](const CodedFrame& /*frame*/) { return true; };
        FramePool frames;
        for (int i = 0; i < 5; ++i) {
            const FrameHandle frame = NewFrame(frames, plan);
            frame->pts = Ticks::FromMilliseconds(100 * i).count;
            frame->pkt_duration = Ticks::FromMilliseconds(100).count;
            encoder.Encode(*frame, sink);
        }
        encoder.Finish(sink);
        EXPECT_EQ(shown, capture ? std::vector<int>(5, 0) : std::vector<int>({3, 4, 5, 5, 5}));
    }
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
            const FrameHandle frame = NewFrame(frames, plan);
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
