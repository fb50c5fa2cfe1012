// The console program over a form of the test's own, its streams files, pipes and a terminal.
#include "platform/host/console_program.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

#include "platform/posix/file_descriptor.h"
#include "support/commands.h"

namespace {

using platform::ExitStatus;
using platform::Factory;
using platform::FileDescriptor;
using platform::FormEvents;
using platform::FormWindow;
using platform::host::ConsoleStreams;
using platform::host::ProgramInfo;
using platform::host::RunConsole;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

/// A form whose commands the test writes: the first word says what happens.
class ScriptedForm : public FormEvents {
  public:
    ScriptedForm(FormWindow& window, std::vector<Words>& commands)
        : window_(window), commands_(commands) {}

    void Form_Load() override {
        window_.Timer1().SetInterval(1);
        window_.Timer1().SetEnabled(true);
    }
    void Form_Unload() override { Say("unloaded"); }
    void cmdGo_Click() override { ADD_FAILURE() << "commands come as words"; }
    void txtCmd_KeyPress(std::int16_t /*key*/) override {}
    void cmdStop_Click() override {
        Say("stopping");
        window_.Loop().Post([this] { busy_ = false; });
    }
    void Timer1_Timer() override {
        ++ticks_;
        window_.Label1().SetCaption("Elapsed time: \r\n" + std::to_string(ticks_) + " secs");
        window_.Label3().SetCaption("Current bit rate: \r\n350 Kbps");
        if (ticks_ == 3) window_.Loop().Post([this] { busy_ = false; });
    }
    void RunCommand(const Words& words) override {
        commands_.push_back(words);
        window_.lblStatus().SetCaption("Initializing Codecs...");
        status_ = ExitStatus::Done;
        if (words[0] == "say") Say(words[1]);
        if (words[0] == "refuse") status_ = ExitStatus::Refused;
        if (words[0] == "box")
            window_.MessageBox("first\r\nsecond", "title", platform::MessageIcon::Critical);
        if (words[0] == "ask") {
            const auto answer = window_.AskCredentials(
                {"media/live", words[1] == "again", [&] { return words[1] != "late"; }});
            Say(answer ? answer->user + " " +
                             std::string(answer->password.rbegin(), answer->password.rend())
                       : "no answer");
        }
        if (words[0] == "throw") throw platform::Error(platform::kBusy, "the device is in use");
        if (words[0] == "encode") {  // for three ticks
            busy_ = true;
            window_.pb1().SetValue(50);
            window_.lblprgs().SetCaption("50%");
            window_.Timer1().SetEnabled(true);
        }
        if (words[0] == "interrupt" || words[0] == "hang") {
            busy_ = true;
            ::kill(::getpid(), SIGINT);
        }
        if (words[0] == "chatter") {  // until it is stopped
            busy_ = true;
            Chatter();
        }
        // Never comes back: only a second signal ends it.
        if (words[0] == "hang") {
            ::kill(::getpid(), SIGTERM);
            for (;;) ::pause();
        }
    }
    bool IsBusy() const override { return busy_; }
    ExitStatus Status() const override { return status_; }

  private:
    void Say(const std::string& text) { window_.txtInfo().AppendText(text + "\r\n"); }
    void Chatter() {
        if (!busy_) return;
        Say("still there");
        window_.Loop().Post([this] { Chatter(); });
    }

    FormWindow& window_;
    std::vector<Words>& commands_;
    bool busy_ = false;
    int ticks_ = 0;
    ExitStatus status_ = ExitStatus::Done;
};

class ConsoleProgram : public testing::Test {
  protected:
    int Run(const Words& words) {
        const FileDescriptor out(::open((folder_ / "out").c_str(), O_CREAT | O_RDWR, 0600));
        return Run(words, {null_.Number(), out.Number(), err_.Number()});
    }
    int Run(const Words& words, ConsoleStreams streams) {
        return RunConsole(
            words, ProgramInfo{"tessivo-console", "1.2.3", false}, {},
            [this](FormWindow& window, Factory&) -> std::unique_ptr<FormEvents> {
                return std::make_unique<ScriptedForm>(window, commands_);
            },
            streams);
    }
    std::string Out() const { return test_support::FileText(folder_ / "out"); }
    std::string Err() const { return test_support::FileText(folder_ / "err"); }

