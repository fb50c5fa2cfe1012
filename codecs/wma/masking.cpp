#include "codecs/wma/masking.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wma/log_sum.h"

namespace codecs::wma {
namespace {

// Zwicker and Terhardt, 1980.
double Bark(double hz) {
    return 13 * std::atan(0.00076 * hz) + 3.5 * std::atan(hz / 7500 * hz / 7500);
}

// The threshold in quiet in dB of sound pressure, Terhardt 1979.
double QuietDb(double hz) {
    const double khz = std::max(hz, 20.0) / 1000;
    return 3.64 * std::pow(khz, -0.8) - 6.5 * std::exp(-0.6 * (khz - 3.3) * (khz - 3.3)) +
           0.001 * std::pow(khz, 4);
}

constexpr double kFullScaleDb = 96;  // how loud a sine of full scale is taken to be played
constexpr double kFullScale = 32768;

// The slopes of masking in dB a Bark, towards lower and towards higher frequencies.
constexpr double kLowerSlope = 25;
constexpr double kUpperSlope = 12;

double FromDb(double db) { return std::pow(10.0, db / 10); }

}  // namespace

MaskingModel::MaskingModel(int sampling_rate, int block_size, std::span<const int> band_ends,
                           double tonality) {
    const auto hz = [&](double coefficient) {
        return coefficient * sampling_rate / (2.0 * block_size);
    };
    // The sum of squares that a sine of full scale gives.
    const double full = kFullScale * kFullScale * block_size * block_size / 4.0;
    int begin = 0;
    for (const int end : band_ends) {
        // Where the ear is most sensitive within the band.
        double quiet = QuietDb(hz(begin));
        for (int k = begin; k < end; ++k) quiet = std::min(quiet, QuietDb(hz(k + 0.5)));
        const double bark = Bark(hz((begin + end) / 2.0));
        Band band{};
        band.begin = begin;
        band.end = end;
        band.quiet =
            static_cast<float>(full * FromDb(std::min(quiet, 90.0) - kFullScaleDb) / (end - begin));
        band.noise_offset_db = 5.5F;
        band.tone_offset_db = static_cast<float>(5.5 + tonality * (9 + bark));
        bands_.push_back(band);
        begin = end;
    }
    for (const Band& to : bands_) {
        for (const Band& from : bands_) {
            const double distance =
                Bark(hz((to.begin + to.end) / 2.0)) - Bark(hz((from.begin + from.end) / 2.0));
            spreading_.push_back(static_cast<float>(
                FromDb(distance < 0 ? distance * kLowerSlope : -distance * kUpperSlope)));
        }
    }
    powers_.resize(Index(block_size));
    energies_.resize(bands_.size());
    offsets_.resize(bands_.size());
}

void MaskingModel::AllowedNoise(std::span<const float> coefficients, std::span<float> allowed) {
    // A coefficient alone swings with the phase of a tone; with the slope of its neighbours in
    // place of what a sine transform would give, it does so much less.
    const int count = static_cast<int>(coefficients.size());
    std::fill(powers_.begin(), powers_.end(), 0.0F);
    for (int k = 0; k < count; ++k) {
        const float x = coefficients[Index(k)];
        const float slope = (k + 1 < count ? coefficients[Index(k + 1)] : 0) -
                            (k > 0 ? coefficients[Index(k - 1)] : 0);
        powers_[Index(k)] = 0.5F * (x * x + slope * slope);
    }
    for (std::size_t b = 0; b < bands_.size(); ++b) {
        const Band& band = bands_[b];
        float sum = 0;
        LogSum logarithms;
        for (int k = band.begin; k < band.end; ++k) {
            sum += powers_[Index(k)];
            logarithms.Add(static_cast<double>(powers_[Index(k)] + 1e-3F));
        }
        const auto size = static_cast<float>(band.end - band.begin);
        energies_[b] = sum;
        // Flat as noise, or with a tone that stands out?
        const float flatness_db =
            3.0103F * (static_cast<float>(logarithms.Get()) / size - std::log2(sum / size + 1e-3F));
        const float tonality = std::clamp((-flatness_db - 2.5F) / 12, 0.0F, 1.0F);
        const float offset_db =
            band.noise_offset_db + tonality * (band.tone_offset_db - band.noise_offset_db);
        offsets_[b] = std::pow(10.0F, -0.1F * offset_db);
    }
    const float* spread = spreading_.data();
    for (std::size_t b = 0; b < bands_.size(); ++b) {
        float masked = 0;
        for (std::size_t from = 0; from < bands_.size(); ++from)
            masked += *spread++ * energies_[from] * offsets_[from];
        const Band& band = bands_[b];
        allowed[b] = std::max(masked / static_cast<float>(band.end - band.begin), band.quiet);
    }
}

}  // namespace codecs::wma
