#include "codecs/wmv9/picture_writer.h"

#include <algorithm>
#include <array>

#include "codecs/common/index.h"
#include "codecs/wmv9/b_fractions.h"
#include "codecs/wmv9/dc_codes.h"
#include "codecs/wmv9/intra.h"
#include "codecs/wmv9/tables.h"
#include "codecs/wmv9/transform_types.h"

namespace codecs::wmv9 {
namespace {

constexpr int kFineUpTo = 12;    // quantiser; another order of the codes of vector modes above
constexpr int kFineEscapes = 8;  // below it levels may be larger
constexpr int kAnyMacroblock = 3;
constexpr int kQuantiserEscape = 7;

// By VectorMode, the last one for intensity compensation.
constexpr std::array<Code, 5> kFineModes = {{{1, 1}, {1, 3}, {0, 4}, {1, 2}, {1, 4}}};
constexpr std::array<Code, 5> kCoarseModes = {{{1, 2}, {1, 3}, {1, 1}, {0, 4}, {1, 4}}};
// After that of intensity compensation.
constexpr std::array<Code, 4> kFineSecondModes = {{{1, 1}, {1, 3}, {0, 3}, {1, 2}}};
constexpr std::array<Code, 4> kCoarseSecondModes = {{{1, 2}, {1, 3}, {1, 1}, {0, 3}}};
constexpr std::size_t kIntensityMode = 4;

constexpr Code kAcTableCodes[] = {{0, 1}, {2, 2}, {3, 2}};
constexpr Code kRangeCodes[] = {{0, 1}, {2, 2}, {6, 3}, {7, 3}};

std::uint32_t Unsigned(int value) { return static_cast<std::uint32_t>(value); }

template <std::size_t Size>
std::int64_t BitsWith(const std::array<std::uint32_t, Size>& counts,
                      const std::array<Code, Size>& table) {
    std::int64_t bits = 0;
    for (std::size_t i = 0; i < Size; ++i) bits += std::int64_t{counts[i]} * table[i].length;
    return bits;
}

template <std::size_t Tables, typename BitsOf>
int Cheapest(BitsOf&& bits_of) {
    std::array<std::int64_t, Tables> bits;
    for (std::size_t i = 0; i < Tables; ++i) bits[i] = bits_of(i);
    return static_cast<int>(std::min_element(bits.begin(), bits.end()) - bits.begin());
}

class Writer {
  public:
    Writer(BitWriter& out, const Picture& picture, int largest_level)
        : out_(out),
          picture_(picture),
          header_(picture.header),
          levels_(out, largest_level, header_.quantiser < kFineEscapes || header_.varying),
          intra_luma_(AcCodes::All()[Index(
              AcTablePlace(header_.IsI() ? header_.luma_ac_table : header_.ac_table,
                           header_.HighRate(), true))]),
          other_(AcCodes::All()[Index(AcTablePlace(header_.ac_table, header_.HighRate(), false))]) {
    }

    void Header(const PicturePlanes& planes) {
        out_.Put(Unsigned(header_.counter), 2);  // FRMCNT
        PutKind();
        if (header_.IsI()) out_.Put(0, 7);                           // BF: unknown
        out_.Put(Unsigned(header_.quantiser), 5);                    // PQINDEX
        if (header_.quantiser <= 8) out_.Put(header_.half_step, 1);  // HALFQP
        if (picture_.sequence.extended_vectors)
            out_.Put(kRangeCodes[header_.vector_range]);  // MVRANGE
        if (header_.IsI()) {
            out_.Put(kAcTableCodes[header_.ac_table]);       // TRANSACFRM
            out_.Put(kAcTableCodes[header_.luma_ac_table]);  // TRANSACFRM2
            out_.Put(Unsigned(header_.dc_table), 1);         // TRANSDCTAB
            return;
        }
        if (header_.IsB()) {
            out_.Put(header_.mode == VectorMode::Quarter, 1);       // MVMODE
            WritePlane(out_, planes.direct, header_.direct_plane);  // DIRECTMB
        } else {
            PutMode();
            if (header_.mode == VectorMode::Mixed)
                WritePlane(out_, planes.four_mv, header_.four_mv_plane);  // MVTYPEMB
        }
        WritePlane(out_, planes.skipped, header_.skip_plane);  // SKIPMB
        out_.Put(Unsigned(header_.vector_table), 2);           // MVTAB
        out_.Put(Unsigned(header_.pattern_table), 2);          // CBPTAB
        PutVarying();
        out_.Put(header_.shape.has_value(), 1);                                      // TTMBF
        if (header_.shape) out_.Put(Unsigned(static_cast<int>(*header_.shape)), 2);  // TTFRM
        out_.Put(kAcTableCodes[header_.ac_table]);                                   // TRANSACFRM
        out_.Put(Unsigned(header_.dc_table), 1);                                     // TRANSDCTAB
    }

