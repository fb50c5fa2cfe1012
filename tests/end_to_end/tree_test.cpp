// A large folder with odd names and damaged files, walked twice, and by a program that is killed.
#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "end_to_end/console_run.h"
#include "platform/text.h"
#include "support/asf_reader.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 2;
constexpr int kKilled = 128 + SIGKILL;
constexpr int kMediaFiles = 90;
constexpr int kBrokenFiles = 10;
constexpr int kOtherFiles = 20;  // of no accepted extension
constexpr int kKills = 10;

// "#" stands for the file's number, "@" for its kind's extension.
constexpr const char* kNames[] = {
    "clip_#.@",
    "a clip  with blanks #.@",
    "dots.in.the name.#.@",
    "ends in a dot #..@",
    ".hidden #.@",
    "-profile #.@",
    "it's \"#\".@",
    "50%20 #&;$HOME.@",
    "\xC3\xA4\xC3\xB6 #.@",
    "\xE6\x97\xA5\xE6\x9C\xAC #.@",
};
constexpr const char* kFolders[] = {"", "below", "below/twice as low", "\xC3\xBC", "dotted.avi"};
constexpr const char* kOtherNames[] = {"no extension #", "notes #.txt", "avi", "clip #.avi.bak"};

/// Text on either side of what `#` and `@` stand for.
std::string Named(std::string name, int number, const std::string& extension) {
    name.replace(name.find('#'), 1, std::to_string(number));
    const std::size_t at = name.find('@');
    return at == std::string::npos ? name : name.replace(at, 1, extension);
}

/// The folder to read and what of it is to be written.
class Tree {
  public:
    explicit Tree(const fs::path& root) : root_(root) {
        MakeKinds();
        for (const char* folder : kFolders) fs::create_directories(root_ / "in" / folder);
        for (int i = 0; i < kMediaFiles; ++i) AddMedia(i);
        for (int i = 0; i < kBrokenFiles; ++i) AddBroken(kMediaFiles + i);
        for (int i = 0; i < kOtherFiles; ++i) AddOther(i);
    }

    std::vector<std::string> Command() const {
        return {"-input",  root_ / "in",     "-output", root_ / "converted", "-profile",
                "av100",   "-v_width",       "64",      "-v_height",         "48",
                "-silent", "-v_performance", "0"};
    }

    /// What stands in the folder of outputs now.
    std::set<std::string> Written() const {
        std::set<std::string> written;
        if (!fs::exists(root_ / "converted")) return written;
        for (const auto& entry : fs::recursive_directory_iterator(root_ / "converted"))
            if (entry.is_regular_file())
                written.insert(fs::relative(entry.path(), root_ / "converted").string());
        return written;
    }

    /// Reads an output whole, frame by frame; throws at what is wrong with it.
    void Check(const std::string& output) const {
        const std::string path = root_ / "converted" / output;
        const asf_reader::File file = asf_reader::ReadFile(path);
        EXPECT_EQ(file.header.file_size, fs::file_size(path)) << output;
        EXPECT_EQ(file.unfinished, 0U) << output;
        EXPECT_NEAR(static_cast<double>(file.header.play_duration) / 1e7 -
                        static_cast<double>(file.header.preroll_ms) / 1e3,
                    0.4, 0.15)
            << output;
    }

    // Paths below the folders of inputs and of outputs.
    std::set<std::string> good, broken, others, outputs;

  private:
    struct Kind {
        const char* extension;
        const char* written;
    };
    static constexpr Kind kKinds[] = {
        {"avi", "wmv"}, {"mpg", "wmv"}, {"mpeg", "wmv"}, {"vob", "wmv"}, {"wmv", "wmv"},
        {"asf", "wmv"}, {"wav", "wma"}, {"mp3", "wma"},  {"wma", "wma"},
    };

    std::string Sample(const Kind& kind) const {
        return root_ / (std::string("sample.") + kind.extension);
    }

    void MakeKinds() const {
        for (const Kind& kind : kKinds) {
            const bool video = std::string(kind.written) == "wmv";
            Ffmpeg(
                std::string(video ? "-f lavfi -i testsrc2=size=64x48:rate=25:duration=0.4 " : "") +
                    "-f lavfi -i sine=sample_rate=44100:duration=0.4 -ac 2",
                Sample(kind));
        }
    }

    /// Where the numbered file lies, below the folder of inputs.
    static std::string Place(int number, const std::string& extension) {
        const auto n = static_cast<std::size_t>(number);
        return fs::path(kFolders[n % std::size(kFolders)]) /
               Named(kNames[n / std::size(kFolders) % std::size(kNames)], number, extension);
    }

