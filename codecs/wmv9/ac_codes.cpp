#include "codecs/wmv9/ac_codes.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kRunBits = 6;
constexpr int kUsualLevelBits = 8;
constexpr int kCoarseLevelBits = 8;  // at most
constexpr int kFineLevelBits = 11;   // at most

int BitsOf(int value) {
    int bits = 0;
    for (; value > 0; value >>= 1) ++bits;
    return bits;
}

}  // namespace

AcCodes::AcCodes(const AcTable& table) : table_(table) {
    for (auto& runs : largest_run_) runs.fill(-1);
    std::size_t entry = 0;
    for (int last = 0; last < 2; ++last) {
        for (int run = 0; run < 64; ++run) {
            first_[Index(last)][Index(run)] = static_cast<std::int16_t>(entry);
            for (; entry < table.entries.size() && table.entries[entry].last == last &&
                   table.entries[entry].run == run;
                 ++entry)
                largest_run_[Index(last)][table.entries[entry].level] =
                    static_cast<std::int8_t>(run);
        }
        first_[Index(last)][64] = static_cast<std::int16_t>(entry);
    }
    const auto length = [&](bool last, int run, int level) {
        const Form form = level == 0 ? Form::Plain : ShortestForm(last, run, level);
        return static_cast<std::uint8_t>(FormLength(form, last, run, level));
    };
    for (int level = 0; level < kQuickLevels; ++level)
        for (int run = 0; run < 64; ++run) {
            const Lengths lengths{length(false, run, level), length(true, run, level)};
            lengths_[Index(level)][Index(run)] = lengths;
            shortest_ = {std::min(shortest_.other, lengths.other),
                         std::min(shortest_.last, lengths.last)};
        }
}

const std::array<AcCodes, kAcTableCount>& AcCodes::All() {
    static const std::array<AcCodes, kAcTableCount> all = {
        AcCodes(kAcTables[0]), AcCodes(kAcTables[1]), AcCodes(kAcTables[2]), AcCodes(kAcTables[3]),
        AcCodes(kAcTables[4]), AcCodes(kAcTables[5]), AcCodes(kAcTables[6]), AcCodes(kAcTables[7])};
    return all;
}

int AcCodes::LargestLevel(bool last, int run) const {
    const auto& first = first_[last ? 1 : 0];
    return first[Index(run) + 1] - first[Index(run)];
}

int AcCodes::LargestRun(bool last, int level) const {
    return level < kQuickLevels ? largest_run_[last ? 1 : 0][Index(level)] : -1;
}

const AcEntry* AcCodes::Find(bool last, int run, int level) const {
    if (run < 0 || level < 1 || level > LargestLevel(last, run)) return nullptr;
    return &table_.entries[Index(first_[last ? 1 : 0][Index(run)] + level - 1)];
}

int AcCodes::FormLength(Form form, bool last, int run, int level) const {
    constexpr int kSign = 1;
    switch (form) {
        case Form::Direct:
            return Find(last, run, level)->length + kSign;
        case Form::LevelLess:
            return table_.escape.length + 1 +
                   Find(last, run, level - LargestLevel(last, run))->length + kSign;
        case Form::RunLess:
            return table_.escape.length + 2 +
                   Find(last, run - LargestRun(last, level) - 1, level)->length + kSign;
        case Form::Plain:
            break;
    }
    return table_.escape.length + 2 + 1 + kRunBits + kUsualLevelBits + kSign;
}

AcCodes::Form AcCodes::ShortestForm(bool last, int run, int level) const {
    if (Find(last, run, level) != nullptr) return Form::Direct;
    Form form = Form::Plain;
    int length = FormLength(form, last, run, level);
    const auto consider = [&](Form other, bool possible) {
        if (!possible) return;
        const int other_length = FormLength(other, last, run, level);
        if (other_length >= length) return;
        form = other;
        length = other_length;
    };
    consider(Form::LevelLess, Find(last, run, level - LargestLevel(last, run)) != nullptr);
    const int largest_run = LargestRun(last, level);
    consider(Form::RunLess,
             largest_run >= 0 && Find(last, run - largest_run - 1, level) != nullptr);
    return form;
}

AcWriter::AcWriter(BitWriter& out, int largest_level, bool fine)
    : out_(out),
      level_bits_(std::clamp(BitsOf(largest_level), fine ? 1 : 2,
                             fine ? kFineLevelBits : kCoarseLevelBits)),
      fine_(fine) {}

void AcWriter::PutSizes() {
    if (sizes_.count > 0) return;
    sizes_.from = out_.Size();
    if (!fine_) {
        const int zeros = level_bits_ - 2;
        out_.Put(level_bits_ < kCoarseLevelBits ? 1 : 0, std::min(zeros + 1, 6));
    } else if (level_bits_ < 8) {
        out_.Put(static_cast<std::uint32_t>(level_bits_), 3);
    } else {
        out_.Put(static_cast<std::uint32_t>(level_bits_ - 8), 5);
    }
    out_.Put(kRunBits - 3, 2);
    sizes_.count = out_.Size() - sizes_.from;
}

void AcWriter::Put(const AcCodes& codes, const Symbol& symbol) {
    const int level = std::abs(int{symbol.level});
    const std::uint32_t sign = symbol.level < 0 ? 1 : 0;
    const bool last = symbol.last;
    const int run = symbol.run;
    const auto put = [&](const AcEntry& entry) {
        out_.Put(entry.bits, entry.length);
        out_.Put(sign, 1);
    };
    const AcCodes::Form form = codes.ShortestForm(last, run, level);
    if (form == AcCodes::Form::Direct) return put(*codes.Find(last, run, level));
    out_.Put(codes.table_.escape);
    if (form == AcCodes::Form::LevelLess) {
        out_.Put(1, 1);  // ESCMODE
        return put(*codes.Find(last, run, level - codes.LargestLevel(last, run)));
    }
    if (form == AcCodes::Form::RunLess) {
        out_.Put(1, 2);  // ESCMODE
        return put(*codes.Find(last, run - codes.LargestRun(last, level) - 1, level));
    }
    out_.Put(0, 2);             // ESCMODE
    out_.Put(last ? 1 : 0, 1);  // ESCLR
    PutSizes();
    out_.Put(static_cast<std::uint32_t>(run), kRunBits);       // ESCRUN
    out_.Put(sign, 1);                                         // LVLSGN2
    out_.Put(static_cast<std::uint32_t>(level), level_bits_);  // ESCLVL
}

}  // namespace codecs::wmv9
