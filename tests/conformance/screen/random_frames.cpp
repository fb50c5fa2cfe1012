#include "conformance/screen/random_frames.h"

#include <fmt/format.h>

#include <algorithm>

#include "codecs/common/index.h"

namespace screen_conformance {

using namespace codecs::screen;
using codecs::Index;

namespace {

StreamFormat FormatOf(const RandomStreamSettings& settings) {
    wmv9_conformance::Random random(settings.seed, 1);
    StreamFormat format;
    format.width = settings.width;
    format.height = settings.height;
    format.slices = settings.height > 1 ? settings.slices : SliceCut::None;
    if (format.slices == SliceCut::Fixed) format.slice_row = random.Between(1, settings.height - 1);
    for (Colour& colour : format.palette) colour = random.Next() & 0xFFFFFF;
    return format;
}

}  // namespace

struct RandomFrames::Draft {
    FrameParts parts;
    std::vector<Colour> colours;
    std::vector<std::vector<std::uint8_t>> pictures;
    std::vector<std::vector<std::uint32_t>> shown;
};

RandomFrames::RandomFrames(const RandomStreamSettings& settings)
    : settings_(settings),
      format_(FormatOf(settings)),
      random_(settings.seed, 2),
      receiver_(format_),
      new_indices_(Index(settings.width) * Index(settings.height)),
      indices_(new_indices_),
      masks_(new_indices_),
      source_(new_indices_.size()) {}

std::span<const std::uint8_t> RandomFrames::Next() {
    if (!first_ && random_.Roll(20)) {
        const Statistics snapshot = statistics_;
        const auto indices = receiver_.Indices();
        Draft dropped;
        Make(dropped);
        if (!dropped.parts.key) {
            WritePacket(packet_, format_, dropped.parts, statistics_);
            statistics_ = snapshot;
            std::copy_n(indices.pixels, indices_.size(), indices_.begin());
        }
    }
    Draft draft;
    Make(draft);
    WritePacket(packet_, format_, draft.parts, statistics_);
    receiver_.Take(draft.parts, draft.shown);
    first_ = false;
    return packet_;
}

void RandomFrames::Make(Draft& draft) {
    FrameParts& parts = draft.parts;
    parts.key = first_ || (settings_.keys && random_.Roll(15));
    parts.indices = {indices_.data(), format_.width};
    parts.masks = {masks_.data(), format_.width};
    parts.slice_row = format_.height > 1 ? random_.Between(1, format_.height - 1) : 0;
    const PlaneView before = receiver_.Indices();
    std::copy_n(before.pixels, indices_.size(), indices_.begin());
    MakeNewIndices({0, 0, format_.width, format_.height});
    if (parts.key) {
        draft.colours.resize(Index(random_.Between(0, kFreeColours)));
        for (Colour& colour : draft.colours) colour = random_.Next() & 0xFFFFFF;
        parts.colours = draft.colours;
    }
    const bool whole = settings_.rectangles && random_.Roll(10);
    const bool unmasked_whole = whole && random_.Roll(50);
    parts.coding = random_.Roll(25) ? IndexCoding::Runs : IndexCoding::Regions;
    moves_ =
        !parts.key && !unmasked_whole && parts.coding == IndexCoding::Regions && random_.Roll(40);
    if (moves_) {
        vector_ = {random_.Between(-format_.width + 1, format_.width - 1),
                   random_.Between(-format_.height + 1, format_.height - 1)};
        if (random_.Roll(60)) vector_ = {random_.Between(-3, 3), random_.Between(-3, 3)};
        vector_.x = std::clamp(vector_.x, -format_.width, format_.width);
        vector_.y = std::clamp(vector_.y, -format_.height, format_.height);
        parts.vector = vector_;
    }
    if (unmasked_whole) parts.coding = IndexCoding::Regions;
    for (const Rect& slice : SlicesOf(format_, parts.slice_row)) {
        if (parts.coding == IndexCoding::Regions) {
            RegionTree& tree = parts.trees.emplace_back();
            MakeTree(tree, slice, parts.key, 0);
        } else {
            MakeRuns(draft, slice);
        }
    }
    if (settings_.rectangles && (whole || random_.Roll(60))) {
        MakeRectangles(draft, whole);
        if (unmasked_whole)
            parts.rectangles->mask.reset();
        else if (whole && !parts.rectangles->mask)
            parts.rectangles->mask = 0;
    }
    name_ = fmt::format(
        "{}{}{}{}", parts.key ? "key, " : "",
        parts.coding == IndexCoding::Runs ? "runs" : "regions",
        parts.vector ? fmt::format(", vector {},{}", vector_.x, vector_.y) : "",
        parts.rectangles ? fmt::format(", {} rectangles", parts.rectangles->list.size()) : "");
}

// Flat areas, stripes, checkers and noise.
void RandomFrames::MakeNewIndices(const Rect& area) {
    const int kind = random_.Below(4);
    const auto colour = [&] { return random_.Below(settings_.colours); };
    const int a = colour();
    const int b = colour();
    const int period = random_.Between(1, 9);
    for (int y = 0; y < area.height; ++y)
        for (int x = 0; x < area.width; ++x) {
            const int stripe = (kind == 1 ? x / period : x / period + y / period) % 2;
            const int value = kind == 0                      ? a
                              : kind == 3 || random_.Roll(5) ? colour()
                              : stripe == 0                  ? a
                                                             : b;
            new_indices_[Index(y) * Index(area.width) + Index(x)] =
                static_cast<std::uint8_t>(value);
        }
    if (area.width < 8 || area.height < 8) return;
    for (int i = random_.Below(6); i > 0; --i) {
        const Rect rect = SomeRect();
        const int value = colour();
        for (int y = 0; y < rect.height; ++y)
            for (int x = 0; x < rect.width; ++x)
                new_indices_[Index(rect.y + y) * Index(area.width) + Index(rect.x + x)] =
                    static_cast<std::uint8_t>(value);
    }
}

Rect RandomFrames::SomeRect() {
    Rect rect;
    rect.x = random_.Below(format_.width);
    rect.y = random_.Below(format_.height);
    rect.width = random_.Between(1, format_.width - rect.x);
    rect.height = random_.Between(1, format_.height - rect.y);
    return rect;
}

int RandomFrames::MakeTree(RegionTree& tree, const Rect& region, bool key, int depth) {
    const auto number = static_cast<int>(tree.size());
    tree.emplace_back();
    const bool cuts = depth < 6 && random_.Roll(70);
    RegionNode node;
    if (cuts && region.height > 1 && random_.Roll(50)) {
        node.kind = RegionKind::CutAcross;
        node.pivot = random_.Between(1, region.height - 1);
        node.first = MakeTree(tree, {region.x, region.y, region.width, node.pivot}, key, depth + 1);
        node.second = MakeTree(
            tree, {region.x, region.y + node.pivot, region.width, region.height - node.pivot}, key,
            depth + 1);
    } else if (cuts && region.width > 1) {
        node.kind = RegionKind::CutDown;
        node.pivot = random_.Between(1, region.width - 1);
        node.first =
            MakeTree(tree, {region.x, region.y, node.pivot, region.height}, key, depth + 1);
        node.second = MakeTree(
            tree, {region.x + node.pivot, region.y, region.width - node.pivot, region.height}, key,
            depth + 1);
    } else {
        MakeLeaf(node, region, key);
    }
    tree[Index(number)] = node;
    return number;
}

bool RandomFrames::MovesWhole(const Rect& region) const {
    return moves_ && region.x + vector_.x >= 0 && region.y + vector_.y >= 0 &&
           region.x + region.width + vector_.x <= format_.width &&
           region.y + region.height + vector_.y <= format_.height;
}

void RandomFrames::MakeLeaf(RegionNode& leaf, const Rect& region, bool key) {
    constexpr RegionKind kKinds[] = {RegionKind::OneColour, RegionKind::Pixels,
                                     RegionKind::KeptWhole, RegionKind::MovedWhole,
                                     RegionKind::MixedPixels};
    leaf.kind = kKinds[random_.Below(key ? 2 : 5)];
    if (leaf.kind == RegionKind::MovedWhole && !MovesWhole(region))
        leaf.kind = RegionKind::MixedPixels;
    if (leaf.kind == RegionKind::OneColour)
        new_indices_[Index(region.y) * Index(format_.width) + Index(region.x)] =
            static_cast<std::uint8_t>(random_.Below(settings_.colours));
    const std::uint8_t colour =
        new_indices_[Index(region.y) * Index(format_.width) + Index(region.x)];
    for (int y = region.y; y < region.y + region.height; ++y)
        for (int x = region.x; x < region.x + region.width; ++x) {
            if (leaf.kind == RegionKind::OneColour)
                new_indices_[Index(y) * Index(format_.width) + Index(x)] = colour;
            SetPixel(x, y,
                     leaf.kind == RegionKind::KeptWhole     ? kKept
                     : leaf.kind == RegionKind::MovedWhole  ? kMoved
                     : leaf.kind == RegionKind::MixedPixels ? SomeMask(x, y)
                                                            : kNew);
        }
}

PixelMask RandomFrames::SomeMask(int x, int y) {
    const int choice = random_.Below(8);
    if (choice == 0) return kNew;
    const bool even = ((x >> 2) + (y >> 1)) % 3 == 0;
    if (MovesWhole({x, y, 1, 1}) && even) return kMoved;
    return choice == 1 || even ? kNew : kKept;
}

void RandomFrames::SetPixel(int x, int y, std::uint8_t mask) {
    const std::size_t place = Index(y) * Index(format_.width) + Index(x);
    const PlaneView before = receiver_.Indices();
    masks_[place] = mask;
    indices_[place] = mask == kNew    ? new_indices_[place]
                      : mask == kKept ? before.At(x, y)
                                      : before.At(x + vector_.x, y + vector_.y);
}

void RandomFrames::MakeRuns(Draft& draft, const Rect& slice) {
    const bool key = draft.parts.key;
    Rect area = slice;
    if (!key) {
        area.x = random_.Below(format_.width);
        area.width = random_.Between(1, format_.width - area.x);
        area.y += random_.Below(slice.height);
        area.height = random_.Between(1, slice.y + slice.height - area.y);
    }
    draft.parts.areas.push_back(area);
    for (int y = slice.y; y < slice.y + slice.height; ++y)
        for (int x = slice.x; x < slice.x + slice.width; ++x) {
            const bool inside =
                x >= area.x && y >= area.y && x < area.x + area.width && y < area.y + area.height;
            SetPixel(x, y, key || (inside && SomeMask(x, y) != kKept) ? kNew : kKept);
        }
}

void RandomFrames::MakeRectangles(Draft& draft, bool whole) {
    Rectangles rectangles;
    rectangles.whole = whole;
    if (random_.Roll(60)) rectangles.mask = random_.Below(settings_.colours);
    std::vector<Rect> rects;
    if (whole)
        rects.push_back({0, 0, format_.width, format_.height});
    else
        for (int i = random_.Below(static_cast<int>(kMostRectangles) + 1); i > 0; --i)
            rects.push_back(SomeRect());
    std::ranges::sort(rects, {}, &Rect::x);
    const std::uint32_t colour = random_.Next() & 0xFFFFFF;
    const int noise = random_.Pick({0, 3, 255});
    for (std::uint32_t& pixel : source_) {
        const auto extra = static_cast<std::uint32_t>(random_.Below(noise + 1));
        pixel = (colour + extra * 0x010307) & 0xFFFFFF;
    }
    for (const Rect& rect : rects) {
        if (!whole && random_.Roll(10)) {
            draft.pictures.emplace_back();
            draft.shown.emplace_back();
            continue;
        }
        const int quantiser = random_.Between(1, 31);
        const RectangleRequest request{rect, quantiser, quantiser <= 8 && random_.Roll(30),
                                       rectangles.mask};
        const auto coded = rectangle_coder_.Code(request, {source_.data(), format_.width},
                                                 {indices_.data(), format_.width});
        draft.pictures.emplace_back(coded.begin(), coded.end());
        rectangle_coder_.Reconstruct(draft.shown.emplace_back());
    }
    for (std::size_t i = 0; i < rects.size(); ++i)
        rectangles.list.push_back({rects[i], draft.pictures[i]});
    draft.parts.rectangles = std::move(rectangles);
}

}  // namespace screen_conformance
