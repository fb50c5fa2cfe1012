// Sound captured from servers that the test starts.
#include "engine/sources/audio/pulse_audio.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <random>
#include <span>

#include "engine/sources/audio/pulse_meter.h"
#include "platform/text.h"
#include "support/beep_player.h"
#include "support/error_of.h"
#include "support/pulse_server.h"
#include "unit/engine/sources/audio/reading.h"

namespace engine {
namespace {

using test_support::BackgroundCommand;
using test_support::ErrorOf;
using test_support::PulseServer;
using test_support::TempFolder;
using testing::HasSubstr;

// What times may jump by while a busy machine keeps the server or the test waiting.
constexpr Ticks kJitter = Ticks::FromMilliseconds(20);

constexpr const char* kNoServer = "pulseaudio is needed, see packages.txt";

// A server, which the captures of this process then talk to.
class PulseAudioSource : public testing::Test {
  protected:
    void Serve(const std::string& commands) {
        server_.emplace(folder_, commands);
        ASSERT_TRUE(server_->Runs()) << kNoServer;
        setenv("PULSE_SERVER", server_->Address().c_str(), 1);
    }
    ~PulseAudioSource() override { unsetenv("PULSE_SERVER"); }

    const TempFolder folder_;
    std::optional<PulseServer> server_;
    FramePool frames_;
};

std::string NullSink(const std::string& arguments = "") {
    return "load-module module-null-sink sink_name=n1 sink_properties=device.description=Hall " +
           arguments + "\n";
}

struct FormatCase {
    const char* why;
    const char* sink;
    AVSampleFormat format;
    int sampling_rate;
    std::vector<int> order;  // which of the player's channels each channel of a frame is
    std::uint64_t mask;
};

// clang-format off
const FormatCase kFormatCases[] = {
    {"what most sound cards are", "format=s16le rate=48000 channels=2", AV_SAMPLE_FMT_S16, 48000, {0, 1}, AV_CH_LAYOUT_STEREO},
    {"finer samples, one channel", "format=float32le rate=44100 channels=1", AV_SAMPLE_FMT_FLT, 44100, {0}, AV_CH_LAYOUT_MONO},
    {"the server orders six channels otherwise than FFmpeg",
     "format=s16le rate=48000 channels=6 channel_map=front-left,front-right,rear-left,rear-right,front-center,lfe",
     AV_SAMPLE_FMT_S16, 48000, {0, 1, 4, 5, 2, 3}, AV_CH_LAYOUT_5POINT1_BACK},
    {"channels without a place", "format=s16le rate=32000 channels=3 channel_map=aux0,aux1,aux2",
     AV_SAMPLE_FMT_S16, 32000, {0, 1, 2}, AV_CH_LAYOUT_2POINT1},
};
// clang-format on

// Noise that is never 0, as 16-bit numbers.
std::vector<std::int16_t> Noise(std::size_t count) {
    std::mt19937 random(4);
    std::uniform_int_distribution<int> values(1, 20000);
    std::vector<std::int16_t> noise(count);
    for (std::int16_t& each : noise) each = static_cast<std::int16_t>(values(random));
    return noise;
}

std::vector<std::int16_t> Samples(const AVFrame& frame) {
    const auto count = static_cast<std::size_t>(frame.nb_samples * frame.ch_layout.nb_channels);
    std::vector<std::int16_t> samples(count);
    if (frame.format == AV_SAMPLE_FMT_S16) {
        std::memcpy(samples.data(), frame.data[0], count * sizeof(std::int16_t));
        return samples;
    }
    std::vector<float> fine(count);
    std::memcpy(fine.data(), frame.data[0], count * sizeof(float));
    std::transform(fine.begin(), fine.end(), samples.begin(),
                   [](float value) { return static_cast<std::int16_t>(value * 32768); });
    return samples;
}

template <typename Sample>
void WriteFile(const std::string& path, const std::vector<Sample>& samples) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * sizeof(Sample)));
}

