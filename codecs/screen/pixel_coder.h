// Codes values of pixels by the pixels around them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "codecs/screen/adaptive_model.h"
#include "codecs/screen/plane_view.h"

namespace codecs::screen {

/// For palette indices, or for pixel masks. A copy is a snapshot.
class PixelCoder {
  public:
    /// @param cached  values that the cache's model tells apart: 8 for indices, 3 for masks
    explicit PixelCoder(int cached);

    void Reset();

    /// Without looking around.
    void CodeDirect(ArithmeticCoder& out, int value) { CodeExcept(out, value, {}); }
    /// The pixel at (x, y) of a region, not its first one; only pixels of the region that come
    /// before it in raster order are looked at.
    void CodeInContext(ArithmeticCoder& out, PlaneView plane, const Rect& region, int x, int y);

  private:
    static constexpr int kLayers = 15;
    static constexpr int kVariants = 4;
    static constexpr int kMostCached = 12;

    void CodeExcept(ArithmeticCoder& out, int value, std::span<const std::uint8_t> excluded);

    int cached_;
    std::array<std::uint8_t, kMostCached> cache_{};
    AdaptiveModel<9> cache_model_;
    AdaptiveModel<256> full_model_;
    std::array<std::array<AdaptiveModel<5>, kVariants>, kLayers> context_models_;
};

}  // namespace codecs::screen
