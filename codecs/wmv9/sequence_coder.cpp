#include "codecs/wmv9/sequence_coder.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wmv9/intensity.h"
#include "codecs/wmv9/picture_tools.h"
#include "codecs/wmv9/sequence_setup.h"

namespace codecs::wmv9 {
namespace {

constexpr int kAnchors = 3;  // two references and the one that is coded
constexpr int kKept = 1;     // that trials leave as they are: the next picture refers to it

constexpr int kLoadedParts = 8;  // of a picture, side by side

constexpr double kFinestHalves = 9;  // quantisers in halves below

// Of the temporal filter; all later pictures of a GOP follow from its I picture.
constexpr double kIStrength = 0.6;
constexpr double kPStrength = 0.3;

// Pictures after an I picture until P pictures are what they usually are, and tools can be tried.
constexpr int kFirstTrial = 2;
constexpr int kNoTrial = 1 << 20;  // pictures away

int MacroblocksIn(int samples) { return (samples + 15) / 16; }

}  // namespace

SequenceCoder::SequenceCoder(const EncoderSettings& settings)
    : settings_(settings),
      sequence_(MakeSequence(settings_)),
      width_(MacroblocksIn(settings_.width)),
      height_(MacroblocksIn(settings_.height)),
      preset_(PresetOf(settings_.preset)),
      mode_decision_(preset_),
      team_(settings_.threads),
      coder_(width_, height_, team_),
      lookahead_(settings_.width, settings_.height, preset_.lookahead_rounds, team_),
      temporal_filter_(settings_.width, settings_.height, lookahead_, team_),
      activity_(width_, height_),
      quantisers_(width_, height_),
      source_(width_, height_),
      b_frame_(width_, height_),
      b_grid_(width_, height_) {
    const int kept = settings_.b_pictures > 0 ? kKept : 0;
    for (int i = 0; i < kAnchors + kept; ++i) anchors_.emplace_back(width_, height_);
    for (int i = 0; i < 2 + kept; ++i) grids_.emplace_back(width_, height_);
    next_.tools = UsualTools(preset_);
}

std::optional<double> SequenceCoder::LookAhead(const PictureView& picture) {
    if (preset_.lookahead == 0) return {};
    looks_ahead_ = true;
    lookahead_.DropBefore(past_.later_number);
    return lookahead_.Add(picture);
}

void SequenceCoder::Begin(const PictureView& picture) {
    past_ = next_;
    Follow(picture);
}

PictureHeader SequenceCoder::Prepare(const PictureView& picture, const PictureRequest& request) {
    next_ = past_;
    Look(picture, request);
    PictureHeader header = HeaderFor(request);
    if (!header.IsB()) Filter(request, header.IsI());
    return header;
}

PictureHeader SequenceCoder::PrepareAgain(const PictureRequest& request) {
    next_ = past_;
    return HeaderFor(request);
}

void SequenceCoder::Forget() {
    next_ = past_;
    if (followed_ >= 0) lookahead_.TakeBack();
    followed_ = -1;
}

void SequenceCoder::Try(const TrialDecision& decision, const std::function<void()>& code) {
    const CodingState past = past_;
    const CodingState now = next_;
    kept_anchor_ = now.later;
    kept_grid_ = now.later_grid;
    trial_ = &decision;
    next_.until_tools = kNoTrial;
    code();
    trial_ = nullptr;
    kept_anchor_ = kept_grid_ = -1;
    past_ = past;
    next_ = now;
}

double SequenceCoder::TrialCost(double quantiser) const {
    return wmv9::TrialCost(source_, *result_, static_cast<double>(coder_.Bits().Size()), quantiser);
}

PictureView SequenceCoder::Reconstruction() {
    if (unfiltered_) coder_.FilterB(*unfiltered_);
    unfiltered_.reset();
    return result_ == nullptr ? PictureView() : result_->View();
}

// Where nothing ahead is known, at least what moves in the picture in hand is.
void SequenceCoder::Follow(const PictureView& picture) {
    followed_ = -1;
    if (looks_ahead_ || preset_.lookahead == 0 || settings_.b_pictures > 0) return;
    followed_ = lookahead_.End();
    lookahead_.DropBefore(followed_ - 1);
    lookahead_.Add(picture);
}

// Loads what is coded of the picture, and finds what its quantisers depend on.
void SequenceCoder::Look(const PictureView& picture, const PictureRequest& request) {
    picture_ = picture;
    number_ = followed_ >= 0 ? followed_ : lookahead_.Has(request.number) ? request.number : -1;
    const PictureKind kind = KindFor(request);
    const bool has_worth = kind != PictureKind::kB && number_ >= 0 && looks_ahead_;
    const bool measures = (sequence_.varying_quantiser || FollowsFades()) &&
                          activity_.Begin(looks_ahead_ ? number_ : -1);
    const int parts = Parts();
    worth_ = {};
    likely_.emplace(lookahead_, kind, number_, past_);
    team_.Run(1 + parts, [&](int task) {
        if (task == 0) {
            if (has_worth) worth_ = tree_.Worth(lookahead_, number_);
            return;
        }
        for (int y = height_ * (task - 1) / parts; y < height_ * task / parts; ++y) {
            if (measures || IsCoded(y)) LoadRow(source_, y);
            if (measures) activity_.MeasureRow(BestKernels(), source_, y);
        }
    });
    if (measures) activity_.End();
}

int SequenceCoder::Parts() const { return std::min(kLoadedParts, height_); }

bool SequenceCoder::IsCoded(int y) const { return trial_ == nullptr || IsTried(y, height_); }

void SequenceCoder::LoadRow(Frame& frame, int y) const {
    frame.Load(picture_, settings_.width, settings_.height, y, y + 1);
}

// What a trial does not code of a picture that others refer to.
void SequenceCoder::LoadUncoded(Frame& frame) {
    team_.Run(Parts(), [&](int part) {
        for (int y = height_ * part / Parts(); y < height_ * (part + 1) / Parts(); ++y)
            if (!IsCoded(y)) LoadRow(frame, y);
    });
}

void SequenceCoder::Filter(const PictureRequest& request, bool is_i) {
    if (!preset_.temporal_filter || number_ < 0 || !looks_ahead_) return;
    temporal_filter_.Apply(source_, number_, request.beside, request.first_beside, asked_,
                           is_i ? kIStrength : kPStrength);
}

LumaPlane SequenceCoder::Luma() const {
    return {picture_.planes[0], picture_.strides[0], settings_.width, settings_.height};
}

bool SequenceCoder::FollowsFades() const { return settings_.profile == Profile::Main; }

PictureKind SequenceCoder::KindFor(const PictureRequest& request) const {
    if (past_.later < 0) return PictureKind::kI;
    const bool lacks = past_.earlier < 0 || settings_.b_pictures == 0;
    return request.kind == PictureKind::kB && lacks ? PictureKind::kP : request.kind;
}

PictureHeader SequenceCoder::HeaderFor(const PictureRequest& request) {
    PictureHeader header;
    header.kind = KindFor(request);
    header.b_pictures = std::clamp(request.b_pictures, 1, std::max(1, settings_.b_pictures));
    header.b_number = std::clamp(request.b_number, 1, header.b_pictures);
    asked_ = SetQuantiser(header, request.quantiser);
    mean_quantiser_ = effective_ = asked_;
    ChooseQuantisers(header);
    header.counter = past_.counter;
    header.vector_range = VectorRange(settings_);
    past_.tools.ApplyTo(header);
    header.rounding = header.kind == PictureKind::kP ? 1 - past_.rounding : past_.rounding;
    past_.tables[static_cast<int>(header.kind)].ApplyTo(header);
    if (header.kind == PictureKind::kP && FollowsFades())
        header.intensity = FindIntensity(Luma(), activity_.Found().brightness, Anchor(past_.later),
                                         past_.later_brightness, team_);
    return header;
}

// The nearest that there is, which is returned.
double SequenceCoder::SetQuantiser(PictureHeader& header, double quantiser) {
    quantiser = std::clamp(quantiser, 1.0, double{kCoarsestAsked});
    const bool halves = quantiser < kFinestHalves;
    const double coded = halves ? std::round(2 * quantiser) / 2 : std::round(quantiser);
    header.quantiser = std::min(static_cast<int>(coded), kCoarsest);
    header.half_step = halves && coded > header.quantiser;
    return coded;
}

// By what later pictures refer to, which is nothing of a B picture, and by what is seen.
void SequenceCoder::ChooseQuantisers(PictureHeader& header) {
    if (header.IsI()) {
        if (worth_.empty()) return;
        const double part = QuantiserPart(worth_, preset_.worth_power);
        mean_quantiser_ = SetQuantiser(header, asked_ * part);
        effective_ = mean_quantiser_ / part;
        return;
    }
    if (!sequence_.varying_quantiser) return;
    quantisers_.Choose(asked_, activity_.Found().values, worth_, preset_.worth_power);
    header.varying = true;
    header.half_step = false;
    header.quantiser = quantisers_.OfPicture();
    mean_quantiser_ = quantisers_.Mean();
}

CodedPicture SequenceCoder::Code(PictureHeader header) {
    const bool anchor = !header.IsB();
    const int place = FreeAnchor();
    const int grid = FreeGrid();
    Frame& result = anchor ? anchors_[Index(place)] : b_frame_;
    Picture picture{sequence_, header, BestKernels(),
                    source_,   result, anchor ? grids_[Index(grid)] : b_grid_};
    picture.likely = &*likely_;
    if (header.IsI() && picture.Overlaps()) Overlap::Sharpen(source_);
    if (header.varying) picture.quantisers = &quantisers_;
    if (mean_quantiser_ > kCoarsest) picture.beyond = static_cast<int>(mean_quantiser_);
    int mapped = -1;
    if (header.kind == PictureKind::kP) {
        picture.past = &Anchor(past_.later);
        if (picture.header.intensity) {
            mapped = past_.mapped == 0 ? 1 : 0;
            while (static_cast<int>(mapped_.size()) <= mapped)
                mapped_.emplace_back(width_, height_);
            MapIntensity(*picture.header.intensity, *picture.past, mapped_[Index(mapped)]);
            picture.past = &mapped_[Index(mapped)];
        }
    } else if (header.IsB()) {
        picture.past = past_.mapped < 0 ? &Anchor(past_.earlier) : &mapped_[Index(past_.mapped)];
        picture.future = &Anchor(past_.later);
    }
    if (!header.IsI() && !past_.later_is_i) picture.anchor = &grids_[Index(past_.later_grid)];
    if (trial_ != nullptr && anchor) LoadUncoded(result);
    const ModeDecision& own = mode_decision_;
    coder_.Analyse(picture, trial_ == nullptr ? own : *trial_);
    Brightness brightness;
    team_.Run(anchor ? 3 : 1, [&](int task) {
        if (task == 1) return result.Extend();
        if (task == 2) {
            if (trial_ != nullptr)
                brightness = activity_.Found().brightness;
            else if (FollowsFades())
                brightness = MeasureBrightness(BestKernels(), result);
            return;
        }
        ChooseTables(picture.header, coder_.Counts(), coder_.Planes());
    });
    const std::size_t level_bits = coder_.Write(picture);
    Remember(picture.header, place, grid, mapped);
    if (anchor) next_.later_brightness = brightness;
    result_ = &result;
    grid_ = &picture.grid;
    unfiltered_.reset();
    if (!anchor) unfiltered_.emplace(picture);

    CodedPicture coded;
    coded.data = coder_.Bits().Bytes();
    coded.kind = header.kind;
    coded.quantiser = asked_;
    const double intra = picture.grid.IntraPart();
    coded.bits = PictureBits::Taken(
        intra * static_cast<double>(level_bits), (1 - intra) * static_cast<double>(level_bits),
        static_cast<double>(8 * coded.data.size() - level_bits), effective_);
    return coded;
}

const Frame& SequenceCoder::Anchor(int place) const { return anchors_[Index(place)]; }

int SequenceCoder::FreeAnchor() const {
    int place = 0;
    while (place == past_.earlier || place == past_.later || place == kept_anchor_) ++place;
    return place;
}

int SequenceCoder::FreeGrid() const {
    int place = 0;
    while ((past_.later >= 0 && place == past_.later_grid) || place == kept_grid_) ++place;
    return place;
}

void SequenceCoder::Remember(const PictureHeader& header, int place, int grid, int mapped) {
    next_ = past_;
    next_.counter = (past_.counter + 1) % 4;
    next_.tables[static_cast<int>(header.kind)] = Tables::Of(header);
    if (header.IsB()) return;
    next_.earlier = past_.later;
    next_.later = place;
    next_.later_is_i = header.IsI();
    next_.later_grid = grid;
    next_.mapped = mapped;
    next_.rounding = header.IsI() ? 1 : header.rounding;
    next_.quantiser = asked_;
    next_.earlier_number = past_.later_number;
    next_.later_number = number_;
    if (!header.IsI()) return;
    next_.until_tools = next_.until_b = kFirstTrial;
    next_.tools_distance = next_.b_distance = 0;
    next_.b_costs = {};
}

}  // namespace codecs::wmv9
