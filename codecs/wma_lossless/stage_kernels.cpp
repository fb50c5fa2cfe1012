#include "codecs/wma_lossless/stage_kernels.h"

#include <algorithm>
#include <array>
#include <bit>

#include "codecs/common/index.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stage_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

// Not for emulated vectors, than which plain loops are better, nor for those of a length that only
// the machine knows.
#undef CODECS_WMA_LOSSLESS_SIMD
#define CODECS_WMA_LOSSLESS_SIMD (HWY_TARGET < HWY_EMU128 && !HWY_HAVE_SCALABLE)

HWY_BEFORE_NAMESPACE();
namespace codecs::wma_lossless::HWY_NAMESPACE {
namespace {

// A block moves no weight by more.
constexpr int kMostMoved = 16 * kBlock;
constexpr std::int16_t kHighestWeight = 32767 - kMostMoved;

using Directions = std::array<std::int16_t, kBlock>;

// Narrow sums are looked at after they may have wrapped: what has come near will not have passed.
constexpr std::int64_t kHighestNarrowSum = std::int64_t{1} << 30;
constexpr std::int64_t kHighestWideSum = std::int64_t{1} << 31;

#if CODECS_WMA_LOSSLESS_SIMD

namespace hn = hwy::HWY_NAMESPACE;

// Pairs of neighbours added up: those of `low` below those of `high`.
template <class D>
HWY_INLINE hn::Vec<D> Folded(D lanes, hn::Vec<D> low, hn::Vec<D> high) {
    return hn::Add(hn::ConcatEven(lanes, high, low), hn::ConcatOdd(lanes, high, low));
}

// Weights of which both widths move as many at a time as `Words` has lanes.
template <class WordLanes>
struct Weights {
    using Words = WordLanes;

    hn::Vec<Words> directions[kBlock];
    hn::Vec<Words> highest;
    hn::Vec<Words> lowest;

    HWY_INLINE void Begin(const Directions& by) {
        highest = lowest = hn::Zero(Words());
        for (int n = 0; n < kBlock; ++n) directions[n] = hn::Set(Words(), by[n]);
    }
    // Moves them as the errors of a block ask whose first window of signs this is.
    HWY_INLINE hn::Vec<Words> Move(std::int16_t* weights, const std::int16_t* steps,
                                   const std::int16_t* signs) {
        const Words words;
        auto sum = hn::Mul(hn::LoadU(words, signs), directions[0]);
        for (int n = 1; n < kBlock; ++n)
            sum = hn::Add(sum, hn::Mul(hn::LoadU(words, signs - n), directions[n]));
        const auto moved =
            hn::Add(hn::LoadU(words, weights), hn::Mul(sum, hn::LoadU(words, steps)));
        hn::StoreU(moved, words, weights);
        highest = hn::Max(highest, moved);
        lowest = hn::Min(lowest, moved);
        return moved;
    }
    HWY_INLINE bool Safe() const {
        const Words words;
        const auto safe = hn::And(hn::Lt(highest, hn::Set(words, kHighestWeight)),
                                  hn::Gt(lowest, hn::Set(words, -kHighestWeight)));
        return hn::AllTrue(words, safe);
    }
};

// The sums of a block's products of weights and values, of 16 bits ...
template <int kMostLanes>
struct NarrowSums {
    using Words = hn::CappedTag<std::int16_t, kMostLanes>;
    using Sums = hn::RepartitionToWide<Words>;

    hn::Vec<Sums> total[kBlock];
    hn::Vec<Sums> rest[kBlock];

    HWY_INLINE void Begin() {
        for (int n = 0; n < kBlock; ++n) total[n] = rest[n] = hn::Zero(Sums());
    }
    HWY_INLINE void Add(hn::Vec<Words> weights, const std::int16_t* values) {
        for (int n = 0; n < kBlock; ++n)
            total[n] = hn::ReorderWidenMulAccumulate(
                Sums(), weights, hn::LoadU(Words(), values - n), total[n], rest[n]);
    }
    HWY_INLINE void Get(std::int64_t* sums) {
        const Sums wide;
        for (int n = 0; n < kBlock; ++n) total[n] = hn::Add(total[n], rest[n]);
        auto all = Folded(wide, Folded(wide, total[0], total[1]), Folded(wide, total[2], total[3]));
        for (auto lanes = hn::MaxLanes(Sums()); lanes > kBlock; lanes /= 2)
            all = Folded(wide, all, all);
        HWY_ALIGN std::array<std::int32_t, hn::MaxLanes(Sums())> lanes;
        hn::Store(all, wide, lanes.data());
        for (int n = 0; n < kBlock; ++n) sums[n] = lanes[Index(n)];
    }
};

// ... and of 32.
struct WideSums {
    using Words = hn::Half<hn::CappedTag<std::int16_t, kOrderStep>>;
    using Values = hn::RepartitionToWide<hn::Twice<Words>>;
    using Sums = hn::RepartitionToWide<Values>;

