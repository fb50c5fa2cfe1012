#include "app/main_window.h"

#include <algorithm>

#include "support/fake_host.h"

namespace app {
namespace {

using platform::EncoderState;
using platform::ExitStatus;
using test_support::FakeEncoder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Lines = std::vector<std::string>;

constexpr char kCommand[] = "-input a.avi -output out/a.wmv -profile av100";
constexpr char kOffered[] = "-profile scrna -output C:\\ZELMO\\cap1.wmv -duration 90000";
constexpr char kCompleted[] = "======== Encoding Completed ========";

class MainWindowTest : public testing::Test {
  protected:
    MainWindowTest() { factory.files->AddFile("/home/a.avi"); }

    void Go(const std::string& command) {
        window.command_box.text = command;
        form.cmdGo_Click();
    }
    FakeEncoder& Encoder() { return *factory.encoders.back(); }
    void Finish() { Encoder().Deliver(EncoderState::Stopped); }
    int Started() const { return factory.log->Count("Encoder.Start"); }
    Lines Pane() const { return window.PaneLines(); }
    int PaneCount(const std::string& line) const {
        const Lines lines = Pane();
        return static_cast<int>(std::count(lines.begin(), lines.end(), line));
    }

    test_support::FakeWindow window;
    test_support::FakeFactory factory;
    frmMain form{window, factory, [] { return WallTime{}; }};
};

TEST_F(MainWindowTest, NamesTheWindowAndArmsTheTimer) {
    EXPECT_EQ(window.caption, "Orlavane Tessivo");
    EXPECT_EQ(window.go.caption, "&Go");
    EXPECT_EQ(window.stop.caption, "&Stop");
    EXPECT_FALSE(window.timer.enabled);
    form.Form_Load();
    EXPECT_EQ(window.timer.interval, 1000);
    EXPECT_TRUE(window.timer.enabled);
    window.log->lines.clear();
    form.Form_Unload();
    EXPECT_EQ(window.log->lines, Lines{"MousePointer=0"});
}

TEST_F(MainWindowTest, TooFewWordsShowTheHelpAndOfferACommand) {
    form.Form_Load();
    for (const char* const command : {"", "-a_codecs"}) {
        factory.encoders.clear();
        Go("-bogus command");
        window.info.text = "what was there before\r\n";
        window.log->lines.clear();
        Go(command);
        EXPECT_EQ(window.log->lines,
                  (Lines{"lblStatus=Initializing Codecs...", "Beep",
                         "lblStatus=Change parameters, then press Go.  (Help is above)"}));
        EXPECT_EQ(Pane().size(), 308U) << command;
        EXPECT_TRUE(window.info.scrolled);
        EXPECT_EQ(window.command_box.text, kOffered);
        EXPECT_EQ(form.Status(), ExitStatus::Done);
        EXPECT_EQ(factory.encoders.size(), 1U) << "help takes no new encoder";
    }
}

TEST_F(MainWindowTest, AnEmptyBoxTakesTheArguments) {
    window.arguments = kCommand;
    Go("");
    EXPECT_EQ(window.command_box.text, kCommand);
    EXPECT_EQ(Started(), 1);
    window.arguments = "-something else";
    form.cmdGo_Click();
    EXPECT_EQ(window.command_box.text, kCommand) << "a box with text keeps it";
}

TEST_F(MainWindowTest, GoEncodesAndTheStoppedStateReportsOnce) {
    Go(std::string(kCommand) + " -silent");
    EXPECT_EQ(window.status.caption, "Initializing Codecs...");
    EXPECT_TRUE(factory.log->Has("AutoSetFileSource(/home/a.avi)"));
    EXPECT_EQ(Started(), 1);
    EXPECT_TRUE(form.IsBusy());
    EXPECT_THAT(Pane(), IsEmpty());
    Encoder().Deliver(EncoderState::Running);
    Finish();
    EXPECT_EQ(window.status.caption, "  Done.");
    EXPECT_EQ(PaneCount(kCompleted), 1);
    EXPECT_EQ(PaneCount("Overall:"), 1) << "a single file has its report, silent or not";
    EXPECT_FALSE(form.IsBusy());
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, EnterIsGoAndOtherKeysAreNot) {
    window.command_box.text = kCommand;
    form.txtCmd_KeyPress(65);
    EXPECT_EQ(Started(), 0);
    form.txtCmd_KeyPress(platform::kEnterKey);
    EXPECT_EQ(Started(), 1);
}

struct EndCase {
    const char* why;
    const char* command;
    const char* failing;  // operation
    ExitStatus status;
    std::uint32_t number;  // of the report's error
    const char* error;     // how the description in the report begins
    Lines pane;
};

TEST_F(MainWindowTest, GoEndsWithOneLineAStatusAndTheErrorAsValues) {
    constexpr std::uint32_t kAskedFor = platform::kUnspecified;
    // clang-format off
    const EndCase cases[] = {
        // why, command, failing operation, status, number, error, pane
        {"two blanks are an empty word", "-silent  -audioonly", "", ExitStatus::Refused,
         0, "Invalid parameter: ", {"Invalid parameter: "}},
        {"an option last without its text", "-silent -output", "", ExitStatus::Refused,
         platform::kElementNotFound, "The command ends", {"Error: 0x8002000B - "}},
        {"no number", "-a_mode x", "", ExitStatus::Refused, 0, "Expect", {"Expect integer value for parameter -a_mode"}},
        {"no such profile", "-input a.avi -profile x", "", ExitStatus::Refused,
         0, "No predefined", {"No predefined profile found."}},
        {"no encoder can be made ready", kCommand, "Encoder.PrepareToEncode", ExitStatus::Refused,
         kAskedFor, "asked for", {"Prepare to encode failed with error -2147467259 asked for"}},
        {"the encoder does not start", kCommand, "Encoder.Start", ExitStatus::Failed,
         kAskedFor, "asked for", {"Start encoder failed with error -2147467259 asked for"}},
        {"the input cannot be opened", kCommand, "AutoSetFileSource", ExitStatus::Refused,
         kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
        {"the profile cannot be attached", kCommand, "Group.Profile=", ExitStatus::Refused,
         kAskedFor, "asked for", {"Invalid profile: 0x80004005 asked for"}},
        {"set-up lets an error pass", kCommand, "File.LocalFileName", ExitStatus::Refused,
         kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
        {"a file's information", "-input a.avi", "", ExitStatus::Done, 0, nullptr, {"General", "Format : AVI"}},
        {"a file without information", "-input a.avi", "MediaInfo.Description", ExitStatus::Refused,
         kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
        {"a folder needs an output", "-input /home -profile av100", "", ExitStatus::Refused,
         0, "Error: No output directory", {"Error: No output directory specified"}},
    };
    // clang-format on
    for (const EndCase& c : cases) {
        test_support::FakeWindow fresh_window;
        test_support::FakeFactory fresh_factory;
        frmMain fresh(fresh_window, fresh_factory, [] { return WallTime{}; });
        if (*c.failing != '\0')
            fresh_factory.log->Fail(c.failing, platform::kUnspecified, "asked for", 1);
        fresh_window.command_box.text = c.command;
        fresh.cmdGo_Click();
        const Lines pane = fresh_window.PaneLines();
        ASSERT_EQ(pane.size(), c.pane.size()) << c.why << ": " << fresh_window.info.text;
        for (std::size_t i = 0; i < pane.size(); ++i)
            EXPECT_THAT(pane[i], StartsWith(c.pane[i])) << c.why;
        EXPECT_EQ(fresh.Status(), c.status) << c.why;
        EXPECT_FALSE(fresh.IsBusy()) << c.why;
        const auto error = fresh.Report().last.error;
        EXPECT_EQ(error.has_value(), c.error != nullptr) << c.why;
        if (error && c.error != nullptr) {
            EXPECT_EQ(error->number, c.number) << c.why;
            EXPECT_THAT(error->description, StartsWith(c.error)) << c.why;
        }

        fresh_window.command_box.text = "-input a.avi -output b.wmv -profile av100";
        fresh.cmdGo_Click();
        EXPECT_TRUE(fresh.IsBusy()) << c.why << ": the next command runs";
        EXPECT_EQ(fresh.Status(), ExitStatus::Done) << c.why;
    }
}

TEST_F(MainWindowTest, AnErrorWhileRunningIsTheStatusUntilTheNextCommand) {
    Go(kCommand);
    Encoder().events->OnError(static_cast<std::int32_t>(platform::kDiskFull), "no room");
    Finish();
    EXPECT_THAT(Pane(), ElementsAre("Error: 0x80070070 - no room",
                                    "Error occurred in transcoding: Error Code = 0x80070070"));
    EXPECT_EQ(form.Status(), ExitStatus::Failed);
    Go("-input a.avi");
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, SplitWordsGoToTheParserAsTheyAre) {
    form.RunCommand({"-devices"});
    EXPECT_THAT(Pane(), ElementsAre("audio device:", "video device:"));
    EXPECT_EQ(form.Status(), ExitStatus::Done);
    form.RunCommand({"-bogus"});
    EXPECT_EQ(Pane().back(), "Invalid parameter: -bogus");
    EXPECT_EQ(form.Status(), ExitStatus::Refused);
    form.RunCommand(
        {"-input", "a.avi", "-output", "a.wmv", "-profile", "av100", "-title", "two words"});
    EXPECT_TRUE(factory.log->Has("DisplayInfo.Title=two words"));
    form.Form_Load();
    form.RunCommand({});
    EXPECT_EQ(window.status.caption, "Change parameters, then press Go.  (Help is above)");
    EXPECT_EQ(window.command_box.text, kOffered);
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, TheFirstTickRunsGoOnce) {
    window.arguments = kCommand;
    form.Form_Load();
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 1);
    EXPECT_EQ(window.label1.caption, "") << "the tick of the first run shows no progress";
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 1);
    EXPECT_THAT(window.label1.caption, StartsWith("Elapsed time: "));
}

TEST_F(MainWindowTest, TicksWithoutAnEncoderAreQuiet) {
    form.Form_Load();
    form.Timer1_Timer();
    window.log->lines.clear();
    const std::string pane = window.info.text;
    form.Timer1_Timer();
    EXPECT_THAT(window.log->lines, IsEmpty());
    EXPECT_EQ(window.info.text, pane);
}

TEST_F(MainWindowTest, AHostsOwnFirstCommandTakesThePlaceOfTheAutomaticOne) {
    window.arguments = kCommand;
    form.Form_Load();
    form.RunCommand({"-devices"});
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 0);
}

TEST_F(MainWindowTest, StopBeforeAnyGoDoesNothing) {
    form.Form_Load();
    window.log->lines.clear();
    form.cmdStop_Click();
    EXPECT_THAT(window.log->lines, IsEmpty());
    EXPECT_TRUE(window.timer.enabled);
}

TEST_F(MainWindowTest, StopEndsTheRunGracefullyAndMayComeTwice) {
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    form.cmdStop_Click();
    EXPECT_EQ(window.status.caption, "Stopped by user.");
    EXPECT_FALSE(window.timer.enabled);
    EXPECT_TRUE(form.IsBusy()) << "its file is not finished yet";
    form.cmdStop_Click();
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 2);
    Finish();
    EXPECT_EQ(window.status.caption, "  Done.");
    EXPECT_EQ(window.percent.caption, "100%");
    EXPECT_EQ(PaneCount(kCompleted), 1);
    EXPECT_FALSE(form.IsBusy());
    form.cmdStop_Click();
    EXPECT_EQ(window.status.caption, "Stopped by user.");
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, PausesTheRunAndLetsItGoOn) {
    form.PauseOrResume();
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    form.PauseOrResume();
    EXPECT_EQ(factory.log->Count("Encoder.Pause"), 1);
    Encoder().Deliver(EncoderState::Paused);
    EXPECT_EQ(form.Progress().state, EncoderState::Paused);
    EXPECT_TRUE(window.timer.enabled);
    form.PauseOrResume();
    EXPECT_EQ(Started(), 2);
    factory.log->Fail("Encoder.Pause", platform::kUnspecified, "asked for");
    form.PauseOrResume();
    EXPECT_EQ(Pane().back(), "Error: 0x80004005 - asked for");
    Encoder().Deliver(EncoderState::Paused);
    form.cmdStop_Click();
    Finish();
    form.PauseOrResume();
    EXPECT_EQ(Started(), 2) << "nothing runs any more";
    EXPECT_EQ(PaneCount(kCompleted), 1);
}

/// Notes what a host hears of runs.
class NotingListener : public platform::RunListener {
  public:
    void OnFileEnd(const platform::FileReport& report) override {
        heard.emplace_back("file");
        files.push_back(report);
    }
    void OnStateChange(EncoderState state) override {
        heard.push_back("state " + std::to_string(static_cast<int>(state)));
    }
    void OnCommandEnd(const platform::CommandReport& report) override {
        heard.push_back((report.is_folder ? "folder " : "end ") +
                        std::to_string(static_cast<int>(report.last.end)));
    }
    std::vector<std::string> heard;
    std::vector<platform::FileReport> files;
};

TEST_F(MainWindowTest, AHostHearsOfStatesAndOfTheEnd) {
    NotingListener listener;
    form.SetRunListener(&listener);
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    Encoder().Deliver(EncoderState::Paused);
    Go("-input a.avi -output out/b.wmv");
    EXPECT_EQ(std::exchange(listener.heard, {}), (Lines{"state 2", "state 3", "state 5"}))
        << "the first run is let go of";
    Encoder().Deliver(EncoderState::Running);
    form.cmdStop_Click();
    Finish();
    EXPECT_EQ(std::exchange(listener.heard, {}), (Lines{"state 2", "end 2", "state 5"}));
    Go("-a_codecs -silent");
    Go("-bogus command");
    EXPECT_THAT(listener.heard, IsEmpty()) << "nothing was encoded";
    form.SetRunListener(nullptr);
}

TEST_F(MainWindowTest, ReportsWhatEarlierCommandsLeftInForce) {
    Go("-input a.avi -output out/a.wmv -Profile av100 -title one");
    EXPECT_THAT(form.Report().carried_over, IsEmpty());
    Finish();
    Go("-input a.avi -output b.wmv");
    EXPECT_THAT(form.Report().carried_over, ElementsAre("-Profile av100", "-title one"));
    Finish();
    ASSERT_TRUE(form.NewSession());
    Go("-input a.avi -output b.wmv");
    EXPECT_THAT(form.Report().carried_over, IsEmpty());
}

TEST_F(MainWindowTest, AMistypedOptionIsRecognised) {
    struct Case {
        const char* command;
        const char* hint;
    };
    for (const Case& c : {Case{"-input a.avi -prfile av100", "Did you mean -profile?"},
                          Case{"-input a.avi -OUTPT b.wmv", "Did you mean -output?"},
                          Case{"-input a.avi -wholly_unlike", ""}, Case{"-a_mode x", ""},
                          Case{"-input a.avi -output b.wmv", ""}}) {
        Go(c.command);
        EXPECT_EQ(form.Report().hint, c.hint) << c.command;
    }
}

TEST_F(MainWindowTest, GoWhileAnEncoderRunsLetsItsFileFinish) {
    Go(kCommand);
    FakeEncoder& old = Encoder();
    old.Deliver(EncoderState::Running);
    Go("-input a.avi -output out/b.wmv");
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 1);
    EXPECT_EQ(Started(), 2);
    window.log->lines.clear();
    old.Deliver(EncoderState::Stopped);
    EXPECT_THAT(window.log->lines, IsEmpty()) << "nobody hears the old run";
    EXPECT_TRUE(form.IsBusy());
    Finish();
    EXPECT_EQ(PaneCount(kCompleted), 1);
    EXPECT_FALSE(form.IsBusy());
}