TEST_F(PulseAudioSource, GivesEverySampleAsItWasPlayed) {
    for (const FormatCase& each : kFormatCases) {
        SCOPED_TRACE(each.why);
        Serve(NullSink(each.sink));
        const std::size_t channels = each.order.size();
        const std::vector<std::int16_t> played =
            Noise(channels * static_cast<std::size_t>(each.sampling_rate));
        // The server may cut what it mixes in at the start, so that is silence.
        std::vector<std::int16_t> led_in(played.size() / 10);
        led_in.insert(led_in.end(), played.begin(), played.end());
        const std::string file = folder_ / "noise.raw";
        if (each.format == AV_SAMPLE_FMT_S16) {
            WriteFile(file, led_in);
        } else {
            std::vector<float> fine(led_in.size());
            std::transform(led_in.begin(), led_in.end(), fine.begin(),
                           [](std::int16_t value) { return static_cast<float>(value) / 32768; });
            WriteFile(file, fine);
        }

        const auto source = OpenPulseAudio("n1.monitor", frames_);
        FrameHandle frame;
        ASSERT_TRUE(source->Read(frame));  // before that, the server may hold sound back
        const TempFolder player_folder;
        std::vector<std::string> words = {"pacat", "--raw", "--server=" + server_->Address(),
                                          "--device=n1"};
        for (std::string word : platform::Split(each.sink, ' ')) {
            std::ranges::replace(word, '_', '-');
            words.push_back("--" + word);
        }
        words.push_back(file);
        const BackgroundCommand player(words, player_folder.path());

        std::vector<std::int16_t> captured;
        while (captured.size() < played.size()) {
            ASSERT_TRUE(source->Read(frame));
            ASSERT_EQ(frame->format, each.format);
            ASSERT_EQ(frame->sample_rate, each.sampling_rate);
            ASSERT_EQ(frame->ch_layout.u.mask, each.mask);
            const std::vector<std::int16_t> samples = Samples(*frame);
            auto from = samples.begin();
            if (captured.empty())
                from = std::find_if(from, samples.end(), [](auto value) { return value != 0; });
            captured.insert(captured.end(), from, samples.end());
        }
        std::vector<std::int16_t> expected;
        for (std::size_t i = 0; i < played.size(); i += channels)
            for (const int channel : each.order)
                expected.push_back(played[i + static_cast<std::size_t>(channel)]);
        captured.resize(expected.size());
        EXPECT_EQ(std::mismatch(captured.begin(), captured.end(), expected.begin()).first -
                      captured.begin(),
                  static_cast<std::ptrdiff_t>(expected.size()))
            << "the first sample that differs";
    }
}

TEST_F(PulseAudioSource, AMeterHearsWhatIsPlayedUntilItIsWoken) {
    Serve(NullSink("format=s16le rate=48000 channels=1") +
          "load-module module-null-sink sink_name=n2\n");
    PulseMeter meter({"n1.monitor", "n2.monitor"});
    bool went_on = false;
    std::thread listening([&] { went_on = meter.Run(); });
    {
        const test_support::BeepPlayer player(server_->Address(), "n1", 10);
        std::vector<double> peaks = meter.TakePeaks();
        while (peaks.at(0) < 0.1) {
            ASSERT_EQ(peaks.at(1), 0) << "nothing is played there";
            std::this_thread::yield();
            peaks = meter.TakePeaks();
        }
        EXPECT_LE(peaks.at(0), 1);
    }
    meter.Wake();
    listening.join();
    EXPECT_TRUE(went_on);
    EXPECT_FALSE(PulseMeter({"n3.monitor"}).Run()) << "there is none of that name";
}

TEST_F(PulseAudioSource, TimesAreThoseAtWhichTheSoundIsHeard) {
    Serve(NullSink("format=s16le rate=48000 channels=1"));
    const auto source = OpenPulseAudio("n1.monitor", frames_);
    const test_support::BeepPlayer player(server_->Address(), "n1", 30);
    constexpr std::size_t kBeeps = 20;
    std::vector<double> onsets;
    FrameHandle frame;
    bool in_beep = false;
    std::optional<Ticks> due;
    std::vector<std::int64_t> steps;
    while (onsets.size() < kBeeps) {
        ASSERT_TRUE(source->Read(frame));
        const Ticks pts{frame->pts};
        if (due) {
            steps.push_back(std::abs((pts - *due).count));
            ASSERT_LT(steps.back(), kJitter.count);
        }
        due = pts + Ticks{frame->nb_samples * Ticks::kPerSecond / frame->sample_rate};
        const std::vector<std::int16_t> samples = Samples(*frame);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const bool beeps = samples[i] != 0;
            if (beeps && !in_beep)
                onsets.push_back(pts.Seconds() + static_cast<double>(i) / frame->sample_rate);
            in_beep = beeps;
        }
    }
    // Most frames follow each other to the hundredth of a millisecond.
    std::nth_element(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2),
                     steps.end());
    EXPECT_LT(steps[steps.size() / 2], Ticks::kPerMillisecond / 100);
    const std::vector<double> heard = player.Heard();
    ASSERT_GE(heard.size(), kBeeps);
    std::vector<double> errors;
    for (std::size_t i = 0; i < kBeeps; ++i) errors.push_back(std::abs(onsets[i] - heard[i]));
    // A machine that is busy may keep the player waiting between the question and the note.
    std::nth_element(errors.begin(), errors.begin() + kBeeps / 2, errors.end());
    EXPECT_LT(errors[kBeeps / 2], 0.015);
}

