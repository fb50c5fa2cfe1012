#include "codecs/screen/rectangle_coder.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/screen/macroblock_samples.h"
#include "codecs/wmv9/dc_codes.h"
#include "codecs/wmv9/kernels.h"
#include "codecs/wmv9/quantiser.h"
#include "codecs/wmv9/tables.h"

namespace codecs::screen {
namespace {

using wmv9::AcCodes;
using wmv9::AcTablePlace;
using wmv9::Blocks;
using wmv9::kBlocks;
using wmv9::kEighths;
using wmv9::Symbol;

constexpr int kMeanDc = 1024;
constexpr int kUniformUpTo = 8;  // PQINDEX; above it levels are restored further from 0
// How levels are rounded, as a part of a step. Levels that are too large cost more.
constexpr double kRounding = 0.4;

// Implicit quantisers (SMPTE ST 421, 7.1.1.6, table 36).
constexpr std::array<std::uint8_t, 32> kQuantiser = {0,  1,  2,  3,  4,  5,  6,  7,  8,  6,  7,
                                                     8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18,
                                                     19, 20, 21, 22, 23, 24, 25, 27, 29, 31};

}  // namespace

std::span<const std::uint8_t> RectangleCoder::Code(const RectangleRequest& request,
                                                   PixelView source, PlaneView indices) {
    Begin(request);
    team_.Run(rows_, [&](int y) { AnalyseRow(source, indices, y); });
    PredictDc();
    team_.Run(rows_, [&](int y) { CountRow(y); });
    Write();
    return out_.Bytes();
}

void RectangleCoder::Begin(const RectangleRequest& request) {
    request_ = request;
    columns_ = (request.rect.width + kMacroblock - 1) / kMacroblock;
    rows_ = (request.rect.height + kMacroblock - 1) / kMacroblock;
    quantiser_ = kQuantiser[Index(request.quantiser)];
    const bool uniform = request.quantiser <= kUniformUpTo;
    step_ = 2 * quantiser_ + (uniform && request.half_step ? 1 : 0);
    outward_ = uniform ? 0 : quantiser_;
    dc_step_ = wmv9::kDcStep[Index(quantiser_)];
    const std::size_t count = Index(columns_) * Index(rows_);
    if (macroblocks_.size() < count) {
        macroblocks_.resize(count);
        levels_.resize(count);
    }
    if (row_symbols_.size() < Index(rows_)) row_symbols_.resize(Index(rows_));
}

void RectangleCoder::AnalyseRow(PixelView source, PlaneView indices, int y) {
    const wmv9::Kernels& kernels = wmv9::BestKernels();
    const auto quantiser = wmv9::Quantiser::Make(quantiser_, step_);
    const int rounding = outward_ > 0 ? 0 : static_cast<int>(kRounding * step_ * kEighths);
    for (int x = 0; x < columns_; ++x) {
        Macroblock& macroblock = At(x, y);
        Blocks& levels = levels_[Place(x, y)];
        Blocks samples;
        const Rect& rect = request_.rect;
        const Rect area{rect.x + kMacroblock * x, rect.y + kMacroblock * y,
                        std::min(kMacroblock, rect.width - kMacroblock * x),
                        std::min(kMacroblock, rect.height - kMacroblock * y)};
        macroblock.wanted =
            LoadMacroblock(source, indices, request_.mask.value_or(-1), area, samples);
        macroblock.coded = 0;
        for (int n = 0; n < kBlocks; ++n) {
            if ((macroblock.wanted >> (5 - n) & 1) == 0) continue;
            wmv9::Block coefficients;
            kernels.forward(wmv9::Shape::Whole8x8, coefficients.data(), samples[n].data());
            const int dc_step = dc_step_ * kEighths;
            macroblock.dc[Index(n)] = static_cast<std::int16_t>(
                (std::max(int{coefficients[0]}, 0) + dc_step / 2) / dc_step);
            coefficients[0] = 0;
            if (kernels.quantise(levels[n].data(), coefficients.data(), quantiser.reciprocal,
                                 rounding) != 0)
                macroblock.coded = static_cast<std::uint8_t>(macroblock.coded | 1 << (5 - n));
        }
    }
}

int RectangleCoder::ExpectedDc(int x, int y, int n) const {
    const auto level = [&](int left, int below) {
        int column = n < 4 ? 2 * x + n % 2 : x;
        int row = n < 4 ? 2 * y + n / 2 : y;
        column -= left;
        row -= below;
        if (column < 0 || row < 0) return (kMeanDc + dc_step_ / 2) / dc_step_;
        if (n >= 4) return int{At(column, row).dc[Index(n)]};
        return int{At(column / 2, row / 2).dc[Index(row % 2 * 2 + column % 2)]};
    };
    const int a = level(0, 1);
    const int b = level(1, 1);
    const int c = level(1, 0);
    return std::abs(a - b) <= std::abs(b - c) ? c : a;
}

// A block that does not show takes what is expected of it.
void RectangleCoder::PredictDc() {
    for (int y = 0; y < rows_; ++y) {
        for (int x = 0; x < columns_; ++x) {
            Macroblock& macroblock = At(x, y);
            for (int n = 0; n < kBlocks; ++n) {
                const int expected = ExpectedDc(x, y, n);
                if ((macroblock.wanted >> (5 - n) & 1) == 0)
                    macroblock.dc[Index(n)] = static_cast<std::int16_t>(expected);
                macroblock.written_dc[Index(n)] =
                    static_cast<std::int16_t>(macroblock.dc[Index(n)] - expected);
            }
        }
    }
}

void RectangleCoder::CountRow(int y) {
    RowSymbols& row = row_symbols_[Index(y)];
    row.symbols.clear();
    row.luma_bits = row.chroma_bits = {};
    row.dc_bits = {};
    row.largest_level = 0;
    const auto& codes = AcCodes::All();
    for (int x = 0; x < columns_; ++x) {
        const Macroblock& macroblock = At(x, y);
        const Blocks& levels = levels_[Place(x, y)];
        for (int n = 0; n < kBlocks; ++n) {
            const bool luma = n < 4;
            for (int table = 0; table < 2; ++table)
                row.dc_bits[Index(table)] +=
                    wmv9::DcBits(macroblock.written_dc[Index(n)], quantiser_,
                                 (luma ? wmv9::kLumaDc : wmv9::kChromaDc)[Index(table)]);
            if ((macroblock.coded >> (5 - n) & 1) == 0) continue;
            const std::size_t first = row.symbols.size();
            int run = 0;
            for (std::size_t i = 1; i < 64; ++i) {
                const std::int16_t level = levels[n][wmv9::kScanI[i]];
                if (level == 0) {
                    ++run;
                    continue;
                }
                row.symbols.push_back({level, static_cast<std::uint8_t>(run), false});
                run = 0;
            }
            row.symbols.back().last = true;
            auto& bits = luma ? row.luma_bits : row.chroma_bits;
            for (std::size_t i = first; i < row.symbols.size(); ++i) {
                const Symbol& symbol = row.symbols[i];
                const int level = std::abs(int{symbol.level});
                row.largest_level = std::max(row.largest_level, level);
                for (int table = 0; table < kAcChoices; ++table)
                    bits[Index(table)] +=
                        codes[Index(AcTablePlace(table, HighRate(), luma))].Length(
                            symbol.last, symbol.run, level);
            }
        }
    }
}

std::uint32_t RectangleCoder::WrittenPattern(int x, int y) const {
    const auto coded = [&](int column, int row) {
        if (column < 0 || row < 0) return 0;
        const int n = row % 2 * 2 + column % 2;
        return At(column / 2, row / 2).coded >> (5 - n) & 1;
    };
    int written = At(x, y).coded & 3;
    for (int n = 0; n < 4; ++n) {
        const int column = 2 * x + n % 2;
        const int row = 2 * y + n / 2;
        const int corner = coded(column - 1, row - 1);
        const int above = coded(column, row - 1);
        const int expected = corner == above ? coded(column - 1, row) : above;
        written |= (coded(column, row) ^ expected) << (5 - n);
    }
    return static_cast<std::uint32_t>(written);
}

void RectangleCoder::Write() {
    std::array<std::int64_t, kAcChoices> luma{};
    std::array<std::int64_t, kAcChoices> chroma{};
    std::array<std::int64_t, 2> dc{};
    int largest_level = 0;
    for (const RowSymbols& row : std::span(row_symbols_).first(Index(rows_))) {
        for (std::size_t i = 0; i < kAcChoices; ++i) {
            luma[i] += row.luma_bits[i];
            chroma[i] += row.chroma_bits[i];
        }
        for (std::size_t i = 0; i < dc.size(); ++i) dc[i] += row.dc_bits[i];
        largest_level = std::max(largest_level, row.largest_level);
    }
    const auto cheapest = [](const auto& bits) {
        return static_cast<int>(std::ranges::min_element(bits) - bits.begin());
    };
    const int luma_table = cheapest(luma);
    const int chroma_table = cheapest(chroma);
    const int dc_table = cheapest(dc);

    out_.Clear();
    out_.Put(0, 2);
    out_.Put(0, 1);  // PTYPE: I
    out_.Put(0, 7);  // BF
    out_.Put(static_cast<std::uint32_t>(request_.quantiser), 5);
    if (HighRate()) out_.Put(request_.half_step, 1);
    for (const int table : {chroma_table, luma_table})  // TRANSACFRM, TRANSACFRM2
        out_.Put(table == 0 ? 0 : static_cast<std::uint32_t>(table + 1), table == 0 ? 1 : 2);
    out_.Put(static_cast<std::uint32_t>(dc_table), 1);
    wmv9::AcWriter levels(out_, largest_level, quantiser_ < 8);
    for (int y = 0; y < rows_; ++y) WriteRow(y, levels, luma_table, chroma_table, dc_table);
    out_.Align();
}

void RectangleCoder::WriteRow(int y, wmv9::AcWriter& levels, int luma_table, int chroma_table,
                              int dc_table) {
    const AcCodes& luma = AcCodes::All()[Index(AcTablePlace(luma_table, HighRate(), true))];
    const AcCodes& chroma = AcCodes::All()[Index(AcTablePlace(chroma_table, HighRate(), false))];
    const auto& luma_dc = wmv9::kLumaDc[Index(dc_table)];
    const auto& chroma_dc = wmv9::kChromaDc[Index(dc_table)];
    const Symbol* next = row_symbols_[Index(y)].symbols.data();
    for (int x = 0; x < columns_; ++x) {
        const Macroblock& macroblock = At(x, y);
        out_.Put(wmv9::kIPattern[WrittenPattern(x, y)]);  // CBPCY
        out_.Put(0, 1);                                   // ACPRED
        for (int n = 0; n < kBlocks; ++n) {
            const wmv9::DcCode dc = wmv9::DcCodeOf(macroblock.written_dc[Index(n)], quantiser_);
            out_.Put((n < 4 ? luma_dc : chroma_dc)[Index(dc.symbol)]);
            out_.Put(dc.extra);
            if ((macroblock.coded >> (5 - n) & 1) == 0) continue;
            do levels.Put(n < 4 ? luma : chroma, *next);
            while (!next++->last);
        }
    }
}

void RectangleCoder::Reconstruct(std::vector<std::uint32_t>& pixels) {
    const wmv9::Kernels& kernels = wmv9::BestKernels();
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const std::size_t side = plane == 0 ? kMacroblock : kMacroblock / 2;
        planes_[plane].resize(side * side * Index(columns_) * Index(rows_));
    }
    for (int y = 0; y < rows_; ++y) {
        for (int x = 0; x < columns_; ++x) {
            const Macroblock& macroblock = At(x, y);
            for (int n = 0; n < kBlocks; ++n) {
                wmv9::Block coefficients{};
                wmv9::Block samples;
                if ((macroblock.coded >> (5 - n) & 1) != 0)
                    kernels.restore(coefficients.data(), levels_[Place(x, y)][n].data(), step_,
                                    outward_);
                coefficients[0] = static_cast<std::int16_t>(macroblock.dc[Index(n)] * dc_step_);
                kernels.inverse(wmv9::Shape::Whole8x8, samples.data(), coefficients.data());
                const wmv9::BlockPlace& place = wmv9::kBlockPlaces[Index(n)];
                const std::ptrdiff_t unit = place.plane == 0 ? kMacroblock : kMacroblock / 2;
                const std::ptrdiff_t stride = unit * columns_;
                kernels.put(planes_[Index(place.plane)].data() + (unit * y + place.y) * stride +
                                unit * x + place.x,
                            stride, samples.data(), 0);
            }
        }
    }
    for (int plane = 0; plane < 3; ++plane) Filter(plane);
    pixels.resize(static_cast<std::size_t>(request_.rect.Area()));
    auto out = pixels.begin();
    const int stride = kMacroblock * columns_;
    for (int y = 0; y < request_.rect.height; ++y)
        for (int x = 0; x < request_.rect.width; ++x) {
            const std::size_t half = Index(y / 2 * (stride / 2) + x / 2);
            *out++ =
                ShownColour(planes_[0][Index(y * stride + x)], planes_[1][half], planes_[2][half]);
        }
}

// All edges of blocks but the outer ones (SMPTE ST 421, 8.6).
void RectangleCoder::Filter(int plane) {
    const wmv9::Kernels& kernels = wmv9::BestKernels();
    const int columns = plane == 0 ? 2 * columns_ : columns_;  // blocks
    const int rows = plane == 0 ? 2 * rows_ : rows_;
    const std::ptrdiff_t stride = std::ptrdiff_t{8} * columns;
    const std::vector<std::uint8_t> all(2 * Index(columns), 1);
    std::uint8_t* const samples = planes_[Index(plane)].data();
    for (int y = 1; y < rows; ++y)
        kernels.filter_horizontal(samples + stride * 8 * y, stride, all.data(), 2 * columns,
                                  quantiser_);
    for (int y = 0; y < rows; ++y)
        for (int x = 1; x < columns; ++x)
            kernels.filter_vertical(samples + stride * 8 * y + std::ptrdiff_t{8} * x, stride,
                                    all.data(), 2, quantiser_);
}

}  // namespace codecs::screen
