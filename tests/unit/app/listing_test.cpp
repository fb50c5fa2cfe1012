// Listings beside a run, and sessions that begin anew.
#include "unit/app/main_window_fixture.h"

namespace app {
namespace {

using platform::EncoderState;
using platform::ExitStatus;
using testing::ElementsAre;
using testing::StartsWith;

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

}  // namespace
}  // namespace app
