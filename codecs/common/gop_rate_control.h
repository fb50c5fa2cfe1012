// Chooses the quantiser of each picture of one closed GOP so that the GOP keeps to its bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/picture_forecast.h"
#include "codecs/common/rate_settings.h"
#include "codecs/common/sharpening.h"

namespace codecs {

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
    std::int64_t dropped = 0;
    CodedSum coded;
};

/// Keeps the quantiser as even over the GOP as its bits allow. The state is the GOP's own: what
/// it decides depends on nothing but the budget and the GOP's pictures.
class GopRateControl {
  public:
    GopRateControl(const RateSettings& settings, GopBudget budget);

    struct Decision {
        bool drop = false;
        double quantiser = 1;
        double expected_bits = 0;
    };

    /// How many consecutive B pictures a first pass has found from that picture on, as shown.
    std::optional<std::size_t> FoundB(std::size_t first) const;
    /// In coding order.
    Decision Decide(const RatedPicture& picture);
    /// Bits that the VBV takes before the picture of the last decision.
    double VbvRoom() const { return settings_.vbv_bits - level_bits_; }
    /// Whether it may take so much: the VBV holds it, now and with what the GOPs after this
    /// one may put into it. Only an I picture that is larger than the whole VBV is let through
    /// once the VBV has run empty, where that breaks no promise: there would never be another.
    bool Fits(double bits, double quantiser) const;
    /// What it had better have in place of `quantiser`, now that it has taken so many bits: the
    /// same unless that was a surprise. To be asked again of what it has then taken,
    /// until it is the same.
    double Reconsidered(double quantiser, const PictureBits& taken, double bits);
    /// For that picture in place of `quantiser`, at which it took more than fits; at most the most
    /// coarse.
    double Coarser(double quantiser, double bits) const;
    /// What the picture of the last decision has taken, and with which quantiser. An encoder may
    /// have made an I picture of one that was not asked to be one.
    /// Returns what is to be believed of it in a second pass.
    FoundPicture Coded(const PictureBits& taken, double bits, double quantiser, bool is_i);
    /// In place of Coded: it fitted at no quantiser and was left out.
    void Dropped();

    /// `seconds` of it is the budget's.
    const GopResult& Result() const { return result_; }

  private:
    struct Tried {
        double quantiser = 0;
        double missed = 0;  // bits of the stream
    };

    double Remaining() const;
    PictureBits Following() const { return forecast_.Following(Remaining()); }
    bool Planned() const { return forecast_.Planned(); }
    double TimeOf(const RatedPicture& picture) const;
    void LearnInterval(double passed);
    void Shorten();
    double IPart() const;
    double EvenQuantiser() const;
    double QuantiserFor(double bits) const;
    double RoomQuantiser() const;
    double IQuantiser(double even) const;
    double Overdraft(double seconds) const;
    double PromisedRoom() const;
    double HardRoom() const;
    double SoftRoom() const;
    double SteadyStep() const;
    bool NothingTakesWhatIsLeft() const;
    double Restrained(double even) const;
    double Chosen();
    double SharpeningBits() const;
    double SharperQuantiser() const;
    bool Surprises(double bits, double expected) const;
    double Missed(double bits) const;
    double Untried(double quantiser, double chosen, double missed);
    bool MustDrop(double even) const;

    RateSettings settings_;
    GopBudget budget_;
    double seconds_ = 0;      // of the budget, until more is known
    double budget_bits_ = 0;  // its bits, the same
    bool shortened_ = false;
    GopResult result_;

    PictureForecast forecast_;
    RatedPicture picture_;  // of the last decision
    int dropped_in_a_row_ = 0;
    bool stands_still_ = false;  // it is as early as one that was dropped
    bool rests_ = false;         // it shows nothing new, and becomes sharper
    double passed_ = 0;          // seconds since the one before it
    Sharpening sharpening_;
    Tried too_fine_, too_coarse_;  // at which it took too much and too little
    int tries_ = 0;
    double even_ = 0;            // quantiser at its time, as a P picture
    double level_bits_ = 0;      // of the VBV, at most
    double own_level_bits_ = 0;  // had it been empty before the GOP
    std::size_t decided_ = 0;    // pictures
    double interval_ = 0;        // between pictures, seconds
    double quantiser_ = 0;       // of the last delta, as a P picture; 0 = none yet
    double i_quantiser_ = 0;
};

}  // namespace codecs
