#include "codecs/common/gop_rate_control.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace codecs {
namespace {

// The numbers below were chosen by hand on the clips of bench/quality and bench/rates, and so that
// the pretended encoders of tests/unit/codecs/rate_control_test.cpp keep their rates; none is
// derived.

// Of the quantiser, from picture to picture; larger while little is known of the GOP.
constexpr double kLargestStep = 1.25;
constexpr double kLargestFinerStep = 1.12;  // until all that the GOP has is known
constexpr double kLargestLastStep = 1.5;    // finer, among the stream's last pictures
constexpr std::size_t kEnd = 6;             // they are
constexpr double kLargestSteadyStep = 1.1;
constexpr double kLargestFreeStep = 2;
// Of a picture that is coded again: near the noise of a source, bits rise faster than the model
// has it.
constexpr double kLargestSecondStep = 1.4;
constexpr int kMostTries = 4;
constexpr double kJump = 2;             // times what those before take: another scene
constexpr double kWorthDropping = 0.1;  // of what the rate gives a picture
constexpr int kEarly = 4;               // deltas
constexpr double kIntervalMemory = 0.3;
constexpr double kSoftEndPart = 0.1;  // of its pictures, at most
constexpr double kSoftEnd = 3;        // pictures beyond the GOP's end that share in an error
constexpr double kTolerance = 0.03;   // of the budget, before pictures are dropped
// Of what the VBV has left, for one picture: it may take more than is expected of it.
constexpr double kRoomShare = 0.6;
constexpr double kPlannedRoomShare = 0.8;
constexpr double kPlannedFill = 0.85;  // of the VBV, by pictures that a first pass has found
constexpr int kRoomHalvings = 10;
constexpr double kDraining = 0.7;  // of the VBV's rate, at a GOP's end
// Of the VBV; one that holds no more takes an I picture whatever its size.
constexpr double kNearlyEmpty = 0.15;
constexpr int kHalvings = 40;
constexpr double kNoEnd = 1e30;  // bits
constexpr double kNoBits = 1e4;  // the quantiser where none are left
constexpr double kRecodeMargin = 1.05;
constexpr double kForced = 1.3;             // of the quantiser that was wanted
constexpr double kGrossSurprise = 1.4;      // a picture's bits beside the expected ones
constexpr double kRepaid = 0.15;            // of what the pictures after it take
constexpr double kNearEnough = 0.005;       // of the budget
constexpr double kLittleLeft = 0.01;        // of the budget
constexpr double kShortestInterval = 1e-3;  // seconds
// Of what is left, for a picture that is made sharper: the rest is for what moves next.
constexpr double kSharpeningShare = 0.5;
constexpr double kSharpeningDrained = 0.6;  // of what the VBV drains meanwhile
constexpr double kSharpeningExcess = 1.3;

// By how much coarser a picture takes what it was to, of which it takes so many times as much.
double StepFor(double times) { return std::sqrt(times); }

}  // namespace

GopRateControl::GopRateControl(const RateSettings& settings, GopBudget budget)
    : settings_(settings),
      budget_(std::move(budget)),
      seconds_(budget_.seconds),
      budget_bits_(budget_.bits),
      forecast_(budget_.experience, std::move(budget_.pictures)),
      level_bits_(budget_.vbv_level_bits),
      interval_(1 / budget_.experience.pictures_per_second) {
    result_.seconds = budget_.seconds;
}

std::optional<std::size_t> GopRateControl::FoundB(std::size_t first) const {
    const std::span<const FoundPicture> found = forecast_.Found();
    if (first >= found.size()) return {};
    std::size_t end = first;
    while (end < found.size() && found[end].kind == PictureKind::kB) ++end;
    return end - first;
}

// Pictures after `picture_`, by the time that is left.
double GopRateControl::Remaining() const {
    if (picture_.last) return static_cast<double>(picture_.waiting.size());
    return std::max(0.0, (seconds_ - picture_.seconds) / interval_ - 1);
}

double GopRateControl::IPart() const {
    if (settings_.weighs_i) return 1;
    const double deltas =
        Planned() ? static_cast<double>(forecast_.Found().size()) - 1 : Remaining();
    return IQuantiserPart(forecast_.DeltaPart(), deltas);
}

