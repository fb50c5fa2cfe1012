#include "codecs/common/gop_rate_control.h"

#include <algorithm>
#include <utility>

namespace codecs {
namespace {

// The numbers below were chosen by hand on the clips of bench/quality, and so that the pretended
// encoders of tests/unit/codecs/rate_control_test.cpp keep their rates; none is derived.

// Of the quantiser, from picture to picture; larger while little is known of the GOP.
constexpr double kLargestStep = 1.25;
constexpr double kLargestFinerStep = 1.12;  // until all that the GOP has is known
constexpr double kLargestSteadyStep = 1.1;
constexpr double kLargestFreeStep = 2;
// Of a picture that is coded again: near the noise of a source, bits rise faster than the model
// has it.
constexpr double kLargestSecondStep = 1.4;
constexpr int kEarly = 4;  // deltas
constexpr double kIntervalMemory = 0.3;
constexpr int kDeltaMemory = 5;   // pictures
constexpr int kMixedMemory = 12;  // where B pictures take turns with P pictures
constexpr double kTrustMemory = 0.1;
constexpr double kLargestMistrust = 2;
constexpr double kSoftEndPart = 0.1;  // of its pictures, at most
constexpr double kSoftEnd = 3;        // pictures beyond the GOP's end that share in an error
constexpr double kTolerance = 0.03;   // of the budget, before pictures are dropped
// Of the intra cost: what two pictures differ by that show the same.
constexpr double kNoise = 0.02;
// Of what the VBV has left, for one picture: it may take more than is expected of it.
constexpr double kRoomShare = 0.6;
constexpr double kPlannedRoomShare = 0.8;
constexpr double kPlannedFill = 0.85;  // of the VBV, by pictures that a first pass has found
constexpr int kRoomHalvings = 10;
constexpr double kDraining = 0.7;  // of the VBV's rate, at a GOP's end
constexpr double kSurprise = 2;
// Of the VBV; one that holds no more takes an I picture whatever its size.
constexpr double kNearlyEmpty = 0.15;
constexpr int kHalvings = 40;
constexpr double kNoBits = 1e4;  // the quantiser where none are left
constexpr double kLeastSurprise = 0.25;
constexpr double kLargestSurprise = 30;
// Of a B picture, beside a P picture, before any is known.
constexpr double kUsualB = 0.5;
constexpr double kRecodeMargin = 1.05;
constexpr double kMostFromWaiting = 8;      // what a picture that waits may take, in usual ones
constexpr double kForced = 1.3;             // of the quantiser that was wanted
constexpr double kGrossSurprise = 1.4;      // a picture's bits beside the expected ones
constexpr double kShortestInterval = 1e-3;  // seconds
// Of what is left, for a picture that is made sharper: the rest is for what moves next.
constexpr double kSharpeningShare = 0.5;
constexpr double kSharpeningDrained = 0.6;  // of what the VBV drains meanwhile
constexpr double kSharpeningExcess = 1.3;

}  // namespace

GopRateControl::GopRateControl(const RateSettings& settings, GopBudget budget)
    : settings_(settings),
      budget_(std::move(budget)),
      seconds_(budget_.seconds),
      budget_bits_(budget_.bits),
      level_bits_(budget_.vbv_level_bits),
      interval_(1 / budget_.experience.pictures_per_second) {
    result_.seconds = budget_.seconds;
    for (const FoundPicture& picture : budget_.pictures) found_ += picture.ByP();
    undecided_ = found_;
}

void GopRateControl::Mean::Learn(const PictureBits& taken, double inter_cost, int memory) {
    learnt = std::min(learnt + 1, memory);
    const double weight = 1.0 / learnt;
    bits.texture += weight * (taken.texture - bits.texture);
    bits.fixed += weight * (taken.fixed - bits.fixed);
    cost += weight * (inter_cost - cost);
}

// Until deltas are known, what they usually are beside an I picture.
PictureBits GopRateControl::DeltaMean() const {
    const PictureBits usual{budget_.experience.delta_texture * ITexture(),
                            budget_.experience.delta_fixed};
    if (deltas_.learnt == 0)
        return surprised_ ? FoundPicture{expected_, picture_.kind}.ByP() : usual;
    if (deltas_.learnt >= kDeltaMemory) return deltas_.bits;
    // The usual counts as one of them.
    const double weight = deltas_.learnt / (deltas_.learnt + 1.0);
    PictureBits mean = deltas_.bits * weight;
    mean += usual * (1 - weight);
    return mean;
}

PictureBits GopRateControl::Expected(const Picture& picture) {
    if (picture.index < budget_.pictures.size()) {
        const FoundPicture& found = budget_.pictures[picture.index];
        const bool trusted = found.kind != PictureKind::kI && picture.kind != PictureKind::kI;
        // The choice of B pictures need not have been the same.
        if (found.kind == picture.kind || !trusted || MeanOf(picture.kind).learnt == 0)
            return {found.bits.texture * (trusted ? texture_trust_ : 1), found.bits.fixed};
    }
    if (picture.kind == PictureKind::kI)
        return {budget_.experience.i_texture_per_cost * picture.intra_cost,
                budget_.experience.i_fixed};
    const Mean& mean = MeanOf(picture.kind);
    if (mean.learnt == 0) {
        return DeltaMean() * (picture.kind == PictureKind::kB ? kUsualB : 1);
    }
    PictureBits delta = mean.bits;
    const double noise = kNoise * picture.intra_cost;
    delta.texture *= std::clamp((picture.inter_cost + noise) / (mean.cost + noise), kLeastSurprise,
                                kLargestSurprise);
    return delta;
}

// The GOP's pictures that have not been decided, after `picture_`.
PictureBits GopRateControl::Following() const {
    if (!budget_.pictures.empty()) return {undecided_.texture * texture_trust_, undecided_.fixed};
    const PictureBits mean = DeltaMean();
    const double noise = kNoise * picture_.intra_cost;
    double textures = 0;  // in means
    for (const Waiting& waiting : picture_.waiting)
        textures += deltas_.learnt == 0
                        ? 1
                        : std::clamp((waiting.step_cost + noise) / (deltas_.cost + noise),
                                     kLeastSurprise, kMostFromWaiting);
    auto pictures = static_cast<double>(picture_.waiting.size());
    if (!picture_.last) {
        const double unseen = std::max(0.0, Remaining() - pictures);
        pictures += unseen;
        textures += unseen;
    }
    return {mean.texture * textures, mean.fixed * pictures};
}

// Pictures after `picture_`, by the time that is left.
double GopRateControl::Remaining() const {
    if (picture_.last) return static_cast<double>(picture_.waiting.size());
    return std::max(0.0, (seconds_ - picture_.seconds) / interval_ - 1);
}

double GopRateControl::IPart() const {
    if (settings_.weighs_i) return 1;
    const std::size_t pictures = budget_.pictures.size();
    if (pictures < 2) return IQuantiserPart(budget_.experience.delta_texture, Remaining());
    const double deltas = static_cast<double>(pictures) - 1;
    const double i_texture = budget_.pictures.front().bits.texture;
    return IQuantiserPart((found_.texture - i_texture) / deltas / std::max(1.0, i_texture), deltas);
}

// The quantiser at which this picture and all that follow take just what is left. As if the GOP
// went on for a little, so that its last pictures need not pay for an error alone.
double GopRateControl::EvenQuantiser(const Picture& picture) const {
    PictureBits others = Following();
    const double pictures = budget_.pictures.empty() ? static_cast<double>(decided_) + Remaining()
                                                     : static_cast<double>(budget_.pictures.size());
    const double share = budget_.last ? 0 : std::min(kSoftEnd / pictures, kSoftEndPart);
    PictureBits beyond = DeltaMean() * (share * pictures);
    if (!budget_.pictures.empty()) {
        beyond = found_ * share;
        beyond.texture *= texture_trust_;
    }
    others += beyond;
    const double bits = budget_bits_ * (1 + share) - result_.bits;
    if (bits <= others.fixed + expected_.fixed) return kNoBits;
    if (picture.kind != PictureKind::kI) {
        others += FoundPicture{expected_, picture.kind}.ByP();
        return others.QuantiserFor(bits);
    }
    double fine = 0;
    double coarse = kNoBits;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (fine + coarse) / 2;
        (expected_.At(middle * IPart()) + others.At(middle) > bits ? fine : coarse) = middle;
    }
    return coarse;
}

