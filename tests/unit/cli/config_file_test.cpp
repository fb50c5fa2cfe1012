// A command's pre-pass shares its index with the files that it reads: a file of n words leaves it
// going on at place n + 1. The traces below follow that by hand; places count from 0.
#include "parser_bench.h"
#include "support/error_of.h"

namespace cli_tests {
namespace {

using test_support::ErrorNumber;

struct SavedCase {
    const char* why;
    const char* file;     // the first line of /home/job
    const char* command;  // names the file to save "new"
    const char* saved;
};

TEST(ConfigFiles, TheSavedTextFollowsTheSharedIndex) {
    // clang-format off
    const SavedCase cases[] = {
        // 0-3 copied, 4 skips 5, end.
        {"no file read", "-", "-input a.avi -output b.wmv -s_config new", "-input a.avi -output b.wmv "},
        // 0 skips 1, 2-3 copied.
        {"the name to save stands first", "-", "-s_config new -input a.avi", "-input a.avi "},
        // 0 copied, 1 is the file's name; the file leaves 9, so the pass goes on at 10: the end.
        {"a file with more words than the command",
         "-title t -author a -rating r -silent -verbose 1",
         "-config job -input a.avi -output b.wmv -s_config new", "-config "},
        // 0-4 copied, 5 is the file's name; the file leaves 2, so the pass goes on at 3: 3 copied
        // again, 4 read before and only copied, 5 copied as a word, 6 skips 7.
        {"a file with fewer words than the command", "-silent -videoonly",
         "-input a.avi -output b.wmv -config job -s_config new",
         "-input a.avi -output b.wmv -config b.wmv -config job "},
        // As before, but the file leaves 1: 2-5 are copied again.
        {"a file of one word", "-silent", "-input a.avi -output b.wmv -config job -s_config new",
         "-input a.avi -output b.wmv -config -output b.wmv -config job "},
        // 0-4 copied, 5 is the file's name; the file leaves 5, the pass goes on at 6 as it would.
        {"a file that ends where its name stands", "-title t -rating r -silent",
         "-input a.avi -output b.wmv -config job -s_config new",
         "-input a.avi -output b.wmv -config "},
        // 0 copied, 1 is the file's name; the file leaves 3, the pass goes on at 4: 3, "-s_config",
        // is not seen, so 4, its name, is copied.
        {"the word -s_config itself passed over", "-title t -silent", "-config job -audioonly -s_config new", "-config new "},
        // 0-3 copied, 4 skips 5, 6 copied, 7 is the file's name; the file leaves 8, end.
        {"-config last", "-title t -author a -rating r -verbose 1",
         "-input a.avi -output b.wmv -s_config new -config job",
         "-input a.avi -output b.wmv -config "},
        // 0-3 are words like all others here, and "-S_CONFIG" saves in the main pass.
        {"upper case is copied and saves", "-", "-input a.avi -S_CONFIG new", "-input a.avi -S_CONFIG new "},
    };
    // clang-format on
    for (const SavedCase& row : cases) {
        SCOPED_TRACE(row.why);
        ParserBench bench;
        bench.files->AddFile("/home/job", row.file);
        EXPECT_TRUE(bench.Run(row.command));
        EXPECT_EQ(bench.pane.lines, Lines{});
        EXPECT_EQ(bench.files->files["/home/new.weu"], row.saved);
    }
}

TEST(ConfigFiles, OptionsOfTheCommandOverrideTheFile) {
    ParserBench bench;
    bench.files->AddFile("/home/job.weu", "-profile av100 -output c:\\out\\a.wmv -duration 7");
    EXPECT_TRUE(bench.Run("-profile av350 -config job.weu -input a.avi"));
    const cli::EncodeSettings given = {.input = "a.avi",
                                       .output = "c:\\out\\a.wmv",
                                       .duration = 7,
                                       .profile = "av350",
                                       .duration_typed = true};
    EXPECT_TRUE(bench.settings == given);
}

TEST(ConfigFiles, AConfigPassedOverIsNotRead) {
    ParserBench bench;
    bench.files->AddFile("/home/long", "-title t -author a -rating r");
    bench.files->AddFile("/home/other", "-silent -audioonly");
    // 0 read, 1 its name; the file leaves 6, the pass goes on at 7: 2, "-config", is not seen. The
    // main pass takes it, with its name, for one that was.
    EXPECT_TRUE(bench.Run("-config long -config other -input a.avi"));
    const cli::EncodeSettings given = {
        .input = "a.avi", .title = "t", .author = "a", .rating = "r"};
    EXPECT_TRUE(bench.settings == given);
}

TEST(ConfigFiles, AConfigSeenAgainIsNotReadAgain) {
    ParserBench bench;
    bench.files->AddFile("/home/one", "-silent");
    bench.files->AddFile("/home/two", "-title t");
    // 0-2 copied, 3 its name; "one" leaves 1, the pass goes on at 2: read before. 3 copied, 4 read,
    // 5 its name; "two" leaves 2, the pass goes on at 3: 3 copied, 4 read before, 5 copied, end.
    EXPECT_TRUE(bench.Run("-rating r -config one -config two"));
    EXPECT_EQ(bench.files->log->Of("OpenTextFile"),
              (Lines{"OpenTextFile(/home/one)", "OpenTextFile(/home/two)"}));
    const cli::EncodeSettings given = {.silent = true, .title = "t", .rating = "r"};
    EXPECT_TRUE(bench.settings == given);
}

TEST(ConfigFiles, AFileLeavesItsWordCountWhateverItsLastOptionSkips) {
    ParserBench bench;
    bench.files->AddFile("/home/inner", "-title t -silent");
    bench.files->AddFile("/home/outer", "-config inner -audioonly -config");
    // "outer": 0 read, 1 its name; "inner" leaves 3, so "outer" goes on at 4: its end. In its main
    // pass 3, "-config", skips a name that is not there. It leaves 4 all the same, so the command
    // goes on at 5, "b.wmv"; 6 skips 7.
    EXPECT_TRUE(bench.Run("-config outer -input a.avi -output b.wmv -s_config new"));
    EXPECT_EQ(bench.files->files["/home/new.weu"], "-config b.wmv ");
}

TEST(ConfigFiles, AFileSavesItsOwnWords) {
    ParserBench bench;
    bench.files->AddFile("/home/inner", "-title t -s_config deep/inner");
    // The file: 0-1 copied, 2 skips 3; it writes its own text. It leaves 4, so the command goes on
    // at 5, "b.wmv"; 6 skips 7.
    EXPECT_TRUE(bench.Run("-config inner -input a.avi -output b.wmv -s_config outer"));
    EXPECT_EQ(bench.files->files["/home/deep/inner.weu"], "-title t ");
    EXPECT_EQ(bench.files->files["/home/outer.weu"], "-config b.wmv ");
    EXPECT_EQ(bench.actions.calls,
              (Lines{"CreateOutputFolder /home/deep", "CreateOutputFolder /home"}));
}

TEST(ConfigFiles, AConfigWithoutANameEndsTheCommandBeforeItsOptions) {
    ParserBench bench;
    EXPECT_EQ(ErrorNumber([&] { bench.Run("-input a.avi -output b.wmv -config"); }),
              platform::kElementNotFound);
    EXPECT_TRUE(bench.settings == cli::kNothingGiven);
}

TEST(ConfigFiles, NestingEndsAtSixteen) {
    for (const int deepest : {16, 17}) {
        SCOPED_TRACE(deepest);
        ParserBench bench;
        for (int i = 1; i < deepest; ++i)
            bench.files->AddFile(
                "/home/" + std::to_string(i),
                "-verbose " + std::to_string(i) + " -config " + std::to_string(i + 1));
        bench.files->AddFile("/home/" + std::to_string(deepest), "-title deepest");
        EXPECT_EQ(bench.Run("-config 1 -silent"), deepest == 16);
        EXPECT_EQ(bench.pane.lines,
                  deepest == 16 ? Lines{}
                                : Lines{"Configuration file /home/17 is nested more than 16 deep"});
        // The outer files' options come after those of the files that they name.
        const cli::EncodeSettings given = {.silent = true, .verbose = 1, .title = "deepest"};
        EXPECT_TRUE(bench.settings == (deepest == 16 ? given : cli::kNothingGiven));
    }
}

struct ContentCase {
    const char* why;
    const char* content;
    bool accepted;
    bool refused;
    Lines lines;
    cli::EncodeSettings given;
    Lines calls;
};

TEST(ConfigFiles, TheFirstLineIsACommand) {
    // clang-format off
    const ContentCase cases[] = {
        {"blanks around", "  -title t  ", true, false, {}, {.silent = true, .title = "t"}, {}},
        {"further lines", "-title t\n-author a\n", true, false, {}, {.silent = true, .title = "t"}, {}},
        {"line end of another system", "-title t\r\n", true, false, {}, {.silent = true, .title = "t"}, {}},
        {"two blanks inside", "-title t  -author a", false, true, {"Invalid parameter: "}, {.title = "t"}, {}},
        {"blanks only", "   \n-title t", false, true, {"Configuration file /home/job is empty"}, {}, {}},
        {"empty first line", "\n-title t", false, true, {"Configuration file /home/job is empty"}, {}, {}},
        {"a listing word alone", "-devices", false, false, {}, {}, {"ListDevices"}},
        {"an input alone", "-input a.avi", false, false, {}, {.input = "a.avi"}, {"PrintFileInfo"}},
        {"refused value", "-v_width x", false, true, {"Expect integer value for parameter -v_width"}, {}, {}},
    };
    // clang-format on
    for (const ContentCase& row : cases) {
        SCOPED_TRACE(row.why);
        ParserBench bench;
        bench.files->AddFile("/home/job", row.content);
        EXPECT_EQ(bench.Run("-config job -silent"), row.accepted);
        EXPECT_EQ(bench.parser.Refused(), row.refused);
        EXPECT_EQ(bench.pane.lines, row.lines);
        EXPECT_TRUE(bench.settings == row.given);
        EXPECT_EQ(bench.actions.calls, row.calls);
    }
}

TEST(ConfigFiles, TheWriterAddsTheExtensionTheReaderDoesNot) {
    const struct {
        const char* why;
        const char* name;
        const char* path;
        const char* folder;
    } cases[] = {
        {"none", "setup", "/home/setup.weu", "/home"},
        {"upper case", "Setup.WEU", "/home/Setup.WEU", "/home"},
        {"another", "/a/b/setup.txt", "/a/b/setup.txt.weu", "/a/b"},
        {"shorter than one", "/x", "/x.weu", "/"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        ParserBench bench;
        bench.files->AddFile(row.path, "old content, longer than what replaces it");
        EXPECT_TRUE(bench.Run(std::string("-silent -s_config ") + row.name));
        EXPECT_EQ(bench.files->files[row.path], "-silent ");
        EXPECT_EQ(bench.actions.calls, Lines{std::string("CreateOutputFolder ") + row.folder});
    }
    ParserBench bench;
    bench.files->AddFile("/home/job.weu", "-title t");
    EXPECT_THROW(bench.Run("-config job -silent"), platform::Error);
}

TEST(ConfigFiles, NothingIsWrittenForARefusedCommand) {
    ParserBench bench;
    EXPECT_FALSE(bench.Run("-s_config new -silent -v_width x"));
    EXPECT_FALSE(bench.files->FileExists("new.weu"));
    bench.pane.lines.clear();
    bench.files->AddFile("/home/film.weu", "film");
    bench.files->AddFile("/home/job.weu", "-silent -s_config film");
    for (const char* const command : {"-s_config film -input film.weu -output b.wmv",
                                      "-config job.weu -INPUT film.weu -output b.wmv"}) {
        EXPECT_FALSE(bench.Run(command)) << command;
        EXPECT_EQ(bench.pane.lines, Lines{"Configuration file /home/film.weu is the input: give "
                                          "-s_config another name"});
        EXPECT_EQ(bench.files->files["/home/film.weu"], "film");
        bench.settings = cli::kNothingGiven;
        bench.pane.lines.clear();
    }
}

TEST(ConfigFiles, ErrorsOfTheFileSystemPassThrough) {
    ParserBench bench;
    bench.files->AddFile("/home/empty");
    bench.files->AddFile("/home/ends", "-title");
    for (const char* const name : {"missing", "empty", "ends"})
        EXPECT_THROW(bench.Run(std::string("-silent -config ") + name), platform::Error) << name;
    EXPECT_TRUE(bench.settings == cli::kNothingGiven);
    bench.files->log->Fail("OpenTextFile", platform::kAccessDenied, "read-only");
    EXPECT_THROW(bench.Run("-silent -s_config new"), platform::Error);
    EXPECT_TRUE(bench.settings.silent) << "what was parsed stays set";
    EXPECT_TRUE(bench.parser.Refused());
    EXPECT_EQ(bench.pane.lines, Lines{});
}

}  // namespace
}  // namespace cli_tests
