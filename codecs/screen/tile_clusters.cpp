#include "codecs/screen/tile_clusters.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

// In tiles that nothing is painted in.
constexpr std::int64_t kRectangle = 6;
constexpr std::int64_t kPaintedTile = 20;
constexpr std::int64_t kUnlike = 1 << 24;
constexpr std::size_t kMostToPair = 96;

Rect Union(const Rect& a, const Rect& b) {
    Rect both;
    both.x = std::min(a.x, b.x);
    both.y = std::min(a.y, b.y);
    both.width = std::max(a.x + a.width, b.x + b.width) - both.x;
    both.height = std::max(a.y + a.height, b.y + b.height) - both.y;
    return both;
}

// What rectangles of tiles cost.
class Costs {
  public:
    Costs(std::span<const std::uint8_t> painted, int columns)
        : stride_(Index(columns) + 1), sums_(stride_ * (painted.size() / Index(columns) + 1)) {
        for (std::size_t i = 0; i < painted.size(); ++i) {
            const std::size_t at = (i / Index(columns) + 1) * stride_ + i % Index(columns) + 1;
            sums_[at] = sums_[at - 1] + sums_[at - stride_] - sums_[at - stride_ - 1] +
                        (painted[i] != 0 ? 1 : 0);
        }
    }

    std::int64_t Of(const Rect& rect) const {
        const std::size_t bottom = Index(rect.y) * stride_ + Index(rect.x);
        const std::size_t top = bottom + Index(rect.height) * stride_;
        const std::size_t width = Index(rect.width);
        const std::int64_t painted =
            sums_[top + width] - sums_[top] - sums_[bottom + width] + sums_[bottom];
        return rect.Area() + kPaintedTile * painted;
    }
    std::int64_t Growth(const TileCluster& a, const TileCluster& b) const {
        return Of(Union(a.tiles, b.tiles)) - Of(a.tiles) - Of(b.tiles) +
               (a.kind == b.kind ? 0 : kUnlike);
    }

  private:
    std::size_t stride_;
    std::vector<std::int64_t> sums_;
};

// Tiles of a kind that touch each other.
std::vector<TileCluster> Components(std::span<const std::uint8_t> tiles, int columns) {
    std::vector<TileCluster> found;
    std::vector<bool> seen(tiles.size());
    const int rows = static_cast<int>(tiles.size()) / columns;
    std::vector<int> open;
    for (int start = 0; start < static_cast<int>(tiles.size()); ++start) {
        const std::uint8_t kind = tiles[Index(start)];
        if (kind == 0 || seen[Index(start)]) continue;
        Rect extent{start % columns, start / columns, 1, 1};
        open.assign(1, start);
        seen[Index(start)] = true;
        while (!open.empty()) {
            const int x = open.back() % columns;
            const int y = open.back() / columns;
            open.pop_back();
            extent = Union(extent, {x, y, 1, 1});
            constexpr std::array<Vector, 4> kBeside = {{{-1, 0}, {1, 0}, {0, -1}, {0, 1}}};
            for (const Vector step : kBeside) {
                const int to_x = x + step.x;
                const int to_y = y + step.y;
                if (to_x < 0 || to_y < 0 || to_x >= columns || to_y >= rows) continue;
                const int to = to_y * columns + to_x;
                if (tiles[Index(to)] != kind || seen[Index(to)]) continue;
                seen[Index(to)] = true;
                open.push_back(to);
            }
        }
        found.push_back({extent, kind});
    }
    return found;
}

void Merge(std::vector<TileCluster>& clusters, std::size_t into, std::size_t from) {
    clusters[into] = {Union(clusters[into].tiles, clusters[from].tiles),
                      std::min(clusters[into].kind, clusters[from].kind)};
    clusters.erase(clusters.begin() + static_cast<std::ptrdiff_t>(from));
}

}  // namespace

std::vector<TileCluster> ClusterTiles(std::span<const std::uint8_t> tiles,
                                      std::span<const std::uint8_t> painted, int columns,
                                      std::size_t most) {
    const Costs costs(painted, columns);
    std::vector<TileCluster> clusters = Components(tiles, columns);
    // So many that pairing them all takes too long: those that follow each other lie near.
    while (clusters.size() > kMostToPair) {
        std::vector<TileCluster> half;
        for (std::size_t i = 0; i < clusters.size(); i += 2) {
            half.push_back(clusters[i]);
            if (i + 1 < clusters.size())
                half.back() = {Union(clusters[i].tiles, clusters[i + 1].tiles),
                               std::min(clusters[i].kind, clusters[i + 1].kind)};
        }
        clusters = std::move(half);
    }
    while (clusters.size() > 1) {
        std::int64_t least = std::numeric_limits<std::int64_t>::max();
        std::size_t first = 0;
        std::size_t second = 0;
        for (std::size_t i = 0; i < clusters.size(); ++i)
            for (std::size_t j = i + 1; j < clusters.size(); ++j) {
                const std::int64_t growth = costs.Growth(clusters[i], clusters[j]);
                if (growth >= least) continue;
                least = growth;
                first = i;
                second = j;
            }
        if (clusters.size() <= most && least > kRectangle) break;
        Merge(clusters, first, second);
    }
    std::ranges::sort(clusters, {}, [](const TileCluster& cluster) { return cluster.tiles.x; });
    return clusters;
}

}  // namespace codecs::screen
