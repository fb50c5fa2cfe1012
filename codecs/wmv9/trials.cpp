#include "codecs/wmv9/trials.h"

#include <algorithm>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

// What other tools must be better by than the usual ones: the sharper picture is the better
// reference for longer than a trial.
constexpr double kToolMargin = 1.01;
constexpr double kHopeless = 1.02;  // of what the same pictures cost with others
// Trials whose outcome stays the same come at longer and longer distances.
constexpr int kLongestTools = 48;  // P pictures
constexpr int kShortestB = 12;     // pictures
constexpr int kLongestB = 96;
// What the newest trial weighs beside those before it.
constexpr double kNewest = 0.5;
// Of what so many B pictures in a row seem to cost in a trial, what they do: it is too short to
// show all that they save. Chosen on 14 clips, see docs/video9.md.
constexpr double kBParts[kMostBPictures + 1] = {1, 1.03, 0.97, 0.97};
constexpr double kClearly = 0.96;

}  // namespace

ToolTrial::ToolTrial(const Preset& preset, const PictureTools& now) : preset_(preset), best_(now) {}

void ToolTrial::Begin(const PictureTools& tools) {
    tools_ = tools;
    costs_ = {};
    may_win_ = true;
}

bool ToolTrial::Add(double cost) {
    const double margin = tools_ == UsualTools(preset_) ? 1 : kToolMargin;
    const std::size_t now = costs_.count++;
    costs_.up_to[now] = margin * cost + (now > 0 ? costs_.up_to[now - 1] : 0);
    may_win_ = least_.count <= now || costs_.up_to[now] <= kHopeless * least_.up_to[now];
    return may_win_;
}

void ToolTrial::End() {
    if (!may_win_ || costs_.count == 0) return;
    const std::size_t last = costs_.count - 1;
    if (least_.count > 0 && costs_.up_to[last] >= least_.up_to[last]) return;
    least_ = costs_;
    best_ = tools_;
}

void ToolTrial::Note(CodingState& state) const {
    const bool same = best_ == state.tools && state.tools_distance > 0;
    state.tools_distance =
        same ? std::min(2 * state.tools_distance, kLongestTools) : preset_.tool_trials;
    state.until_tools = state.tools_distance;
    state.tools = best_;
}

void BTrial::Add(int b_pictures, double part) {
    const double cost = kBParts[b_pictures] * part;
    double& mean = costs_[Index(b_pictures)];
    mean = mean > 0 ? mean + kNewest * (cost - mean) : cost;
    if (mean < costs_[Index(best_)]) best_ = b_pictures;
}

bool BTrial::IsClear() const { return costs_[Index(best_)] <= kClearly; }

void BTrial::Note(CodingState& state) const {
    const bool same = known_ && best_ == state.b_pictures;
    state.b_costs = costs_;
    state.b_pictures = best_;
    state.b_distance = same ? std::min(2 * state.b_distance, kLongestB) : kShortestB;
    state.until_b = state.b_distance;
}

}  // namespace codecs::wmv9