    hn::Vec<Sums> total[kBlock];

    HWY_INLINE void Begin() {
        for (int n = 0; n < kBlock; ++n) total[n] = hn::Zero(Sums());
    }
    HWY_INLINE void Add(hn::Vec<Words> words, const std::int32_t* values) {
        const Values wide;
        const auto weights = hn::PromoteTo(wide, words);
        for (int n = 0; n < kBlock; ++n) {
            const auto value = hn::LoadU(wide, values - n);
            total[n] = hn::Add(total[n], hn::Add(hn::MulEven(weights, value),
                                                 hn::MulEven(Upper(weights), Upper(value))));
        }
    }
    HWY_INLINE void Get(std::int64_t* sums) {
        for (int n = 0; n < kBlock; ++n) sums[n] = hn::GetLane(hn::SumOfLanes(Sums(), total[n]));
    }

    // The odd lanes where the even ones were.
    static HWY_INLINE hn::Vec<Values> Upper(hn::Vec<Values> values) {
        return hn::BitCast(Values(), hn::ShiftRight<32>(hn::BitCast(Sums(), values)));
    }
};

template <class BlockSums>
struct Vectors {
    using Words = typename BlockSums::Words;

    Weights<Words> weights_now;

    template <class Run>
    HWY_INLINE void Next(const Run& run, int window, const Directions& directions,
                         std::int64_t* sums) {
        weights_now.Begin(directions);
        BlockSums block;
        block.Begin();
        const std::int16_t* const signs = run.signs + window + kBlock;
        const auto* const values = run.values + window;
        for (int i = 0; i < run.order; i += static_cast<int>(hn::Lanes(Words())))
            block.Add(weights_now.Move(run.weights + i, run.steps + i, signs + i), values + i);
        block.Get(sums);
    }
};
template <int kMostLanes>
using Narrow = Vectors<NarrowSums<kMostLanes>>;
using Wide = Vectors<WideSums>;

#else

struct Weights {
    int highest = 0;
    int lowest = 0;

    bool Safe() const { return highest < kHighestWeight && lowest > -kHighestWeight; }
};

template <class Run>
struct Plain {
    Weights weights_now;

