// The devices as the console program lists and takes them, over servers that the test starts.
#include <optional>

#include "support/pulse_server.h"
#include "support/unix_listener.h"
#include "support/x_server.h"

namespace test_support {
namespace {

using Environment = std::map<std::string, std::string>;

// No desktop and no sound server but the ones that a test names.
Environment Private(const TempFolder& folder) {
    return {{"HOME", folder.path()},
            {"XDG_RUNTIME_DIR", folder.path()},
            {"DISPLAY", ""},
            {"WAYLAND_DISPLAY", ""},
            {"PULSE_RUNTIME_PATH", ""},
            {"PULSE_SERVER", "unix:" + (folder / "pulse.sock")}};
}

CommandResult Console(std::vector<std::string> words, const Environment& environment) {
    words.insert(words.begin(), TESSIVO_CONSOLE);
    return RunCommand(words, environment);
}

// What the test machine itself has; its devices then stand beside those of the test.
bool HasCards() { return std::filesystem::exists("/dev/snd/controlC0"); }
bool HasCameras() { return std::filesystem::exists("/dev/video0"); }

// Two outputs that share a description, and one input.
std::string Sinks(const TempFolder& folder) {
    return "load-module module-null-sink sink_name=n1 sink_properties=device.description=Hall\n"
           "load-module module-null-sink sink_name=n2 sink_properties=device.description=Hall\n"
           "load-module module-pipe-source source_name=mic file=" +
           (folder / "mic.pipe") + " source_properties=device.description=Desk\n";
}

struct ServerCase {
    const char* why;
    const char* defaults;
    std::vector<std::string> names;  // in the order of their numbers
};

const ServerCase kServerCases[] = {
    {"an input is the default, and the default output's monitor leads the monitors",
     "set-default-sink n2\nset-default-source mic\n",
     {"Desk", "Monitor of Hall (n2.monitor)", "Monitor of Hall (n1.monitor)"}},
    {"a monitor is the default",
     "set-default-sink n1\nset-default-source n2.monitor\n",
     {"Monitor of Hall (n2.monitor)", "Desk", "Monitor of Hall (n1.monitor)"}},
};

TEST(ConsoleDevices, NumbersOfTheListingSelectTheSameDevices) {
    for (const ServerCase& each : kServerCases) {
        SCOPED_TRACE(each.why);
        const TempFolder folder;
        const PulseServer server(folder, Sinks(folder) + each.defaults);
        ASSERT_TRUE(server.Runs()) << "pulseaudio is needed, see packages.txt";
        const Environment environment = Private(folder);

        std::string listing = "audio device:\n";
        for (std::size_t i = 0; i < each.names.size(); ++i)
            listing += "\t" + std::to_string(i) + " : " + each.names[i] + "\n";
        listing += "video device:\n";
        const CommandResult listed = Console({"-devices"}, environment);
        EXPECT_EQ(listed.status, 0) << listed.err;
        if (HasCameras())
            EXPECT_EQ(listed.out.substr(0, listing.size()), listing);
        else
            EXPECT_EQ(listed.out, listing);

        const auto capture = [&](const std::vector<std::string>& number) {
            std::vector<std::string> words = {"--explain", "-adevice"};
            words.insert(words.end(), number.begin(), number.end());
            words.insert(words.end(), {"-duration", "1", "-output", folder / "out.wma"});
            return Console(words, environment).out;
        };
        for (std::size_t i = 0; i < each.names.size(); ++i)
            EXPECT_THAT(capture({std::to_string(i)}),
                        testing::HasSubstr("audio.Input = " + each.names[i] + "\n"));
        EXPECT_EQ(capture({}), capture({"0"})) << "without a number it is the default device";
        EXPECT_THAT(capture({std::to_string(each.names.size())}),
                    testing::HasSubstr("Error: Invalid audio device number specified\n"));
    }
}

TEST(ConsoleDevices, AScreenIsListedWhereThereIsADesktop) {
    const TempFolder folder;
    const XServer server("320x240x24");
    Environment environment = Private(folder);
    environment["DISPLAY"] = server.display();
    const CommandResult listed = Console({"-devices"}, environment);
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_THAT(listed.out, testing::EndsWith(" : Screen\n"));
    EXPECT_THAT(Console({"-vdevice", "999", "-duration", "1"}, environment).out,
                testing::HasSubstr("Error: Invalid video device number specified\n"));
}

TEST(ConsoleDevices, ServersThatAreMissingOrHangLeaveTheHeadings) {
    struct Case {
        const char* why;
        bool hangs;
    };
    for (const Case& each : {Case{"no server at all", false}, Case{"servers never answer", true}}) {
        SCOPED_TRACE(each.why);
        const TempFolder folder;
        Environment environment = Private(folder);
        std::optional<UnixListener> silent;
        if (each.hangs) {
            silent.emplace(folder / "pulse.sock");
            environment["DISPLAY"] = "unix:" + (folder / "pulse.sock");
        }
        const CommandResult listed = Console({"-devices"}, environment);
        EXPECT_EQ(listed.status, 0);
        EXPECT_THAT(listed.err, testing::Not(testing::HasSubstr("ALSA")));
        EXPECT_THAT(listed.out, testing::StartsWith("audio device:\n"));
        EXPECT_THAT(listed.out, testing::HasSubstr("video device:\n"));
        if (HasCards() || HasCameras()) continue;
        EXPECT_EQ(listed.out, "audio device:\nvideo device:\n");
    }
}

}  // namespace
}  // namespace test_support
