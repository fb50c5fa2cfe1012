#include "unit/codecs/wmv9/kernel_exercises.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <random>

using namespace codecs::wmv9;

namespace {

std::uint8_t Sample(Content content, int x, int y, std::minstd_rand& random) {
    const auto noise = static_cast<int>(random() >> 7U & 255U);
    switch (content) {
        case Content::Noise:
            return static_cast<std::uint8_t>(noise);
        case Content::Extremes:
            return noise < 128 ? 0 : 255;
        case Content::Checkers:
            return (x + y) % 2 == 0 ? 0 : 255;
        case Content::Peaks:  // as far beyond black and white as a cubic gets, in both directions
            return ((x + 1) % 4 < 2) == ((y + 1) % 4 < 2) ? 0 : 255;
        case Content::Black:
            return 0;
        case Content::White:
            return 255;
        case Content::Ramp:
            return static_cast<std::uint8_t>(std::clamp(16 * x + 3 * y, 0, 255));
        case Content::Seams:  // quiet blocks of 4x4, each a little brighter or darker than the next
            return static_cast<std::uint8_t>(100 + 9 * ((x / 4 * 3 + y / 4 * 5) % 4) + noise % 3);
    }
    std::abort();
}

// The content that stands against another in a comparison of two blocks.
Content Opposite(Content content) {
    switch (content) {
        case Content::Black:
            return Content::White;
        case Content::White:
            return Content::Black;
        case Content::Checkers:
            return Content::Extremes;
        default:
            return content;
    }
}

constexpr int kQuantisers[] = {1, 2, 5, 13, 31};
constexpr Shape kShapes[] = {Shape::Whole8x8, Shape::Wide8x4, Shape::Tall4x8, Shape::Small4x4};

// ---- Ways to call

std::vector<Variant> Once() { return {{}}; }

std::vector<Variant> Sizes() {
    return {{.width = 16, .height = 16},
            {.width = 16, .height = 8},
            {.width = 8, .height = 16},
            {.width = 8, .height = 8}};
}

std::vector<Variant> Positions(const std::vector<Variant>& sizes, int step) {
    std::vector<Variant> variants;
    for (Variant variant : sizes)
        for (variant.x = 0; variant.x < 4; variant.x += step)
            for (variant.y = 0; variant.y < 4; variant.y += step)
                for (variant.rounding = 0; variant.rounding < 2; ++variant.rounding)
                    variants.push_back(variant);
    return variants;
}

std::vector<Variant> Quarters() { return Positions(Sizes(), 1); }
std::vector<Variant> Halves() { return Positions(Sizes(), 2); }
std::vector<Variant> ChromaQuarters() { return Positions({{.width = 8, .height = 8}}, 1); }

std::vector<Variant> LumaQuarters() { return Positions({{.width = 16, .height = 16}}, 1); }

std::vector<Variant> SquaresAndQuantisers() {
    std::vector<Variant> variants;
    for (const int size : {8, 16})
        for (const int quantiser : kQuantisers)
            for (const int count : {2, 3, 4})
                variants.push_back(
                    {.width = size, .height = size, .quantiser = quantiser, .count = count});
    return variants;
}

std::vector<Variant> ShapesAndQuantisers() {
    std::vector<Variant> variants;
    for (const Shape shape : kShapes)
        for (const int quantiser : kQuantisers)
            variants.push_back({.width = 8, .height = 8, .shape = shape, .quantiser = quantiser});
    return variants;
}

std::vector<Variant> CountsAndQuantisers() {
    std::vector<Variant> variants;
    for (const int count : {1, 2, 3, 4, 7, 16})
        for (const int quantiser : kQuantisers)
            variants.push_back({.quantiser = quantiser, .count = count});
    return variants;
}

std::vector<Variant> Counts() {
    std::vector<Variant> variants;
    for (const int count : {1, 7, 8, 9, 16, 35})
        variants.push_back({.width = 2 * count, .height = 2, .count = count});
    return variants;
}

// ---- What calls read

Scene SceneOf(const Variant& variant, Content content, unsigned seed, Margins margins) {
    const Content opposite = Opposite(content);
    const int width = variant.width;
    const int height = variant.height;
    Scene scene = {.a = Plane(width, height, margins, content, seed),
                   .b = {},
                   .out = Plane(width, height, {8, 8, 2, 2}, opposite, seed + 9),
                   .changed = {0, 0, width, height},
                   .in = {},
                   .segments = {},
                   .result = {}};
    for (unsigned i = 0; i < 4; ++i)
        scene.b.emplace_back(width, height, Margins{}, opposite, seed + 1 + 15 * i);
    return scene;
}

Scene PlainScene(const Variant& variant, Content content, unsigned seed) {
    return SceneOf(variant, content, seed, {});
}

Scene BicubicScene(const Variant& variant, Content content, unsigned seed) {
    return SceneOf(variant, content, seed, {1, 16, 1, 2});
}

Scene EightTapScene(const Variant& variant, Content content, unsigned seed) {
    return SceneOf(variant, content, seed, {3, 4, 3, 4});
}

Scene BlendScene(const Variant& variant, Content content, unsigned seed) {
    Scene scene = PlainScene(variant, content, seed);
    scene.out = scene.a;
    return scene;
}

Scene BilinearScene(const Variant& variant, Content content, unsigned seed) {
    return SceneOf(variant, content, seed, {0, variant.x != 0 ? 1 : 0, 0, variant.y != 0 ? 1 : 0});
}

// With as large residuals as a transform takes, in place of random extremes.
Scene ResidualScene(const Variant&, Content content, unsigned seed) {
    Scene scene = PlainScene({.width = 8, .height = 8}, content, seed);
    AllKernels()[0].subtract(scene.in.values, scene.a.At(), scene.a.Stride(), scene.b[0].At(),
                             scene.b[0].Stride());
    if (content == Content::Extremes)
        for (std::int16_t& value : scene.in.values)
            value = static_cast<std::int16_t>(value * 4 / 3);
    return scene;
}

// In eighths.
Scene CoefficientScene(const Variant& variant, Content content, unsigned seed) {
    Scene scene = ResidualScene(variant, content, seed);
    const Block residual = scene.in;
    AllKernels()[0].forward(variant.shape, scene.in.values, residual.values);
    return scene;
}

int Reciprocal(int quantiser) { return 65536 / (16 * quantiser); }

Scene LevelScene(const Variant& variant, Content content, unsigned seed) {
    Scene scene = CoefficientScene(variant, content, seed);
    const Block coefficients = scene.in;
    AllKernels()[0].quantise(scene.in.values, coefficients.values,
                             static_cast<std::uint32_t>(Reciprocal(variant.quantiser)),
                             8 * variant.quantiser);
    return scene;
}

// What quantising leaves of coefficients; or, in place of black, all that sixteen bits can hold.
Scene RestoredScene(const Variant& variant, Content content, unsigned seed) {
    Scene scene = LevelScene(variant, content, seed);
    std::minstd_rand random(seed + 77);
    for (std::int16_t& value : scene.in.values)
        value = content == Content::Black
                    ? static_cast<std::int16_t>((random() >> 7U & 65535U) - 32768U)
                    : static_cast<std::int16_t>(value * 2 * variant.quantiser);
    return scene;
}

// A filter changes the samples at the edge itself, of the samples that it reads.
Scene EdgeScene(const Variant& variant, Content content, unsigned seed, int width, int height,
                const Area& edge) {
    Scene scene = SceneOf({.width = width, .height = height}, content, seed, {});
    scene.out = scene.a;
    scene.changed = edge;
    std::minstd_rand random(seed);
    for (int i = 0; i < variant.count; ++i)
        scene.segments.push_back((random() >> 7U) % 4 == 0 ? 0 : static_cast<std::uint8_t>(1 + i));
    return scene;
}

Scene HorizontalScene(const Variant& variant, Content content, unsigned seed) {
    const int length = 4 * variant.count;
    return EdgeScene(variant, content, seed, length, 8, {0, 3, length, 2});
}

Scene VerticalScene(const Variant& variant, Content content, unsigned seed) {
    const int length = 4 * variant.count;
    return EdgeScene(variant, content, seed, 8, length, {3, 0, 2, length});
}

// ---- Calls

template <auto Kernel>
void RunComparison(const Kernels& kernels, const Variant& variant, Scene& scene) {
    scene.numbers[0] = (kernels.*Kernel)(scene.a.At(), scene.a.Stride(), scene.b[0].At(),
                                         scene.b[0].Stride(), variant.width, variant.height);
}

void RunSadOfFour(const Kernels& kernels, const Variant&, Scene& scene) {
    const std::uint8_t* const others[4] = {scene.b[0].At(), scene.b[1].At(), scene.b[2].At(),
                                           scene.b[3].At()};
    kernels.sad_of_four(scene.a.At(), scene.a.Stride(), others, scene.b[0].Stride(), scene.numbers);
}

void RunMoments(const Kernels& kernels, const Variant&, Scene& scene) {
    kernels.moments(scene.a.At(), scene.a.Stride(), scene.numbers[0], scene.numbers[1]);
}

void RunHalve(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.halve(scene.out.At(), scene.a.At(), scene.a.At() + scene.a.Stride(), variant.count);
}

template <auto Kernel>
void RunPrediction(const Kernels& kernels, const Variant& variant, Scene& scene) {
    (kernels.*Kernel)(scene.out.At(), scene.out.Stride(), scene.a.At(), scene.a.Stride(),
                      variant.width, variant.height, variant.x, variant.y, variant.rounding);
}

void RunChroma(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.chroma(scene.out.At(), scene.out.Stride(), scene.a.At(), scene.a.Stride(), variant.x,
                   variant.y, variant.rounding);
}

void RunAverage(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.average(scene.out.At(), scene.out.Stride(), scene.a.At(), scene.a.Stride(),
                    scene.b[0].At(), scene.b[0].Stride(), variant.width, variant.height);
}

void RunEightTap(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.eight_tap(scene.out.At(), scene.out.Stride(), scene.a.At(), scene.a.Stride(), variant.x,
                      variant.y);
}

void RunBlend(const Kernels& kernels, const Variant& variant, Scene& scene) {
    constexpr int kMost = 256;
    constexpr std::int16_t kStrengths[] = {614, 77, 512, 300};
    std::vector<std::uint8_t> others(scene.b.size() * kMost);
    for (std::size_t i = 0; i < scene.b.size(); ++i)
        for (int y = 0; y < variant.height; ++y)
            std::copy_n(scene.b[i].At() + y * scene.b[i].Stride(), variant.width,
                        others.data() + i * kMost + y * variant.width);
    scene.out = scene.a;
    kernels.blend(scene.out.At(), scene.out.Stride(), others.data(), kMost, kStrengths,
                  variant.count, 22598 / variant.quantiser, variant.width);
}

void RunSubtract(const Kernels& kernels, const Variant&, Scene& scene) {
    const BlockDifference difference = kernels.subtract(
        scene.result.values, scene.a.At(), scene.a.Stride(), scene.b[0].At(), scene.b[0].Stride());
    scene.numbers[0] = difference.absolute;
    scene.numbers[1] = difference.squared;
}

void RunForward(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.forward(variant.shape, scene.result.values, scene.in.values);
}

void RunInverse(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.inverse(variant.shape, scene.result.values, scene.in.values);
}

void RunAdd(const Kernels& kernels, const Variant&, Scene& scene) {
    kernels.add(scene.out.At(), scene.out.Stride(), scene.in.values);
}

void RunPut(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.put(scene.out.At(), scene.out.Stride(), scene.in.values,
                variant.shape == Shape::Whole8x8 ? 0 : 128);
}

void RunQuantise(const Kernels& kernels, const Variant& variant, Scene& scene) {
    scene.numbers[0] = kernels.quantise(scene.result.values, scene.in.values,
                                        static_cast<std::uint32_t>(Reciprocal(variant.quantiser)),
                                        5 * variant.quantiser);
}

void RunDiffering(const Kernels& kernels, const Variant& variant, Scene& scene) {
    alignas(32) std::int16_t other[64] = {};
    for (int i = 0; i < 64; i += variant.quantiser) other[i] = scene.in.values[i];
    const std::uint64_t places = kernels.differing(scene.in.values, other);
    scene.numbers[0] = static_cast<std::uint32_t>(places);
    scene.numbers[1] = static_cast<std::uint32_t>(places >> 32U);
}

void RunRestore(const Kernels& kernels, const Variant& variant, Scene& scene) {
    kernels.restore(scene.result.values, scene.in.values, 2 * variant.quantiser + 1,
                    variant.shape == Shape::Whole8x8 ? 0 : variant.quantiser);
}

// On a copy, so that a repeated call finds the same.
void RunHorizontal(const Kernels& kernels, const Variant& variant, Scene& scene) {
    scene.out = scene.a;
    kernels.filter_horizontal(scene.out.At() + 4 * scene.out.Stride(), scene.out.Stride(),
                              scene.segments.data(), variant.count, variant.quantiser);
}

void RunVertical(const Kernels& kernels, const Variant& variant, Scene& scene) {
    scene.out = scene.a;
    kernels.filter_vertical(scene.out.At() + 4, scene.out.Stride(), scene.segments.data(),
                            variant.count, variant.quantiser);
}

}  // namespace

