// A clap: the display flashes in the moment in which a beep is heard, again and again, and in the
// recording the two still belong together.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "end_to_end/console_run.h"
#include "support/beep_player.h"
#include "support/clips.h"
#include "support/pulse_server.h"
#include "support/x_server.h"
#include "unit/engine/sources/screen/painter.h"

namespace test_support {
namespace {

using std::chrono::duration;
using std::chrono::steady_clock;

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr double kFlash = 0.4;  // seconds
constexpr double kFarthest = 0.040;

void SleepUntil(double second) {
    std::this_thread::sleep_until(steady_clock::time_point(
        std::chrono::duration_cast<steady_clock::duration>(duration<double>(second))));
}

double Now() { return duration<double>(steady_clock::now().time_since_epoch()).count(); }

/// TESSIVO_CLAPS=600 makes it ten minutes.
int Claps() {
    const char* asked = std::getenv("TESSIVO_CLAPS");
    return asked != nullptr ? std::atoi(asked) : 10;
}

// By how much each flash came after its beep.
std::vector<double> Clap(const XServer& screen, const PulseServer& server, int claps) {
    Painter painter(screen.display());
    const BeepPlayer beeps(server.Address(), "speaker", 100);
    std::vector<double> delays;
    for (std::size_t next = 0; static_cast<int>(delays.size()) < claps;) {
        const std::vector<double> heard = beeps.Heard();
        if (next == heard.size()) {
            SleepUntil(Now() + 0.01);
            continue;
        }
        SleepUntil(heard[next]);
        painter.Fill(painter.root(), {0, 0, painter.width(), painter.height()}, kWhite);
        delays.push_back(Now() - heard[next]);
        SleepUntil(heard[next] + kFlash);
        painter.Fill(painter.root(), {0, 0, painter.width(), painter.height()}, 0);
        ++next;
    }
    return delays;
}

TEST(Clap, FlashAndBeepStayTogether) {
    const TempFolder folder;
    const XServer screen("320x240x24");
    const PulseServer server(folder, "load-module module-null-sink sink_name=speaker\n");
    ASSERT_TRUE(server.Runs());
    const std::string file = folder / "clap.wmv";
    const TempFolder output;
    BackgroundCommand program(
        {"env", "-u", "WAYLAND_DISPLAY", "DISPLAY=" + screen.display(),
         "PULSE_SERVER=" + server.Address(), TESSIVO_CONSOLE, "-profile", "scrna", "-output", file},
        output.path());
    ASSERT_TRUE(Eventually([&] {
        std::error_code absent;
        return std::filesystem::file_size(file + ".part", absent) > 10'000 && !absent;
    })) << "the recording has begun";
    const std::vector<double> delays = Clap(screen, server, Claps());
    program.Signal(SIGTERM);
    EXPECT_EQ(program.Wait().status, 130);

    const clips::Contents contents = clips::Decode(file);
    const std::vector<double> flashes = clips::Flashes(contents);
    const std::vector<double> clicks = clips::Clicks(contents);
    ASSERT_EQ(flashes.size(), delays.size());
    ASSERT_EQ(clicks.size(), delays.size());
    std::vector<double> apart;
    for (std::size_t i = 0; i < delays.size(); ++i)
        apart.push_back(flashes[i] - clicks[i] - delays[i]);
    const auto [least, most] = std::minmax_element(apart.begin(), apart.end());
    RecordProperty("least_ms", std::to_string(*least * 1000));
    RecordProperty("most_ms", std::to_string(*most * 1000));
    EXPECT_GT(*least, -kFarthest);
    EXPECT_LT(*most, kFarthest);
}

}  // namespace
}  // namespace test_support
