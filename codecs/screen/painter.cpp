#include "codecs/screen/painter.h"

#include <algorithm>
#include <cmath>

#include "codecs/screen/frame_analysis.h"

namespace codecs::screen {
namespace {

constexpr double kOffset = PictureBits::kOffset;

// Bits of a tile times (quantiser + offset), before any has been coded.
constexpr double kUsualTexture = 2200;
// Of a tile's texture, what has been learnt last.
constexpr double kLearning = 0.5;

// Details have this at most: they stand in text.
constexpr int kDetailQuantiser = 2;
constexpr double kRestSeconds = 0.25;

// What was coded is coded again when it takes so much more than it may, ...
constexpr double kTooMuch = 1.3;
// ... so often.
constexpr int kTries = 2;

void Learn(double& texture, double bits, std::int64_t tiles, int quantiser) {
    if (tiles == 0) return;
    const double found = bits * (quantiser + kOffset) / static_cast<double>(tiles);
    texture += texture == 0 ? found : kLearning * (found - texture);
}

}  // namespace

Painter::Painter(int width, int height, int threads)
    : grid_(width, height), team_(threads), coder_(team_), painted_(grid_.Tiles()) {}

bool Painter::AddResting(std::vector<std::uint8_t>& paint, const ScreenState& state,
                         const FrameRequest& request) {
    const double texture = resting_texture_ > 0 ? resting_texture_ : kUsualTexture;
    const double bits_of_tile = texture / (request.finest + kOffset);
    double bits = request.resting_bits;
    bool waits = false;
    for (std::size_t i = 0; i < paint.size(); ++i) {
        const TileState& tile = state.tiles[i];
        if (tile.painted <= request.finest || paint[i] != 0) continue;
        if (bits < bits_of_tile || request.seconds - tile.changed_at < kRestSeconds) {
            waits = true;
            continue;
        }
        bits -= bits_of_tile;
        paint[i] = kResting;
    }
    return waits;
}

int Painter::QuantiserFor(std::int64_t tiles, double bits, const FrameRequest& request) const {
    const double texture = moving_texture_ > 0 ? moving_texture_ : kUsualTexture;
    const double exact = texture * static_cast<double>(tiles) / std::max(bits, 1.0) - kOffset;
    return static_cast<int>(
        std::clamp(std::ceil(exact), double{1} * request.finest, double{1} * request.coarsest));
}

double Painter::CodeJobs(std::uint8_t kind, PixelView source, PlaneView indices, int mask,
                         bool reconstructs) {
    double bits = 0;
    for (std::size_t i = 0; i < job_count_; ++i) {
        Job& job = jobs_[i];
        if (job.kind != kind) continue;
        const auto coded = coder_.Code({.rect = job.rect, .quantiser = job.quantiser, .mask = mask},
                                       source, indices);
        job.bytes.assign(coded.begin(), coded.end());
        if (reconstructs) coder_.Reconstruct(shown_[i]);
        bits += 8.0 * static_cast<double>(coded.size());
    }
    return bits;
}

void Painter::CodeMoving(PixelView source, PlaneView indices, int mask, const FrameRequest& request,
                         bool reconstructs) {
    std::int64_t tiles = 0;
    for (std::size_t i = 0; i < job_count_; ++i)
        if (jobs_[i].kind == kMoving) tiles += jobs_[i].tiles;
    quantiser_ = 0;
    if (tiles == 0) return;
    quantiser_ = QuantiserFor(tiles, request.moving_bits, request);
    for (int tries = 0;; ++tries) {
        for (std::size_t i = 0; i < job_count_; ++i)
            if (jobs_[i].kind == kMoving) jobs_[i].quantiser = quantiser_;
        const double bits = CodeJobs(kMoving, source, indices, mask, reconstructs);
        if (bits > kTooMuch * request.moving_bits) moving_texture_ = 0;  // is learnt anew
        Learn(moving_texture_, bits, tiles, quantiser_);
        if (bits <= kTooMuch * request.moving_bits || quantiser_ >= request.coarsest ||
            tries == kTries)
            return;
        quantiser_ = std::max(quantiser_ + 1, QuantiserFor(tiles, request.moving_bits, request));
    }
}

Rectangles Painter::Paint(std::span<const std::uint8_t> paint, PixelView source, PlaneView indices,
                          const FrameRequest& request, bool reconstructs, ScreenState& state) {
    for (int y = 0; y < grid_.tile_rows; ++y)
        for (int x = 0; x < grid_.tile_columns; ++x) {
            int pixels = 0;
            for (int cell_y = 2 * y; cell_y < std::min(2 * y + 2, grid_.cell_rows); ++cell_y)
                for (int cell_x = 2 * x; cell_x < std::min(2 * x + 2, grid_.cell_columns); ++cell_x)
                    pixels += state.painted_pixels[grid_.CellPlace(cell_x, cell_y)];
            painted_[grid_.TilePlace(x, y)] = pixels > 0 ? 1 : 0;
        }
    const std::vector<TileCluster> clusters =
        ClusterTiles(paint, painted_, grid_.tile_columns, kMostRectangles);
    job_count_ = clusters.size();
    if (jobs_.size() < job_count_) jobs_.resize(job_count_);
    if (reconstructs && shown_.size() < job_count_) shown_.resize(job_count_);
    std::int64_t resting = 0;
    for (std::size_t i = 0; i < job_count_; ++i) {
        Job& job = jobs_[i];
        const Rect& tiles = clusters[i].tiles;
        const Rect last = grid_.Tile(tiles.x + tiles.width - 1, tiles.y + tiles.height - 1);
        job.rect = grid_.Tile(tiles.x, tiles.y);
        job.rect.width = last.x + last.width - job.rect.x;
        job.rect.height = last.y + last.height - job.rect.y;
        job.kind = clusters[i].kind;
        job.tiles = 0;
        for (int y = tiles.y; y < tiles.y + tiles.height; ++y)
            for (int x = tiles.x; x < tiles.x + tiles.width; ++x)
                job.tiles += painted_[grid_.TilePlace(x, y)];
        job.quantiser =
            job.kind == kResting ? request.finest : std::max(request.finest, kDetailQuantiser);
        if (job.kind == kDetail && request.finest > kDetailQuantiser)
            job.quantiser = kDetailQuantiser;
        if (job.kind == kResting) resting += job.tiles;
    }
    CodeJobs(kDetail, source, indices, *state.mask, reconstructs);
    const double resting_bits = CodeJobs(kResting, source, indices, *state.mask, reconstructs);
    Learn(resting_texture_, resting_bits, resting, request.finest);
    CodeMoving(source, indices, *state.mask, request, reconstructs);

    Rectangles rectangles;
    rectangles.mask = state.mask;
    for (std::size_t i = 0; i < job_count_; ++i) {
        const Rect& tiles = clusters[i].tiles;
        rectangles.list.push_back({jobs_[i].rect, jobs_[i].bytes});
        for (int y = tiles.y; y < tiles.y + tiles.height; ++y)
            for (int x = tiles.x; x < tiles.x + tiles.width; ++x)
                if (painted_[grid_.TilePlace(x, y)] != 0)
                    state.tiles[grid_.TilePlace(x, y)].painted =
                        static_cast<std::uint8_t>(jobs_[i].quantiser);
    }
    return rectangles;
}

}  // namespace codecs::screen