std::string Variant::Name() const {
    constexpr const char* kNames[] = {"8x8", "8x4", "4x8", "4x4"};
    return fmt::format("{}x{} at {},{} rounding {}, {} quantiser {}, {} segments", width, height, x,
                       y, rounding, kNames[static_cast<int>(shape)], quantiser, count);
}

Plane::Plane(int width, int height, Margins margins, Content content, unsigned seed) {
    const int across = margins.left + width + margins.right;
    const int down = margins.above + height + margins.below;
    const auto lead = static_cast<int>(seed % 5);
    stride_ = across + static_cast<int>(seed / 5 % 3) * 7;
    origin_ = static_cast<std::size_t>(lead + margins.above * stride_ + margins.left);
    samples_.resize(static_cast<std::size_t>(lead + (down - 1) * stride_ + across));
    std::minstd_rand random(seed + 1);
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        const int at = std::max(static_cast<int>(i) - lead, 0);
        samples_[i] =
            Sample(content, at % static_cast<int>(stride_), at / static_cast<int>(stride_), random);
    }
}

bool Plane::IsSameAround(const Plane& other, const Area& part) const {
    Plane copy = other;
    for (int y = part.y; y < part.y + part.height; ++y)
        std::copy_n(At() + y * stride_ + part.x, part.width, copy.At() + y * stride_ + part.x);
    return copy == *this;
}

