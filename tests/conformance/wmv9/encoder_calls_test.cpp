// What an encoder makes of requests, and what it forgets.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <vector>

#include "conformance/wmv9/encoder_calls.h"

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

Call Recode(int place, PictureKind kind, double quantiser) {
    Call call = Encode(place, kind, quantiser);
    call.action = Action::Recode;
    return call;
}

const Call kForget{Action::Forget, 0, {}};

struct ChangeCase {
    const char* why;
    Calls calls;
    Calls plain;  // that leave the same stream
};

TEST(EncoderCalls, KeepNoTraceOfWhatWasForgottenOrCodedAgain) {
    // clang-format off
    const ChangeCase kCases[] = {
        {"a predicted picture, coarser",
         {Encode(0, kKey), Encode(1, kPredicted), Recode(1, kPredicted, 20), Encode(2, kPredicted)},
         {Encode(0, kKey), Encode(1, kPredicted, 20), Encode(2, kPredicted)}},
        {"a predicted picture, as a key picture",
         {Encode(0, kKey), Encode(1, kPredicted), Encode(2, kPredicted), Recode(2, kKey, 4), Encode(3, kPredicted)},
         {Encode(0, kKey), Encode(1, kPredicted), Encode(2, kKey, 4), Encode(3, kPredicted)}},
        {"a key picture, predicted, twice",
         {Encode(0, kKey), Encode(1, kPredicted), Encode(2, kKey), Recode(2, kPredicted, 2), Recode(2, kPredicted, 9), Encode(3, kPredicted)},
         {Encode(0, kKey), Encode(1, kPredicted), Encode(2, kPredicted, 9), Encode(3, kPredicted)}},
        {"a picture between others, finer",
         {Encode(0, kKey), Encode(2, kPredicted), Encode(1, kBetween, 9), Recode(1, kBetween, 3), Encode(3, kPredicted)},
         {Encode(0, kKey), Encode(2, kPredicted), Encode(1, kBetween, 3), Encode(3, kPredicted)}},
        {"the first picture",
         {Encode(0, kKey, 3), Recode(0, kKey, 12), Encode(1, kPredicted)},
         {Encode(0, kKey, 12), Encode(1, kPredicted)}},
        {"a predicted picture forgotten",
         {Encode(0, kKey), Encode(1, kPredicted), kForget, Encode(2, kPredicted), Encode(3, kPredicted)},
         {Encode(0, kKey), Encode(2, kPredicted), Encode(3, kPredicted)}},
        {"a key picture forgotten, before one between others",
         {Encode(0, kKey), Encode(2, kPredicted), Encode(3, kKey), kForget, Encode(1, kBetween)},
         {Encode(0, kKey), Encode(2, kPredicted), Encode(1, kBetween)}},
        {"a picture between others forgotten",
         {Encode(0, kKey), Encode(3, kPredicted), Encode(1, kBetween), kForget, Encode(2, kBetween), Encode(4, kPredicted)},
         {Encode(0, kKey), Encode(3, kPredicted), Encode(2, kBetween), Encode(4, kPredicted)}},
        {"coded again and then forgotten",
         {Encode(0, kKey), Encode(1, kPredicted), Recode(1, kPredicted, 2), kForget, Encode(2, kPredicted)},
         {Encode(0, kKey), Encode(2, kPredicted)}},
        {"the first picture forgotten",
         {Encode(0, kKey), kForget, Encode(1, kPredicted), Encode(2, kPredicted)},
         {Encode(1, kKey), Encode(2, kPredicted)}},
    };
    // clang-format on
    for (const ChangeCase& row : kCases) {
        for (const Content content : {Content::Texture, Content::Fade}) {
            SCOPED_TRACE(fmt::format("{}, content {}", row.why, static_cast<int>(content)));
            const EncoderSettings settings{.width = 82, .height = 50, .between = 1};
            const Outcome changed = EncodeAll(settings, {content}, row.calls);
            EXPECT_EQ(changed.fault, "");
            EXPECT_EQ(DataOf(changed), DataOf(EncodeAll(settings, {content}, row.plain)));
        }
    }
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
        {"the scene changes",                    1, {key},                            MayBeKey(Encode(kCut, kPredicted)), kKey,  6},
        {"the scene changes, but others follow", 1, {key},                            Encode(kCut, kPredicted),      kPredicted, 6},
    };
    // clang-format on
    for (const RequestCase& row : kCases) {
        SCOPED_TRACE(row.why);
        const EncoderSettings settings{.width = 64, .height = 64, .between = row.between};
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
