#include "codecs/screen/run_length.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/screen/prefix_code.h"

namespace codecs::screen {
namespace {

constexpr int kRun = 256;
constexpr int kLongRun = 267;
constexpr int kLongRunBits = 10;  // runs from 2^10 on tell how many bits more they have
constexpr int kSameAsAbove = 268;
constexpr int kUnchanged = 269;
constexpr int kKeySymbols = 269;
constexpr int kInterSymbols = 270;

// A symbol and the bits after it.
struct Word {
    std::int16_t symbol;
    Code more;
};

class RunSearch {
  public:
    RunSearch(bool key, const Rect& area, PlaneView indices, PlaneView masks)
        : key_(key), area_(area), indices_(indices), masks_(masks) {}

    std::vector<Word> Words() {
        const std::int64_t pixels = area_.Area();
        for (std::int64_t at = 0; at < pixels;) at += PutRun(at);
        return std::move(words_);
    }

  private:
    int X(std::int64_t at) const { return area_.x + static_cast<int>(at % area_.width); }
    int Y(std::int64_t at) const { return area_.y + static_cast<int>(at / area_.width); }
    bool IsNew(int x, int y) const { return key_ || masks_.At(x, y) == kNew; }

    // What is above shows the palette's colour only if it is new too.
    bool IsAsAbove(int x, int y) const {
        return y > area_.y && IsNew(x, y) && IsNew(x, y - 1) &&
               indices_.At(x, y) == indices_.At(x, y - 1);
    }

    template <typename Belongs>
    std::int64_t Length(std::int64_t from, std::int64_t end, Belongs belongs) const {
        std::int64_t at = from;
        while (at < end && belongs(X(at), Y(at))) ++at;
        return at - from;
    }

    std::int64_t PutRun(std::int64_t at) {
        const int x = X(at);
        const int y = Y(at);
        const std::int64_t end = area_.Area();
        if (!IsNew(x, y)) {
            // Decoders count differently where such a run goes on in the next row.
            const std::int64_t row_end = (at / area_.width + 1) * area_.width;
            return Put(kUnchanged, Length(at, row_end, [&](int column, int row) {
                           return !IsNew(column, row);
                       }));
        }
        const int colour = indices_.At(x, y);
        const std::int64_t same = Length(at, end, [&](int column, int row) {
            return IsNew(column, row) && indices_.At(column, row) == colour;
        });
        const std::int64_t as_above =
            Length(at, end, [&](int column, int row) { return IsAsAbove(column, row); });
        return as_above > same ? Put(kSameAsAbove, as_above) : Put(colour, same);
    }

    std::int64_t Put(int symbol, std::int64_t length) {
        std::int64_t rest = length;
        if (symbol != current_) {
            words_.push_back({static_cast<std::int16_t>(symbol), {}});
            current_ = symbol;
            --rest;
        }
        if (rest > 0) PutRest(static_cast<std::uint32_t>(rest));
        return length;
    }

    void PutRest(std::uint32_t rest) {
        const int bits = static_cast<int>(std::bit_width(rest)) - 1;
        const std::uint32_t low = rest - (1U << bits);
        if (bits <= kLongRunBits) {
            words_.push_back(
                {static_cast<std::int16_t>(kRun + bits), {low, static_cast<std::uint8_t>(bits)}});
            return;
        }
        const auto more = static_cast<std::uint32_t>(bits - kLongRunBits);
        words_.push_back({kLongRun, {more << bits | low, static_cast<std::uint8_t>(4 + bits)}});
    }

    const bool key_;
    const Rect area_;
    const PlaneView indices_;
    const PlaneView masks_;
    int current_ = 0;
    std::vector<Word> words_;
};

}  // namespace

void CodeRuns(BitWriter& out, bool key, const Rect& area, PlaneView indices, PlaneView masks) {
    if (!key)
        for (const int value : {area.x, area.y, area.width - 1, area.height - 1})
            out.Put(static_cast<std::uint32_t>(value), 12);
    const std::vector<Word> words = RunSearch(key, area, indices, masks).Words();
    std::vector<std::uint32_t> counts(Index(key ? kKeySymbols : kInterSymbols));
    for (const Word& word : words) ++counts[Index(word.symbol)];
    const PrefixCode code(counts);
    code.WriteTo(out);
    for (const Word& word : words) {
        out.Put(code.Of(word.symbol));
        out.Put(word.more);
    }
    out.Align();
}

}  // namespace codecs::screen
