#include "codecs/wmv9/kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_prediction.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

template <class D>
HWY_INLINE void CopyRows(D row, std::uint8_t* out, std::ptrdiff_t out_stride,
                         const std::uint8_t* source, std::ptrdiff_t stride, int height) {
    for (int y = 0; y < height; ++y, source += stride, out += out_stride)
        hn::StoreU(hn::LoadU(row, source), row, out);
}

// ---- Bicubic

// A place between two whole ones: samples from the fourth before the block's corner on.
struct Block {
    std::uint8_t* out;
    std::ptrdiff_t out_stride;
    const std::uint8_t* source;
    std::ptrdiff_t stride;
    int width;
    int height;
    int rounding;
};

// Of a cubic between the two values in the middle; not yet scaled, and modulo 65536.
template <int kQuarter, class D>
HWY_INLINE hn::Vec<D> Cubic(D words, hn::Vec<D> before, hn::Vec<D> left, hn::Vec<D> right,
                            hn::Vec<D> after) {
    if constexpr (kQuarter == 3) {
        return Cubic<1>(words, after, right, left, before);
    } else if constexpr (kQuarter == 2) {
        return hn::Sub(hn::Mul(hn::Add(left, right), hn::Set(words, 9)), hn::Add(before, after));
    } else {
        const auto middle =
            hn::Add(hn::Mul(left, hn::Set(words, 53)), hn::Mul(right, hn::Set(words, 18)));
        const auto ends = hn::Add(hn::ShiftLeft<2>(before), hn::Mul(after, hn::Set(words, 3)));
        return hn::Sub(middle, ends);
    }
}

constexpr int kWeights[4][4] = {{0, 64, 0, 0}, {-4, 53, 18, -3}, {-1, 9, 9, -1}, {-3, 18, 53, -4}};

template <class D>
HWY_INLINE hn::Vec<hn::Repartition<std::uint8_t, D>> BesideBelow(D, hn::Vec<D> row,
                                                                 hn::Vec<D> next) {
    return hn::BitCast(hn::Repartition<std::uint8_t, D>(), hn::Or(row, hn::ShiftLeft<8>(next)));
}

// Two of the cubic's weights, as often as there are pairs of samples.
template <class D>
HWY_INLINE hn::Vec<hn::Repartition<std::int8_t, D>> Weights(D words, int even, int odd) {
    const auto pair = static_cast<std::int16_t>((even & 0xFF) | (odd * 256));
    return hn::BitCast(hn::Repartition<std::int8_t, D>(), hn::Set(words, pair));
}

// Samples from one before the row's first on; each eight values need eleven of them.
template <class D>
HWY_INLINE hn::Vec<hn::Repartition<std::uint8_t, D>> LoadForCubic(D, const std::uint8_t* row) {
    if constexpr (kLanes<D> == 16)
        return hn::Combine(hn::Repartition<std::uint8_t, D>(), hn::LoadU(Samples16(), row + 7),
                           hn::LoadU(Samples16(), row - 1));
    else
        return hn::LoadU(Samples16(), row - 1);
}

template <int kX, class D>
HWY_INLINE void BicubicAcross(D words, const Block& block) {
    constexpr int kShift = kX == 2 ? 4 : 6;
    // clang-format off
    alignas(16) static constexpr std::uint8_t kLeft[16] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8};
    alignas(16) static constexpr std::uint8_t kRight[16] = {2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10};
    // clang-format on
    const hn::Repartition<std::uint8_t, D> samples;
    const auto left = hn::LoadDup128(samples, kLeft);
    const auto right = hn::LoadDup128(samples, kRight);
    const auto left_weights = Weights(words, kWeights[kX][0], kWeights[kX][1]);
    const auto right_weights = Weights(words, kWeights[kX][2], kWeights[kX][3]);
    const auto half =
        hn::Set(words, static_cast<std::int16_t>((1 << (kShift - 1)) - block.rounding));
    for (std::ptrdiff_t x = 0; x < block.width; x += kLanes<D>)
        for (std::ptrdiff_t y = 0; y < block.height; y += 2) {
            hn::Vec<D> rows[2];
            for (std::ptrdiff_t i = 0; i < 2; ++i) {
                const auto row = LoadForCubic(words, block.source + (y + i) * block.stride + x);
                const auto sum =
                    hn::Add(MulSamplePairs(words, hn::TableLookupBytes(row, left), left_weights),
                            MulSamplePairs(words, hn::TableLookupBytes(row, right), right_weights));
                rows[i] = hn::ShiftRight<kShift>(hn::Add(sum, half));
            }
            StoreTwoRows(words, rows[0], rows[1], block.out + y * block.out_stride + x,
                         block.out_stride);
        }
}

