#include "codecs/wma_standard/frame_coder.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "codecs/common/index.h"
#include "codecs/wma_standard/step_shape.h"

namespace codecs::wma_standard {
namespace {

// A block of the largest size whose bands are loud and coarse at random.
void Fill(const BlockFormat& sizes, std::minstd_rand& random, BlockChannel& channel) {
    std::uniform_real_distribution<float> loudness_db(20, 110);
    std::uniform_real_distribution<float> step_below_db(-10, 20);
    std::normal_distribution<float> noise;
    channel.coefficients.assign(Index(sizes.coded), 0);
    channel.shape.clear();
    channel.peaks.clear();
    for (const Band& band : sizes.bands) {
        const float db = loudness_db(random);
        float& peak = channel.peaks.emplace_back(0.0F);
        for (int k = band.begin; k < std::min(band.end, sizes.coded); ++k) {
            float& x = channel.coefficients[Index(k)];
            x = noise(random) * std::pow(10.0F, db / 20);
            peak = std::max(peak, std::abs(x));
        }
        channel.shape.push_back(
            static_cast<int>(std::lround((db - step_below_db(random)) / kExponentDb)));
    }
    const int largest = *std::ranges::max_element(channel.shape);
    for (int& exponent : channel.shape)
        exponent = std::max(exponent - largest, -kMostExponentDifference);
}

// How far levels are from the coefficients, in steps, outside of noise. Decoders multiply levels by
// the gain, and by the exponent beside the largest one.
double MostError(const BlockFormat& sizes, int gain, const BlockChannel& channel) {
    std::vector<bool> noise(channel.levels.size());
    for (std::size_t i = 0; i < channel.noise.size(); ++i)
        std::fill(noise.begin() + sizes.high_bands[i].begin,
                  noise.begin() + sizes.high_bands[i].end, channel.noise[i]);
    const int largest = *std::ranges::max_element(channel.exponents);
    double most = 0;
    for (std::size_t b = 0; b < sizes.bands.size(); ++b) {
        const double step = std::pow(10.0, gain / 20.0 + (channel.exponents[b] - largest) / 16.0);
        for (int k = sizes.bands[b].begin; k < std::min(sizes.bands[b].end, sizes.coded); ++k)
            if (!noise[Index(k)])
                most = std::max(most, std::abs(channel.coefficients[Index(k)] / step -
                                               channel.levels[Index(k)]));
    }
    return most;
}

TEST(FrameCoder, LevelsTimesTheStepsThatAreWrittenAreTheCoefficients) {
    std::minstd_rand random(1);
    int noise_bands = 0;
    for (const int bit_rate : {24000, 64000, 192000}) {
        const StreamFormat format(44100, 2, bit_rate / 8, 8);
        FrameCoder coder(format);
        for (int round = 0; round < 50; ++round) {
            Frame frame;
            Block& block = frame.blocks.emplace_back();
            const BlockFormat& sizes = format.blocks.front();
            block.step_db = 110;
            for (BlockChannel& channel : block.channels) Fill(sizes, random, channel);
            coder.Code(frame, 0);
            for (const BlockChannel& channel : block.channels) {
                noise_bands += static_cast<int>(std::ranges::count(channel.noise, true));
                EXPECT_LT(MostError(sizes, block.gain, channel), 0.65)
                    << bit_rate << ", round " << round;
            }
        }
    }
    EXPECT_GT(noise_bands, 20) << "which have exponents that nothing is quantised by";
}

}  // namespace
}  // namespace codecs::wma_standard
