#include "session/encoder_setup.h"

#include "session_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct WholeSession : Session {
    /// A microphone and a camera, and a group without sources.
    void AddDevices() {
        AddSources(false, false);
        encoder().plugins.items = {
            std::make_shared<test_support::FakePluginInfo>(true, 1, Lines{"mic"}),
            std::make_shared<test_support::FakePluginInfo>(true, 2, Lines{"cam"})};
    }
    session::EncoderSetup setup{state, settings, pane, factory};
};

const Lines kFile = {"AutoSetFileSource(/home/a.avi)"};
const Lines kFileAudio = {"AddSource(audio)", "Audio.SetInput(/home/a.avi)"};
const Lines kFileVideo = {"AddSource(video)", "Video.SetInput(/home/a.avi)"};
const Lines kScreen = {"AddSource(video)", "Video.SetInput(screencap1, screencap)"};
const Lines kScreenWithAudio = {"AddSource(video)", "Video.SetInput(screencap1, screencap)",
                                "AddSource(audio)", "Audio.SetInput(Default_Audio_Device, device)"};
const Lines kUsualRate = {"Video.CaptureRate=30000"};
const Lines kFifteen = {"Video.CaptureRate=15000"};

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Change FileWith(const char* profile) {
    return Set(&Settings::input, "a.avi", &Settings::profile, profile);
}

Change FileOnly(bool audio, bool video, const char* profile = "") {
    return Set(&Settings::input, "a.avi", &Settings::profile, profile, &Settings::audioonly, audio,
               &Settings::videoonly, video);
}

Change NoInputWith(const char* profile) { return Set(&Settings::profile, profile); }

struct InputCase {
    const char* why;
    Change change;
    Lines calls;
    int content_type;
    bool audioonly = false;
    bool videoonly = false;
};

constexpr int kKept = 99;  // the content kind of the session before

