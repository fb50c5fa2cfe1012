#include "codecs/screen/receiver.h"

#include <algorithm>

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

constexpr std::uint32_t kGrey = 0x808080;

}  // namespace

Receiver::Receiver(const StreamFormat& format)
    : format_(format),
      indices_(Index(format.width) * Index(format.height)),
      shown_(indices_.size()) {}

void Receiver::Take(const FrameParts& frame, std::span<const std::vector<std::uint32_t>> pictures) {
    if (frame.key) std::ranges::copy(frame.colours, format_.palette.begin() + 1);
    if (frame.rectangles && frame.rectangles->ReplaceIndices()) {
        std::ranges::fill(indices_, std::uint8_t{0});
    } else {
        std::ptrdiff_t moved = 0;
        if (frame.vector) {
            before_ = shown_;
            moved = frame.vector->x + std::ptrdiff_t{frame.vector->y} * format_.width;
        }
        std::copy_n(frame.indices.pixels, indices_.size(), indices_.begin());
        for (std::size_t i = 0; i < indices_.size(); ++i) {
            if (frame.key || frame.masks.pixels[i] == kNew)
                shown_[i] = format_.palette[indices_[i]];
            else if (frame.masks.pixels[i] == kMoved)
                shown_[i] =
                    before_[static_cast<std::size_t>(static_cast<std::ptrdiff_t>(i) + moved)];
        }
    }
    if (!frame.rectangles) return;
    for (std::size_t i = 0; i < frame.rectangles->list.size(); ++i)
        Paint(frame.rectangles->list[i], frame.rectangles->mask, pictures[i]);
}

void Receiver::Paint(const CodedRectangle& coded, std::optional<int> mask,
                     std::span<const std::uint32_t> picture) {
    const Rect& rect = coded.rect;
    for (int y = 0; y < rect.height; ++y)
        for (int x = 0; x < rect.width; ++x) {
            const std::size_t place = Index(rect.y + y) * Index(format_.width) + Index(rect.x + x);
            if (mask && indices_[place] != *mask) continue;
            shown_[place] =
                coded.picture.empty() ? kGrey : picture[Index(y) * Index(rect.width) + Index(x)];
        }
}

}  // namespace codecs::screen
