// What an encoder makes of requests, and what it forgets.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "conformance/wmv9/encoder_calls.h"
#include "conformance/wmv9/random.h"
#include "support/row_name.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;

namespace {

constexpr PictureKind kI = PictureKind::kI;
constexpr PictureKind kP = PictureKind::kP;
constexpr PictureKind kB = PictureKind::kB;

Call Encode(int place, PictureKind kind, double quantiser = 6) {
    return {
        Action::Encode,
        place,
        {.kind = kind, .quantiser = quantiser, .b_number = 1, .b_pictures = 1, .may_be_i = false}};
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
        settings.preset = random_.Below(101);
        settings.b_pictures = settings.profile == Profile::Simple ? 0 : random_.Below(4);
        settings.threads = random_.Between(1, 3);
        settings.adaptive = random_.Roll(50);
        made_.scene = {static_cast<Content>(random_.Below(kContents)), random_.Between(2, 20)};
    }

    RandomCalls Make() {
        constexpr int kGops = 5;
        for (int gop = 0; gop < kGops; ++gop) {
            const int b_pictures = shown_ == 0 ? 0 : random_.Below(made_.settings.b_pictures + 1);
            const PictureKind kind = random_.Pick({kI, kP, kP, kP});
            const int anchor = shown_ + b_pictures;
            if (!Picture(anchor, {.kind = kind, .may_be_i = b_pictures == 0 && random_.Roll(50)}))
                continue;
            for (int i = 1; i <= b_pictures; ++i)
                Picture(shown_ + i - 1, {.kind = kB, .b_number = i, .b_pictures = b_pictures});
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
                               {.kind = random_.Pick({kI, kP, kB}),
                                .quantiser = Quantiser(),
                                .may_be_i = random_.Roll(50)}});
    }

    Random random_;
    RandomCalls made_;
    int shown_ = 0;  // places given away
};

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

TEST(EncoderCalls, LeaveNoTraceWhenTheyAreTakenBack) {
    const Seeds seeds(60);
    for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed)
        EXPECT_EQ(FaultOfCalls(seed), "");
}

// ---- What becomes of a request

struct RequestCase {
    const char* why;
    int b_pictures;
    Calls before;
    Call call;
    PictureKind kind;
    double quantiser;
};

Call MayBeI(Call call) {
    call.request.may_be_i = true;
    return call;
}

const Call kFirst = Encode(0, kI);
constexpr int kCut = 5;

// clang-format off
const RequestCase kRequests[] = {
    // why                                   b_pictures before                   call                           kind quantiser
    {"a P picture, from nothing",                    1, {},                      Encode(0, kP, 4),              kI,  4},
    {"a B picture, from nothing",                    1, {},                      Encode(0, kB, 4),              kI,  4},
    {"a B picture, after one other",                 1, {kFirst},                Encode(1, kB, 4),              kP,  4},
    {"a B picture, where there is none",             0, {kFirst, Encode(1, kP)}, Encode(2, kB, 4),              kP,  4},
    {"finer than any quantiser",                     1, {kFirst},                Encode(1, kP, 0),              kP,  1},
    {"coarser than any",                             1, {kFirst},                Encode(1, kP, 200),            kP,  124},
    {"a half that is none",                          1, {kFirst},                Encode(1, kP, 12.25),          kP,  12},
    {"the scene goes on",                            1, {kFirst},                MayBeI(Encode(1, kP)),         kP,  6},
    {"the scene changes",                            1, {kFirst},                MayBeI(Encode(kCut, kP, 6.5)), kI,  6.5},
    {"the scene changes, but others follow",         1, {kFirst},                Encode(kCut, kP),              kP,  6},
};
// clang-format on

class EncoderRequests : public testing::TestWithParam<RequestCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, EncoderRequests, testing::ValuesIn(kRequests),
                         test_support::NameOfRow());

TEST_P(EncoderRequests, BecomeWhatCanBeCoded) {
    const RequestCase& row = GetParam();
    const EncoderSettings settings{
        .width = 64, .height = 64, .b_pictures = row.b_pictures, .adaptive = true};
    Calls calls = row.before;
    calls.push_back(row.call);
    const Outcome outcome = EncodeAll(settings, {.cut = kCut}, calls);
    EXPECT_EQ(outcome.fault, "");
    EXPECT_EQ(outcome.pictures.back().kind, row.kind);
    EXPECT_EQ(outcome.pictures.back().quantiser, row.quantiser);
}

// The last of the pictures is what the others refer to, whatever is seen.
TEST(EncoderCalls, NeverMakeABPictureOfTheLastOne) {
    for (const Content content : {Content::Flat, Content::Texture, Content::Noise}) {
        Encoder encoder({.width = 64, .height = 48, .b_pictures = 3});
        std::vector<PlanarPicture> pictures;
        for (int i = 0; i < 5; ++i) pictures.push_back(MakePicture(content, 64, 48, i, 1));
        std::vector<PictureView> next;
        EXPECT_EQ(encoder.ChooseBPictures(next, 1), 0);
        for (const PlanarPicture& picture : pictures) encoder.LookAhead(picture.View());
        EXPECT_EQ(encoder.ChooseBPictures(next, 1), 0);
        encoder.Encode(pictures[0].View(), {.number = 0});
        for (std::size_t count = 1; count <= 4; ++count) {
            next.push_back(pictures[count].View());
            const int b_pictures = encoder.ChooseBPictures(next, 1);
            EXPECT_GE(b_pictures, 0);
            EXPECT_LT(b_pictures, static_cast<int>(count));
        }
    }
}

}  // namespace
}  // namespace wmv9_conformance
