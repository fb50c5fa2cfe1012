#include "codecs/wmv9/intra.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wmv9/dc_codes.h"
#include "codecs/wmv9/levels.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBias = 128;
constexpr int kMeanDc = 1024;
constexpr std::int32_t kHalfScale = 0x20000;
constexpr int kScaleBits = 18;

enum class Side : std::uint8_t { None, Left, Above };

// What a block nearby offers to predict from.
struct Offer {
    const BlockEdge* edge = nullptr;  // null = nothing
    int quantiser = 1;
};

struct Offers {
    Offer left;
    Offer above;
    Offer corner;
};

struct Prediction {
    int dc = 0;
    Side side = Side::None;  // where AC levels are predicted from
};

int Rescaled(int value, int from, int to) {
    const std::int64_t scaled = std::int64_t{value} * from * kPredictorScale[Index(to - 1)];
    return static_cast<int>((scaled + kHalfScale) >> kScaleBits);
}

class IntraCoder {
  public:
    IntraCoder(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
               int x, int y, Candidate& candidate)
        : picture_(picture),
          estimates_(estimates),
          quantiser_(quantiser),
          x_(x),
          y_(y),
          candidate_(candidate) {
        const int bias = Bias();
        for (int n = 0; n < kBlocks; ++n) {
            Block samples;
            Differences(n, bias, samples);
            picture_.kernels.forward(Shape::Whole8x8, coefficients_[n].data(), samples.data());
            const std::int64_t dc = coefficients_[n][0];
            energies_[Index(n)] = EnergyOf(coefficients_[n]) - dc * dc;
        }
    }

    void Code(bool predicted, bool rd) {
        Macroblock& macroblock = candidate_.macroblock;
        macroblock = {};
        macroblock.intra = true;
        macroblock.ac_predicted = predicted;
        macroblock.quantiser = static_cast<std::uint8_t>(quantiser_.number);
        candidate_.bits = 1;
        candidate_.error = 0;
        for (int n = 0; n < kBlocks; ++n) CodeBlock(n, rd);
        candidate_.bits += PatternBits();
    }

    // What Code leaves.
    struct Coded {
        Macroblock macroblock;
        std::array<BlockEdge, kBlocks> edges;
        Blocks levels;
        Blocks whole;
        int bits;
        std::int64_t error;
    };
    Coded Take() const {
        return {candidate_.macroblock, candidate_.edges, candidate_.levels, whole_,
                candidate_.bits,       candidate_.error};
    }
    void Put(const Coded& coded) {
        candidate_.macroblock = coded.macroblock;
        candidate_.edges = coded.edges;
        candidate_.levels = coded.levels;
        whole_ = coded.whole;
        candidate_.bits = coded.bits;
        candidate_.error = coded.error;
    }

    // Whether what was coded with predicted levels differs from what is coded without.
    bool Predicts() const { return picture_.header.IsI() || predicts_; }

    void Reconstruct() {
        const int bias = Bias();
        for (int n = 0; n < kBlocks; ++n) {
            Block restored;
            Block residual;
            picture_.kernels.restore(restored.data(), whole_[n].data(), quantiser_.step, 0);
            const int dc = candidate_.edges[Index(n)].dc;
            restored[0] = static_cast<std::int16_t>(dc * quantiser_.dc_step);
            picture_.kernels.inverse(Shape::Whole8x8, residual.data(), restored.data());
            picture_.kernels.put(candidate_.samples.Block(n), kBlockPlaces[Index(n)].stride,
                                 residual.data(), bias);
            if (picture_.Overlaps()) candidate_.residual[n] = residual;
        }
    }

  private:
    int Bias() const { return picture_.header.IsI() && !picture_.Overlaps() ? 0 : kBias; }

    void Differences(int n, int bias, Block& out) const {
        const std::uint8_t* row = SourceBlock(picture_.source, x_, y_, n);
        const std::ptrdiff_t stride = picture_.source[kBlockPlaces[Index(n)].plane].stride;
        for (int y = 0; y < 8; ++y, row += stride)
            for (int x = 0; x < 8; ++x)
                out[Index(8 * y + x)] = static_cast<std::int16_t>(row[x] - bias);
    }

