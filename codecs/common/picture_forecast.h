// What the pictures of a GOP will take, judged by those before them, by how much of them is new,
// and by what a first pass has found.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/picture_bits.h"

namespace codecs {

/// What coded GOPs have taught of the pictures' sizes. A delta is a P or B picture.
struct RateExperience {
    double pictures_per_second = 0;
    double i_texture_per_cost = 0;  // texture of an I picture by its IntraCost
    double i_fixed = 0;             // bits
    double delta_residue = 0;       // as a part of the I picture's texture
    double delta_fixed = 0;         // bits
};

/// A picture that waits.
struct WaitingPicture {
    double seconds = 0;  // when it is shown, since the GOP began
    double intra_cost = 1;
    double step_cost = 0;  // of what is new beside the one shown before it
};

/// The picture in hand.
struct RatedPicture {
    double seconds = 0;     // when it is decoded, since the GOP began; not decreasing
    std::size_t index = 0;  // its place among the GOP's pictures as they are shown
    PictureKind kind = PictureKind::kI;
    double intra_cost = 1;
    double inter_cost = 0;  // of what is new beside the nearest of what it is predicted from
    // Of what is new beside the picture shown before it; of the first one, intra_cost.
    double step_cost = 0;
    std::span<const WaitingPicture> waiting = {};  // as shown, of those that have not been decided
    bool last = false;                             // they are all that the GOP has
    // When it is shown, or the first B picture that refers to it; before, it may still come.
    double needed_seconds = 0;

    /// How much of it is new, beside what a picture shows whose bits tell of those that follow.
    double News() const {
        constexpr double kTelling = 0.03;  // of its intra cost
        return step_cost / (kTelling * intra_cost);
    }
};

/// What has been coded of a GOP.
struct CodedSum {
    std::int64_t i_pictures = 0;
    std::int64_t deltas = 0;
    double i_cost = 0;  // sums over its pictures
    PictureBits i_bits;
    PictureBits delta_bits;

    /// Whether its I pictures show enough to tell what others take: nearly blank ones do not.
    bool TellsTexture() const {
        constexpr double kLeast = 0.2;
        return i_pictures > 0 && i_bits.Usually() > kLeast * i_bits.fixed;
    }
};

class PictureForecast {
  public:
    /// @param found  by a first pass, of all of the GOP's pictures as shown; empty in a single pass
    PictureForecast(const RateExperience& experience, std::vector<FoundPicture> found);

    /// The next picture in coding order.
    void Begin(const RatedPicture& picture);
    /// What it will take.
    const PictureBits& Expected() const { return expected_; }
    /// It has taken this once, and will about as much again.
    void Surprise(const PictureBits& taken, double quantiser);
    /// Of the GOP's pictures that have not been decided, by P pictures' quantiser.
    /// @param pictures  how many there are
    PictureBits Following(double pictures) const;
    /// One of them.
    PictureBits DeltaMean() const { return MeanDelta(deltas_); }
    /// Times what recent ones take, at that quantiser; 1 where a first pass has found it.
    double Jump(double quantiser) const;
    /// @param sharpened  it showed nothing new
    /// Returns what is to be believed of it in a second pass.
    FoundPicture Coded(const PictureBits& coded, double quantiser, bool is_i, bool sharpened);
    /// What it refers to is the caller's.
    void Forget() { picture_.waiting = {}; }

    const RatedPicture& Picture() const { return picture_; }
    bool Planned() const { return !found_.empty(); }
    std::span<const FoundPicture> Found() const { return found_; }
    /// Of all pictures that a first pass has found, as far as they can be trusted.
    PictureBits FoundInAll() const { return in_all_.Scaled(trust_); }
    double Trust() const { return trust_; }
    /// P and B pictures that have been coded and showed something new.
    int Learnt() const { return learnt_; }
    /// Of the GOP's I pictures.
    double ITexture() const;
    /// What a delta takes as a part of an I picture.
    double DeltaPart() const;
    const CodedSum& Sum() const { return sum_; }

  private:
    struct Mean {
        PictureBits bits;
        double cost = 0;
        int learnt = 0;  // pictures
        void Learn(const PictureBits& taken, double new_cost, int memory);
        void Doubt();  // what comes is another scene
        /// Up to which a picture is like these.
        double LikeCost(double intra_cost) const;
    };

    Mean& MeanOf(PictureKind kind) { return kind == PictureKind::kB ? b_mean_ : p_mean_; }
    PictureBits Expect();
    PictureBits Usual() const;
    PictureBits MeanDelta(const Mean& deltas) const;
    PictureBits ByCost(double cost, double intra_cost) const;
    PictureBits ByMean(const Mean& mean, double cost, double intra_cost) const;
    PictureBits ByStep(double cost, double intra_cost) const;
    PictureBits MeanByStep(std::span<const WaitingPicture> pictures) const;
    PictureBits Believed(const PictureBits& taken, double quantiser) const;
    PictureBits LongMean() const;
    bool IsOtherScene(const PictureBits& taken, double quantiser) const;
    void LearnDelta(const PictureBits& taken, double quantiser);
    void LearnTrust(const PictureBits& taken, double quantiser);
    double IRate() const;

    RateExperience experience_;
    std::vector<FoundPicture> found_;
    PictureBits in_all_;     // all of `found_`, by P pictures' quantiser
    PictureBits undecided_;  // those of them that have not been decided
    RatedPicture picture_;   // in hand
    PictureBits expected_;
    PictureBits foreseen_;    // the same, before it was coded
    bool surprised_ = false;  // what is expected is what it has taken once
    Mean deltas_;             // recent ones, by P pictures' quantiser and their steps' cost
    Mean known_;              // those before it
    Mean p_mean_, b_mean_;
    // Recent pictures' coefficients now, and as a first pass has found them.
    double now_ = 0;
    double then_ = 0;
    double trust_ = 1;  // the one by the other
    int learnt_ = 0;    // deltas
    CodedSum sum_;
};

}  // namespace codecs
