// Frames of random decisions, which reach what an encoder that chooses well never does.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codecs/common/task_team.h"
#include "codecs/screen/packet.h"
#include "codecs/screen/receiver.h"
#include "codecs/screen/rectangle_coder.h"
#include "conformance/wmv9/random.h"

namespace screen_conformance {

struct RandomStreamSettings {
    std::uint64_t seed = 0;
    int width = 1;
    int height = 1;
    int colours = 256;  // that are used, 2 to 256
    bool rectangles = false;
    bool keys = true;  // after the first frame
    codecs::screen::SliceCut slices = codecs::screen::SliceCut::None;
};

class RandomFrames {
  public:
    explicit RandomFrames(const RandomStreamSettings& settings);

    const codecs::screen::StreamFormat& Format() const { return format_; }

    /// The packet of the next frame. Some frames are coded and thrown away before it.
    std::span<const std::uint8_t> Next();
    std::span<const std::uint32_t> Shown() const { return receiver_.Shown(); }
    /// Of the frame coded last.
    const std::string& Name() const { return name_; }

  private:
    struct Draft;

    void Make(Draft& draft);
    void MakeNewIndices(const codecs::screen::Rect& area);
    int MakeTree(codecs::screen::RegionTree& tree, const codecs::screen::Rect& region, bool key,
                 int depth);
    void MakeLeaf(codecs::screen::RegionNode& leaf, const codecs::screen::Rect& region, bool key);
    codecs::screen::PixelMask SomeMask(int x, int y);
    void SetPixel(int x, int y, std::uint8_t mask);
    void MakeRuns(Draft& draft, const codecs::screen::Rect& slice);
    void MakeRectangles(Draft& draft, bool whole);
    codecs::screen::Rect SomeRect();
    bool MovesWhole(const codecs::screen::Rect& region) const;

    const RandomStreamSettings settings_;
    codecs::screen::StreamFormat format_;
    wmv9_conformance::Random random_;
    codecs::TaskTeam team_{1};
    codecs::screen::RectangleCoder rectangle_coder_{team_};
    codecs::screen::Receiver receiver_;
    codecs::screen::Statistics statistics_;
    codecs::screen::Vector vector_;
    bool moves_ = false;
    std::vector<std::uint8_t> new_indices_;  // were all new
    std::vector<std::uint8_t> indices_;
    std::vector<std::uint8_t> masks_;
    std::vector<std::uint32_t> source_;
    std::vector<std::uint8_t> packet_;
    std::string name_;
    bool first_ = true;
};

}  // namespace screen_conformance