TEST_F(MainWindowTest, AListingLeavesTheRunAndItsSettingsAlone) {
    Go("-input a.avi -output out/a.wmv -profile av100 -title one");
    Encoder().Deliver(EncoderState::Running);
    factory.files->AddFile("/home/two words.avi");
    const std::vector<std::string> listings[] = {{"-devices"},  {"-a_codecs"},
                                                 {"-v_codecs"}, {"-a_formats"},
                                                 {"-help"},     {"-input", "two words.avi"}};
    for (const auto& words : listings) {
        const std::size_t before = Pane().size();
        form.RunListing(words);
        EXPECT_GT(Pane().size(), before) << words[0];
    }
    EXPECT_TRUE(factory.log->Has("MediaInfo.FileName=/home/two words.avi"));
    factory.log->Fail("MediaInfo.Description", platform::kUnspecified, "asked for", 1);
    form.RunListing({"-input", "b.avi"});
    EXPECT_EQ(Pane().back(), "Error: 0x80004005 - asked for");
    EXPECT_EQ(factory.encoders.size(), 1U);
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 0);
    EXPECT_THAT(window.status.caption, StartsWith("  Running..."));
    EXPECT_TRUE(form.IsBusy());
    Finish();
    EXPECT_EQ(form.Status(), ExitStatus::Done);
    Go("-output out/b.wmv -silent");
    EXPECT_EQ(factory.log->Of("AutoSetFileSource"),
              (Lines{"AutoSetFileSource(/home/a.avi)", "AutoSetFileSource(/home/a.avi)"}))
        << "the file that was looked at is not the next input";
}