// The quantiser at which this picture and all that follow take just what is left. As if the GOP
// went on for a little, so that its last pictures need not pay for an error alone.
double GopRateControl::EvenQuantiser() const {
    const PictureBits& expected = forecast_.Expected();
    PictureBits others = Following();
    const double pictures = Planned() ? static_cast<double>(forecast_.Found().size())
                                      : static_cast<double>(decided_) + Remaining();
    const double share = budget_.last ? 0 : std::min(kSoftEnd / pictures, kSoftEndPart);
    others +=
        Planned() ? forecast_.FoundInAll() * share : forecast_.DeltaMean() * (share * pictures);
    const double bits = budget_bits_ * (1 + share) - result_.bits;
    if (bits <= others.fixed + expected.fixed) return kNoBits;
    if (picture_.kind != PictureKind::kI) {
        others += FoundPicture{expected, picture_.kind}.ByP();
        return others.QuantiserFor(bits);
    }
    double fine = 0;
    double coarse = kNoBits;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (fine + coarse) / 2;
        (expected.At(middle * IPart()) + others.At(middle) > bits ? fine : coarse) = middle;
    }
    return coarse;
}

// Of pictures that a first pass has found: the least one at which none of those that are left
// overruns the VBV.
double GopRateControl::RoomQuantiser() const {
    const std::span<const FoundPicture> found = forecast_.Found();
    if (picture_.index >= found.size()) return 0;
    const auto left = found.subspan(picture_.index + 1);
    const double drained = settings_.vbv_rate_bps * seconds_ / static_cast<double>(found.size());
    const PictureBits& expected = forecast_.Expected();
    const auto fits = [&](double quantiser) {
        double level = level_bits_ + expected.At(quantiser);
        double own_level = own_level_bits_ + expected.At(quantiser);
        double still_drains = drained * static_cast<double>(left.size());
        for (const FoundPicture& picture : left) {
            const double bits = picture.ByP().Scaled(forecast_.Trust()).At(quantiser);
            level = std::max(0.0, level - drained) + bits;
            own_level = std::max(0.0, own_level - drained) + bits;
            still_drains -= drained;
            if (level > kPlannedFill * settings_.vbv_bits ||
                level > budget_.vbv_end_bits + still_drains ||
                own_level > budget_.vbv_own_end_bits + still_drains)
                return false;
        }
        return true;
    };
    double fine = settings_.finest;
    double coarse = settings_.coarsest;
    if (fits(fine)) return fine;
    for (int i = 0; i < kRoomHalvings; ++i) {
        const double middle = (fine + coarse) / 2;
        (fits(middle) ? coarse : fine) = middle;
    }
    return coarse;
}

// At which the picture takes no more than that.
double GopRateControl::QuantiserFor(double bits) const {
    const PictureBits& expected = forecast_.Expected();
    if (bits <= expected.fixed) return settings_.coarsest;
    return std::clamp(expected.QuantiserFor(bits), settings_.finest, settings_.coarsest);
}

// Finer than the others; but where those are at their coarsest, what they leave.
double GopRateControl::IQuantiser(double even) const {
    if (even < settings_.coarsest)
        return std::clamp(even * IPart(), settings_.finest, settings_.coarsest);
    const double others = Following().At(settings_.coarsest);
    return std::max(settings_.coarsest * IPart(), QuantiserFor(budget_bits_ - others));
}

// By how much the GOP is ahead of its budget once the picture at `seconds` is coded as coarsely
// as can be. What the VBV takes ahead of time has to be made up for by the GOP's
// end, so it is never more than all of the budget.
double GopRateControl::Overdraft(double seconds) const {
    const double part = std::min(1.0, (seconds + interval_) / seconds_);
    const double ahead = std::max(0.0, settings_.vbv_bits - budget_.vbv_level_bits);
    const double allowed = std::min(budget_bits_ * part + ahead * (1 - part), budget_bits_);
    return result_.bits + forecast_.Expected().At(settings_.coarsest) - allowed -
           kTolerance * std::max(0.0, budget_bits_);
}

// What leaves no more in the VBV at the GOP's end than what others count on: with what was in it
// before the GOP, and without.
double GopRateControl::PromisedRoom() const {
    const double left = std::max(0.0, budget_.seconds - picture_.seconds);
    const double drained = settings_.vbv_rate_bps * left;
    return std::min(budget_.vbv_end_bits - level_bits_,
                    budget_.vbv_own_end_bits - own_level_bits_) +
           drained;
}

// What the VBV takes, now and as is promised for its end.
double GopRateControl::HardRoom() const { return std::min(VbvRoom(), PromisedRoom()); }