    void Row(int y, const RowOutput& row) {
        next_ = row.Symbols().data();
        for (int x = 0; x < picture_.Width(); ++x) {
            const Macroblock& macroblock = picture_.grid.At(x, y);
            if (header_.IsI())
                IMacroblock(macroblock, x, y);
            else if (header_.IsB())
                BMacroblock(macroblock);
            else
                PMacroblock(macroblock);
        }
    }

    void End() {
        out_.Align();
        // Some decoders look for bits behind a last macroblock that is nothing but its own bit.
        const auto raw = [](const PlaneCoding& coding) { return coding.mode == PlaneMode::Raw; };
        if (!header_.IsI() &&
            (raw(header_.skip_plane) || raw(header_.four_mv_plane) || raw(header_.direct_plane)))
            out_.Put(0, 8);
    }

    std::size_t LevelBits() const { return level_bits_; }
    AcWriter::Sizes WrittenSizes() const { return levels_.WrittenSizes(); }

  private:
    // PTYPE, BFRACTION.
    void PutKind() {
        const bool has_b = picture_.sequence.most_b_pictures > 0;
        if (header_.kind == PictureKind::kP) return out_.Put(1, 1);
        if (header_.IsI()) return has_b ? out_.Put(1, 2) : out_.Put(0, 1);
        out_.Put(0, 2);
        out_.Put(FindBFraction(header_.b_number, header_.b_pictures).code);
    }

    // MVMODE, MVMODE2, LUMSCALE, LUMSHIFT.
    void PutMode() {
        const bool fine = header_.quantiser <= kFineUpTo;
        const auto mode = static_cast<std::size_t>(header_.mode);
        const auto& modes = fine ? kFineModes : kCoarseModes;
        if (!header_.intensity) return out_.Put(modes[mode]);
        out_.Put(modes[kIntensityMode]);
        out_.Put((fine ? kFineSecondModes : kCoarseSecondModes)[mode]);
        out_.Put(Unsigned(header_.intensity->scale), 6);
        out_.Put(Unsigned(header_.intensity->shift), 6);
    }

    // VOPDQUANT.
    void PutVarying() {
        if (!picture_.sequence.varying_quantiser) return;
        out_.Put(header_.varying, 1);  // DQUANTFRM
        if (!header_.varying) return;
        out_.Put(kAnyMacroblock, 2);  // DQPROFILE
        out_.Put(0, 1);               // DQBILEVEL: more than two quantisers
    }

    // MQDIFF, ABSMQ.
    void PutQuantiser(const Macroblock& macroblock) {
        if (!header_.varying) return;
        const int more = macroblock.quantiser - header_.quantiser;
        if (more >= 0 && more < kQuantiserEscape) return out_.Put(Unsigned(more), 3);
        out_.Put(kQuantiserEscape, 3);
        out_.Put(macroblock.quantiser, 5);
    }

    // CBPCY.
    void PutPattern(int pattern) {
        out_.Put(kPattern[Index(header_.pattern_table)][Index(pattern)]);
    }

    // HYBRIDPRED.
    void PutHybrid(Hybrid hybrid) {
        if (hybrid != Hybrid::None) out_.Put(hybrid == Hybrid::Above, 1);
    }

    // DCCOEF, DCCOEF_ESC, DCSIGN.
    void PutDc(const Macroblock& macroblock, int n) {
        const auto table = Index(header_.dc_table);
        const DcCode code = DcCodeOf(macroblock.dc[Index(n)], macroblock.quantiser);
        out_.Put((n < 4 ? kLumaDc : kChromaDc)[table][Index(code.symbol)]);
        out_.Put(code.extra);
    }

    // ACCOEF1, ACCOEF2, to the last one of the transform.
    void PutLevels(const AcCodes& codes) {
        const std::size_t before = out_.Size();
        do levels_.Put(codes, *next_);
        while (!(next_++)->last);
        level_bits_ += out_.Size() - before;
    }

