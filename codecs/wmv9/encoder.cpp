#include "codecs/wmv9/encoder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/b_fractions.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/intensity.h"
#include "codecs/wmv9/lookahead.h"
#include "codecs/wmv9/macroblock_tree.h"
#include "codecs/wmv9/mode_decision.h"
#include "codecs/wmv9/picture_coder.h"
#include "codecs/wmv9/picture_tools.h"
#include "codecs/wmv9/preset.h"
#include "codecs/wmv9/sequence_header.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLargestSide = 8192;
constexpr int kAnchors = 3;  // two references and the one that is coded

constexpr double kCoarsest = 31;
constexpr double kFinestHalves = 9;  // quantisers in halves below

// Pictures after an I picture until P pictures are what they usually are, and tools can be tried.
constexpr int kFirstTrial = 2;
constexpr int kNoTrial = 1 << 20;  // pictures away
// Of the cost of P pictures alone, what B pictures among them may cost at most, and what the newest
// trial weighs beside those before it. Chosen on 13 clips of 352x288, noisy, grained, moving and
// animated ones among them: where B pictures take fewer bits, the part is 0.9 to 0.98, and where
// they take more, 1 to 1.05.
constexpr double kBWorth = 0.992;
constexpr double kNewest = 0.5;

EncoderSettings Checked(EncoderSettings settings) {
    const auto even = [](int side) { return std::clamp(side, 2, kLargestSide) & ~1; };
    settings.width = even(settings.width);
    settings.height = even(settings.height);
    settings.threads = std::max(1, settings.threads);
    settings.b_pictures = settings.profile == Profile::Simple
                              ? 0
                              : std::clamp(settings.b_pictures, 0, kMostBPictures);
    return settings;
}

int MacroblocksIn(int samples) { return (samples + 15) / 16; }

// Vectors may be as long as pictures of that size need.
int VectorRange(const EncoderSettings& settings) {
    if (settings.profile == Profile::Simple) return 0;
    if (settings.width >= 1280 || settings.height >= 720) return 2;
    return settings.height > 400 ? 1 : 0;
}

SequenceHeader MakeSequence(const EncoderSettings& settings) {
    SequenceHeader header;
    header.profile = settings.profile;
    const bool main = settings.profile == Profile::Main;
    header.loop_filter = main;
    header.short_chroma_vectors = !main;
    header.extended_vectors = VectorRange(settings) > 0;
    header.varying_quantiser = main && settings.adaptive;
    header.overlap = main && PresetOf(settings.preset).overlap;
    header.most_b_pictures = settings.b_pictures;
    header.rate_hint =
        std::clamp(static_cast<int>(std::lround((settings.pictures_per_second - 2) / 4)), 0, 7);
    header.bits_hint = std::clamp(static_cast<int>((settings.rate_bps / 1000 - 32) / 64), 0, 31);
    return header;
}

// The tables that the last picture of a kind was written with.
struct Tables {
    int vector = 0;
    int pattern = 0;
    int ac = 0;
    int luma_ac = 0;
    int dc = 0;
};

