#include "codecs/wmv9/encoder.h"

#include <algorithm>

#include "codecs/common/index.h"
#include "codecs/wmv9/picture_tools.h"
#include "codecs/wmv9/preset.h"
#include "codecs/wmv9/sequence_coder.h"
#include "codecs/wmv9/sequence_setup.h"
#include "codecs/wmv9/trial_decision.h"
#include "codecs/wmv9/trials.h"

namespace codecs::wmv9 {
namespace {

// A trial of B pictures codes whole groups of one, of two and of three pictures.
constexpr int kPatternPictures = 6;
constexpr int kFewestTried = 4;
constexpr int kTrialPreset = 20;  // or a lower one: it tells them apart as well

}  // namespace

// Chooses the tools that pictures are coded with, and how many of them become B pictures.
class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : settings_(Checked(settings)),
          preset_(PresetOf(settings_.preset)),
          coder_(settings_),
          trial_of_tools_(preset_),
          trial_of_b_(PresetOf(std::min(settings_.preset, kTrialPreset))) {}

    SequenceCoder& Coder() { return coder_; }

    CodedPicture Encode(const PictureView& picture, const PictureRequest& request) {
        coder_.Begin(picture);
        return Recode(picture, request);
    }

    CodedPicture Recode(const PictureView& picture, const PictureRequest& request) {
        const PictureHeader header = coder_.Prepare(picture, request);
        if (header.kind != PictureKind::kP) return coder_.Code(header);
        const CodedPicture coded = CodeP(header);
        if (!request.may_be_i || !MostlyIntra()) return coded;
        PictureRequest i_request = request;
        i_request.kind = PictureKind::kI;
        return coder_.Code(coder_.PrepareAgain(i_request));
    }

    int ChooseBPictures(std::span<const PictureView> next, int first) {
        CodingState& state = coder_.Next();
        if (settings_.b_pictures == 0 || !coder_.Ahead().Has(state.later_number)) return 0;
        const bool tries = state.until_b <= 0 && next.size() >= kFewestTried;
        const int limit = std::min(tries ? settings_.b_pictures : state.b_pictures,
                                   static_cast<int>(next.size()) - 1);
        const int most =
            limit == 0 ? 0 : coder_.Ahead().Choose(state.later_number, first, limit + 1);
        if (tries && most > 0) TryB(next, first);
        const int chosen = std::min(most, state.b_pictures);
        state.until_b -= chosen + 1;
        if (TriesTools(state)) TryTools(next, first, chosen);
        return chosen;
    }

  private:
    // Which pattern the next pictures cost the least in.
    void TryB(std::span<const PictureView> next, int first) {
        next = next.first(std::min<std::size_t>(next.size(), kPatternPictures));
        const double alone = CostOfPattern(next, first, 0);
        BTrial trial(coder_.Next());
        for (int b = settings_.b_pictures; b > 0 && !trial.IsClear(); --b)
            trial.Add(b, CostOfPattern(next, first, b) / alone);
        trial.Note(coder_.Next());
    }

    // Of all pictures of `next`, in groups of so many B pictures and a P picture.
    double CostOfPattern(std::span<const PictureView> next, int first, int b_pictures) {
        const double quantiser = coder_.Next().quantiser;
        double cost = 0;
        const auto add = [&](int i, PictureRequest request) {
            request.number = first + i;
            Encode(next[Index(i)], request);
            cost += coder_.TrialCost(quantiser);
        };
        const int count = static_cast<int>(next.size());
        coder_.Try(trial_of_b_, [&] {
            VectorMode& mode = coder_.Next().tools.mode;
            if (mode == VectorMode::Mixed) mode = VectorMode::Quarter;
            for (int at = 0; at < count;) {
                const int group = std::min(b_pictures, count - 1 - at);
                add(at + group, {.kind = PictureKind::kP, .quantiser = quantiser});
                for (int i = 0; i < group; ++i)
                    add(at + i, {.kind = PictureKind::kB,
                                 .quantiser = kBQuantiserPart * quantiser,
                                 .b_number = i + 1,
                                 .b_pictures = group});
                at += group + 1;
            }
        });
        return cost;
    }

    bool TriesTools(const CodingState& state) const {
        return preset_.tool_trials != 0 && state.until_tools <= 0;
    }

    // On the next P pictures, where more than one is known.
    void TryTools(std::span<const PictureView> next, int first, int b_pictures) {
        const int distance = b_pictures + 1;
        const int count = std::min(kToolPictures, static_cast<int>(next.size()) / distance);
        const double quantiser = coder_.Next().quantiser;
        if (count < 2) return;
        TryEach(coder_.Next(), [&](const PictureTools& tools, ToolTrial& trial) {
            coder_.Next().tools = tools;
            for (int i = 0, at = b_pictures; i < count; ++i, at += distance) {
                Encode(next[Index(at)],
                       {.kind = PictureKind::kP, .quantiser = quantiser, .number = first + at});
                if (!trial.Add(coder_.TrialCost(coder_.MeanQuantiser()))) return;
            }
        });
    }

    template <typename CodeWith>
    void TryEach(CodingState& state, const CodeWith& code_with) {
        ToolTrial trial(preset_, state.tools);
        for (const PictureTools& tools : ToolsToTry(preset_)) {
            trial.Begin(tools);
            coder_.Try(trial_of_tools_, [&] { code_with(tools, trial); });
            trial.End();
        }
        trial.Note(state);
    }

    // With the tools that suited the P pictures before it, or now and then with all.
    CodedPicture CodeP(PictureHeader header) {
        CodingState tried = coder_.Past();
        if (TriesTools(tried))
            TryEach(tried, [&](const PictureTools& tools, ToolTrial& trial) {
                tools.ApplyTo(header);
                coder_.Code(header);
                trial.Add(coder_.TrialCost(coder_.MeanQuantiser()));
            });
        tried.tools.ApplyTo(header);
        const CodedPicture coded = coder_.Code(header);
        CodingState& state = coder_.Next();
        state.tools = tried.tools;
        state.tools_distance = tried.tools_distance;
        state.until_tools = tried.until_tools - 1;
        return coded;
    }

    // Where a scene changes, little can be predicted.
    bool MostlyIntra() const {
        constexpr double kPart = 0.6;  // chosen by hand
        return coder_.IntraPart() > kPart;
    }

    const EncoderSettings settings_;
    const Preset& preset_;
    SequenceCoder coder_;
    const TrialDecision trial_of_tools_;
    const TrialDecision trial_of_b_;
};

int LookaheadPictures(const EncoderSettings& settings) {
    return PresetOf(settings.preset).lookahead;
}

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

std::array<std::uint8_t, 4> Encoder::SequenceHeader() const {
    return impl_->Coder().SequenceBytes();
}

CodedPicture Encoder::Encode(const PictureView& picture, const PictureRequest& request) {
    return impl_->Encode(picture, request);
}

CodedPicture Encoder::Recode(const PictureView& picture, const PictureRequest& request) {
    return impl_->Recode(picture, request);
}

void Encoder::Forget() { impl_->Coder().Forget(); }

PictureView Encoder::Reconstruction() const { return impl_->Coder().Reconstruction(); }

std::optional<double> Encoder::LookAhead(const PictureView& picture) {
    return impl_->Coder().LookAhead(picture);
}

int Encoder::ChooseBPictures(std::span<const PictureView> next, int first) {
    return impl_->ChooseBPictures(next, first);
}

}  // namespace codecs::wmv9