    // The block `left` columns and `up` rows of blocks away in the same plane.
    Offer Beside(int n, int left, int up) const {
        const bool luma = n < 4;
        const int column = (luma ? 2 * x_ + (n & 1) : x_) - left;
        const int row = (luma ? 2 * y_ + (n >> 1) : y_) - up;
        if (column < 0 || row < 0) return {};
        const int x = luma ? column >> 1 : column;
        const int y = luma ? row >> 1 : row;
        const std::size_t block = luma ? Index((row & 1) * 2 + (column & 1)) : Index(n);
        if (x == x_ && y == y_) return {&candidate_.edges[block], quantiser_.number};
        const Macroblock& other = picture_.grid.At(x, y);
        if (!other.intra) return {};
        return {&picture_.grid.Edges(x, y)[block], other.quantiser};
    }

    int Dc(const Offer& offer) const {
        if (offer.quantiser == quantiser_.number) return offer.edge->dc;
        return Rescaled(offer.edge->dc, kDcStep[Index(offer.quantiser)], quantiser_.dc_step);
    }

    Prediction PredictInI(const Offers& offers) const {
        const int outside =
            picture_.Overlaps() ? 0 : (kMeanDc + quantiser_.dc_step / 2) / quantiser_.dc_step;
        const int a = offers.above.edge == nullptr ? outside : Dc(offers.above);
        const int b = offers.corner.edge == nullptr ? outside : Dc(offers.corner);
        const int c = offers.left.edge == nullptr ? outside : Dc(offers.left);
        if (std::abs(a - b) <= std::abs(b - c)) return {c, Side::Left};
        return {a, Side::Above};
    }

    Prediction PredictAmongInter(const Offers& offers) const {
        const bool above = offers.above.edge != nullptr;
        const bool left = offers.left.edge != nullptr;
        const int a = above ? Dc(offers.above) : 0;
        const int b = offers.corner.edge == nullptr ? 0 : Dc(offers.corner);
        const int c = left ? Dc(offers.left) : 0;
        if (left && (!above || std::abs(a - b) <= std::abs(b - c))) return {c, Side::Left};
        if (above) return {a, Side::Above};
        return {};
    }

    // Levels that are expected in the block's first row or column. Returns the error where no
    // others are coded.
    std::int64_t Expect(int n, const Offers& offers, Side side, Block& expected) {
        expected.fill(0);
        std::int64_t error = energies_[Index(n)];
        const Offer& offer = side == Side::Left ? offers.left : offers.above;
        if (side == Side::None || offer.edge == nullptr) return error;
        const auto scale = [&](int level) {
            if (offer.quantiser == quantiser_.number) return level;
            return Rescaled(level, 2 * offer.quantiser - 1, 2 * quantiser_.number - 1);
        };
        for (std::size_t i = 0; i < 7; ++i) {
            const int level = side == Side::Left ? offer.edge->column[i] : offer.edge->row[i];
            if (level == 0) continue;
            const std::size_t place = side == Side::Left ? 8 * (i + 1) : i + 1;
            expected[place] = static_cast<std::int16_t>(scale(level));
            predicts_ = predicts_ || expected[place] != 0;
            const std::int64_t value = std::int64_t{expected[place]} * quantiser_.step * kEighths;
            error += value * (value - 2 * std::int64_t{coefficients_[n][place]});
        }
        return error;
    }

    void CodeBlock(int n, bool rd) {
        const Offers offers{Beside(n, 1, 0), Beside(n, 0, 1), Beside(n, 1, 1)};
        const Prediction prediction =
            picture_.header.IsI() ? PredictInI(offers) : PredictAmongInter(offers);
        const int dc = CodeDc(n, prediction.dc);

        const bool predicted = candidate_.macroblock.ac_predicted;
        if (prediction.side == Side::Above)
            candidate_.macroblock.from_above =
                static_cast<std::uint8_t>(candidate_.macroblock.from_above | 1 << n);
        Block expected;
        const std::int64_t silent =
            Expect(n, offers, predicted ? prediction.side : Side::None, expected);
        const AcCodes& codes = estimates_.Levels(true, n);
        // Without a choice by bits; levels are more often too large than too small. By
        // hand, on the clips of bench/quality.
        constexpr double kRounding = 0.4;
        const double rounding = rd ? kChoiceRounding : kRounding;
        picture_.kernels.quantise(whole_[n].data(), coefficients_[n].data(), quantiser_.reciprocal,
                                  static_cast<int>(rounding * quantiser_.step * kEighths));
        const Scan& scan = IntraScan(picture_.header.IsI(), candidate_.macroblock, n);
        const TransformBlock block{
            coefficients_[n].data(), whole_[n].data(), scan,
            scan.InOrder(picture_.kernels.differing(whole_[n].data(), expected.data())),
            expected.data()};
        const LevelCost cost =
            rd ? ChooseLevels(block, quantiser_, codes) : CostOfLevels(block, quantiser_, codes);
        candidate_.macroblock.SetCoded(n, cost.any);
        candidate_.bits += cost.bits;
        candidate_.error += silent + cost.change;
        Keep(n, dc, expected);
    }

