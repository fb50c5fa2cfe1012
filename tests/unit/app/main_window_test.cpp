// What the form does with a command, a key and a tick.
#include "support/row_name.h"
#include "unit/app/main_window_fixture.h"

namespace app {
namespace {

using platform::EncoderState;
using platform::ExitStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

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

constexpr std::uint32_t kAskedFor = platform::kUnspecified;

// clang-format off
const EndCase kEndCases[] = {
    // why, command, failing operation, status, number, error, pane
    {"an option last without its text", "-silent -output", "", ExitStatus::Refused,
     platform::kElementNotFound, "The command ends", {"Error: 0x8002000B - "}},
    {"no number", "-a_mode x", "", ExitStatus::Refused, 0, "Expect", {"Expect integer value for parameter -a_mode"}},
    {"no such profile", "-input a.avi -profile x", "", ExitStatus::Refused, 0, "No predefined", {"No predefined profile found."}},
    {"no encoder can be made ready", kCommand, "Encoder.PrepareToEncode", ExitStatus::Refused,
     kAskedFor, "asked for", {"Prepare to encode failed with error -2147467259 asked for"}},
    {"the encoder does not start", kCommand, "Encoder.Start", ExitStatus::Failed,
     kAskedFor, "asked for", {"Start encoder failed with error -2147467259 asked for"}},
    {"the input cannot be opened", kCommand, "AutoSetFileSource", ExitStatus::Refused, kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
    {"the profile cannot be attached", kCommand, "Group.Profile=", ExitStatus::Refused,
     kAskedFor, "asked for", {"Invalid profile: 0x80004005 asked for"}},
    {"set-up lets an error pass", kCommand, "File.LocalFileName", ExitStatus::Refused, kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
    {"a file's information", "-input a.avi", "", ExitStatus::Done, 0, nullptr, {"General", "Format : AVI"}},
    {"a file without information", "-input a.avi", "MediaInfo.Description", ExitStatus::Refused,
     kAskedFor, "asked for", {"Error: 0x80004005 - asked for"}},
    {"a folder needs an output", "-input /home -profile av100", "", ExitStatus::Refused,
     0, "Error: No output directory", {"Error: No output directory specified"}},
};
// clang-format on

class Ends : public MainWindowTest, public testing::WithParamInterface<EndCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Ends, testing::ValuesIn(kEndCases), test_support::NameOfRow());

TEST_P(Ends, OfGoAreOneLineAStatusAndTheErrorAsValues) {
    const EndCase& c = GetParam();
    if (*c.failing != '\0') factory.log->Fail(c.failing, kAskedFor, "asked for", 1);
    Go(c.command);
    const Lines pane = Pane();
    ASSERT_EQ(pane.size(), c.pane.size()) << window.info.text;
    for (std::size_t i = 0; i < pane.size(); ++i) EXPECT_THAT(pane[i], StartsWith(c.pane[i]));
    EXPECT_EQ(form.Status(), c.status);
    EXPECT_FALSE(form.IsBusy());
    const auto error = form.Report().last.error;
    EXPECT_EQ(error.has_value(), c.error != nullptr);
    if (error && c.error != nullptr) {
        EXPECT_EQ(error->number, c.number);
        EXPECT_THAT(error->description, StartsWith(c.error));
    }

    Go("-input a.avi -output b.wmv -profile av100");
    EXPECT_TRUE(form.IsBusy()) << "the next command runs";
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, SplitWordsGoToTheParserAsTheyAre) {
    form.RunCommand({"-devices"});
    EXPECT_THAT(Pane(), ElementsAre("audio device:", "video device:"));
    EXPECT_EQ(form.Status(), ExitStatus::Done);
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

TEST_F(MainWindowTest, AHostsOwnFirstCommandTakesThePlaceOfTheAutomaticOne) {
    window.arguments = kCommand;
    form.Form_Load();
    form.RunCommand({"-devices"});
    form.Timer1_Timer();
    EXPECT_EQ(Started(), 0);
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

}  // namespace
}  // namespace app