TEST_F(MainWindowTest, AListingWithoutARunIsACommand) {
    form.Form_Load();
    window.status.caption = "  Done.";
    form.RunListing({"-devices"});
    EXPECT_THAT(Pane(), ElementsAre("audio device:", "video device:"));
    EXPECT_EQ(window.status.caption, "  Done.") << "nothing would take another text back";
    form.Timer1_Timer();
    const Lines pane = Pane();
    EXPECT_EQ(pane.size(), 310U) << "the first run comes all the same";
    EXPECT_EQ(Lines(pane.end() - 2, pane.end()), (Lines{"audio device:", "video device:"}));
    EXPECT_EQ(window.command_box.text, kOffered);
}

TEST_F(MainWindowTest, AListingBeforeTheFirstTickLeavesTheArgumentsTheirRun) {
    window.arguments = kCommand;
    form.RunListing({"-devices"});
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 1);
}

TEST_F(MainWindowTest, ANewSessionForgetsEverySetting) {
    window.command_box.text = std::string(kCommand) + " -title one";
    form.Timer1_Timer();  // the first tick is Go
    EXPECT_FALSE(form.NewSession()) << "not while its file is being written";
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 0);
    Encoder().Deliver(EncoderState::Running);
    form.Timer1_Timer();
    Finish();
    ASSERT_TRUE(form.NewSession());
    EXPECT_EQ(window.bar.current, 0);
    for (const auto* label : {&window.file, &window.media_length, &window.percent, &window.label1,
                              &window.label2, &window.label3})
        EXPECT_EQ(label->caption, "") << label->name;

    form.cmdStop_Click();
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 0) << "there is nothing to stop";
    factory.log->lines.clear();
    factory.profiles.clear();
    Go("-input a.avi -output out/b.wmv -a_mode 0");
    EXPECT_EQ(Started(), 1) << window.info.text;
    EXPECT_FALSE(factory.log->Has("DisplayInfo.Title=one"));
    EXPECT_EQ(factory.profiles.size(), 1U) << "the old profile is not used again";
}

