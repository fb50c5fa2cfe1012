#include "codecs/wma_voice/pulse_search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kRefinements = 2;
constexpr int kMostPulses = 2 * kTracks;
constexpr float kLeastEnergy = 1e-20F;

// In the order of tracks.
void ByTracks(std::span<const float> by_time, std::span<float> by_tracks) {
    const std::size_t places = by_time.size() / kTracks;
    for (std::size_t track = 0; track < kTracks; ++track)
        for (std::size_t place = 0; place < places; ++place)
            by_tracks[track * places + place] = by_time[place * kTracks + track];
}

struct Pulse {
    int track = 0;
    int place = -1;  // -1 = not placed
    float sign = 0;
};

class Search {
  public:
    Search(const PulseCorrelations& correlations, std::span<const float> target,
           std::span<const float> pitch, const PulseType& type)
        : correlations_(correlations),
          samples_(Index(type.BlockSamples())),
          places_(type.BlockSamples() / kTracks) {
        ByTracks(target.first(samples_), target_);
        ByTracks(pitch.first(samples_), pitch_);
        for (std::size_t i = 0; i < samples_; ++i)
            power_[i] = correlations.products[i][i] - pitch_[i] * pitch_[i];
        for (int slot = 0; slot < 2; ++slot)
            for (int track = 0; track < (slot == 0 ? kTracks : type.doubled); ++track)
                pulses_[Index(count_++)].track = track;
    }

    void Run() {
        for (int placed = 0; placed < count_; ++placed) PlaceBest(0, count_);
        for (int pass = 0; pass < kRefinements; ++pass) {
            bool moved = false;
            for (int k = 0; k < count_; ++k) {
                const int before = pulses_[Index(k)].place;
                Add(pulses_[Index(k)], -1);
                pulses_[Index(k)].place = -1;
                PlaceBest(k, k + 1);
                moved |= pulses_[Index(k)].place != before;
            }
            if (!moved) return;
        }
    }

    Pulses Found() const {
        Pulses found;
        for (int k = 0; k < count_; ++k) {
            const Pulse& pulse = pulses_[Index(k)];
            TrackPulses& to = found[Index(pulse.track)];
            (k < kTracks ? to.first : to.second) = pulse.place;
            (k < kTracks ? to.first_plus : to.second_plus) = pulse.sign > 0;
        }
        return found;
    }

  private:
    // The place and sign for one of the pulses `from` to `to` - 1 with which all are best.
    void PlaceBest(int from, int to) {
        float best = -1;
        int best_pulse = from;
        Pulse chosen;
        for (int k = from; k < to; ++k) {
            const int track = pulses_[Index(k)].track;
            const Pulse& other = pulses_[Index(k < kTracks ? k + kTracks : track)];
            if (pulses_[Index(k)].place >= 0 || (k >= kTracks && other.place < 0)) continue;
            const Pulse found = BestOf(track, other, best);
            if (found.place < 0) continue;
            best_pulse = k;
            chosen = found;
        }
        pulses_[Index(best_pulse)] = chosen;
        Add(chosen, 1);
    }

    // Where one more pulse of a track is worth the most; none if that is no more than `best`.
    Pulse BestOf(int track, const Pulse& other, float& best) const {
        constexpr std::size_t kMostPlaces = kMostBlock / kTracks;
        std::array<float, kMostPlaces> signs;
        std::array<float, kMostPlaces> worths;
        const std::size_t from = Index(track * places_);
        for (std::size_t p = 0; p < Index(places_); ++p) {
            // The sign that gains more.
            const float target = target_[from + p];
            const float mixed = mixed_[from + p];
            const float sign = std::copysign(1.0F, target * energy_ - correlation_ * mixed);
            const float with = std::max(correlation_ + sign * target, 0.0F);
            const float energy = energy_ + 2 * sign * mixed + power_[from + p];
            signs[p] = sign;
            worths[p] = with * with / std::max(energy, kLeastEnergy);
        }
        // Pulses do not take each other away.
        if (other.place >= 0 && other.track == track && signs[Index(other.place)] != other.sign) {
            signs[Index(other.place)] = other.sign;
            worths[Index(other.place)] = 0;
        }
        Pulse found{track, -1, 0};
        for (int p = 0; p < places_; ++p) {
            if (worths[Index(p)] <= best) continue;
            best = worths[Index(p)];
            found = {track, p, signs[Index(p)]};
        }
        return found;
    }

