// A folder from Go to its last report.
#include "unit/app/main_window_fixture.h"

namespace app {
namespace {

using platform::EncoderState;
using platform::ExitStatus;
using test_support::FakeEncoder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

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

TEST_F(FolderTest, AnyFailedFileIsTheWalksStatus) {
    const auto fail = [this] {
        Encoder().events->OnError(static_cast<std::int32_t>(platform::kInvalidData), "broken");
        Finish();
    };
    steps = {fail, finish, finish};
    Go(kFolder);
    EXPECT_EQ(PaneCount(kCompleted), 2);
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
