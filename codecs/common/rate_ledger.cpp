#include "codecs/common/rate_ledger.h"

#include <algorithm>
#include <utility>

namespace codecs {
namespace {

constexpr double kLearning = 0.5;  // weight of the group learnt last
// Of a debt, shared by the groups at work and the next: each repays as if alone.
constexpr double kRepayment = 0.8;
constexpr double kLargestGift = 0.2;    // of a group's budget, of what others have saved
constexpr double kBucketSaving = 0.25;  // of the bucket; what it has drained beyond is lost

}  // namespace

RateLedger::RateLedger(const RateSettings& settings, const RateExperience& usual,
                       std::vector<PlannedGroup> plan)
    : settings_(settings), plan_(std::move(plan)), experience_(usual) {}

std::int64_t RateLedger::Needs() const {
    const std::int64_t known = accounted_ - 1;
    const std::int64_t far = std::max(known, opened_ - kMostAtOnce);
    const bool one_quantiser = settings_.finest == settings_.coarsest;
    if (one_quantiser || Planned(opened_)) return far;
    const bool in_debt = settings_.may_drop && debt_bits_ > kHandOver * settings_.bucket_bits;
    return in_debt ? opened_ - 1 : far;
}

GroupOutlook RateLedger::Open(double seconds) {
    for (const std::int64_t needed = Needs(); accounted_ <= needed; ++accounted_) {
        Account(accounted_, closed_.at(accounted_));
        closed_.erase(accounted_);
    }
    const std::int64_t index = opened_++;
    const auto unknown = static_cast<double>(index - accounted_);  // groups at work or ready
    GroupOutlook outlook;
    outlook.seconds = seconds;
    outlook.bits = settings_.rate_bps * seconds;
    outlook.experience = experience_;
    if (Planned(index)) {
        PlannedGroup& planned = plan_[static_cast<std::size_t>(index)];
        outlook.bits = planned.bits;
        outlook.pictures = std::move(planned.pictures);
    }
    outlook.bucket_level_bits = unknown > 0 ? kHandOver * settings_.bucket_bits
                                            : std::clamp(debt_bits_, 0.0, settings_.bucket_bits);
    outlook.bits -= std::max(kRepayment / (1 + unknown) * debt_bits_, -kLargestGift * outlook.bits);
    return outlook;
}

void RateLedger::Close(std::int64_t index, const GroupResult& result) {
    closed_.insert_or_assign(index, result);
}

void RateLedger::Account(std::int64_t index, const GroupResult& result) {
    const double budget = Planned(index) ? plan_[static_cast<std::size_t>(index)].bits
                                         : settings_.rate_bps * result.seconds;
    if (!settings_.steady) debt_bits_ += result.bits - budget;
    if (settings_.bucket_rate_bps > 0 && plan_.empty())
        debt_bits_ = std::max(debt_bits_, -kBucketSaving * settings_.bucket_bits);
    Learn(result, kLearning);
}

void RateLedger::LearnTrial(const GroupResult& trial) { Learn(trial, 1); }

void RateLedger::Learn(const GroupResult& result, double weight) {
    if (result.keys == 0) return;
    const auto keys = static_cast<double>(result.keys);
    const auto towards = [&](double& value, double found) { value += weight * (found - value); };
    if (result.seconds > 0 && result.deltas > 0)
        towards(experience_.pictures_per_second,
                static_cast<double>(result.keys + result.deltas + result.dropped) / result.seconds);
    towards(experience_.key_texture_per_cost, result.key_bits.texture / result.key_cost);
    towards(experience_.key_fixed, result.key_bits.fixed / keys);
    if (result.deltas == 0 || result.key_bits.texture <= 0) return;
    const auto deltas = static_cast<double>(result.deltas);
    towards(experience_.delta_texture,
            result.delta_bits.texture / deltas / (result.key_bits.texture / keys));
    towards(experience_.delta_fixed, result.delta_bits.fixed / deltas);
}

}  // namespace codecs
