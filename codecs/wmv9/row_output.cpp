#include "codecs/wmv9/row_output.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/common/index.h"
#include "codecs/wmv9/dc_codes.h"
#include "codecs/wmv9/intra.h"
#include "codecs/wmv9/transform_types.h"

namespace codecs::wmv9 {
namespace {

template <typename Array>
void AddTo(Array& sums, const Array& others) {
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += others[i];
}

}  // namespace

TableCounts& TableCounts::operator+=(const TableCounts& other) {
    AddTo(luma_levels, other.luma_levels);
    AddTo(other_levels, other.other_levels);
    AddTo(vectors, other.vectors);
    AddTo(patterns, other.patterns);
    AddTo(luma_dc, other.luma_dc);
    AddTo(chroma_dc, other.chroma_dc);
    largest_level = std::max(largest_level, other.largest_level);
    return *this;
}

int WrittenPattern(const Macroblock& macroblock) {
    int pattern = macroblock.coded;
    if (!macroblock.four_mv) return pattern;
    for (std::size_t n = 0; n < 4; ++n)
        if (!(macroblock.differences[n] == MotionVector())) pattern |= 1 << (5 - n);
    return pattern;
}

void RowOutput::Clear() {
    symbols_.clear();
    counts_ = {};
}

void RowOutput::Add(const Picture& picture, const Macroblock& macroblock, const Blocks& levels) {
    const PictureHeader& header = picture.header;
    const auto present = [&](int n) {
        return picture.kernels.differing(levels[n].data(), kNoLevels.data());
    };
    if (macroblock.intra) {
        for (int n = 0; n < kBlocks; ++n) {
            const DcCode code = DcCodeOf(macroblock.dc[Index(n)], macroblock.quantiser);
            ++(n < 4 ? counts_.luma_dc : counts_.chroma_dc)[Index(code.symbol)];
            if (!macroblock.IsCoded(n)) continue;
            const Scan& scan = IntraScan(header.IsI(), macroblock, n);
            AddLevels(levels[n].data(), scan, scan.InOrder(present(n)), n < 4, header.HighRate());
        }
        if (header.IsI()) return;
        ++counts_.vectors[Index(kIntraSymbol + (macroblock.coded != 0 ? kCodedSymbols : 0))];
        if (macroblock.coded != 0) ++counts_.patterns[macroblock.coded];
        return;
    }
    if (macroblock.skipped) return;
    AddVectors(picture, macroblock);
    if (macroblock.four_mv || macroblock.coded != 0)
        ++counts_.patterns[Index(WrittenPattern(macroblock))];
    for (int n = 0; n < kBlocks; ++n) {
        if (!macroblock.IsCoded(n)) continue;
        const Shape shape = macroblock.shapes[Index(n)];
        const Scan& scan = PartScan(shape);
        const std::uint64_t of_block = present(n);
        for (int part = 0; part < PartCount(shape); ++part) {
            if (!HasPart(shape, macroblock.parts[Index(n)], part)) continue;
            const int place = PartPlace(shape, part);
            AddLevels(levels[n].data() + place, scan, scan.InOrder(of_block >> place), false,
                      header.HighRate());
        }
    }
}

void RowOutput::AddVectors(const Picture& picture, const Macroblock& macroblock) {
    const bool coded = macroblock.coded != 0;
    const auto count = [&](MotionVector difference, bool with_coded) {
        const int symbol = CodeOf(difference, with_coded, picture.header).symbol;
        ++counts_.vectors[Index(symbol)];
    };
    if (macroblock.four_mv) {
        for (int n = 0; n < 4; ++n) {
            const MotionVector difference = macroblock.differences[Index(n)];
            if (macroblock.IsCoded(n) || !(difference == MotionVector()))
                count(difference, macroblock.IsCoded(n));
        }
        return;
    }
    const MotionVector forward = macroblock.differences[0];
    if (!picture.header.IsB() || macroblock.direction == Direction::Forward)
        return count(forward, coded);
    if (macroblock.direction == Direction::Direct) return;
    if (macroblock.direction == Direction::Backward)
        return count(macroblock.backward_difference, coded);
    const bool second = coded || !(forward == MotionVector());
    count(macroblock.backward_difference, second);
    if (second) count(forward, coded);
}

void RowOutput::AddLevels(const std::int16_t* levels, const Scan& scan, std::uint64_t present,
                          bool intra_luma, bool high_rate) {
    int next = 0;  // place after the last one
    const std::size_t first = symbols_.size();
    ForEachBit(present, [&](int place) {
        symbols_.push_back({levels[scan[place]], static_cast<std::uint8_t>(place - next), false});
        next = place + 1;
    });
    symbols_.back().last = true;
    auto& bits = intra_luma ? counts_.luma_levels : counts_.other_levels;
    const auto& all = AcCodes::All();
    for (std::size_t i = first; i < symbols_.size(); ++i) {
        const Symbol& symbol = symbols_[i];
        const int level = std::abs(int{symbol.level});
        counts_.largest_level = std::max(counts_.largest_level, level);
        for (int index = 0; index < kAcChoices; ++index)
            bits[Index(index)] += all[Index(AcTablePlace(index, high_rate, intra_luma))].Length(
                symbol.last, symbol.run, level);
    }
}

}  // namespace codecs::wmv9
