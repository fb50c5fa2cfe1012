#include "conformance/wmv9/random_mode_decision.h"

#include <algorithm>
#include <span>

#include "codecs/common/index.h"
#include "codecs/wmv9/intra.h"
#include "codecs/wmv9/prediction.h"
#include "codecs/wmv9/residual.h"
#include "codecs/wmv9/row_output.h"
#include "codecs/wmv9/transform_types.h"
#include "conformance/wmv9/random.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;
using codecs::Index;

namespace {

constexpr int kLuma = 16;
constexpr int kLargestQuantiser = 31;

MotionVector MakeMotionVector(int x, int y) {
    return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)};
}

// In percent, and different from picture to picture: planes of bits get long runs too.
struct Odds {
    explicit Odds(Random random)
        : intra(random.Pick({2, 15, 15, 70})),
          still(random.Pick({0, 10, 30, 90})),
          four_mv(random.Pick({0, 20, 60, 100})),
          direct(random.Pick({0, 25, 25, 95})),
          coded(random.Pick({10, 50, 90})) {}

    int intra;
    int still;  // the vector is what is predicted, and nothing is added
    int four_mv;
    int direct;
    int coded;  // of a macroblock, and of a block
};

class Dice {
  public:
    Dice(const Picture& picture, const Estimates& estimates, std::uint64_t seed, int x, int y,
         Candidate& out)
        : picture_(picture),
          header_(picture.header),
          estimates_(estimates),
          odds_(Random(seed)),
          random_(seed, x, y),
          x_(x),
          y_(y),
          out_(out),
          macroblock_(out.macroblock),
          quantiser_(RandomQuantiser()) {}

    void Throw() {
        if (header_.IsI() || random_.Roll(odds_.intra)) return Intra();
        if (header_.IsB()) return BPicture(random_.Roll(odds_.still));
        const bool four_mv = header_.mode == VectorMode::Mixed && random_.Roll(odds_.four_mv);
        const bool still = random_.Roll(odds_.still);
        if (four_mv && FourMv(still)) return;
        if (still && One(true)) return;
        One(false);
    }

  private:
    Quantiser RandomQuantiser() {
        int number = header_.quantiser;
        if (header_.varying)
            number = random_.Roll(50) ? std::min(number + random_.Below(8), kLargestQuantiser)
                                      : random_.Between(1, kLargestQuantiser);
        Quantiser made = Quantiser::Make(number, header_.Step(number));
        if (random_.Roll(50)) made.lambda = 0;  // whatever it takes
        return made;
    }

    void Begin() {
        macroblock_ = {};
        macroblock_.quantiser = static_cast<std::uint8_t>(quantiser_.number);
    }

    void Intra() {
        const AcPrediction prediction =
            random_.Pick({AcPrediction::Off, AcPrediction::On, AcPrediction::Choose});
        CodeIntra(picture_, estimates_, quantiser_, {prediction, random_.Roll(50)}, x_, y_, out_);
    }

    // ---- Vectors

    MotionVector AnyVector(const VectorWindow& window, MotionVector predictor) {
        const auto near = [&](MotionVector from, int distance) {
            return MakeMotionVector(from.x + random_.Between(-distance, distance),
                                    from.y + random_.Between(-distance, distance));
        };
        MotionVector vector;
        switch (random_.Below(6)) {
            case 0:
                vector = MakeMotionVector(random_.Between(window.least.x, window.largest.x),
                                          random_.Between(window.least.y, window.largest.y));
                break;
            case 1:
                vector = MakeMotionVector(random_.Pick({window.least.x, window.largest.x}),
                                          random_.Pick({window.least.y, window.largest.y}));
                break;
            case 2:
                vector = near(predictor, 6);
                break;
            case 3:
                vector = near(predictor, 160);
                break;
            case 4:
                vector = predictor;
                break;
            default:
                vector = near({}, 2);
                break;
        }
        vector.x = std::clamp(vector.x, window.least.x, window.largest.x);
        vector.y = std::clamp(vector.y, window.least.y, window.largest.y);
        return header_.HalfVectors() ? MakeMotionVector(vector.x & ~1, vector.y & ~1) : vector;
    }

    struct Moved {
        MotionVector vector;
        MotionVector difference;
        bool fits = false;
    };
    // A block at (left, top), in samples.
    Moved Move(MotionVector predictor, int left, int top, bool still) {
        const VectorWindow window = WindowOf(picture_, left, top);
        Moved moved;
        moved.vector = still ? predictor : AnyVector(window, predictor);
        moved.difference = Difference(moved.vector, predictor, header_.vector_range);
        moved.fits = window.Holds(moved.vector);
        return moved;
    }

    Hybrid AnyHybrid(const VectorPrediction& prediction) {
        if (!prediction.is_hybrid) return Hybrid::None;
        return random_.Roll(50) ? Hybrid::Left : Hybrid::Above;
    }

    bool One(bool still) {
        Begin();
        const VectorPrediction prediction = PredictVector(picture_, x_, y_);
        macroblock_.hybrid[0] = AnyHybrid(prediction);
        const Moved moved =
            Move(prediction.For(macroblock_.hybrid[0]), kLuma * x_, kLuma * y_, still);
        if (!moved.fits) return false;
        macroblock_.vectors.fill(moved.vector);
        macroblock_.differences[0] = moved.difference;
        Residual(still);
        macroblock_.skipped = macroblock_.coded == 0 && moved.difference == MotionVector();
        return true;
    }

