#include "codecs/common/group_rate_control.h"

#include <algorithm>
#include <utility>

namespace codecs {
namespace {

// Of the quantiser, from picture to picture; larger while little is known of the group.
constexpr double kLargestStep = 1.25;
constexpr double kLargestSteadyStep = 1.1;
constexpr double kLargestFreeStep = 2;
constexpr int kEarly = 4;  // deltas
constexpr double kIntervalMemory = 0.3;
constexpr int kDeltaMemory = 5;  // pictures
constexpr double kTrustMemory = 0.1;
constexpr double kLargestMistrust = 8;
constexpr double kSoftEndPart = 0.1;  // of its pictures, at most
constexpr double kSoftEnd = 3;        // pictures beyond the group's end that share in an error
constexpr double kTolerance = 0.03;   // of the budget, before pictures are dropped
// Of the intra cost: what two pictures differ by that show the same.
constexpr double kNoise = 0.02;
// Of what the bucket has left, for one picture: it may take more than is expected of it.
constexpr double kRoomShare = 0.6;
constexpr double kDraining = 0.7;  // of the bucket's rate, at a group's end
constexpr double kSurprise = 2;
// Of the bucket; one that holds no more takes a key picture whatever its size.
constexpr double kNearlyEmpty = 0.15;
constexpr int kHalvings = 40;
constexpr double kNoBits = 1e4;  // the quantiser where none are left
constexpr double kLeastSurprise = 0.25;
constexpr double kLargestSurprise = 30;

}  // namespace

GroupRateControl::GroupRateControl(const RateSettings& settings, GroupOutlook outlook)
    : settings_(settings),
      outlook_(std::move(outlook)),
      level_bits_(outlook_.bucket_level_bits),
      interval_(1 / outlook_.experience.pictures_per_second) {
    result_.seconds = outlook_.seconds;
    following_.resize(outlook_.pictures.size() + 1);
    for (std::size_t i = outlook_.pictures.size(); i-- > 0;) {
        following_[i] = following_[i + 1];
        following_[i] += outlook_.pictures[i];
    }
}

// Until deltas are known, what they usually are beside a key picture.
PictureBits GroupRateControl::DeltaMean() const {
    if (learnt_ > 0) return delta_mean_;
    const double key = result_.keys > 0
                           ? result_.key_bits.texture / static_cast<double>(result_.keys)
                           : outlook_.experience.key_texture_per_cost * picture_.intra_cost;
    return {outlook_.experience.delta_texture * key, outlook_.experience.delta_fixed};
}

PictureBits GroupRateControl::Expected(const Picture& picture) const {
    const std::size_t index = decided_ - 1;
    if (index < outlook_.pictures.size()) {
        const PictureBits& found = outlook_.pictures[index];
        return {found.texture * (picture.key ? 1 : texture_trust_), found.fixed};
    }
    if (picture.key)
        return {outlook_.experience.key_texture_per_cost * picture.intra_cost,
                outlook_.experience.key_fixed};
    PictureBits delta = DeltaMean();
    if (learnt_ > 0) {
        const double noise = kNoise * picture.intra_cost;
        delta.texture *= std::clamp((picture.inter_cost + noise) / (delta_cost_ + noise),
                                    kLeastSurprise, kLargestSurprise);
    }
    return delta;
}

// The group's pictures after the one at `seconds`.
PictureBits GroupRateControl::Following(double seconds) const {
    if (!outlook_.pictures.empty()) {
        const PictureBits sum = following_[std::min(decided_, following_.size() - 1)];
        return {sum.texture * texture_trust_, sum.fixed};
    }
    return DeltaMean() * std::max(0.0, (outlook_.seconds - seconds) / interval_ - 1);
}

double GroupRateControl::KeyPart() const {
    const std::size_t pictures = outlook_.pictures.size();
    if (pictures < 2)
        return KeyQuantiserPart(outlook_.experience.delta_texture, outlook_.seconds / interval_);
    const double deltas = static_cast<double>(pictures) - 1;
    const double key = std::max(1.0, outlook_.pictures.front().texture);
    return KeyQuantiserPart(following_[1].texture / deltas / key, deltas);
}

// The quantiser at which this picture and all that follow take just what is left. As if the group
// went on for a little, so that its last pictures need not pay for an error alone.
double GroupRateControl::EvenQuantiser(const Picture& picture) const {
    PictureBits others = Following(picture.seconds);
    const double pictures = outlook_.pictures.empty()
                                ? outlook_.seconds / interval_
                                : static_cast<double>(outlook_.pictures.size());
    const double share = std::min(kSoftEnd / pictures, kSoftEndPart);
    PictureBits beyond = DeltaMean() * (share * pictures);
    if (!outlook_.pictures.empty()) {
        beyond = following_.front() * share;
        beyond.texture *= texture_trust_;
    }
    others += beyond;
    const double bits = outlook_.bits * (1 + share) - result_.bits;
    if (bits <= others.fixed + expected_.fixed) return kNoBits;
    if (!picture.key) {
        others += expected_;
        return others.QuantiserFor(bits);
    }
    double fine = 0;
    double coarse = kNoBits;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (fine + coarse) / 2;
        (expected_.At(middle * KeyPart()) + others.At(middle) > bits ? fine : coarse) = middle;
    }
    return coarse;
}

// At which the picture takes no more than that.
double GroupRateControl::QuantiserFor(double bits) const {
    if (bits <= expected_.fixed) return settings_.coarsest;
    return std::clamp(expected_.QuantiserFor(bits), settings_.finest, settings_.coarsest);
}

