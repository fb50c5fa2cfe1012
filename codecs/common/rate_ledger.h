// Keeps the groups of a stream to its rate while several of them are coded at once.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

#include "codecs/common/group_rate_control.h"
#include "codecs/common/rate_settings.h"
#include "codecs/common/two_pass_plan.h"

namespace codecs {

/// What a group is given follows from the groups up to `Needs` and from no others, so it does not
/// depend on how many are coded side by side. One thread at a time.
class RateLedger {
  public:
    /// The most groups that may be at work at once.
    static constexpr std::int64_t kMostAtOnce = 8;

    /// @param usual  to begin with
    /// @param plan   of a second pass; empty in a single or first one
    RateLedger(const RateSettings& settings, const RateExperience& usual,
               std::vector<PlannedGroup> plan = {});

    /// The last group that must be closed before the next one may be opened; -1 = none. Usually
    /// far behind; all of them while pictures have to be left out, since a group that takes more
    /// than its share whatever is done leaves less for the one after it.
    std::int64_t Needs() const;
    /// The next group, `seconds` long.
    GroupOutlook Open(double seconds);
    /// What a trial of the stream's first I picture has come to; before a group is opened.
    void LearnTrial(const GroupResult& trial);
    /// In any order. `result.seconds` is the group's true length.
    void Close(std::int64_t index, const GroupResult& result);

  private:
    struct GroupPromise {
        double surplus_bits = 0;  // what it adds to the bucket's level at most
        double own_bits = 0;      // where it leaves the level of an empty bucket at most
    };

    std::int64_t MostAtOnce() const;
    void Account(std::int64_t index, const GroupResult& result);
    void Promise(GroupOutlook& outlook);
    double LevelAtMost() const;
    void Learn(const GroupResult& result, double weight);
    bool Planned(std::int64_t index) const {
        return index < static_cast<std::int64_t>(plan_.size());
    }

    RateSettings settings_;
    std::vector<PlannedGroup> plan_;
    std::map<std::int64_t, GroupResult> closed_;  // not yet accounted for
    std::int64_t opened_ = 0;                     // groups
    std::int64_t accounted_ = 0;                  // groups
    double debt_bits_ = 0;                        // taken beyond the budget
    bool drops_ = false;                          // many pictures, the group accounted for last
    double level_bits_ = 0;                       // of the bucket, after the groups accounted for
    std::deque<GroupPromise> promises_;           // of the others
    RateExperience experience_;
};

}  // namespace codecs
