#include "codecs/screen/pixel_kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace codecs::screen::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::uint32_t kColourBits = 0xFFFFFF;

void CompareCellsWith(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                      std::ptrdiff_t b_stride, int width, int rows, std::uint8_t* changed) {
    const hn::CappedTag<std::uint32_t, kCell> pixels;
    const auto lanes = static_cast<int>(hn::Lanes(pixels));
    const auto colour = hn::Set(pixels, kColourBits);
    int x = 0;
    for (; x + kCell <= width; x += kCell) {
        auto differing = hn::Zero(pixels);
        for (int y = 0; y < rows; ++y)
            for (int i = 0; i < kCell; i += lanes)
                differing = hn::Or(differing, hn::Xor(hn::LoadU(pixels, a + y * a_stride + x + i),
                                                      hn::LoadU(pixels, b + y * b_stride + x + i)));
        const bool same = hn::AllTrue(pixels, hn::Eq(hn::And(differing, colour), hn::Zero(pixels)));
        *changed++ = same ? 0 : 1;
    }
    if (x == width) return;
    std::uint32_t differing = 0;
    for (int y = 0; y < rows; ++y)
        for (int i = x; i < width; ++i) differing |= a[y * a_stride + i] ^ b[y * b_stride + i];
    *changed = (differing & kColourBits) != 0 ? 1 : 0;
}

}  // namespace
}  // namespace codecs::screen::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace codecs::screen {
namespace {

HWY_EXPORT(CompareCellsWith);

}  // namespace

void CompareCells(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                  std::ptrdiff_t b_stride, int width, int rows, std::uint8_t* changed) {
    HWY_DYNAMIC_DISPATCH(CompareCellsWith)(a, a_stride, b, b_stride, width, rows, changed);
}

}  // namespace codecs::screen
#endif
