#include "codecs/common/picture_forecast.h"

#include <algorithm>
#include <utility>

namespace codecs {
namespace {

// Chosen by hand on the clips of bench/rates.
constexpr int kDeltaMemory = 5;   // pictures
constexpr int kMixedMemory = 12;  // where B pictures take turns with P pictures
// Of the intra cost: what two pictures differ by that show the same.
constexpr double kNoise = 0.01;
// Up to so many times as much new as usual, a picture takes in proportion; what is beyond, as an
// I picture does.
constexpr double kLikeness = 4;
// Of its intra cost is new: a picture has all its vectors. And what one that stands still has of
// them.
constexpr double kMoves = 0.05;
constexpr double kStillFixed = 0.05;
constexpr double kCut = 0.6;  // of its intra cost is new: no usual picture
// Of a B picture, beside a P picture, before any is known.
constexpr double kUsualB = 0.5;
constexpr double kLastSeen = 0.5;    // weight of the last ones that wait, for those not seen yet
constexpr double kPriorDeltas = 10;  // that the usual counts for beside those of the GOP
constexpr double kTrustMemory = 10;  // pictures
constexpr double kDoubt = 4;  // pictures' worth of what a first pass has found that are believed
constexpr double kLargestMistrust = 3;
// Times what was expected, or a part of it: those before count for no more than so many pictures.
constexpr double kOtherScene = 3;
constexpr int kKept = 2;

constexpr double kAlike = 0.5;  // of what a picture's news make it, beside an I picture

// How much a picture is like an I picture, of which so much is new.
double Alike(double part) { return part * part * part; }

// What a picture takes beside an I picture, of which so much is new: moving ones about the same,
// however much moves, unless it is another scene.
double UsualPart(double part) {
    constexpr double kMoving = 0.13;
    constexpr double kSlope = 2.2;
    constexpr double kMostMoving = 0.25;
    const double scene = std::max(0.0, part - kMostMoving) / (1 - kMostMoving);
    return std::min(kMoving, kSlope * part) + (1 - kMoving) * scene;
}

}  // namespace

PictureForecast::PictureForecast(const RateExperience& experience, std::vector<FoundPicture> found)
    : experience_(experience), found_(std::move(found)) {
    for (const FoundPicture& picture : found_) in_all_ += picture.ByP();
    undecided_ = in_all_;
}

void PictureForecast::Mean::Learn(const PictureBits& taken, double new_cost, int memory) {
    learnt = std::min(learnt + 1, memory);
    const double weight = 1.0 / learnt;
    bits = bits * (1 - weight);
    bits += taken * weight;
    cost += weight * (new_cost - cost);
}

double PictureForecast::Mean::LikeCost(double intra_cost) const {
    return kLikeness * cost + kNoise * intra_cost;
}

void PictureForecast::Mean::Doubt() { learnt = std::min(learnt, kKept); }

void PictureForecast::Begin(const RatedPicture& picture) {
    picture_ = picture;
    if (picture.index < found_.size()) {
        const PictureBits found = found_[picture.index].ByP();
        undecided_.texture = std::max(0.0, undecided_.texture - found.texture);
        undecided_.residue = std::max(0.0, undecided_.residue - found.residue);
        undecided_.fixed = std::max(0.0, undecided_.fixed - found.fixed);
    }
    surprised_ = false;
    known_ = deltas_;
    expected_ = foreseen_ = Expect();
}

PictureBits PictureForecast::Expect() {
    const bool is_i = picture_.kind == PictureKind::kI;
    const Mean& mean = MeanOf(picture_.kind);
    if (picture_.index < found_.size()) {
        const FoundPicture& found = found_[picture_.index];
        const bool trusted = found.kind != PictureKind::kI && !is_i;
        // The choice of B pictures need not have been the same.
        if (found.kind == picture_.kind || !trusted || mean.learnt == 0)
            return found.bits.Scaled(trusted ? trust_ : 1);
    }
    if (is_i) return {IRate() * picture_.intra_cost, 0, experience_.i_fixed};
    if (mean.learnt > 0) return ByMean(mean, picture_.inter_cost, picture_.intra_cost);
    const PictureBits delta = deltas_.learnt > 0
                                  ? ByMean(deltas_, picture_.inter_cost, picture_.intra_cost)
                                  : ByCost(picture_.inter_cost, picture_.intra_cost);
    return delta * (picture_.kind == PictureKind::kB ? kUsualB : 1);
}

void PictureForecast::Surprise(const PictureBits& taken, double quantiser) {
    expected_ = Believed(taken, quantiser);
    surprised_ = picture_.kind != PictureKind::kI;
    // What one takes that shows next to nothing new makes finer what is there, and that but once.
    if (surprised_ && picture_.News() > 1) LearnDelta(expected_, quantiser);
}

double PictureForecast::Jump(double quantiser) const {
    if (Planned()) return 1;
    return expected_.Coefficients(quantiser) /
           std::max(1.0, MeanDelta(known_).Coefficients(quantiser));
}

double PictureForecast::IRate() const {
    return sum_.TellsTexture() ? sum_.i_bits.texture / sum_.i_cost : experience_.i_texture_per_cost;
}

double PictureForecast::ITexture() const {
    return sum_.i_pictures > 0 ? sum_.i_bits.texture / static_cast<double>(sum_.i_pictures)
                               : experience_.i_texture_per_cost * picture_.intra_cost;
}

double PictureForecast::DeltaPart() const {
    const std::size_t pictures = found_.size();
    if (pictures < 2) return experience_.delta_residue / PictureBits::kUsualStep;
    const double i_bits = found_.front().bits.Usually();
    return (in_all_.Usually() - i_bits) / static_cast<double>(pictures - 1) / std::max(1.0, i_bits);
}

// Of which so much is new, before any is known.
PictureBits PictureForecast::ByCost(double cost, double intra_cost) const {
    const double part = std::clamp(cost / intra_cost, 0.0, 1.0);
    const double texture = IRate() * intra_cost * UsualPart(part);
    // The more of it is new, the more it is like an I picture.
    const double alike = kAlike * Alike(part);
    return {texture * alike, texture * (1 - alike) * PictureBits::kUsualStep,
            experience_.delta_fixed * std::min(1.0, kStillFixed + part / kMoves)};
}

PictureBits PictureForecast::ByMean(const Mean& mean, double cost, double intra_cost) const {
    const double noise = kNoise * intra_cost;
    const double like = mean.LikeCost(intra_cost);
    PictureBits bits = mean.bits.Scaled((std::min(cost, like) + noise) / (mean.cost + noise));
    if (cost > like) {
        const PictureBits beyond = ByCost(cost - like, intra_cost);
        bits.texture += beyond.texture;
        bits.residue += beyond.residue;
    }
    return bits;
}

// What is like the pictures before a burst takes what they did.
PictureBits PictureForecast::ByStep(double cost, double intra_cost) const {
    if (surprised_ && known_.learnt > 0 && cost <= known_.LikeCost(intra_cost) &&
        picture_.step_cost > known_.LikeCost(picture_.intra_cost))
        return ByMean(known_, cost, intra_cost);
    return deltas_.learnt > 0 ? ByMean(deltas_, cost, intra_cost) : ByCost(cost, intra_cost);
}

// Of those that wait; where a scene changes, pictures are not like the others.
PictureBits PictureForecast::MeanByStep(std::span<const WaitingPicture> pictures) const {
    PictureBits sum;
    double count = 0;
    for (const WaitingPicture& waiting : pictures) {
        if (waiting.step_cost > kCut * waiting.intra_cost) continue;
        sum += ByStep(waiting.step_cost, waiting.intra_cost);
        ++count;
    }
    if (count > 0) return sum * (1 / count);
    return deltas_.learnt > 0 ? deltas_.bits : Usual();
}

// What deltas are beside an I picture.
PictureBits PictureForecast::Usual() const {
    return {0, experience_.delta_residue * ITexture(), experience_.delta_fixed};
}

// Until deltas are known, what they usually are beside an I picture.
PictureBits PictureForecast::MeanDelta(const Mean& deltas) const {
    if (deltas.learnt >= kDeltaMemory) return deltas.bits;
    const PictureBits usual = Usual();
    if (deltas.learnt == 0)
        return surprised_ ? FoundPicture{expected_, picture_.kind}.ByP() : usual;
    // The usual counts as one of them.
    const double weight = deltas.learnt / (deltas.learnt + 1.0);
    PictureBits mean = deltas.bits * weight;
    mean += usual * (1 - weight);
    return mean;
}

// Of all of the GOP's deltas.
PictureBits PictureForecast::LongMean() const {
    PictureBits mean = sum_.delta_bits;
    mean += Usual() * kPriorDeltas;
    return mean * (1 / (static_cast<double>(sum_.deltas) + kPriorDeltas));
}

PictureBits PictureForecast::Following(double pictures) const {
    if (Planned()) return undecided_.Scaled(trust_);
    PictureBits sum;
    for (const WaitingPicture& waiting : picture_.waiting)
        sum += ByStep(waiting.step_cost, waiting.intra_cost);
    const double unseen = pictures - static_cast<double>(picture_.waiting.size());
    if (picture_.last || unseen <= 0) return sum;
    if (picture_.waiting.empty()) return DeltaMean() * unseen;
    const auto last = picture_.waiting.last(picture_.waiting.size() / 2);
    sum += LongMean() * ((1 - kLastSeen) * unseen);
    sum += MeanByStep(last) * (kLastSeen * unseen);
    return sum;
}

bool PictureForecast::IsOtherScene(const PictureBits& taken, double quantiser) const {
    const double parts =
        taken.Coefficients(quantiser) / std::max(1.0, foreseen_.Coefficients(quantiser));
    return parts > kOtherScene || parts < 1 / kOtherScene;
}

// In place of what has been learnt of the picture in hand before.
void PictureForecast::LearnDelta(const PictureBits& taken, double quantiser) {
    deltas_ = known_;
    if (IsOtherScene(taken, quantiser)) deltas_.Doubt();
    deltas_.Learn(FoundPicture{taken, picture_.kind}.ByP(), picture_.step_cost,
                  b_mean_.learnt > 0 ? kMixedMemory : kDeltaMemory);
}

void PictureForecast::LearnTrust(const PictureBits& taken, double quantiser) {
    if (picture_.index >= found_.size() || found_[picture_.index].kind != picture_.kind) return;
    // By what they take: one that shows nothing new tells nothing.
    const double then = found_[picture_.index].bits.Coefficients(quantiser);
    const double now = taken.Coefficients(quantiser);
    const double usual = in_all_.Coefficients(quantiser) / static_cast<double>(found_.size());
    const double memory =
        1 - std::min(1.0, std::max(now, then) / std::max(1.0, usual)) / kTrustMemory;
    now_ = memory * now_ + now;
    then_ = memory * then_ + then;
    const double doubt = std::max(1.0, kDoubt * usual);
    trust_ = std::clamp((now_ + doubt) / (then_ + doubt), 1 / kLargestMistrust, kLargestMistrust);
}

// What is new through and through is predicted from nothing, whatever it is called.
PictureBits PictureForecast::Believed(const PictureBits& taken, double quantiser) const {
    if (picture_.kind == PictureKind::kI) return taken;
    const double part = kAlike * Alike(picture_.inter_cost / picture_.intra_cost);
    return {taken.texture + part * taken.residue / (quantiser + PictureBits::kOffset),
            (1 - part) * taken.residue, taken.fixed};
}

FoundPicture PictureForecast::Coded(const PictureBits& coded, double quantiser, bool is_i,
                                    bool sharpened) {
    const PictureBits taken = Believed(coded, quantiser);
    if (!is_i && !sharpened) {
        ++learnt_;
        LearnDelta(taken, quantiser);
        Mean& mean = MeanOf(picture_.kind);
        if (IsOtherScene(taken, quantiser)) mean.Doubt();
        mean.Learn(taken, picture_.inter_cost, kDeltaMemory);
        LearnTrust(taken, quantiser);
    }
    (is_i ? sum_.i_pictures : sum_.deltas) += 1;
    if (is_i) {
        sum_.i_bits += taken;
        sum_.i_cost += picture_.intra_cost;
        // Another scene.
        deltas_ = known_;
        for (Mean* mean : {&deltas_, &p_mean_, &b_mean_}) mean->Doubt();
    } else {
        sum_.delta_bits += FoundPicture{taken, picture_.kind}.ByP();
    }
    Forget();
    return {taken, is_i ? PictureKind::kI : picture_.kind};
}

}  // namespace codecs
