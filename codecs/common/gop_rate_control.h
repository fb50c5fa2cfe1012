// Chooses the quantiser of each picture of one closed GOP so that the GOP keeps to its bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/rate_settings.h"
#include "codecs/common/sharpening.h"

namespace codecs {

/// What coded GOPs have taught of the pictures' sizes. A delta is a P or B picture.
struct RateExperience {
    double pictures_per_second = 0;
    double i_texture_per_cost = 0;  // texture of an I picture by its IntraCost
    double i_fixed = 0;             // bits
    double delta_texture = 0;       // as a part of the I picture's texture
    double delta_fixed = 0;         // bits
};

/// What a GOP may take, and what is known of it before it is coded.
struct GopBudget {
    double seconds = 0;         // its length, at least
    double bits = 0;            // that it may take
    double vbv_level_bits = 0;  // before it, at most
    // What the GOPs after it count on: the level after it, with that one before it, and with an
    // empty VBV before it.
    double vbv_end_bits = 0;
    double vbv_own_end_bits = 0;
    bool level_is_exact = false;  // nothing before it is still being coded
    bool last = false;            // no other makes good what it misses
    RateExperience experience;
    std::vector<FoundPicture> pictures;  // of a first pass, as shown; empty in a single pass
};

/// What a GOP has come to.
struct GopResult {
    double seconds = 0;
    double bits = 0;
    double own_level_bits = 0;  // of a VBV that was empty before the GOP, after its ...
    double last_seconds = 0;    // ... last picture
    std::int64_t i_pictures = 0;
    std::int64_t deltas = 0;
    std::int64_t dropped = 0;
    double i_cost = 0;  // sums over its pictures
    PictureBits i_bits;
    PictureBits delta_bits;
};

/// Keeps the quantiser as even over the GOP as its bits allow. The state is the GOP's own: what
/// it decides depends on nothing but the budget and the GOP's pictures.
class GopRateControl {
  public:
    GopRateControl(const RateSettings& settings, GopBudget budget);

    /// A picture that waits.
    struct Waiting {
        double seconds = 0;    // when it is shown, since the GOP began
        double step_cost = 0;  // InterCost beside the one shown before it
    };
    struct Picture {
        double seconds = 0;     // when it is decoded, since the GOP began; not decreasing
        std::size_t index = 0;  // its place among the GOP's pictures as they are shown
        PictureKind kind = PictureKind::kI;
        double intra_cost = 1;
        double inter_cost = 0;  // beside the nearest of what it is predicted from
        // Beside the picture shown before it; of the first one, intra_cost.
        double step_cost = 0;
        std::span<const Waiting> waiting = {};  // as shown, of those that have not been decided
        bool last = false;                      // they are all that the GOP has
    };
    struct Decision {
        bool drop = false;
        double quantiser = 1;
        double expected_bits = 0;
    };

    /// In coding order.
    Decision Decide(const Picture& picture);
    /// Bits that the VBV takes before the picture of the last decision.
    double VbvRoom() const { return settings_.vbv_bits - level_bits_; }
    /// Whether it may take so much: the VBV holds it, now and with what the GOPs after this
    /// one may put into it. Only an I picture that is larger than the whole VBV is let through
    /// once the VBV has surely run empty: there would never be another.
    bool Fits(double bits, double quantiser) const;
    /// What it had better have in place of `quantiser`, now that it has taken this: the same unless
    /// that was a surprise.
    double Reconsidered(double quantiser, const PictureBits& taken);
    /// For that picture in place of `quantiser`, at which it took more than fits; not above 31.
    double Coarser(double quantiser, double bits) const;
    /// What the picture of the last decision has taken, and with which quantiser. An encoder may
    /// have made an I picture of one that was not asked to be one.
    void Coded(const PictureBits& taken, double bits, double quantiser, bool is_i);
    /// In place of Coded: it fitted at no quantiser and was left out.
    void Dropped();

    /// `seconds` of it is the budget's.
    const GopResult& Result() const { return result_; }

  private:
    struct Mean {
        PictureBits bits;
        double cost = 0;  // InterCost; of deltas_, the step's
        int learnt = 0;   // pictures
        void Learn(const PictureBits& taken, double inter_cost, int memory);
    };

    Mean& MeanOf(PictureKind kind) { return kind == PictureKind::kB ? b_mean_ : p_mean_; }
    PictureBits Expected(const Picture& picture);
    PictureBits Following() const;
    double Remaining() const;
    void LearnInterval(double passed);
    void Shorten();
    PictureBits DeltaMean() const;
    double IPart() const;
    double EvenQuantiser(const Picture& picture) const;
    double QuantiserFor(double bits) const;
    double RoomQuantiser() const;
    double IQuantiser(double even) const;
    double Overdraft(double seconds) const;
    double HardRoom() const;
    double SoftRoom() const;
    double Restrained(double even) const;
    double Chosen();
    double SharpeningBits() const;
    double ITexture() const;
    double SharperQuantiser() const;
    bool MustDrop(const Picture& picture, double even) const;

    RateSettings settings_;
    GopBudget budget_;
    PictureBits found_;       // all of budget_.pictures, by P pictures' quantiser
    PictureBits undecided_;   // those of them that have not been decided
    double seconds_ = 0;      // of the budget, until more is known
    double budget_bits_ = 0;  // its bits, the same
    bool shortened_ = false;
    GopResult result_;

    Picture picture_;       // of the last decision
    PictureBits expected_;  // of it
    bool just_dropped_ = false;
    bool stands_still_ = false;  // it is as early as one that was dropped
    bool rests_ = false;         // it shows nothing new, and becomes sharper
    double passed_ = 0;          // seconds since the one before it
    Sharpening sharpening_;
    bool surprised_ = false;     // that is what it has taken once
    double even_ = 0;            // quantiser at its time, as a P picture
    double level_bits_ = 0;      // of the VBV, at most
    double own_level_bits_ = 0;  // had it been empty before the GOP
    std::size_t decided_ = 0;    // pictures
    double interval_ = 0;        // between pictures, seconds
    double quantiser_ = 0;       // of the last delta, as a P picture; 0 = none yet
    double i_quantiser_ = 0;
    Mean deltas_;  // recent ones, by P pictures' quantiser
    Mean p_mean_, b_mean_;
    double texture_trust_ = 1;  // what a first pass's pictures take now over what they took then
};

}  // namespace codecs
