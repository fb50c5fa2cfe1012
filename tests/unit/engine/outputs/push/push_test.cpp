// Pushes to a server of all humours.
#include "engine/outputs/push/push.h"

#include <mutex>

#include "platform/error.h"
#include "support/commands.h"
#include "support/error_of.h"
#include "support/push_receiver.h"
#include "support/row_name.h"
#include "unit/engine/outputs/live_frames.h"

namespace {

using engine::PushOutput;
using engine::push::Push;
using test_support::Eventually;
using test_support::PushHumours;
using test_support::PushReceived;
using test_support::PushReceiver;
using testing::HasSubstr;
using testing::SizeIs;

class Pushing : public testing::Test {
  protected:
    PushOutput Output(const PushReceiver& receiver) const {
        PushOutput output;
        output.server = "127.0.0.1:" + std::to_string(receiver.Port());
        output.publishing_point = "live";
        output.answer_time = std::chrono::seconds(1);
        output.first_pause = std::chrono::milliseconds(10);
        return output;
    }
    std::unique_ptr<Push> Begun(const PushOutput& output) {
        auto push = std::make_unique<Push>(output, [this](const std::string& text) {
            const std::lock_guard lock(mutex_);
            notices_.push_back(text);
        });
        push->Begin(live_frames::Header());
        return push;
    }
    // A second of video, a packet for each frame.
    void WriteSecond(Push& push) {
        for (int i = 0; i < 10; ++i) {
            push.Write(frames_.Make(1, time_, i == 0, 2000));
            push.Flush();
            time_ += 100;
        }
    }
    std::vector<std::string> Notices() {
        const std::lock_guard lock(mutex_);
        return notices_;
    }

    live_frames::Frames frames_;
    std::int64_t time_ = 0;
    std::mutex mutex_;
    std::vector<std::string> notices_;
};

TEST_F(Pushing, SendsTheStreamAndItsEnd) {
    const PushReceiver receiver;
    PushOutput output = Output(receiver);
    output.publishing_point = "live show";
    output.template_name = "models/1";
    const auto push = Begun(output);
    WriteSecond(*push);
    push->Finish();
    ASSERT_TRUE(Eventually([&] { return receiver.Received().ended; }));
    const PushReceived received = receiver.Received();
    ASSERT_THAT(received.requests, SizeIs(2));
    EXPECT_THAT(received.requests[0], HasSubstr("POST /live%20show HTTP/1.1"));
    EXPECT_THAT(received.requests[0], HasSubstr("push-id=0"));
    EXPECT_THAT(received.requests[1], HasSubstr("Cookie: push-id=s0; other=1"));
    EXPECT_EQ(received.set_ups[0], "Template-URL: \"/models/1\"\r\nAutoDestroy: 0\r\n");
    EXPECT_THAT(received.headers, SizeIs(1));
    EXPECT_THAT(received.packets, SizeIs(10));
    for (const std::string& packet : received.packets)
        EXPECT_EQ(packet.back(), '\xAB') << "unpadded";
}

TEST_F(Pushing, GoesOnInAnotherRequestWhenOneIsFull) {
    for (std::uint64_t bytes = 9'000; bytes < 9'008; ++bytes) {
        SCOPED_TRACE(bytes);
        const PushReceiver receiver;
        PushOutput output = Output(receiver);
        output.body_bytes = bytes;
        const auto push = Begun(output);
        WriteSecond(*push);
        push->Finish();
        ASSERT_TRUE(Eventually([&] { return receiver.Received().ended; }));
        const PushReceived received = receiver.Received();
        EXPECT_THAT(received.headers, SizeIs(1));
        EXPECT_THAT(received.packets, SizeIs(10));
        EXPECT_GE(received.requests.size(), 4U);
        EXPECT_GE(received.fillers, 2);
    }
}

struct RefusalCase {
    const char* why;
    PushHumours humours;
    const char* user;
    const char* password;
    const char* words;  // "" = it is let in
};

PushHumours Wants(const char* password, bool digest) {
    PushHumours humours;
    humours.user = "anna";
    humours.password = password;
    humours.digest = digest;
    return humours;
}
PushHumours Says(unsigned status, const char* server = "Cougar/9.1") {
    PushHumours humours;
    humours.set_up_status = status;
    humours.server = server;
    return humours;
}
PushHumours IsSilent() {
    PushHumours humours;
    humours.silent = true;
    return humours;
}
PushHumours Moved() {
    PushHumours humours;
    humours.moved_to = "/elsewhere";
    return humours;
}

// clang-format off
const RefusalCase kRefusals[] = {
    {"the right password",              Wants("secret", true),   "anna", "secret", ""},
    {"as it is, where no more is asked", Wants("secret", false), "anna", "secret", ""},
    {"a wrong password",                Wants("secret", true),   "anna", "guess",  "refuses the user name or the password"},
    {"no password",                     Wants("secret", true),   "",     "",       "TESSIVO_PUSH_USER"},
    {"moved to another point",          Moved(),                 "",     "",       ""},
    {"no such point",                   Says(404),               "",     "",       "no such publishing point"},
    {"not allowed",                     Says(403),               "",     "",       "does not let anybody"},
    {"taken by another",                Says(409),               "",     "",       "receives a stream already"},
    {"busy",                            Says(503),               "",     "",       "busy"},
    {"something else",                  Says(422),               "",     "",       "422 Word"},
    {"an ordinary web server",          Says(204, "Other/2"),    "",     "",       "no media server"},
    {"says nothing",                    IsSilent(),              "",     "",       "does not answer"},
};
// clang-format on

class Refusals : public Pushing, public testing::WithParamInterface<RefusalCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Refusals, testing::ValuesIn(kRefusals), test_support::NameOfRow());

