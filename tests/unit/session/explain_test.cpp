// Explanations over the fakes: which lines appear, which are marked, and what is never written.
#include "session/explain.h"

#include "session/read_only_files.h"
#include "session_test.h"

namespace session {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST(Explain, ASourcesPropertyStandsThereOnceItWasSet) {
    Session session;
    session.AddSources(true, true);
    session.state.g_objSrcVid->SetMarkIn(1500);
    ExplainSession(session.state, {}, session.pane);
    const Lines lines = session.pane.Take();
    EXPECT_THAT(lines, Contains("video.MarkIn = 1500"));
    EXPECT_THAT(lines, Contains("video.MarkOut = 0"));
    EXPECT_THAT(lines, Not(Contains("video.CroppingTopMargin = 0")));
}

TEST(Explain, TheOptionThatDecidesAValueSaysWhetherItIsCarriedOver) {
    struct Case {
        const char* why;
        std::string before;  // the profile code of earlier commands
        std::optional<std::int32_t> width_before;
        std::set<std::string_view> typed;
        bool carried;
    };
    const Case kCases[] = {
        // why                                       before   width  typed            carried
        {"nothing decided it", "", {}, {}, false},
        {"typed now", "", {}, {"-v_width"}, false},
        {"typed earlier", "", 160, {}, true},
        {"typed earlier and again", "", 160, {"-v_width"}, false},
        {"an earlier profile's", "av100", {}, {"-output"}, true},
        {"an earlier profile, overruled now", "av100", {}, {"-v_width"}, false},
        {"a new profile, overruled by an earlier width", "av100", 160, {"-profile"}, true},
    };
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.why);
        Session session;
        session.AddSources(false, true);
        session.state.g_objSrcGrp->SetProfile(test_support::FakeProfile(session.factory.log));
        const auto audience = session.state.g_objSrcGrp->Profile()->AddAudience(0);
        audience->SetVideoWidth(0, 320);
        CommandOrigin origin{{}, each.typed};
        origin.before.profile = each.before;
        origin.before.v_width = each.width_before;
        ExplainSession(session.state, origin, session.pane);
        const std::string line = "audience.VideoWidth = 320";
        EXPECT_THAT(session.pane.Take(), Contains(line + (each.carried ? " (carried over)" : "")));
    }
}

TEST(Explain, AValueKeepsToItsLine) {
    EXPECT_EQ(ExplainLine("display.Title", "a\nb\x7F\\ \xC3\xA9"),
              "display.Title = a\\x0Ab\\x7F\\\\ \xC3\xA9");
}

TEST(ReadOnlyFiles, NotesWritesOnceAndGoesOnAsIfTheyHadHappened) {
    const auto under = std::make_shared<test_support::FakeFileSystem>();
    ReadOnlyFiles files(under);
    files.CreateFolder("out");
    files.CreateFolder("/home/out");
    files.OpenTextFile("out/job.weu", platform::OpenMode::Writing, true)->Write("text");
    files.PretendFile("out/a.wmv");
    EXPECT_TRUE(files.FolderExists("out"));
    EXPECT_TRUE(files.FileExists("/home/out/a.wmv"));
    EXPECT_TRUE(files.IsSame("out/a.wmv", "/home/out/a.wmv"));
    EXPECT_FALSE(under->FolderExists("out"));
    EXPECT_FALSE(under->FileExists("out/job.weu"));
    Lines paths;
    for (const ReadOnlyFiles::Write& write : files.TakeWrites()) paths.push_back(write.path);
    EXPECT_THAT(paths, ElementsAre("/home/out", "/home/out/job.weu"));
    EXPECT_THAT(files.TakeWrites(), IsEmpty());
}

}  // namespace
}  // namespace session