TEST_F(MainWindowTest, ANewSessionAfterAFailureHasNoStatusOfIt) {
    Go(kCommand);
    Encoder().events->OnError(static_cast<std::int32_t>(platform::kDiskFull), "no room");
    Finish();
    ASSERT_TRUE(form.NewSession());
    form.RunListing({"-devices"});
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

/// Two files and one below, encoded by a user who does one thing at each idle moment.
class FolderTest : public MainWindowTest {
  protected:
    FolderTest() {
        factory.files->AddFile("/home/in/a.avi");
        factory.files->AddFile("/home/in/b.avi");
        factory.files->AddFile("/home/in/below/c.avi");
        window.loop.on_idle = [this] {
            ASSERT_LT(next, steps.size()) << "nothing more to do";
            steps[next++]();
        };
    }
    Lines Inputs() const { return factory.log->Of("AutoSetFileSource"); }

    static constexpr char kFolder[] = "-input in -output out -profile av100";
    const std::function<void()> finish = [this] { Finish(); };
    std::vector<std::function<void()>> steps;
    std::size_t next = 0;
};

TEST_F(FolderTest, EachFileHasItsRunAndItsReport) {
    bool busy = false;
    steps = {finish, [&] { busy = form.IsBusy(), Finish(); }, finish};
    Go(kFolder);
    EXPECT_TRUE(busy);
    EXPECT_THAT(Inputs(), ElementsAre("AutoSetFileSource(/home/in/a.avi)",
                                      "AutoSetFileSource(/home/in/b.avi)",
                                      "AutoSetFileSource(/home/in/below/c.avi)"));
    EXPECT_EQ(PaneCount(kCompleted), 3);
    EXPECT_EQ(PaneCount("Overall:"), 3);
    EXPECT_FALSE(form.IsBusy());
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(FolderTest, AHostHearsOfTheFoldersEndOnce) {
    NotingListener listener;
    form.SetRunListener(&listener);
    steps = {finish, finish, finish};
    Go(kFolder);
    EXPECT_EQ(listener.heard,
              (Lines{"state 5", "file", "state 5", "file", "state 5", "file", "folder 1"}));
    form.SetRunListener(nullptr);
}

TEST_F(FolderTest, AFilesEndHasItsOwnErrorAndNoneOfItsNeighbours) {
    factory.files->AddFile("/home/in/a.mpg");
    factory.files->AddFile("/home/in/notes.txt");
    NotingListener listener;
    form.SetRunListener(&listener);
    steps = {[this] {
                 factory.files->AddFile("/home/out/a.wmv");
                 factory.log->Fail("Encoder.PrepareToEncode", platform::kInvalidData, "broken", 1);
                 Finish();
             },
             finish};
    Go(kFolder);
    Lines ends;
    for (const platform::FileReport& file : listener.files)
        ends.push_back(file.input + " " + std::to_string(static_cast<int>(file.end)) +
                       (file.error ? " " + file.error->description : ""));
    EXPECT_THAT(ends,
                ElementsAre("/home/in/a.avi 1", "/home/in/b.avi 3 broken",
                            "/home/in/a.mpg 3 Skipping: a.mpg, since this walk has already written "
                            "/home/out/a.wmv",
                            "/home/in/below/c.avi 1"));
    EXPECT_EQ(listener.files.at(1).error->number, platform::kInvalidData);
    form.SetRunListener(nullptr);
}

TEST_F(FolderTest, SilentLeavesTheReportsOut) {
    steps = {finish, finish, finish};
    Go(std::string(kFolder) + " -silent");
    EXPECT_EQ(PaneCount(kCompleted), 3);
    EXPECT_EQ(PaneCount("Overall:"), 0);
}

TEST_F(FolderTest, AnyFailedFileIsTheWalksStatus) {
    const auto fail = [this] {
        Encoder().events->OnError(static_cast<std::int32_t>(platform::kInvalidData), "broken");
        Finish();
    };
    steps = {fail, finish, finish};
    Go(kFolder);
    EXPECT_EQ(PaneCount(kCompleted), 2);
    EXPECT_EQ(form.Status(), ExitStatus::Failed);

    factory.log->Fail("Encoder.PrepareToEncode", platform::kUnspecified, "asked for", 1);
    steps = {finish, finish};
    next = 0;
    Go(kFolder);
    EXPECT_EQ(next, 2U);
    EXPECT_EQ(form.Status(), ExitStatus::Failed);
}

TEST_F(FolderTest, StopEndsTheFileAndTheWalk) {
    steps = {finish, [this] { form.cmdStop_Click(); }, finish};
    Go(kFolder);
    EXPECT_EQ(next, 3U) << "the walk waits for the stopped file";
    EXPECT_EQ(Started(), 2);
    EXPECT_EQ(PaneCount(kCompleted), 2);
    EXPECT_FALSE(form.IsBusy());
    EXPECT_EQ(form.Status(), ExitStatus::Done);

    steps = {finish, finish, finish};
    next = 0;
    Go(kFolder);
    EXPECT_EQ(Started(), 5) << "the next walk is not stopped";
}

TEST_F(FolderTest, AnExplanationIsStoppedToo) {
    const std::string explain = std::string("--explain ") + kFolder;
    window.loop.Post([this] { form.cmdStop_Click(); });
    Go(explain);
    EXPECT_THAT(Inputs(), IsEmpty());
    EXPECT_FALSE(form.IsBusy());
    Go(explain);
    EXPECT_EQ(Inputs().size(), 3U) << "the next one is not";
}

TEST_F(FolderTest, AnotherGoEndsTheWalkAndKeepsItsOwnSession) {
    FakeEncoder* walked = nullptr;
    steps = {finish, [&] {
                 walked = &Encoder();
                 Go(kCommand);
             }};
    Go(kFolder);
    EXPECT_EQ(Inputs().back(), "AutoSetFileSource(/home/a.avi)");
    EXPECT_EQ(Started(), 3);
    EXPECT_EQ(Encoder().groups.items.size(), 1U) << "the walk must not tear the new session down";
    EXPECT_TRUE(form.IsBusy());
    walked->Deliver(EncoderState::Stopped);
    EXPECT_EQ(PaneCount(kCompleted), 1) << "of the first file only";
    Finish();
    EXPECT_EQ(PaneCount(kCompleted), 2);
    EXPECT_FALSE(form.IsBusy());
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(FolderTest, AnotherFolderTakesTheWalkOver) {
    factory.files->AddFile("/home/other/x.avi");
    factory.files->AddFile("/home/other/y.avi");
    steps = {[this] { Go("-input other -output out"); }, finish, finish};
    Go(kFolder);
    EXPECT_THAT(Inputs(), ElementsAre("AutoSetFileSource(/home/in/a.avi)",
                                      "AutoSetFileSource(/home/other/x.avi)",
                                      "AutoSetFileSource(/home/other/y.avi)"));
    EXPECT_EQ(PaneCount(kCompleted), 2);
    EXPECT_TRUE(form.IsBusy()) << "the first folder's file is still being finished";
    factory.encoders[1]->Deliver(EncoderState::Stopped);
    EXPECT_FALSE(form.IsBusy());
}

TEST_F(FolderTest, ACommandThatIsRefusedDuringTheWalkEndsItWithItsOwnStatus) {
    steps = {[this] {
        FakeEncoder& walked = Encoder();
        Go("-input a.avi -bogus");
        walked.Deliver(EncoderState::Stopped);
        EXPECT_TRUE(form.IsBusy()) << "the walk has not yet had its turn to end";
    }};
    Go(kFolder);
    EXPECT_EQ(Started(), 1);
    EXPECT_EQ(Pane().back(), "Invalid parameter: -bogus");
    EXPECT_EQ(form.Status(), ExitStatus::Refused);
    EXPECT_FALSE(form.IsBusy());
}

TEST_F(FolderTest, HelpDuringTheWalkLetsItGoOn) {
    form.Form_Load();
    steps = {[this] { Go("-help"); }, finish, finish, finish};
    Go(kFolder);
    EXPECT_EQ(Started(), 3);
}

TEST_F(FolderTest, TicksDuringTheAutomaticWalkShowProgressAndDoNotStartItAgain) {
    window.arguments = kFolder;
    form.Form_Load();
    steps = {[this] { form.Timer1_Timer(); }, finish, finish, finish};
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 3);
    EXPECT_THAT(window.label1.caption, StartsWith("Elapsed time: "));
}

}  // namespace
}  // namespace app
