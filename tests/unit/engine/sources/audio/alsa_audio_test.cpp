// Sound captured from ALSA devices that need no sound card.
#include "engine/sources/audio/alsa_audio.h"

#include <cstring>
#include <fstream>

#include "support/error_of.h"
#include "support/pulse_server.h"
#include "unit/engine/sources/audio/reading.h"

namespace engine {
namespace {

using test_support::PulseServer;
using test_support::TempFolder;
using testing::HasSubstr;

// ALSA's configuration is the test's: what is recorded comes from a file.
class AlsaAudioSource : public testing::Test {
  protected:
    AlsaAudioSource() {
        for (std::size_t i = 0; i < samples_.size(); ++i)
            samples_[i] = static_cast<std::int16_t>(i % 16384 + 1);
        std::ofstream(folder_ / "ramp.raw", std::ios::binary)
            .write(reinterpret_cast<const char*>(samples_.data()),
                   static_cast<std::streamsize>(samples_.size() * sizeof(std::int16_t)));
        std::ofstream(folder_ / "asound.conf")
            << "pcm.silence { type null }\n"
            << "pcm.ramp { type file slave.pcm silence file /dev/null infile "
            << folder_ / "ramp.raw"
            << " format raw }\n"
            << "pcm.telephone { type mulaw slave { pcm silence format S16_LE } }\n"
            << "pcm.plug { @args [ SLAVE ] @args.SLAVE { type string } type plug slave.pcm $SLAVE "
               "}\n"
            << "pcm.mic { type pulse device mic }\n"
            << "pcm.gone { type hw card 31 }\n";
        setenv("ALSA_CONFIG_PATH", (folder_ / "asound.conf").c_str(), 1);
    }
    ~AlsaAudioSource() override {
        unsetenv("ALSA_CONFIG_PATH");
        unsetenv("PULSE_SERVER");
    }

    const TempFolder folder_;
    std::vector<std::int16_t> samples_ = std::vector<std::int16_t>(96000);
    FramePool frames_;
};

TEST_F(AlsaAudioSource, GivesTheSamplesInOrder) {
    const auto source = OpenAlsaAudio("ramp", frames_);
    std::vector<std::int16_t> captured;
    FrameHandle frame;
    std::int64_t last_pts = 0;
    while (captured.size() < samples_.size() / 2) {
        ASSERT_TRUE(source->Read(frame));
        ASSERT_EQ(frame->format, AV_SAMPLE_FMT_S16);
        ASSERT_EQ(frame->sample_rate, 48000);
        ASSERT_EQ(frame->ch_layout.nb_channels, 2);
        ASSERT_GE(frame->pts, last_pts);
        last_pts = frame->pts;
        const std::size_t before = captured.size();
        const auto count = static_cast<std::size_t>(frame->nb_samples) * 2;
        captured.resize(before + count);
        std::memcpy(&captured[before], frame->data[0], count * sizeof(std::int16_t));
    }
    captured.resize(samples_.size() / 2);
    EXPECT_TRUE(std::equal(captured.begin(), captured.end(), samples_.begin()));
}

TEST_F(AlsaAudioSource, AFormatThatFramesLackIsConverted) {
    FrameHandle frame;
    ASSERT_TRUE(OpenAlsaAudio("telephone", frames_)->Read(frame));
    EXPECT_EQ(frame->format, AV_SAMPLE_FMT_S16);
}

TEST_F(AlsaAudioSource, WhatCannotBeOpenedIsNamed) {
    for (const std::string device : {"gone", "unheard_of"})
        EXPECT_THAT(test_support::ErrorOf([&] { OpenAlsaAudio(device, frames_); }).description(),
                    HasSubstr("the sound device " + device + ": there is no such device now"));
}

TEST_F(AlsaAudioSource, WakeEndsAReadThatWaits) {
    // Nobody writes to the pipe, so no sound ever comes.
    const PulseServer server(folder_, "load-module module-pipe-source source_name=mic file=" +
                                          (folder_ / "mic.pipe") + "\n");
    ASSERT_TRUE(server.Runs()) << "pulseaudio is needed, see packages.txt";
    setenv("PULSE_SERVER", server.Address().c_str(), 1);
    test_support::ExpectWakeToEndReading(*OpenAlsaAudio("mic", frames_));
}

}  // namespace
}  // namespace engine
