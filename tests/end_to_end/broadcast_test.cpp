// Broadcasts of the console program, as players get them.
#include <signal.h>

#include "end_to_end/console_run.h"
#include "support/tcp_client.h"

namespace test_support {
namespace {

using testing::HasSubstr;

class OnAir : public testing::Test {
  protected:
    OnAir() { MakeClip(clip_, 3, "160x120", 15); }
    std::vector<std::string> Words(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {TESSIVO_CONSOLE,
                                          "-input",
                                          clip_,
                                          "-profile",
                                          "av100",
                                          "-v_width",
                                          "160",
                                          "-v_height",
                                          "120",
                                          "-v_codec",
                                          "WMV8",
                                          "-v_mode",
                                          "0",
                                          "-v_performance",
                                          "0",
                                          "-broadcast",
                                          std::to_string(port_)};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    void AwaitPort() const {
        EXPECT_TRUE(Eventually([&] { return TcpClient(port_).IsConnected(); }));
    }
    std::string Url(const char* scheme) const {
        return std::string(scheme) + "://127.0.0.1:" + std::to_string(port_) + "/";
    }
    // Of all decoded pictures, or of all decoded sound.
    std::string HashOf(const std::string& input, const char* stream) const {
        const std::string hash = folder_ / (std::string("hash") + stream[2]);
        return FileText(Ffmpeg(
            "-v warning -y -i " + input + " -map " + stream + " -fps_mode passthrough -f md5",
            hash));
    }

    const TempFolder folder_;
    const std::string clip_ = folder_ / "clip.avi";
    const std::uint16_t port_ = FreePort();
};

TEST_F(OnAir, PlayersGetWhatTheFileHolds) {
    const std::string file = folder_ / "film.wmv";
    for (const char* scheme : {"mmsh", "http"}) {
        SCOPED_TRACE(scheme);
        BackgroundCommand broadcast(Words({"-output", file}), folder_.path());
        AwaitPort();
        const std::string video = HashOf(Url(scheme), "0:v");
        const CommandResult result = broadcast.Wait();
        EXPECT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_THAT(result.err, HasSubstr("Broadcasting at http://"));
        EXPECT_GE(ReportFigure(result.out, "Clients served"), 1);
        EXPECT_NE(video, "");
        EXPECT_EQ(video, HashOf(file, "0:v"));
    }
}

TEST_F(OnAir, StopEndsPlayersAndLeavesNoPort) {
    BackgroundCommand broadcast(Words({"-time", "0", "0", "-silent"}), folder_.path());
    AwaitPort();
    TcpClient player(port_);
    player.Say("GET / HTTP/1.0\r\nUser-Agent: NSPlayer/9\r\nPragma: xPlayStrm=1\r\n\r\n");
    player.HearUntil("$D");  // the stream runs
    broadcast.Signal(SIGINT);
    EXPECT_TRUE(player.HearAll().ends_with(std::string("$E\x04\0\0\0\0\0", 8)));
    EXPECT_EQ(broadcast.Wait().status, 130);
    EXPECT_FALSE(TcpClient(port_).IsConnected());
}

TEST_F(OnAir, APortThatIsTakenIsSaidBeforeAnythingIsWritten) {
    BackgroundCommand first(Words(), folder_.path());
    AwaitPort();
    const std::string file = folder_ / "film.wmv";
    const CommandResult second = RunCommand(Words({"-output", file}));
    EXPECT_EQ(second.status, 2);
    EXPECT_THAT(second.out, HasSubstr("Port " + std::to_string(port_) + " is in use"));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_FALSE(std::filesystem::exists(file + ".part"));
    EXPECT_EQ(first.Wait().status, 0);
}

}  // namespace
}  // namespace test_support
