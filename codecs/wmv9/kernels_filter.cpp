#include <cstring>

#include "codecs/wmv9/kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_filter.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

template <class D>
constexpr int kSegments = static_cast<int>(kLanes<D> / 4);

// The segments that a vector takes, a byte each.
template <class D>
HWY_INLINE std::uint32_t LoadSegments(D, const std::uint8_t* segments) {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, segments, static_cast<std::size_t>(kSegments<D>));
    return bytes;
}

// All lanes of the segments that are not zero.
template <class D>
HWY_INLINE hn::Mask<D> Wanted(D words, std::uint32_t segments) {
    alignas(32) static constexpr std::uint8_t kPlaces[32] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1,
                                                             1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2,
                                                             2, 2, 3, 3, 3, 3, 3, 3, 3, 3};
    const hn::Repartition<std::uint32_t, D> wide;
    const hn::Repartition<std::uint8_t, D> bytes;
    const auto all = hn::BitCast(bytes, hn::Set(wide, segments));
    const auto spread = hn::BitCast(words, hn::TableLookupBytes(all, hn::Load(bytes, kPlaces)));
    return hn::Ne(spread, hn::Zero(words));
}

// Each segment's third line decides for the segment.
template <class D>
HWY_INLINE hn::Mask<D> OfThirdLines(D words, hn::Mask<D> lines) {
    alignas(16) static constexpr std::uint8_t kPlaces[16] = {4,  5,  4,  5,  4,  5,  4,  5,
                                                             12, 13, 12, 13, 12, 13, 12, 13};
    const hn::Repartition<std::uint8_t, D> bytes;
    const auto all = hn::BitCast(bytes, hn::VecFromMask(words, lines));
    const auto places = hn::LoadDup128(bytes, kPlaces);
    return hn::MaskFromVec(hn::BitCast(words, hn::TableLookupBytes(all, places)));
}

// (2 * (a - d) - 5 * (b - c) + 4) >> 3
template <class D>
HWY_INLINE hn::Vec<D> Bend(D words, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> c, hn::Vec<D> d) {
    const auto outer = hn::Sub(a, d);
    const auto inner = hn::Mul(hn::Sub(b, c), hn::Set(words, 5));
    return hn::ShiftRight<3>(hn::Add(hn::Sub(hn::Add(outer, outer), inner), hn::Set(words, 4)));
}

// Smooths the two samples at an edge, the first of four on each side of it. False if all stay as
// they are.
template <class D>
HWY_INLINE bool Smooth(D words, hn::Vec<D>* left, hn::Vec<D>* right, hn::Mask<D> wanted,
                       int quantiser) {
    const auto zero = hn::Zero(words);
    const auto seam = Bend(words, left[1], left[0], right[0], right[1]);
    const auto size = hn::Abs(seam);
    const auto before = hn::Abs(Bend(words, left[3], left[2], left[1], left[0]));
    const auto after = hn::Abs(Bend(words, right[0], right[1], right[2], right[3]));
    const auto smoother = hn::Min(before, after);
    const auto jump = hn::Sub(left[0], right[0]);
    const auto limit = hn::ShiftRight<1>(hn::Abs(jump));
    const auto is_weak = hn::Lt(size, hn::Set(words, static_cast<std::int16_t>(quantiser)));
    const auto is_seam = hn::And(hn::And(is_weak, hn::Lt(smoother, size)), hn::Gt(limit, zero));
    const auto chosen = hn::And(hn::And(is_seam, wanted), OfThirdLines(words, is_seam));
    const auto smoothed = hn::And(chosen, hn::Lt(hn::Xor(seam, jump), zero));
    if (hn::AllFalse(words, smoothed)) return false;
    const auto excess = hn::Mul(hn::Sub(size, smoother), hn::Set(words, 5));
    const auto move = hn::Min(hn::ShiftRight<3>(excess), limit);
    const auto change =
        hn::IfThenElseZero(smoothed, hn::IfThenElse(hn::Lt(jump, zero), move, hn::Neg(move)));
    left[0] = hn::Add(left[0], change);
    right[0] = hn::Sub(right[0], change);
    return true;
}

template <class D>
HWY_INLINE void FilterAcrossRows(D words, std::uint8_t* below, std::ptrdiff_t stride,
                                 std::uint32_t segments, int quantiser) {
    if (segments == 0) return;
    hn::Vec<D> left[4];
    hn::Vec<D> right[4];
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        left[i] = LoadWords(words, below - (i + 1) * stride);
        right[i] = LoadWords(words, below + i * stride);
    }
    if (!Smooth(words, left, right, Wanted(words, segments), quantiser)) return;
    StoreSamples(words, left[0], below - stride);
    StoreSamples(words, right[0], below);
}

// As many segments as fit `words`, while so many are left.
template <class D>
HWY_INLINE int FilterRunRight(D words, std::uint8_t* below, std::ptrdiff_t stride,
                              const std::uint8_t* segments, int done, int count, int quantiser) {
    for (; done + kSegments<D> <= count; done += kSegments<D>)
        FilterAcrossRows(words, below + std::ptrdiff_t{4} * done, stride,
                         LoadSegments(words, segments + done), quantiser);
    return done;
}

void FilterHorizontal(std::uint8_t* below, std::ptrdiff_t stride, const std::uint8_t* segments,
                      int count, int quantiser) {
    int done = FilterRunRight(Words(), below, stride, segments, 0, count, quantiser);
    done = FilterRunRight(Words8(), below, stride, segments, done, count, quantiser);
    FilterRunRight(hn::FixedTag<std::int16_t, 4>(), below, stride, segments, done, count,
                   quantiser);
}

