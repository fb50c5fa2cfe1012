#include "session/output_setup.h"

#include <span>

#include "session/output_folder.h"
#include "session_test.h"
#include "support/error_of.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct OutputSession : Session {
    session::OutputSetup setup{state, settings, pane};
};

struct NameCase {
    const char* why;
    const char* input;
    const char* output;
    bool video;
    const char* completed;
};

const NameCase kNameCases[] = {
    {"folder and an input with video", "clips/a.avi", "/out", true, "/out/a.wmv"},
    {"folder and an input with sound only", "a.mpg", "/out", false, "/out/a.wma"},
    {"what is left of the name has an extension", "x.y.avi", "/out", true, "/out/x.y"},
    {"folder without an input", "", "/out", true, "/out/output.wmv"},
    {"folder with its separator", "", "/out/", false, "/out/output.wma"},
    {"no extension", "a.avi", "b", true, "b.wmv"},
    {"a dot is there already", "a.avi", "b.", true, "b.wmv"},
    {"any extension is kept", "a.avi", "b.x", true, "b.x"},
    {"a dot in the folder's name is none", "a.avi", "/v1.0/b", false, "/v1.0/b.wma"},
};

TEST(OutputSetup, CompletesTheName) {
    for (const NameCase& each : kNameCases) {
        SCOPED_TRACE(each.why);
        OutputSession session;
        session.files().AddFolder("/out");
        session.files().AddFolder("/out/");
        session.AddSources(true, each.video);
        session.settings.input = each.input;
        session.settings.output = each.output;
        EXPECT_TRUE(session.setup.SetupOutput());
        EXPECT_EQ(session.settings.output, each.completed);
        EXPECT_EQ(session.encoder().file.LocalFileName(), each.completed);
    }
}

TEST(OutputSetup, MakesTheFolderOfTheOutputWithItsParents) {
    OutputSession session;
    session.AddSources(false, true);
    session.settings.output = "deep/er/b.wmv";
    EXPECT_TRUE(session.setup.SetupOutput());
    EXPECT_THAT(session.files().log->lines,
                ElementsAre("CreateFolder(/home/deep)", "CreateFolder(/home/deep/er)"));
}

TEST(OutputSetup, TakesTheNameOfASessionFile) {
    OutputSession session;
    session.encoder().file.value_LocalFileName = "show.wmv";
    EXPECT_TRUE(session.setup.SetupOutput());
    EXPECT_EQ(session.settings.output, "show.wmv");
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
}

struct SettingsCase {
    const char* why;
    Change change;
    Lines calls;
};

// clang-format off
const SettingsCase kBroadcastCases[] = {
    // why, settings, calls
    {"no port given", Set(), {}},
    {"a port", Set(&Settings::broadcast, 8080), {"Broadcast.PortNumber(1)=8080"}},
    {"a push without a template", Set(&Settings::push, cli::PushSettings{"server", "point", ""}),
     {"Broadcast.ServerName=server", "Broadcast.PublishingPoint=point"}},
    {"a push with one, beside a port",
     Set(&Settings::broadcast, 80, &Settings::push, cli::PushSettings{"server", "point", "template"}),
     {"Broadcast.PortNumber(1)=80", "Broadcast.ServerName=server",
      "Broadcast.PublishingPoint=point", "Broadcast.Template=template"}},
};
// clang-format on

TEST(OutputSetup, RefusesWhatIsNoPort) {
    for (const std::int32_t port : {0, -1, 65536}) {
        OutputSession session;
        session.AddSources(true, false);
        session.settings.broadcast = port;
        EXPECT_FALSE(session.setup.SetupOutput());
        ASSERT_EQ(session.pane.lines.size(), 1U);
        EXPECT_THAT(session.pane.lines[0],
                    testing::StartsWith(std::to_string(port) + " is no port to broadcast on"));
        EXPECT_THAT(session.TakeCalls(), IsEmpty());
    }
}

// clang-format off
const SettingsCase kTimeCases[] = {
    // why, settings, calls
    {"a start alone", Set(&Settings::time, cli::TimeSettings{1000, {}}), {"Audio.MarkIn=1000", "Video.MarkIn=1000"}},
    {"to the end of the file", Set(&Settings::time, cli::TimeSettings{0, 0}),
     {"Audio.MarkIn=0", "Video.MarkIn=0", "Audio.MarkOut=0", "Video.MarkOut=0"}},
    {"a device with its duration", Set(&Settings::device_input, true, &Settings::duration, 5), {}},
};
// clang-format on