// clang-format off
const InputCase kInputCases[] = {
    // why, settings, calls, content kind, audio only, video only
    {"a file's own sources", FileWith(""), kFile, 17},
    {"an audio profile takes the sound alone", FileWith("A64"), kFileAudio, 1, true, false},
    {"one letter is an audio profile too", FileWith("a"), kFileAudio, 1, true, false},
    {"a video profile takes the picture alone", FileWith("v100"), kFileVideo, 16, false, true},
    {"a profile of both takes both", FileWith("AV100"), kFile, 17},
    {"sound alone outweighs picture alone", FileOnly(true, true), kFileAudio, 1, true, true},
    {"the flag of an earlier command stays", FileOnly(false, true, "av100"), kFileVideo, 16, false, true},
    {"no input at all", NoInputWith(""), {}, kKept},
    {"an audio profile without a file sets no flag", NoInputWith("a64"), {}, kKept},
    {"an audio device", Set(&Settings::adevice, 0), {"AddSource(audio)", "Audio.SetInput(mic, device)"}, 1},
    {"both devices, audio first", Set(&Settings::vdevice, 0, &Settings::adevice, 0),
     {"AddSource(audio)", "Audio.SetInput(mic, device)", "AddSource(video)",
      "Video.SetInput(cam, device)", "Video.CaptureRate=30000"}, 17},
    {"a file outweighs a device, whatever its number", Set(&Settings::input, "a.avi", &Settings::adevice, 7), kFile, 17},
    {"the screen", NoInputWith("scrn"), kScreen + kUsualRate, 16},
    {"a whole key without sound", NoInputWith("scrn15"), kScreen + kFifteen, 16},
    {"a whole key with sound", NoInputWith("SCRN15A"), kScreenWithAudio + kFifteen, 17},
    {"more than a whole key has none", NoInputWith("scrn15ab"), kScreen + kFifteen, 16},
    {"a beginning with sound", NoInputWith("scrnaxyz"), kScreenWithAudio + kUsualRate, 17},
    {"both beginnings fit, one source is added", NoInputWith("scrnab"), kScreenWithAudio + kUsualRate, 17},
    {"a rate that was asked for outweighs the code's",
     Set(&Settings::profile, "scrn15", &Settings::v_framerate, 12'500.0F),
     kScreen + Lines{"Video.CaptureRate=12500"}, 16},
    {"a rate of 0 is none", Set(&Settings::profile, "scrn15", &Settings::v_framerate, 0.0F), kScreen + kFifteen, 16},
    {"the screen beside a file: one of sound and two of picture have no bit in common", FileWith("scrn15"), kFile + kScreen + kFifteen, 1},
};
// clang-format on

TEST(EncoderSetup, Inputs) {
    for (const InputCase& each : kInputCases) {
        SCOPED_TRACE(each.why);
        WholeSession session;
        session.AddDevices();
        session.state.g_nContentType = kKept;
        each.change(session.settings);
        EXPECT_TRUE(session.setup.SetupInput());
        EXPECT_EQ(session.TakeCalls(), each.calls);
        EXPECT_EQ(session.state.g_nContentType, each.content_type);
        EXPECT_EQ(session.settings.audioonly, each.audioonly);
        EXPECT_EQ(session.settings.videoonly, each.videoonly);
        EXPECT_THAT(session.pane.lines, IsEmpty());
    }
}

TEST(EncoderSetup, TheGroupsFirstVideoSourceBecomesTheScreen) {
    WholeSession session;
    session.AddSources(false, false);
    FileWith("scrn15")(session.settings);
    EXPECT_TRUE(session.setup.SetupInput());
    EXPECT_EQ(session.state.g_objSrcVid, session.encoder().groups.items[0]->video[0]);
    EXPECT_EQ(session.state.g_objSrcVid->Scheme(), "screencap");
}

struct FailureCase {
    const char* why;
    Change change;
    std::vector<const char*> failing;
    const char* line;
    Lines calls;
};

// clang-format off
const FailureCase kFailureCases[] = {
    // why, settings, failing operations, line, calls
    {"a file that cannot be opened", FileWith(""), {"AutoSetFileSource"}, "Error: 0x80070002 - AutoSetFileSource failed", {}},
    {"a source whose input fails still gets its options, and the cause is reported",
     Set(&Settings::input, "a.avi", &Settings::audioonly, true, &Settings::a_content, 1,
         &Settings::a_contentedl, "x"),
     {"Audio.SetInput", "Audio.ContentEDL"},
     "Error: 0x80070002 - Audio.SetInput failed", {"AddSource(audio)", "Audio.ContentMode=1"}},
    {"no source to give the input to", NoInputWith("scrna"), {"AddSource"}, "Error: 0x80070002 - AddSource failed", {}},
    {"past the last audio device", Set(&Settings::adevice, 1, &Settings::vdevice, 0, &Settings::a_content, 1), {},
     "Error: Invalid audio device number specified", {}},
    {"past the last video device", Set(&Settings::adevice, 0, &Settings::vdevice, 2, &Settings::a_content, 1), {},
     "Error: Invalid video device number specified", {"AddSource(audio)", "Audio.SetInput(mic, device)"}},
    {"an option that fails",
     Set(&Settings::input, "a.avi", &Settings::a_content, 1, &Settings::v_preproc, 1),
     {"Audio.ContentMode"}, "Error: 0x80070002 - Audio.ContentMode failed",
     {"AutoSetFileSource(/home/a.avi)", "Video.Optimization=2"}},
};
// clang-format on

TEST(EncoderSetup, RefusedInputsHaveOneLine) {
    for (const FailureCase& each : kFailureCases) {
        SCOPED_TRACE(each.why);
        WholeSession session;
        session.AddDevices();
        each.change(session.settings);
        for (const char* operation : each.failing)
            session.factory.log->Fail(operation, platform::kFileNotFound,
                                      std::string(operation) + " failed");
        EXPECT_FALSE(session.setup.SetupInput());
        EXPECT_THAT(session.pane.lines, ElementsAre(each.line));
        EXPECT_EQ(session.TakeCalls(), each.calls);
    }
}

// One operation of each procedure, in the order in which a whole set-up calls them.
const Lines kSteps = {"Groups.Add(SG_1)",           "AutoSetFileSource(/home/a.avi)",
                      "Group.Profile=BVRXQProfile", "File.LocalFileName=b.wmv",
                      "Audio.MarkIn=1000",          "DisplayInfo.Title=t",
                      "Encoder.AutoStop=true"};

const Change kWholeSession = Set(&Settings::input, "a.avi", &Settings::output, "b", &Settings::time,
                                 cli::TimeSettings{1000, {}}, &Settings::title, "t");

Lines StepsIn(const Lines& calls) {
    Lines steps;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(steps), [](const auto& call) {
        return std::find(kSteps.begin(), kSteps.end(), call) != kSteps.end();
    });
    return steps;
}

TEST(EncoderSetup, WholeSessionInOrder) {
    WholeSession session;
    kWholeSession(session.settings);
    EXPECT_TRUE(session.setup.SetupEncoder());
    EXPECT_THAT(session.pane.lines, IsEmpty());
    const Lines calls = session.TakeCalls();
    EXPECT_EQ(StepsIn(calls), kSteps);
    EXPECT_EQ(calls.back(), "Encoder.AutoStop=true");
}

struct StopCase {
    const char* why;
    Change change;
    const char* failing;
    std::size_t steps;  // how many of kSteps are still done
};

const StopCase kStopCases[] = {
    {"no session file", Set(&Settings::wme, "x.wme"), "Encoder.Load", 0},
    {"no input", Set(), "AutoSetFileSource", 1},
    {"no profile", Set(&Settings::profile, "av0"), "", 2},
    {"no time", Set(&Settings::device_input, true), "", 4},
};

TEST(EncoderSetup, StopsAtTheFirstRefusalWithItsOneLine) {
    for (const StopCase& each : kStopCases) {
        SCOPED_TRACE(each.why);
        WholeSession session;
        kWholeSession(session.settings);
        each.change(session.settings);
        session.factory.log->Fail(each.failing, platform::kFileNotFound, "x");
        EXPECT_FALSE(session.setup.SetupEncoder());
        EXPECT_EQ(session.pane.lines.size(), 1U);
        EXPECT_EQ(StepsIn(session.TakeCalls()),
                  Lines(kSteps.begin(), kSteps.begin() + static_cast<std::ptrdiff_t>(each.steps)));
    }
}

}  // namespace
