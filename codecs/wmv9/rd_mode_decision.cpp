#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "codecs/common/index.h"
#include "codecs/wmv9/intra.h"
#include "codecs/wmv9/likely_motion.h"
#include "codecs/wmv9/mode_decision.h"
#include "codecs/wmv9/motion_search.h"
#include "codecs/wmv9/prediction.h"
#include "codecs/wmv9/residual.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLuma = 16;
// Bits that an intra macroblock takes at least. Chosen by hand on the clips of bench/quality.
constexpr std::uint32_t kIntraBits = 24;
// Of what the best other vectors cost: direct vectors are coded, and nothing else is.
constexpr double kDirectAtMost = 1.25;
constexpr double kDirectAlone = 0.9;
// Where direct vectors leave no levels, they are good enough up to an error that so many bits are
// worth: nothing refers to a B picture.
constexpr int kSilentBits = 80;
// Where a skipped macroblock's error is worth fewer, its vector is likely the best one.
constexpr int kLikelyBits = 24;

// What a bit is worth where levels are rounded alone: more, so that lone ones are left out.
constexpr double kBitWorthOfRounded = 0.26;

MotionVector VectorOf(Displacement move) {
    const auto quarters = [](int samples) {
        using Limits = std::numeric_limits<std::int16_t>;
        return static_cast<std::int16_t>(
            std::clamp(4 * samples, int{Limits::min()}, int{Limits::max()}));
    };
    return {quarters(move.x), quarters(move.y)};
}

// Vectors worth a look, each once.
class Starts {
  public:
    void Add(MotionVector v) {
        const auto end = vectors_.begin() + static_cast<std::ptrdiff_t>(count_);
        if (count_ < vectors_.size() && std::find(vectors_.begin(), end, v) == end)
            vectors_[count_++] = v;
    }
    std::span<const MotionVector> All() const { return {vectors_.data(), count_}; }

  private:
    std::array<MotionVector, 8> vectors_{};
    std::size_t count_ = 0;
};

class MacroblockDecision {
  public:
    MacroblockDecision(const Picture& picture, const Estimates& estimates, const Preset& preset,
                       const Quantiser& quantiser, int x, int y, Candidate& best)
        : picture_(picture),
          estimates_(estimates),
          preset_(preset),
          quantiser_(quantiser),
          x_(x),
          y_(y),
          best_(&best),
          out_(best) {
        residual_.shapes = preset.shapes;
        residual_.rd = preset.rd;
        residual_.try_from_bits = preset.try_from_bits;
    }

    void IPicture() {
        CodeIntra(picture_, estimates_, quantiser_, {AcPrediction::Choose, preset_.rd_intra}, x_,
                  y_, *best_);
    }

    void PPicture() {
        const VectorPrediction prediction = PredictVector(picture_, x_, y_);
        if (TrySkipped(prediction)) return;
        const bool tried = HasBest() && IsLikely(prediction);
        if (tried) {
            TryOne(prediction, prediction.median);
            if (best_->macroblock.skipped) return Finish();
        }
        const SearchBlock block{kLuma * x_, kLuma * y_, kLuma};
        Starts starts;
        AddNeighbours(starts, [](const Macroblock& m) { return m.vectors[3]; });
        if (picture_.anchor != nullptr) starts.Add(picture_.anchor->At(x_, y_).vectors[0]);
        AddLikely(starts, &LikelyMotion::InPast, 1);
        const MotionSearch search(picture_, *picture_.past, estimates_, quantiser_, preset_);
        const FoundVector one = search.Search(block, Nearest(prediction), starts.All());
        if (!tried || !(one.vector == prediction.median)) TryOne(prediction, one.vector);
        // Where one vector leaves nothing to code, four seldom gain.
        if (picture_.header.mode == VectorMode::Mixed && best_->macroblock.coded != 0)
            TryFourMv(search, one);
        TryIntra(one.cost);
        Finish();
    }