// Gives each two rows' vectors, from the column of `source` on, to `sink`.
template <int kY, class D, class Sink>
HWY_INLINE void CubicDown(D words, const std::uint8_t* source, std::ptrdiff_t stride, int height,
                          Sink sink) {
    const auto upper_weights = Weights(words, kWeights[kY][0], kWeights[kY][1]);
    const auto lower_weights = Weights(words, kWeights[kY][2], kWeights[kY][3]);
    auto row = LoadWords(words, source);
    // Each sample beside the one below it.
    auto above = BesideBelow(words, LoadWords(words, source - stride), row);
    auto next = LoadWords(words, source + stride);
    auto here = BesideBelow(words, row, next);
    for (int y = 0; y < height; y += 2) {
        row = LoadWords(words, source + 2 * stride);
        const auto below = BesideBelow(words, next, row);
        const auto upper = hn::Add(MulSamplePairs(words, above, upper_weights),
                                   MulSamplePairs(words, below, lower_weights));
        next = LoadWords(words, source + 3 * stride);
        const auto last = BesideBelow(words, row, next);
        const auto lower = hn::Add(MulSamplePairs(words, here, upper_weights),
                                   MulSamplePairs(words, last, lower_weights));
        sink.Store(words, upper, lower);
        source += 2 * stride;
        above = below;
        here = last;
    }
}

template <int kShift>
struct ToSamples {
    int half;
    std::uint8_t* out;
    std::ptrdiff_t stride;

    template <class D>
    HWY_INLINE void Store(D words, hn::Vec<D> upper, hn::Vec<D> lower) {
        const auto addend = hn::Set(words, static_cast<std::int16_t>(half));
        StoreTwoRows(words, hn::ShiftRight<kShift>(hn::Add(upper, addend)),
                     hn::ShiftRight<kShift>(hn::Add(lower, addend)), out, stride);
        out += 2 * stride;
    }
};

template <int kShift>
struct ToWords {
    int half;
    std::int16_t* out;
    std::ptrdiff_t stride;

    template <class D>
    HWY_INLINE void Store(D words, hn::Vec<D> upper, hn::Vec<D> lower) {
        const auto addend = hn::Set(words, static_cast<std::int16_t>(half));
        hn::StoreU(hn::ShiftRight<kShift>(hn::Add(upper, addend)), words, out);
        hn::StoreU(hn::ShiftRight<kShift>(hn::Add(lower, addend)), words, out + stride);
        out += 2 * stride;
    }
};

template <int kY, class D>
HWY_INLINE void BicubicDown(D words, const Block& block) {
    constexpr int kShift = kY == 2 ? 4 : 6;
    const int half = (1 << (kShift - 1)) - 1 + block.rounding;
    for (std::ptrdiff_t x = 0; x < block.width; x += kLanes<D>)
        CubicDown<kY>(words, block.source + x, block.stride, block.height,
                      ToSamples<kShift>{half, block.out + x, block.out_stride});
}

template <int kX, class D>
HWY_INLINE hn::Vec<D> CubicAcross(D words, const std::int16_t* row, hn::Vec<D> half) {
    const auto sum = Cubic<kX>(words, hn::LoadU(words, row), hn::LoadU(words, row + 1),
                               hn::LoadU(words, row + 2), hn::LoadU(words, row + 3));
    return hn::ShiftRight<7>(hn::Add(sum, half));
}

