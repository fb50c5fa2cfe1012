// Tells music from speech by what speech has and most music lacks: gaps between syllables.
#pragma once

#include <span>
#include <vector>

namespace codecs::wma_voice {

class MusicDetector {
  public:
    explicit MusicDetector(int sampling_rate);

    void Add(std::span<const float> samples);
    /// Of the last three seconds. What has not lasted a second yet, and silence, is taken for
    /// speech; noise that goes on and on for music.
    bool IsMusic() const { return is_music_; }

  private:
    void Judge();

    int stretch_samples_;
    int filled_ = 0;               // samples of the stretch under way
    float energy_ = 0;             // of those
    std::vector<float> energies_;  // of stretches, the oldest at next_ once there are as many
    std::size_t next_ = 0;
    std::size_t known_ = 0;
    bool is_music_ = false;
};

}  // namespace codecs::wma_voice