    void BPicture() {
        direct_ = DeriveDirect(picture_, x_, y_);
        forward_ = PredictForward(picture_, x_, y_);
        backward_ = PredictBackward(picture_, x_, y_);
        if (LeaveDirect()) return;
        const std::uint32_t direct = DifferenceTo(best_->samples.values.data(), kLuma);
        const SearchBlock block{kLuma * x_, kLuma * y_, kLuma};
        const MotionSearch past(picture_, *picture_.past, estimates_, quantiser_, preset_);
        const MotionSearch future(picture_, *picture_.future, estimates_, quantiser_, preset_);
        Starts to_past;
        to_past.Add(direct_.forward);
        AddNeighbours(to_past, [](const Macroblock& m) { return m.vectors[0]; });
        AddLikely(to_past, &LikelyMotion::InPast, 1);
        Starts to_future;
        to_future.Add(direct_.backward);
        AddNeighbours(to_future, [](const Macroblock& m) { return m.backward; });
        AddLikely(to_future, &LikelyMotion::FromFuture, -1);
        const FoundVector f = past.Search(block, forward_, to_past.All());
        const FoundVector b = future.Search(block, backward_, to_future.All());
        const std::uint32_t both = BothCost(f, b);
        const std::uint32_t single = std::min(f.cost, b.cost);
        const std::uint32_t moved = std::min(single, both);
        if (direct <= kDirectAtMost * moved) CodeDirect();
        if (direct <= kDirectAlone * moved) return Finish();
        if (both >= single)
            TryMoved(f.cost <= b.cost ? Direction::Forward : Direction::Backward, f.vector,
                     b.vector);
        if (preset_.thorough_b || both < single) TryMoved(Direction::Both, f.vector, b.vector);
        TryIntra(moved);
        Finish();
    }

  private:
    // A vector that the search may count from.
    static MotionVector Nearest(const VectorPrediction& prediction) {
        return prediction.is_hybrid ? prediction.left : prediction.median;
    }

    template <typename VectorOf>
    void AddNeighbours(Starts& starts, VectorOf&& vector_of) const {
        starts.Add({});
        if (x_ > 0) starts.Add(vector_of(picture_.grid.At(x_ - 1, y_)));
        if (y_ == 0) return;
        starts.Add(vector_of(picture_.grid.At(x_, y_ - 1)));
        if (x_ + 1 < picture_.Width()) starts.Add(vector_of(picture_.grid.At(x_ + 1, y_ - 1)));
    }

    using LikelyMove = std::optional<Displacement> (LikelyMotion::*)(int, int) const;
    void AddLikely(Starts& starts, LikelyMove likely_move, int sign) const {
        if (picture_.likely == nullptr) return;
        if (const std::optional<Displacement> move = (picture_.likely->*likely_move)(x_, y_))
            starts.Add(VectorOf({sign * move->x, sign * move->y}));
    }

    Candidate& Spare() { return best_ == &out_ ? spare_ : out_; }
    bool HasBest() const { return best_cost_ < kNoLimit; }

    void Consider(Candidate& candidate) {
        const std::int64_t cost = candidate.RdCost(quantiser_.lambda);
        if (cost >= best_cost_) return;
        best_cost_ = cost;
        best_ = &candidate;
    }

    Candidate& Begin() {
        Candidate& candidate = HasBest() ? Spare() : *best_;
        candidate.macroblock = {};
        candidate.macroblock.quantiser = static_cast<std::uint8_t>(quantiser_.number);
        candidate.bits = 0;
        return candidate;
    }

    // False where it already costs as much as the best one.
    bool Code(Candidate& candidate) {
        residual_.limit = best_cost_;
        return CodeResidual(picture_, estimates_, quantiser_, residual_, x_, y_, candidate);
    }

    // Of the source's luma.
    std::uint32_t DifferenceTo(const std::uint8_t* samples, std::ptrdiff_t stride) const {
        const Kernels& kernels = picture_.kernels;
        const Plane& plane = picture_.source[0];
        return (preset_.hadamard ? kernels.hadamard : kernels.sad)(
            plane.At(kLuma * x_, kLuma * y_), plane.stride, samples, stride, kLuma, kLuma);
    }

