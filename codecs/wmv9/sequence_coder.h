// Codes the pictures of a sequence as it is told, and keeps what later ones refer to.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "codecs/common/picture_cost.h"
#include "codecs/common/task_team.h"
#include "codecs/wmv9/activity.h"
#include "codecs/wmv9/coding_state.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/likely_motion.h"
#include "codecs/wmv9/lookahead.h"
#include "codecs/wmv9/macroblock_tree.h"
#include "codecs/wmv9/mode_decision.h"
#include "codecs/wmv9/picture.h"
#include "codecs/wmv9/picture_coder.h"
#include "codecs/wmv9/preset.h"
#include "codecs/wmv9/quantiser_map.h"
#include "codecs/wmv9/sequence_header.h"
#include "codecs/wmv9/temporal_filter.h"
#include "codecs/wmv9/trial_decision.h"

namespace codecs::wmv9 {

/// One thread at a time.
class SequenceCoder {
  public:
    /// @param settings  checked
    explicit SequenceCoder(const EncoderSettings& settings);

    std::array<std::uint8_t, 4> SequenceBytes() const { return sequence_.Bytes(); }

    /// See Encoder::LookAhead.
    std::optional<double> LookAhead(const PictureView& picture);
    Lookahead& Ahead() { return lookahead_; }

    /// What was coded last stays, and the next picture begins.
    void Begin(const PictureView& picture);
    /// Loads and filters the picture that was begun, which lives until it is coded. Returns the
    /// header that it would have; of a P picture with the tools of the one before.
    PictureHeader Prepare(const PictureView& picture, const PictureRequest& request);
    /// After Prepare of the same picture, for another request.
    PictureHeader PrepareAgain(const PictureRequest& request);
    /// What was prepared, in place of what was coded of it before.
    CodedPicture Code(PictureHeader header);
    /// The picture was not there, after all.
    void Forget();

    /// What `code` codes, as `decision` decides, leaves everything as it was.
    void Try(const TrialDecision& decision, const std::function<void()>& code);
    /// Of the rows that trials code of the picture coded last: error and what its bits are worth.
    double TrialCost(double quantiser) const;

    // Of the picture coded last.
    PictureView Reconstruction();
    double IntraPart() const { return grid_->IntraPart(); }  // of macroblocks
    double MeanQuantiser() const { return mean_quantiser_; }

    /// Before the picture that was begun, and after it.
    const CodingState& Past() const { return past_; }
    CodingState& Next() { return next_; }

  private:
    void Follow(const PictureView& picture);
    void Look(const PictureView& picture, const PictureRequest& request);
    int Parts() const;
    bool IsCoded(int y) const;
    void LoadRow(Frame& frame, int y) const;
    void LoadUncoded(Frame& frame);
    void Filter(const PictureRequest& request, bool is_i);
    LumaPlane Luma() const;
    bool FollowsFades() const;
    PictureKind KindFor(const PictureRequest& request) const;
    PictureHeader HeaderFor(const PictureRequest& request);
    static double SetQuantiser(PictureHeader& header, double quantiser);
    void ChooseQuantisers(PictureHeader& header);
    const Frame& Anchor(int place) const;
    int FreeAnchor() const;
    int FreeGrid() const;
    void Remember(const PictureHeader& header, int place, int grid, int mapped);

    const EncoderSettings settings_;
    const SequenceHeader sequence_;
    const int width_;  // macroblocks
    const int height_;
    const Preset& preset_;
    const RdModeDecision mode_decision_;
    const TrialDecision* trial_ = nullptr;  // under way
    TaskTeam team_;
    PictureCoder coder_;
    Lookahead lookahead_;
    MacroblockTree tree_;
    TemporalFilter temporal_filter_;
    ActivityMeter activity_;
    QuantiserMap quantisers_;
    bool looks_ahead_ = false;
    // Of the picture in hand.
    PictureView picture_;
    int followed_ = -1;  // in the look-ahead, where it knows nothing beyond; -1 = not there
    int number_ = -1;    // in the look-ahead
    std::span<const float> worth_;  // of its macroblocks; empty = no later picture is known
    std::optional<LikelyMotion> likely_;
    double asked_ = 0;           // quantiser
    double mean_quantiser_ = 0;  // of its macroblocks
    double effective_ = 0;       // that had better been asked for to come to it
    Frame source_;
    Frame b_frame_;
    MacroblockGrid b_grid_;
    std::vector<Frame> anchors_;
    std::vector<MacroblockGrid> grids_;
    std::vector<Frame> mapped_;  // references in turn, once there is a fade
    CodingState past_;           // before the picture coded last
    CodingState next_;           // after it
    int kept_anchor_ = -1;       // by a trial
    int kept_grid_ = -1;
    std::optional<Picture> unfiltered_;  // the picture coded last, where nobody has looked at it
    const Frame* result_ = nullptr;
    const MacroblockGrid* grid_ = nullptr;
};

}  // namespace codecs::wmv9
