#include "session/directory_mode.h"

#include "session_test.h"

namespace {

using session::FileRunEnd;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kFolderLine = "============== Encoding Files in Folder ============== ";

/// Runs that write their output file at once; `ends` holds how those of some inputs end.
class FakeRun : public session::FileRun {
  public:
    explicit FakeRun(Session& owner) : session_(owner) {}

    void PrepareSession() override {
        auto& state = session_.state;
        clean = clean && !state.g_objSrcGrp && !state.g_objSrcAud && !state.g_objSrcVid;
        state.g_objEncoder = session_.factory.MakeEncoder();
    }
    FileRunEnd RunToEnd() override {
        const std::string& input = session_.settings.input;
        const std::string output = session_.encoder().file.LocalFileName();
        runs.push_back(input + " > " + output);
        const auto found = ends.find(input);
        const FileRunEnd end = found == ends.end() ? FileRunEnd::Completed : found->second;
        if (end != FileRunEnd::NotStarted) session_.files().AddFile(output);
        if (on_run) on_run();
        return end;
    }
    void HandleEvents() override {
        if (on_events) on_events();
    }
    bool WalkCancelled() const override { return cancelled; }

    Lines runs;
    std::map<std::string, FileRunEnd> ends;
    std::function<void()> on_run;
    std::function<void()> on_events;
    bool cancelled = false;
    bool clean = true;  // every file began without sources

  private:
    Session& session_;
};

struct Walker {
    Walker() {
        session.settings.input = "/in";
        session.settings.output = "/out";
    }
    bool Go() { return mode.DoDirectoryModeEncoding(); }
    /// The pane's lines but for those of folders and inputs.
    Lines OtherLines() const {
        Lines lines = session.pane.lines;
        std::erase_if(lines,
                      [](const std::string& line) { return platform::StartsWith(line, "====="); });
        return lines;
    }