    // True when nothing is left to code, so that nothing better needs to be looked for.
    bool TrySkipped(const VectorPrediction& prediction) {
        const MotionVector median[] = {prediction.median};
        const MotionVector hybrid[] = {prediction.left, prediction.above};
        const VectorWindow window = WindowOf(picture_, kLuma * x_, kLuma * y_);
        for (const MotionVector vector :
             prediction.is_hybrid ? std::span<const MotionVector>(hybrid) : median) {
            if (!window.Holds(vector)) continue;
            Candidate& candidate = Begin();
            SetVector(candidate.macroblock, vector, prediction, picture_.header);
            candidate.macroblock.skipped = true;
            Predict(picture_, x_, y_, candidate.macroblock, candidate.samples);
            LeaveResidual(picture_, x_, y_, candidate);
            candidate.bits = 1 + (prediction.is_hybrid ? 1 : 0);
            Consider(candidate);
            if (IsGoodEnough(candidate)) {
                best_ = &candidate;
                Finish();
                return true;
            }
        }
        return false;
    }

    // Whether a search would hardly find anything better than the predicted vector, which has
    // little error or is what all around it have.
    bool IsLikely(const VectorPrediction& prediction) const {
        if (prediction.is_hybrid) return false;
        if (best_->error < quantiser_.lambda * kLikelyBits) return true;
        const auto agrees = [&](const Macroblock& macroblock) {
            return !macroblock.intra && macroblock.vectors[3] == prediction.median;
        };
        const MacroblockGrid& grid = picture_.grid;
        return (x_ == 0 || agrees(grid.At(x_ - 1, y_))) &&
               (y_ == 0 || agrees(grid.At(x_, y_ - 1))) &&
               (y_ == 0 || x_ + 1 == picture_.Width() || agrees(grid.At(x_ + 1, y_ - 1))) &&
               (picture_.anchor == nullptr || agrees(picture_.anchor->At(x_, y_)));
    }

    bool IsGoodEnough(const Candidate& skipped) const {
        return skipped.error < quantiser_.lambda * preset_.skip_bits;
    }

    bool IsSilent(const Candidate& direct) const {
        return direct.error < quantiser_.lambda * kSilentBits &&
               !HasLevels(picture_, quantiser_, x_, y_, direct.samples);
    }

    void TryOne(const VectorPrediction& prediction, MotionVector vector) {
        Candidate& candidate = Begin();
        SetVector(candidate.macroblock, vector, prediction, picture_.header);
        Predict(picture_, x_, y_, candidate.macroblock, candidate.samples);
        if (!Code(candidate)) return;
        const Macroblock& macroblock = candidate.macroblock;
        candidate.bits +=
            1 + (prediction.is_hybrid ? 1 : 0) +
            VectorBits(macroblock.differences[0], macroblock.coded != 0, picture_.header);
        candidate.macroblock.skipped =
            macroblock.coded == 0 && macroblock.differences[0] == MotionVector();
        Consider(candidate);
    }

    void TryFourMv(const MotionSearch& search, const FoundVector& one) {
        Candidate& candidate = Begin();
        Macroblock& macroblock = candidate.macroblock;
        macroblock.four_mv = true;
        macroblock.vectors.fill(one.vector);
        std::uint32_t cost = 0;
        int hybrids = 0;
        bool differ = false;
        for (int n = 0; n < 4; ++n) {
            const auto index = Index(n);
            const SearchBlock block{kLuma * x_ + 8 * (n & 1), kLuma * y_ + 8 * (n >> 1), 8};
            const VectorPrediction prediction = PredictBlockVector(picture_, x_, y_, n, macroblock);
            const MotionVector starts[] = {one.vector};
            const FoundVector found = search.Search(block, Nearest(prediction), starts);
            cost += found.cost;
            if (cost > one.cost + one.cost / 16) return;
            macroblock.vectors[index] = found.vector;
            macroblock.hybrid[index] = ChooseHybrid(prediction, found.vector);
            macroblock.differences[index] =
                Difference(found.vector, prediction.For(macroblock.hybrid[index]),
                           picture_.header.vector_range);
            hybrids += prediction.is_hybrid ? 1 : 0;
            differ = differ || !(found.vector == macroblock.vectors[0]);
        }
        if (!differ || !ChromaFits(picture_, x_, y_, macroblock)) return;
        Predict(picture_, x_, y_, macroblock, candidate.samples);
        candidate.bits = 1 + hybrids;
        if (!Code(candidate)) return;
        int pattern = macroblock.coded;
        for (int n = 0; n < 4; ++n) {
            const MotionVector difference = macroblock.differences[Index(n)];
            candidate.bits += VectorBits(difference, macroblock.IsCoded(n), picture_.header);
            if (!(difference == MotionVector())) pattern |= 1 << (5 - n);
        }
        macroblock.skipped = pattern == 0;
        if (pattern != 0) candidate.bits += estimates_.pattern[Index(pattern)].length;
        Consider(candidate);
    }

