// Codes the pixels of a rectangle that the palette has no index for, as an I picture of Windows
// Media Video 9 (SMPTE ST 421, 8.1) with a short header of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/common/task_team.h"
#include "codecs/screen/plane_view.h"
#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/candidate.h"

namespace codecs::screen {

struct RectangleRequest {
    Rect rect;
    int quantiser = 2;       // PQINDEX, 1 to 31
    bool half_step = false;  // HALFQP, up to 8
    /// The pixels that are shown have this index; of the others any colour will do.
    std::optional<int> mask;
};

/// Keeps memory for the largest rectangle so far. One thread at a time; the team works along.
class RectangleCoder {
  public:
    explicit RectangleCoder(TaskTeam& team) : team_(team) {}

    /// Whole bytes, valid until the next call.
    std::span<const std::uint8_t> Code(const RectangleRequest& request, PixelView source,
                                       PlaneView indices);

    /// What a decoder paints for the rectangle coded last: rows of its width, from the bottom up.
    void Reconstruct(std::vector<std::uint32_t>& pixels);

  private:
    static constexpr int kAcChoices = 3;
    struct Macroblock {
        std::uint8_t wanted = 0;                       // bit 5 - n: block n has pixels that show
        std::uint8_t coded = 0;                        // bit 5 - n: block n has levels
        std::array<std::int16_t, wmv9::kBlocks> dc{};  // levels
        std::array<std::int16_t, wmv9::kBlocks> written_dc{};  // less what is expected
    };
    // Of a row of macroblocks: its levels, and what would be taken by each table.
    struct RowSymbols {
        std::vector<wmv9::Symbol> symbols;
        std::array<std::int64_t, kAcChoices> luma_bits{};
        std::array<std::int64_t, kAcChoices> chroma_bits{};
        std::array<std::int64_t, 2> dc_bits{};
        int largest_level = 0;
    };

    void Begin(const RectangleRequest& request);
    void AnalyseRow(PixelView source, PlaneView indices, int y);
    void PredictDc();
    int ExpectedDc(int x, int y, int n) const;
    void CountRow(int y);
    void Write();
    void WriteRow(int y, wmv9::AcWriter& levels, int luma_table, int chroma_table, int dc_table);
    std::uint32_t WrittenPattern(int x, int y) const;
    void Filter(int plane);

    bool HighRate() const { return request_.quantiser <= 8; }
    Macroblock& At(int x, int y) { return macroblocks_[Place(x, y)]; }
    const Macroblock& At(int x, int y) const { return macroblocks_[Place(x, y)]; }
    std::size_t Place(int x, int y) const { return Index(y) * Index(columns_) + Index(x); }

    TaskTeam& team_;
    RectangleRequest request_;
    int quantiser_ = 1;  // PQUANT
    int step_ = 2;
    int dc_step_ = 2;
    int outward_ = 0;  // by which levels are restored further from 0
    int columns_ = 0;  // macroblocks
    int rows_ = 0;
    std::vector<Macroblock> macroblocks_;
    std::vector<wmv9::Blocks> levels_;
    std::vector<RowSymbols> row_symbols_;
    BitWriter out_;
    std::array<std::vector<std::uint8_t>, 3> planes_;  // reconstructed
};

}  // namespace codecs::screen
