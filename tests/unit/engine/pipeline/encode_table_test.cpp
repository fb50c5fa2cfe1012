// Every encoder in every rate-control mode: what is written decodes without a word, has the asked
// shape, length and rate, and is counted as it is.
#include <algorithm>
#include <cmath>
#include <sstream>

#include "support/row_name.h"
#include "unit/engine/pipeline/encode_table.h"

namespace {

using namespace engine;
using platform::EncoderState;
using platform::VbrMode;

struct VideoCase {
    const char* why;
    const char* encoder;
    VbrMode mode;
    int passes;
    int bit_rate;
    int width, height;
    int fps;
    double within;  // of the rate; 0 = the mode holds none
    int frames;
};

// clang-format off
const VideoCase kVideoCases[] = {
    // why                                  encoder    mode              passes rate     size      fps    within frames
    {"wmv1 constant rate",                   "wmv1",    VbrMode::Constant, 1,   500'000, 320, 240, 30000, 0.10,  150},
    {"wmv2 constant rate",                   "wmv2",    VbrMode::Constant, 1,   500'000, 320, 240, 30000, 0.10,  150},
    {"wmv3 constant rate",                   "wmv3",    VbrMode::Constant, 1,   500'000, 320, 240, 30000, 0.10,  150},
    {"mpeg4 constant rate",                  "mpeg4",   VbrMode::Constant, 1,   500'000, 320, 240, 30000, 0.10,  150},
    {"wmv1 two passes",                      "wmv1",    VbrMode::Constant, 2,   400'000, 320, 240, 30000, 0.05,  150},
    {"wmv2 two passes",                      "wmv2",    VbrMode::Constant, 2,   400'000, 320, 240, 30000, 0.05,  150},
    {"wmv3 two passes",                      "wmv3",    VbrMode::Constant, 2,   400'000, 320, 240, 30000, 0.02,  150},
    {"mpeg4 two passes",                     "mpeg4",   VbrMode::Constant, 2,   400'000, 320, 240, 30000, 0.05,  150},
    {"wmv1 quality",                         "wmv1",    VbrMode::Quality,  1,   0,       320, 240, 30000, 0,     150},
    {"wmv2 quality",                         "wmv2",    VbrMode::Quality,  1,   0,       320, 240, 30000, 0,     150},
    {"wmv3 quality",                         "wmv3",    VbrMode::Quality,  1,   0,       320, 240, 30000, 0,     150},
    {"mpeg4 quality",                        "mpeg4",   VbrMode::Quality,  1,   0,       320, 240, 30000, 0,     150},
    {"wmv2 bit-rate VBR in one pass",        "wmv2",    VbrMode::BitRate,  1,   500'000, 320, 240, 30000, 0.10,  150},
    {"wmv3 bit-rate VBR in two",             "wmv3",    VbrMode::BitRate,  2,   500'000, 320, 240, 30000, 0.02,  150},
    {"wmv2 bit-rate VBR in two",             "wmv2",    VbrMode::BitRate,  2,   500'000, 320, 240, 30000, 0.05,  150},
    {"wmv2 peak VBR",                        "wmv2",    VbrMode::Peak,     1,   500'000, 320, 240, 30000, 0.10,  150},
    {"wmv3 peak VBR in two passes",          "wmv3",    VbrMode::Peak,     2,   500'000, 320, 240, 30000, 0.02,  150},
    {"mpeg4 peak VBR in two passes",         "mpeg4",   VbrMode::Peak,     2,   500'000, 320, 240, 30000, 0.05,  150},
    {"raw uncompressed, rows padded",        "rawvideo", VbrMode::Constant, 1,   0,       161, 59,  30000, 0,     150},
    {"wmv2 odd height, other shape",         "wmv2",    VbrMode::Constant, 1,   200'000, 162, 121, 30000, 0.10,  150},
    {"mpeg4 odd width where it is possible", "mpeg4",   VbrMode::Constant, 1,   200'000, 161, 121, 30000, 0.10,  150},
    {"wmv2 frames above the ceiling go",     "wmv2",    VbrMode::Constant, 1,   300'000, 320, 240, 10000, 0.10,   60},
    {"wmv2 uneven part of the rate",         "wmv2",    VbrMode::Constant, 1,   300'000, 320, 240, 15000, 0.10,   90},
};
// clang-format on

class VideoTable : public EncodeTable, public testing::WithParamInterface<VideoCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, VideoTable, testing::ValuesIn(kVideoCases),
                         test_support::NameOfRow());

TEST_P(VideoTable, IsWrittenAsAskedAndCounted) {
    const VideoCase& row = GetParam();
    EncodePlan plan = session::Plan(folder_->Path("out.wmv"));
    plan.passes = row.passes;
    VideoPlan video = session::Video(source_);
    video.codec = &session::VideoCodec(row.encoder);
    video.mode = row.mode;
    video.width = row.width;
    video.height = row.height;
    video.rate_ceiling = row.fps;
    video.expected_rate = std::min(row.fps, 25000);
    video.bit_rate_bps = row.bit_rate;
    video.performance = 20;
    video.peak_rate_bps = row.bit_rate * 2;
    video.peak_buffer_ms = 2000;
    plan.video = video;

    const session::Outcome outcome = session::RunCleanly(plan);
    EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
    const clips::Contents contents = clips::Decode(plan.FilePath());
    EXPECT_EQ(contents.width, row.width);
    EXPECT_EQ(contents.height, row.height);
    EXPECT_EQ(contents.video_codec, row.encoder);
    ASSERT_EQ(contents.frames.size(), static_cast<std::size_t>(row.frames));
    EXPECT_EQ(outcome.video.sample_count.Raw(), row.frames);
    const double frame = 1000.0 / std::min(row.fps, 25000);
    EXPECT_NEAR(contents.duration, kSeconds, frame);
    EXPECT_NEAR(contents.frames.back().time, kSeconds - frame, frame / 2);
    if (row.within > 0) {
        const double rate = static_cast<double>(outcome.video.byte_count.Raw()) * 8 / kSeconds;
        EXPECT_NEAR(rate, row.bit_rate, row.bit_rate * row.within);
        EXPECT_EQ(outcome.video.expected_bit_rate_bps, row.bit_rate);
    }
    EXPECT_NEAR(outcome.video.average_sample_rate, row.frames * 1000 / kSeconds,
                row.frames * 1000 / kSeconds / 50);
}

struct AudioCase {
    const char* why;
    const char* encoder;
    VbrMode mode;
    AudioFormat format;
    int rate_written;  // 0 = whatever it takes
    int channels_heard;
    double loudest_within = 0.03;
};

// clang-format off
const AudioCase kAudioCases[] = {
    // why                          encoder      mode               format                     written rate
    {"the usual",                   "wmav2",     VbrMode::Constant, {64040, 44100, 2, 16},     64040, 2},
    {"low, mono",                   "wmav2",     VbrMode::Constant, {32000, 22050, 1, 16},     32000, 1},
    {"very low",                    "wmav2",     VbrMode::Constant, {5000, 8000, 1, 16},       5000, 1},
    {"high",                        "wmav2",     VbrMode::Constant, {192000, 48000, 2, 16},    192000, 2},
    {"quality",                     "wmav2",     VbrMode::Quality,  {75, 44100, 2, 16},        0, 2},
    {"voice",                       "wmavoice",  VbrMode::Constant, {12000, 16000, 1, 16},     12000, 1, 0.05},
    {"PCM",                         "pcm_s16le", VbrMode::Constant, {1411200, 44100, 2, 16},   1411200, 2},
    {"PCM of another rate",         "pcm_s16le", VbrMode::Constant, {176400, 11025, 1, 16},    176400, 1},
};
// clang-format on

class AudioTable : public EncodeTable, public testing::WithParamInterface<AudioCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, AudioTable, testing::ValuesIn(kAudioCases),
                         test_support::NameOfRow());

TEST_P(AudioTable, IsWrittenAsAskedAndCounted) {
    const AudioCase& row = GetParam();
    EncodePlan plan = session::Plan(folder_->Path("out.wma"));
    AudioPlan audio = session::Audio(source_);
    audio.codec = &session::AudioCodec(row.encoder);
    audio.mode = row.mode;
    audio.format = row.format;
    audio.content.mode = ContentMode::Mixed;  // a tone is no speech
    plan.audio = audio;

    const session::Outcome outcome = session::RunCleanly(plan);
    EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
    const clips::Contents contents = clips::Decode(plan.FilePath());
    EXPECT_EQ(contents.audio_codec, row.encoder);
    EXPECT_EQ(contents.sampling_rate, row.format.sampling_rate);
    EXPECT_NEAR(contents.duration, kSeconds, 0.02);
    // Coded sound ends with a whole frame.
    EXPECT_GE(static_cast<double>(contents.audio.size()),
              0.9998 * kSeconds * row.format.sampling_rate);
    // Coded sound has whole packets, of which the first one holds little and the last one may
    // complete what the one before holds back.
    constexpr double kTwoPacketsSeconds = 0.75;
    if (row.rate_written > 0) {
        EXPECT_GE(outcome.audio.average_bit_rate_bps, row.rate_written * 0.99);
        EXPECT_LE(outcome.audio.average_bit_rate_bps,
                  row.rate_written * (1.01 + kTwoPacketsSeconds / kSeconds));
    }
    EXPECT_NEAR(outcome.audio.average_sample_rate, row.format.sampling_rate, 2);
    float loudest = 0;
    for (const float sample : contents.audio) loudest = std::max(loudest, std::fabs(sample));
    EXPECT_NEAR(loudest, 0.125, row.loudest_within);
}

TEST_F(EncodeTable, MusicInTheVoiceCodecIsToldOfOnce) {
    const std::string music = clips::Ffmpeg("-f lavfi -i sine=440:r=16000 -t 9 -c:a pcm_s16le",
                                            folder_->Path("music.wav"));
    EncodePlan plan = session::OfAudio(music, folder_->Path("music.wma"));
    plan.audio->codec = &session::AudioCodec("wmavoice");
    plan.audio->format = {12000, 16000, 1, 16};
    plan.passes = 2;
    session::WatchedRun run(plan);
    run.Until(EncoderState::Stopped);
    const std::vector<std::string> notes = (*run).TakeNotes();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_NE(notes.front().find("WMA9STD"), std::string::npos) << notes.front();
}

struct DownmixCase {
    const char* why;
    const char* channels;  // gains of FL, FR, FC, LFE, BL and BR in the source
    Downmix levels;
    double heard;  // in the left channel
};

// Expected: 10^(-dB / 20) of the channel, divided by the sum of all that the left one gets.
// clang-format off
const DownmixCase kDownmixCases[] = {
    // why                          the one that sounds                levels           heard
    {"front by the usual levels",   "1*V|0*V|0*V|0*V|0*V|0*V", {},              1 / 2.41589},
    {"right is not left",           "0*V|1*V|0*V|0*V|0*V|0*V", {},              0},
    {"centre by the usual levels",  "0*V|0*V|1*V|0*V|0*V|0*V", {},              0.70795 / 2.41589},
    {"surround likewise",           "0*V|0*V|0*V|0*V|1*V|0*V", {},              0.70795 / 2.41589},
    {"low frequencies are off",     "0*V|0*V|0*V|1*V|0*V|0*V", {},              0},
    {"front by typed levels",       "1*V|0*V|0*V|0*V|0*V|0*V", {10, 3, 3},      1 / 2.73213},
    {"surround typed",              "0*V|0*V|0*V|0*V|1*V|0*V", {10, 3, 3},      0.31623 / 2.73213},
    {"low frequencies typed",       "0*V|0*V|0*V|1*V|0*V|0*V", {10, 3, 3},      0.70795 / 2.73213},
    {"nothing but the front ones",  "1*V|0*V|1*V|1*V|1*V|1*V", {144, 144, 144}, 1},
    {"everything at full scale",    "1*V|1*V|1*V|1*V|1*V|1*V", {0, 0, 0},       1},
};
// clang-format on

TEST_F(EncodeTable, SixChannelsBecomeTwoByTheirLevels) {
    for (const DownmixCase& row : kDownmixCases) {
        SCOPED_TRACE(row.why);
        std::string channels = row.channels;
        for (std::size_t at = 0; (at = channels.find('V', at)) != std::string::npos;)
            channels.replace(at, 1, "sin(2764.6*t)");
        const std::string source = clips::Ffmpeg(
            "-f lavfi -i \"aevalsrc='" + channels + "':c=5.1:s=44100:d=0.5\" -c:a pcm_s16le",
            folder_->Path("six.wav"));
        EncodePlan plan = session::OfAudio(source, folder_->Path("two.wma"));
        plan.audio->codec = &session::AudioCodec("pcm_s16le");
        plan.audio->format = {1411200, 44100, 2, 16};
        plan.audio->downmix = row.levels;
        session::RunCleanly(plan);
        double peak = 0;
        for (const float sample : clips::Decode(plan.FilePath()).audio)
            peak = std::max(peak, std::fabs(static_cast<double>(sample)));
        EXPECT_NEAR(peak, row.heard, 0.002);
    }
}

TEST_F(EncodeTable, WhatIsCountedIsWhatIsInTheFile) {
    EncodePlan plan = session::OfBoth(source_, folder_->Path("both.wmv"));
    const session::Outcome outcome = session::RunCleanly(plan);
    EXPECT_EQ(outcome.states, (std::vector{EncoderState::Starting, EncoderState::Running,
                                           EncoderState::Stopping, EncoderState::Stopped}));
    std::int64_t bytes[2] = {0, 0};
    std::int64_t packets[2] = {0, 0};
    const std::string list = clips::OutputOf(
        "ffprobe -v error -show_entries packet=codec_type,size "
        "-of csv=p=0 " +
        plan.FilePath());
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        const int stream = line.starts_with("audio") ? 0 : 1;
        ++packets[stream];
        bytes[stream] += std::stoll(line.substr(line.find(',') + 1));
    }
    EXPECT_EQ(outcome.audio.byte_count.Raw(), bytes[0]);
    EXPECT_EQ(outcome.audio.sample_count.Raw(), packets[0]);
    EXPECT_EQ(outcome.video.byte_count.Raw(), bytes[1]);
    EXPECT_EQ(outcome.video.sample_count.Raw(), packets[1]);
    EXPECT_EQ(outcome.total.byte_count.Raw(), bytes[0] + bytes[1]);
    EXPECT_EQ(outcome.total.expected_bit_rate_bps, 464'000);
    EXPECT_EQ(outcome.file.file_size.Raw(),
              static_cast<std::int64_t>(std::filesystem::file_size(plan.FilePath())));
    EXPECT_NEAR(static_cast<double>(outcome.file.file_duration.Raw()), kSeconds * 1000, 2);
}

// The coded packets, their times and flags, without the file around them.
std::string Packets(const std::string& file) {
    return clips::OutputOf(
        "ffprobe -v error -show_packets -show_data_hash md5 -select_streams v "
        "-show_entries packet=pts,dts,size,flags,data_hash -of csv " +
        file);
}

TEST_F(EncodeTable, NumberOfWorkersChangesNothing) {
    for (const auto& [encoder, mode] :
         {std::pair("wmv2", VbrMode::Constant), std::pair("wmv2", VbrMode::BitRate),
          std::pair("wmv3", VbrMode::Constant), std::pair("wmv3", VbrMode::BitRate)}) {
        SCOPED_TRACE(encoder);
        std::string alone;
        for (const int workers : {1, 5}) {
            SCOPED_TRACE(workers);
            EncodePlan plan = session::Plan(folder_->Path("workers.wmv"));
            plan.passes = mode == VbrMode::BitRate ? 2 : 1;
            VideoPlan video = session::Video(source_);
            video.codec = &session::VideoCodec(encoder);
            video.mode = mode;
            video.performance = 40;
            video.key_frame_distance_ms = 300;  // eight frames a GOP
            video.encoder_threads = workers;
            video.input.mark_out = Ticks::FromMilliseconds(2400);
            plan.video = video;
            session::RunCleanly(plan);
            const std::string packets = Packets(plan.FilePath());
            if (workers == 1) alone = packets;
            EXPECT_EQ(std::count(packets.begin(), packets.end(), 'K'), 8);
            EXPECT_EQ(packets, alone);
        }
    }
}

}  // namespace
