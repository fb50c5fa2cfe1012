// Sessions and profiles that the console program saves, and what it makes of them when it loads
// them.
#include <fstream>

#include "end_to_end/console_run.h"
#include "profiles/predefined_profiles.h"
#include "support/pulse_server.h"
#include "support/x_server.h"

namespace test_support {
namespace {

using testing::HasSubstr;

std::string Joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    return line;
}

/// The packets of both streams, with their times.
std::string Packets(const std::string& file) {
    const CommandResult result = RunCommand(
        {"ffmpeg", "-v", "error", "-i", file, "-c", "copy", "-map", "0", "-f", "framemd5", "-"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_GT(result.out.size(), 500U) << file;
    return result.out;
}

class SessionFiles : public testing::Test {
  protected:
    SessionFiles() { MakeClip(clip, 1, "64x48", 10); }

    const TempFolder folder;
    const std::string clip = folder / "clip.avi";
};

// Every session is explained as it was typed and as it comes out of its file.
TEST_F(SessionFiles, AreExplainedAsWhatWasTyped) {
    const XServer screen("320x240x24");
    const PulseServer sound(folder, "load-module module-null-sink sink_name=speaker\n");
    ASSERT_TRUE(sound.Runs());
    Ffmpeg("-f lavfi -i testsrc2=size=64x48 -frames:v 1", folder / "card.png");

    std::vector<std::string> commands;
    for (const profiles::ProfileSummary& row : profiles::PredefinedProfiles()) {
        const std::string code(row.code);
        const bool is_screen = code.rfind("scrn", 0) == 0;
        commands.push_back((is_screen ? "" : "-input " + clip + " ") + "-output " +
                           (folder / "out.wmv") + " -profile " + code);
    }
    const std::string film = "-input " + clip + " -output " + (folder / "out.wmv") + " ";
    for (int audio = 0; audio <= 4; ++audio)
        for (int video = 0; video <= 4; ++video)
            commands.push_back(film + Joined({"-a_mode", std::to_string(audio), "-v_mode",
                                              std::to_string(video)}));
    for (const char* words :
         {"-v_framerate 12 -v_profile MP -v_performance 80 -v_keydist 3 -v_quality 40",
          "-time 100 900 -title A -author B -copyright C -description D -rating E",
          "-a_folddown6to2 10 3 3 -v_clip 2 4 6 8 -pixelratio 16 15 -pixelformat YUY2",
          "-v_codec MP41 -v_preproc 17 -maxpacket 3000 -minpacket 500",
          "-a_codec WMSP9 -a_content 1 -broadcast 8123",
          "-a_codec PCM -v_codec UNCOMP -push media.example live base", "-audioonly", "-videoonly",
          "-a_codec WMA9LSL -a_mode 2 -v_preproc 7"})
        commands.push_back(film + words);
    commands.push_back("-input " + (folder / "card.png") + " -output relative.wmv -duration 2");

    std::ofstream typed(folder / "typed");
    std::ofstream saving(folder / "saving");
    std::ofstream loaded(folder / "loaded");
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const std::string file = folder / (std::to_string(i) + ".wme");
        typed << "--explain " << commands[i] << "\n";
        saving << "--save-session " << file << " " << commands[i] << "\n";
        loaded << "--explain -wme " << file << "\n";
    }
    typed.close();
    saving.close();
    loaded.close();
    const auto run = [&](const std::string& lines) {
        return RunCommand({"sh", "-c",
                           "cd " + folder.path().string() + " && env -u WAYLAND_DISPLAY DISPLAY=" +
                               screen.display() + " PULSE_SERVER=" + sound.Address() +
                               " " TESSIVO_CONSOLE " - < " + lines});
    };
    const CommandResult saved = run("saving");
    EXPECT_EQ(saved.status, 0) << saved.out;
    EXPECT_EQ(CountOf(saved.out, "Session saved as "), static_cast<int>(commands.size()));
    const CommandResult explained = run("typed");
    EXPECT_EQ(explained.status, 0) << explained.err;
    EXPECT_EQ(run("loaded").out, explained.out);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.wmv"));
}

TEST_F(SessionFiles, AndProfilesEncodeWhatWasTyped) {
    using Words = std::vector<std::string>;
    const struct {
        Words profile;
        Words command;  // what is not the profile's
    } kCases[] = {
        {{"-profile", "av100"}, {"-time", "200", "800", "-v_clip", "4", "4", "4", "4"}},
        {{"-v_mode", "4", "-v_bitrate", "60000", "-v_peakbitrate", "90000"}, {}},
        {{"-profile", "avq97vbr"}, {"-v_preproc", "5"}},
        {{"-v_codec", "WMV8", "-v_bitrate", "40000"}, {"-v_mode", "1"}},
    };
    const std::string session = folder / "job.wme";
    const std::string profile = folder / "own.prx";
    const auto joined = [](Words words, const Words& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(Joined(row.profile));
        const Words typed = joined({"-input", clip, "-output", folder / "typed.wmv"},
                                   joined(row.profile, row.command));
        EXPECT_EQ(Console(joined({"--save-session", session}, typed)).status, 0);
        EXPECT_EQ(Console(joined(typed, {"-saveprofile", profile})).status, 0);
        EXPECT_EQ(Console({"-wme", session, "-output", folder / "session.wmv"}).status, 0);
        EXPECT_EQ(Packets(folder / "session.wmv"), Packets(folder / "typed.wmv"));

        const Words loading = {"-input",       clip,   "-output", folder / "profile.wmv",
                               "-loadprofile", profile};
        EXPECT_EQ(Console(joined(loading, row.command)).status, 0);
        EXPECT_EQ(Packets(folder / "profile.wmv"), Packets(folder / "typed.wmv"));
    }
}

TEST_F(SessionFiles, OptionsOfTheCommandAreLaidOverThem) {
    const std::string session = folder / "job.wme";
    ASSERT_EQ(Console({"--save-session", session, "-input", clip, "-output", folder / "a.wmv",
                       "-profile", "av100", "-title", "Old"})
                  .status,
              0);
    MakeClip(folder / "other.avi", 1, "96x64", 10);
    const CommandResult result =
        Console({"--explain", "-wme", session, "-input", folder / "other.avi", "-title", "New",
                 "-v_bitrate", "50000"});
    EXPECT_EQ(result.status, 0) << result.out;
    for (const std::string& line :
         {"video.Input = " + (folder / "other.avi") + "\n",
          "audio.Input = " + (folder / "other.avi") + "\n", std::string("display.Title = New\n"),
          std::string("audience.VideoBitrate = 50000\n"),
          std::string("audience.VideoWidth = 320\n"),
          "file.LocalFileName = " + (folder / "a.wmv") + "\n"})
        EXPECT_THAT(result.out, HasSubstr(line));
}

TEST_F(SessionFiles, AreRefusedInOneLine) {
    std::ofstream(folder / "broken.wme") << "<EncoderSession><SourceGroup></EncoderSession>";
    std::ofstream(folder / "named.wme")
        << "<s><SourceGroup><Source Type='2' Input='clip.avi'/><Profile Name='av99'/></SourceGroup>"
           "</s>";
    std::ofstream(folder / "gone.wme")
        << "<s><SourceGroup><Source Type='2' Input='gone.avi'/><Profile Name='v32'/></SourceGroup>"
           "</s>";
    const struct {
        const char* why;
        std::vector<std::string> words;
        std::string line;
    } kCases[] = {
        {"broken",
         {"-wme", folder / "broken.wme"},
         "Loading the session (.wme) file failed: " + (folder / "broken.wme")},
        {"an unknown profile",
         {"-wme", folder / "named.wme"},
         "Loading the session (.wme) file failed: " + (folder / "named.wme")},
        {"a source that is not there",
         {"-wme", folder / "gone.wme", "-output", folder / "o.wmv"},
         "Prepare to encode failed with error -2147024894 "},
        {"no command to save", {"--save-session", folder / "s.wme"}, "Error: 0x80070057 - "},
        {"a folder",
         {"--save-session", folder / "s.wme", "-input", folder.path().string(), "-silent"},
         "Error: 0x80070057 - "},
        {"over its input",
         {"--save-session", clip, "-input", clip, "-profile", "av100"},
         "Error: 0x80070057 - "},
        {"no such place",
         {"--save-session", folder / "no/s.wme", "-input", clip, "-profile", "av100"},
         "Error: 0x80070003 - "},
    };
    const auto size = std::filesystem::file_size(clip);
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        const CommandResult result = Console(row.words);
        EXPECT_EQ(result.status, 1) << result.out << result.err;
        EXPECT_EQ(result.out.rfind(row.line, 0), 0U) << result.out;
        EXPECT_EQ(std::ranges::count(result.out, '\n'), 1) << result.out;
    }
    EXPECT_EQ(std::filesystem::file_size(clip), size);
    EXPECT_FALSE(std::filesystem::exists(folder / "s.wme"));
}

TEST_F(SessionFiles, ASessionIsSavedWithWhatWasUnknownInAnother) {
    std::ofstream(folder / "old.wme")
        << "<Job Mine='1'><Wrap><SourceGroup><Source Type='2' Input='clip.avi' Secret='2'/>"
           "<Profile Name='v32'/></SourceGroup></Wrap><Plugin>three</Plugin></Job>";
    const CommandResult result =
        Console({"--save-session", folder / "new.wme", "-wme", folder / "old.wme", "-title", "T"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr("4 parts of the session were not understood"));
    const std::string text = RunCommand({"iconv", "-f", "UTF-16", folder / "new.wme"}).out;
    for (const char* part : {"Mine=\"1\"", "<Wrap>", "Secret=\"2\"", "<Plugin>three</Plugin>",
                             "<Title>T</Title>", "Input=\"clip.avi\"", "<![CDATA["})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_EQ(Console({"-wme", folder / "new.wme", "-output", folder / "o.wmv"}).status, 0);
    EXPECT_EQ(Probe(folder / "o.wmv", "")["tag:title"], "T");
}

}  // namespace
}  // namespace test_support
