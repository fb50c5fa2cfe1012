#include "codecs/wmv9/residual.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wmv9/levels.h"
#include "codecs/wmv9/transform_types.h"

namespace codecs::wmv9 {
namespace {

constexpr int kShapes = 4;
// Levels of a residual are more often too large than too small. Chosen by hand on the clips of
// bench/quality.
constexpr double kRounding = 0.25;
// No coefficient is larger than this part of the sum of absolute differences.
constexpr double kLargestPart = 0.2;
constexpr double kSafeRounding = 1.0 / 3;

std::int64_t ErrorOf(std::uint32_t squared_samples) {
    return std::int64_t{squared_samples} * static_cast<std::int64_t>(kErrorOfSquaredSample);
}

std::ptrdiff_t Stride(const Frame& frame, int n) {
    return frame[kBlockPlaces[Index(n)].plane].stride;
}

std::uint32_t Limit(const Quantiser& quantiser) {
    return static_cast<std::uint32_t>((1 - kSafeRounding) / kLargestPart * quantiser.step);
}

// A block in transforms of one shape.
struct Shaped {
    Block levels;
    int parts = 0;  // 0 = nothing is coded
    int bits = 0;
    std::int64_t error = 0;
};

struct BlockWork {
    Block residual;
    std::int64_t silent = 0;  // error of nothing coded
    bool worth = false;       // it may have levels
    unsigned tried = 0;       // shapes
    std::uint32_t sum = 0;    // of the levels of the whole transform, as they are rounded
    std::array<Shaped, kShapes> shaped;
};

// A way to code all blocks.
struct Plan {
    std::array<Shape, kBlocks> shapes{};
    std::array<bool, kBlocks> coded{};
    bool block_types = false;
    int bits = 0;
    std::int64_t cost = std::numeric_limits<std::int64_t>::max();
};

class ResidualCoder {
  public:
    ResidualCoder(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
                  const ResidualOptions& options, int x, int y, Candidate& candidate)
        : picture_(picture),
          kernels_(picture.kernels),
          estimates_(estimates),
          quantiser_(quantiser),
          options_(options),
          x_(x),
          y_(y),
          candidate_(candidate) {}

    bool Run() {
        bool any = false;
        for (int n = 0; n < kBlocks; ++n) {
            Prepare(n);
            any = any || work_[Index(n)].worth;
        }
        std::int64_t silent = 0;
        for (const BlockWork& work : work_) silent += work.silent;
        Plan best;
        if (any) best = BestPlan();
        if (best.cost >= silent) {
            best.coded = {};
            best.cost = silent;
        }
        // The vectors of 4MV share the pattern, which is then the caller's to count.
        if (candidate_.macroblock.four_mv) {
            const int pattern = PatternBits(best.coded);
            best.bits -= pattern;
            best.cost -= quantiser_.lambda * pattern;
        }
        if (best.cost >= options_.limit) return false;
        Apply(best);
        return true;
    }

  private:
    void Prepare(int n) {
        BlockWork& work = work_[Index(n)];
        const std::uint8_t* const source = SourceBlock(picture_.source, x_, y_, n);
        const std::ptrdiff_t stride = Stride(picture_.source, n);
        const std::uint8_t* const predicted = candidate_.samples.Block(n);
        const int own = kBlockPlaces[Index(n)].stride;
        const BlockDifference difference =
            kernels_.subtract(work.residual.data(), source, stride, predicted, own);
        work.silent = ErrorOf(difference.squared);
        work.worth = difference.absolute >= Limit(quantiser_);
        if (!work.worth) return;
        if (picture_.header.shape) {
            Try(n, work, *picture_.header.shape);
        } else {
            if ((options_.shapes & ShapeBit(Shape::Whole8x8)) != 0) Try(n, work, Shape::Whole8x8);
            const bool more = work.tried == 0 || work.shaped[0].bits >= options_.try_from_bits;
            for (int shape = 1; more && shape < kShapes; ++shape)
                if ((options_.shapes >> shape & 1U) != 0) Try(n, work, static_cast<Shape>(shape));
        }
        work.worth = false;
        for (int shape = 0; shape < kShapes; ++shape)
            if ((work.tried >> shape & 1U) != 0 &&
                work.shaped[static_cast<std::size_t>(shape)].parts != 0)
                work.worth = true;
    }