TEST_F(PulseAudioSource, TheDefaultIsWhatTheServerCallsSo) {
    Serve(NullSink("rate=22050") +
          "load-module module-null-sink sink_name=n2 rate=32000\nset-default-source n1.monitor\n");
    FrameHandle frame;
    ASSERT_TRUE(OpenPulseAudio("", frames_)->Read(frame));
    EXPECT_EQ(frame->sample_rate, 22050);
}

TEST_F(PulseAudioSource, ADeviceThatGoesIsNamedWithWhatHappened) {
    struct Case {
        const char* why;
        std::function<void(PulseServer&)> go;
        const char* reason;
    };
    const Case cases[] = {
        {"unplugged while another is there to go on with",
         [](PulseServer& server) {
             server.Control({"unload-module", "module-null-sink"});
         },
         "it was removed, or the sound server took it away"},
        {"the server crashes", [](PulseServer& server) { server.Kill(); },
         "the sound server ended or closed the connection"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.why);
        Serve(NullSink() + "load-module module-pipe-source file=" + (folder_ / "mic.pipe") + "\n");
        const auto source = OpenPulseAudio("n1.monitor", frames_);
        FrameHandle frame;
        ASSERT_TRUE(source->Read(frame));
        each.go(*server_);
        const auto read_on = [&] {
            while (source->Read(frame)) {
            }
        };
        const std::string expected =
            "The sound device Monitor of Hall cannot be recorded any more: " +
            std::string(each.reason) + ".";
        EXPECT_EQ(ErrorOf(read_on).description(), expected);
        EXPECT_EQ(ErrorOf(read_on).description(), expected) << "it stays gone";
    }
}

TEST_F(PulseAudioSource, WhatCannotBeOpenedIsNamed) {
    setenv("PULSE_SERVER", "unix:/nonexistent", 1);
    EXPECT_THAT(ErrorOf([&] { OpenPulseAudio("", frames_); }).description(),
                HasSubstr("the sound device that is the default: the sound server cannot be "
                          "reached (Connection refused)"));
    Serve(NullSink());
    EXPECT_THAT(ErrorOf([&] { OpenPulseAudio("mic", frames_); }).description(),
                HasSubstr("the sound device mic: there is no such device now"));
}

TEST_F(PulseAudioSource, WakeEndsAReadThatWaits) {
    // Nobody writes to the pipe, so no sound ever comes.
    Serve("load-module module-pipe-source source_name=mic file=" + (folder_ / "mic.pipe") + "\n");
    test_support::ExpectWakeToEndReading(*OpenPulseAudio("mic", frames_));
}

TEST_F(PulseAudioSource, ASuspendedSourceGivesSilenceInTime) {
    Serve(NullSink("rate=48000"));
    const auto source = OpenPulseAudio("n1.monitor", frames_);
    FrameHandle frame;
    ASSERT_TRUE(source->Read(frame));
    const auto read_for = [&](std::int64_t ms) {
        const std::int64_t end = frame->pts + Ticks::FromMilliseconds(ms).count;
        std::int64_t due = frame->pts;
        std::int64_t longest_gap = 0;
        while (frame->pts < end) {
            ASSERT_GE(frame->pts, due - kJitter.count) << "sound that overlaps";
            longest_gap = std::max(longest_gap, frame->pts - due);
            due = frame->pts + frame->nb_samples * Ticks::kPerSecond / frame->sample_rate;
            ASSERT_TRUE(source->Read(frame));
        }
        EXPECT_LT(Ticks{longest_gap}.Seconds(), 0.2);
    };
    read_for(200);
    ASSERT_EQ(server_->Control({"suspend-sink", "n1", "1"}).status, 0);
    read_for(500);
    ASSERT_EQ(server_->Control({"suspend-sink", "n1", "0"}).status, 0);
    read_for(500);
    EXPECT_LT(std::abs((CaptureNow() - Ticks{frame->pts}).Seconds()), 1);
}

}  // namespace
}  // namespace engine
