#include <cmath>

#include "engine/base/av/av_ptr.h"
#include "engine/encoders/make_encoder.h"
#include "engine/plan/written_audio.h"

namespace engine {
namespace {

using platform::VbrMode;

struct TimesCase {
    const char* why;
    const char* codec;
    VbrMode mode;
    AudioFormat format;
    bool recorded;
};

// clang-format off
const TimesCase kCases[] = {
    // why                  codec      mode               format                     recorded
    {"large packets",       "WMA9STD", VbrMode::Constant, {64000, 44100, 2, 16},     false},
    {"the longest frames",  "WMA9STD", VbrMode::Constant, {5000, 8000, 1, 16},       false},
    {"recorded",            "WMA9STD", VbrMode::Constant, {128000, 44100, 2, 16},    true},
    {"any number of bits",  "WMA9STD", VbrMode::Quality,  {98, 44100, 2, 16},        false},
    {"lossless",            "WMA9LSL", VbrMode::Quality,  {100, 44100, 2, 16},       false},
    {"voice",               "WMSP9",   VbrMode::Constant, {12000, 16000, 1, 16},     false},
    {"voice, recorded",     "WMSP9",   VbrMode::Constant, {20000, 22050, 1, 16},     true},
};
// clang-format on

// Two seconds, of which the first is silent.
template <typename Use>
void ForEachFrame(const AudioFrameFormat& format, const Use& use) {
    const AvPtr<AVFrame> frame(CheckAllocated(av_frame_alloc()));
    frame->format = format.samples;
    frame->nb_samples = format.frame_samples;
    frame->sample_rate = format.sampling_rate;
    av_channel_layout_default(&frame->ch_layout, format.channels);
    ASSERT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (int first = 0; first < 2 * format.sampling_rate; first += frame->nb_samples) {
        av_samples_set_silence(frame->extended_data, 0, frame->nb_samples, format.channels,
                               format.samples);
        if (first > format.sampling_rate)
            for (std::size_t i = 0; i < static_cast<std::size_t>(frame->linesize[0]); i += 61)
                frame->extended_data[0][i] = static_cast<std::uint8_t>(i % 50);
        use(*frame);
    }
}

// Players and servers take two packets of one time for one.
TEST(AudioTimes, RiseByMillisecondsAndStayWithTheSamples) {
    for (const TimesCase& each : kCases) {
        SCOPED_TRACE(each.why);
        AudioPlan plan;
        plan.codec = platform::FindAudioCodec(each.codec);
        plan.mode = each.mode;
        plan.format = each.format;
        plan.written = WrittenFor(*plan.codec, each.mode, each.format);
        if (each.recorded) plan.input.capture.emplace();
        CodedFramePool packets;
        const auto encoder = MakeAudioEncoder(plan, {}, packets);
        std::int64_t last_ms = -1;
        std::int64_t samples = 0;
        const CodedFrameSink sink = [&](CodedFrame coded) {
            const std::int64_t ms = coded.pts.Milliseconds();
            EXPECT_GT(ms, last_ms);
            EXPECT_GE(coded.duration, Ticks());
            const double of_samples =
                1000.0 * static_cast<double>(samples) / each.format.sampling_rate;
            EXPECT_NEAR(static_cast<double>(ms), of_samples, 2);
            last_ms = ms;
            samples += coded.audio_samples;
            return true;
        };
        ForEachFrame(encoder->Format(), [&](AVFrame& frame) { encoder->Encode(frame, sink); });
        encoder->Finish(sink);
        EXPECT_GT(last_ms, 1000);
    }
}

}  // namespace
}  // namespace engine
