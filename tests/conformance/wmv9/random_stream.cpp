#include "conformance/wmv9/random_stream.h"

#include <fmt/format.h>

#include <vector>

#include "codecs/common/index.h"
#include "codecs/common/task_team.h"
#include "codecs/wmv9/intensity.h"
#include "codecs/wmv9/picture_coder.h"
#include "conformance/wmv9/random.h"
#include "conformance/wmv9/random_mode_decision.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;
using codecs::Index;

namespace {

constexpr int kHalfSteps = 8;  // quantisers that have them

int MacroblocksIn(int samples) { return (samples + 15) / 16; }

SequenceHeader RandomSequence(Random& random) {
    SequenceHeader sequence;
    const bool main = random.Roll(75);
    sequence.profile = main ? Profile::Main : Profile::Simple;
    sequence.short_chroma_vectors = !main;
    sequence.loop_filter = main && random.Roll(70);
    sequence.extended_vectors = main && random.Roll(50);
    sequence.varying_quantiser = main && random.Roll(50);
    sequence.most_b_pictures = main ? random.Pick({0, 0, 1, 2, 3}) : 0;
    sequence.overlap = random.Roll(50);
    sequence.rate_hint = random.Below(8);
    sequence.bits_hint = random.Below(32);
    return sequence;
}

std::string Describe(const PictureHeader& header, int number) {
    constexpr const char* kKinds[] = {"I", "P", "B"};
    std::string text = fmt::format("picture {}, {}, quantiser {}", number,
                                   kKinds[static_cast<int>(header.kind)], header.quantiser);
    if (header.half_step) text += " and a half";
    if (header.varying) text += ", varying";
    if (header.IsI()) return text;
    text += fmt::format(", vectors of mode {} and range {}", static_cast<int>(header.mode),
                        header.vector_range);
    if (header.intensity)
        text +=
            fmt::format(", mapped by {} and {}", header.intensity->scale, header.intensity->shift);
    if (header.shape) text += fmt::format(", shape {}", static_cast<int>(*header.shape));
    if (header.IsB()) text += fmt::format(", {} of {}", header.b_number, header.b_pictures);
    return text + (header.rounding == 1 ? ", rounding down" : "");
}

}  // namespace

class RandomStream::Impl {
  public:
    explicit Impl(const RandomStreamSettings& settings)
        : settings_(settings),
          random_(settings.seed),
          sequence_(RandomSequence(random_)),
          width_(MacroblocksIn(settings.width)),
          height_(MacroblocksIn(settings.height)),
          coder_(width_, height_, team_),
          source_(width_, height_),
          b_frame_(width_, height_),
          mapped_(width_, height_),
          b_grid_(width_, height_) {
        for (int i = 0; i < 3; ++i) anchors_.emplace_back(width_, height_);
        for (int i = 0; i < 2; ++i) grids_.emplace_back(width_, height_);
    }

    std::array<std::uint8_t, 4> SequenceBytes() const { return sequence_.Bytes(); }

    Coded Next() {
        const PictureHeader header = RandomHeader();
        const int place = PlaceOf(header);
        const PlanarPicture picture = MakePicture(settings_.content, settings_.width,
                                                  settings_.height, place, settings_.seed);
        source_.Load(picture.View(), settings_.width, settings_.height, 0, height_);
        const Frame& result = Code(header);
        ++number_;
        return {coder_.Bits().Bytes(), result.View(), place, Describe(header, number_)};
    }

  private:
    PictureHeader RandomHeader() {
        PictureHeader header;
        header.kind = KindOfNext();
        header.counter = number_ % 4;
        header.quantiser = random_.Roll(40) ? random_.Between(1, 9) : random_.Between(1, 31);
        header.half_step = header.quantiser <= kHalfSteps && random_.Roll(50);
        header.varying = sequence_.varying_quantiser && !header.IsI() && random_.Roll(60);
        if (sequence_.extended_vectors) header.vector_range = random_.Below(4);
        header.mode = header.IsB() ? random_.Pick({VectorMode::Quarter, VectorMode::HalfBilinear})
                                   : static_cast<VectorMode>(random_.Below(4));
        if (header.kind == PictureKind::kP && sequence_.profile == Profile::Main &&
            random_.Roll(25))
            header.intensity = {random_.Below(64), random_.Below(64)};
        if (random_.Roll(40)) header.shape = static_cast<Shape>(random_.Below(4));
        header.rounding = header.kind == PictureKind::kP ? 1 - rounding_ : rounding_;
        header.b_pictures = b_pictures_;
        header.b_number = b_pictures_ - left_ + 1;
        RandomTables(header);
        return header;
    }

