#include "codecs/wmv9/kernels.h"

#include <vector>

#include "codecs/wmv9/kernels_plain.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {

// Each in a file of its own.
void SetDifferences(Kernels& kernels);
void SetPrediction(Kernels& kernels);
void SetTemporal(Kernels& kernels);
void SetTransforms(Kernels& kernels);
void SetQuantiser(Kernels& kernels);
void SetFilter(Kernels& kernels);

Kernels SimdKernels() {
    Kernels kernels = {};
    kernels.name = hwy::TargetName(HWY_TARGET);
    SetDifferences(kernels);
    SetPrediction(kernels);
    SetTemporal(kernels);
    SetTransforms(kernels);
    SetQuantiser(kernels);
    SetFilter(kernels);
    return kernels;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if HWY_ONCE
namespace codecs::wmv9 {
namespace {

struct SimdTarget {
    std::int64_t target;
    Kernels (*make)();
};

// From the slowest on; null for those that the compiler does not have.
constexpr SimdTarget kSimdTargets[] = {
    {HWY_NEON, HWY_CHOOSE_NEON(SimdKernels)}, {HWY_SSSE3, HWY_CHOOSE_SSSE3(SimdKernels)},
    {HWY_SSE4, HWY_CHOOSE_SSE4(SimdKernels)}, {HWY_AVX2, HWY_CHOOSE_AVX2(SimdKernels)},
    {HWY_AVX3, HWY_CHOOSE_AVX3(SimdKernels)},
};

std::vector<Kernels> SupportedKernels() {
    std::vector<Kernels> kernels = {PlainKernels()};
    for (const SimdTarget& target : kSimdTargets)
        if (target.make != nullptr && (hwy::SupportedTargets() & target.target) != 0)
            kernels.push_back(target.make());
    return kernels;
}

}  // namespace

std::span<const Kernels> AllKernels() {
    static const std::vector<Kernels> kernels = SupportedKernels();
    return kernels;
}

const Kernels& BestKernels() { return AllKernels().back(); }

}  // namespace codecs::wmv9
#endif