TEST(OutputSetup, MarksOnlyTheSourcesThatExist) {
    OutputSession session;
    session.AddSources(true, false);
    session.settings.time = {1, 2};
    EXPECT_TRUE(session.setup.SetupTime());
    EXPECT_THAT(session.TakeCalls(), ElementsAre("Audio.MarkIn=1", "Audio.MarkOut=2"));
}

TEST(OutputSetup, RefusesADeviceWithoutADuration) {
    OutputSession session;
    session.AddSources(true, false);
    session.settings.device_input = true;
    session.settings.time.start = 1000;
    EXPECT_FALSE(session.setup.SetupTime());
    EXPECT_THAT(session.pane.lines,
                ElementsAre("Duration must be specified when capturing from devices."));
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
}

// clang-format off
const SettingsCase kDisplayCases[] = {
    // why, settings, calls
    {"nothing given", Set(), {}},
    {"all titles, in their order",
     Set(&Settings::rating, "5", &Settings::title, "1", &Settings::author, "2",
         &Settings::copyright, "3", &Settings::description, "4"),
     {"DisplayInfo.Title=1", "DisplayInfo.Author=2", "DisplayInfo.Copyright=3",
      "DisplayInfo.Description=4", "DisplayInfo.Rating=5"}},
    {"coefficients are negated", Set(&Settings::a_folddown6to2, cli::FoldDownSettings{10, 3, 0}),
     {"Attributes.Add(SurroundMix, -10)", "Attributes.Add(CenterMix, -3)",
      "Attributes.Add(LFEMix, 0)"}},
    {"the first coefficient alone decides", Set(&Settings::a_folddown6to2, cli::FoldDownSettings{{}, 3, 3}), {}},
    {"a command was refused in the middle of the three",
     Set(&Settings::a_folddown6to2, cli::FoldDownSettings{10, {}, {}}),
     {"Attributes.Add(SurroundMix, -10)", "Attributes.Add(CenterMix, 1)",
      "Attributes.Add(LFEMix, 1)"}},
};
// clang-format on

TEST(OutputSetup, OptionsReachTheEncoder) {
    using session::OutputSetup;
    const std::pair<std::span<const SettingsCase>, bool (OutputSetup::*)()> steps[] = {
        {kBroadcastCases, &OutputSetup::SetupOutput},
        {kTimeCases, &OutputSetup::SetupTime},
        {kDisplayCases, &OutputSetup::SetupDisplayInfo}};
    for (const auto& [cases, step] : steps)
        for (const SettingsCase& each : cases) {
            SCOPED_TRACE(each.why);
            OutputSession session;
            session.AddSources(true, true);
            each.change(session.settings);
            EXPECT_TRUE((session.setup.*step)());
            EXPECT_EQ(session.TakeCalls(), each.calls);
        }
}

TEST(OutputFolder, FailsWithTheFolderThatCannotBeMade) {
    Session session;
    session.files().AddFile("/out/taken");
    const auto create = [&] { session::CreateOutputFolder(session.files(), "/out/taken/inner"); };
    EXPECT_EQ(test_support::ErrorNumber(create, {"/out/taken"}), platform::kFileExists);
}

// Another process may make the folder between the look and the making.
class RacingFileSystem : public test_support::FakeFileSystem {
  public:
    void CreateFolder(const std::string& path) override {
        AddFolder(path);
        FakeFileSystem::CreateFolder(path);
    }
};

TEST(OutputFolder, AFolderThatAppearsMeanwhileIsFine) {
    RacingFileSystem files;
    session::CreateOutputFolder(files, "/out/a");
    EXPECT_TRUE(files.FolderExists("/out/a"));
}

// The fake's absolute name of a URI stands for the host's decoded path.
class UriFileSystem : public test_support::FakeFileSystem {
  public:
    std::string GetAbsolutePathName(const std::string& path) override {
        return path == "FILE:///my%20out" ? "/my out" : path;
    }
};

TEST(OutputFolder, NamesInFolders) {
    UriFileSystem files;
    EXPECT_EQ(session::PathInFolder(files, "/out", "a"), "/out/a");
    EXPECT_EQ(session::PathInFolder(files, "/", "a"), "/a");
    EXPECT_EQ(session::PathInFolder(files, "C:\\out\\", "a"), "C:\\out\\a");
    EXPECT_EQ(session::PathInFolder(files, "FILE:///my%20out", "50%41"), "/my out/50%41")
        << "the name is no part of the URI, so it is not decoded";
}

}  // namespace