template <int kX, int kY, class D>
HWY_INLINE void BicubicBothWays(D words, const Block& block) {
    constexpr int kShift = ((kX == 2 ? 1 : 5) + (kY == 2 ? 1 : 5)) / 2;
    constexpr std::ptrdiff_t kStride = 32;
    HWY_ALIGN std::int16_t between[16 * kStride];
    // Three columns more than the block has; the last strip need not be wider than eight.
    const int half_down = (1 << (kShift - 1)) + block.rounding - 1;
    const std::uint8_t* source = block.source - 1;
    std::ptrdiff_t done = 0;
    for (; done + kLanes<Words> <= block.width + 8; done += kLanes<Words>)
        CubicDown<kY>(Words(), source + done, block.stride, block.height,
                      ToWords<kShift>{half_down, between + done, kStride});
    if (done < block.width + 3)
        CubicDown<kY>(Words8(), source + done, block.stride, block.height,
                      ToWords<kShift>{half_down, between + done, kStride});
    // The sums reach from -10000 to 42000: modulo 65536 they fit when 128 << 7 is taken off.
    const auto half = hn::Set(words, static_cast<std::int16_t>(64 - block.rounding - (128 << 7)));
    const auto middle = hn::Set(words, 128);
    for (std::ptrdiff_t x = 0; x < block.width; x += kLanes<D>)
        for (std::ptrdiff_t y = 0; y < block.height; y += 2) {
            const std::int16_t* row = between + y * kStride + x;
            const auto upper = hn::Add(CubicAcross<kX>(words, row, half), middle);
            const auto lower = hn::Add(CubicAcross<kX>(words, row + kStride, half), middle);
            StoreTwoRows(words, upper, lower, block.out + y * block.out_stride + x,
                         block.out_stride);
        }
}

template <int kX, int kY>
void BicubicAt(const Block& block) {
    if constexpr (kX == 0 && kY == 0) {
        if (block.width == 16)
            CopyRows(Samples16(), block.out, block.out_stride, block.source, block.stride,
                     block.height);
        else
            CopyRows(Samples8(), block.out, block.out_stride, block.source, block.stride,
                     block.height);
    } else if constexpr (kY == 0) {
        if (block.width == 16)
            BicubicAcross<kX>(Words(), block);
        else
            BicubicAcross<kX>(Words8(), block);
    } else if constexpr (kX == 0) {
        if (block.width == 16)
            BicubicDown<kY>(Words(), block);
        else
            BicubicDown<kY>(Words8(), block);
    } else {
        if (block.width == 16)
            BicubicBothWays<kX, kY>(Words(), block);
        else
            BicubicBothWays<kX, kY>(Words8(), block);
    }
}

void Bicubic(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
             std::ptrdiff_t stride, int width, int height, int x, int y, int rounding) {
    // clang-format off
    static constexpr void (*kAt[4][4])(const Block&) = {
        {BicubicAt<0, 0>, BicubicAt<1, 0>, BicubicAt<2, 0>, BicubicAt<3, 0>},
        {BicubicAt<0, 1>, BicubicAt<1, 1>, BicubicAt<2, 1>, BicubicAt<3, 1>},
        {BicubicAt<0, 2>, BicubicAt<1, 2>, BicubicAt<2, 2>, BicubicAt<3, 2>},
        {BicubicAt<0, 3>, BicubicAt<1, 3>, BicubicAt<2, 3>, BicubicAt<3, 3>},
    };
    // clang-format on
    kAt[y][x]({out, out_stride, source, stride, width, height, rounding});
}

// ---- Bilinear

// Rounded up, or down where `flip` has all bits set.
template <class D>
HWY_INLINE hn::Vec<D> Mean(hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> flip) {
    return hn::Xor(hn::AverageRound(hn::Xor(a, flip), hn::Xor(b, flip)), flip);
}

template <class D>
HWY_INLINE void BilinearOneWay(D row, std::uint8_t* out, std::ptrdiff_t out_stride,
                               const std::uint8_t* source, std::ptrdiff_t stride, int height,
                               std::ptrdiff_t step, int rounding) {
    const auto flip = hn::Set(row, static_cast<std::uint8_t>(-rounding));
    for (int y = 0; y < height; ++y, source += stride, out += out_stride)
        hn::StoreU(Mean<D>(hn::LoadU(row, source), hn::LoadU(row, source + step), flip), row, out);
}

template <class D>
HWY_INLINE hn::Vec<D> SumAcross(D words, const std::uint8_t* at) {
    return hn::Add(LoadWords(words, at), LoadWords(words, at + 1));
}

