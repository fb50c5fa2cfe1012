// The pages for users agree with the program.
#include <fstream>

#include "cli/option_table.h"
#include "docs/reference/reference.h"
#include "support/commands.h"

namespace test_support {
namespace {

TEST(Documents, TheReferenceIsWhatTheTablesSay) {
    EXPECT_TRUE(FileText(TESSIVO_DOCS "/command-reference.md") == reference::CommandReference())
        << "build the target reference-page";
}

/// The files that examples read.
void MakeInputs(const TempFolder& folder) {
    const auto clip = [&](const std::string& name) {
        Ffmpeg(
            "-f lavfi -i testsrc2=size=64x48:rate=10:duration=2 -f lavfi -i "
            "sine=sample_rate=44100:duration=2 -c:v mjpeg -c:a pcm_s16le -ac 2",
            folder / name);
    };
    clip("film.avi");
    std::filesystem::create_directory(folder / "holiday");
    clip("holiday/beach.avi");
    Ffmpeg("-f lavfi -i sine=sample_rate=44100:duration=1", folder / "talk.wav");
    Ffmpeg("-f lavfi -i testsrc2=size=64x48 -frames:v 1", folder / "card.png");
    std::ofstream(folder / "job.weu") << "-profile av100 -v_bitrate 60000\n";
    std::ofstream(folder / "parts.edl") << "# milliseconds, and the content mode\n0 500 2\n";
    std::ofstream(folder / "mine.prx")
        << "<profile name='Mine'><streamconfig streamnumber='1' bitrate='60000'><wmmediatype>"
           "<videoinfoheader><bitmapinfoheader bicompression='WMV3'/></videoinfoheader>"
           "</wmmediatype></streamconfig></profile>\n";
    std::ofstream(folder / "job.wme")
        << "<EncoderSession><SourceGroup><Source Type='video' Input='film.avi'/>"
           "<Profile File='mine.prx'/></SourceGroup></EncoderSession>\n";
}

TEST(Documents, EachExampleWorks) {
    const TempFolder folder;
    MakeInputs(folder);
    std::vector<cli::Option> options;
    for (const cli::OptionBlock& block : cli::OptionBlocks())
        options.insert(options.end(), block.options.begin(), block.options.end());
    for (const cli::Option& option : options) {
        const cli::OptionNote& note = option.note;
        if (note.effect.empty() || note.today == cli::Today::Hardware) continue;
        SCOPED_TRACE(option.name);
        const CommandResult result =
            RunCommand({"bash", "-c",
                        "cd '" + folder.path().string() + "' && '" TESSIVO_CONSOLE "' " +
                            std::string(note.example)});
        EXPECT_EQ(result.status, 0) << result.out << result.err;
    }
}

TEST(Documents, EachFilterDoesWhatItsMarkSays) {
    const TempFolder folder;
    MakeInputs(folder);
    for (int number = 0; number <= 18; ++number) {
        const CommandResult result =
            RunCommand({TESSIVO_CONSOLE, "-input", folder / "film.avi", "-output",
                        folder / "film.wmv", "-v_preproc", std::to_string(number)});
        EXPECT_EQ(result.status, reference::FilterWorksToday(number) ? 0 : 1) << number << "\n"
                                                                              << result.out;
    }
}

}  // namespace
}  // namespace test_support