// Four rows beside the four that begin `second` further down.
HWY_INLINE hn::Vec<Samples16> LoadZipped(const std::uint8_t* row, std::ptrdiff_t second) {
    return hn::InterleaveLower(
        hn::ZeroExtendVector(Samples16(), hn::LoadU(Samples8(), row)),
        hn::ZeroExtendVector(Samples16(), hn::LoadU(Samples8(), row + second)));
}

template <class D>
HWY_INLINE hn::Vec<hn::Repartition<std::uint8_t, D>> LoadZippedRows(D, const std::uint8_t* row,
                                                                    std::ptrdiff_t stride,
                                                                    std::ptrdiff_t second) {
    if constexpr (kLanes<D> == 16)
        return hn::Combine(hn::Repartition<std::uint8_t, D>(), LoadZipped(row + 8 * stride, second),
                           LoadZipped(row, second));
    else
        return LoadZipped(row, second);
}

// Rows of eight samples become columns, in each eight of them; the first four are the edge's left.
template <class D>
HWY_INLINE void LoadTurned(D words, const std::uint8_t* from, std::ptrdiff_t stride,
                           std::ptrdiff_t second, hn::Vec<D>* left, hn::Vec<D>* right) {
    const hn::Repartition<std::uint8_t, D> bytes;
    const auto rows0 = LoadZippedRows(words, from, stride, second);
    const auto rows1 = LoadZippedRows(words, from + stride, stride, second);
    const auto rows2 = LoadZippedRows(words, from + 2 * stride, stride, second);
    const auto rows3 = LoadZippedRows(words, from + 3 * stride, stride, second);
    const auto even_left = hn::InterleaveLower(rows0, rows2);
    const auto even_right = hn::InterleaveUpper(bytes, rows0, rows2);
    const auto odd_left = hn::InterleaveLower(rows1, rows3);
    const auto odd_right = hn::InterleaveUpper(bytes, rows1, rows3);
    const auto columns01 = hn::InterleaveLower(even_left, odd_left);
    const auto columns23 = hn::InterleaveUpper(bytes, even_left, odd_left);
    const auto columns45 = hn::InterleaveLower(even_right, odd_right);
    const auto columns67 = hn::InterleaveUpper(bytes, even_right, odd_right);
    const auto zero = hn::Zero(bytes);
    left[3] = hn::BitCast(words, hn::InterleaveLower(columns01, zero));
    left[2] = hn::BitCast(words, hn::InterleaveUpper(bytes, columns01, zero));
    left[1] = hn::BitCast(words, hn::InterleaveLower(columns23, zero));
    left[0] = hn::BitCast(words, hn::InterleaveUpper(bytes, columns23, zero));
    right[0] = hn::BitCast(words, hn::InterleaveLower(columns45, zero));
    right[1] = hn::BitCast(words, hn::InterleaveUpper(bytes, columns45, zero));
    right[2] = hn::BitCast(words, hn::InterleaveLower(columns67, zero));
    right[3] = hn::BitCast(words, hn::InterleaveUpper(bytes, columns67, zero));
}

template <class D>
HWY_INLINE hn::Vec<D> Clip8(D words, hn::Vec<D> values) {
    return hn::Min(hn::Max(values, hn::Zero(words)), hn::Set(words, 255));
}

// `second` is the distance of a vector's odd segments from its even ones, each of four rows.
template <class D>
HWY_INLINE void FilterAcrossColumns(D words, std::uint8_t* right, std::ptrdiff_t stride,
                                    std::ptrdiff_t second, std::uint32_t segments, int quantiser) {
    if (segments == 0) return;
    hn::Vec<D> before[4];
    hn::Vec<D> after[4];
    LoadTurned(words, right - 4, stride, second, before, after);
    if (!Smooth(words, before, after, Wanted(words, segments), quantiser)) return;
    HWY_ALIGN std::int16_t edge[16];
    hn::Store(hn::Or(Clip8(words, before[0]), hn::ShiftLeft<8>(Clip8(words, after[0]))), words,
              edge);
    const std::ptrdiff_t rows = second == 0 ? 4 : kLanes<D>;
    for (std::ptrdiff_t y = 0; y < rows; ++y) std::memcpy(right + y * stride - 1, edge + y, 2);
}

template <class D>
HWY_INLINE int FilterRunDown(D words, std::uint8_t* right, std::ptrdiff_t stride,
                             const std::uint8_t* segments, int done, int count, int quantiser) {
    for (; done + kSegments<D> <= count; done += kSegments<D>)
        FilterAcrossColumns(words, right + 4 * done * stride, stride, 4 * stride,
                            LoadSegments(words, segments + done), quantiser);
    return done;
}

void FilterVertical(std::uint8_t* right, std::ptrdiff_t stride, const std::uint8_t* segments,
                    int count, int quantiser) {
    int done = FilterRunDown(Words(), right, stride, segments, 0, count, quantiser);
    done = FilterRunDown(Words8(), right, stride, segments, done, count, quantiser);
    // A last single segment stands in both halves of a vector and counts in one.
    if (done < count)
        FilterAcrossColumns(Words8(), right + 4 * done * stride, stride, 0, segments[done],
                            quantiser);
}

}  // namespace

void SetFilter(Kernels& kernels) {
    kernels.filter_horizontal = FilterHorizontal;
    kernels.filter_vertical = FilterVertical;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
