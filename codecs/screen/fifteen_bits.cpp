#include "codecs/screen/fifteen_bits.h"

#include <cstddef>

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

constexpr int kSameAsAbove = 128;
constexpr int kUnchanged = 129;
constexpr int kRun = 130;
constexpr int kFirstColour = 0;  // current before the first pixel

class Writer {
  public:
    Writer(std::vector<std::uint8_t>& out, const Rect& area, int width,
           std::span<const std::uint16_t> pixels, std::span<const std::uint16_t> before)
        : out_(out), area_(area), width_(width), pixels_(pixels), before_(before) {}

    void Area() {
        for (std::int64_t at = 0; at < area_.Area();) at += Run(at);
    }

  private:
    std::size_t Place(std::int64_t at) const {
        return Index(area_.y + static_cast<int>(at / area_.width)) * Index(width_) +
               Index(area_.x + static_cast<int>(at % area_.width));
    }

    bool IsKept(std::int64_t at) const {
        return !before_.empty() && pixels_[Place(at)] == before_[Place(at)];
    }
    bool IsAsAbove(std::int64_t at) const {
        return at >= area_.width && pixels_[Place(at)] == pixels_[Place(at - area_.width)];
    }

    template <typename Belongs>
    std::int64_t Length(std::int64_t from, std::int64_t end, Belongs belongs) const {
        std::int64_t at = from;
        while (at < end && belongs(at)) ++at;
        return at - from;
    }

    std::int64_t Run(std::int64_t at) {
        const std::int64_t end = area_.Area();
        // Decoders count differently where a run of unchanged pixels goes on in the next row.
        const std::int64_t row_end = (at / area_.width + 1) * area_.width;
        const std::int64_t kept = Length(at, row_end, [&](auto i) { return IsKept(i); });
        const std::int64_t above = Length(at, end, [&](auto i) { return IsAsAbove(i); });
        const int colour = pixels_[Place(at)];
        const std::int64_t same =
            Length(at, end, [&](auto i) { return pixels_[Place(i)] == colour; });
        if (same >= above && same >= kept) return Put(colour, same);
        return above >= kept ? PutSpecial(kSameAsAbove, above) : PutSpecial(kUnchanged, kept);
    }

    std::int64_t Put(int colour, std::int64_t length) {
        std::int64_t rest = length;
        if (current_ != colour) {
            current_ = colour;
            PutByte(colour >> 8);
            PutByte(colour & 0xFF);
            --rest;
        }
        PutRest(rest);
        return length;
    }

    std::int64_t PutSpecial(int symbol, std::int64_t length) {
        std::int64_t rest = length;
        const int current = -symbol;  // is no colour
        if (current_ != current) {
            current_ = current;
            PutByte(symbol);
            --rest;
        }
        PutRest(rest);
        return length;
    }

    // Runs longer than 1 are numbered on through one, two, three bytes.
    void PutRest(std::int64_t rest) {
        if (rest == 0) return;
        std::int64_t value = rest - 1;
        int bytes = 0;
        std::uint8_t digits[8];
        for (; value > 0; value = (value - 1) >> 8)
            digits[bytes++] = static_cast<std::uint8_t>(value - 1);
        PutByte(kRun + bytes);
        while (bytes > 0) out_.push_back(digits[--bytes]);
    }

    void PutByte(int value) { out_.push_back(static_cast<std::uint8_t>(value)); }

    std::vector<std::uint8_t>& out_;
    const Rect area_;
    const int width_;
    const std::span<const std::uint16_t> pixels_;
    const std::span<const std::uint16_t> before_;
    int current_ = kFirstColour;
};

}  // namespace

void CodeFifteenBits(std::vector<std::uint8_t>& out, const Rect& area, int width,
                     std::span<const std::uint16_t> pixels, std::span<const std::uint16_t> before) {
    if (!before.empty()) {
        const auto pair = [&](int first, int last) {
            out.push_back(static_cast<std::uint8_t>(first >> 4));
            out.push_back(static_cast<std::uint8_t>((first & 15) << 4 | last >> 8));
            out.push_back(static_cast<std::uint8_t>(last));
        };
        pair(area.x, area.x + area.width - 1);
        pair(area.y, area.y + area.height - 1);
    }
    Writer(out, area, width, pixels, before).Area();
}

}  // namespace codecs::screen