// Finer than the others; but where those are at their coarsest, what they leave.
double GroupRateControl::KeyQuantiser(const Picture& picture, double even) const {
    if (even < settings_.coarsest)
        return std::clamp(even * KeyPart(), settings_.finest, settings_.coarsest);
    const double others = Following(picture.seconds).At(settings_.coarsest);
    return std::max(settings_.coarsest * KeyPart(), QuantiserFor(outlook_.bits - others));
}

// By how much the group is ahead of its budget once the picture at `seconds` is coded as coarsely
// as can be. What the receiver's buffer takes ahead of time has to be made up for by the group's
// end, so it is never more than all of the budget.
double GroupRateControl::Overdraft(double seconds) const {
    const double part = std::min(1.0, (seconds + interval_) / outlook_.seconds);
    const double ahead = std::max(0.0, settings_.bucket_bits - outlook_.bucket_level_bits);
    const double allowed = std::min(outlook_.bits * part + ahead * (1 - part), outlook_.bits);
    return result_.bits + expected_.At(settings_.coarsest) - allowed -
           kTolerance * std::max(0.0, outlook_.bits);
}

// What the bucket takes, with what the group itself has put into it drained by the group's end to
// what may be handed over. What an easy stretch has not used is gone: a burst at the end cannot.
double GroupRateControl::RoomAt(double seconds) const {
    const double left = std::max(0.0, outlook_.seconds - seconds);
    const double own_limit =
        kHandOver * settings_.bucket_bits + kDraining * settings_.bucket_rate_bps * left;
    return std::min(BucketRoom(), own_limit - own_level_bits_);
}

// From picture to picture the quantiser changes in steps.
double GroupRateControl::Restrained(double even) const {
    if (settings_.steady)
        return std::clamp(even, quantiser_ / kLargestSteadyStep, quantiser_ * kLargestSteadyStep);
    const bool planned = !outlook_.pictures.empty();
    const bool free = planned || learnt_ < kEarly;
    const bool surprise = expected_.texture > kSurprise * DeltaMean().texture;
    const double restrained =
        std::clamp(even, quantiser_ / (free ? kLargestFreeStep : kLargestStep),
                   quantiser_ * (free || surprise ? kLargestFreeStep : kLargestStep));
    // Finer than what they are predicted from would mostly code its noise.
    return free && !planned ? std::max(restrained, key_quantiser_) : restrained;
}

bool GroupRateControl::MustDrop(const Picture& picture, double even) const {
    const double least = expected_.At(settings_.coarsest);
    if (picture.key)
        return least > BucketRoom() && level_bits_ > kNearlyEmpty * settings_.bucket_bits;
    if (least > RoomAt(picture.seconds)) return true;
    return even >= settings_.coarsest && Overdraft(picture.seconds) > 0;
}

GroupRateControl::Decision GroupRateControl::Decide(const Picture& picture) {
    const double passed = decided_ > 0 ? picture.seconds - picture_.seconds : 0;
    if (decided_ > 0) interval_ += kIntervalMemory * (passed - interval_);
    level_bits_ = std::max(0.0, level_bits_ - passed * settings_.bucket_rate_bps);
    own_level_bits_ = std::max(0.0, own_level_bits_ - passed * settings_.bucket_rate_bps);
    picture_ = picture;
    ++decided_;
    expected_ = Expected(picture);

    double even = EvenQuantiser(picture);
    Decision decision;
    if (picture.key) {
        decision.quantiser = key_quantiser_ = KeyQuantiser(picture, even);
    } else {
        if (quantiser_ > 0) even = Restrained(even);
        decision.quantiser = std::clamp(even, settings_.finest, settings_.coarsest);
    }
    if (settings_.bucket_rate_bps > 0) {
        decision.quantiser =
            std::max(decision.quantiser, QuantiserFor(kRoomShare * RoomAt(picture.seconds)));
        decision.drop = settings_.may_drop && MustDrop(picture, even);
    }
    decision.expected_bits = expected_.At(decision.quantiser);
    if (decision.drop)
        ++result_.dropped;
    else
        quantiser_ = std::clamp(even, settings_.finest, settings_.coarsest);
    return decision;
}

void GroupRateControl::LearnDelta(const PictureBits& taken) {
    if (learnt_ == 0) {
        delta_mean_ = DeltaMean();
        delta_cost_ = picture_.inter_cost;
    }
    learnt_ = std::min(learnt_ + 1, kDeltaMemory);
    const double weight = 1.0 / (learnt_ + 1);
    delta_mean_.texture += weight * (taken.texture - delta_mean_.texture);
    delta_mean_.fixed += weight * (taken.fixed - delta_mean_.fixed);
    delta_cost_ += weight * (picture_.inter_cost - delta_cost_);
}

void GroupRateControl::Coded(const PictureBits& taken, double bits, bool key) {
    if (!key) LearnDelta(taken);
    if (!key && expected_.texture > 0 && !outlook_.pictures.empty()) {
        const double found = expected_.texture / texture_trust_;
        const double weight = std::max(kTrustMemory, 1.0 / static_cast<double>(decided_));
        texture_trust_ += weight * (taken.texture / found - texture_trust_);
        texture_trust_ = std::clamp(texture_trust_, 1 / kLargestMistrust, kLargestMistrust);
    }
    level_bits_ += bits;
    own_level_bits_ += bits;
    result_.bits += bits;
    (key ? result_.keys : result_.deltas) += 1;
    (key ? result_.key_bits : result_.delta_bits) += taken;
    if (key) result_.key_cost += picture_.intra_cost;
}

}  // namespace codecs
