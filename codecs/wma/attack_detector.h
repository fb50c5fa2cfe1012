// Finds where sound suddenly becomes louder.
#pragma once

#include <span>
#include <vector>

namespace codecs::wma {

/// One channel; one object a channel, one thread an object.
class AttackDetector {
  public:
    /// @param slice  samples whose energies are compared with those before
    explicit AttackDetector(int slice) : slice_(slice) {}

    /// The next samples of the channel, as 16-bit numbers: whole slices of them.
    /// @param attacks  one for each slice; set where an attack begins, otherwise left as it is
    void Find(std::span<const float> samples, std::vector<bool>& attacks);

  private:
    int slice_;
    float last_ = 0;
    float before_last_ = 0;
    float background_ = 0;  // energy of the slices before, the last ones counting most
};

}  // namespace codecs::wma