    Hybrid ChooseHybrid(const VectorPrediction& prediction, MotionVector vector) const {
        if (!prediction.is_hybrid) return Hybrid::None;
        const auto bits = [&](MotionVector predictor) {
            return estimates_.vectors.Of(
                Difference(vector, predictor, picture_.header.vector_range));
        };
        return bits(prediction.above) < bits(prediction.left) ? Hybrid::Above : Hybrid::Left;
    }

    // Only where the prediction from other pictures is poor beside the macroblock's own detail.
    void TryIntra(std::uint32_t inter_cost) {
        const std::uint32_t least = quantiser_.search_lambda * kIntraBits >> 4;
        const std::uint32_t limit =
            preset_.intra_candidate ? inter_cost + inter_cost / 4 : inter_cost;
        if (least > limit) return;
        std::uint32_t sum = 0;
        std::uint32_t squares = 0;
        const Plane& plane = picture_.source[0];
        picture_.kernels.moments(plane.At(kLuma * x_, kLuma * y_), plane.stride, sum, squares);
        alignas(64) std::uint8_t mean[kLuma];
        std::fill(std::begin(mean), std::end(mean), static_cast<std::uint8_t>((sum + 128) >> 8));
        if (DifferenceTo(mean, 0) + least > limit) return;
        Candidate& candidate = Begin();
        const IntraOptions options{AcPrediction::Choose, preset_.rd_intra, best_cost_};
        if (!CodeIntra(picture_, estimates_, quantiser_, options, x_, y_, candidate)) return;
        ++candidate.bits;
        Consider(candidate);
    }

    bool LeaveDirect() {
        Candidate& candidate = Begin();
        Macroblock& macroblock = candidate.macroblock;
        macroblock.direction = Direction::Direct;
        macroblock.vectors[0] = direct_.forward;
        macroblock.backward = direct_.backward;
        macroblock.skipped = true;
        Predict(picture_, x_, y_, macroblock, candidate.samples);
        LeaveResidual(picture_, x_, y_, candidate);
        if (IsGoodEnough(candidate) || (!preset_.thorough_b && IsSilent(candidate))) {
            best_ = &candidate;
            Finish();
            return true;
        }
        candidate.bits = 2;
        Consider(candidate);
        return false;
    }

    // After it was left as it is predicted.
    void CodeDirect() {
        const Samples& prediction = best_->samples;
        Candidate& candidate = Begin();
        Macroblock& macroblock = candidate.macroblock;
        macroblock.direction = Direction::Direct;
        macroblock.vectors[0] = direct_.forward;
        macroblock.backward = direct_.backward;
        candidate.samples = prediction;
        if (!Code(candidate)) return;
        macroblock.skipped = macroblock.coded == 0;
        candidate.bits += 2;
        Consider(candidate);
    }

    std::uint32_t BothCost(const FoundVector& f, const FoundVector& b) const {
        alignas(64) std::uint8_t one[kLuma * kLuma];
        alignas(64) std::uint8_t other[kLuma * kLuma];
        PredictLuma(picture_, *picture_.past, f.vector, kLuma * x_, kLuma * y_, kLuma, one, kLuma);
        PredictLuma(picture_, *picture_.future, b.vector, kLuma * x_, kLuma * y_, kLuma, other,
                    kLuma);
        const Kernels& kernels = picture_.kernels;
        kernels.average(one, kLuma, one, kLuma, other, kLuma, kLuma, kLuma);
        return DifferenceTo(one, kLuma) + (f.cost - f.difference) + (b.cost - b.difference);
    }