    void PutIntraBlocks(const Macroblock& macroblock) {
        for (int n = 0; n < kBlocks; ++n) {
            PutDc(macroblock, n);
            if (macroblock.IsCoded(n)) PutLevels(n < 4 ? intra_luma_ : other_);
        }
    }

    void PutInterBlocks(const Macroblock& macroblock) {
        TypeNames names(header_.TransformClass(), header_.shape.has_value(),
                        macroblock.block_types);
        bool first = true;
        for (int n = 0; n < kBlocks; ++n) {
            if (!macroblock.IsCoded(n)) continue;
            const Shape shape = macroblock.shapes[Index(n)];
            const int parts = macroblock.parts[Index(n)];
            if (first) out_.Put(names.Macroblock(shape, parts));  // TTMB
            first = false;
            const TypeNames::Names own = names.Next(shape, parts);
            out_.Put(own.type);   // TTBLK
            out_.Put(own.parts);  // SUBBLKPAT
            for (int part = 0; part < PartCount(shape); ++part)
                if (HasPart(shape, parts, part)) PutLevels(other_);
        }
    }

    void IMacroblock(const Macroblock& macroblock, int x, int y) {
        out_.Put(kIPattern[Index(WrittenIPattern(picture_.grid, macroblock, x, y))]);  // CBPCY
        out_.Put(macroblock.ac_predicted, 1);                                          // ACPRED
        PutIntraBlocks(macroblock);
    }

    // Among macroblocks of other kinds.
    void IntraMacroblock(const Macroblock& macroblock) {
        const bool coded = macroblock.coded != 0;
        PutIntra(out_, coded, header_);
        if (!coded) PutQuantiser(macroblock);
        out_.Put(macroblock.ac_predicted, 1);  // ACPRED
        if (coded) {
            PutPattern(macroblock.coded);
            PutQuantiser(macroblock);
        }
        PutIntraBlocks(macroblock);
    }

    void PutResidual(const Macroblock& macroblock) {
        PutPattern(macroblock.coded);
        PutQuantiser(macroblock);
        PutInterBlocks(macroblock);
    }

    void PMacroblock(const Macroblock& macroblock) {
        if (header_.mode == VectorMode::Mixed && header_.four_mv_plane.mode == PlaneMode::Raw)
            out_.Put(macroblock.four_mv, 1);  // MVMODEBIT
        if (header_.skip_plane.mode == PlaneMode::Raw)
            out_.Put(macroblock.skipped, 1);  // SKIPMBBIT
        if (macroblock.intra) return IntraMacroblock(macroblock);
        if (macroblock.four_mv) return FourMvMacroblock(macroblock);
        const bool coded = macroblock.coded != 0;
        if (!macroblock.skipped)
            PutVector(out_, macroblock.differences[0], coded, header_);  // MVDATA
        PutHybrid(macroblock.hybrid[0]);
        if (coded) PutResidual(macroblock);
    }

    void FourMvMacroblock(const Macroblock& macroblock) {
        const int pattern = WrittenPattern(macroblock);
        if (!macroblock.skipped) PutPattern(pattern);
        for (int n = 0; n < 4; ++n) {
            if ((pattern >> (5 - n) & 1) != 0)
                PutVector(out_, macroblock.differences[Index(n)], macroblock.IsCoded(n), header_);
            PutHybrid(macroblock.hybrid[Index(n)]);
        }
        if (macroblock.coded == 0) return;
        PutQuantiser(macroblock);
        PutInterBlocks(macroblock);
    }

    void BMacroblock(const Macroblock& macroblock) {
        const bool direct = !macroblock.intra && macroblock.direction == Direction::Direct;
        if (header_.direct_plane.mode == PlaneMode::Raw) out_.Put(direct, 1);  // DIRECTBBIT
        if (header_.skip_plane.mode == PlaneMode::Raw)
            out_.Put(macroblock.skipped, 1);  // SKIPMBBIT
        if (macroblock.intra) return IntraMacroblock(macroblock);
        const bool coded = macroblock.coded != 0;
        if (direct) {
            if (coded) PutResidual(macroblock);
            return;
        }
        if (macroblock.skipped) return PutDirection(macroblock.direction);
        const MotionVector forward = macroblock.differences[0];
        if (macroblock.direction == Direction::Both) {
            const bool second = coded || !(forward == MotionVector());
            PutVector(out_, macroblock.backward_difference, second, header_);
            PutDirection(macroblock.direction);
            if (second) PutVector(out_, forward, coded, header_);
        } else {
            const bool is_forward = macroblock.direction == Direction::Forward;
            PutVector(out_, is_forward ? forward : macroblock.backward_difference, coded, header_);
            PutDirection(macroblock.direction);
        }
        if (coded) PutResidual(macroblock);
    }