TEST_P(Refusals, AreToldAtTheStart) {
    const RefusalCase& c = GetParam();
    const PushReceiver receiver(c.humours);
    PushOutput output = Output(receiver);
    output.credentials = {c.user, c.password};
    const platform::Error error = test_support::ErrorOf([&] { Begun(output)->Finish(); });
    EXPECT_THAT(error.description(), HasSubstr(c.words));
    EXPECT_EQ(error.description().empty(), *c.words == '\0') << error.description();
    if (*c.password != '\0') {
        EXPECT_THAT(error.description(), testing::Not(HasSubstr(c.password)));
    }
}

struct QuestionCase {
    const char* why;
    const char* user;                  // that the environment has
    std::vector<const char*> answers;  // passwords; a null one is no answer
    std::size_t questions;
    const char* words;  // "" = it is let in
};

// clang-format off
const QuestionCase kQuestions[] = {
    {"knows it",               "",     {"secret"},             1, ""},
    {"has mistyped it",        "",     {"guess", "secret"},    2, ""},
    {"does not know it",       "",     {"a", "b", "c", "d"},   3, "refuses the user name or the password"},
    {"does not answer",        "",     {nullptr},              1, "set TESSIVO_PUSH_USER"},
    {"gives up",               "",     {"guess", nullptr},     2, "refuses the user name or the password"},
    {"has set something else", "anna", {"secret"},             0, "of TESSIVO_PUSH_USER"},
};
// clang-format on

class Questions : public Pushing, public testing::WithParamInterface<QuestionCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Questions, testing::ValuesIn(kQuestions), test_support::NameOfRow());

TEST_P(Questions, AreAskedUntilThePersonIsLetIn) {
    const QuestionCase& c = GetParam();
    const PushReceiver receiver(Wants("secret", true));
    PushOutput output = Output(receiver);
    output.credentials.user = c.user;
    std::size_t asked = 0;
    output.ask = [&](const platform::CredentialsQuestion& question) -> platform::CredentialsAnswer {
        EXPECT_EQ(question.server, output.server + "/live");
        EXPECT_EQ(question.refused, asked > 0);
        const char* const password = c.answers.at(asked++);
        if (password == nullptr) return {};
        return platform::Credentials{"anna", password};
    };
    const std::string error = test_support::ErrorOf([&] { Begun(output)->Finish(); }).description();
    EXPECT_THAT(error, HasSubstr(c.words));
    EXPECT_EQ(error.empty(), *c.words == '\0') << error;
    EXPECT_EQ(asked, c.questions);
}

