#include "codecs/wma_lossless/joint_filter.h"

#include <algorithm>

#include "codecs/common/index.h"

namespace codecs::wma_lossless {
namespace {

int Sign(std::int32_t value) { return (value > 0 ? 1 : 0) - (value < 0 ? 1 : 0); }

void Move(std::int16_t& weight, int by) {
    weight = static_cast<std::int16_t>(weight + by);  // modulo 2^16
}

bool HasAny(const std::vector<std::int32_t>& values) {
    return std::ranges::any_of(values, [](std::int32_t value) { return value != 0; });
}

}  // namespace

JointFilter::JointFilter(const Configuration& configuration, const StreamFormat& format)
    : tap_(configuration.tap),
      difference_(configuration.difference && format.Channels() == 2),
      shape_(configuration.multichannel),
      channels_(format.Channels()),
      most_((1 << (format.Bits() - 1)) - 1),
      weights_(Index(shape_.order * channels_ * channels_)),
      same_time_weights_(Index(channels_ * channels_)),
      history_(Index(shape_.order * channels_)),
      signs_(history_.size()) {}

void JointFilter::Restart() {
    last_ = {};
    std::ranges::fill(weights_, std::int16_t{0});
    std::ranges::fill(same_time_weights_, std::int16_t{0});
    std::ranges::fill(history_, 0);
    std::ranges::fill(signs_, std::int16_t{0});
}

bool JointFilter::Run(Tile& tile) {
    if (tap_) TakeTap(tile);
    if (difference_) {
        std::vector<std::int32_t>& left = tile.channels[0];
        std::vector<std::int32_t>& right = tile.channels[1];
        for (std::size_t i = 0; i < left.size(); ++i) {
            right[i] -= left[i];
            left[i] += right[i] >> 1;
        }
    }
    // A decoder decides before it predicts: what happens to be predicted wholly is coded still.
    for (int channel = 0; channel < channels_; ++channel)
        tile.coded[Index(channel)] = HasAny(tile.channels[Index(channel)]);
    return shape_.order == 0 || Predict(tile);
}

void JointFilter::TakeTap(Tile& tile) {
    for (int channel = 0; channel < channels_; ++channel) {
        std::int32_t& last = last_[Index(channel)];
        for (std::int32_t& value : tile.channels[Index(channel)]) {
            const std::int32_t sample = value;
            value -= (31 * last) >> 5;
            last = sample;
        }
    }
}

bool JointFilter::Predict(Tile& tile) {
    if (channels_ == 2 && shape_.order == 2) return PredictAs<2, 2>(tile);
    if (channels_ == 2 && shape_.order == 8) return PredictAs<2, 8>(tile);
    if (channels_ == 1 && shape_.order == 2) return PredictAs<1, 2>(tile);
    return PredictAs<0, 0>(tile);
}

// For a number of channels and an order that are known, or 0 for any.
template <int kChannels, int kOrder>
bool JointFilter::PredictAs(Tile& tile) {
    const int channels = kChannels > 0 ? kChannels : channels_;
    const int taps = kOrder > 0 ? kOrder * kChannels : shape_.order * channels;
    const std::int64_t half = (std::int64_t{1} << shape_.scaling) >> 1;
    const std::size_t count = tile.channels[0].size();
    // Newest first, from the end of the memory down to its beginning.
    laid_out_.resize(Index(taps) + count * Index(channels));
    laid_out_signs_.resize(laid_out_.size());
    std::ranges::copy(history_, laid_out_.end() - taps);
    std::ranges::copy(signs_, laid_out_signs_.end() - taps);
    std::int32_t* history = laid_out_.data() + laid_out_.size() - taps;
    std::int16_t* signs = laid_out_signs_.data() + laid_out_.size() - taps;
    bool safe = true;
    for (std::size_t i = 0; i < count; ++i, history -= channels, signs -= channels) {
        std::array<std::int32_t, kMostChannels> now = {};
        for (int channel = 0; channel < channels; ++channel)
            now[Index(channel)] = tile.channels[Index(channel)][i];
        for (int channel = 0; channel < channels; ++channel) {
            if (!tile.coded[Index(channel)]) continue;
            std::int16_t* const weights = &weights_[Index(channel * taps)];
            std::int16_t* const same_time = &same_time_weights_[Index(channel * channels)];
            std::int64_t sum = half;
            for (int tap = 0; tap < taps; ++tap) sum += std::int64_t{weights[tap]} * history[tap];
            for (int other = 0; other < channel; ++other)
                sum += std::int64_t{same_time[other]} * now[Index(other)];
            const auto narrow = static_cast<std::int32_t>(sum);
            safe = safe && sum == narrow;
            const std::int32_t error = now[Index(channel)] - (narrow >> shape_.scaling);
            tile.channels[Index(channel)][i] = error;
            const int direction = Sign(error);
            for (int tap = 0; tap < taps; ++tap) Move(weights[tap], direction * signs[tap]);
            for (int other = 0; other < channel; ++other)
                Move(same_time[other], direction * Sign(now[Index(other)]));
        }
        for (int channel = 0; channel < channels; ++channel) {
            history[channel - channels] = std::clamp(now[Index(channel)], -most_ - 1, most_);
            signs[channel - channels] = static_cast<std::int16_t>(Sign(now[Index(channel)]));
        }
    }
    std::copy_n(history, taps, history_.begin());
    std::copy_n(signs, taps, signs_.begin());
    return safe;
}

}  // namespace codecs::wma_lossless
