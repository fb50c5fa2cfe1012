// Chooses the quantiser of each picture of one closed group so that the group keeps to its bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/rate_settings.h"

namespace codecs {

/// What coded groups have taught of the pictures' sizes.
struct RateExperience {
    double pictures_per_second = 0;
    double key_texture_per_cost = 0;  // texture of a key picture by its IntraCost
    double key_fixed = 0;             // bits
    double delta_texture = 0;         // of another picture, as a part of the key picture's texture
    double delta_fixed = 0;           // bits
};

/// What is known of a group before it is coded.
struct GroupOutlook {
    double seconds = 0;  // its length
    double bits = 0;     // its budget
    double bucket_level_bits = 0;
    RateExperience experience;
    std::vector<PictureBits> pictures;  // as a first pass found them; empty in a single pass
};

/// What a group has come to.
struct GroupResult {
    double seconds = 0;
    double bits = 0;
    std::int64_t keys = 0;
    std::int64_t deltas = 0;
    std::int64_t dropped = 0;
    double key_cost = 0;  // sums over its pictures
    PictureBits key_bits;
    PictureBits delta_bits;
};

/// Keeps the quantiser as even over the group as its bits allow. The state is the group's own: what
/// it decides depends on nothing but the outlook and the group's pictures.
class GroupRateControl {
  public:
    GroupRateControl(const RateSettings& settings, GroupOutlook outlook);

    struct Picture {
        double seconds = 0;  // since the group's first picture; not decreasing
        bool key = false;    // the first one of a group is
        double intra_cost = 1;
        double inter_cost = 0;
    };
    struct Decision {
        bool drop = false;
        double quantiser = 1;
        double expected_bits = 0;
    };

    Decision Decide(const Picture& picture);
    /// Bits that the receiver's buffer takes before the picture of the last decision.
    double BucketRoom() const { return settings_.bucket_bits - level_bits_; }
    /// What the picture of the last decision has taken. An encoder may have made a key picture of
    /// one that was not asked to be one.
    void Coded(const PictureBits& taken, double bits, bool key);

    /// `seconds` of it is the outlook's.
    const GroupResult& Result() const { return result_; }

  private:
    PictureBits Expected(const Picture& picture) const;
    PictureBits Following(double seconds) const;
    PictureBits DeltaMean() const;
    double KeyPart() const;
    double EvenQuantiser(const Picture& picture) const;
    double QuantiserFor(double bits) const;
    double KeyQuantiser(const Picture& picture, double even) const;
    double Overdraft(double seconds) const;
    double RoomAt(double seconds) const;
    double Restrained(double even) const;
    bool MustDrop(const Picture& picture, double even) const;
    void LearnDelta(const PictureBits& taken);

    RateSettings settings_;
    GroupOutlook outlook_;
    std::vector<PictureBits> following_;  // of outlook_.pictures: each one's sum to the end
    GroupResult result_;

    Picture picture_;            // of the last decision
    PictureBits expected_;       // of it
    double level_bits_ = 0;      // of the bucket, at most
    double own_level_bits_ = 0;  // had it been empty before the group
    std::size_t decided_ = 0;    // pictures
    double interval_ = 0;        // between pictures, seconds
    double quantiser_ = 0;       // of the last delta; 0 = none yet
    double key_quantiser_ = 0;
    PictureBits delta_mean_;    // of the recent deltas
    double delta_cost_ = 0;     // their InterCost
    int learnt_ = 0;            // deltas in the two means
    double texture_trust_ = 1;  // what a first pass's pictures take now over what they took then
};

}  // namespace codecs
