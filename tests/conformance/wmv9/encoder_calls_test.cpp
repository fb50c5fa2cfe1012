// What an encoder makes of requests, and what it forgets.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "conformance/wmv9/campaigns.h"
#include "conformance/wmv9/encoder_calls.h"
#include "conformance/wmv9/random.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;

namespace {

constexpr PictureKind kKey = PictureKind::Key;
constexpr PictureKind kPredicted = PictureKind::Predicted;
constexpr PictureKind kBetween = PictureKind::Between;

Call Encode(int place, PictureKind kind, double quantiser = 6) {
    return {Action::Encode,
            place,
            {.kind = kind, .quantiser = quantiser, .place = 1, .run = 1, .may_be_key = false}};
}

// ---- Calls at random

struct RandomCalls {
    EncoderSettings settings;
    Scene scene;
    Calls calls;
    Calls plain;  // without those that were taken back
};

class CallMaker {
  public:
    explicit CallMaker(std::uint64_t seed) : random_(seed) {
        EncoderSettings& settings = made_.settings;
        settings.width = 2 * random_.Between(1, 50);
        settings.height = 2 * random_.Between(1, 50);
        settings.profile = random_.Roll(25) ? Profile::Simple : Profile::Main;
        settings.effort = random_.Below(101);
        settings.between = settings.profile == Profile::Simple ? 0 : random_.Below(4);
        settings.threads = random_.Between(1, 3);
        settings.adaptive = random_.Roll(50);
        made_.scene = {static_cast<Content>(random_.Below(kContents)), random_.Between(2, 20)};
    }

    RandomCalls Make() {
        constexpr int kGroups = 5;
        for (int group = 0; group < kGroups; ++group) {
            const int run = shown_ == 0 ? 0 : random_.Below(made_.settings.between + 1);
            const PictureKind kind = random_.Pick({kKey, kPredicted, kPredicted, kPredicted});
            const int anchor = shown_ + run;
            if (!Picture(anchor, {.kind = kind, .may_be_key = run == 0 && random_.Roll(50)}))
                continue;
            for (int place = 1; place <= run; ++place)
                Picture(shown_ + place - 1, {.kind = kBetween, .place = place, .run = run});
            shown_ = anchor + 1;
        }
        return made_;
    }

  private:
    double Quantiser() { return random_.Between(2, 62) / 2.0; }

    // False when it is taken back in the end.
    bool Picture(int place, PictureRequest request) {
        if (random_.Roll(20)) {
            Attempt(Action::Encode, place);
            made_.calls.push_back({Action::Forget, 0, {}});
        }
        const bool again = random_.Roll(30);
        if (again) Attempt(Action::Encode, place);
        if (again && random_.Roll(30)) Attempt(Action::Recode, place);
        request.quantiser = Quantiser();
        made_.calls.push_back({again ? Action::Recode : Action::Encode, place, request});
        if (random_.Roll(10)) {
            made_.calls.push_back({Action::Forget, 0, {}});
            return false;
        }
        made_.plain.push_back({Action::Encode, place, request});
        return true;
    }

    void Attempt(Action action, int place) {
        made_.calls.push_back({action,
                               place,
                               {.kind = random_.Pick({kKey, kPredicted, kBetween}),
                                .quantiser = Quantiser(),
                                .may_be_key = random_.Roll(50)}});
    }

    Random random_;
    RandomCalls made_;
    int shown_ = 0;  // places given away
};

}  // namespace

std::string FaultOfCalls(std::uint64_t seed) {
    const RandomCalls made = CallMaker(seed).Make();
    const Outcome outcome = EncodeAll(made.settings, made.scene, made.calls);
    std::string fault = outcome.fault;
    EncoderSettings settings = made.settings;
    settings.threads = 1;
    if (fault.empty() && DataOf(outcome) != DataOf(EncodeAll(settings, made.scene, made.plain)))
        fault = "what was taken back, or threads, left a trace";
    if (fault.empty()) return fault;
    return fmt::format("calls {}, {}x{}: {}", seed, settings.width, settings.height, fault);
}

namespace {

TEST(EncoderCalls, LeaveNoTraceWhenTheyAreTakenBack) {
    constexpr std::uint64_t kSeeds = 60;
    for (std::uint64_t seed = 0; seed < kSeeds; ++seed) EXPECT_EQ(FaultOfCalls(seed), "");
}

// ---- What becomes of a request

struct RequestCase {
    const char* why;
    int between;
    Calls before;
    Call call;
    PictureKind kind;
    double quantiser;
};

Call MayBeKey(Call call) {
    call.request.may_be_key = true;
    return call;
}

TEST(EncoderCalls, TurnRequestsIntoWhatCanBeCoded) {
    const Call key = Encode(0, kKey);
    constexpr int kCut = 5;
    // clang-format off
    const RequestCase kCases[] = {
        // why                                  between before                        call                           kind        quantiser
        {"predicted from nothing",               1, {},                               Encode(0, kPredicted, 4),      kKey,       4},
        {"between nothing",                      1, {},                               Encode(0, kBetween, 4),        kKey,       4},
        {"between, after one picture",           1, {key},                            Encode(1, kBetween, 4),        kPredicted, 4},
        {"between, where there is to be none",   0, {key, Encode(1, kPredicted)},     Encode(2, kBetween, 4),        kPredicted, 4},
        {"finer than any quantiser",             1, {key},                            Encode(1, kPredicted, 0),      kPredicted, 1},
        {"coarser than any",                     1, {key},                            Encode(1, kPredicted, 99),     kPredicted, 31},
        {"a half that is none",                  1, {key},                            Encode(1, kPredicted, 12.25),  kPredicted, 12},
        {"the scene goes on",                    1, {key},                            MayBeKey(Encode(1, kPredicted)), kPredicted, 6},
        {"the scene changes",                    1, {key},                            MayBeKey(Encode(kCut, kPredicted, 6.5)), kKey, 6.5},
        {"the scene changes, but others follow", 1, {key},                            Encode(kCut, kPredicted),      kPredicted, 6},
    };
    // clang-format on
    for (const RequestCase& row : kCases) {
        SCOPED_TRACE(row.why);
        const EncoderSettings settings{
            .width = 64, .height = 64, .between = row.between, .adaptive = true};
        Calls calls = row.before;
        calls.push_back(row.call);
        const Outcome outcome = EncodeAll(settings, {.cut = kCut}, calls);
        EXPECT_EQ(outcome.fault, "");
        EXPECT_EQ(outcome.pictures.back().kind, row.kind);
        EXPECT_EQ(outcome.pictures.back().quantiser, row.quantiser);
    }
}

// A run's last picture is never between others, whatever is seen.
TEST(EncoderCalls, LeaveTheLastPictureOfARunToBePredicted) {
    Encoder encoder({.width = 64, .height = 48, .between = 3});
    for (const Content content : {Content::Flat, Content::Texture, Content::Noise}) {
        std::vector<PlanarPicture> pictures;
        for (int i = 0; i < 5; ++i) pictures.push_back(MakePicture(content, 64, 48, i, 1));
        std::vector<PictureView> next;
        EXPECT_EQ(encoder.ChooseBetween(pictures[0].View(), next), 0);
        for (std::size_t count = 1; count <= 4; ++count) {
            next.push_back(pictures[count].View());
            const int between = encoder.ChooseBetween(pictures[0].View(), next);
            EXPECT_GE(between, 0);
            EXPECT_LT(between, static_cast<int>(count));
        }
    }
}

}  // namespace
}  // namespace wmv9_conformance
