#include "engine/filters/downmix.h"

#include <algorithm>
#include <cmath>

namespace engine {
namespace {

struct Gains {
    double left = 0;
    double right = 0;
};

double GainOf(double attenuation) {
    return attenuation >= Downmix::kSilence ? 0 : std::pow(10.0, -attenuation / 20);
}

}  // namespace

std::vector<double> DownmixGains(const AVChannelLayout& from, const Downmix& levels) {
    const double centre = GainOf(levels.center);
    const double surround = GainOf(levels.surround);
    const double behind = surround * M_SQRT1_2;
    const double low = GainOf(levels.lfe);
    std::vector<Gains> channels;
    for (int i = 0; i < from.nb_channels; ++i) {
        switch (av_channel_layout_channel_from_index(&from, static_cast<unsigned>(i))) {
            case AV_CHAN_FRONT_LEFT:
                channels.push_back({1, 0});
                break;
            case AV_CHAN_FRONT_RIGHT:
                channels.push_back({0, 1});
                break;
            case AV_CHAN_FRONT_CENTER:
                channels.push_back({centre, centre});
                break;
            case AV_CHAN_LOW_FREQUENCY:
                channels.push_back({low, low});
                break;
            case AV_CHAN_SIDE_LEFT:
            case AV_CHAN_BACK_LEFT:
                channels.push_back({surround, 0});
                break;
            case AV_CHAN_SIDE_RIGHT:
            case AV_CHAN_BACK_RIGHT:
                channels.push_back({0, surround});
                break;
            case AV_CHAN_BACK_CENTER:
                channels.push_back({behind, behind});
                break;
            default:
                return {};
        }
    }
    Gains sum;
    for (const Gains& gains : channels) {
        sum.left += gains.left;
        sum.right += gains.right;
    }
    const double whole = std::max({1.0, sum.left, sum.right});
    std::vector<double> matrix;
    matrix.reserve(2 * channels.size());
    for (const Gains& gains : channels) matrix.push_back(gains.left / whole);
    for (const Gains& gains : channels) matrix.push_back(gains.right / whole);
    return matrix;
}

}  // namespace engine