    bool FourMv(bool still) {
        Begin();
        macroblock_.four_mv = true;
        for (int n = 0; n < 4; ++n) {
            const VectorPrediction prediction =
                PredictBlockVector(picture_, x_, y_, n, macroblock_);
            const Hybrid hybrid = AnyHybrid(prediction);
            const Moved moved = Move(prediction.For(hybrid), kLuma * x_ + 8 * (n & 1),
                                     kLuma * y_ + 8 * (n >> 1), still || random_.Roll(25));
            if (!moved.fits) return false;
            macroblock_.hybrid[Index(n)] = hybrid;
            macroblock_.vectors[Index(n)] = moved.vector;
            macroblock_.differences[Index(n)] = moved.difference;
        }
        if (!ChromaFits(picture_, x_, y_, macroblock_)) return false;
        Residual(still);
        macroblock_.skipped = WrittenPattern(macroblock_) == 0 && random_.Roll(50);
        return true;
    }

    void BPicture(bool still) {
        Begin();
        const DirectVectors direct = DeriveDirect(picture_, x_, y_);
        macroblock_.vectors[0] = direct.forward;
        macroblock_.backward = direct.backward;
        macroblock_.direction =
            random_.Roll(odds_.direct)
                ? Direction::Direct
                : random_.Pick({Direction::Forward, Direction::Backward, Direction::Both});
        const Direction direction = macroblock_.direction;
        if (direction == Direction::Forward || direction == Direction::Both) {
            const Moved moved =
                Move(PredictForward(picture_, x_, y_), kLuma * x_, kLuma * y_, still);
            if (!moved.fits) return BPicture(false);
            macroblock_.vectors[0] = moved.vector;
            macroblock_.differences[0] = moved.difference;
        }
        if (direction == Direction::Backward || direction == Direction::Both) {
            const Moved moved =
                Move(PredictBackward(picture_, x_, y_), kLuma * x_, kLuma * y_, still);
            if (!moved.fits) return BPicture(false);
            macroblock_.backward = moved.vector;
            macroblock_.backward_difference = moved.difference;
        }
        Residual(still);
        macroblock_.skipped = macroblock_.coded == 0 &&
                              macroblock_.differences[0] == MotionVector() &&
                              macroblock_.backward_difference == MotionVector();
    }

    // ---- What is added

    void Residual(bool still) {
        Predict(picture_, x_, y_, macroblock_, out_.samples);
        if (still || !random_.Roll(odds_.coded)) return LeaveResidual(picture_, x_, y_, out_);
        if (random_.Roll(40)) return Scatter();
        ResidualOptions options;
        options.shapes = static_cast<unsigned>(random_.Between(1, kAllShapes));
        options.rd = random_.Roll(50);
        CodeResidual(picture_, estimates_, quantiser_, options, x_, y_, out_);
    }

    Shape AnyShape() { return static_cast<Shape>(random_.Below(4)); }

    // Levels that have nothing to do with the source.
    void Scatter() {
        LeaveResidual(picture_, x_, y_, out_);
        macroblock_.block_types = !header_.shape && random_.Roll(50);
        const Shape shape_of_all = header_.shape ? *header_.shape : AnyShape();
        for (int n = 0; n < kBlocks; ++n) {
            if (!random_.Roll(odds_.coded)) continue;
            const Shape shape = macroblock_.block_types ? AnyShape() : shape_of_all;
            const int parts = random_.Between(1, (1 << PartCount(shape)) - 1);
            macroblock_.SetCoded(n, true);
            macroblock_.shapes[Index(n)] = shape;
            macroblock_.parts[Index(n)] = static_cast<std::uint8_t>(parts);
            Block& levels = out_.levels[n];
            levels.fill(0);
            for (int part = 0; part < PartCount(shape); ++part)
                if (HasPart(shape, parts, part))
                    ScatterPart(levels.data() + PartPlace(shape, part), PartScan(shape));
            Block coefficients;
            Block residual;
            picture_.kernels.restore(coefficients.data(), levels.data(), quantiser_.step, 0);
            picture_.kernels.inverse(shape, residual.data(), coefficients.data());
            picture_.kernels.add(out_.samples.Block(n), kBlockPlaces[Index(n)].stride,
                                 residual.data());
        }
        if (macroblock_.coded == 0) macroblock_.block_types = false;
    }

    // Few, so that runs are long, and not so large that sums would pass sixteen bits.
    void ScatterPart(std::int16_t* levels, const Scan& scan) {
        constexpr int kLargestCoefficient = 2000;
        const int count = random_.Between(1, 4);
        for (int i = 0; i < count; ++i) {
            const int largest = random_.Roll(60) ? 3 : kLargestCoefficient / quantiser_.step;
            const int level = random_.Between(1, largest);
            const int place = random_.Below(static_cast<int>(scan.Places().size()));
            levels[scan[place]] = static_cast<std::int16_t>(random_.Roll(50) ? level : -level);
        }
    }

    const Picture& picture_;
    const PictureHeader& header_;
    const Estimates& estimates_;
    const Odds odds_;
    Random random_;
    const int x_;
    const int y_;
    Candidate& out_;
    Macroblock& macroblock_;
    const Quantiser quantiser_;
};

}  // namespace

void RandomModeDecision::Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                                Candidate& out) const {
    Dice(picture, estimates, seed_, x, y, out).Throw();
}

}  // namespace wmv9_conformance