// That, with what the GOP itself has put into it drained early. What an easy stretch has not used
// is gone: a burst at the end cannot.
double GopRateControl::SoftRoom() const {
    const double left = std::max(0.0, budget_.seconds - picture_.seconds);
    const double own_limit = budget_.vbv_own_end_bits + kDraining * settings_.vbv_rate_bps * left;
    return std::min(HardRoom(), own_limit - own_level_bits_);
}

bool GopRateControl::Fits(double bits, double quantiser) const {
    if (settings_.vbv_rate_bps <= 0) return true;
    if (bits <= (rests_ ? VbvRoom() : HardRoom())) return true;
    const bool alone = picture_.kind == PictureKind::kI && level_bits_ <= 0 &&
                       quantiser >= settings_.most_coarse && bits > settings_.vbv_bits;
    return alone && (budget_.level_is_exact || bits <= PromisedRoom());
}

double GopRateControl::Coarser(double quantiser, double bits) const {
    const double room = std::max(1.0, rests_ ? VbvRoom() : HardRoom());
    const double wanted =
        kRecodeMargin * (quantiser + PictureBits::kOffset) * bits / room - PictureBits::kOffset;
    const double least = settings_.NextCoarser(quantiser);
    return std::max(least, settings_.Coded(std::min(wanted, settings_.most_coarse)));
}

// Pictures that show nothing new tell nothing: what comes after them may be anything.
double GopRateControl::SteadyStep() const {
    return 1 + (kLargestSteadyStep - 1) * std::min(1.0, picture_.News());
}

// Little is left, and yet more than pictures take that show next to nothing new: finer, they would
// code the noise of what they are predicted from.
bool GopRateControl::NothingTakesWhatIsLeft() const {
    PictureBits others = Following();
    others += forecast_.Expected();
    const double left = budget_bits_ - result_.bits - others.At(quantiser_);
    return left < kLittleLeft * budget_bits_ && left > others.Coefficients(quantiser_);
}

// From picture to picture the quantiser changes in steps.
double GopRateControl::Restrained(double even) const {
    if (settings_.steady)
        return std::clamp(even, quantiser_ / SteadyStep(), quantiser_ * SteadyStep());
    const bool free = forecast_.Learnt() < kEarly;
    const double jump = forecast_.Jump(quantiser_);
    const bool ends = budget_.last && picture_.last && picture_.waiting.size() < kEnd;
    const double finer = ends                         ? kLargestLastStep
                         : Planned() || picture_.last ? kLargestStep
                                                      : kLargestFinerStep;
    const double coarser = jump > kJump ? std::max(kLargestFreeStep, StepFor(jump)) : kLargestStep;
    const double restrained = std::clamp(even, quantiser_ / (free ? kLargestFreeStep : finer),
                                         quantiser_ * (free ? kLargestFreeStep : coarser));
    if (ends && NothingTakesWhatIsLeft()) return std::max(restrained, quantiser_);
    // Finer than what they are predicted from would mostly code its noise.
    return free && !Planned() ? std::max(restrained, i_quantiser_) : restrained;
}

bool GopRateControl::MustDrop(double even) const {
    const double least = forecast_.Expected().At(settings_.coarsest);
    // Where B pictures may be, the next picture is as early as one that was left out: the VBV does
    // not drain meanwhile, so that what is expected of it would leave out all that follow.
    const bool overruns = !stands_still_ && least > HardRoom();
    if (picture_.kind == PictureKind::kI)
        return overruns && level_bits_ > kNearlyEmpty * settings_.vbv_bits;
    if (overruns) return true;
    // An error at the end of a GOP is no reason.
    const bool coarse =
        even >= settings_.coarsest && quantiser_ * kLargestStep >= settings_.coarsest;
    // What takes next to nothing saves nothing.
    const double usual = settings_.rate_bps * interval_;
    return coarse && least > kWorthDropping * usual &&
           Overdraft(stands_still_ ? picture_.needed_seconds : picture_.seconds) > 0;
}

void GopRateControl::LearnInterval(double passed) {
    const auto& waiting = picture_.waiting;
    if (waiting.size() > 1)
        interval_ = (waiting.back().seconds - waiting.front().seconds) /
                    static_cast<double>(waiting.size() - 1);
    else if (decided_ > 0)
        interval_ += kIntervalMemory * (passed - interval_);
    interval_ = std::max(interval_, kShortestInterval);
}

