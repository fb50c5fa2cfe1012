#include "codecs/screen/prefix_code.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <queue>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

constexpr int kLongestTold = 20;
constexpr int kInterSymbols = 270;
// Of a symbol's number, as it is told: how many have a byte, and how many a byte and a bit.
constexpr int kByteNumbers = 190;
constexpr int kSplitNumbers = 28;

// Lengths of a Huffman code. A symbol that does not come has a weight too, so that it gets a code.
std::vector<std::uint8_t> BestLengths(std::span<const std::uint32_t> counts) {
    struct Node {
        int first = -1;
        int second = -1;
    };
    constexpr std::uint64_t kWeight = 8;
    using Entry = std::pair<std::uint64_t, int>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> lightest;
    std::vector<Node> nodes(counts.size());
    for (std::size_t i = 0; i < counts.size(); ++i)
        lightest.emplace(kWeight * counts[i] + 1, static_cast<int>(i));
    while (lightest.size() > 1) {
        const Entry a = lightest.top();
        lightest.pop();
        const Entry b = lightest.top();
        lightest.pop();
        lightest.emplace(a.first + b.first, static_cast<int>(nodes.size()));
        nodes.push_back({a.second, b.second});
    }
    std::vector<std::uint8_t> depths(nodes.size());
    for (std::size_t i = nodes.size(); i-- > counts.size();)
        for (const int child : {nodes[i].first, nodes[i].second})
            depths[Index(child)] = static_cast<std::uint8_t>(depths[i] + 1);
    depths.resize(counts.size());
    return depths;
}

int NumberBits(int symbol, int symbols) {
    const int split = kSplitNumbers - (symbols < kInterSymbols ? 2 : 0);
    return symbol >= kByteNumbers && symbol < kByteNumbers + split ? 9 : 8;
}

void PutNumber(BitWriter& out, int symbol, int symbols) {
    const int split = kSplitNumbers - (symbols < kInterSymbols ? 2 : 0);
    const auto put = [&](int value, int bits) { out.Put(static_cast<std::uint32_t>(value), bits); };
    if (symbol < kByteNumbers) return put(symbol, 8);
    if (symbol >= kByteNumbers + split) return put(symbol - split / 2, 8);
    put(kByteNumbers + (symbol - kByteNumbers) / 2, 8);
    put((symbol - kByteNumbers) % 2, 1);
}

int BitsOfCount(int free) { return static_cast<int>(std::bit_width(static_cast<unsigned>(free))); }

}  // namespace

// How far the codes are told, and what is left of their space.
struct PrefixCode::Cut {
    int length = 0;
    int next = 0;
    int told = 0;  // symbols
    int free = 1;

    void Lengthen() {
        ++length;
        next <<= 1;
        free = (1 << length) - next;
    }
};

PrefixCode::PrefixCode(std::span<const std::uint32_t> counts)
    : full_(BestLengths(counts)), codes_(counts.size()) {
    const int longest = *std::ranges::max_element(full_);
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    for (int told = 0; told < std::min(longest, kLongestTold + 1); ++told) {
        const std::size_t bits = BitsOfCut(told, counts);
        if (bits >= fewest) continue;
        fewest = bits;
        longest_told_ = told;
    }
    lengths_ = CutLengths(longest_told_);
    Assign();
}

// What the decoder makes of the symbols that it is not told of.
std::vector<std::uint8_t> PrefixCode::CutLengths(int longest_told) const {
    std::vector<std::uint8_t> lengths = full_;
    Cut cut;
    int rest = static_cast<int>(full_.size());
    for (;;) {
        cut.Lengthen();
        if (cut.length > longest_told) break;
        const auto here = static_cast<int>(std::ranges::count(full_, cut.length));
        cut.next += here;
        rest -= here;
    }
    while (2 * cut.free < rest) cut.Lengthen();
    int shorter = 2 * cut.free - rest;
    for (std::size_t i = 0; i < lengths.size(); ++i)
        if (full_[i] > longest_told)
            lengths[i] = static_cast<std::uint8_t>(shorter-- > 0 ? cut.length : cut.length + 1);
    return lengths;
}

std::size_t PrefixCode::BitsOfCut(int longest_told, std::span<const std::uint32_t> counts) const {
    const std::vector<std::uint8_t> lengths = CutLengths(longest_told);
    std::size_t bits = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        bits += std::size_t{lengths[i]} * counts[i];
        if (full_[i] <= longest_told)
            bits += Index(NumberBits(static_cast<int>(i), static_cast<int>(full_.size())));
    }
    Cut cut;
    for (;;) {
        cut.Lengthen();
        bits += Index(BitsOfCount(cut.free));
        if (cut.length > longest_told) return bits;
        cut.next += static_cast<int>(std::ranges::count(full_, cut.length));
    }
}

void PrefixCode::Assign() {
    std::uint32_t next = 0;
    const int longest = *std::ranges::max_element(lengths_);
    for (int length = 1; length <= longest; ++length) {
        next <<= 1;
        for (std::size_t i = 0; i < lengths_.size(); ++i)
            if (lengths_[i] == length) codes_[i] = {next++, static_cast<std::uint8_t>(length)};
    }
}

void PrefixCode::WriteTo(BitWriter& out) const {
    Cut cut;
    for (;;) {
        cut.Lengthen();
        const int bits = BitsOfCount(cut.free);
        if (cut.length > longest_told_) {
            out.Put(static_cast<std::uint32_t>(cut.free), bits);
            return;
        }
        const auto here = static_cast<int>(std::ranges::count(full_, cut.length));
        out.Put(static_cast<std::uint32_t>(here), bits);
        for (std::size_t i = 0; i < full_.size(); ++i)
            if (full_[i] == cut.length)
                PutNumber(out, static_cast<int>(i), static_cast<int>(full_.size()));
        cut.next += here;
    }
}

}  // namespace codecs::screen
