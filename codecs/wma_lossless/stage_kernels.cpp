#include "codecs/wma_lossless/stage_kernels.h"

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

// Finds out whether sums of 32 bits have come near to where they wrap.
class NarrowSums {
  public:
    std::uint32_t Take(std::uint32_t sum) {
        seen_ |= sum ^ (0U - (sum >> 31));
        return sum;
    }
    bool Safe() const { return seen_ < std::uint32_t{1} << 30; }

  private:
    std::uint32_t seen_ = 0;  // the bits beside the sign, gathered
};

// Finds out whether sums of 64 bits have passed 32.
class WideSums {
  public:
    std::uint32_t Take(std::int64_t sum) {
        safe_ = safe_ && sum == static_cast<std::int32_t>(sum);
        return static_cast<std::uint32_t>(sum);
    }
    bool Safe() const { return safe_; }

  private:
    bool safe_ = true;
};

#if CODECS_WMA_LOSSLESS_SIMD

namespace hn = hwy::HWY_NAMESPACE;

// Orders are multiples of as many lanes.
using Words = hn::CappedTag<std::int16_t, kOrderStep>;
using Sums = hn::RepartitionToWide<Words>;

struct Narrow {
    using Value = std::int16_t;

    NarrowSums seen;

    HWY_INLINE std::uint32_t Next(std::int16_t* weights, const std::int16_t* steps,
                                  const std::int16_t* signs, const Value* window, int order) {
        const Words words;
        const Sums sums;
        const auto lanes = static_cast<int>(hn::Lanes(words));
        auto even = hn::Zero(sums);
        auto odd = hn::Zero(sums);
        for (int i = 0; i < order; i += lanes) {
            const auto weight =
                hn::Add(hn::LoadU(words, weights + i),
                        hn::Mul(hn::LoadU(words, signs + i), hn::LoadU(words, steps + i)));
            hn::StoreU(weight, words, weights + i);
            even = hn::ReorderWidenMulAccumulate(sums, weight, hn::LoadU(words, window + i), even,
                                                 odd);
        }
        const auto sum =
            static_cast<std::uint32_t>(hn::GetLane(hn::SumOfLanes(sums, hn::Add(even, odd))));
        return seen.Take(sum);
    }
    bool Safe() const { return seen.Safe(); }
};

struct Wide {
    using Value = std::int32_t;

    WideSums seen;

    HWY_INLINE std::uint32_t Next(std::int16_t* weights, const std::int16_t* steps,
                                  const std::int16_t* signs, const Value* window, int order) {
        const hn::Half<Words> words;
        const Sums values;
        const hn::RepartitionToWide<Sums> sums;
        const auto lanes = static_cast<int>(hn::Lanes(words));
        auto even = hn::Zero(sums);
        auto odd = hn::Zero(sums);
        for (int i = 0; i < order; i += lanes) {
            const auto weight =
                hn::Add(hn::LoadU(words, weights + i),
                        hn::Mul(hn::LoadU(words, signs + i), hn::LoadU(words, steps + i)));
            hn::StoreU(weight, words, weights + i);
            const auto wide = hn::PromoteTo(values, weight);
            const auto value = hn::LoadU(values, window + i);
            even = hn::Add(even, hn::MulEven(wide, value));
            odd = hn::Add(odd, hn::MulEven(Upper(wide), Upper(value)));
        }
        return seen.Take(hn::GetLane(hn::SumOfLanes(sums, hn::Add(even, odd))));
    }
    bool Safe() const { return seen.Safe(); }

  private:
    // The odd lanes where the even ones were.
    static HWY_INLINE hn::Vec<Sums> Upper(hn::Vec<Sums> values) {
        const hn::RepartitionToWide<Sums> pairs;
        return hn::BitCast(Sums(), hn::ShiftRight<32>(hn::BitCast(pairs, values)));
    }
};

#else

template <typename Value, typename Sum, class Sums>
class Width {
  public:
    std::uint32_t Next(std::int16_t* weights, const std::int16_t* steps, const std::int16_t* signs,
                       const Value* window, int order) {
        Sum sum = 0;
        for (int i = 0; i < order; ++i) {
            weights[i] = static_cast<std::int16_t>(weights[i] + signs[i] * steps[i]);
            sum += static_cast<Sum>(weights[i]) * static_cast<Sum>(window[i]);
        }
        return seen_.Take(sum);
    }
    bool Safe() const { return seen_.Safe(); }

  private:
    Sums seen_;
};
using Narrow = Width<std::int16_t, std::uint32_t, NarrowSums>;
using Wide = Width<std::int32_t, std::int64_t, WideSums>;

#endif

// Next of a width moves the weights as the last error asks, and returns the sum that they then
// make of the next window.
template <class Width, class Run>
HWY_INLINE bool RunStage(const Run& run) {
    Width width;
    const std::uint32_t half = (std::uint32_t{1} << run.scaling) >> 1;
    const std::int16_t* const unmoved = run.steps + run.order;
    std::uint32_t sum =
        width.Next(run.weights, unmoved, run.signs + run.count, run.values + run.count, run.order);
    for (int i = 0; i < run.count; ++i) {
        const std::int32_t prediction = static_cast<std::int32_t>(sum + half) >> run.scaling;
        const auto error = static_cast<std::int32_t>(static_cast<std::uint32_t>(run.samples[i]) -
                                                     static_cast<std::uint32_t>(prediction));
        run.samples[i] = error;
        const int direction = (error > 0 ? 1 : 0) - (error < 0 ? 1 : 0);
        const int window = run.count - i;
        sum = width.Next(run.weights, unmoved + direction * run.order, run.signs + window,
                         run.values + window - 1, run.order);
    }
    return width.Safe();
}

bool RunNarrowStageWith(const StageRun<std::int16_t>& run) { return RunStage<Narrow>(run); }
bool RunWideStageWith(const StageRun<std::int32_t>& run) { return RunStage<Wide>(run); }

}  // namespace
}  // namespace codecs::wma_lossless::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace codecs::wma_lossless {
namespace {

HWY_EXPORT(RunNarrowStageWith);
HWY_EXPORT(RunWideStageWith);

}  // namespace

bool RunNarrowStage(const StageRun<std::int16_t>& run) {
    return HWY_DYNAMIC_DISPATCH(RunNarrowStageWith)(run);
}

bool RunWideStage(const StageRun<std::int32_t>& run) {
    return HWY_DYNAMIC_DISPATCH(RunWideStageWith)(run);
}

}  // namespace codecs::wma_lossless
#endif
