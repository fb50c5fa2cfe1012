// What the programs load, when, and from where.
#include <fstream>

#include "end_to_end/console_run.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr int kDone = 0;
constexpr int kRefused = 1;

/// The console program in a folder of its own.
class ProgramElsewhere : public testing::Test {
  protected:
    ProgramElsewhere() {
        fs::create_directory(bin_);
        fs::copy_file(TESSIVO_CONSOLE, bin_ / "tessivo-console");
        fs::copy_file(TESSIVO_MEDIA_INFO, bin_ / "tessivo-media-info");
        MakeClip(folder_ / "clip.avi", 1, "64x48", 10);
    }

    CommandResult Run(std::vector<std::string> words) const {
        words.insert(words.begin(), bin_ / "tessivo-console");
        return RunCommand(words);
    }
    CommandResult Encode() const {
        return Run(
            {"-input", folder_ / "clip.avi", "-output", folder_ / "out.wmv", "-profile", "av100"});
    }

    TempFolder folder_;
    const fs::path bin_ = folder_.path() / "bin";
};

TEST(Start, LoadsNothingThatOnlyARunNeeds) {
    for (const char* program : {TESSIVO_CONSOLE, TESSIVO_WINDOW}) {
        // The dynamic linker then lists what it would load, and the program does not run.
        const std::string loaded = RunCommand({program}, {{"LD_TRACE_LOADED_OBJECTS", "1"}}).out;
        EXPECT_THAT(loaded, HasSubstr("libstdc++")) << program;
        for (const char* library :
             {"libavformat", "libavcodec", "libavutil", "libmediainfo", "libpulse"})
            EXPECT_THAT(loaded, Not(HasSubstr(library))) << program;
    }
}

struct LibraryCase {
    const char* why;
    std::function<void(const fs::path& library)> make;
    const char* reason;
};

const LibraryCase kLibraryCases[] = {
    {"missing", [](const fs::path&) {},
     "cannot open shared object file: No such file or directory"},
    {"cut off", [](const fs::path& library) { std::ofstream(library) << "\177ELF"; },
     "file too short"},
    {"left from another version",
     [](const fs::path& library) { fs::copy_file(TESSIVO_OTHER_MEDIA, library); },
     "it is of version 0.0.1, the program of version " TESSIVO_VERSION},
};

TEST_F(ProgramElsewhere, NamesTheMediaLibraryThatItCannotUse) {
    const fs::path library = bin_ / "tessivo-media.so";
    for (const LibraryCase& row : kLibraryCases) {
        SCOPED_TRACE(row.why);
        row.make(library);
        const CommandResult run = Encode();
        EXPECT_EQ(run.status, kRefused);
        EXPECT_THAT(run.out, HasSubstr("Error: 0x80004005 - Cannot load the media library " +
                                       library.string() + ": " + row.reason + ". Install "));
        EXPECT_FALSE(fs::exists(folder_ / "out.wmv.part"));
        EXPECT_EQ(Run({"-v_codecs"}).status, kDone) << "a listing needs no media library";
        fs::remove(library);
    }
}

TEST_F(ProgramElsewhere, NamesTheMissingReaderOfMediaInformation) {
    const fs::path reader = bin_ / "tessivo-media-info";
    fs::remove(reader);
    const CommandResult run = Run({"-input", folder_ / "clip.avi"});
    EXPECT_EQ(run.status, kRefused);
    EXPECT_THAT(run.out, HasSubstr("Cannot start the program " + reader.string() + ": "));
}

TEST_F(ProgramElsewhere, FindsItsFilesWhereTheyAreInstalled) {
    const fs::path lib = folder_.path() / "lib" / "tessivo";
    fs::create_directories(lib);
    fs::copy_file(TESSIVO_MEDIA, lib / "tessivo-media.so");
    fs::rename(bin_ / "tessivo-media-info", lib / "tessivo-media-info");
    const CommandResult run = Encode();
    EXPECT_EQ(run.status, kDone) << run.out;
    EXPECT_EQ(DecodeMessages(folder_ / "out.wmv"), "");
}

}  // namespace
}  // namespace test_support