    test_support::TempFolder folder_;
    const FileDescriptor null_{::open("/dev/null", O_RDWR)};
    const FileDescriptor err_{::open((folder_ / "err").c_str(), O_CREAT | O_RDWR, 0600)};
    std::vector<Words> commands_;
};

TEST_F(ConsoleProgram, RunsOneCommandWithTheWordsAsGiven) {
    EXPECT_EQ(Run({"say", "a title\r\nwith  blanks"}), 0);
    EXPECT_THAT(commands_, ElementsAre(Words{"say", "a title\r\nwith  blanks"}));
    EXPECT_EQ(Out(), "a title\nwith  blanks\nunloaded\n");
    EXPECT_EQ(Err(), "Initializing Codecs...\n");
}

TEST_F(ConsoleProgram, StatusAndBoxesAreNotes) {
    EXPECT_EQ(Run({"refuse"}), 1);
    EXPECT_EQ(Run({"box"}), 0);
    EXPECT_THAT(Err(), HasSubstr("title\nfirst\nsecond\n"));
    EXPECT_EQ(Run({"throw"}), 2);
    EXPECT_THAT(Err(), HasSubstr("tessivo-console: the device is in use\n"));
}

TEST_F(ConsoleProgram, WaitsForTheEncoderWithoutControlCharacters) {
    EXPECT_EQ(Run({"encode", "x"}), 0);
    EXPECT_EQ(Out(), "unloaded\n");
    EXPECT_THAT(Err(), Not(HasSubstr("\r")));
    EXPECT_THAT(Err(), Not(HasSubstr("\a")));
}

TEST_F(ConsoleProgram, WithoutWordsAndTerminalShowsTheUsage) {
    EXPECT_EQ(Run({}), 1);
    EXPECT_THAT(Err(), testing::StartsWith("Usage: tessivo-console"));
    EXPECT_EQ(Out(), "");
    EXPECT_TRUE(commands_.empty());
}

TEST_F(ConsoleProgram, AnswersAboutItselfWithoutAForm) {
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_EQ(Out(), "tessivo-console 1.2.3\n");
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(Out(), HasSubstr("TESSIVO_DRIVE_ROOT"));
    EXPECT_THAT(Out(), HasSubstr("130"));
    EXPECT_EQ(Run({"--version", "x"}), 0);  // not alone: a command
    EXPECT_THAT(commands_, ElementsAre(Words{"--version", "x"}));
}

TEST_F(ConsoleProgram, TheFirstSignalStopsGracefully) {
    EXPECT_EQ(Run({"interrupt", "x"}), 130);
    EXPECT_EQ(Out(), "stopping\nunloaded\n");
}

TEST_F(ConsoleProgram, TheSecondSignalEndsAtOnce) {
    EXPECT_EXIT(Run({"hang", "x"}), testing::ExitedWithCode(130), "");
}

TEST_F(ConsoleProgram, AReaderThatGoesAwayStopsTheRun) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_EQ(Run({"chatter", "x"}, {null_.Number(), ends[1], null_.Number()}), 130);
    // A listing that was cut off was not done either.
    EXPECT_EQ(Run({"say", "x"}, {null_.Number(), ends[1], null_.Number()}), 130);
    ::close(ends[1]);
}

TEST_F(ConsoleProgram, LostOutputIsAFailureThatIsSaidOnce) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY));
    EXPECT_EQ(Run({"say", "x"}, {null_.Number(), full.Number(), err_.Number()}), 2);
    EXPECT_EQ(Err(),
              "Initializing Codecs...\nCannot write the output: the disk is full. Make room or "
              "choose another disk.\n");
}

TEST_F(ConsoleProgram, AClosedOutputIsNotTakenForAnotherDescriptor) {
    const auto run = [&] {
        ::close(STDOUT_FILENO);
        return Run({"say", "what no other file may get"},
                   {STDIN_FILENO, STDOUT_FILENO, err_.Number()});
    };
    EXPECT_EXIT(std::exit(run()), testing::ExitedWithCode(2), "");
    EXPECT_EQ(Err(),
              "Initializing Codecs...\nCannot write the output: it is closed. Open it first.\n");
}

TEST_F(ConsoleProgram, ALineMayHaveAMebibyte) {
    const std::string longest = "say " + std::string((1U << 20U) - 5, 'x') + "\n";
    std::ofstream(folder_ / "in") << longest << longest << "xx" << longest << "say x\n";
    const FileDescriptor in(::open((folder_ / "in").c_str(), O_RDONLY));
    EXPECT_EQ(Run({"-"}, {in.Number(), null_.Number(), err_.Number()}), 2);
    EXPECT_EQ(commands_.size(), 2U);
    EXPECT_THAT(Err(), HasSubstr("The input has a line of more than a mebibyte"));
}

