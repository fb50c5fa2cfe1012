#include "codecs/wmv9/motion_search.h"

#include <algorithm>
#include <limits>

#include "codecs/wmv9/prediction.h"

namespace codecs::wmv9 {
namespace {

constexpr int kWhole = 4;  // quarters

MotionVector Moved(MotionVector v, int x, int y) {
    return {static_cast<std::int16_t>(v.x + x), static_cast<std::int16_t>(v.y + y)};
}

// To the nearest whole sample within the window.
MotionVector Rounded(MotionVector v, const VectorWindow& window) {
    const auto round = [](int value, int least, int largest) {
        const int lowest = (least + kWhole - 1) & ~(kWhole - 1);
        const int highest = largest & ~(kWhole - 1);
        return static_cast<std::int16_t>(
            std::clamp((value + kWhole / 2) & ~(kWhole - 1), lowest, highest));
    };
    return {round(v.x, window.least.x, window.largest.x),
            round(v.y, window.least.y, window.largest.y)};
}

}  // namespace

struct MotionSearch::State {
    SearchBlock block;
    MotionVector predictor;
    VectorWindow window;
    const std::uint8_t* source = nullptr;
    std::ptrdiff_t stride = 0;
    FoundVector best;
};

std::uint32_t MotionSearch::BitCost(const State& state, MotionVector vector) const {
    const int bits =
        estimates_.vectors.Of(vector.x - state.predictor.x, vector.y - state.predictor.y);
    return quantiser_.search_lambda * static_cast<std::uint32_t>(bits) >> 4;
}

void MotionSearch::TryWhole(State& state, MotionVector vector) const {
    const SearchBlock& block = state.block;
    const Plane& plane = reference_[0];
    const std::uint32_t difference =
        picture_.kernels.sad(state.source, state.stride,
                             plane.At(block.left + (vector.x >> 2), block.top + (vector.y >> 2)),
                             plane.stride, block.size, block.size);
    const std::uint32_t cost = difference + BitCost(state, vector);
    if (cost < state.best.cost) state.best = {vector, difference, cost};
}

// Whole vectors; true when one of them is the best so far.
bool MotionSearch::TryFour(State& state, const MotionVector (&around)[4]) const {
    const MotionVector before = state.best.vector;
    const bool all = std::all_of(std::begin(around), std::end(around),
                                 [&](MotionVector v) { return state.window.Holds(v); });
    if (!all || state.block.size != 16) {
        for (const MotionVector v : around)
            if (state.window.Holds(v)) TryWhole(state, v);
        return !(state.best.vector == before);
    }
    const Plane& plane = reference_[0];
    const std::uint8_t* places[4];
    std::uint32_t differences[4];
    for (int i = 0; i < 4; ++i)
        places[i] =
            plane.At(state.block.left + (around[i].x >> 2), state.block.top + (around[i].y >> 2));
    picture_.kernels.sad_of_four(state.source, state.stride, places, plane.stride, differences);
    for (int i = 0; i < 4; ++i) {
        const std::uint32_t cost = differences[i] + BitCost(state, around[i]);
        if (cost < state.best.cost) state.best = {around[i], differences[i], cost};
    }
    return !(state.best.vector == before);
}

void MotionSearch::Whole(State& state, std::span<const MotionVector> starts) const {
    state.best.cost = std::numeric_limits<std::uint32_t>::max();
    TryWhole(state, Rounded(state.predictor, state.window));
    for (const MotionVector start : starts) {
        const MotionVector rounded = Rounded(start, state.window);
        if (!(rounded == state.best.vector)) TryWhole(state, rounded);
    }
    if (preset_.hexagon) {
        for (int round = 0; round < preset_.rounds; ++round) {
            const MotionVector c = state.best.vector;
            const MotionVector wide[4] = {Moved(c, -4, -8), Moved(c, 4, -8), Moved(c, -4, 8),
                                          Moved(c, 4, 8)};
            bool better = TryFour(state, wide);
            for (const MotionVector v : {Moved(c, -8, 0), Moved(c, 8, 0)}) {
                if (!state.window.Holds(v)) continue;
                TryWhole(state, v);
                better = better || state.best.vector == v;
            }
            if (!better) break;
        }
    }
    for (int round = 0; round < preset_.rounds; ++round) {
        const MotionVector c = state.best.vector;
        const MotionVector near[4] = {Moved(c, -4, 0), Moved(c, 4, 0), Moved(c, 0, -4),
                                      Moved(c, 0, 4)};
        if (!TryFour(state, near)) break;
    }
}

std::uint32_t MotionSearch::Measure(const State& state, MotionVector vector) const {
    const SearchBlock& block = state.block;
    const auto measure = preset_.hadamard ? picture_.kernels.hadamard : picture_.kernels.sad;
    const Plane& plane = reference_[0];
    if ((vector.x & 3) == 0 && (vector.y & 3) == 0)
        return measure(state.source, state.stride,
                       plane.At(block.left + (vector.x >> 2), block.top + (vector.y >> 2)),
                       plane.stride, block.size, block.size);
    alignas(64) std::uint8_t samples[16 * 16];
    PredictLuma(picture_, reference_, vector, block.left, block.top, block.size, samples, 16);
    return measure(state.source, state.stride, samples, 16, block.size, block.size);
}

bool MotionSearch::TryFraction(State& state, MotionVector vector) const {
    if (!state.window.Holds(vector)) return false;
    const std::uint32_t bits = BitCost(state, vector);
    if (bits >= state.best.cost) return false;
    const std::uint32_t difference = Measure(state, vector);
    if (difference + bits >= state.best.cost) return false;
    state.best = {vector, difference, difference + bits};
    return true;
}

void MotionSearch::Fractions(State& state, int step) const {
    for (int round = 0; round < preset_.fraction_rounds; ++round) {
        const MotionVector c = state.best.vector;
        bool better = false;
        for (const MotionVector v :
             {Moved(c, -step, 0), Moved(c, step, 0), Moved(c, 0, -step), Moved(c, 0, step)})
            better = TryFraction(state, v) || better;
        if (preset_.square)
            for (const MotionVector v : {Moved(c, -step, -step), Moved(c, step, -step),
                                         Moved(c, -step, step), Moved(c, step, step)})
                better = TryFraction(state, v) || better;
        if (!better) break;
    }
}

FoundVector MotionSearch::Search(const SearchBlock& block, MotionVector predictor,
                                 std::span<const MotionVector> starts) const {
    State state;
    state.block = block;
    state.predictor = predictor;
    state.window = WindowOf(picture_, block.left, block.top);
    state.source = picture_.source[0].At(block.left, block.top);
    state.stride = picture_.source[0].stride;
    Whole(state, starts);
    if (preset_.hadamard) {
        state.best.difference = Measure(state, state.best.vector);
        state.best.cost = state.best.difference + BitCost(state, state.best.vector);
    }
    // The predictor itself is nearly free.
    if (state.window.Holds(predictor) && !(predictor == state.best.vector))
        TryFraction(state, predictor);
    Fractions(state, 2);
    if (!picture_.header.HalfVectors()) Fractions(state, 1);
    return state.best;
}

}  // namespace codecs::wmv9