    // BMVTYPE.
    void PutDirection(Direction direction) {
        if (direction == Direction::Both) return out_.Put(3, 2);
        const bool backward_near = BScale(header_.b_number, header_.b_pictures) >= 128;
        const bool near = (direction == Direction::Backward) == backward_near;
        if (near)
            out_.Put(0, 1);
        else
            out_.Put(2, 2);
    }

    BitWriter& out_;
    const Picture& picture_;
    const PictureHeader& header_;
    AcWriter levels_;
    const AcCodes& intra_luma_;
    const AcCodes& other_;
    const Symbol* next_ = nullptr;
    std::size_t level_bits_ = 0;
};

}  // namespace

void PicturePlanes::TakeRow(const MacroblockGrid& grid, int y) {
    for (int x = 0; x < grid.Width(); ++x) {
        const Macroblock& macroblock = grid.At(x, y);
        four_mv.Set(x, y, macroblock.four_mv);
        skipped.Set(x, y, macroblock.skipped);
        direct.Set(x, y, !macroblock.intra && macroblock.direction == Direction::Direct);
    }
}

void ChooseTables(PictureHeader& header, const TableCounts& counts, const PicturePlanes& planes) {
    const auto luma = [&](std::size_t i) { return counts.luma_levels[i]; };
    const auto other = [&](std::size_t i) { return counts.other_levels[i]; };
    header.dc_table = Cheapest<2>([&](std::size_t i) {
        return BitsWith(counts.luma_dc, kLumaDc[i]) + BitsWith(counts.chroma_dc, kChromaDc[i]);
    });
    if (header.IsI()) {
        header.luma_ac_table = Cheapest<kAcChoices>(luma);
        header.ac_table = Cheapest<kAcChoices>(other);
        return;
    }
    header.ac_table = Cheapest<kAcChoices>([&](std::size_t i) { return luma(i) + other(i); });
    header.vector_table =
        Cheapest<4>([&](std::size_t i) { return BitsWith(counts.vectors, kVector[i]); });
    header.pattern_table =
        Cheapest<4>([&](std::size_t i) { return BitsWith(counts.patterns, kPattern[i]); });
    header.skip_plane = CheapestCoding(planes.skipped);
    if (header.IsB()) header.direct_plane = CheapestCoding(planes.direct);
    if (header.mode == VectorMode::Mixed) header.four_mv_plane = CheapestCoding(planes.four_mv);
}

std::size_t WritePicture(BitWriter& out, const Picture& picture, const PicturePlanes& planes,
                         std::span<const RowOutput> rows, std::span<WrittenRows> parts,
                         TaskTeam& team) {
    int largest_level = 0;
    for (const RowOutput& row : rows)
        largest_level = std::max(largest_level, row.Counts().largest_level);
    team.Run(static_cast<int>(parts.size()), [&](int n) {
        WrittenRows& part = parts[Index(n)];
        part.bits.Clear();
        Writer writer(part.bits, picture, largest_level);
        const std::size_t end = (Index(n) + 1) * rows.size() / parts.size();
        for (std::size_t y = Index(n) * rows.size() / parts.size(); y < end; ++y)
            writer.Row(static_cast<int>(y), rows[y]);
        part.sizes = writer.WrittenSizes();
        part.level_bits = writer.LevelBits();
    });
    Writer writer(out, picture, largest_level);
    writer.Header(planes);
    std::size_t level_bits = 0;
    bool has_sizes = false;
    for (WrittenRows& part : parts) {
        const std::size_t size = part.bits.Size();
        part.bits.Align();
        const auto copy = [&](std::size_t from, std::size_t end) {
            out.Put(part.bits.Bytes(), static_cast<int>(from), static_cast<int>(end - from));
        };
        level_bits += part.level_bits;
        if (has_sizes) {
            copy(0, part.sizes.from);
            copy(part.sizes.from + part.sizes.count, size);
            level_bits -= part.sizes.count;
        } else {
            copy(0, size);
            has_sizes = part.sizes.count > 0;
        }
    }
    writer.End();
    return level_bits;
}

}  // namespace codecs::wmv9
