#include "conformance/wmv9/scenes.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "conformance/wmv9/random.h"

namespace wmv9_conformance {

using codecs::Index;
using codecs::wmv9::PictureView;

namespace {

PlanarPicture Sized(int width, int height) {
    PlanarPicture picture{width, height, {}};
    const std::size_t luma = Index(width) * Index(height);
    picture.planes = {std::vector<std::uint8_t>(luma), std::vector<std::uint8_t>(luma / 4),
                      std::vector<std::uint8_t>(luma / 4)};
    return picture;
}

std::uint8_t Clipped(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// Waves that pass at different speeds, with some grain; in parts of a period a sample.
double Texture(int plane, int x, int y, int time, int grain) {
    const double scale = plane == 0 ? 1 : 2;
    const double right = scale * x - 1.75 * time;
    const double down = scale * y + 0.5 * time;
    return 128 + 60 * std::sin(0.21 * right + 0.02 * down) + 40 * std::sin(0.33 * down + plane) +
           20 * std::sin(0.9 * right) * std::cos(0.7 * down) + grain;
}

// Blocks of any level, flat ones and grainy ones side by side.
double Patches(Random block, int noise) {
    constexpr int kGrains[] = {0, 0, 2, 9, 40, 255};
    const int level = block.Below(256);
    return level + (noise - 128) * block.Pick(kGrains) / 256.0;
}

std::uint8_t Sample(Content content, int plane, int x, int y, int time, std::uint64_t patches,
                    Random& random) {
    constexpr int kCells[] = {1, 2, 3, 4, 8};
    const auto noise = static_cast<int>(random.Next() & 255U);
    switch (content) {
        case Content::Texture:
            return Clipped(Texture(plane, x, y, time, noise % 9 - 4));
        case Content::Noise:
            return static_cast<std::uint8_t>(noise);
        case Content::BlackAndWhite:
            return noise < 128 ? 0 : 255;
        case Content::Flat:
            return static_cast<std::uint8_t>(60 + 40 * plane + time);
        case Content::Checkers: {
            const int cell = kCells[time % 5];
            return ((x + time) / cell + y / cell) % 2 == 0 ? 0 : 255;
        }
        case Content::Patches:
            return Clipped(Patches(Random(patches, plane, x / 8, y / 8), noise));
        case Content::Fade:
            break;
    }
    const double light = 1 - 0.1 * (time % 8);
    const double middle = plane == 0 ? 0 : 128;
    return Clipped(middle + light * (Texture(plane, x, y, time / 2, noise % 3) - middle));
}

}  // namespace

PictureView PlanarPicture::View() const {
    return {{planes[0].data(), planes[1].data(), planes[2].data()}, {width, width / 2, width / 2}};
}

PlanarPicture MakePicture(Content content, int width, int height, int time, std::uint64_t seed) {
    PlanarPicture picture = Sized(width, height);
    Random random(seed, time);
    const std::uint64_t patches = random.Next();
    for (int plane = 0; plane < 3; ++plane) {
        const int columns = plane == 0 ? width : width / 2;
        auto sample = picture.planes[Index(plane)].begin();
        for (int i = 0; sample != picture.planes[Index(plane)].end(); ++sample, ++i)
            *sample = Sample(content, plane, i % columns, i / columns, time, patches, random);
    }
    return picture;
}

PlanarPicture CopyOf(const PictureView& view, int width, int height) {
    PlanarPicture picture = Sized(width, height);
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const int columns = plane == 0 ? width : width / 2;
        const int rows = plane == 0 ? height : height / 2;
        for (int y = 0; y < rows; ++y)
            std::copy_n(view.planes[plane] + y * view.strides[plane], columns,
                        picture.planes[plane].begin() + std::ptrdiff_t{y} * columns);
    }
    return picture;
}

}  // namespace wmv9_conformance
