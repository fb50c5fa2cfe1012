// Calls an encoder and shows its stream to the independent decoder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codecs/wmv9/encoder.h"
#include "conformance/wmv9/scenes.h"

namespace wmv9_conformance {

enum class Action : std::uint8_t { Encode, Recode, Forget };

struct Call {
    Action action = Action::Encode;
    int place = 0;  // among the pictures that are shown
    codecs::wmv9::PictureRequest request;
};
using Calls = std::vector<Call>;

struct Scene {
    Content content = Content::Texture;
    int cut = 1000;  // from that picture on, noise
};

struct Kept {
    std::vector<std::uint8_t> data;
    PlanarPicture shown;
    int place = 0;
    codecs::wmv9::PictureKind kind = codecs::wmv9::PictureKind::kI;
    double quantiser = 0;
};

struct Outcome {
    std::vector<Kept> pictures;  // in coding order, without those forgotten or coded again
    std::string fault;           // the first one that the decoder found; empty = none
};

std::vector<std::vector<std::uint8_t>> DataOf(const Outcome& outcome);

Outcome EncodeAll(const codecs::wmv9::EncoderSettings& settings, const Scene& scene,
                  const Calls& calls);

/// B pictures between P pictures and, now and then, I pictures; in coding order, the quantisers one
/// after the other.
Calls Gops(int pictures, int b_pictures, const std::vector<double>& quantisers);

}  // namespace wmv9_conformance
