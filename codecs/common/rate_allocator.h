// Keeps the GOPs of a stream to its rate while several of them are coded at once.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

#include "codecs/common/gop_rate_control.h"
#include "codecs/common/rate_settings.h"
#include "codecs/common/two_pass_plan.h"

namespace codecs {

/// What a GOP is given follows from the GOPs up to `Needs` and from no others, so it does not
/// depend on how many are coded side by side. One thread at a time.
class RateAllocator {
  public:
    /// The most GOPs that may be at work at once.
    static constexpr std::int64_t kMostAtOnce = 8;

    /// @param usual  to begin with
    /// @param plan   of a second pass; empty in a single or first one
    RateAllocator(const RateSettings& settings, const RateExperience& usual,
                  std::vector<PlannedGop> plan = {});

    /// The last GOP that must be closed before the next one may be opened; -1 = none. Usually
    /// far behind; all of them while pictures have to be left out, since a GOP that takes more
    /// than its share whatever is done leaves less for the one after it.
    std::int64_t Needs() const;
    /// The next GOP, `seconds` long.
    /// @param last  as far as is known, the stream has no other
    GopBudget Open(double seconds, bool last = false);
    /// What a trial of the stream's first I picture has come to; before a GOP is opened.
    void LearnTrial(const GopResult& trial);
    /// In any order. `result.seconds` is the GOP's true length.
    void Close(std::int64_t index, const GopResult& result);

  private:
    struct GopReservation {
        double surplus_bits = 0;  // what it adds to the VBV's level at most
        double own_bits = 0;      // where it leaves the level of an empty VBV at most
    };

    std::int64_t MostAtOnce() const;
    void Account(std::int64_t index, const GopResult& result);
    void Reserve(GopBudget& budget);
    double LevelAtMost() const;
    void Learn(const GopResult& result, double weight);
    bool Planned(std::int64_t index) const {
        return index < static_cast<std::int64_t>(plan_.size());
    }

    RateSettings settings_;
    std::vector<PlannedGop> plan_;
    std::map<std::int64_t, GopResult> closed_;  // not yet accounted for
    std::int64_t opened_ = 0;                   // GOPs
    std::int64_t accounted_ = 0;                // GOPs
    double debt_bits_ = 0;                      // taken beyond the budget
    bool drops_ = false;                        // many pictures, the GOP accounted for last
    double level_bits_ = 0;                     // of the VBV, after the GOPs accounted for
    std::deque<GopReservation> reservations_;   // of the others
    RateExperience experience_;
};

}  // namespace codecs
