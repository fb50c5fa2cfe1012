#include "codecs/screen/motion_vote.h"

#include <algorithm>

#include "codecs/common/index.h"
#include "codecs/screen/pixel_kernels.h"

namespace codecs::screen {
namespace {

constexpr int kLength = 32;  // pixels of a piece
constexpr std::size_t kMostPieces = 3000;
constexpr int kLeastVotes = 12;
constexpr int kVoteBits = 12;
// A piece that stands in many places tells nothing.
constexpr int kMostAlike = 4;

constexpr std::uint32_t kFactor = 0x01000193;

constexpr std::uint32_t Power(int exponent) {
    std::uint32_t power = 1;
    for (int i = 0; i < exponent; ++i) power *= kFactor;
    return power;
}

std::uint32_t HashOf(const std::uint32_t* pixels) {
    std::uint32_t hash = 0;
    for (int i = 0; i < kLength; ++i) hash = hash * kFactor + (pixels[i] & 0xFFFFFF);
    return hash;
}

// Text has several changes of colour in a piece; a frame's edge has one.
bool IsFlat(const std::uint32_t* pixels) {
    int changes = 0;
    for (int i = 1; i < kLength; ++i)
        changes += ((pixels[i] ^ pixels[i - 1]) & 0xFFFFFF) != 0 ? 1 : 0;
    return changes < 3;
}

}  // namespace

MotionVote::MotionVote()
    : slots_(std::size_t{1} << kSlotBits, -1), votes_(std::size_t{1} << kVoteBits) {}

std::optional<Vector> MotionVote::Find(PixelView now, PixelView before, const Rect& area,
                                       std::span<const std::uint8_t> changed, int columns) {
    if (area.width < kLength) return std::nullopt;
    Collect(now, area, changed, columns);
    if (pieces_.size() < kLeastVotes) return std::nullopt;
    std::ranges::fill(votes_, Votes());
    Vote(before, area);
    const auto best = std::ranges::max_element(votes_, {}, &Votes::count);
    if (best->count < kLeastVotes) return std::nullopt;
    const auto unpack = [](std::uint32_t half) { return static_cast<int>(half & 0xFFFF) - 0x8000; };
    return Vector{unpack(best->key >> 16), unpack(best->key)};
}

void MotionVote::Collect(PixelView now, const Rect& area, std::span<const std::uint8_t> changed,
                         int columns) {
    pieces_.clear();
    std::ranges::fill(slots_, -1);
    const std::int64_t places = area.Area() / kLength;
    // Spread over the area, on rows that no pattern of lines keeps missing.
    const int step = static_cast<int>(
        std::max<std::int64_t>(1, places / static_cast<std::int64_t>(3 * kMostPieces)));
    for (int y = area.y; y < area.y + area.height; y += step) {
        for (int x = area.x; x + kLength <= area.x + area.width; x += kLength) {
            const auto row = changed.subspan(Index(y / kCell) * Index(columns), Index(columns));
            const auto has_changed = [](std::uint8_t cell) { return cell != 0; };
            if (std::none_of(row.begin() + x / kCell, row.begin() + (x + kLength - 1) / kCell + 1,
                             has_changed))
                continue;
            const std::uint32_t* const pixels = now.Row(y) + x;
            if (IsFlat(pixels)) continue;
            if (pieces_.size() == kMostPieces) return;
            const std::uint32_t hash = HashOf(pixels);
            std::int32_t& slot = slots_[hash >> (32 - kSlotBits)];
            pieces_.push_back(
                {hash, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), slot});
            slot = static_cast<std::int32_t>(pieces_.size()) - 1;
        }
    }
}

void MotionVote::Vote(PixelView before, const Rect& area) {
    constexpr std::uint32_t kOldest = Power(kLength - 1);
    for (int y = area.y; y < area.y + area.height; ++y) {
        const std::uint32_t* const row = before.Row(y);
        std::uint32_t hash = HashOf(row + area.x);
        for (int x = area.x;; ++x) {
            int alike = 0;
            for (int i = slots_[hash >> (32 - kSlotBits)]; i >= 0; i = pieces_[Index(i)].next) {
                const Piece& piece = pieces_[Index(i)];
                if (piece.hash != hash) continue;
                if (++alike > kMostAlike) break;
                const Vector vector{x - piece.x, y - piece.y};
                if (!(vector == Vector())) VoteFor(vector);
            }
            if (x + kLength >= area.x + area.width) break;
            hash = (hash - (row[x] & 0xFFFFFF) * kOldest) * kFactor + (row[x + kLength] & 0xFFFFFF);
        }
    }
}

void MotionVote::VoteFor(Vector vector) {
    const std::uint32_t key = static_cast<std::uint32_t>(vector.x + 0x8000) << 16 |
                              static_cast<std::uint32_t>(vector.y + 0x8000);
    constexpr std::size_t kMask = (std::size_t{1} << kVoteBits) - 1;
    std::size_t at = (key * 0x9E3779B1U) >> (32 - kVoteBits);
    // A full table stays as it is: what most agree on has come by then.
    for (int tries = 0; tries < 16; ++tries, at = (at + 1) & kMask) {
        if (votes_[at].count != 0 && votes_[at].key != key) continue;
        votes_[at].key = key;
        ++votes_[at].count;
        return;
    }
}

}  // namespace codecs::screen