    void Next(const Run& run, int window, const Directions& directions, std::int64_t* sums) {
        std::fill_n(sums, kBlock, 0);
        weights_now = {};
        for (int i = 0; i < run.order; ++i) {
            int moved = 0;
            for (int n = 0; n < kBlock; ++n)
                moved += run.signs[window + kBlock + i - n] * directions[Index(n)];
            const int weight = run.weights[i] + moved * run.steps[i];
            run.weights[i] = static_cast<std::int16_t>(weight);
            weights_now.highest = std::max(weights_now.highest, weight);
            weights_now.lowest = std::min(weights_now.lowest, weight);
            for (int n = 0; n < kBlock; ++n)
                sums[n] += std::int64_t{weight} * run.values[window + i - n];
        }
    }
};
template <int>
using Narrow = Plain<NarrowStageRun>;
using Wide = Plain<WideStageRun>;

#endif

// What an error of 1 at the window that begins at place p adds to the sum of the sample that is
// `lag` later: at [p] of the lag's part of the memory. The steps have three sizes, so differences
// of running sums are enough.
template <typename Value, typename Sum>
HWY_INLINE void FindMoved(const StageRun<Value, Sum>& run) {
    const int places = run.count + run.order;
    const int newest = run.order / 16;
    const int newer = run.order / 8;
    const int order = run.order;
    const int count = run.count;
    // Steps are powers of two.
    const auto shift = [&](int place) {
        return std::countr_zero(static_cast<unsigned>(run.steps[place]));
    };
    const int shifts[] = {shift(0), shift(newest), shift(newer)};
    const auto moved_by = [&](int lag) {
        return run.moved + (lag - 1) * MovedPlaces(count, order);
    };
    std::array<Sum, kBlock> running = {};
    for (int lag = 1; lag < kBlock; ++lag) moved_by(lag)[places] = 0;
    for (int p = places - 1; p > 1; --p)
        for (int lag = 1; lag < kBlock; ++lag)
            moved_by(lag)[p] = running[Index(lag)] += run.signs[p] * run.values[p - lag];
    for (int lag = 1; lag < kBlock; ++lag) {
        Sum* const moved = moved_by(lag);
        int p = lag + 1;
#if CODECS_WMA_LOSSLESS_SIMD
        // Also writes behind the last place, which nothing needs any more.
        const hn::CappedTag<Sum, kOrderStep / 2> sums;
        for (; p <= count; p += static_cast<int>(hn::Lanes(sums))) {
            const auto at_newer = hn::LoadU(sums, moved + p + newest);
            const auto at_oldest = hn::LoadU(sums, moved + p + newer);
            const auto of_newest = hn::Sub(hn::LoadU(sums, moved + p), at_newer);
            const auto of_oldest = hn::Sub(at_oldest, hn::LoadU(sums, moved + p + order));
            hn::StoreU(hn::Add(hn::ShiftLeftSame(of_newest, shifts[0]),
                               hn::Add(hn::ShiftLeftSame(hn::Sub(at_newer, at_oldest), shifts[1]),
                                       hn::ShiftLeftSame(of_oldest, shifts[2]))),
                       sums, moved + p);
        }
#endif
        for (; p <= count; ++p)
            moved[p] = (moved[p] - moved[p + newest]) * (1 << shifts[0]) +
                       (moved[p + newest] - moved[p + newer]) * (1 << shifts[1]) +
                       (moved[p + newer] - moved[p + order]) * (1 << shifts[2]);
    }
}

// For blocks in which a weight may wrap, as it does in decoders.
template <class Run>
HWY_INLINE std::int64_t WeightedSum(const Run& run, int window) {
    std::int64_t sum = 0;
    for (int i = 0; i < run.order; ++i)
        sum += std::int64_t{run.weights[i]} * run.values[window + i];
    return sum;
}
template <class Run>
HWY_INLINE void MoveAtOnce(const Run& run, int window, int direction) {
    for (int i = 0; i < run.order; ++i)
        run.weights[i] = static_cast<std::int16_t>(
            run.weights[i] + direction * run.signs[window + i] * run.steps[i]);
}

template <class Width, class Run>
HWY_INLINE bool RunStage(const Run& run, std::int64_t highest_safe) {
    FindMoved(run);
    const int moved_size = MovedPlaces(run.count, run.order);
    const std::int64_t half = (std::int64_t{1} << run.scaling) >> 1;
    const int scaling = run.scaling;
    std::int32_t* sample = run.samples;
    Width width;
    Directions directions = {};
    std::int64_t sums[kBlock];
    std::int64_t highest = 0;  // of the sums, without their signs
    for (int window = run.count; window > 0; window -= kBlock) {
        width.Next(run, window, directions, sums);
        const bool safe = width.weights_now.Safe();
        const auto* const moved = run.moved + window;
        for (int n = 0; n < kBlock; ++n, ++sample) {
            std::int64_t sum = sums[n];
            if (safe)
                for (int earlier = 0; earlier < n; ++earlier)
                    sum += directions[Index(earlier)] *
                           moved[(n - earlier - 1) * moved_size - earlier];
            else
                sum = WeightedSum(run, window - n);
            sum += half;
            highest |= sum ^ (sum >> 63);
            const std::int32_t error = *sample - (static_cast<std::int32_t>(sum) >> scaling);
            *sample = error;
            const auto direction =
                static_cast<std::int16_t>((error > 0 ? 1 : 0) - (error < 0 ? 1 : 0));
            directions[Index(n)] = direction;
            if (!safe) MoveAtOnce(run, window - n, direction);
        }
        if (!safe) directions = {};
    }
    width.Next(run, 0, directions, sums);
    return highest < highest_safe;
}

bool RunNarrowStageWith(const NarrowStageRun& run) {
#if CODECS_WMA_LOSSLESS_SIMD
    // Longer vectors where they are filled.
    constexpr int kLong = 2 * kOrderStep;
    if constexpr (hn::MaxLanes(hn::CappedTag<std::int16_t, kLong>()) > kOrderStep)
        if (run.order % kLong == 0) return RunStage<Narrow<kLong>>(run, kHighestNarrowSum);
#endif
    return RunStage<Narrow<kOrderStep>>(run, kHighestNarrowSum);
}
bool RunWideStageWith(const WideStageRun& run) { return RunStage<Wide>(run, kHighestWideSum); }

}  // namespace
}  // namespace codecs::wma_lossless::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace codecs::wma_lossless {
namespace {

HWY_EXPORT(RunNarrowStageWith);
HWY_EXPORT(RunWideStageWith);

}  // namespace

bool RunNarrowStage(const NarrowStageRun& run) {
    return HWY_DYNAMIC_DISPATCH(RunNarrowStageWith)(run);
}

bool RunWideStage(const WideStageRun& run) { return HWY_DYNAMIC_DISPATCH(RunWideStageWith)(run); }

}  // namespace codecs::wma_lossless
#endif
