// Rate control over a pretended encoder: pictures take what a model says, not the one that the
// control believes in.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "codecs/common/gop_rate_control.h"
#include "codecs/common/rate_allocator.h"
#include "codecs/common/two_pass_plan.h"
#include "support/row_name.h"

namespace {

using namespace codecs;

constexpr double kFps = 25;
constexpr int kGopPictures = 75;
constexpr double kGopSeconds = kGopPictures / kFps;
constexpr RateExperience kUsual{kFps, 2, 3000, 1.4, 1500};

struct Shot {
    double detail = 1;  // of its I picture
    double motion = 0.1;
    double unforeseen = 1;  // times the bits that the costs tell
};

// What a picture takes at a quantiser: a little steeper than the control's model, and never quite
// even.
struct PretendedEncoder {
    std::function<Shot(int picture)> shot;
    std::mt19937 noise{7};

    PictureBits Take(int picture, PictureKind kind, double quantiser) {
        const Shot seen = shot(picture);
        std::uniform_real_distribution<double> uneven(0.8, 1.25);
        const bool is_i = kind == PictureKind::kI;
        const double part = is_i ? 1 : kind == PictureKind::kB ? 0.6 * seen.motion : seen.motion;
        const double bits =
            2.7e6 * seen.detail * part * seen.unforeseen * uneven(noise) *
            (is_i ? std::pow(quantiser + 1, -1.1) : 10 * std::pow(quantiser + 1, -2.1));
        return PictureBits::Taken(is_i ? bits : 0, is_i ? 0 : bits, is_i ? 4000 : 1200, quantiser);
    }
    double IntraCost(int picture) const { return 1 + 1.2e6 * shot(picture).detail; }
    double InterCost(int picture) const {
        return 1.2e6 * shot(picture).detail * shot(picture).motion;
    }
};

struct Outcome {
    double bits = 0;
    double fullest_vbv = 0;
    int dropped = 0;
    std::vector<double> gop_bits;
    std::vector<double> quantisers;
    std::vector<FirstPassGop> report;
};

// The pictures of a GOP in coding order: consecutive B pictures after the P picture behind them.
std::vector<std::pair<int, PictureKind>> CodingOrder(int b_pictures) {
    std::vector<std::pair<int, PictureKind>> order{{0, PictureKind::kI}};
    for (int first = 1; first < kGopPictures; first += b_pictures + 1) {
        const int last = std::min(first + b_pictures, kGopPictures - 1);
        order.emplace_back(last, PictureKind::kP);
        for (int i = first; i < last; ++i) order.emplace_back(i, PictureKind::kB);
    }
    return order;
}

// With as many GOPs at work at once as `at_once` and the allocator allow: each is closed as late as
// can be.
Outcome Code(const RateSettings& settings, PretendedEncoder encoder, int gops, int at_once,
             std::vector<PlannedGop> plan = {}, int b_pictures = 0) {
    RateAllocator allocator(settings, kUsual, std::move(plan));
    Outcome outcome;
    double level = 0;
    double decoded = 0;  // when the picture before was, seconds
    std::vector<GopResult> open;
    std::int64_t closed = 0;
    for (int gop = 0; gop < gops; ++gop) {
        for (; closed <= std::max<std::int64_t>(gop - at_once, allocator.Needs()); ++closed)
            allocator.Close(closed, open[static_cast<std::size_t>(closed)]);
        GopRateControl control(settings, allocator.Open(kGopSeconds, gop + 1 == gops));
        outcome.report.push_back({kGopSeconds, std::vector<FoundPicture>(kGopPictures)});
        bool begun = false;
        int before = 0;
        for (auto [i, kind] : CodingOrder(b_pictures)) {
            const int picture = gop * kGopPictures + i;
            if (!begun) kind = PictureKind::kI;
            const bool waits = b_pictures > 0 && kind == PictureKind::kP;
            const double seconds = (waits ? before : i) / kFps;
            if (kind != PictureKind::kB) before = i;
            const double now = gop * kGopSeconds + seconds;
            level = std::max(0.0, level - settings.vbv_rate_bps * (now - decoded));
            decoded = now;
            const auto decision = control.Decide({seconds, static_cast<std::size_t>(i), kind,
                                                  encoder.IntraCost(picture),
                                                  begun ? encoder.InterCost(picture) : 0});
            PictureBits taken;
            double quantiser = decision.quantiser;
            bool fits = !decision.drop;
            while (fits) {
                taken = encoder.Take(picture, kind, quantiser);
                if (control.Fits(taken.At(quantiser), quantiser)) break;
                fits = quantiser < 31;
                quantiser = control.Coarser(quantiser, taken.At(quantiser));
            }
            if (!fits) {
                ++outcome.dropped;
                if (!decision.drop) control.Dropped();
                continue;
            }
            const double bits = taken.At(quantiser);
            control.Coded(taken, bits, quantiser, kind == PictureKind::kI);
            begun = true;
            level += bits;
            outcome.fullest_vbv = std::max(outcome.fullest_vbv, level);
            outcome.quantisers.push_back(quantiser);
            outcome.report.back().pictures[static_cast<std::size_t>(i)] = {taken, kind};
        }
        open.push_back(control.Result());
        outcome.gop_bits.push_back(control.Result().bits);
        outcome.bits += control.Result().bits;
    }
    return outcome;
}

Shot Steady(int) { return {}; }
Shot Cuts(int picture) { return picture % 190 < 95 ? Shot{0.5, 0.08} : Shot{1.2, 0.25}; }
Shot HarderTowardsTheEnd(int picture) { return {1, 0.05 + 0.4 * picture / 1500.0}; }
Shot Bursts(int picture) { return picture % 230 < 180 ? Shot{0.4, 0.02} : Shot{2.5, 0.8}; }
Shot Still(int) { return {0.001, 0.0001}; }
Shot Storm(int) { return {3, 0.9}; }

RateSettings Constant(double rate, double buffer_seconds) {
    return {rate, rate, rate * buffer_seconds, 1, 31, true};
}

struct RateCase {
    const char* why;
    std::function<Shot(int)> shot;
    RateSettings settings;
    bool two_passes;
    double within;                // of the rate
    int least_drops, most_drops;  // of 1500 pictures
    int b_pictures = 0;
};

// clang-format off
const RateCase kRateCases[] = {
    // why                                  content              settings                            two    within drops
    {"even content",                        Steady,              Constant(1e6, 5),                   false, 0.02,  0, 0},
    {"a small VBV",                         Steady,              Constant(1e6, 1),                   false, 0.02,  0, 0},
    {"cuts within GOPs",                    Cuts,                Constant(1e6, 5),                   false, 0.05,  0, 15},
    {"content that grows harder",           HarderTowardsTheEnd, Constant(1e6, 5),                   false, 0.05,  0, 0},
    {"far too little: pictures go",         Storm,               Constant(150e3, 5),                 false, 0.15,  200, 1470},
    {"no VBV,    one pass",                 Cuts,                {1e6, 0, 0, 1, 31, false},          false, 0.05,  0, 0},
    {"two passes, constant",                Cuts,                Constant(1e6, 5),                   true,  0.02,  0, 5},
    {"two passes, average",                 Cuts,                {1e6, 0, 0, 1, 31, false},          true,  0.02,  0, 0},
    {"two passes, average, growing harder", HarderTowardsTheEnd, {1e6, 0, 0, 1, 31, false},          true,  0.02,  0, 0},
    {"two passes, peak",                    HarderTowardsTheEnd, {1e6, 1.5e6, 3e6, 1, 31, false},    true,  0.03,  0, 0},
    {"bursts in a small VBV",               Bursts,              Constant(1e6, 1),                   false, 0.5,   0, 250},
    {"bursts, two passes",                  Bursts,              Constant(1e6, 1),                   true,  0.5,   0, 250},
    {"bursts, peak",                        Bursts,              {1e6, 2e6, 2e6, 1, 31, false},      true,  0.35,  0, 150},
    {"B pictures, constant",                Cuts,                Constant(1e6, 5),                   false, 0.05,  0, 15,  2},
    {"B pictures, two passes",              Cuts,                Constant(1e6, 5),                   true,  0.02,  0, 5,   2},
    {"B pictures, bursts",                  Bursts,              Constant(1e6, 1),                   false, 0.5,   0, 250, 2},
};
// clang-format on

class RateControlOf : public testing::TestWithParam<RateCase> {};
INSTANTIATE_TEST_SUITE_P(Contents, RateControlOf, testing::ValuesIn(kRateCases),
                         test_support::NameOfRow());

TEST_P(RateControlOf, HoldsRateAndVbv) {
    const RateCase& row = GetParam();
    std::vector<PlannedGop> plan;
    if (row.two_passes) {
        RateSettings first = row.settings;
        first.steady = true;
        first.vbv_rate_bps = first.vbv_bits = 0;
        first.may_drop = false;
        plan = PlanGops(row.settings, Code(first, {row.shot}, 20, 4, {}, row.b_pictures).report);
    }
    const Outcome outcome = Code(row.settings, {row.shot}, 20, 4, std::move(plan), row.b_pictures);
    EXPECT_NEAR(outcome.bits / (20 * kGopSeconds), row.settings.rate_bps,
                row.settings.rate_bps * row.within);
    EXPECT_GE(outcome.dropped, row.least_drops);
    EXPECT_LE(outcome.dropped, row.most_drops);
    if (row.settings.vbv_rate_bps > 0) {
        EXPECT_LE(outcome.fullest_vbv, row.settings.vbv_bits);
    }
}

TEST(RateControl, LearnsFromGopsBefore) {
    // The first GOPs know nothing of pictures that take far more than usual, the later ones do.
    const auto costly = [](int) { return Shot{1, 0.5}; };
    const Outcome outcome = Code(Constant(2e6, 5), {costly}, 20, 8);
    const auto error = [&](std::size_t gop) {
        return std::abs(outcome.gop_bits[gop] - 2e6 * kGopSeconds);
    };
    EXPECT_LT(error(18) + error(19), error(0) + error(1));
}

TEST(RateControl, EasyContentIsCodedAtItsBestAndNoBitsAreMadeUp) {
    const Outcome outcome = Code(Constant(1e6, 5), {Still}, 4, 2);
    EXPECT_LT(outcome.bits, 1e6 * 4 * kGopSeconds);
    EXPECT_EQ(outcome.quantisers.back(), 1);
    EXPECT_EQ(outcome.dropped, 0);
}

// With B pictures a P picture is decoded when the one before it is shown, however many were dropped
// between them.
TEST(RateControl, PicturesFollowAgainOnceTheVbvHasDrained) {
    constexpr double kRate = 1e5;
    struct Row {
        const char* why;
        double i_bits;
        int most_dropped;
    };
    for (const auto& [why, i_bits, most_dropped] :
         {Row{"larger than the VBV", 1.2 * kRate, 8}, Row{"leaves no room", 0.99 * kRate, 3}}) {
        RateAllocator allocator({kRate, kRate, kRate, 1, 31, true}, kUsual);
        GopRateControl control({kRate, kRate, kRate, 1, 31, true}, allocator.Open(10, true));
        int dropped = 0;
        double before = 0;  // when the picture decoded last is shown, seconds
        for (std::size_t i = 0; i < 250; ++i) {
            const PictureKind kind = i == 0 ? PictureKind::kI : PictureKind::kP;
            const double shown = static_cast<double>(i) / kFps;
            RatedPicture picture{before, i, kind, 1e6, i == 0 ? 0 : 1e4};
            picture.needed_seconds = shown;
            const double bits = i == 0 ? i_bits : 2500;
            const bool left_out = control.Decide(picture).drop;
            if (left_out || !control.Fits(bits, 31)) {
                ++dropped;
                if (!left_out) control.Dropped();
                continue;
            }
            control.Coded(PictureBits::Taken(0, bits, 100, 31), bits, 31, i == 0);
            before = shown;
        }
        EXPECT_GT(dropped, 0) << why;
        EXPECT_LE(dropped, most_dropped) << why;
    }
}

TEST(RateControl, OneQuantiserWhereThereIsNoChoice) {
    const Outcome outcome = Code({0, 0, 0, 9, 9, false}, {Cuts}, 3, 2);
    EXPECT_TRUE(std::all_of(outcome.quantisers.begin(), outcome.quantisers.end(),
                            [](double q) { return q == 9; }));
}

// One GOP that is the whole stream, with pictures shown ahead, and what surprises coded again.
// Returns its pictures as a second pass is told of them.
FirstPassGop CodeAlone(const RateSettings& settings, PretendedEncoder encoder, int pictures,
                       std::vector<PlannedGop> plan, double& bits) {
    constexpr int kAhead = 16;
    const double seconds = pictures / kFps;
    RateAllocator allocator(settings, kUsual, std::move(plan));
    GopResult trial;
    trial.coded = {1, 0, encoder.IntraCost(0), encoder.Take(0, PictureKind::kI, 8), {}};
    allocator.LearnTrial(trial);
    GopRateControl control(settings, allocator.Open(seconds, true));
    FirstPassGop report{seconds, {}};
    const auto step = [&](int i) { return std::min(encoder.InterCost(i), encoder.IntraCost(i)); };
    bits = 0;
    for (int i = 0; i < pictures; ++i) {
        std::vector<WaitingPicture> waiting;
        for (int next = i + 1; next < pictures && next <= i + kAhead; ++next)
            waiting.push_back({next / kFps, encoder.IntraCost(next), step(next)});
        const PictureKind kind = i == 0 ? PictureKind::kI : PictureKind::kP;
        const bool last = i + kAhead >= pictures - 1;
        const auto decision =
            control.Decide({i / kFps, static_cast<std::size_t>(i), kind, encoder.IntraCost(i),
                            step(i), step(i), waiting, last});
        EXPECT_FALSE(decision.drop) << i;
        double quantiser = decision.quantiser;
        // The same picture takes the same again.
        const std::mt19937 noise = encoder.noise;
        PictureBits taken = encoder.Take(i, kind, quantiser);
        for (;;) {
            const double better = control.Reconsidered(quantiser, taken, taken.At(quantiser));
            if (better == quantiser) break;
            quantiser = better;
            encoder.noise = noise;
            taken = encoder.Take(i, kind, quantiser);
        }
        EXPECT_TRUE(settings.steady || control.Fits(taken.At(quantiser), quantiser)) << i;
        report.pictures.push_back(
            control.Coded(taken, taken.At(quantiser), quantiser, kind == PictureKind::kI));
        bits += taken.At(quantiser);
    }
    return report;
}

struct ShortCase {
    const char* why;
    std::function<Shot(int picture, int pictures)> shot;
    double one_pass, two_passes;  // within so much of the rate
};

Shot StillThenStorm(int picture, int pictures) {
    return 3 * picture < 2 * pictures ? Shot{0.5, 0.0005} : Shot{1, 0.6};
}
Shot StormThenStill(int picture, int pictures) {
    return 3 * picture < pictures ? Shot{1, 0.6} : Shot{1, 0.0005};
}
// Of one colour: no picture has anything to code but its header.
Shot Blank(int picture, int pictures) { return 2 * picture < pictures ? Shot{0, 0} : Shot{1, 0.1}; }
Shot Sparse(int picture, int /*pictures*/) {
    return picture % 12 == 11 ? Shot{1, 0.4} : Shot{1, 0.0005};
}
// Out of black, which differs from picture to picture as much as what comes, and takes nothing.
Shot FadeIn(int picture, int pictures) {
    return {1, 0.6, picture > 0 && 3 * picture < 2 * pictures ? 0.02 : 1};
}
// Nothing moves, and now and then a picture makes finer what is there.
Shot Refined(int picture, int /*pictures*/) { return {1, 0.0005, picture % 10 == 9 ? 100.0 : 1}; }

// clang-format off
const ShortCase kShortCases[] = {
    // why                             content                                     one   two
    {"even content",                   [](int, int) { return Shot{}; },            0.02, 0.02},
    {"blank to its middle",            Blank,                                      0.02, 0.02},
    {"still, then a storm",            StillThenStorm,                             0.05, 0.02},
    // What one pass has saved for the rest of the storm, the still has no use for.
    {"a storm, then still",            StormThenStill,                             0.5,  0.02},
    {"sparse: something now and then", Sparse,                                     0.02, 0.02},
    // Which of them will be, nothing tells; counted as a scene's first, they leave a third unused.
    {"made finer now and then",        Refined,                                    0.15, 0.02},
    {"dear of a sudden",               FadeIn,                                     0.05, 0.02},
};
// clang-format on

class ShortStreams : public testing::TestWithParam<ShortCase> {};
INSTANTIATE_TEST_SUITE_P(Contents, ShortStreams, testing::ValuesIn(kShortCases),
                         test_support::NameOfRow());

TEST_P(ShortStreams, EndAtTheirRate) {
    const ShortCase& row = GetParam();
    RateSettings settings = Constant(1e6, 5);
    settings.halves_up_to = 8.5;
    for (const int pictures : {12, 25, 50, 125}) {
        SCOPED_TRACE(pictures);
        const PretendedEncoder encoder{[&](int i) { return row.shot(i, pictures); }};
        const double asked = settings.rate_bps * pictures / kFps;
        double bits = 0;
        CodeAlone(settings, encoder, pictures, {}, bits);
        EXPECT_NEAR(bits, asked, row.one_pass * asked);
        RateSettings first = settings;
        first.steady = true;
        first.vbv_rate_bps = first.vbv_bits = 0;
        first.may_drop = false;
        const FirstPassGop found = CodeAlone(first, encoder, pictures, {}, bits);
        CodeAlone(settings, encoder, pictures, PlanGops(settings, {found}), bits);
        EXPECT_NEAR(bits, asked, row.two_passes * asked);
    }
}

// A recording's screen after a burst: what the last picture took coarsely is made sharper with what
// the VBV drains, and is not coded again once it is as fine as can be.
TEST(RateControl, WhatRestsBecomesSharpWithinTheVbv) {
    constexpr double kDetail = 2.7e6;
    constexpr double kCost = 1.2e6;
    for (const double rate : {300e3, 1e6, 4e6}) {
        SCOPED_TRACE(rate);
        RateSettings settings = Constant(rate, 3);
        settings.sharpens = true;
        RateAllocator allocator(settings, kUsual);
        GopRateControl control(settings, allocator.Open(30));
        double level = 0;
        double before = 0;
        double coarseness = 0;  // of what is shown, as the part of its detail that is not
        double least = 31;
        double spent = 0;  // bits of pictures that show nothing new
        for (std::size_t i = 0; i < 60; ++i) {
            const bool moves = i < 10;
            const double seconds =
                moves ? 0.1 * static_cast<double>(i) : static_cast<double>(i) - 9;
            level = std::max(0.0, level - rate * (seconds - before));
            before = seconds;
            if (seconds > 29) break;
            const PictureKind kind = i == 0 ? PictureKind::kI : PictureKind::kP;
            const double cost = moves ? 0.3 * kCost : 0;
            const auto decision = control.Decide({seconds, i, kind, kCost, cost, moves ? cost : 0});
            if (decision.drop) continue;
            double quantiser = decision.quantiser;
            PictureBits taken;
            const auto take = [&] {
                const double fineness = 1 / (quantiser + 1);
                const double part =
                    moves ? fineness : std::max(0.0, fineness - 1 / (coarseness + 1));
                taken = PictureBits::Taken(kDetail * part, 0, 200, quantiser);
            };
            take();
            for (double asked = 0; asked != quantiser; take()) {
                asked = quantiser;
                quantiser = control.Reconsidered(quantiser, taken, taken.At(quantiser));
            }
            for (take(); !control.Fits(taken.At(quantiser), quantiser); take())
                quantiser = control.Coarser(quantiser, taken.At(quantiser));
            control.Coded(taken, taken.At(quantiser), quantiser, i == 0);
            level += taken.At(quantiser);
            ASSERT_LE(level, settings.vbv_bits);
            if (moves) {
                coarseness = quantiser;
                continue;
            }
            EXPECT_LE(quantiser, coarseness);
            coarseness = least = quantiser;
            spent += taken.At(quantiser);
        }
        EXPECT_EQ(least, 1);
        EXPECT_LT(spent, kDetail);
    }
}

TEST(TwoPassPlan, GivesHarderGopsMore) {
    std::vector<FirstPassGop> gops(4, {2, std::vector<FoundPicture>(50, {{1e5, 0, 100}})});
    gops[2].pictures.assign(50, {{4e5, 0, 100}});
    const std::vector<PlannedGop> plan = PlanGops({1e6, 0, 0, 1, 31, false}, gops);
    EXPECT_GT(plan[2].bits, 2 * plan[1].bits);
    const double sum = std::accumulate(plan.begin(), plan.end(), 0.0,
                                       [](double s, const auto& gop) { return s + gop.bits; });
    EXPECT_NEAR(sum, 8e6, 8e4);
    EXPECT_TRUE(PlanGops({1e6, 0, 0, 1, 31, false}, {}).empty());
}

// Then pictures have to go.
TEST(TwoPassPlan, KeepsToTheRateWhereTheCoarsestQuantiserTakesMore) {
    const std::vector<FirstPassGop> gops(2, {3, std::vector<FoundPicture>(75, {{2e6, 0, 100}})});
    double bits = 0;
    for (const PlannedGop& gop : PlanGops(Constant(1e5, 5), gops)) bits += gop.bits;
    EXPECT_NEAR(bits, 6e5, 6e3);
}

}  // namespace
