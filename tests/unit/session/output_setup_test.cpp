#include "session/output_setup.h"

#include "session/output_folder.h"
#include "session_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
        Session session;
        session.files().AddFolder("/out");
        session.files().AddFolder("/out/");
        session.AddSources(true, each.video);
        session.settings.input = each.input;
        session.settings.output = each.output;
        session::OutputSetup setup(session.state, session.settings, session.pane);
        EXPECT_TRUE(setup.SetupOutput());
        EXPECT_EQ(session.settings.output, each.completed);
        EXPECT_EQ(session.encoder().file.LocalFileName(), each.completed);
    }
}

TEST(OutputSetup, MakesTheFolderOfTheOutputWithItsParents) {
    Session session;
    session.AddSources(false, true);
    session.settings.output = "deep/er/b.wmv";
    session::OutputSetup setup(session.state, session.settings, session.pane);
    EXPECT_TRUE(setup.SetupOutput());
    EXPECT_THAT(session.files().log->lines,
                ElementsAre("CreateFolder(/home/deep)", "CreateFolder(/home/deep/er)"));
}

TEST(OutputSetup, TakesTheNameOfASessionFile) {
    Session session;
    session.encoder().file.value_LocalFileName = "show.wmv";
    session::OutputSetup setup(session.state, session.settings, session.pane);
    EXPECT_TRUE(setup.SetupOutput());
    EXPECT_EQ(session.settings.output, "show.wmv");
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
}

struct SettingsCase {
    const char* why;
    Change change;
    Lines calls;
};

const SettingsCase kBroadcastCases[] = {
    {"no port given", [](auto&) {}, {}},
    {"a port", [](auto& s) { s.broadcast = 8080; }, {"Broadcast.PortNumber(1)=8080"}},
    {"a push without a template",
     [](auto& s) {
         s.push = {"server", "point", ""};
     },
     {"Broadcast.ServerName=server", "Broadcast.PublishingPoint=point"}},
    {"a push with one, beside a port",
     [](auto& s) {
         s.broadcast = 80;
         s.push = {"server", "point", "template"};
     },
     {"Broadcast.PortNumber(1)=80", "Broadcast.ServerName=server",
      "Broadcast.PublishingPoint=point", "Broadcast.Template=template"}},
};

TEST(OutputSetup, BroadcastsAndPushes) {
    for (const SettingsCase& each : kBroadcastCases) {
        SCOPED_TRACE(each.why);
        Session session;
        each.change(session.settings);
        session::OutputSetup setup(session.state, session.settings, session.pane);
        EXPECT_TRUE(setup.SetupOutput());
        EXPECT_EQ(session.TakeCalls(), each.calls);
    }
}

const SettingsCase kTimeCases[] = {
    {"a start alone",
     [](auto& s) { s.time.start = 1000; },
     {"Audio.MarkIn=1000", "Video.MarkIn=1000"}},
    {"to the end of the file",
     [](auto& s) {
         s.time = {0, 0};
     },
     {"Audio.MarkIn=0", "Video.MarkIn=0", "Audio.MarkOut=0", "Video.MarkOut=0"}},
    {"a device with its duration",
     [](auto& s) {
         s.device_input = true;
         s.duration = 5;
     },
     {}},
};

TEST(OutputSetup, MarksTheTime) {
    for (const SettingsCase& each : kTimeCases) {
        SCOPED_TRACE(each.why);
        Session session;
        session.AddSources(true, true);
        each.change(session.settings);
        session::OutputSetup setup(session.state, session.settings, session.pane);
        EXPECT_TRUE(setup.SetupTime());
        EXPECT_EQ(session.TakeCalls(), each.calls);
    }
}

TEST(OutputSetup, MarksOnlyTheSourcesThatExist) {
    Session session;
    session.AddSources(true, false);
    session.settings.time = {1, 2};
    session::OutputSetup setup(session.state, session.settings, session.pane);
    EXPECT_TRUE(setup.SetupTime());
    EXPECT_THAT(session.TakeCalls(), ElementsAre("Audio.MarkIn=1", "Audio.MarkOut=2"));
}

TEST(OutputSetup, RefusesADeviceWithoutADuration) {
    Session session;
    session.AddSources(true, false);
    session.settings.device_input = true;
    session.settings.time.start = 1000;
    session::OutputSetup setup(session.state, session.settings, session.pane);
    EXPECT_FALSE(setup.SetupTime());
    EXPECT_THAT(session.pane.lines,
                ElementsAre("Duration must be specified when capturing from devices."));
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
}

const SettingsCase kDisplayCases[] = {
    {"nothing given", [](auto&) {}, {}},
    {"all titles, in their order",
     [](auto& s) {
         s.rating = "5";
         s.title = "1";
         s.author = "2";
         s.copyright = "3";
         s.description = "4";
     },
     {"DisplayInfo.Title=1", "DisplayInfo.Author=2", "DisplayInfo.Copyright=3",
      "DisplayInfo.Description=4", "DisplayInfo.Rating=5"}},
    {"coefficients are negated",
     [](auto& s) {
         s.a_folddown6to2 = {10, 3, 3};
     },
     {"Attributes.Add(SurroundMix, -10)", "Attributes.Add(CenterMix, -3)",
      "Attributes.Add(LFEMix, -3)"}},
    {"the first coefficient alone decides",
     [](auto& s) {
         s.a_folddown6to2 = {-1, 3, 3};
     },
     {}},
    {"a number without a positive counterpart",
     [](auto& s) {
         s.a_folddown6to2 = {std::numeric_limits<std::int32_t>::min(), -3, 0};
     },
     {"Attributes.Add(SurroundMix, 2147483647)", "Attributes.Add(CenterMix, 3)",
      "Attributes.Add(LFEMix, 0)"}},
};

TEST(OutputSetup, WritesDisplayInformation) {
    for (const SettingsCase& each : kDisplayCases) {
        SCOPED_TRACE(each.why);
        Session session;
        each.change(session.settings);
        session::OutputSetup setup(session.state, session.settings, session.pane);
        EXPECT_TRUE(setup.SetupDisplayInfo());
        EXPECT_EQ(session.TakeCalls(), each.calls);
    }
}

TEST(OutputFolder, FailsWithTheFolderThatCannotBeMade) {
    Session session;
    session.files().AddFile("/out/taken");
    try {
        session::CreateOutputFolder(session.files(), "/out/taken/inner");
        FAIL() << "a file was taken for a folder";
    } catch (const platform::Error& error) {
        EXPECT_EQ(error.unsigned_number(), platform::kFileExists);
        EXPECT_THAT(error.description(), testing::HasSubstr("/out/taken"));
    }
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
