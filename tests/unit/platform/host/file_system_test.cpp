#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/host/posix_file_system.h"
#include "support/commands.h"
#include "support/error_of.h"

namespace {

namespace fs = std::filesystem;
using platform::OpenMode;
using platform::host::LocaleText;
using platform::host::PathNames;
using platform::host::PosixFileSystem;
using test_support::ErrorNumber;
using testing::UnorderedElementsAre;

class PosixFiles : public testing::Test {
  protected:
    void Put(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    std::string Get(const std::string& name) const {
        return test_support::FileText(folder_ / name);
    }
    PosixFileSystem With(const std::string& encoding) const {
        return {PathNames(folder_.path().string()), LocaleText(encoding)};
    }

    test_support::TempFolder folder_;
};

TEST_F(PosixFiles, FoldersAreMadeAndListed) {
    PosixFileSystem files = With("UTF-8");
    files.CreateFolder("C:\\clips");
    files.CreateFolder("C:\\clips\\inner");
    Put("clips/a.avi", "x");
    Put("clips/.b", "x");
    fs::create_symlink("..", folder_ / "clips/up");  // a walk along it would not end
    fs::create_directory(folder_ / "other");
    fs::create_symlink("../other", folder_ / "clips/linked");
    fs::create_symlink("nowhere", folder_ / "clips/broken");

    const platform::Folder listed = files.GetFolder("C:/clips/");
    EXPECT_EQ(listed.path, folder_ / "clips");
    EXPECT_THAT(listed.files, UnorderedElementsAre("a.avi", ".b", "broken"));
    EXPECT_THAT(listed.sub_folders, UnorderedElementsAre("inner", "linked"));

    EXPECT_TRUE(files.FolderExists("C:\\clips"));
    EXPECT_FALSE(files.FileExists("C:\\clips"));
    EXPECT_TRUE(files.FileExists("C:\\clips\\a.avi"));
    EXPECT_FALSE(files.FolderExists(""));
    EXPECT_TRUE(files.IsSame("C:\\clips\\linked", folder_ / "other"));
    EXPECT_FALSE(files.IsSame("C:\\nothing", "C:\\nothing"));
}

TEST_F(PosixFiles, FailuresHavePublishedNumbersAndNames) {
    PosixFileSystem files = With("UTF-8");
    Put("file", "x");
    const auto open = [&](const std::string& name, OpenMode mode, bool create) {
        return [&files, name, mode, create] { files.OpenTextFile(name, mode, create); };
    };
    EXPECT_EQ(ErrorNumber(open("C:\\no.weu", OpenMode::Reading, false), {folder_ / "no.weu"}),
              platform::kFileNotFound);
    EXPECT_EQ(ErrorNumber(open("C:\\no\\a.weu", OpenMode::Writing, true), {folder_ / "no/a.weu"}),
              platform::kPathNotFound);
    EXPECT_EQ(ErrorNumber(open("C:\\file\\a", OpenMode::Reading, false), {"file/a"}),
              platform::kPathNotFound);
    EXPECT_EQ(ErrorNumber(open("C:", OpenMode::Writing, true), {folder_.path().string()}),
              platform::kAccessDenied);
    EXPECT_EQ(ErrorNumber([&] { files.CreateFolder("C:\\file"); }, {"file"}),
              platform::kFileExists);
    EXPECT_EQ(ErrorNumber([&] { files.CreateFolder("C:\\a\\b"); }, {"a/b"}),
              platform::kPathNotFound);
    EXPECT_EQ(ErrorNumber([&] { files.GetFolder("C:\\none"); }, {"none"}), platform::kPathNotFound);
    EXPECT_EQ(ErrorNumber([&] { files.GetFolder("C:\\file"); }, {"file"}), platform::kPathNotFound);
    const auto full = files.OpenTextFile("/dev/full", OpenMode::Writing, false);
    EXPECT_EQ(ErrorNumber([&] { full->Write("x"); }, {"/dev/full"}), platform::kDiskFull);
}

TEST_F(PosixFiles, PipesAreRefusedWithoutWaiting) {
    PosixFileSystem files = With("UTF-8");
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const OpenMode mode : {OpenMode::Reading, OpenMode::Writing})
        EXPECT_EQ(ErrorNumber([&] { files.OpenTextFile(pipe, mode, true); }, {pipe}),
                  platform::kInvalidArgument);
    Put("file", "x");
    EXPECT_TRUE(files.IsSpecialFile("C:\\pipe"));
    EXPECT_FALSE(files.IsSpecialFile("C:\\file"));
    EXPECT_FALSE(files.IsSpecialFile("C:\\"));
    EXPECT_FALSE(files.IsSpecialFile("C:\\none"));
}

TEST_F(PosixFiles, WholeFilesAreReadWithinTheirLimitAndReplaced) {
    PosixFileSystem files = With("UTF-8");
    const std::string bytes("\0\xFF\r\n", 4);
    files.WriteBytes("C:\\a.prx", bytes);
    EXPECT_EQ(files.ReadBytes("C:\\a.prx", 4), bytes);
    EXPECT_EQ(ErrorNumber([&] { files.ReadBytes("C:\\a.prx", 3); }, {"a.prx", "3 bytes"}),
              platform::kInvalidData);

    // A link stays one, and what it leads to keeps its rights.
    fs::permissions(folder_ / "a.prx", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("a.prx", folder_ / "link.prx");
    files.WriteBytes("C:\\link.prx", "new");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.prx"));
    EXPECT_EQ(Get("a.prx"), "new");
    EXPECT_EQ(fs::status(folder_ / "a.prx").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(fs::exists(folder_ / "a.prx.part"));

    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const char* name : {"C:\\pipe", "C:\\"}) {
        EXPECT_EQ(ErrorNumber([&] { files.ReadBytes(name, 9); }), platform::kInvalidArgument);
        EXPECT_EQ(ErrorNumber([&] { files.WriteBytes(name, ""); }), platform::kInvalidArgument);
    }
    EXPECT_EQ(ErrorNumber([&] { files.ReadBytes("C:\\no.prx", 9); }), platform::kFileNotFound);
    EXPECT_EQ(ErrorNumber([&] { files.WriteBytes("C:\\no\\a.prx", ""); }, {"folder"}),
              platform::kPathNotFound);
}

TEST_F(PosixFiles, AHostPathHasANameThatKeepsItsBackslashes) {
    PosixFileSystem files = With("UTF-8");
    for (const char* name : {"plain", "50%41", "od\\d 100%/a\\b%5C.avi", "C:\\x"}) {
        const std::string path = folder_ / name;
        EXPECT_EQ(files.GetAbsolutePathName(files.NameOf(path)), path);
    }
    EXPECT_EQ(files.NameOf("/a b%20"), "/a b%20");
}

TEST_F(PosixFiles, LinesEndEitherWayAndTheLastNeedsNone) {
    PosixFileSystem files = With("UTF-8");
    Put("a.weu", "\xEF\xBB\xBFone\r\n\ntwo\rthree");
    const auto text = files.OpenTextFile("C:a.weu", OpenMode::Reading, false);
    EXPECT_EQ(text->ReadLine(), "one");
    EXPECT_EQ(text->ReadLine(), "");
    EXPECT_EQ(text->ReadLine(), "two\rthree");
    EXPECT_THROW(text->ReadLine(), platform::Error);
    text->Close();
    text->Close();

    Put("empty.weu", "");
    const auto empty = files.OpenTextFile("C:empty.weu", OpenMode::Reading, false);
    EXPECT_EQ(ErrorNumber([&] { empty->ReadLine(); }, {"empty.weu"}), platform::kInvalidData);
    const auto endless = files.OpenTextFile("/dev/zero", OpenMode::Reading, false);
    EXPECT_EQ(ErrorNumber([&] { endless->ReadLine(); }, {"/dev/zero"}), platform::kInvalidData);
}

struct EncodingCase {
    const char* why;
    const char* encoding;
    std::string bytes;  // in the file
    std::string text;   // as UTF-8
};

// clang-format off
const EncodingCase kEncodingCases[] = {
    // why                                   encoding          bytes              text
    {"one byte a character",                 "ISO-8859-1",     "caf\xE9",         "caf\xC3\xA9"},
    {"several bytes a character",            "EUC-JP",         "\xB0\xA1x",       "\xE4\xBA\x9Cx"},
    {"UTF-8 as it is",                       "UTF-8",          "caf\xC3\xA9",     "caf\xC3\xA9"},
    {"broken UTF-8 as it is",                "UTF-8",          "a\xFF\xC3",       "a\xFF\xC3"},
    {"plain locale passes bytes",            "ANSI_X3.4-1968", "caf\xE9",         "caf\xE9"},
    {"unknown encoding passes bytes",        "NO-SUCH-THING",  "caf\xE9",         "caf\xE9"},
    {"a byte that belongs nowhere stays",    "EUC-JP",         "a\xFFz\xB0\xA1",  "a\xFFz\xE4\xBA\x9C"},
    {"a character cut off at the end stays", "EUC-JP",         "a\xB0",           "a\xB0"},
};
// clang-format on

TEST_F(PosixFiles, TextIsInTheLocalesEncoding) {
    for (const EncodingCase& row : kEncodingCases) {
        PosixFileSystem files = With(row.encoding);
        Put("in", row.bytes);
        EXPECT_EQ(files.OpenTextFile("C:in", OpenMode::Reading, false)->ReadLine(), row.text)
            << row.why;
        files.OpenTextFile("C:out", OpenMode::Writing, true)->Write(row.text);
        EXPECT_EQ(Get("out"), row.bytes) << row.why;
    }
}

TEST_F(PosixFiles, LongTextsAreConvertedWhole) {
    std::string accents;
    for (int i = 0; i < 5000; ++i) accents += "\xC3\xA9";
    const LocaleText latin("ISO-8859-1");
    EXPECT_EQ(latin.FromUtf8(accents), std::string(5000, '\xE9'));
    EXPECT_EQ(latin.ToUtf8(std::string(5000, '\xE9')), accents);
    EXPECT_EQ(latin.FromUtf8("a\xE4\xBA\x9Cz"), "a?z");  // not in that encoding
}

}  // namespace