    Session session;
    FakeRun run{session};
    session::EncoderSetup setup{session.state, session.settings, session.pane, session.factory};
    session::DirectoryMode mode{session.state, session.settings, session.pane, setup, run};
};

struct TreeCase {
    const char* why;
    Lines tree;                                // files; what ends in "/" is a folder, in "|" a pipe
    std::map<std::string, std::string> links;  // also listed as folders
    const char* output;
    Lines runs;
    Lines lines;
    bool failed = false;
};

// clang-format off
const TreeCase kTreeCases[] = {
    {"accepted in any case; skipped without an accepted extension, or any",
     {"/in/A.AVI", "/in/notes.txt", "/in/README", "/in/avi", "/in/b."}, {}, "/out",
     {"/in/A.AVI > /out/A.wmv"},
     {"Skipping: notes.txt", "Skipping: README", "Skipping: avi", "Skipping: b."}},
    {"only the last dot separates", {"/in/x.y.avi", "/in/a.avi.txt"}, {}, "/out", {"/in/x.y.avi > /out/x.y.wmv"}, {"Skipping: a.avi.txt"}},
    {"files before sub-folders, the tree mirrored, relative names made absolute",
     {"/in/s/t/c.mp3", "/in/s/b.vob", "/in/a.mpeg", "/in/e/"}, {}, "out",
     {"/in/a.mpeg > /home/out/a.wmv", "/in/s/b.vob > /home/out/s/b.wmv",
      "/in/s/t/c.mp3 > /home/out/s/t/c.wmv"}, {}},
    {"one name twice is written once", {"/in/a.avi", "/in/a.mpg", "/in/s/a.avi"}, {}, "/out",
     {"/in/a.avi > /out/a.wmv", "/in/s/a.avi > /out/s/a.wmv"},
     {"Skipping: a.mpg, since this walk has already written /out/a.wmv"}, true},
    {"what an earlier walk has written is written anew", {"/in/a.avi", "/out/a.wmv"}, {}, "/out", {"/in/a.avi > /out/a.wmv"}, {}},
    {"letter case as the file system has it", {"/in/a.avi", "/in/A.mpg", "/out/A.wmv"},
     {{"/out/A.wmv", "/out/a.wmv"}}, "/out", {"/in/a.avi > /out/a.wmv"},
     {"Skipping: A.mpg, since this walk has already written /out/A.wmv"}, true},
    {"the output folder below the input is not walked",
     {"/in/a.avi", "/in/out/old.avi", "/in/s/b.avi"}, {}, "/in/out",
     {"/in/a.avi > /in/out/a.wmv", "/in/s/b.avi > /in/out/s/b.wmv"}, {"Skipping: out"}},
    {"nor reached through a link", {"/in/a.avi", "/out/old.avi"}, {{"/in/link", "/out"}}, "/out", {"/in/a.avi > /out/a.wmv"}, {"Skipping: link"}},
    {"into its own folder, no input is written over, read or still to read",
     {"/in/b.wmv", "/in/a.avi", "/in/a.wmv", "/in/b.avi", "/in/s/b.avi"}, {}, "/in",
     {"/in/s/b.avi > /in/s/b.wmv"},
     {"Skipping: b.wmv, since /in/b.wmv is an input of this walk",
      "Skipping: a.avi, since /in/a.wmv is an input of this walk",
      "Skipping: a.wmv, since /in/a.wmv is an input of this walk",
      "Skipping: b.avi, since /in/b.wmv is an input of this walk"}, true},
    {"nor one of another folder, or under another name",
     {"/in/a.avi", "/in/b.avi", "/in/s/a.wmv", "/out/b.wmv"},
     {{"/out/a.wmv", "/in/s/a.wmv"}, {"/in/s/old.wmv", "/out/b.wmv"}}, "/out",
     {"/in/s/a.wmv > /out/s/a.wmv", "/in/s/old.wmv > /out/s/old.wmv"},
     {"Skipping: a.avi, since /out/a.wmv is an input of this walk",
      "Skipping: b.avi, since /out/b.wmv is an input of this walk"}, true},
    {"an output is no input, also where the mirrored tree meets the input's",
     {"/in/in/x/a.avi", "/in/x/b.avi"}, {}, "/",
     {"/in/in/x/a.avi > /in/x/a.wmv", "/in/x/b.avi > /x/b.wmv"}, {}},
    {"links that lead back up", {"/in/s/a.avi"}, {{"/in/s/self", "/in/s"}, {"/in/s/top", "/in"}},
     "/out", {"/in/s/a.avi > /out/s/a.wmv"}, {"Skipping: self", "Skipping: top"}},
    {"a folder with two names is walked once", {"/in/s/a.avi"},
     {{"/in/s/t", "/in/t"}, {"/in/t", "/in/s"}}, "/out", {"/in/s/a.avi > /out/s/a.wmv"},
     {"Skipping: t"}},
    {"a pipe is not opened", {"/in/a.avi|", "/in/b.avi"}, {}, "/out", {"/in/b.avi > /out/b.wmv"}, {"Skipping: a.avi"}},
};
// clang-format on

TEST(DirectoryMode, Trees) {
    for (const TreeCase& each : kTreeCases) {
        SCOPED_TRACE(each.why);
        Walker walker;
        auto& files = walker.session.files();
        files.AddFolder("/in");
        for (const std::string& path : each.tree) {
            if (path.back() == '/') {
                files.AddFolder(path.substr(0, path.size() - 1));
            } else if (path.back() == '|') {
                files.AddFile(path.substr(0, path.size() - 1));
                files.special_files.insert(path.substr(0, path.size() - 1));
            } else {
                files.AddFile(path);
            }
        }
        for (const auto& [path, target] : each.links) {
            if (files.FileExists(path)) continue;
            if (files.FileExists(target)) {
                files.AddFile(path);
            } else {
                files.AddFolder(path);
            }
        }
        files.links = each.links;
        walker.session.settings.output = each.output;
        EXPECT_TRUE(walker.Go());
        EXPECT_EQ(walker.run.runs, each.runs);
        EXPECT_EQ(walker.OtherLines(), each.lines);
        EXPECT_EQ(walker.mode.AnyFailed(), each.failed);
        EXPECT_TRUE(walker.run.clean);
    }
}

TEST(DirectoryMode, EachFileStartsFromAnEmptySession) {
    Walker walker;
    walker.session.files().AddFile("/in/a.avi");
    walker.session.files().AddFile("/in/b.avi");
    walker.session.settings.a_folddown6to2 = {10, 3, 3};
    EXPECT_TRUE(walker.Go());
    EXPECT_TRUE(walker.run.clean);
    EXPECT_EQ(walker.session.encoder().attributes.Count(), 3);
    EXPECT_EQ(walker.session.encoder().groups.Count(), 0);
    EXPECT_EQ(walker.session.state.g_objSrcGrp, nullptr);
    EXPECT_EQ(walker.session.state.g_objSrcVid, nullptr);
}

struct FailureCase {
    const char* why;
    Lines runs;
    Lines lines;
    std::function<void(Walker&)> arrange;
};

// clang-format off
const FailureCase kFailureCases[] = {
    {"a set-up that refuses", {"/in/a.mpg > /out/a.wmv", "/in/b.avi > /out/b.wmv"},
     {"Error: 0x8007000D - broken"}, [](Walker& walker) {
         walker.session.factory.log->Fail("AutoSetFileSource", platform::kInvalidData, "broken", 1);
     }},
    {"a set-up that throws", {"/in/a.mpg > /out/a.wmv", "/in/b.avi > /out/b.wmv"},
     {"Error: 0x80070005 - /out"}, [](Walker& walker) {
         walker.session.files().log->Fail("CreateFolder", platform::kAccessDenied, "/out", 1);
     }},
    {"a run that did not start leaves its name to another file",
     {"/in/a.avi > /out/a.wmv", "/in/a.mpg > /out/a.wmv", "/in/b.avi > /out/b.wmv"}, {},
     [](Walker& walker) {
         walker.session.files().AddFile("/out/a.wmv");
         walker.run.ends["/in/a.avi"] = FileRunEnd::NotStarted;
     }},
    {"a run that failed has written what it could",
     {"/in/a.avi > /out/a.wmv", "/in/b.avi > /out/b.wmv"},
     {"Skipping: a.mpg, since this walk has already written /out/a.wmv"},
     [](Walker& walker) { walker.run.ends["/in/a.avi"] = FileRunEnd::Failed; }},
    {"a folder that cannot be listed", {}, {"Error: 0x80070005 - /in"}, [](Walker& walker) {
         walker.session.files().log->Fail("GetFolder", platform::kAccessDenied, "/in", 1);
     }},
};
// clang-format on

TEST(DirectoryMode, FailuresAreRememberedAndTheWalkGoesOn) {
    for (const FailureCase& each : kFailureCases) {
        SCOPED_TRACE(each.why);
        Walker walker;
        for (const char* name : {"/in/a.avi", "/in/a.mpg", "/in/b.avi"})
            walker.session.files().AddFile(name);
        each.arrange(walker);
        EXPECT_TRUE(walker.Go());
        EXPECT_EQ(walker.run.runs, each.runs);
        EXPECT_EQ(walker.OtherLines(), each.lines);
        EXPECT_TRUE(walker.mode.AnyFailed());
        EXPECT_TRUE(walker.run.clean);

        walker.session.settings.output.clear();
        walker.Go();
        EXPECT_FALSE(walker.mode.AnyFailed()) << "only the last walk counts";
    }
}

TEST(DirectoryMode, StopEndsTheWalkInEveryFolder) {
    Walker walker;
    for (const char* name : {"/in/s/t/a.avi", "/in/s/t/b.avi", "/in/s/u/c.avi", "/in/v/d.avi"})
        walker.session.files().AddFile(name);
    walker.run.on_run = [&] { walker.run.cancelled = true; };
    EXPECT_TRUE(walker.Go());
    EXPECT_THAT(walker.run.runs, ElementsAre("/in/s/t/a.avi > /out/s/t/a.wmv"));
    EXPECT_THAT(walker.session.pane.lines, Not(Contains(kFolderLine + std::string("/in/v"))));
}

TEST(DirectoryMode, StopEndsAWalkWithoutMedia) {
    for (const int moment : {1, 2, 4}) {  // while folders are listed, and after it
        Walker walker;
        for (const char* name : {"/in/s/a.txt", "/in/s/b.txt", "/in/s/c.txt", "/in/t/d.txt"})
            walker.session.files().AddFile(name);
        int left = moment;
        walker.run.on_events = [&] { walker.run.cancelled = --left <= 0; };
        EXPECT_TRUE(walker.Go());
        EXPECT_EQ(left, 0);
        EXPECT_THAT(walker.session.pane.lines, Not(Contains("Skipping: b.txt"))) << moment;
    }
}

TEST(DirectoryMode, LeavesASessionThatAnotherCommandTookOver) {
    Walker walker;
    walker.session.files().AddFile("/in/a.avi");
    walker.session.files().AddFile("/in/b.avi");
    walker.run.ends["/in/a.avi"] = FileRunEnd::Failed;
    std::shared_ptr<platform::WMEncSourceGroup> group;
    walker.run.on_run = [&] {
        walker.run.cancelled = true;
        walker.session.state.g_objEncoder = walker.session.factory.MakeEncoder();
        walker.session.AddSources(true, true);
        group = walker.session.state.g_objSrcGrp;
        walker.session.settings.input = "other.avi";
        walker.session.settings.output = "other.wmv";
    };
    EXPECT_TRUE(walker.Go());
    EXPECT_EQ(walker.session.state.g_objSrcGrp, group);
    EXPECT_NE(walker.session.state.g_objSrcVid, nullptr);
    EXPECT_EQ(walker.session.encoder().groups.Count(), 1);
    EXPECT_EQ(walker.session.settings.input, "other.avi");
    EXPECT_EQ(walker.session.settings.output, "other.wmv");
    EXPECT_FALSE(walker.mode.AnyFailed()) << "how it ended is the other command's to say";
}

}  // namespace