    void TryMoved(Direction direction, MotionVector forward, MotionVector backward) {
        Candidate& candidate = Begin();
        Macroblock& macroblock = candidate.macroblock;
        const PictureHeader& header = picture_.header;
        macroblock.direction = direction;
        const bool uses_past = direction != Direction::Backward;
        const bool uses_future = direction != Direction::Forward;
        macroblock.vectors[0] = uses_past ? forward : direct_.forward;
        macroblock.backward = uses_future ? backward : direct_.backward;
        if (uses_past)
            macroblock.differences[0] = Difference(forward, forward_, header.vector_range);
        if (uses_future)
            macroblock.backward_difference = Difference(backward, backward_, header.vector_range);
        Predict(picture_, x_, y_, macroblock, candidate.samples);
        if (!Code(candidate)) return;
        const bool coded = macroblock.coded != 0;
        constexpr int kDirectionBits = 2;
        candidate.bits += 2 + kDirectionBits;
        if (direction == Direction::Both) {
            const bool second = coded || !(macroblock.differences[0] == MotionVector());
            candidate.bits += VectorBits(macroblock.backward_difference, second, header) +
                              (second ? VectorBits(macroblock.differences[0], coded, header) : 0);
        } else {
            candidate.bits +=
                VectorBits(uses_past ? macroblock.differences[0] : macroblock.backward_difference,
                           coded, header);
        }
        macroblock.skipped = !coded && macroblock.differences[0] == MotionVector() &&
                             macroblock.backward_difference == MotionVector();
        Consider(candidate);
    }

    void Finish() {
        if (best_ != &out_) out_.Take(*best_);
    }

    const Picture& picture_;
    const Estimates& estimates_;
    const Preset& preset_;
    const Quantiser& quantiser_;
    const int x_;
    const int y_;
    ResidualOptions residual_;
    DirectVectors direct_;  // of a B picture
    MotionVector forward_;  // predictors in one
    MotionVector backward_;
    Candidate spare_;
    Candidate* best_;
    Candidate& out_;
    std::int64_t best_cost_ = kNoLimit;
};

}  // namespace

void SetVector(Macroblock& macroblock, MotionVector vector, const VectorPrediction& prediction,
               const PictureHeader& header) {
    macroblock.vectors.fill(vector);
    macroblock.hybrid[0] = Hybrid::None;
    if (prediction.is_hybrid) {
        const auto length = [&](MotionVector predictor) {
            const MotionVector d = Difference(vector, predictor, header.vector_range);
            return VectorBits(d, true, header);
        };
        const bool above =
            vector == prediction.above ||
            (!(vector == prediction.left) && length(prediction.above) < length(prediction.left));
        macroblock.hybrid[0] = above ? Hybrid::Above : Hybrid::Left;
    }
    macroblock.differences[0] =
        Difference(vector, prediction.For(macroblock.hybrid[0]), header.vector_range);
}

RdModeDecision::RdModeDecision(const Preset& preset) : preset_(preset) {
    const double bit_worth = preset.rd ? kBitWorth : kBitWorthOfRounded;
    for (int number = 1; number <= kCoarsestAsked; ++number)
        for (int half = 0; half < 2; ++half)
            quantisers_[Index(number)][Index(half)] =
                number <= kCoarsest ? Quantiser::Make(number, 2 * number + half, bit_worth)
                                    : Quantiser::Beyond(number, bit_worth);
}

void RdModeDecision::Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                            Candidate& out) const {
    const PictureHeader& header = picture.header;
    const int number =
        header.varying ? picture.quantisers->At(x, y) : std::max(header.quantiser, picture.beyond);
    const Quantiser& quantiser = quantisers_[Index(number)][Index(header.Step(number) & 1)];
    MacroblockDecision decision(picture, estimates, preset_, quantiser, x, y, out);
    switch (picture.header.kind) {
        case PictureKind::kI:
            return decision.IPicture();
        case PictureKind::kP:
            return decision.PPicture();
        case PictureKind::kB:
            return decision.BPicture();
    }
}

}  // namespace codecs::wmv9
