// How often symbols have come so far.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "codecs/common/index.h"
#include "codecs/screen/arithmetic_coder.h"

namespace codecs::screen {

/// What the sum of a model's weights may come to before they are halved.
enum class ModelLimit : std::uint8_t { Low, High, Adaptive };

/// Symbols in the order of their weights, as decoders keep them. Holds no memory elsewhere, so that
/// a copy is a snapshot.
template <std::size_t kMost>
class AdaptiveModel {
  public:
    AdaptiveModel() = default;
    AdaptiveModel(int symbols, ModelLimit limit) : symbols_(symbols), limit_(limit) { Reset(); }

    void Reset() {
        for (int r = 0; r <= symbols_; ++r) {
            weight_[Index(r)] = r == 0 ? 0 : 1;
            above_[Index(r)] = static_cast<std::uint16_t>(symbols_ - r);
            if (r == 0) continue;
            symbol_[Index(r)] = static_cast<std::uint16_t>(r - 1);
            rank_[Index(r - 1)] = static_cast<std::uint16_t>(r);
        }
    }

    void Code(ArithmeticCoder& out, int symbol) {
        const int rank = rank_[Index(symbol)];
        out.Interval(above_[Index(rank)], above_[Index(rank - 1)], above_[0]);
        Count(rank);
    }

  private:
    static constexpr std::uint32_t kMostTotal = 16383;

    void Count(int rank) {
        if (weight_[Index(rank)] == weight_[Index(rank - 1)]) {
            int first = rank - 1;
            while (weight_[Index(first - 1)] == weight_[Index(rank)]) --first;
            std::swap(symbol_[Index(first)], symbol_[Index(rank)]);
            rank_[symbol_[Index(first)]] = static_cast<std::uint16_t>(first);
            rank_[symbol_[Index(rank)]] = static_cast<std::uint16_t>(rank);
            rank = first;
        }
        ++weight_[Index(rank)];
        for (int r = 0; r < rank; ++r) ++above_[Index(r)];
        const std::uint32_t most = Most();
        while (above_[0] > most) Halve();
    }

    std::uint32_t Most() const {
        const auto symbols = static_cast<std::uint32_t>(symbols_);
        if (limit_ == ModelLimit::Low) return 15 * symbols;
        if (limit_ == ModelLimit::High) return 50 * symbols;
        const std::uint32_t twice = 2U * weight_[Index(symbols_)] - 1;
        if (twice == 1) return kMostTotal;  // four times the sum, at least
        return std::min((twice / 2 + 4 * std::uint32_t{above_[0]}) / twice, kMostTotal);
    }

    void Halve() {
        std::uint32_t sum = 0;
        for (int r = symbols_; r >= 0; --r) {
            above_[Index(r)] = static_cast<std::uint16_t>(sum);
            weight_[Index(r)] =
                static_cast<std::uint16_t>(r == 0 ? 0 : (weight_[Index(r)] + 1) / 2);
            sum += weight_[Index(r)];
        }
    }

    int symbols_ = 0;
    ModelLimit limit_ = ModelLimit::Low;
    // By rank, from 1 on; a weight of 0 stands before the first one.
    std::array<std::uint16_t, kMost + 1> weight_{};
    std::array<std::uint16_t, kMost + 1> above_{};  // sum of the weights of the ranks after it
    std::array<std::uint16_t, kMost + 1> symbol_{};
    std::array<std::uint16_t, kMost> rank_{};
};

}  // namespace codecs::screen
