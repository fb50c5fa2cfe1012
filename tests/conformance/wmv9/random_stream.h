// Streams that are legal and use all that the format has, at random.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "codecs/wmv9/encoder.h"
#include "conformance/wmv9/scenes.h"

namespace wmv9_conformance {

struct RandomStreamSettings {
    std::uint64_t seed = 0;
    int width = 16;
    int height = 16;
    Content content = Content::Texture;
};

/// Follows from its settings alone.
class RandomStream {
  public:
    explicit RandomStream(const RandomStreamSettings& settings);
    ~RandomStream();

    std::array<std::uint8_t, 4> SequenceHeader() const;
    struct Coded {
        std::span<const std::uint8_t> data;  // valid until the next call
        codecs::wmv9::PictureView shown;
        int place;  // among the pictures that are shown
        std::string name;
    };
    /// The next picture in coding order.
    Coded Next();

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace wmv9_conformance