    void Try(int n, BlockWork& work, Shape shape) {
        work.tried |= ShapeBit(shape);
        Shaped& shaped = work.shaped[static_cast<std::size_t>(shape)];
        shaped.parts = 0;
        shaped.bits = 0;
        shaped.error = work.silent;
        Block coefficients;
        kernels_.forward(shape, coefficients.data(), work.residual.data());
        const double rounding = options_.rd ? kChoiceRounding : kRounding;
        const std::uint32_t sum =
            kernels_.quantise(shaped.levels.data(), coefficients.data(), quantiser_.reciprocal,
                              static_cast<int>(rounding * quantiser_.step * kEighths));
        if (sum == 0) return;
        // Not that of the samples: it differs by a hundredth, which is more than what remains of a
        // large residual.
        shaped.error = EnergyOf(coefficients);
        // Levels tell beforehand what smaller transforms are not worth the search.
        if (shape == Shape::Whole8x8) {
            work.sum = sum;
        } else if (work.sum > 0 && sum > work.sum) {
            work.tried &= ~ShapeBit(shape);
            return;
        }
        const AcCodes& codes = estimates_.Levels(false, n);
        const Scan& scan = PartScan(shape);
        const std::uint64_t changed = kernels_.differing(shaped.levels.data(), kNoLevels.data());
        const int count = PartCount(shape);
        for (int part = 0; part < count; ++part) {
            const int place = PartPlace(shape, part);
            const TransformBlock block{coefficients.data() + place, shaped.levels.data() + place,
                                       scan, scan.InOrder(changed >> place)};
            if (block.changed == 0) continue;
            const LevelCost cost = options_.rd ? ChooseLevels(block, quantiser_, codes)
                                               : CostOfLevels(block, quantiser_, codes);
            if (cost.any && cost.RdCost(quantiser_.lambda) < 0) {
                shaped.parts |= 1 << (count - 1 - part);
                shaped.bits += cost.bits;
                shaped.error += cost.change;
            } else if (cost.any) {
                for (const std::uint8_t at : scan.Places()) block.levels[at] = 0;
            }
        }
    }

    std::int64_t RdCost(const Shaped& shaped, int more_bits) const {
        return shaped.error + quantiser_.lambda * (shaped.bits + more_bits);
    }

    Plan BestPlan() const {
        if (picture_.header.shape) return Uniform(*picture_.header.shape);
        Plan best;
        const auto consider = [&](const Plan& plan) {
            if (plan.cost < best.cost) best = plan;
        };
        unsigned tried = 0;
        for (const BlockWork& work : work_) tried |= work.tried;
        for (int shape = 0; shape < kShapes; ++shape)
            if ((tried >> shape & 1U) != 0) consider(Uniform(static_cast<Shape>(shape)));
        if ((tried & (tried - 1)) != 0) consider(Mixed());
        return best;
    }

    // All blocks in transforms of one shape.
    Plan Uniform(Shape shape) const {
        Plan plan;
        plan.cost = 0;
        plan.shapes.fill(shape);
        TypeNames names(picture_.header.TransformClass(), picture_.header.shape.has_value(), false);
        for (int n = 0; n < kBlocks; ++n) {
            const BlockWork& work = work_[Index(n)];
            const Shaped& shaped = work.shaped[static_cast<std::size_t>(shape)];
            const bool possible =
                work.worth && (work.tried & ShapeBit(shape)) != 0 && shaped.parts != 0;
            int bits = 0;
            if (possible) {
                TypeNames then = names;
                const Code first =
                    plan.coded == kNone ? names.Macroblock(shape, shaped.parts) : Code();
                const TypeNames::Names own = then.Next(shape, shaped.parts);
                bits = first.length + own.type.length + own.parts.length;
                if (RdCost(shaped, bits) < work.silent) {
                    names = then;
                    Take(plan, n, shape, RdCost(shaped, bits), shaped.bits + bits);
                    continue;
                }
            }
            plan.cost += work.silent;
        }
        return Finished(plan);
    }

    // Each block in the shape that suits it.
    Plan Mixed() const {
        Plan plan;
        plan.cost = 0;
        plan.block_types = true;
        TypeNames names(picture_.header.TransformClass(), false, true);
        for (int n = 0; n < kBlocks; ++n) {
            const BlockWork& work = work_[Index(n)];
            std::int64_t best = work.silent;
            int best_bits = 0;
            int best_shape = -1;
            for (int s = 0; work.worth && s < kShapes; ++s) {
                const Shaped& shaped = work.shaped[Index(s)];
                if ((work.tried >> s & 1U) == 0 || shaped.parts == 0) continue;
                const auto shape = static_cast<Shape>(s);
                TypeNames then = names;
                const Code first =
                    plan.coded == kNone ? names.Macroblock(shape, shaped.parts) : Code();
                const TypeNames::Names own = then.Next(shape, shaped.parts);
                const int bits = first.length + own.type.length + own.parts.length;
                if (RdCost(shaped, bits) >= best) continue;
                best = RdCost(shaped, bits);
                best_bits = shaped.bits + bits;
                best_shape = s;
            }
            if (best_shape < 0) {
                plan.cost += work.silent;
                continue;
            }
            const auto shape = static_cast<Shape>(best_shape);
            names.Next(shape, work.shaped[Index(best_shape)].parts);
            Take(plan, n, shape, best, best_bits);
        }
        return Finished(plan);
    }

