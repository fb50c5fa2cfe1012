// Pushes of the console program to a server that wants to know who pushes.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "end_to_end/console_run.h"
#include "support/push_receiver.h"

namespace test_support {
namespace {

using testing::HasSubstr;
using testing::Not;

class PushToAServerThatAsks : public testing::Test {
  protected:
    static PushHumours KnowsAnna() {
        PushHumours humours;
        humours.user = "anna";
        humours.password = "se cret";
        return humours;
    }
    PushToAServerThatAsks() { MakeClip(clip_, 1, "64x48", 10); }

    std::vector<std::string> Words() const {
        return {TESSIVO_CONSOLE,
                "--json",
                "-input",
                clip_,
                "-profile",
                "av100",
                "-v_codec",
                "WMV8",
                "-v_width",
                "64",
                "-v_height",
                "48",
                "-output",
                file_,
                "-videoonly",
                "-push",
                "127.0.0.1:" + std::to_string(receiver_.Port()),
                "live"};
    }
    // Runs the program on a terminal of its own and types what each prompt is answered with.
    CommandResult OnTerminal(std::vector<std::pair<std::string, std::string>> answers) const {
        std::vector<std::string> words = Words();
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        int terminal = -1;
        const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (process == 0) {
            execv(arguments.front(), arguments.data());
            _exit(127);
        }
        CommandResult result;
        char some[1024];
        std::size_t answered = 0;  // of what was written
        for (;;) {
            const ssize_t count = read(terminal, some, sizeof some);
            if (count <= 0) break;
            result.out.append(some, static_cast<std::size_t>(count));
            if (answers.empty()) continue;
            const std::size_t prompt = result.out.find(answers.front().first, answered);
            if (prompt == std::string::npos) continue;
            answered = prompt + answers.front().first.size();
            const std::string typed = answers.front().second;
            answers.erase(answers.begin());
            EXPECT_EQ(write(terminal, typed.data(), typed.size()),
                      static_cast<ssize_t>(typed.size()));
        }
        close(terminal);
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        result.status = WEXITSTATUS(status);
        EXPECT_TRUE(answers.empty()) << result.out;
        return result;
    }

    const TempFolder folder_;
    const std::string clip_ = folder_ / "clip.avi";
    const std::string file_ = folder_ / "film.wmv";
    const PushReceiver receiver_{KnowsAnna()};
};

TEST_F(PushToAServerThatAsks, ThePersonAtTheTerminalIsAsked) {
    const CommandResult result = OnTerminal({{"User name: ", "anna\n"},
                                             {"Password: ", "secret\n"},
                                             {"User name: ", "anna\n"},
                                             {"Password: ", "se cret\n"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(receiver_.Received().ended);
    EXPECT_FALSE(receiver_.Received().packets.empty());
    EXPECT_EQ(DecodeMessages(file_), "");
    EXPECT_THAT(result.out, HasSubstr("name or the password is wrong"));
    EXPECT_THAT(result.out, Not(HasSubstr("cret")));
}

TEST_F(PushToAServerThatAsks, AnInterruptIsAnAnswer) {
    const CommandResult result = OnTerminal({{"User name: ", "anna\n"}, {"Password: ", "\x03"}});
    EXPECT_EQ(result.status, 130) << result.out;
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(PushToAServerThatAsks, WithoutATerminalTheVariablesAreNamed) {
    const CommandResult result = RunCommand(Words());
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.out, HasSubstr("wants a user name and a password: set TESSIVO_PUSH_USER"));
    EXPECT_FALSE(std::filesystem::exists(file_));
}

}  // namespace
}  // namespace test_support
