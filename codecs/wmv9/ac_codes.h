// What runs and levels take, and how they are written (SMPTE ST 421, 8.3.6.4).
#pragma once

#include <array>
#include <cstdint>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/wmv9/ac_tables.h"

namespace codecs::wmv9 {

/// A level that is not zero, after a run of zeros (ACCOEF1).
struct Symbol {
    std::int16_t level = 0;
    std::uint8_t run = 0;  // 0 to 63
    bool last = false;     // of its block
};

/// The place of a table: `index` is what the picture header says, 0 to 2.
constexpr int AcTablePlace(int index, bool high_rate, bool intra_luma) {
    const int pair = index == 0 ? (high_rate ? 0 : 1) : index + 1;
    return 2 * pair + (intra_luma ? 0 : 1);
}

/// One table made ready.
class AcCodes {
  public:
    /// All of them, made on first use.
    static const std::array<AcCodes, kAcTableCount>& All();

    /// Bits of a symbol with its sign: that of a block's last one, and of another.
    struct Lengths {
        std::uint8_t other = 0;
        std::uint8_t last = 0;
    };

    /// That any symbol has.
    Lengths Shortest() const { return shortest_; }
    /// By run, 0 to 63; `level` is above 0.
    const std::array<Lengths, 64>& OfLevel(int level) const {
        return lengths_[Index(level < kQuickLevels ? level : 0)];
    }
    int Length(bool last, int run, int level) const {
        const Lengths lengths = OfLevel(level)[Index(run)];
        return last ? lengths.last : lengths.other;
    }

    explicit AcCodes(const AcTable& table);

  private:
    friend class AcWriter;
    static constexpr int kQuickLevels = 64;

    /// Without an escape, then by ESCMODE: a level less the table's largest, a run less its
    /// longest (ACCOEF2), and plain numbers.
    enum class Form : std::uint8_t { Direct, LevelLess, RunLess, Plain };
    const AcEntry* Find(bool last, int run, int level) const;
    Form ShortestForm(bool last, int run, int level) const;
    int FormLength(Form form, bool last, int run, int level) const;
    int LargestLevel(bool last, int run) const;
    int LargestRun(bool last, int level) const;

    const AcTable& table_;
    std::array<std::array<std::int16_t, 65>, 2> first_{};  // entry of a run; of the run after it
    std::array<std::array<std::int8_t, kQuickLevels>, 2> largest_run_{};  // by level; -1 = none
    std::array<std::array<Lengths, 64>, kQuickLevels> lengths_{};         // [0]: of an escape
    Lengths shortest_{255, 255};
};

/// Writes the symbols of one picture, or of some of its rows.
class AcWriter {
  public:
    /// Bits among those that were written.
    struct Sizes {
        std::size_t from = 0;
        std::size_t count = 0;
    };
    /// @param largest_level  that the picture's symbols have
    /// @param fine           the quantiser is below 8 or varies
    AcWriter(BitWriter& out, int largest_level, bool fine);

    void Put(const AcCodes& codes, const Symbol& symbol);
    /// The sizes of the fields of a plain escape, which stand in a picture's first one: ESCLVLSZ,
    /// ESCRUNSZ.
    Sizes WrittenSizes() const { return sizes_; }

  private:
    void PutSizes();

    BitWriter& out_;
    int level_bits_;
    bool fine_;
    Sizes sizes_;
};

}  // namespace codecs::wmv9