// Of the stream's last GOP: it ends earlier than was expected, and has as much less to give.
void GopRateControl::Shorten() {
    if (!picture_.last || shortened_ || budget_.seconds <= 0) return;
    shortened_ = true;
    const double last =
        picture_.waiting.empty() ? picture_.seconds : picture_.waiting.back().seconds;
    const double part = std::min(1.0, (last + interval_) / budget_.seconds);
    budget_bits_ *= part;
    seconds_ *= part;
}

// The quantiser of `picture_`.
double GopRateControl::Chosen() {
    even_ = EvenQuantiser();
    double quantiser = 0;
    if (picture_.kind == PictureKind::kI) {
        quantiser = i_quantiser_ = IQuantiser(even_);
    } else {
        if (quantiser_ > 0) even_ = Restrained(even_);
        quantiser = std::clamp(even_, settings_.finest, settings_.coarsest);
        if (picture_.kind == PictureKind::kB)
            quantiser = std::min(kBQuantiserPart * quantiser, settings_.most_coarse);
    }
    if (settings_.vbv_rate_bps > 0) {
        const double share = Planned() || picture_.last ? kPlannedRoomShare : kRoomShare;
        quantiser = std::max({quantiser, QuantiserFor(share * SoftRoom()), RoomQuantiser()});
    }
    return settings_.Coded(quantiser);
}

// A picture that shows nothing new takes no more. What drains meanwhile it may always take: the VBV
// is then no fuller than it was, and nothing but such pictures may come for long.
double GopRateControl::SharpeningBits() const {
    const double left = budget_bits_ - result_.bits;
    if (settings_.vbv_rate_bps <= 0) return std::max(0.0, kSharpeningShare * left);
    const double saved = kSharpeningShare * std::min(SoftRoom(), left);
    const double drained = kSharpeningDrained * settings_.vbv_rate_bps * passed_;
    return std::max(0.0, std::min(std::max(saved, drained), kSharpeningShare * VbvRoom()));
}

double GopRateControl::SharperQuantiser() const {
    const double quantiser = sharpening_.Quantiser(SharpeningBits());
    return settings_.Coded(std::clamp(quantiser, settings_.finest, settings_.coarsest));
}

// By which the stream misses its bits when the picture in hand takes so many.
double GopRateControl::Missed(double bits) const {
    const double even = std::clamp(even_, settings_.finest, settings_.coarsest);
    return std::abs(result_.bits + bits + Following().At(even) - budget_bits_);
}

// Whether that is worth coding a picture again.
bool GopRateControl::Surprises(double bits, double expected) const {
    const bool is_i = picture_.kind == PictureKind::kI;
    if (settings_.steady && forecast_.Learnt() >= kEarly) return false;
    const bool first = is_i || (forecast_.Learnt() == 0 && !Planned());
    const double part = bits / expected;
    if (part >= kGrossSurprise || (first && part <= 1 / kGrossSurprise)) return true;
    if (!budget_.last || settings_.steady) return false;
    // At a stream's end few pictures are left that may make good for it.
    const double even = std::clamp(even_, settings_.finest, settings_.coarsest);
    return Missed(bits) > kRepaid * Following().Coefficients(even) + kNearEnough * budget_bits_;
}

// In place of `quantiser`, between those that were too fine and too coarse; where none is left, the
// better one.
double GopRateControl::Untried(double quantiser, double chosen, double missed) {
    if (chosen == quantiser) return quantiser;
    if (++tries_ > kMostTries) return quantiser;
    const bool fine = chosen > quantiser;
    (fine ? too_fine_ : too_coarse_) = {quantiser, missed};
    const auto untried = [this](double q) {
        return tries_ < kMostTries && q > too_fine_.quantiser && q < too_coarse_.quantiser;
    };
    if (untried(chosen)) return chosen;
    const double between = settings_.Coded(std::sqrt(too_fine_.quantiser * too_coarse_.quantiser));
    if (untried(between)) return between;
    const Tried& other = fine ? too_coarse_ : too_fine_;
    return other.missed < missed ? other.quantiser : quantiser;
}

