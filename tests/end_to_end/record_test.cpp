// The console program records a display and a sound server of the test's own.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <map>

#include "end_to_end/console_run.h"
#include "support/pulse_server.h"
#include "support/unix_listener.h"
#include "support/x_server.h"

namespace test_support {
namespace {

class Record : public testing::Test {
  protected:
    std::vector<std::string> Words(std::vector<std::string> more) const {
        std::vector<std::string> words = {"env",
                                          "-u",
                                          "WAYLAND_DISPLAY",
                                          "DISPLAY=" + screen_.display(),
                                          "PULSE_SERVER=" + server_.Address(),
                                          TESSIVO_CONSOLE};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    // Until some seconds are on the disk.
    static bool Grows(const std::string& file) {
        return Eventually([&] {
            std::error_code absent;
            return std::filesystem::file_size(file + ".part", absent) > 20'000 && !absent;
        });
    }

    TempFolder folder_;
    XServer screen_{"320x240x24"};
    PulseServer server_{folder_, "load-module module-null-sink sink_name=speaker\n"};
};

TEST_F(Record, TheScreenWithItsSoundForSomeSeconds) {
    ASSERT_TRUE(server_.Runs());
    const std::string file = folder_ / "out.wmv";
    const CommandResult result =
        RunCommand(Words({"-profile", "scrna", "-duration", "3", "-output", file}));
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(DecodeMessages(file), "");
    EXPECT_EQ(Probe(file, "v:0")["width"], "320");
    EXPECT_EQ(Probe(file, "a:0")["codec_name"], "wmav2");
    // Ticks are counted, and the first comes up to a second after the start.
    EXPECT_GT(ProbeNumber(file, "", "duration"), 1.5);
    EXPECT_LT(ProbeNumber(file, "", "duration"), 5);
}

TEST_F(Record, WithoutADurationUntilItIsToldToStop) {
    const std::string file = folder_ / "out.wmv";
    BackgroundCommand program(Words({"-profile", "scrn", "-output", file}), folder_.path());
    ASSERT_TRUE(Grows(file));
    program.Signal(SIGTERM);
    const CommandResult result = program.Wait();
    EXPECT_EQ(result.status, 130) << result.out << result.err;
    EXPECT_FALSE(std::filesystem::exists(file + ".part"));
    EXPECT_EQ(DecodeMessages(file), "");
}

TEST_F(Record, ASinkThatGoesEndsTheRecordingAndTheFileIsWhole) {
    const std::string file = folder_ / "out.wmv";
    BackgroundCommand program(Words({"-profile", "scrna", "-duration", "60", "-output", file}),
                              folder_.path());
    ASSERT_TRUE(Grows(file));
    server_.Kill();
    const CommandResult result = program.Wait();
    EXPECT_EQ(result.status, 2) << result.out << result.err;
    EXPECT_THAT(result.out,
                testing::StartsWith("Error: 0x8007048F - The sound device Monitor of "));
    EXPECT_THAT(result.out, testing::HasSubstr("What was recorded until then is in \"" + file));
    EXPECT_EQ(DecodeMessages(file), "");
}

TEST_F(Record, AKilledRecordingIsNamedByTheNextStart) {
    const std::string file = folder_ / "out.wmv";
    const std::vector<std::string> words = {"-profile", "scrna", "-output", file};
    {
        BackgroundCommand program(Words(words), folder_.path());
        ASSERT_TRUE(Grows(file));
        program.Signal(SIGKILL);
        program.Wait();
    }
    const std::string part = folder_ / "out-1.wmv.part";
    std::vector<std::string> again = words;
    again.insert(again.end(), {"-duration", "1"});
    const CommandResult next = RunCommand(Words(again));
    EXPECT_EQ(next.status, 0) << next.out;
    EXPECT_THAT(next.out, testing::StartsWith("\"" + part +
                                              "\" was left by a run that was cut "
                                              "short; tessivo-console --repair \"" +
                                              part + "\" makes it whole.\n"));
    EXPECT_EQ(DecodeMessages(file), "");
    EXPECT_EQ(Console({"--repair", part}).status, 0);
    EXPECT_EQ(DecodeMessages(folder_ / "out-1.wmv"), "");
    EXPECT_GT(ProbeNumber(folder_ / "out-1.wmv", "", "duration"), 1);
}

TEST_F(Record, TheFileOfARecordingBeforeIsKept) {
    const std::string file = folder_ / "out.wmv";
    const std::string kept = folder_ / "out-1.wmv";
    std::ofstream(file) << "recorded before";
    const CommandResult result = RunCommand(Words(
        {"--json", "-profile", "scrn", "-v_width", "160", "-duration", "1", "-output", file}));
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(DecodeMessages(file), "");
    EXPECT_EQ(std::filesystem::file_size(kept), std::string("recorded before").size());
    EXPECT_THAT(result.err, testing::ContainsRegex("\n\"" + file + "\".*" + kept));
    EXPECT_THAT(result.out, testing::ContainsRegex("\"notices\":\\[\".*out.wmv.*out-1.wmv.*\"\\]"));
}

TEST_F(Record, WhatIsNotThereIsSaidBeforeAnythingIsWritten) {
    const std::string file = folder_ / "out.wmv";
    const std::string wayland = folder_ / "wayland";
    const UnixListener compositor(wayland);
    struct Case {
        const char* why;
        std::vector<std::string> settings;
        const char* word;
    };
    const Case cases[] = {
        {"no display", {"DISPLAY="}, "no screen"},
        {"no sound server", {"PULSE_SERVER=unix:/nowhere"}, "no sound device"},
        {"a Wayland desktop without a bus",
         {"WAYLAND_DISPLAY=" + wayland, "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere"},
         "message bus cannot be reached"},
        {"no such part", {"TESSIVO_SCREEN=region:9x9+999+0"}, "region"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        std::vector<std::string> words = Words({"-profile", "scrna", "-output", file});
        words.insert(words.end() - 5, row.settings.begin(), row.settings.end());
        const CommandResult result = RunCommand(words);
        EXPECT_EQ(result.status, 1) << result.out << result.err;
        EXPECT_NE(result.out.find(row.word), std::string::npos) << result.out;
        EXPECT_FALSE(std::filesystem::exists(file + ".part"));
    }
}

}  // namespace
}  // namespace test_support