template <class D>
HWY_INLINE void BilinearBothWays(D words, std::uint8_t* out, std::ptrdiff_t out_stride,
                                 const std::uint8_t* source, std::ptrdiff_t stride, int width,
                                 int height, int rounding) {
    const auto half = hn::Set(words, static_cast<std::int16_t>(2 - rounding));
    for (std::ptrdiff_t x = 0; x < width; x += kLanes<D>) {
        auto upper = SumAcross(words, source + x);
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            const auto lower = SumAcross(words, source + (y + 1) * stride + x);
            const auto sum = hn::Add(hn::Add(upper, lower), half);
            StoreSamples(words, hn::ShiftRight<2>(sum), out + y * out_stride + x);
            upper = lower;
        }
    }
}

void Bilinear(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
              std::ptrdiff_t stride, int width, int height, int x, int y, int rounding) {
    const std::ptrdiff_t step = x != 0 ? 1 : stride;
    if (x == 0 && y == 0) {
        if (width == 16)
            CopyRows(Samples16(), out, out_stride, source, stride, height);
        else
            CopyRows(Samples8(), out, out_stride, source, stride, height);
    } else if (x == 0 || y == 0) {
        if (width == 16)
            BilinearOneWay(Samples16(), out, out_stride, source, stride, height, step, rounding);
        else
            BilinearOneWay(Samples8(), out, out_stride, source, stride, height, step, rounding);
    } else {
        if (width == 16)
            BilinearBothWays(Words(), out, out_stride, source, stride, 16, height, rounding);
        else
            BilinearBothWays(Words8(), out, out_stride, source, stride, 8, height, rounding);
    }
}

void Chroma(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
            std::ptrdiff_t stride, int x, int y, int rounding) {
    if (x == 0 && y == 0) return CopyRows(Samples8(), out, out_stride, source, stride, 8);
    const Words8 words;
    // A neighbour of no weight is not read.
    const std::ptrdiff_t right = x != 0 ? 1 : 0;
    const std::ptrdiff_t down = y != 0 ? stride : 0;
    const auto near_x = hn::Set(words, static_cast<std::int16_t>(8 - 2 * x));
    const auto far_x = hn::Set(words, static_cast<std::int16_t>(2 * x));
    const auto near_y = hn::Set(words, static_cast<std::int16_t>(y != 0 ? 8 - 2 * y : 0));
    const auto far_y = hn::Set(words, static_cast<std::int16_t>(y != 0 ? 2 * y : 8));
    const auto half = hn::Set(words, static_cast<std::int16_t>(32 - 4 * rounding));
    auto upper = hn::Add(hn::Mul(LoadWords(words, source), near_x),
                         hn::Mul(LoadWords(words, source + right), far_x));
    for (int row = 0; row < 8; ++row, source += stride, out += out_stride) {
        const auto lower = hn::Add(hn::Mul(LoadWords(words, source + down), near_x),
                                   hn::Mul(LoadWords(words, source + down + right), far_x));
        const auto sum = hn::Add(hn::Mul(upper, near_y), hn::Mul(lower, far_y));
        StoreSamples(words, hn::ShiftRight<6>(hn::Add(sum, half)), out);
        upper = lower;
    }
}

template <class D>
HWY_INLINE void AverageRows(D row, std::uint8_t* out, std::ptrdiff_t out_stride,
                            const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                            std::ptrdiff_t b_stride, int height) {
    for (int y = 0; y < height; ++y, a += a_stride, b += b_stride, out += out_stride)
        hn::StoreU(hn::AverageRound(hn::LoadU(row, a), hn::LoadU(row, b)), row, out);
}

void Average(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* a,
             std::ptrdiff_t a_stride, const std::uint8_t* b, std::ptrdiff_t b_stride, int width,
             int height) {
    if (width == 16)
        AverageRows(Samples16(), out, out_stride, a, a_stride, b, b_stride, height);
    else
        AverageRows(Samples8(), out, out_stride, a, a_stride, b, b_stride, height);
}

}  // namespace

void SetPrediction(Kernels& kernels) {
    kernels.bicubic = Bicubic;
    kernels.bilinear = Bilinear;
    kernels.chroma = Chroma;
    kernels.average = Average;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