    static void Take(Plan& plan, int n, Shape shape, std::int64_t cost, int bits) {
        plan.coded[Index(n)] = true;
        plan.shapes[Index(n)] = shape;
        plan.cost += cost;
        plan.bits += bits;
    }

    Plan Finished(Plan plan) const {
        const int bits = PatternBits(plan.coded);
        plan.bits += bits;
        plan.cost += quantiser_.lambda * bits;
        return plan;
    }

    int PatternBits(const std::array<bool, kBlocks>& coded) const {
        std::size_t pattern = 0;
        for (const bool is : coded) pattern = pattern << 1 | (is ? 1 : 0);
        return pattern == 0 ? 0 : estimates_.pattern[pattern].length;
    }

    void Apply(const Plan& plan) {
        Macroblock& macroblock = candidate_.macroblock;
        macroblock.coded = 0;
        macroblock.block_types = plan.block_types;
        macroblock.parts = {};
        candidate_.error = 0;
        for (int n = 0; n < kBlocks; ++n) {
            const auto index = Index(n);
            const BlockWork& work = work_[index];
            if (!plan.coded[index]) {
                candidate_.error += work.silent;
                continue;
            }
            const Shape shape = plan.shapes[index];
            const Shaped& shaped = work.shaped[static_cast<std::size_t>(shape)];
            macroblock.SetCoded(n, true);
            macroblock.shapes[index] = shape;
            macroblock.parts[index] = static_cast<std::uint8_t>(shaped.parts);
            candidate_.levels[n] = shaped.levels;
            candidate_.error += shaped.error;
            Block restored;
            Block residual;
            kernels_.restore(restored.data(), shaped.levels.data(), quantiser_.step, 0);
            kernels_.inverse(shape, residual.data(), restored.data());
            kernels_.add(candidate_.samples.Block(n), kBlockPlaces[index].stride, residual.data());
        }
        if (macroblock.coded == 0) return;
        candidate_.bits += plan.bits;
    }

    static constexpr std::array<bool, kBlocks> kNone{};

    const Picture& picture_;
    const Kernels& kernels_;
    const Estimates& estimates_;
    const Quantiser& quantiser_;
    const ResidualOptions& options_;
    const int x_;
    const int y_;
    Candidate& candidate_;
    std::array<BlockWork, kBlocks> work_;
};

}  // namespace

bool CodeResidual(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
                  const ResidualOptions& options, int x, int y, Candidate& candidate) {
    return ResidualCoder(picture, estimates, quantiser, options, x, y, candidate).Run();
}

bool HasLevels(const Picture& picture, const Quantiser& quantiser, int x, int y,
               const Samples& prediction) {
    const Kernels& kernels = picture.kernels;
    for (int n = 0; n < kBlocks; ++n) {
        Block residual;
        const BlockDifference difference = kernels.subtract(
            residual.data(), SourceBlock(picture.source, x, y, n), Stride(picture.source, n),
            prediction.Block(n), kBlockPlaces[Index(n)].stride);
        if (difference.absolute < Limit(quantiser)) continue;
        Block coefficients;
        Block levels;
        kernels.forward(Shape::Whole8x8, coefficients.data(), residual.data());
        if (kernels.quantise(levels.data(), coefficients.data(), quantiser.reciprocal,
                             static_cast<int>(kChoiceRounding * quantiser.step * kEighths)) != 0)
            return true;
    }
    return false;
}

void LeaveResidual(const Picture& picture, int x, int y, Candidate& candidate) {
    candidate.macroblock.coded = 0;
    candidate.macroblock.block_types = false;
    candidate.macroblock.parts = {};
    candidate.error = 0;
    const auto add = [&](int n, int size) {
        candidate.error += ErrorOf(picture.kernels.squared(
            SourceBlock(picture.source, x, y, n), Stride(picture.source, n),
            candidate.samples.Block(n), kBlockPlaces[Index(n)].stride, size, size));
    };
    add(0, 16);
    add(4, 8);
    add(5, 8);
}

}  // namespace codecs::wmv9