const std::vector<Exercise>& Exercises() {
    // clang-format off
    static const std::vector<Exercise> exercises = {
        // name                variants             scene             run
        {"sad",                Sizes,               PlainScene,       RunComparison<&Kernels::sad>},
        {"sad_of_four",        Once,                PlainScene,       RunSadOfFour},
        {"squared",            Sizes,               PlainScene,       RunComparison<&Kernels::squared>},
        {"hadamard",           Sizes,               PlainScene,       RunComparison<&Kernels::hadamard>},
        {"moments",            Once,                PlainScene,       RunMoments},
        {"halve",              Counts,              PlainScene,       RunHalve},
        {"bicubic",            Quarters,            BicubicScene,     RunPrediction<&Kernels::bicubic>},
        {"bilinear",           Halves,              BilinearScene,    RunPrediction<&Kernels::bilinear>},
        {"chroma",             ChromaQuarters,      BilinearScene,    RunChroma},
        {"average",            Sizes,               PlainScene,       RunAverage},
        {"eight_tap",          LumaQuarters,        EightTapScene,    RunEightTap},
        {"blend",              SquaresAndQuantisers, BlendScene,      RunBlend},
        {"subtract",           Once,                PlainScene,       RunSubtract},
        {"forward",            ShapesAndQuantisers, ResidualScene,    RunForward},
        {"inverse",            ShapesAndQuantisers, RestoredScene,    RunInverse},
        {"add",                ShapesAndQuantisers, RestoredScene,    RunAdd},
        {"put",                ShapesAndQuantisers, RestoredScene,    RunPut},
        {"quantise",           ShapesAndQuantisers, CoefficientScene, RunQuantise},
        {"differing",          ShapesAndQuantisers, LevelScene,       RunDiffering},
        {"restore",            ShapesAndQuantisers, LevelScene,       RunRestore},
        {"filter_horizontal",  CountsAndQuantisers, HorizontalScene,  RunHorizontal},
        {"filter_vertical",    CountsAndQuantisers, VerticalScene,    RunVertical},
    };
    // clang-format on
    return exercises;
}
