#include "codecs/wmv9/picture_coder.h"

#include <cstring>

#include "codecs/common/index.h"

namespace codecs::wmv9 {

PictureCoder::PictureCoder(int width, int height, int threads)
    : rows_(Index(height)),
      planes_(width, height),
      filter_(width, height),
      overlap_(width, height),
      wavefront_(threads) {}

void PictureCoder::Analyse(Picture& picture, const ModeDecision& mode_decision) {
    const Estimates estimates(picture.header);
    for (RowOutput& row : rows_) row.Clear();
    wavefront_.Run(picture.Width(), picture.Height(), [&](int x, int y) {
        Candidate candidate;
        mode_decision.Choose(picture, estimates, x, y, candidate);
        Commit(picture, candidate, x, y);
    });
    if (picture.Overlaps() && !picture.header.IsB()) overlap_.Run(picture);
    if (picture.sequence.loop_filter) filter_.Run(picture);
    planes_.Take(picture.grid);
}

void PictureCoder::Commit(Picture& picture, const Candidate& candidate, int x, int y) {
    picture.grid.At(x, y) = candidate.macroblock;
    if (candidate.macroblock.intra) {
        picture.grid.Edges(x, y) = candidate.edges;
        if (picture.Overlaps()) overlap_.Take(x, y, candidate.residual);
    }
    for (int n = 0; n < kBlocks; ++n) {
        const BlockPlace& place = kBlockPlaces[Index(n)];
        const Plane& plane = picture.result[place.plane];
        const int unit = place.plane == 0 ? 16 : 8;
        std::uint8_t* to = plane.At(unit * x + place.x, unit * y + place.y);
        const std::uint8_t* from = candidate.samples.Block(n);
        for (int row = 0; row < 8; ++row, to += plane.stride, from += place.stride)
            std::memcpy(to, from, 8);
    }
    rows_[Index(y)].Add(picture, candidate.macroblock, candidate.levels);
}

TableCounts PictureCoder::Counts() const {
    TableCounts counts;
    for (const RowOutput& row : rows_) counts += row.Counts();
    return counts;
}

std::size_t PictureCoder::Write(const Picture& picture) {
    out_.Clear();
    return WritePicture(out_, picture, planes_, rows_);
}

}  // namespace codecs::wmv9
