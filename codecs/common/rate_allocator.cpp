#include "codecs/common/rate_allocator.h"

#include <algorithm>
#include <utility>

namespace codecs {
namespace {

// Chosen by hand, so that the pretended encoders of tests/unit/codecs/rate_control_test.cpp keep
// their rates with many GOPs at work and with one.
constexpr double kManyDropped = 0.1;  // of the pictures that are coded
constexpr double kLearning = 0.5;     // weight of the GOP learnt last
// Of a debt, shared by the GOPs at work and the next: each repays as if alone.
constexpr double kRepayment = 0.8;
constexpr double kLargestGift = 0.2;  // of a GOP's budget, of what others have saved
constexpr double kVbvSaving = 0.25;   // of the VBV; what it has drained beyond is lost
// Of the VBV, between two GOPs; of an empty one, what a GOP may always leave in it.
constexpr double kFullest = 0.5;
constexpr double kOwnPart = 0.2;
// What a GOP may take beyond its budget, of what drains meanwhile and of the VBV.
constexpr double kLeeway = 0.05;
constexpr double kVbvLeeway = 0.03;

}  // namespace

RateAllocator::RateAllocator(const RateSettings& settings, const RateExperience& usual,
                             std::vector<PlannedGop> plan)
    : settings_(settings), plan_(std::move(plan)), experience_(usual) {}

// Of a short stream that is planned fewer: what its last GOPs take beyond the plan, none makes
// good.
std::int64_t RateAllocator::MostAtOnce() const {
    constexpr std::int64_t kPart = 4;
    if (plan_.empty()) return kMostAtOnce;
    const auto gops = static_cast<std::int64_t>(plan_.size());
    return std::clamp<std::int64_t>(gops / kPart, 2, kMostAtOnce);
}

std::int64_t RateAllocator::Needs() const {
    const std::int64_t known = accounted_ - 1;
    const std::int64_t far = std::max(known, opened_ - MostAtOnce());
    const bool one_quantiser = settings_.finest == settings_.coarsest;
    if (one_quantiser || Planned(opened_)) return far;
    const bool in_debt = debt_bits_ > kHandOver * settings_.vbv_bits;
    return settings_.may_drop && (in_debt || drops_) ? opened_ - 1 : far;
}

GopBudget RateAllocator::Open(double seconds, bool last) {
    for (const std::int64_t needed = Needs(); accounted_ <= needed; ++accounted_) {
        Account(accounted_, closed_.at(accounted_));
        closed_.erase(accounted_);
    }
    const std::int64_t index = opened_++;
    const auto unknown = static_cast<double>(index - accounted_);  // GOPs at work or ready
    GopBudget budget;
    budget.seconds = seconds;
    budget.last = last;
    budget.level_is_exact = unknown == 0;
    budget.bits = settings_.rate_bps * seconds;
    budget.experience = experience_;
    if (Planned(index)) {
        PlannedGop& planned = plan_[static_cast<std::size_t>(index)];
        budget.bits = planned.bits;
        budget.pictures = std::move(planned.pictures);
    }
    budget.bits -= std::max(kRepayment / (1 + unknown) * debt_bits_, -kLargestGift * budget.bits);
    if (settings_.vbv_rate_bps > 0) Reserve(budget);
    return budget;
}

// Where the VBV may stand when the GOPs at work are done: each adds at most its surplus to
// what it finds, or leaves at most what it may in an empty one.
double RateAllocator::LevelAtMost() const {
    double level = level_bits_;
    for (const GopReservation& gop : reservations_)
        level = std::max(gop.own_bits, level + gop.surplus_bits);
    return level;
}

void RateAllocator::Reserve(GopBudget& budget) {
    const double vbv = settings_.vbv_bits;
    const double drained = settings_.vbv_rate_bps * budget.seconds;
    const double leeway = std::min(kLeeway * drained, kVbvLeeway * vbv);
    const double level = LevelAtMost();
    const double most = std::max(level, kFullest * vbv);
    const double added = budget.bits - drained + leeway;
    budget.vbv_level_bits = level;
    budget.vbv_end_bits = std::clamp(level + added, kOwnPart * vbv, most);
    budget.vbv_own_end_bits = std::clamp(added, kOwnPart * vbv, budget.vbv_end_bits);
    if (budget.last) budget.vbv_end_bits = budget.vbv_own_end_bits = vbv;  // nobody counts on less
    const double surplus = budget.vbv_end_bits - level;
    budget.bits = std::min(budget.bits, drained + surplus);
    reservations_.push_back({surplus, budget.vbv_own_end_bits});
}

void RateAllocator::Close(std::int64_t index, const GopResult& result) {
    closed_.insert_or_assign(index, result);
}

void RateAllocator::Account(std::int64_t index, const GopResult& result) {
    if (settings_.vbv_rate_bps > 0) {
        const double drained_since =
            settings_.vbv_rate_bps * (result.seconds - result.last_seconds);
        const double through = settings_.vbv_rate_bps * result.seconds;
        level_bits_ = std::max(
            {0.0, result.own_level_bits - drained_since, level_bits_ + result.bits - through});
        reservations_.pop_front();
    }
    const double budget = Planned(index) ? plan_[static_cast<std::size_t>(index)].bits
                                         : settings_.rate_bps * result.seconds;
    if (!settings_.steady) debt_bits_ += result.bits - budget;
    if (settings_.vbv_rate_bps > 0 && plan_.empty())
        debt_bits_ = std::max(debt_bits_, -kVbvSaving * settings_.vbv_bits);
    const auto coded = static_cast<double>(result.coded.i_pictures + result.coded.deltas);
    drops_ = static_cast<double>(result.dropped) > kManyDropped * coded;
    Learn(result, kLearning);
}

void RateAllocator::LearnTrial(const GopResult& trial) { Learn(trial, 1); }

void RateAllocator::Learn(const GopResult& result, double weight) {
    const CodedSum& coded = result.coded;
    if (coded.i_pictures == 0) return;
    const auto i_pictures = static_cast<double>(coded.i_pictures);
    const auto towards = [&](double& value, double found) { value += weight * (found - value); };
    if (result.seconds > 0 && coded.deltas > 0)
        towards(
            experience_.pictures_per_second,
            static_cast<double>(coded.i_pictures + coded.deltas + result.dropped) / result.seconds);
    towards(experience_.i_fixed, coded.i_bits.fixed / i_pictures);
    if (!coded.TellsTexture()) return;
    towards(experience_.i_texture_per_cost, coded.i_bits.texture / coded.i_cost);
    if (coded.deltas == 0) return;
    const auto deltas = static_cast<double>(coded.deltas);
    towards(experience_.delta_residue, PictureBits::kUsualStep *
                                           (coded.delta_bits.Usually() / deltas) /
                                           (coded.i_bits.Usually() / i_pictures));
    towards(experience_.delta_fixed, coded.delta_bits.fixed / deltas);
}

}  // namespace codecs