/// A terminal whose other end the test holds; what the program writes is collected.
class TerminalProgram : public ConsoleProgram {
  protected:
    void SetUp() override {
        winsize size{24, 66, 0, 0};
        int master = -1;
        int slave = -1;
        ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, &size), 0);
        master_ = FileDescriptor(master);
        slave_ = FileDescriptor(slave);
    }
    void Type(const std::string& typed) const {
        EXPECT_EQ(::write(master_.Number(), typed.data(), typed.size()),
                  static_cast<ssize_t>(typed.size()));
    }
    /// Runs with all streams on the terminal; returns the status.
    /// @param password  typed when it is asked for
    int RunThere(const Words& words, const std::string& typed, const std::string& password = {}) {
        Type(typed);
        std::thread reader([&] {
            bool answered = password.empty();
            char buffer[256];
            for (;;) {
                const ssize_t count = ::read(master_.Number(), buffer, sizeof buffer);
                if (count <= 0) return;  // the terminal's last user has gone
                screen_.append(buffer, static_cast<std::size_t>(count));
                if (answered || !screen_.ends_with("Password: ")) continue;
                answered = true;
                Type(password);
            }
        });
        const int number = slave_.Number();
        const int status = Run(words, {number, number, number});
        slave_ = FileDescriptor();
        FileDescriptor(std::move(slave_));
        reader.join();
        return status;
    }

    FileDescriptor master_;
    FileDescriptor slave_;
    std::string screen_;
};

TEST_F(TerminalProgram, ReadsCommandsLineByLine) {
    EXPECT_EQ(RunThere({}, "say one\n\nrefuse\nsay  two\nquit\nsay three\n"), 0);
    EXPECT_THAT(commands_,
                ElementsAre(Words{"say", "one"}, Words{"refuse"}, Words{"say", "", "two"}));
    EXPECT_THAT(screen_, HasSubstr("> "));
    EXPECT_THAT(screen_, HasSubstr("one\r\n"));
}

TEST_F(TerminalProgram, TheEndOfTheInputLeavesWithTheLastStatus) {
    EXPECT_EQ(RunThere({}, "refuse\n\x04"), 1);
    EXPECT_THAT(commands_, ElementsAre(Words{"refuse"}));
}

TEST_F(TerminalProgram, AsksWhoPushesWithoutShowingThePassword) {
    // The echo of what was typed early comes at any place.
    struct Case {
        const char* how;  // the question's
        const char* typed;
        const char* password;
        const char* asked;
        const char* shown;
    };
    // clang-format off
    const Case cases[] = {
        {"first", " anna \n", " se cret\n", "media/live wants to know who pushes.\r\nUser name: ", "Password: \r\nanna terc es \r\n"},
        {"again", "anna\n",   "\n",         "name or the password is wrong.\r\nUser name: ",       "Password: \r\nanna \r\n"},
        {"first", "anna\n",   "\x04",       "User name: ", "Password: no answer\r\n"},
        {"first", "\n",       "",           "User name: ", "no answer\r\n"},
        {"first", "\x04",     "",           "User name: ", "no answer\r\n"},
        {"late",  "",         "",           "User name: ", "no answer\r\n"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SetUp();
        screen_.clear();
        EXPECT_EQ(RunThere({"ask", c.how}, c.typed, c.password), 0);
        EXPECT_THAT(screen_, HasSubstr(c.asked));
        EXPECT_THAT(screen_, HasSubstr(c.shown));
        EXPECT_THAT(screen_, Not(HasSubstr("cret")));
        termios after{};
        EXPECT_EQ(::tcgetattr(master_.Number(), &after), 0);
        EXPECT_NE(after.c_lflag & ECHO, 0U) << "typing is seen again";
    }
    EXPECT_EQ(Run({"ask", "first"}), 0);
    EXPECT_EQ(Out(), "no answer\nunloaded\n") << "without a terminal nobody is asked";
}

TEST_F(TerminalProgram, ProgressIsOneLineCutToTheWidthAndClearedAtTheEnd) {
    EXPECT_EQ(RunThere({"encode", "x"}, ""), 0);
    EXPECT_THAT(screen_, HasSubstr("\r[########        ]  50%  Elapsed time: "));
    EXPECT_THAT(screen_, HasSubstr(" secs  Current bit rate:"));
    EXPECT_THAT(screen_, Not(HasSubstr("350")));
    // Width 66: 65 characters are drawn, then blanked out before the next line.
    std::string cleared(67, ' ');
    cleared.front() = cleared.back() = '\r';
    EXPECT_THAT(screen_, HasSubstr(cleared + "unloaded"));
}

}  // namespace
