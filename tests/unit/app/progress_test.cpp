#include "app/progress.h"

#include "unit/app/session_fixture.h"

namespace app {
namespace {

using platform::Currency;

class ProgressTest : public SessionFixture {
  protected:
    ProgressTest() { session.g_objEncoder = encoder; }

    void SetElapsed(std::int64_t milliseconds) {
        encoder->statistics.encoding_time = Currency::FromRaw(milliseconds);
    }

    Progress progress{window, session, settings};
};

struct LengthCase {
    const char* why;
    const char* input;
    std::optional<double> duration;  // before
    bool has_audio, has_video;
    std::int32_t audio_in, audio_out, audio_length;
    std::int32_t video_in, video_out, video_length;
    const char* text;
};

// clang-format off
const LengthCase kLengthCases[] = {
    // why                                 input     -duration  has      audio in, out, length   video in, out, length   text
    {"start mark off a whole file",        "a.avi",  {}, true,  false,   5000,     0, 65000,        0,     0,     0,    "60"},
    {"the longer of two",                  "a.avi",  {}, true,  true,       0,     0, 60000,        0,     0, 59960,    "60"},
    {"the other is longer",                "a.avi",  {}, true,  true,       0,     0, 59000,        0,     0, 59960,    "59.96"},
    {"between two marks",                  "a.avi",  {}, false, true,       0,     0,     0,     1000,  5500, 60000,    "4.5"},
    {"a file overrules a typed duration",  "a.avi",  30, false, true,       0,     0,     0,        0,     0, 60000,    "60"},
    {"a source that is not there is 0",    "a.avi",  {}, false, false,      0,     0, 60000,        0,     0, 60000,    "0"},
    {"a device keeps the typed duration",  "",       30, true,  true,       0,     0,     0,        0,     0,     0,    "30"},
};
// clang-format on

TEST_F(ProgressTest, MediaLength) {
    for (const LengthCase& c : kLengthCases) {
        settings.input = c.input;
        settings.duration = c.duration;
        session.g_objSrcAud = c.has_audio ? audio : nullptr;
        session.g_objSrcVid = c.has_video ? video : nullptr;
        audio->value_MarkIn = c.audio_in;
        audio->value_MarkOut = c.audio_out;
        audio->duration = c.audio_length;
        video->value_MarkIn = c.video_in;
        video->value_MarkOut = c.video_out;
        video->duration = c.video_length;
        progress.setupProgressBar();
        EXPECT_EQ(window.media_length.caption, "Media Length: " + std::string(c.text) + " secs")
            << c.why;
        EXPECT_EQ(platform::NumberText(settings.duration.value()), c.text) << c.why;
        EXPECT_EQ(window.file.caption, "  Encoding: " + std::string(c.input)) << c.why;
    }
}

TEST_F(ProgressTest, EitherSourceAsksForTwoPasses) {
    AddAudio();
    AddVideo();
    progress.setupProgressBar();
    EXPECT_EQ(progress.TotalPasses(), 1);
    audio->value_PreProcessPass = 1;
    progress.setupProgressBar();
    EXPECT_EQ(progress.TotalPasses(), 2);
    audio->value_PreProcessPass = 0;
    video->value_PreProcessPass = 1;
    progress.setupProgressBar();
    EXPECT_EQ(progress.TotalPasses(), 2);
}

struct TickCase {
    const char* why;
    std::optional<double> duration;  // s
    std::int64_t elapsed_ms;
    std::int32_t expected_bps, current_bps;
    const char *elapsed, *expected, *current, *percent;
};

// "" = the label keeps what it showed.
// clang-format off
const TickCase kTickCases[] = {
    // why                              -duration  elapsed    expected   current      elapsed  expected current percent
    {"all at zero",                          60,         0,          0,         0,    "0",     "0",     "0",    "0%"},
    {"a tie rounds to the even below",       60,      2500,      64500,     12500,    "2",     "64",    "12",   "4%"},
    {"a tie rounds to the even above",       60,      3500,      65500,     13500,    "4",     "66",    "14",   "5%"},
    {"percent is cut, not rounded",          60,     59999,      64501,     12499,    "60",    "65",    "12",   "99%"},
    {"length rounds to whole seconds",     59.6,     59700,          0,         0,    "60",    "0",     "0",    "99%"},
    {"past the end is 100",                  60,     99000,          0,         0,    "99",    "0",     "0",    "100%"},
    {"the last 16-bit second",           100000,  32767499,          0,         0,    "32767", "0",     "0",    "32%"},
    {"an elapsed time past 16 bits",     100000,  32767500,       1000,      1000,    "",      "1",     "1",    "32%"},
    {"an expected rate past 16 bits",        60,      6000,   40000000,      1000,    "6",     "",      "1",    "10%"},
    {"a current rate past 16 bits",          60,      6000,       1000,  40000000,    "6",     "1",     "",     "10%"},
    {"no length, no bar",                     0,      6000,       1000,      1000,    "6",     "1",     "1",    ""},
    {"no duration given, no bar",            {},      6000,       1000,      1000,    "6",     "1",     "1",    ""},
    {"a length below half a second",        0.5,       400,          0,         0,    "0",     "0",     "0",    ""},
};
// clang-format on

std::string Shown(const std::string& caption, const std::string& number, const std::string& unit) {
    return number.empty() ? "as before" : caption + ": \r\n" + number + unit;
}

TEST_F(ProgressTest, TickShowsTimesRatesAndPercent) {
    for (const TickCase& c : kTickCases) {
        progress.setupProgressBar();
        settings.duration = c.duration;
        SetElapsed(c.elapsed_ms);
        encoder->statistics.total.expected_bit_rate_bps = c.expected_bps;
        encoder->statistics.total.current_bit_rate_bps = c.current_bps;
        window.label1.caption = window.label2.caption = window.label3.caption =
            window.percent.caption = "as before";
        progress.Tick();
        EXPECT_EQ(window.label1.caption, Shown("Elapsed time", c.elapsed, " secs")) << c.why;
        EXPECT_EQ(window.label2.caption, Shown("Expected bit rate", c.expected, " Kbps")) << c.why;
        EXPECT_EQ(window.label3.caption, Shown("Current bit rate", c.current, " Kbps")) << c.why;
        EXPECT_EQ(window.percent.caption, *c.percent == '\0' ? "as before" : c.percent) << c.why;
    }
}

TEST_F(ProgressTest, ABarThatGoesBackIsTheSecondPass) {
    settings.input = "a.avi";
    video->duration = 60000;
    video->value_PreProcessPass = 1;
    AddVideo();
    progress.setupProgressBar();
    for (const std::int64_t elapsed : {6000, 6000, 60000}) {
        SetElapsed(elapsed);
        progress.Tick();
        EXPECT_EQ(window.status.caption, "") << "first pass at " << elapsed;
    }
    SetElapsed(600);
    progress.Tick();
    EXPECT_EQ(window.status.caption, "Running... Pass:  2 / 2");
    EXPECT_EQ(window.percent.caption, "1%");
    SetElapsed(1200);
    progress.Tick();
    EXPECT_EQ(progress.CurrentPass(), 2);
    progress.setupProgressBar();
    EXPECT_EQ(progress.CurrentPass(), 1) << "the next run starts over";
}

struct CaptureCase {
    const char* why;
    const char* profile;
    std::optional<double> duration;
    int ticks;
    int stops;
    bool device = false;
    const char* input = "";
};

const CaptureCase kCaptureCases[] = {
    // why                                    profile  -duration  ticks  stops
    {"one tick before its time", "scrna", 30, 29, 0},
    {"the tick of its time", "scrna", 30, 30, 1},
    {"any case of the code", "SCRN15", 30, 30, 1},
    {"a file has its own end", "av350", 30, 30, 0},
    {"a code that only contains the letters", "xscrn", 30, 30, 0},
    {"no duration given: until Stop", "scrna", {}, 5, 0},
    {"counting starts again after the stop", "scrna", 2, 5, 2},
    {"a device is timed like a screen", "a64", 30, 30, 1, true},
    {"a device of an earlier command, and now a file", "a64", 30, 30, 0, true, "a.avi"},
};

TEST_F(ProgressTest, ScreenCaptureStopsAfterSoManyTicks) {
    for (const CaptureCase& c : kCaptureCases) {
        settings.profile = c.profile;
        settings.input = c.input;
        settings.device_input = c.device;
        progress.setupProgressBar();
        settings.duration = c.duration;
        factory.log->lines.clear();
        window.timer.interval = 1000;
        window.timer.enabled = true;
        for (int tick = 0; tick < c.ticks; ++tick) progress.Tick();
        EXPECT_EQ(factory.log->Count("Encoder.Stop"), c.stops) << c.why;
        EXPECT_EQ(window.timer.enabled, c.stops == 0) << c.why;
        EXPECT_EQ(window.timer.interval, c.stops == 0 ? 1000 : 0) << c.why;
    }
}

TEST_F(ProgressTest, PausedSecondsAreNotCounted) {
    settings.profile = "scrna";
    settings.duration = 2;
    for (const auto state : {platform::EncoderState::Running, platform::EncoderState::Paused,
                             platform::EncoderState::Paused, platform::EncoderState::Running}) {
        EXPECT_FALSE(factory.log->Has("Encoder.Stop"));
        encoder->state = state;
        progress.Tick();
    }
    EXPECT_TRUE(factory.log->Has("Encoder.Stop"));
}

TEST_F(ProgressTest, ATickThatGetsNoAnswerEndsQuietly) {
    settings.profile = "scrna";
    settings.duration = 1;
    factory.log->Fail("Statistics.WMFOutputStats", platform::kUnspecified, "no statistics");
    progress.Tick();
    EXPECT_EQ(window.label1.caption, "Elapsed time: \r\n0 secs");
    EXPECT_EQ(window.label2.caption, "");
    EXPECT_FALSE(factory.log->Has("Encoder.Stop"));
    session.g_objEncoder = nullptr;
    WindowLog();
    progress.Tick();
    EXPECT_TRUE(window.log->lines.empty());
}

}  // namespace
}  // namespace app
