#include "codecs/common/two_pass_plan.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace codecs {
namespace {

// How far harder groups are coded more coarsely: 0 = the same quantiser everywhere, 1 = the same
// rate everywhere.
constexpr double kEvening = 0.25;
constexpr int kHalvings = 40;

struct Demand {
    double seconds = 0;
    PictureBits i_picture;
    PictureBits deltas;
    double i_part = 1;    // of the quantiser
    double hardness = 1;  // quantiser beside the even one

    double At(const RateSettings& settings, double quantiser) const {
        const auto allowed = [&](double q) {
            return std::clamp(q, settings.finest, settings.coarsest);
        };
        return i_picture.At(allowed(quantiser * hardness * i_part)) +
               deltas.At(allowed(quantiser * hardness));
    }
};

Demand DemandOf(const FirstPassGroup& group) {
    Demand demand;
    demand.seconds = group.seconds;
    if (group.pictures.empty()) return demand;
    demand.i_picture = group.pictures.front().bits;
    for (std::size_t i = 1; i < group.pictures.size(); ++i)
        demand.deltas += group.pictures[i].ByP();
    const double count = std::max(1.0, static_cast<double>(group.pictures.size()) - 1);
    demand.i_part = IQuantiserPart(
        demand.deltas.texture / count / std::max(1.0, demand.i_picture.texture), count);
    return demand;
}

std::vector<Demand> Demands(const std::vector<FirstPassGroup>& groups) {
    std::vector<Demand> demands;
    double texture = 0;
    double seconds = 0;
    for (const FirstPassGroup& group : groups) {
        const Demand demand = DemandOf(group);
        texture += demand.i_picture.texture + demand.deltas.texture;
        seconds += demand.seconds;
        demands.push_back(demand);
    }
    for (Demand& demand : demands) {
        const double own = demand.i_picture.texture + demand.deltas.texture;
        if (own > 0 && demand.seconds > 0)
            demand.hardness = std::pow(own / demand.seconds / (texture / seconds), kEvening);
    }
    return demands;
}

// The budgets at an even quantiser, cut to what the bucket takes. Returns their sum.
double Fill(const RateSettings& settings, const std::vector<Demand>& demands, double quantiser,
            std::vector<PlannedGroup>& plan) {
    const double cap = kHandOver * settings.bucket_bits;
    double level = 0;
    double sum = 0;
    for (std::size_t i = 0; i < demands.size(); ++i) {
        const Demand& demand = demands[i];
        double bits = demand.At(settings, quantiser);
        if (settings.bucket_rate_bps > 0) {
            const double drained = settings.bucket_rate_bps * demand.seconds;
            bits = std::min(bits, cap + drained - level);
            level = std::max(0.0, level + bits - drained);
        }
        plan[i].bits = bits;
        sum += bits;
    }
    return sum;
}

}  // namespace

std::vector<PlannedGroup> PlanGroups(const RateSettings& settings,
                                     std::vector<FirstPassGroup> groups) {
    std::vector<PlannedGroup> plan(groups.size());
    const std::vector<Demand> demands = Demands(groups);
    double total = 0;
    for (const FirstPassGroup& group : groups) total += settings.rate_bps * group.seconds;
    // More coarsely is never more bits, so the quantiser that fits is found by halving.
    double fine = std::log(settings.finest / 4);
    double coarse = std::log(settings.coarsest * 4);
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (fine + coarse) / 2;
        if (Fill(settings, demands, std::exp(middle), plan) > total)
            fine = middle;
        else
            coarse = middle;
    }
    Fill(settings, demands, std::exp(coarse), plan);
    for (std::size_t i = 0; i < groups.size(); ++i)
        plan[i].pictures = std::move(groups[i].pictures);
    return plan;
}

}  // namespace codecs
