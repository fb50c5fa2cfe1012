#include "codecs/wmv9/frame.h"

#include <algorithm>
#include <cstring>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr std::size_t kAlignment = 64;

}  // namespace

Frame::Frame(int width, int height) {
    for (std::size_t i = 0; i < planes_.size(); ++i) {
        Plane& plane = planes_[i];
        const int unit = i == 0 ? 16 : 8;
        const int margin = i == 0 ? kMargin : kMargin / 2;
        plane.width = width * unit;
        plane.height = height * unit;
        // Neighbouring rows at a multiple of a large power of two would share cache lines.
        plane.stride = (plane.width + 2 * margin + 63) / 64 * 64 + 64;
        memory_[i].resize(static_cast<std::size_t>(plane.stride) *
                              Index(plane.height + 2 * margin) +
                          Index(margin) + kAlignment);
        std::uint8_t* const origin = memory_[i].data() + margin * plane.stride + margin +
                                     static_cast<std::ptrdiff_t>(kAlignment);
        plane.samples = origin - reinterpret_cast<std::uintptr_t>(origin) % kAlignment;
    }
}

void Frame::Load(const PictureView& picture, int width, int height, int first, int end) {
    for (std::size_t i = 0; i < planes_.size(); ++i) {
        const Plane& plane = planes_[i];
        const int unit = i == 0 ? 16 : 8;
        const int columns = i == 0 ? width : width / 2;
        const int rows = i == 0 ? height : height / 2;
        for (int y = unit * first; y < unit * end; ++y) {
            std::uint8_t* const row = plane.At(0, y);
            std::memcpy(row, picture.planes[i] + std::min(y, rows - 1) * picture.strides[i],
                        Index(columns));
            std::memset(row + columns, row[columns - 1], Index(plane.width - columns));
        }
    }
}

void Frame::Extend() {
    for (std::size_t i = 0; i < planes_.size(); ++i) {
        const Plane& plane = planes_[i];
        const int margin = i == 0 ? kMargin : kMargin / 2;
        const auto side = Index(margin);
        for (int y = 0; y < plane.height; ++y) {
            std::memset(plane.At(-margin, y), *plane.At(0, y), side);
            std::memset(plane.At(plane.width, y), *plane.At(plane.width - 1, y), side);
        }
        const std::size_t whole = Index(plane.width) + 2 * side;
        for (int y = 1; y <= margin; ++y) {
            std::memcpy(plane.At(-margin, -y), plane.At(-margin, 0), whole);
            std::memcpy(plane.At(-margin, plane.height - 1 + y),
                        plane.At(-margin, plane.height - 1), whole);
        }
    }
}

PictureView Frame::View() const {
    PictureView view;
    for (std::size_t i = 0; i < planes_.size(); ++i) {
        view.planes[i] = planes_[i].samples;
        view.strides[i] = planes_[i].stride;
    }
    return view;
}

}  // namespace codecs::wmv9