    void Add(const Pulse& pulse, float times) {
        const std::size_t at = Index(pulse.track * places_ + pulse.place);
        correlation_ += times * pulse.sign * target_[at];
        if (times > 0) energy_ += 2 * pulse.sign * mixed_[at] + power_[at];
        const float* const row = correlations_.products[at].data();
        const float scale = times * pulse.sign;
        const float pitch = scale * pitch_[at];
        for (std::size_t i = 0; i < samples_; ++i) mixed_[i] += scale * row[i] - pitch * pitch_[i];
        if (times < 0) energy_ -= 2 * pulse.sign * mixed_[at] + power_[at];
    }

    const PulseCorrelations& correlations_;
    std::size_t samples_;
    int places_;  // of a track
    std::array<float, kMostBlock> target_{}, pitch_{}, power_{};
    std::array<float, kMostBlock> mixed_{};  // product of the pulses so far with one at each sample
    std::array<Pulse, kMostPulses> pulses_{};  // second ones of tracks behind the first ones
    int count_ = 0;
    float correlation_ = 0;  // of the pulses so far with the target
    float energy_ = 0;       // of the pulses so far
};

}  // namespace

void AddPulses(const Pulses& pulses, std::span<float> block) {
    for (int track = 0; track < kTracks; ++track) {
        const TrackPulses& from = pulses[Index(track)];
        block[Index(track + kTracks * from.first)] += from.first_plus ? 1.0F : -1.0F;
        if (from.second >= 0)
            block[Index(track + kTracks * from.second)] += from.second_plus ? 1.0F : -1.0F;
    }
}

void PulseCorrelations::Compute(std::span<const float> response) {
    const std::size_t count = response.size();
    const std::size_t places = count / kTracks;
    std::array<float, kMostBlock> reversed{};
    std::reverse_copy(response.begin(), response.end(), reversed.begin());
    // Rows in the order of time, each from the one below, the last one first.
    std::array<float, kMostBlock + 1> row{};
    for (std::size_t i = count; i-- > 0;) {
        for (std::size_t k = 0; k < count; ++k) row[k] = row[k + 1] + reversed[i] * reversed[k];
        ByTracks(std::span(row).first(count), products[i % kTracks * places + i / kTracks]);
    }
}

float PulseCorrelations::Power(const Pulses& pulses, int block_samples) const {
    std::array<std::size_t, kMostPulses> places;
    std::array<float, kMostPulses> signs;
    std::size_t count = 0;
    const int track_places = block_samples / kTracks;
    const auto add = [&](int track, int place, bool plus) {
        places[count] = Index(track * track_places + place);
        signs[count++] = plus ? 1.0F : -1.0F;
    };
    for (int track = 0; track < kTracks; ++track) {
        const TrackPulses& from = pulses[Index(track)];
        add(track, from.first, from.first_plus);
        if (from.second >= 0) add(track, from.second, from.second_plus);
    }
    float power = 0;
    for (std::size_t a = 0; a < count; ++a) {
        power += products[places[a]][places[a]];
        for (std::size_t b = 0; b < a; ++b)
            power += 2 * signs[a] * signs[b] * products[places[a]][places[b]];
    }
    return power;
}

Pulses SearchPulses(const PulseCorrelations& correlations, std::span<const float> target,
                    std::span<const float> pitch, const PulseType& type) {
    Search search(correlations, target, pitch, type);
    search.Run();
    return search.Found();
}

}  // namespace codecs::wma_voice