double GopRateControl::Reconsidered(double quantiser, const PictureBits& taken, double bits) {
    if (settings_.finest == settings_.coarsest) return quantiser;
    if (rests_) {
        sharpening_.Took(bits, quantiser);
        if (bits <= kSharpeningExcess * SharpeningBits() || ++tries_ > 1) return quantiser;
        return std::max(quantiser, SharperQuantiser());
    }
    const double expected = std::max(1.0, forecast_.Expected().At(quantiser));
    if (!Surprises(bits, expected)) return quantiser;
    const double surprise = bits / expected;
    const bool is_i = picture_.kind == PictureKind::kI;
    const double missed = Missed(bits);
    forecast_.Surprise(taken, quantiser);
    const double chosen = Chosen();
    if (is_i) return Untried(quantiser, chosen, missed);
    const double least = quantiser / kLargestSecondStep;
    const double most = quantiser * std::max(kLargestSecondStep, StepFor(surprise));
    const double by_p = picture_.kind == PictureKind::kB ? kBQuantiserPart : 1;
    even_ = std::clamp(even_, least / by_p, most / by_p);
    return Untried(quantiser, settings_.Coded(std::clamp(chosen, least, most)), missed);
}

void GopRateControl::Dropped() {
    ++result_.dropped;
    ++dropped_in_a_row_;
    picture_.waiting = {};  // the caller's
    forecast_.Forget();
}

// With B pictures, a picture is as early as those before it that were dropped. Where the VBV has
// room for none it would never drain, and all that follow would be dropped: then they come as late
// as they may.
double GopRateControl::TimeOf(const RatedPicture& picture) const {
    constexpr int kEnough = 2;
    return dropped_in_a_row_ < kEnough ? picture.seconds
                                       : std::max(picture.seconds, picture.needed_seconds);
}

GopRateControl::Decision GopRateControl::Decide(const RatedPicture& picture) {
    const double before = picture_.seconds;
    picture_ = picture;
    picture_.seconds = TimeOf(picture);
    passed_ = decided_ > 0 ? picture_.seconds - before : 0;
    stands_still_ = dropped_in_a_row_ > 0 && passed_ <= 0;
    const bool rests =
        settings_.sharpens && Sharpening::Rests(picture.step_cost, picture.intra_cost);
    rests_ = rests && picture.kind != PictureKind::kI;
    if (!rests_) LearnInterval(passed_);
    Shorten();
    level_bits_ = std::max(0.0, level_bits_ - passed_ * settings_.vbv_rate_bps);
    own_level_bits_ = std::max(0.0, own_level_bits_ - passed_ * settings_.vbv_rate_bps);
    ++decided_;
    forecast_.Begin(picture);
    too_fine_ = {0, kNoEnd};
    too_coarse_ = {kNoBits, kNoEnd};
    tries_ = 0;

    Decision decision;
    if (rests_) {
        decision.quantiser = SharperQuantiser();
        decision.expected_bits = SharpeningBits();
        return decision;
    }
    decision.quantiser = Chosen();
    // What has become sharp stays so, as far as the VBV has room.
    if (rests && picture.kind == PictureKind::kI)
        decision.quantiser =
            std::min(decision.quantiser, settings_.Coded(QuantiserFor(SharpeningBits())));
    decision.drop = settings_.vbv_rate_bps > 0 && settings_.may_drop && MustDrop(even_);
    decision.expected_bits = forecast_.Expected().At(decision.quantiser);
    if (decision.drop) Dropped();
    return decision;
}

FoundPicture GopRateControl::Coded(const PictureBits& taken, double bits, double quantiser,
                                   bool is_i) {
    const bool sharpened = rests_ && !is_i;
    dropped_in_a_row_ = 0;
    level_bits_ += bits;
    own_level_bits_ += bits;
    result_.bits += bits;
    // The time of a key picture is written with the one after it.
    if (is_i) picture_.seconds = std::max(picture_.seconds, picture_.needed_seconds);
    result_.own_level_bits = own_level_bits_;
    result_.last_seconds = picture_.seconds;
    const FoundPicture found = forecast_.Coded(taken, quantiser, is_i, sharpened);
    result_.coded = forecast_.Sum();
    picture_.waiting = {};  // the caller's
    if (sharpened) {
        sharpening_.Sharpened(quantiser);
        return found;
    }
    sharpening_.Showed(quantiser, forecast_.ITexture());
    quantiser_ = std::clamp(even_, settings_.finest, settings_.coarsest);
    // Where the VBV has forced it, what follows refers to no better.
    if (picture_.kind == PictureKind::kB) quantiser /= kBQuantiserPart;
    if (quantiser > kForced * quantiser_) quantiser_ = quantiser;
    return found;
}

}  // namespace codecs