    PictureKind KindOfNext() {
        if (number_ == 0) return PictureKind::kI;
        if (left_ > 0) return PictureKind::kB;
        b_pictures_ = random_.Below(sequence_.most_b_pictures + 1);
        return random_.Roll(15) ? PictureKind::kI : PictureKind::kP;
    }

    // Also tells how many B pictures are left to come between the last two anchors.
    int PlaceOf(const PictureHeader& header) {
        if (header.IsB()) return shown_ - 1 - left_--;
        left_ = b_pictures_;
        shown_ += b_pictures_ + 1;
        return shown_ - 1;
    }

    void RandomTables(PictureHeader& header) {
        header.vector_table = random_.Below(4);
        header.pattern_table = random_.Below(4);
        header.ac_table = random_.Below(kAcChoices);
        header.luma_ac_table = random_.Below(kAcChoices);
        header.dc_table = random_.Below(2);
        for (PlaneCoding* plane :
             {&header.four_mv_plane, &header.skip_plane, &header.direct_plane}) {
            plane->mode = static_cast<PlaneMode>(random_.Below(kPlaneModes));
            plane->invert = plane->mode != PlaneMode::Raw && random_.Roll(50);
        }
    }

    const Frame& Code(const PictureHeader& header) {
        const bool anchor = !header.IsB();
        int free = 0;
        while (free == earlier_ || free == later_) ++free;
        const int grid = 1 - later_grid_;
        Frame& result = anchor ? anchors_[Index(free)] : b_frame_;
        const std::span<const Kernels> kernels = AllKernels();
        Picture picture{sequence_, header, kernels[random_.Next() % kernels.size()],
                        source_,   result, anchor ? grids_[Index(grid)] : b_grid_};
        if (header.IsB()) {
            picture.past = later_uses_mapped_ ? &mapped_ : &anchors_[Index(earlier_)];
            picture.future = &anchors_[Index(later_)];
        } else if (!header.IsI()) {
            picture.past = &anchors_[Index(later_)];
            if (header.intensity) {
                MapIntensity(*header.intensity, *picture.past, mapped_);
                picture.past = &mapped_;
            }
        }
        if (!header.IsI() && !later_is_i_) picture.anchor = &grids_[Index(later_grid_)];
        coder_.Analyse(picture, RandomModeDecision(random_.Next()));
        if (header.IsB()) coder_.FilterB(picture);
        coder_.Write(picture);
        if (!anchor) return result;
        result.Extend();
        earlier_ = later_;
        later_ = free;
        later_is_i_ = header.IsI();
        later_uses_mapped_ = header.intensity.has_value();
        later_grid_ = grid;
        rounding_ = header.IsI() ? 1 : header.rounding;
        return result;
    }

    const RandomStreamSettings settings_;
    Random random_;
    const codecs::wmv9::SequenceHeader sequence_;
    const int width_;  // macroblocks
    const int height_;
    codecs::TaskTeam team_{2};
    PictureCoder coder_;
    Frame source_;
    Frame b_frame_;
    Frame mapped_;  // the earlier anchor, as the later one was predicted from it
    MacroblockGrid b_grid_;
    std::vector<Frame> anchors_;
    std::vector<MacroblockGrid> grids_;
    int earlier_ = -1;  // anchors
    int later_ = -1;
    bool later_is_i_ = false;
    bool later_uses_mapped_ = false;
    int later_grid_ = 0;
    int rounding_ = 1;
    int number_ = 0;      // pictures so far
    int shown_ = 0;       // places given away
    int b_pictures_ = 0;  // between the last two anchors
    int left_ = 0;        // of them
};

RandomStream::RandomStream(const RandomStreamSettings& settings)
    : impl_(std::make_unique<Impl>(settings)) {}
RandomStream::~RandomStream() = default;

std::array<std::uint8_t, 4> RandomStream::SequenceHeader() const { return impl_->SequenceBytes(); }

RandomStream::Coded RandomStream::Next() { return impl_->Next(); }

}  // namespace wmv9_conformance