TEST_F(Pushing, NobodyIsAskedForAConnectionThatWasLost) {
    PushHumours humours = Wants("secret", true);
    humours.hangs_up_after = 4;
    humours.forgets = true;
    const PushReceiver receiver(humours);
    PushOutput output = Output(receiver);
    int asked = 0;
    output.ask = [&](const platform::CredentialsQuestion&) {
        ++asked;
        return platform::Credentials{"anna", "secret"};
    };
    const auto push = Begun(output);
    WriteSecond(*push);
    EXPECT_TRUE(Eventually([&] { return receiver.Received().headers.size() == 2; }));
    push->Finish();
    EXPECT_EQ(asked, 1);
}

TEST_F(Pushing, NobodyThereIsToldAtTheStart) {
    PushOutput output;
    {
        const PushReceiver gone;
        output = Output(gone);
    }
    EXPECT_EQ(test_support::ErrorNumber([&] { Begun(output); }, {output.server, "live"}),
              platform::kDeviceNotConnected);
    output.server = "no-such-server.invalid";
    EXPECT_EQ(test_support::ErrorNumber([&] { Begun(output); }, {"no such server is known"}),
              platform::kDeviceNotConnected);
}

struct LossCase {
    const char* why;
    int hangs_up_after;
    int complains_after;
    bool forgets;
};
constexpr LossCase kLosses[] = {
    {"hangs up, and knows the session", 4, -1, false},
    {"hangs up, and has forgotten it", 4, -1, true},
    {"says that it is over", -1, 4, false},
};

class Losses : public Pushing, public testing::WithParamInterface<LossCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, Losses, testing::ValuesIn(kLosses), test_support::NameOfRow());

TEST_P(Losses, AreMadeGoodAtAKeyFrame) {
    const LossCase& c = GetParam();
    PushHumours humours;
    humours.hangs_up_after = c.hangs_up_after;
    humours.complains_after = c.complains_after;
    humours.forgets = c.forgets;
    const PushReceiver receiver(humours);
    const auto push = Begun(Output(receiver));
    WriteSecond(*push);
    const auto again = [&] {
        platform::NetworkStats stats;
        push->AddTo(stats);
        return stats.push->reconnections == 1 && receiver.Received().headers.size() == 2;
    };
    ASSERT_TRUE(Eventually(again));
    const std::size_t before = receiver.Received().packets.size();
    WriteSecond(*push);
    push->Finish();
    ASSERT_TRUE(Eventually([&] { return receiver.Received().ended; }));
    const PushReceived received = receiver.Received();
    EXPECT_EQ(received.headers[0], received.headers[1]);
    EXPECT_EQ(received.packets.size(), before + 10);
    const std::vector<std::string> notices = Notices();
    ASSERT_THAT(notices, SizeIs(3)) << "one line each: pushing, lost, found again";
    EXPECT_THAT(notices[1], HasSubstr("it is tried again"));
    EXPECT_THAT(notices[2], HasSubstr("again after"));
}

TEST_F(Pushing, AServerThatIsGoneForGoodHoldsNothingUp) {
    auto receiver = std::make_unique<PushReceiver>();
    const auto push = Begun(Output(*receiver));
    WriteSecond(*push);
    ASSERT_TRUE(Eventually([&] { return receiver->Received().packets.size() == 10; }));
    receiver.reset();
    for (int i = 0; i < 60; ++i) WriteSecond(*push);
    push->Finish();
    platform::NetworkStats stats;
    push->AddTo(stats);
    EXPECT_GT(stats.push->frames_dropped, 300) << "what waits is bounded";
    EXPECT_FALSE(stats.push->connected);
}

}  // namespace