    void AddMedia(int number) {
        const Kind& kind = kKinds[static_cast<std::size_t>(number) % std::size(kKinds)];
        const std::string extension =
            number % 4 == 0 ? platform::UpperCase(kind.extension) : std::string(kind.extension);
        const std::string place = Place(number, extension);
        fs::copy(Sample(kind), root_ / "in" / place);
        good.insert(place);
        outputs.insert(place.substr(0, place.rfind('.') + 1) + kind.written);
    }

    void AddBroken(int number) {
        const Kind& kind = kKinds[static_cast<std::size_t>(number) % std::size(kKinds)];
        const std::string place = Place(number, kind.extension);
        std::ofstream file(root_ / "in" / place, std::ios::binary);
        if (number % 3 == 0) file << "no media\n";
        if (number % 3 == 1) file << std::string(5000, '\0');
        broken.insert(place);  // the others are empty
    }

    void AddOther(int number) {
        const auto n = static_cast<std::size_t>(number);
        std::string name = kOtherNames[n % std::size(kOtherNames)];
        if (name.find('#') != std::string::npos) name = Named(name, number, "");
        const std::string place =
            fs::path(kFolders[n / std::size(kOtherNames) % std::size(kFolders)]) / name;
        fs::copy(Sample(kKinds[0]), root_ / "in" / place);
        others.insert(place);
    }

    fs::path root_;
};

const std::map<std::string, std::string> kLocale = {{"LC_ALL", "C.UTF-8"}};

/// A walk to the end of it, and all that it says and leaves.
void WalkWhole(const Tree& tree, const TempFolder& folder) {
    const CommandResult result = Console(tree.Command(), kLocale);
    EXPECT_EQ(result.status, kFailed) << result.err;
    for (const auto* places : {&tree.good, &tree.broken})
        for (const std::string& place : *places)
            EXPECT_EQ(CountOf(result.out, "============== Input " + folder / "in/" + place + " "),
                      1)
                << place;
    for (const std::string& place : tree.others)
        EXPECT_GE(CountOf(result.out, "Skipping: " + fs::path(place).filename().string() + "\n"), 1)
            << place;
    EXPECT_EQ(CountOf(result.out, "Skipping: "), kOtherFiles);
    EXPECT_EQ(CountOf(result.out, "\nError: 0x"), kBrokenFiles) << result.out;
    EXPECT_EQ(CountOf(result.out, "======== Encoding Completed ========\n"), kMediaFiles);
    EXPECT_EQ(tree.Written(), tree.outputs) << "each once, and no part left";
    for (const std::string& output : tree.outputs) tree.Check(output);
}

/// Walks until the moment has come, and is killed then.
void WalkAndKill(const Tree& tree, const TempFolder& folder, std::chrono::milliseconds moment) {
    std::vector<std::string> words = {"env", "LC_ALL=C.UTF-8", TESSIVO_CONSOLE};
    const std::vector<std::string> command = tree.Command();
    words.insert(words.end(), command.begin(), command.end());
    BackgroundCommand run(words, folder.path());
    std::this_thread::sleep_for(moment);
    run.Signal(SIGKILL);
    EXPECT_EQ(run.Wait().status, kKilled);
    // What bears its own name is whole, whenever the program ended.
    for (const std::string& name : tree.Written()) {
        if (name.ends_with(".part")) continue;
        EXPECT_TRUE(tree.outputs.contains(name)) << name;
        tree.Check(name);
    }
}

// One test, since the tree is large and the moments of the kills are parts of a walk's time.
TEST(Tree, IsWalkedTwiceAndAfterTenKillsWithNothingLost) {
    const unsigned seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);

    const TempFolder folder;
    const Tree tree(folder.path());
    ASSERT_EQ(tree.outputs.size(), static_cast<std::size_t>(kMediaFiles)) << "names clash";
    WalkWhole(tree, folder);
    const auto start = std::chrono::steady_clock::now();
    WalkWhole(tree, folder);
    const auto walk = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);

    fs::remove_all(folder / "converted");
    std::uniform_int_distribution<std::int64_t> moments(0, walk.count() / 10);
    for (int kill = 0; kill < kKills; ++kill)
        WalkAndKill(tree, folder, std::chrono::milliseconds(moments(random)));
    WalkWhole(tree, folder);
}

}  // namespace
}  // namespace test_support