// What the next picture depends on.
struct Past {
    int earlier = -1;  // anchors; -1 = none
    int later = -1;
    int later_number = -1;  // in the look-ahead; -1 = not there
    bool later_is_i = false;
    int later_grid = 0;
    int mapped = -1;  // the picture that the later one was predicted from; -1 = the earlier one
    int rounding = 1;
    int counter = 0;
    Tables tables[3];
    double quantiser = 0;  // of the later anchor
    PictureTools tools;    // that suited the last P picture that was tried
    int until_tools = 0;   // P pictures until the next trial
    double b_cost = 0;     // of B pictures, as a part of that of P pictures; 0 = unknown
    int until_b = 0;       // choices until the next trial
};

}  // namespace

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : settings_(Checked(settings)),
          sequence_(MakeSequence(settings_)),
          width_(MacroblocksIn(settings_.width)),
          height_(MacroblocksIn(settings_.height)),
          preset_(PresetOf(settings_.preset)),
          mode_decision_(preset_),
          coder_(width_, height_, settings_.threads),
          lookahead_(settings_.width, settings_.height, preset_.lookahead_rounds),
          quantisers_(width_, height_),
          source_(width_, height_),
          b_frame_(width_, height_),
          b_grid_(width_, height_) {
        for (int i = 0; i < kAnchors; ++i) anchors_.emplace_back(width_, height_);
        for (int i = 0; i < 2; ++i) grids_.emplace_back(width_, height_);
        for (int i = 0; i < 2; ++i) mapped_.emplace_back(width_, height_);
        next_.tools = UsualTools(preset_);
    }

    std::array<std::uint8_t, 4> SequenceBytes() const { return sequence_.Bytes(); }

    CodedPicture Encode(const PictureView& picture, const PictureRequest& request) {
        past_ = next_;
        return Recode(picture, request);
    }

    CodedPicture Recode(const PictureView& picture, const PictureRequest& request) {
        next_ = past_;
        source_.Load(picture, settings_.width, settings_.height);
        const PictureHeader header = HeaderFor(request);
        const CodedPicture coded = header.kind == PictureKind::kP ? CodeP(header) : Code(header);
        if (header.kind != PictureKind::kP || !request.may_be_i || !MostlyIntra()) return coded;
        next_ = past_;
        PictureRequest i_request = request;
        i_request.kind = PictureKind::kI;
        return Code(HeaderFor(i_request));
    }

    void Forget() { next_ = past_; }

    PictureView Reconstruction() const {
        return result_ == nullptr ? PictureView() : result_->View();
    }

    void LookAhead(const PictureView& picture) {
        if (preset_.lookahead == 0) return;
        lookahead_.DropBefore(past_.later_number);
        lookahead_.Add(picture);
    }

    int ChooseBPictures(std::span<const PictureView> next, int first) {
        const int count = static_cast<int>(next.size());
        if (settings_.b_pictures == 0 || !lookahead_.Has(next_.later_number)) return 0;
        const int most =
            std::min(lookahead_.Choose(next_.later_number, first, count), settings_.b_pictures);
        if (most == 0 || preset_.b_trials == 0) return most;
        if (next_.until_b == 0) {
            const double cost = CostOfBPictures(next);
            next_.b_cost =
                next_.b_cost == 0 ? cost : next_.b_cost + kNewest * (cost - next_.b_cost);
            next_.until_b = preset_.b_trials;
        }
        --next_.until_b;
        return next_.b_cost > 0 && next_.b_cost < kBWorth ? most : 0;
    }

  private:
    // Beside that of P pictures: codes the next two as such, and then the first of them as a B
    // picture. All with one quantiser, or what the B picture loses would hide what it saves.
    double CostOfBPictures(std::span<const PictureView> next) {
        const Past now = next_;
        const auto begin = [&] {
            next_ = now;
            next_.until_tools = kNoTrial;
        };
        const auto cost = [&](const PictureView& view, PictureKind kind) {
            Encode(view, {.kind = kind, .quantiser = now.quantiser, .may_be_i = false});
            return Cost();
        };
        begin();
        double p_alone = cost(next[0], PictureKind::kP);
        p_alone += cost(next[1], PictureKind::kP);
        begin();
        double with_b = cost(next[1], PictureKind::kP);
        with_b += cost(next[0], PictureKind::kB);
        next_ = now;
        return with_b / p_alone;
    }

    // Of the picture coded last.
    double Cost() const {
        return PictureCost(source_, *result_, static_cast<double>(coder_.Bits().Size()),
                           cost_quantiser_);
    }

    // With the tools that suited the P pictures before it, or now and then with all.
    CodedPicture CodeP(PictureHeader header) {
        if (preset_.tool_trials == 0) return Code(header);
        if (past_.until_tools > 0) {
            const CodedPicture coded = Code(header);
            next_.until_tools = past_.until_tools - 1;
            return coded;
        }
        const auto code = [&](const PictureTools& tools) {
            next_ = past_;
            tools.ApplyTo(header);
            return Code(header);
        };
        // Those that suited before come last, so that they need not be coded again.
        PictureTools best = past_.tools;
        double least = std::numeric_limits<double>::max();
        for (const PictureTools& tools : ToolsToTry(preset_)) {
            if (tools == past_.tools) continue;
            code(tools);
            const double cost = Cost();
            if (cost >= least) continue;
            least = cost;
            best = tools;
        }
        CodedPicture coded = code(past_.tools);
        if (Cost() <= least)
            best = past_.tools;
        else
            coded = code(best);
        next_.tools = best;
        next_.until_tools = preset_.tool_trials - 1;
        return coded;
    }

    PictureHeader HeaderFor(const PictureRequest& request) {
        PictureHeader header;
        header.kind = request.kind;
        if (past_.later < 0)
            header.kind = PictureKind::kI;
        else if (header.IsB() && (past_.earlier < 0 || settings_.b_pictures == 0))
            header.kind = PictureKind::kP;
        header.b_pictures = std::clamp(request.b_pictures, 1, std::max(1, settings_.b_pictures));
        header.b_number = std::clamp(request.b_number, 1, header.b_pictures);
        number_ = lookahead_.Has(request.number) ? request.number : -1;
        asked_ = SetQuantiser(header, request.quantiser);
        mean_quantiser_ = asked_;
        if (!header.IsB()) ChooseQuantisers(header);
        header.counter = past_.counter;
        header.vector_range = VectorRange(settings_);
        past_.tools.ApplyTo(header);
        header.rounding = header.kind == PictureKind::kP ? 1 - past_.rounding : past_.rounding;
        UseTables(header);
        return header;
    }

    // The nearest that there is, which is returned.
    static double SetQuantiser(PictureHeader& header, double quantiser) {
        quantiser = std::clamp(quantiser, 1.0, kCoarsest);
        const bool halves = quantiser < kFinestHalves;
        const double coded = halves ? std::round(2 * quantiser) / 2 : std::round(quantiser);
        header.quantiser = static_cast<int>(coded);
        header.half_step = coded > header.quantiser;
        return coded;
    }

    // Of an I or P picture, by what later ones refer to and by what is seen.
    void ChooseQuantisers(PictureHeader& header) {
        std::span<const float> worth;
        if (number_ >= 0) worth = tree_.Worth(lookahead_, number_);
        if (header.IsI()) {
            if (!worth.empty())
                mean_quantiser_ = SetQuantiser(header, asked_ * QuantiserPart(worth));
            return;
        }
        if (!sequence_.varying_quantiser) return;
        quantisers_.Choose(BestKernels(), source_, asked_, worth);
        header.varying = true;
        header.half_step = false;
        header.quantiser = quantisers_.OfPicture();
        mean_quantiser_ = quantisers_.Mean();
    }

    void UseTables(PictureHeader& header) const {
        const Tables& tables = past_.tables[static_cast<int>(header.kind)];
        header.vector_table = tables.vector;
        header.pattern_table = tables.pattern;
        header.ac_table = tables.ac;
        header.luma_ac_table = tables.luma_ac;
        header.dc_table = tables.dc;
    }

    CodedPicture Code(PictureHeader header) {
        const bool anchor = !header.IsB();
        const int place = FreeAnchor();
        const int grid = past_.later < 0 ? 0 : 1 - past_.later_grid;
        Frame& result = anchor ? anchors_[Index(place)] : b_frame_;
        Picture picture{sequence_, header, BestKernels(),
                        source_,   result, anchor ? grids_[Index(grid)] : b_grid_};
        if (header.IsI() && picture.Overlaps()) Overlap::Sharpen(source_);
        if (header.varying) picture.quantisers = &quantisers_;
        int mapped = -1;
        if (header.kind == PictureKind::kP) {
            picture.past = &Anchor(past_.later);
            if (settings_.profile == Profile::Main && preset_.fades)
                picture.header.intensity = FindIntensity(picture.kernels, source_, *picture.past);
            if (picture.header.intensity) {
                mapped = past_.mapped == 0 ? 1 : 0;
                MapIntensity(*picture.header.intensity, *picture.past, mapped_[Index(mapped)]);
                picture.past = &mapped_[Index(mapped)];
            }
        } else if (header.IsB()) {
            picture.past =
                past_.mapped < 0 ? &Anchor(past_.earlier) : &mapped_[Index(past_.mapped)];
            picture.future = &Anchor(past_.later);
        }
        if (!header.IsI() && !past_.later_is_i) picture.anchor = &grids_[Index(past_.later_grid)];
        coder_.Analyse(picture, mode_decision_);
        ChooseTables(picture.header, coder_.Counts(), coder_.Planes());
        const std::size_t level_bits = coder_.Write(picture);
        Remember(picture.header, place, grid, mapped);
        result_ = &result;
        grid_ = &picture.grid;
        if (anchor) result.Extend();

        CodedPicture coded;
        coded.data = coder_.Bits().Bytes();
        cost_quantiser_ = anchor ? mean_quantiser_ : past_.quantiser;
        coded.kind = header.kind;
        coded.quantiser = asked_;
        coded.bits = PictureBits::Taken(static_cast<double>(level_bits),
                                        static_cast<double>(8 * coded.data.size() - level_bits),
                                        coded.quantiser);
        return coded;
    }

    const Frame& Anchor(int place) const { return anchors_[Index(place)]; }

    int FreeAnchor() const {
        int place = 0;
        while (place == past_.earlier || place == past_.later) ++place;
        return place;
    }

    void Remember(const PictureHeader& header, int place, int grid, int mapped) {
        next_ = past_;
        next_.counter = (past_.counter + 1) % 4;
        next_.tables[static_cast<int>(header.kind)] = {header.vector_table, header.pattern_table,
                                                       header.ac_table, header.luma_ac_table,
                                                       header.dc_table};
        if (header.IsB()) return;
        next_.earlier = past_.later;
        next_.later = place;
        next_.later_is_i = header.IsI();
        next_.later_grid = grid;
        next_.mapped = mapped;
        next_.rounding = header.IsI() ? 1 : header.rounding;
        next_.quantiser = asked_;
        next_.later_number = number_;
        if (!header.IsI()) return;
        next_.until_tools = next_.until_b = kFirstTrial;
        next_.b_cost = 0;
    }

    // Where a scene changes, little can be predicted.
    bool MostlyIntra() const {
        constexpr int kPart = 60;  // percent; chosen by hand
        int count = 0;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) count += grid_->At(x, y).intra ? 1 : 0;
        return 100 * count > kPart * width_ * height_;
    }

    const EncoderSettings settings_;
    const wmv9::SequenceHeader sequence_;
    const int width_;  // macroblocks
    const int height_;
    const Preset& preset_;
    const RdModeDecision mode_decision_;
    PictureCoder coder_;
    Lookahead lookahead_;
    MacroblockTree tree_;
    QuantiserMap quantisers_;
    // Of the picture in hand.
    int number_ = -1;            // in the look-ahead
    double asked_ = 0;           // quantiser
    double mean_quantiser_ = 0;  // of its macroblocks
    Frame source_;
    Frame b_frame_;
    MacroblockGrid b_grid_;
    std::vector<Frame> anchors_;
    std::vector<MacroblockGrid> grids_;
    std::vector<Frame> mapped_;  // references in turn
    Past past_;                  // before the picture coded last
    Past next_;                  // after it
    double cost_quantiser_ = 0;  // of the anchor that the picture coded last goes by
    const Frame* result_ = nullptr;
    const MacroblockGrid* grid_ = nullptr;
};

int LookaheadPictures(const EncoderSettings& settings) {
    return PresetOf(settings.preset).lookahead;
}

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

std::array<std::uint8_t, 4> Encoder::SequenceHeader() const { return impl_->SequenceBytes(); }

CodedPicture Encoder::Encode(const PictureView& picture, const PictureRequest& request) {
    return impl_->Encode(picture, request);
}

CodedPicture Encoder::Recode(const PictureView& picture, const PictureRequest& request) {
    return impl_->Recode(picture, request);
}

void Encoder::Forget() { impl_->Forget(); }

PictureView Encoder::Reconstruction() const { return impl_->Reconstruction(); }

void Encoder::LookAhead(const PictureView& picture) { impl_->LookAhead(picture); }

int Encoder::ChooseBPictures(std::span<const PictureView> next, int first) {
    return impl_->ChooseBPictures(next, first);
}

}  // namespace codecs::wmv9
