#include "codecs/common/two_pass_plan.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace codecs {
namespace {

// How far harder GOPs are coded more coarsely: 0 = the same quantiser everywhere, 1 = the same
// rate everywhere. Chosen by hand on the clips of bench/quality.
constexpr double kEvening = 0.25;
constexpr int kHalvings = 40;

struct Demand {
    double seconds = 0;
    PictureBits i_picture;
    PictureBits deltas;
    double i_part = 1;    // of the quantiser
    double hardness = 1;  // quantiser beside the even one

    double Coefficients() const { return i_picture.Usually() + deltas.Usually(); }
    double At(const RateSettings& settings, double quantiser) const {
        const auto allowed = [&](double q) {
            return std::clamp(q, settings.finest, settings.coarsest);
        };
        return i_picture.At(allowed(quantiser * hardness * i_part)) +
               deltas.At(allowed(quantiser * hardness));
    }
};

Demand DemandOf(const RateSettings& settings, const FirstPassGop& gop) {
    Demand demand;
    demand.seconds = gop.seconds;
    if (gop.pictures.empty()) return demand;
    demand.i_picture = gop.pictures.front().bits;
    for (std::size_t i = 1; i < gop.pictures.size(); ++i) demand.deltas += gop.pictures[i].ByP();
    if (settings.weighs_i) return demand;
    const double count = std::max(1.0, static_cast<double>(gop.pictures.size()) - 1);
    demand.i_part = IQuantiserPart(
        demand.deltas.Usually() / count / std::max(1.0, demand.i_picture.Usually()), count);
    return demand;
}

std::vector<Demand> Demands(const RateSettings& settings, const std::vector<FirstPassGop>& gops) {
    std::vector<Demand> demands;
    double bits = 0;
    double seconds = 0;
    for (const FirstPassGop& gop : gops) {
        const Demand demand = DemandOf(settings, gop);
        bits += demand.Coefficients();
        seconds += demand.seconds;
        demands.push_back(demand);
    }
    for (Demand& demand : demands) {
        const double own = demand.Coefficients();
        if (own > 0 && demand.seconds > 0)
            demand.hardness = std::pow(own / demand.seconds / (bits / seconds), kEvening);
    }
    return demands;
}

// The budgets at an even quantiser and times `gain`, cut to what the VBV takes. Returns their sum.
double Fill(const RateSettings& settings, const std::vector<Demand>& demands, double quantiser,
            double gain, std::vector<PlannedGop>& plan) {
    double level = 0;
    double sum = 0;
    for (std::size_t i = 0; i < demands.size(); ++i) {
        const Demand& demand = demands[i];
        double bits = gain * demand.At(settings, quantiser);
        if (settings.vbv_rate_bps > 0) {
            const bool last = i + 1 == demands.size();
            const double cap = (last ? 1 - kHandOver : kHandOver) * settings.vbv_bits;
            const double drained = settings.vbv_rate_bps * demand.seconds;
            bits = std::min(bits, cap + drained - level);
            level = std::max(0.0, level + bits - drained);
        }
        plan[i].bits = bits;
        sum += bits;
    }
    return sum;
}

// Where `too_much` ends, which is somewhere between the two.
template <typename TooMuch>
double Halved(double most, double least, const TooMuch& too_much) {
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (most + least) / 2;
        (too_much(middle) ? most : least) = middle;
    }
    return least;
}

}  // namespace

std::vector<PlannedGop> PlanGops(const RateSettings& settings, std::vector<FirstPassGop> gops) {
    std::vector<PlannedGop> plan(gops.size());
    const std::vector<Demand> demands = Demands(settings, gops);
    double total = 0;
    for (const FirstPassGop& gop : gops) total += settings.rate_bps * gop.seconds;
    const double finest = std::log(settings.finest / 4);
    const double coarsest = std::log(settings.coarsest * 4);
    const double quantiser = std::exp(Halved(finest, coarsest, [&](double log) {
        return Fill(settings, demands, std::exp(log), 1, plan) > total;
    }));
    const double sum = Fill(settings, demands, quantiser, 1, plan);
    // What the finest or the coarsest quantiser makes of pictures is only known once it is tried.
    // Where the coarsest is not enough, pictures have to go.
    double gain = sum > 0 ? total / sum : 1;
    if (gain < 1)
        gain = Halved(1, 0, [&](double part) {
            return Fill(settings, demands, quantiser, part, plan) > total;
        });
    Fill(settings, demands, quantiser, gain, plan);
    for (std::size_t i = 0; i < gops.size(); ++i) plan[i].pictures = std::move(gops[i].pictures);
    return plan;
}

}  // namespace codecs