// Of pictures that a first pass has found: the least one at which none of those that are left
// overruns the VBV.
double GopRateControl::RoomQuantiser() const {
    if (picture_.index >= budget_.pictures.size()) return 0;
    const auto left = std::span(budget_.pictures).subspan(picture_.index + 1);
    const double drained =
        settings_.vbv_rate_bps * seconds_ / static_cast<double>(budget_.pictures.size());
    const auto fits = [&](double quantiser) {
        double level = level_bits_ + expected_.At(quantiser);
        double own_level = own_level_bits_ + expected_.At(quantiser);
        double still_drains = drained * static_cast<double>(left.size());
        for (const FoundPicture& picture : left) {
            PictureBits found = picture.ByP();
            found.texture *= texture_trust_;
            const double bits = found.At(quantiser);
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
    if (bits <= expected_.fixed) return settings_.coarsest;
    return std::clamp(expected_.QuantiserFor(bits), settings_.finest, settings_.coarsest);
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
    return result_.bits + expected_.At(settings_.coarsest) - allowed -
           kTolerance * std::max(0.0, budget_bits_);
}

// What the VBV takes, now and so that it holds no more at the GOP's end than what others count
// on: with what was in it before the GOP, and without.
double GopRateControl::HardRoom() const {
    const double left = std::max(0.0, budget_.seconds - picture_.seconds);
    const double drained = settings_.vbv_rate_bps * left;
    return std::min({VbvRoom(), budget_.vbv_end_bits + drained - level_bits_,
                     budget_.vbv_own_end_bits + drained - own_level_bits_});
}

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
    return picture_.kind == PictureKind::kI && quantiser >= RateSettings::kMostCoarse &&
           budget_.level_is_exact && level_bits_ <= 0 && bits > settings_.vbv_bits;
}

double GopRateControl::Coarser(double quantiser, double bits) const {
    const double room = std::max(1.0, rests_ ? VbvRoom() : HardRoom());
    const double wanted =
        kRecodeMargin * (quantiser + PictureBits::kOffset) * bits / room - PictureBits::kOffset;
    const double least = settings_.NextCoarser(quantiser);
    return std::max(least, settings_.Coded(std::min(wanted, RateSettings::kMostCoarse)));
}

// From picture to picture the quantiser changes in steps.
double GopRateControl::Restrained(double even) const {
    if (settings_.steady && deltas_.learnt >= kEarly)
        return std::clamp(even, quantiser_ / kLargestSteadyStep, quantiser_ * kLargestSteadyStep);
    const bool planned = !budget_.pictures.empty();
    const bool free = deltas_.learnt < kEarly;
    const bool surprise = !planned && expected_.texture > kSurprise * DeltaMean().texture;
    const double finer = planned || picture_.last ? kLargestStep : kLargestFinerStep;
    const double coarser = surprise ? kLargestFreeStep : kLargestStep;
    const double restrained = std::clamp(even, quantiser_ / (free ? kLargestFreeStep : finer),
                                         quantiser_ * (free ? kLargestFreeStep : coarser));
    // Finer than what they are predicted from would mostly code its noise.
    return free && !planned ? std::max(restrained, i_quantiser_) : restrained;
}

bool GopRateControl::MustDrop(const Picture& picture, double even) const {
    // Where B pictures may be, the next picture is as early as one that was left out: the VBV does
    // not drain meanwhile, so that what is expected of it would leave out all that follow.
    if (stands_still_) return false;
    const double least = expected_.At(settings_.coarsest);
    if (picture.kind == PictureKind::kI)
        return least > HardRoom() && level_bits_ > kNearlyEmpty * settings_.vbv_bits;
    if (least > HardRoom()) return true;
    // An error at the end of a GOP is no reason.
    const bool coarse =
        even >= settings_.coarsest && quantiser_ * kLargestStep >= settings_.coarsest;
    return coarse && Overdraft(picture.seconds) > 0;
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

// The quantiser of `picture_`, which is expected to take `expected_`.
double GopRateControl::Chosen() {
    even_ = EvenQuantiser(picture_);
    double quantiser = 0;
    if (picture_.kind == PictureKind::kI) {
        quantiser = i_quantiser_ = IQuantiser(even_);
    } else {
        if (quantiser_ > 0) even_ = Restrained(even_);
        quantiser = std::clamp(even_, settings_.finest, settings_.coarsest);
        if (picture_.kind == PictureKind::kB)
            quantiser = std::min(kBQuantiserPart * quantiser, RateSettings::kMostCoarse);
    }
    if (settings_.vbv_rate_bps > 0) {
        const double share = budget_.pictures.empty() ? kRoomShare : kPlannedRoomShare;
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

// Of the GOP's I pictures.
double GopRateControl::ITexture() const {
    return result_.i_pictures > 0 ? result_.i_bits.texture / static_cast<double>(result_.i_pictures)
                                  : budget_.experience.i_texture_per_cost * picture_.intra_cost;
}

double GopRateControl::SharperQuantiser() const {
    const double quantiser = sharpening_.Quantiser(SharpeningBits());
    return settings_.Coded(std::clamp(quantiser, settings_.finest, settings_.coarsest));
}

double GopRateControl::Reconsidered(double quantiser, const PictureBits& taken) {
    if (settings_.finest == settings_.coarsest) return quantiser;
    if (rests_) {
        const double bits = taken.At(quantiser);
        sharpening_.Took(bits, quantiser);
        if (bits <= kSharpeningExcess * SharpeningBits()) return quantiser;
        return std::max(quantiser, SharperQuantiser());
    }
    if (settings_.steady && deltas_.learnt >= kEarly) return quantiser;
    const double part = taken.At(quantiser) / std::max(1.0, expected_.At(quantiser));
    const bool is_i = picture_.kind == PictureKind::kI;
    const bool planned = !budget_.pictures.empty();
    const bool first = is_i || (deltas_.learnt == 0 && !planned);
    if (part < kGrossSurprise && !(first && part < 1 / kGrossSurprise)) return quantiser;
    expected_ = taken;
    surprised_ = !is_i;
    const double chosen = Chosen();
    if (is_i) return chosen;
    const double least = quantiser / kLargestSecondStep;
    const double most = quantiser * kLargestSecondStep;
    even_ = std::clamp(even_, least, most);
    return settings_.Coded(std::clamp(chosen, least, most));
}

void GopRateControl::Dropped() {
    ++result_.dropped;
    just_dropped_ = true;
    picture_.waiting = {};  // the caller's
}

GopRateControl::Decision GopRateControl::Decide(const Picture& picture) {
    passed_ = decided_ > 0 ? picture.seconds - picture_.seconds : 0;
    stands_still_ = just_dropped_ && passed_ <= 0;
    picture_ = picture;
    const bool rests =
        settings_.sharpens && Sharpening::Rests(picture.step_cost, picture.intra_cost);
    rests_ = rests && picture.kind != PictureKind::kI;
    if (!rests_) LearnInterval(passed_);
    Shorten();
    level_bits_ = std::max(0.0, level_bits_ - passed_ * settings_.vbv_rate_bps);
    own_level_bits_ = std::max(0.0, own_level_bits_ - passed_ * settings_.vbv_rate_bps);
    ++decided_;
    if (picture.index < budget_.pictures.size()) {
        const PictureBits found = budget_.pictures[picture.index].ByP();
        undecided_.texture = std::max(0.0, undecided_.texture - found.texture);
        undecided_.fixed = std::max(0.0, undecided_.fixed - found.fixed);
    }
    surprised_ = false;
    expected_ = Expected(picture);

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
    decision.drop = settings_.vbv_rate_bps > 0 && settings_.may_drop && MustDrop(picture, even_);
    decision.expected_bits = expected_.At(decision.quantiser);
    if (decision.drop) Dropped();
    return decision;
}

void GopRateControl::Coded(const PictureBits& taken, double bits, double quantiser, bool is_i) {
    const bool sharpened = rests_ && !is_i;
    if (!is_i && !sharpened) {
        MeanOf(picture_.kind).Learn(taken, picture_.inter_cost, kDeltaMemory);
        deltas_.Learn(FoundPicture{taken, picture_.kind}.ByP(), picture_.step_cost,
                      b_mean_.learnt > 0 ? kMixedMemory : kDeltaMemory);
    }
    if (!is_i && !sharpened && expected_.texture > 0 && !budget_.pictures.empty()) {
        const double found = expected_.texture / texture_trust_;
        const double weight = std::max(kTrustMemory, 1.0 / static_cast<double>(decided_));
        texture_trust_ += weight * (taken.texture / found - texture_trust_);
        texture_trust_ = std::clamp(texture_trust_, 1 / kLargestMistrust, kLargestMistrust);
    }
    just_dropped_ = false;
    level_bits_ += bits;
    own_level_bits_ += bits;
    result_.bits += bits;
    result_.own_level_bits = own_level_bits_;
    result_.last_seconds = picture_.seconds;
    (is_i ? result_.i_pictures : result_.deltas) += 1;
    if (is_i)
        result_.i_bits += taken;
    else
        result_.delta_bits += FoundPicture{taken, picture_.kind}.ByP();
    if (is_i) result_.i_cost += picture_.intra_cost;
    picture_.waiting = {};  // the caller's
    if (sharpened) {
        sharpening_.Sharpened(quantiser);
        return;
    }
    sharpening_.Showed(quantiser, ITexture());
    quantiser_ = std::clamp(even_, settings_.finest, settings_.coarsest);
    // Where the VBV has forced it, what follows refers to no better.
    if (picture_.kind == PictureKind::kB) quantiser /= kBQuantiserPart;
    if (quantiser > kForced * quantiser_) quantiser_ = quantiser;
}

}  // namespace codecs