    int CodeDc(int n, int predicted) {
        const int step = quantiser_.dc_step * kEighths;
        const int coefficient = coefficients_[n][0];
        const int half = coefficient < 0 ? -step / 2 : step / 2;
        const int dc = (coefficient + half) / step;
        const int difference = dc - predicted;
        candidate_.macroblock.dc[Index(n)] = static_cast<std::int16_t>(difference);
        candidate_.bits += DcBits(difference, quantiser_.number,
                                  n < 4 ? estimates_.luma_dc : estimates_.chroma_dc);
        const std::int64_t error = coefficient - std::int64_t{dc} * step;
        candidate_.error += error * error;
        return dc;
    }

    // For the blocks after this one, and what is written of it.
    void Keep(int n, int dc, const Block& expected) {
        const Block& whole = whole_[n];
        BlockEdge& edge = candidate_.edges[Index(n)];
        edge.dc = static_cast<std::int16_t>(dc);
        for (std::size_t i = 0; i < 7; ++i) {
            edge.row[i] = whole[i + 1];
            edge.column[i] = whole[8 * (i + 1)];
        }
        Block& written = candidate_.levels[n];
        for (std::size_t i = 0; i < written.size(); ++i)
            written[i] = static_cast<std::int16_t>(whole[i] - expected[i]);
    }

    int PatternBits() const {
        const Macroblock& macroblock = candidate_.macroblock;
        if (picture_.header.IsI())
            return kIPattern[Index(WrittenIPattern(picture_.grid, macroblock, x_, y_))].length;
        const bool coded = macroblock.coded != 0;
        const auto& vectors = kVector[Index(picture_.header.vector_table)];
        return vectors[Index(kIntraSymbol + (coded ? kCodedSymbols : 0))].length +
               (coded ? estimates_.pattern[macroblock.coded].length : 0);
    }

    const Picture& picture_;
    const Estimates& estimates_;
    const Quantiser& quantiser_;
    const int x_;
    const int y_;
    Candidate& candidate_;
    Blocks coefficients_;  // eighths
    Blocks whole_;         // levels as they are reconstructed; [0] means nothing
    std::array<std::int64_t, kBlocks> energies_{};  // of AC coefficients
    bool predicts_ = false;                         // levels that are not 0
};

}  // namespace

bool CodeIntra(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
               const IntraOptions& options, int x, int y, Candidate& candidate) {
    IntraCoder coder(picture, estimates, quantiser, x, y, candidate);
    if (options.prediction != AcPrediction::Choose) {
        coder.Code(options.prediction == AcPrediction::On, options.rd);
    } else {
        coder.Code(true, options.rd);
        if (coder.Predicts()) {
            const IntraCoder::Coded predicted = coder.Take();
            coder.Code(false, options.rd);
            const std::int64_t lambda = quantiser.lambda;
            if (candidate.RdCost(lambda) >= predicted.error + lambda * predicted.bits)
                coder.Put(predicted);
        }
    }
    if (candidate.RdCost(quantiser.lambda) >= options.limit) return false;
    coder.Reconstruct();
    return true;
}

const Scan& IntraScan(bool i_picture, const Macroblock& macroblock, int block) {
    if (!i_picture) return kIntraScans.among_inter;
    if (!macroblock.ac_predicted) return kIntraScans.unpredicted;
    const bool above = (macroblock.from_above >> block & 1) != 0;
    return above ? kIntraScans.from_above : kIntraScans.from_left;
}

int WrittenIPattern(const MacroblockGrid& grid, const Macroblock& macroblock, int x, int y) {
    const auto coded = [&](int column, int row) -> int {
        if (column < 0 || row < 0) return 0;
        const int block = (row & 1) * 2 + (column & 1);
        const bool own = column >> 1 == x && row >> 1 == y;
        return (own ? macroblock : grid.At(column >> 1, row >> 1)).IsCoded(block) ? 1 : 0;
    };
    int written = macroblock.coded & 3;
    for (int n = 0; n < 4; ++n) {
        const int column = 2 * x + (n & 1);
        const int row = 2 * y + (n >> 1);
        const int left = coded(column - 1, row);
        const int corner = coded(column - 1, row - 1);
        const int above = coded(column, row - 1);
        const int expected = corner == above ? left : above;
        written |= (coded(column, row) ^ expected) << (5 - n);
    }
    return written;
}

}  // namespace codecs::wmv9
